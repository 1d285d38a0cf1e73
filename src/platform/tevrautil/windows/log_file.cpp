// The name is looked up in the environment at each line, so that a program can turn its log on and
// off; the file stays open as long as its name stays the same.
#include "platform/tevrautil/log_file.h"

#include <limits>
#include <mutex>
#include <string>

#include "platform/windows/unique_handle.h"

namespace tvrscn {
namespace {

constexpr wchar_t kLogVariable[] = L"TVRSCN_LOG";

struct LogFile {
  std::mutex mutex;
  std::wstring name;  // of the open file
  UniqueHandle file;
};

LogFile& logFile() {
  static LogFile& log = *new LogFile;  // lines come until the very end of the process
  return log;
}

// Empty when the variable is not set.
std::wstring logFileName() {
  std::wstring name(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length =
        GetEnvironmentVariableW(kLogVariable, name.data(), static_cast<DWORD>(name.size()));
    // Too short a buffer answers the length needed, the terminator included.
    const bool whole = length < name.size();
    name.resize(length);
    if (whole) return name;
  }
}

std::string utf8Of(std::wstring_view text) {
  if (text.size() > std::size_t{std::numeric_limits<int>::max()}) return {};
  const int length = static_cast<int>(text.size());
  const int needed =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(needed), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), needed, nullptr, nullptr);
  return bytes;
}

// With no right but to append, the system adds each write at the end in one step, so that lines of
// several processes do not mix.
UniqueHandle openForAppending(const std::wstring& name) {
  return UniqueHandle(CreateFileW(name.c_str(), FILE_APPEND_DATA,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// A failure that is being reported must read the same before and after its line was written.
class KeepLastError {
 public:
  KeepLastError() : error_(GetLastError()) {}
  KeepLastError(const KeepLastError&) = delete;
  KeepLastError& operator=(const KeepLastError&) = delete;
  ~KeepLastError() { SetLastError(error_); }

 private:
  DWORD error_;
};

}  // namespace

void appendToLogFile(std::wstring_view line) {
  const KeepLastError keep;
  LogFile& log = logFile();
  const std::lock_guard lock(log.mutex);
  std::wstring name = logFileName();
  if (name != log.name || !log.file.valid()) {
    log.name = std::move(name);
    log.file = UniqueHandle();
    if (log.name.empty()) return;
    log.file = openForAppending(log.name);
    if (!log.file.valid()) return;
  }
  const std::string bytes = utf8Of(line) + '\n';
  DWORD written = 0;
  WriteFile(log.file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

}  // namespace tvrscn
