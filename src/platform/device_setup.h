// The device-setup service: the set of present devices and what the system knows of each. The
// controllers reach the functions through GetProcAddress on the module "setupapi.dll".
#ifndef TVRSCN_PLATFORM_DEVICE_SETUP_H
#define TVRSCN_PLATFORM_DEVICE_SETUP_H

#include "tvrscn/types.h"

#if !defined(_WIN32)

constexpr DWORD DIGCF_PRESENT = 0x2;
constexpr DWORD DIGCF_ALLCLASSES = 0x4;
constexpr DWORD SPDRP_DRIVER = 0x9;

// A snapshot of the present devices of an enumerator ("USB"): those of the device folder first, in
// byte order of their file names, then the system's in bus order. INVALID_HANDLE_VALUE on failure.
HDEVINFO SetupDiGetClassDevsW(const GUID* classGuid, const wchar_t* enumerator, HWND parent,
                              DWORD flags);
// False behind the last device, and for a record whose cbSize is not 32.
BOOL SetupDiEnumDeviceInfo(HDEVINFO set, DWORD index, SP_DEVINFO_DATA* info);
BOOL SetupDiGetDeviceInstanceIdW(HDEVINFO set, SP_DEVINFO_DATA* info, wchar_t* instanceId,
                                 DWORD characters, DWORD* required);
// Reads SPDRP_DRIVER as wide text with its terminator; a failure sets a last error other than 0.
BOOL SetupDiGetDeviceRegistryPropertyW(HDEVINFO set, SP_DEVINFO_DATA* info, DWORD property,
                                       DWORD* type, BYTE* buffer, DWORD size, DWORD* required);
BOOL SetupDiDestroyDeviceInfoList(HDEVINFO set);
// These two exist for completeness of the service and find nothing.
BOOL SetupDiEnumDeviceInterfaces(HDEVINFO set, SP_DEVINFO_DATA* info, const GUID* interfaceClass,
                                 DWORD index, SP_DEVICE_INTERFACE_DATA* data);
BOOL SetupDiGetDeviceInterfaceDetailW(HDEVINFO set, SP_DEVICE_INTERFACE_DATA* data,
                                      SP_DEVICE_INTERFACE_DETAIL_DATA_W* detail, DWORD size,
                                      DWORD* required, SP_DEVINFO_DATA* info);

#endif  // !_WIN32

#endif  // TVRSCN_PLATFORM_DEVICE_SETUP_H
