// By the system's own call: of threads that MinGW's std::thread starts and lets go of one soon
// after the other, now and then one never runs, since the record of one that is just ending is
// given to the next.
#include "platform/tdspclient/detached_thread.h"

#include <memory>
#include <utility>

#include "platform/threads.h"
#include "platform/windows/unique_handle.h"

namespace {

using Work = std::function<void()>;

unsigned WINAPI run(void* argument) {
  const std::unique_ptr<Work> work(static_cast<Work*>(argument));
  (*work)();
  return 0;
}

}  // namespace

bool tvrscn::startDetached(std::function<void()> work) {
  auto argument = std::make_unique<Work>(std::move(work));
  const UniqueHandle thread(
      reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, &run, argument.get(), 0, nullptr)));
  if (!thread.valid()) return false;
  argument.release();  // the thread's from here on
  return true;
}
