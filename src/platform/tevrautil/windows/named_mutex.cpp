// The system's mutex belongs to a thread, which may take it again and alone may give it up. An
// object here belongs to nobody, and two objects of one thread exclude each other: so each object
// that waits or holds has a thread of its own, its keeper, that does it in the object's place. The
// system releases the mutex with the process that holds it.
#include "tvrscn/tevrautil/named_mutex.h"

#include <algorithm>
#include <memory>
#include <new>

#include "platform/threads.h"
#include "platform/windows/unique_handle.h"

namespace {

using tvrscn::UniqueHandle;

constexpr DWORD kLongestWait = INFINITE - 1;  // the next value would be no limit at all
constexpr unsigned kKeeperStack = 64U * 1024;

// What object and keeper share; belongs to the object, which outlives its keeper.
struct Lock {
  UniqueHandle mutex;
  UniqueHandle decided;  // the keeper holds the mutex or has not got it
  UniqueHandle giveUp;   // the keeper may let it go
  UniqueHandle keeper;
  DWORD wait = 0;  // milliseconds
  DWORD outcome = WAIT_FAILED;
};

bool isHeld(DWORD outcome) {
  return outcome == WAIT_OBJECT_0 || outcome == WAIT_ABANDONED;  // abandoned by a holder that died
}

unsigned WINAPI keep(void* argument) {
  auto& lock = *static_cast<Lock*>(argument);
  const DWORD outcome = WaitForSingleObject(lock.mutex.get(), lock.wait);
  lock.outcome = outcome;
  SetEvent(lock.decided.get());
  if (!isHeld(outcome)) return 0;
  WaitForSingleObject(lock.giveUp.get(), INFINITE);
  ReleaseMutex(lock.mutex.get());
  return 0;
}

// Ends when the keeper has the mutex or has given up.
DWORD attempt(Lock& lock, unsigned long milliseconds) {
  lock.wait = std::min<DWORD>(milliseconds, kLongestWait);
  lock.outcome = WAIT_FAILED;
  lock.keeper = UniqueHandle(
      reinterpret_cast<HANDLE>(_beginthreadex(nullptr, kKeeperStack, &keep, &lock, 0, nullptr)));
  if (!lock.keeper.valid()) return WAIT_FAILED;
  WaitForSingleObject(lock.decided.get(), INFINITE);
  if (!isHeld(lock.outcome)) WaitForSingleObject(lock.keeper.get(), INFINITE);
  return lock.outcome;
}

std::unique_ptr<Lock> openLock(const wchar_t* name) {
  std::unique_ptr<Lock> lock(new (std::nothrow) Lock);
  if (lock == nullptr) return nullptr;
  lock->mutex = UniqueHandle(CreateMutexW(nullptr, FALSE, name));
  lock->decided = UniqueHandle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
  lock->giveUp = UniqueHandle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
  if (!lock->mutex.valid() || !lock->decided.valid() || !lock->giveUp.valid()) return nullptr;
  return lock;
}

}  // namespace

XMutex::XMutex(const wchar_t* name)
    : m_hMutex(openLock(name != nullptr ? name : L"").release()), m_bHeld(false) {}

XMutex::~XMutex() {
  const std::unique_ptr<Lock> lock(static_cast<Lock*>(m_hMutex));
  if (lock == nullptr || !m_bHeld) return;
  // Waited for, so that the mutex is free when this ends.
  SetEvent(lock->giveUp.get());
  WaitForSingleObject(lock->keeper.get(), INFINITE);
}

bool XMutex::WaitWithRetry(unsigned long millisecondsPerTry, unsigned long tries) {
  auto* const lock = static_cast<Lock*>(m_hMutex);
  if (lock == nullptr) return false;
  for (unsigned long i = 0; i < tries && !m_bHeld; ++i) {
    const DWORD outcome = attempt(*lock, millisecondsPerTry);
    if (outcome == WAIT_FAILED) return false;
    m_bHeld = isHeld(outcome);
  }
  return m_bHeld;
}
