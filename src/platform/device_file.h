// Device files: synchronous transfers on an open endpoint, and the thread's last error.
#ifndef TVRSCN_PLATFORM_DEVICE_FILE_H
#define TVRSCN_PLATFORM_DEVICE_FILE_H

#include "tvrscn/types.h"

#if !defined(_WIN32)

constexpr DWORD GENERIC_READ = 0x80000000U;
constexpr DWORD GENERIC_WRITE = 0x40000000U;
constexpr DWORD FILE_SHARE_READ = 0x1;
constexpr DWORD FILE_SHARE_WRITE = 0x2;
constexpr DWORD OPEN_EXISTING = 3;

// System error values that the core or a device promise names.
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_NOT_SUPPORTED = 50;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
constexpr DWORD ERROR_BUSY = 170;
constexpr DWORD ERROR_MORE_DATA = 234;
constexpr DWORD ERROR_NO_MORE_ITEMS = 259;
constexpr DWORD ERROR_INVALID_DATA = 13;
constexpr DWORD ERROR_DEVICE_NOT_CONNECTED = 1167;

struct SECURITY_ATTRIBUTES;
struct OVERLAPPED;

// Opens an endpoint: "unix:/path", an absolute path, or "usb:BUS:ADDRESS:INTERFACE" (which cannot
// be opened yet). Handles on one endpoint share one claim. INVALID_HANDLE_VALUE on failure.
HANDLE CreateFileW(const wchar_t* name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                   DWORD disposition, DWORD flags, HANDLE templateFile);
// Ends when size bytes are there or when the device ends its transfer; blocks without a time-out.
BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, OVERLAPPED* overlapped);
// One call is one transfer.
BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, OVERLAPPED* overlapped);
BOOL FlushFileBuffers(HANDLE file);
BOOL CloseHandle(HANDLE handle);

DWORD GetLastError();
void SetLastError(DWORD error);

#endif  // !_WIN32

#endif  // TVRSCN_PLATFORM_DEVICE_FILE_H
