#include "system.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <random>
#include <system_error>

#include <windows.h>

#include <shellapi.h>

#include "streams.h"
#include "text.h"

namespace tvrscn::cli {

namespace fs = std::filesystem;

namespace {

std::system_error lastError(DWORD error, const fs::path& file) {
  return {static_cast<int>(error), std::system_category(), textOf(file)};
}

std::wstring randomLetters() {
  constexpr std::wstring_view kLetters = L"abcdefghijklmnopqrstuvwxyz0123456789";
  constexpr std::size_t kCount = 8;
  std::random_device random;
  std::wstring text;
  while (text.size() < kCount)
    text += kLetters[random() % kLetters.size()];
  return text;
}

}  // namespace

// The arguments of main are in the narrow code page, where half of the file names cannot be said.
std::vector<std::string> commandLineArguments(int /*argc*/, char** /*argv*/) {
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int index = 1; words != nullptr && index < count; ++index)
    arguments.push_back(utf8Text(words[index]));
  LocalFree(words);
  return arguments;
}

std::string textOf(const fs::path& path) {
  return utf8Text(path.wstring());
}

fs::path pathOf(const std::string& text) {
  return wideText(text);
}

// The C library keeps a copy of the environment, and the libraries may read either one.
void setEnvironment(const std::string& name, const std::string& value) {
  _wputenv_s(wideText(name).c_str(), wideText(value).c_str());
  SetEnvironmentVariableW(wideText(name).c_str(), wideText(value).c_str());
}

std::string environment(const std::string& name) {
  const std::wstring wideName = wideText(name);
  std::wstring value;
  DWORD length = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
  while (length > value.size()) {
    value.resize(length);
    length = GetEnvironmentVariableW(wideName.c_str(), value.data(), length);
  }
  value.resize(length);
  return utf8Text(value);
}

void setTemporaryFolder(const fs::path& folder) {
  for (const char* name : {"TMP", "TEMP"})
    setEnvironment(name, textOf(folder));
}

// The folder takes the rights of its parent: the user's own in the folder for temporary files. A
// narrower right would stay with the pages that are moved out of it.
fs::path createPrivateFolder(const fs::path& parent, const std::string& prefix) {
  constexpr int kTries = 100;
  DWORD error = ERROR_ALREADY_EXISTS;
  for (int tried = 0; tried < kTries && error == ERROR_ALREADY_EXISTS; ++tried) {
    fs::path folder = parent / (wideText(prefix) + randomLetters());
    if (CreateDirectoryW(folder.c_str(), nullptr) != 0) return folder;
    error = GetLastError();
  }
  throw lastError(error, parent);
}

bool createNewFile(const fs::path& file) {
  const HANDLE handle = CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle != INVALID_HANDLE_VALUE) {
    CloseHandle(handle);
    return true;
  }
  const DWORD error = GetLastError();
  if (error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS) return false;
  throw lastError(error, file);
}

// Rights say little of what a folder takes in the end, so it is tried.
bool canCreateFilesIn(const fs::path& folder) {
  const fs::path file = folder / (L"tvrscan-" + randomLetters());
  const HANDLE handle = CreateFileW(file.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return false;
  CloseHandle(handle);
  return true;
}

// Devices stand in the registry.
fs::path userDeviceFolder() {
  return {};
}

// The endpoint is a named pipe, and the names of pipes know no folders.
fs::path endpointPlace(const std::string& word) {
  return pathOf(word);
}

std::string endpointName(const fs::path& place) {
  return textOf(place);
}

void endProcess(int exitCode) noexcept {
  restoreStreams();
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
  std::abort();  // not reached
}

}  // namespace tvrscn::cli
