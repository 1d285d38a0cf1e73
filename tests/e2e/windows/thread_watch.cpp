// A thread's own variables go too early with some compilers, so the thread is waited for by its
// handle.
#include <condition_variable>
#include <mutex>

#include <windows.h>

#include "tests/e2e/system.h"
#include "virtual/windows/unique_handle.h"

namespace tvrscn::test {

using virtual_device::UniqueHandle;

struct ThreadWatch::State {
  std::mutex mutex;
  std::condition_variable watched;
  UniqueHandle thread;
  bool hasThread = false;
};

ThreadWatch::ThreadWatch() : state_(std::make_shared<State>()) {}
ThreadWatch::~ThreadWatch() = default;

void ThreadWatch::watchThisThread() {
  const std::lock_guard lock(state_->mutex);
  if (state_->hasThread) return;
  state_->thread = UniqueHandle(OpenThread(SYNCHRONIZE, 0, GetCurrentThreadId()));
  state_->hasThread = true;
  state_->watched.notify_all();
}

bool ThreadWatch::wait(std::chrono::milliseconds patience) {
  std::unique_lock lock(state_->mutex);
  if (!state_->watched.wait_for(lock, patience, [this] { return state_->hasThread; })) return false;
  lock.unlock();
  const auto millis = static_cast<DWORD>(patience.count());
  const bool ended = WaitForSingleObject(state_->thread.get(), millis) == WAIT_OBJECT_0;
  state_->hasThread = false;
  return ended;
}

}  // namespace tvrscn::test
