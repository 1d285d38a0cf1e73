// The Windows type names that the exported classes use. On Windows they are the system's own; on
// Linux this header declares just the ones that the contract needs, with the same meaning.
#ifndef TVRSCN_TYPES_H
#define TVRSCN_TYPES_H

#if defined(_WIN32)

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <setupapi.h>

#define TVRSCN_WINAPI WINAPI

#else

#include <cstdint>

#define TVRSCN_WINAPI

using BOOL = int;
using BYTE = unsigned char;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;  // 32 bits on every system, as the device records expect
using INT = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG_PTR = std::uintptr_t;

// An open device or thread; closed with CloseHandle by whoever opened it.
using HANDLE = void*;
using HWND = void*;
// A loaded module; HINSTANCE names the one that holds message texts.
using HMODULE = void*;
using HINSTANCE = void*;
// A set of devices, as the device-setup service hands it out.
using HDEVINFO = void*;

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
using CLSID = GUID;

// One device of a set. cbSize has to be 32 before the record is handed in.
struct SP_DEVINFO_DATA {
  DWORD cbSize;
  GUID ClassGuid;
  DWORD DevInst;
  ULONG_PTR Reserved;
};
static_assert(sizeof(SP_DEVINFO_DATA) == 32, "the device-setup service checks this size");

// Records of two calls that are resolved and never made; their insides are of no concern.
struct SP_DEVICE_INTERFACE_DATA;
struct SP_DEVICE_INTERFACE_DETAIL_DATA_W;

#ifndef INVALID_HANDLE_VALUE
// NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own value, all bits set
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(-1)))
#endif

#endif  // _WIN32

// The seven functions of the device-setup service, as the controllers keep them.
using PfnSetupDiGetClassDevsW = HDEVINFO(TVRSCN_WINAPI*)(const GUID*, const wchar_t*, HWND, DWORD);
using PfnSetupDiEnumDeviceInfo = BOOL(TVRSCN_WINAPI*)(HDEVINFO, DWORD, SP_DEVINFO_DATA*);
using PfnSetupDiGetDeviceInstanceIdW = BOOL(TVRSCN_WINAPI*)(HDEVINFO, SP_DEVINFO_DATA*, wchar_t*,
                                                            DWORD, DWORD*);
using PfnSetupDiDestroyDeviceInfoList = BOOL(TVRSCN_WINAPI*)(HDEVINFO);
using PfnSetupDiEnumDeviceInterfaces = BOOL(TVRSCN_WINAPI*)(HDEVINFO, SP_DEVINFO_DATA*, const GUID*,
                                                            DWORD, SP_DEVICE_INTERFACE_DATA*);
using PfnSetupDiGetDeviceInterfaceDetailW = BOOL(TVRSCN_WINAPI*)(HDEVINFO,
                                                                 SP_DEVICE_INTERFACE_DATA*,
                                                                 SP_DEVICE_INTERFACE_DETAIL_DATA_W*,
                                                                 DWORD, DWORD*, SP_DEVINFO_DATA*);
using PfnSetupDiGetDeviceRegistryPropertyW = BOOL(TVRSCN_WINAPI*)(HDEVINFO, SP_DEVINFO_DATA*, DWORD,
                                                                  DWORD*, BYTE*, DWORD, DWORD*);

#endif  // TVRSCN_TYPES_H
