// Threads and waits.
#ifndef TVRSCN_PLATFORM_THREADS_H
#define TVRSCN_PLATFORM_THREADS_H

#include <cstdint>

#include "tvrscn/types.h"

#if defined(_WIN32)

#include <process.h>

#else

void Sleep(DWORD milliseconds);

// Starts a thread; 0 on failure. CloseHandle gives the handle up, the thread runs on.
std::uintptr_t _beginthreadex(void* security, unsigned stackSize, unsigned (*start)(void*),
                              void* argument, unsigned flags, unsigned* threadId);

#endif  // _WIN32

#endif  // TVRSCN_PLATFORM_THREADS_H
