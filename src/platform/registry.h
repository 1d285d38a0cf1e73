// The two registry reads of the device search.
#ifndef TVRSCN_PLATFORM_REGISTRY_H
#define TVRSCN_PLATFORM_REGISTRY_H

#include "tvrscn/types.h"

#if !defined(_WIN32)

using HKEY = void*;
using REGSAM = DWORD;
using LSTATUS = LONG;

constexpr LSTATUS ERROR_SUCCESS = 0;
constexpr REGSAM KEY_READ = 0x20019;
// NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own value
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000002U));

// Opens "SYSTEM\CurrentControlSet\Enum\<instance id>" and
// "SYSTEM\CurrentControlSet\Control\Class\<driver key>" of the present devices. Returns
// ERROR_SUCCESS or the reason; the last error is left alone. Keys are never closed.
LSTATUS RegOpenKeyExW(HKEY key, const wchar_t* subKey, DWORD options, REGSAM access, HKEY* result);
// Reads "CreateFileName" of a class key as wide text with its terminator; size is in bytes. The
// last error is left alone.
LSTATUS RegQueryValueExW(HKEY key, const wchar_t* valueName, DWORD* reserved, DWORD* type,
                         BYTE* data, DWORD* size);

#endif  // !_WIN32

#endif  // TVRSCN_PLATFORM_REGISTRY_H
