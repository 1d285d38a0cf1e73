// The rest of the fake system: modules, files, names and text, threads, dialogs. Temporary files
// are real files in the platform's own folder, for the host writes and the decoder reads them by
// name.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/device_file.h"
#include "platform/device_setup.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/identity_text.h"
#include "platform/modules.h"
#include "platform/threads.h"
#include "tests/support/fake_platform.h"

using tvrscn::test::FakeObject;
using tvrscn::test::FakePlatform;
using tvrscn::test::hexNumber;
using tvrscn::test::Kind;
using tvrscn::test::toPath;
using tvrscn::test::utf8;

const wchar_t tvrscn::kPathSeparator = L'/';

std::filesystem::path tvrscn::systemPath(const std::wstring& path) {
  const std::filesystem::path named(utf8(path));
  const bool atRoot = named.has_filename() && named.parent_path() == "/";
  return atRoot ? FakePlatform::current().driveRoot() / named.filename() : named;
}

std::filesystem::path tvrscn::storeAppSettingsPath() {
  return FakePlatform::current().storeAppSettings;
}

// --- Modules
// ---------------------------------------------------------------------------------------

HRESULT SHGetFolderPathW(HWND owner, int folder, HANDLE token, DWORD flags, wchar_t* path) {
  FakePlatform& platform = FakePlatform::current();
  std::string text = "SHGetFolderPathW " + hexNumber(static_cast<unsigned>(folder));
  if (owner != nullptr) text += " owner";
  if (token != nullptr) text += " token";
  if (flags != 0) text += " flags";
  platform.record(Kind::kModule, text);
  const auto outcome = platform.call("SHGetFolderPathW");
  if (outcome.fail) return -1;
  const std::wstring name = platform.systemFolder.substr(0, MAX_PATH - 1);
  std::copy_n(name.c_str(), name.size() + 1, path);
  return S_OK;
}

HMODULE LoadLibraryW(const wchar_t* path) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kModule, "LoadLibraryW " + utf8(path));
  const auto outcome = platform.call("LoadLibraryW");
  if (outcome.fail) {
    platform.lastError = outcome.error;
    return nullptr;
  }
  return &platform.makeNumbered("module");
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kModule, std::string("GetProcAddress ") + name);
  const auto outcome = platform.call("GetProcAddress");
  const struct {
    const char* name;
    FARPROC function;
  } kFunctions[] = {
      {"SetupDiGetClassDevsW", reinterpret_cast<FARPROC>(SetupDiGetClassDevsW)},
      {"SetupDiEnumDeviceInfo", reinterpret_cast<FARPROC>(SetupDiEnumDeviceInfo)},
      {"SetupDiGetDeviceInstanceIdW", reinterpret_cast<FARPROC>(SetupDiGetDeviceInstanceIdW)},
      {"SetupDiDestroyDeviceInfoList", reinterpret_cast<FARPROC>(SetupDiDestroyDeviceInfoList)},
      {"SetupDiEnumDeviceInterfaces", reinterpret_cast<FARPROC>(SetupDiEnumDeviceInterfaces)},
      {"SetupDiGetDeviceInterfaceDetailW",
       reinterpret_cast<FARPROC>(SetupDiGetDeviceInterfaceDetailW)},
      {"SetupDiGetDeviceRegistryPropertyW",
       reinterpret_cast<FARPROC>(SetupDiGetDeviceRegistryPropertyW)},
  };
  if (outcome.fail || platform.find(module, "module") == nullptr) return nullptr;
  if (platform.missingFunctions.contains(name)) return nullptr;
  for (const auto& entry : kFunctions) {
    if (std::strcmp(entry.name, name) == 0) return entry.function;
  }
  return nullptr;
}

BOOL FreeLibrary(HMODULE module) {
  FakePlatform& platform = FakePlatform::current();
  FakeObject* object = platform.find(module, "module");
  platform.record(Kind::kModule, "FreeLibrary");
  if (platform.call("FreeLibrary").fail || object == nullptr) return 0;
  object->live = false;
  return 1;
}

std::wstring tvrscn::moduleString(HINSTANCE module, unsigned int id) {
  if (module == nullptr) return {};
  const auto& strings = FakePlatform::current().moduleStrings;
  const auto found = strings.find(id);
  return found == strings.end() ? std::wstring() : found->second;
}

// --- Threads and waits
// -------------------------------------------------------------------------------

void Sleep(DWORD milliseconds) {
  FakePlatform::current().record(Kind::kSleep, "Sleep " + std::to_string(milliseconds));
  FakePlatform::current().call("Sleep");
}

std::uintptr_t _beginthreadex(void*, unsigned, unsigned (*start)(void*), void* argument, unsigned,
                              unsigned* threadId) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kModule, "_beginthreadex");
  if (platform.call("_beginthreadex").fail) return 0;
  platform.threads.push_back([start, argument] { return start(argument); });
  if (threadId != nullptr) *threadId = static_cast<unsigned>(platform.threads.size());
  return reinterpret_cast<std::uintptr_t>(&platform.make("handle", "thread"));
}

// --- Files
// ---------------------------------------------------------------------------------------------

DWORD GetTempPathW(DWORD characters, wchar_t* buffer) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kFile, "GetTempPathW " + std::to_string(characters));
  const auto outcome = platform.call("GetTempPathW");
  if (outcome.fail) {
    platform.lastError = outcome.error;
    return 0;
  }
  const std::wstring path = platform.tempFolderName() + L"/";
  if (path.size() + 1 > characters) return static_cast<DWORD>(path.size() + 1);
  std::copy_n(path.c_str(), path.size() + 1, buffer);
  return platform.tempPathLength.value_or(static_cast<DWORD>(path.size()));
}

UINT GetTempFileNameW(const wchar_t* folder, const wchar_t* prefix, UINT unique,
                      wchar_t* fileName) {
  FakePlatform& platform = FakePlatform::current();
  std::string text = "GetTempFileNameW " + utf8(prefix) + " " + std::to_string(unique);
  if (std::wstring(folder) != platform.tempFolderName() + L"/") text += " in another folder";
  platform.record(Kind::kFile, text);
  const auto outcome = platform.call("GetTempFileNameW");
  if (outcome.fail) {
    platform.lastError = outcome.error;
    return 0;
  }
  const std::wstring path = platform.makeTempFile(prefix);
  std::copy_n(path.c_str(), path.size() + 1, fileName);
  return 1;
}

BOOL DeleteFileW(const wchar_t* fileName) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kFile, "DeleteFileW " + platform.pathName(fileName));
  const auto outcome = platform.call("DeleteFileW");
  std::error_code error;
  if (!outcome.fail && std::filesystem::remove(toPath(fileName), error)) return 1;
  platform.lastError = outcome.fail ? outcome.error : ERROR_FILE_NOT_FOUND;
  return 0;
}

BOOL CopyFileW(const wchar_t* existing, const wchar_t* copy, BOOL failIfExists) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kFile,
                  "CopyFileW " + platform.pathName(existing) + " " + platform.pathName(copy));
  const auto outcome = platform.call("CopyFileW");
  const auto options = failIfExists != 0 ? std::filesystem::copy_options::none
                                         : std::filesystem::copy_options::overwrite_existing;
  std::error_code error;
  const bool copied =
      !outcome.fail && std::filesystem::copy_file(toPath(existing), toPath(copy), options, error);
  if (!copied) platform.lastError = outcome.fail ? outcome.error : ERROR_ACCESS_DENIED;
  return copied ? 1 : 0;
}

// --- Names and text
// --------------------------------------------------------------------------------------

namespace {

BOOL giveName(const char* function, const std::wstring& name, std::size_t lengthUsed,
              wchar_t* buffer, DWORD* size) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kText, function);
  const auto outcome = platform.call(function);
  if (outcome.fail || name.size() + 1 > *size) {
    platform.lastError = outcome.fail ? outcome.error : ERROR_INSUFFICIENT_BUFFER;
    return 0;
  }
  std::copy_n(name.c_str(), name.size() + 1, buffer);
  *size = static_cast<DWORD>(lengthUsed);
  return 1;
}

std::string conversionText(const char* function, UINT codePage, DWORD flags, int from, int to) {
  return std::string(function) + " page " + std::to_string(codePage) + " flags " +
         std::to_string(flags) + " from " + std::to_string(from) + " to " + std::to_string(to);
}

}  // namespace

BOOL GetUserNameW(wchar_t* buffer, DWORD* size) {
  const std::wstring name = FakePlatform::current().userName;
  return giveName("GetUserNameW", name, name.size() + 1, buffer, size);
}

BOOL GetComputerNameW(wchar_t* buffer, DWORD* size) {
  const std::wstring name = FakePlatform::current().computerName;
  return giveName("GetComputerNameW", name, name.size(), buffer, size);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* wide, int wideLength,
                        char* narrow, int narrowLength, const char*, BOOL*) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kText,
                  conversionText("WideCharToMultiByte", codePage, flags, wideLength, narrowLength));
  if (platform.call("WideCharToMultiByte").fail) return 0;
  const std::string text = wideLength < 0
                               ? utf8(std::wstring(wide)) + '\0'
                               : utf8(std::wstring(wide, static_cast<std::size_t>(wideLength)));
  const auto length = static_cast<int>(text.size());
  if (narrowLength == 0) return length;
  if (narrowLength < length) return 0;
  std::copy(text.begin(), text.end(), narrow);
  return length;
}

// Bytes beyond ASCII become characters of a private area, so that a test can tell the system's
// conversion from a widening of bytes.
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* narrow, int narrowLength,
                        wchar_t* wide, int wideLength) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kText,
                  conversionText("MultiByteToWideChar", codePage, flags, narrowLength, wideLength));
  if (platform.call("MultiByteToWideChar").fail) return 0;
  const std::string text = narrowLength < 0
                               ? std::string(narrow) + '\0'
                               : std::string(narrow, static_cast<std::size_t>(narrowLength));
  const auto length = static_cast<int>(text.size());
  if (wideLength == 0) return length;
  if (wideLength < length) return 0;
  for (const char byte : text) {
    const auto value = static_cast<unsigned char>(byte);
    *wide++ = static_cast<wchar_t>(value < 0x80 ? value : 0xF700 + value);
  }
  return length;
}

// --- Dialogs
// ---------------------------------------------------------------------------------------------

int MessageBoxW(HWND owner, const wchar_t* text, const wchar_t* caption, UINT type) {
  FakePlatform& platform = FakePlatform::current();
  std::string line = "Dialog [" + utf8(caption) + "] " + utf8(text) + " " + hexNumber(type);
  if (owner != nullptr) line += " owner";
  platform.record(Kind::kDialog, line);
  if (platform.call("MessageBoxW").fail) return 0;
  if (platform.dialogAnswers.empty()) return IDOK;
  const int answer = platform.dialogAnswers.front();
  platform.dialogAnswers.erase(platform.dialogAnswers.begin());
  return answer;
}
