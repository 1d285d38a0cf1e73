// Device files for programs that run the library on the real platform and play the device
// themselves: everything but ReadFile, which the program defines, takes what it is given and says
// nothing. Stands in front of the platform's own; so do the waits, which take no time, and the
// thread, which is never started.
#include "platform/device_file.h"
#include "platform/threads.h"

HANDLE CreateFileW(const wchar_t*, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD, HANDLE) {
  return INVALID_HANDLE_VALUE;
}

BOOL WriteFile(HANDLE, const void*, DWORD size, DWORD* written, OVERLAPPED*) {
  *written = size;
  return 1;
}

BOOL FlushFileBuffers(HANDLE) {
  return 1;
}

BOOL CloseHandle(HANDLE) {
  return 1;
}

DWORD GetLastError() {
  return ERROR_GEN_FAILURE;
}

void SetLastError(DWORD) {}

void Sleep(DWORD) {}

std::uintptr_t _beginthreadex(void*, unsigned, unsigned (*)(void*), void*, unsigned, unsigned*) {
  return 0;
}
