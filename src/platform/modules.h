// Modules, the system folder, and the texts that a module carries.
#ifndef TVRSCN_PLATFORM_MODULES_H
#define TVRSCN_PLATFORM_MODULES_H

#include <string>

#include "tvrscn/types.h"

#if defined(_WIN32)

#include <shlobj.h>

#else

using HRESULT = LONG;
using FARPROC = void (*)();
constexpr HRESULT S_OK = 0;
constexpr int CSIDL_SYSTEM = 0x25;
constexpr int CSIDL_FLAG_CREATE = 0x8000;
constexpr DWORD MAX_PATH = 260;

// The system folder; buffer holds MAX_PATH characters.
HRESULT SHGetFolderPathW(HWND owner, int folder, HANDLE token, DWORD flags, wchar_t* path);
// Knows the module "setupapi.dll" in any folder; null, with a last error, for any other.
HMODULE LoadLibraryW(const wchar_t* path);
FARPROC GetProcAddress(HMODULE module, const char* name);
BOOL FreeLibrary(HMODULE module);

#endif  // _WIN32

namespace tvrscn {

// The string resource `id` of a module, empty when the module is null or has none.
std::wstring moduleString(HINSTANCE module, unsigned int id);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_MODULES_H
