#include "platform/tdspclient/status_query.h"

#include <condition_variable>
#include <mutex>
#include <new>
#include <utility>

#include "platform/tdspclient/detached_thread.h"

namespace tvrscn {
namespace {

constexpr const char* kPaths[] = {"/ipp/print", "/"};

// Belongs to the caller and to the thread together: either may be the last.
struct Query {
  DeviceAddress address;
  Deadline deadline;
  std::unique_ptr<StatusConnection> connection;

  std::mutex mutex;
  std::condition_variable changed;
  bool finished = false;
  std::optional<PrinterStatus> status;
};

std::optional<PrinterStatus> ask(Query& query) {
  for (const char* path : kPaths) {
    PrinterStatus status;
    const Reply reply = query.connection->ask(query.address, path, query.deadline, status);
    if (reply == Reply::kStatus) return status;
    if (reply == Reply::kNone) break;
  }
  return std::nullopt;
}

void run(const std::shared_ptr<Query>& query) {
  std::optional<PrinterStatus> status;
  try {
    status = ask(*query);
  } catch (const std::bad_alloc&) {
    status.reset();
  }
  const std::lock_guard<std::mutex> lock(query->mutex);
  query->status = std::move(status);
  query->finished = true;
  query->changed.notify_one();
}

}  // namespace

std::optional<PrinterStatus> askDevice(const DeviceAddress& address,
                                       std::unique_ptr<StatusConnection> connection,
                                       std::chrono::milliseconds limit) {
  const auto query = std::make_shared<Query>();
  query->address = address;
  query->deadline = std::chrono::steady_clock::now() + limit;
  query->connection = std::move(connection);
  if (!startDetached([query] { run(query); })) return std::nullopt;
  std::unique_lock<std::mutex> lock(query->mutex);
  if (query->changed.wait_until(lock, query->deadline, [&] { return query->finished; })) {
    return std::move(query->status);
  }
  lock.unlock();
  query->connection->abort();
  return std::nullopt;
}

}  // namespace tvrscn
