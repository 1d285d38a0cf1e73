// There is one module here, the device-setup service, and it is part of this program.
#include "platform/modules.h"

#include <cstddef>
#include <cstring>
#include <cwchar>
#include <string_view>

#include "platform/device_file.h"
#include "platform/device_setup.h"
#include "platform/posix/ascii.h"
#include "platform/posix/system_error.h"

namespace {

constexpr wchar_t kSystemFolder[] = L"/usr/lib";
constexpr int kFolderMask = 0xFF;  // the folder's number without its flags
constexpr HRESULT kInvalidArgument = static_cast<HRESULT>(0x80070057U);

struct Procedure {
  const char* name;
  FARPROC address;
};

// A caller casts the address back to the type that it knows by the name.
template <typename Function>
FARPROC addressOf(Function* function) {
  return reinterpret_cast<FARPROC>(function);
}

const Procedure kDeviceSetup[] = {
    {"SetupDiGetClassDevsW", addressOf(&SetupDiGetClassDevsW)},
    {"SetupDiEnumDeviceInfo", addressOf(&SetupDiEnumDeviceInfo)},
    {"SetupDiGetDeviceInstanceIdW", addressOf(&SetupDiGetDeviceInstanceIdW)},
    {"SetupDiDestroyDeviceInfoList", addressOf(&SetupDiDestroyDeviceInfoList)},
    {"SetupDiEnumDeviceInterfaces", addressOf(&SetupDiEnumDeviceInterfaces)},
    {"SetupDiGetDeviceInterfaceDetailW", addressOf(&SetupDiGetDeviceInterfaceDetailW)},
    {"SetupDiGetDeviceRegistryPropertyW", addressOf(&SetupDiGetDeviceRegistryPropertyW)},
};

// Its address is the module's handle.
char deviceSetupModule = 0;

}  // namespace

HRESULT SHGetFolderPathW(HWND /*owner*/, int folder, HANDLE /*token*/, DWORD /*flags*/,
                         wchar_t* path) {
  if (path == nullptr || (folder & kFolderMask) != CSIDL_SYSTEM) return kInvalidArgument;
  std::memcpy(path, kSystemFolder, sizeof(kSystemFolder));
  return S_OK;
}

HMODULE LoadLibraryW(const wchar_t* path) {
  const std::wstring_view whole = path != nullptr ? path : L"";
  const std::size_t separator = whole.find_last_of(L"/\\");
  const std::wstring_view name =
      separator == std::wstring_view::npos ? whole : whole.substr(separator + 1);
  if (tvrscn::equalsIgnoringCase(name, L"setupapi.dll")) return &deviceSetupModule;
  SetLastError(tvrscn::kErrorModuleNotFound);
  return nullptr;
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
  if (module != &deviceSetupModule) {
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
  }
  for (const Procedure& procedure : kDeviceSetup) {
    if (name != nullptr && std::strcmp(procedure.name, name) == 0) return procedure.address;
  }
  SetLastError(tvrscn::kErrorProcedureNotFound);
  return nullptr;
}

BOOL FreeLibrary(HMODULE module) {
  if (module == &deviceSetupModule) return 1;
  SetLastError(ERROR_INVALID_HANDLE);
  return 0;
}

namespace tvrscn {

// Modules of this system carry no string resources.
std::wstring moduleString(HINSTANCE /*module*/, unsigned int /*id*/) {
  return {};
}

}  // namespace tvrscn
