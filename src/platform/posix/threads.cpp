// Threads are detached from the start: nobody waits for one, its handle is only there to be closed.
#include "platform/threads.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <memory>
#include <system_error>
#include <thread>

#include "platform/posix/handle_table.h"

namespace tvrscn {
namespace {

class ThreadHandle final : public HandleObject {};

std::atomic<unsigned> lastThreadId = 0;

}  // namespace
}  // namespace tvrscn

void Sleep(DWORD milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// The stack has the system's usual size, whatever is asked for. No flag is known; a thread that
// should start suspended is not started.
std::uintptr_t _beginthreadex(void* /*security*/, unsigned /*stackSize*/, unsigned (*start)(void*),
                              void* argument, unsigned flags, unsigned* threadId) {
  if (start == nullptr || flags != 0) {
    errno = EINVAL;
    return 0;
  }
  try {
    auto object = std::make_shared<tvrscn::ThreadHandle>();
    std::thread(start, argument).detach();
    if (threadId != nullptr) *threadId = ++tvrscn::lastThreadId;
    return reinterpret_cast<std::uintptr_t>(tvrscn::registerHandle(std::move(object)));
  } catch (const std::system_error&) {
    errno = EAGAIN;
    return 0;
  }
}
