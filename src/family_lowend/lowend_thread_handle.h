// The one word of a controller that two threads touch at once: the job's thread keeps the handle of
// the worker when the start has returned, and a worker that is done by then has read it already.
// Such a worker sees the value from before. Nothing else hangs on the handle, so no order is asked
// for, but neither side may see half a word.
#ifndef TVRSCN_FAMILY_LOWEND_LOWEND_THREAD_HANDLE_H
#define TVRSCN_FAMILY_LOWEND_LOWEND_THREAD_HANDLE_H

#include <atomic>

#include "tvrscn/types.h"

namespace tvrscn {

// On the thread of the job, behind _beginthreadex.
inline void storeThreadHandle(HANDLE& member, HANDLE handle) {
  std::atomic_ref<HANDLE>(member).store(handle, std::memory_order_relaxed);
}

// On the worker.
inline HANDLE loadThreadHandle(HANDLE& member) {
  return std::atomic_ref<HANDLE>(member).load(std::memory_order_relaxed);
}

}  // namespace tvrscn

#endif  // TVRSCN_FAMILY_LOWEND_LOWEND_THREAD_HANDLE_H
