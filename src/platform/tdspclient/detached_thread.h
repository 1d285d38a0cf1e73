// A thread that nobody waits for.
#ifndef TVRSCN_PLATFORM_TDSPCLIENT_DETACHED_THREAD_H
#define TVRSCN_PLATFORM_TDSPCLIENT_DETACHED_THREAD_H

#include <functional>

namespace tvrscn {

// Runs work, which must not throw. False when the system gives no thread. Throws std::bad_alloc.
bool startDetached(std::function<void()> work);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_TDSPCLIENT_DETACHED_THREAD_H
