// The name is looked up in the environment at each line, so that a program can turn its log on and
// off; the file stays open as long as its name stays the same.
#include "platform/tevrautil/log_file.h"

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/unique_fd.h"
#include "platform/posix/utf8.h"

namespace tvrscn {
namespace {

struct LogFile {
  std::mutex mutex;
  std::string name;  // of the open file
  UniqueFd file;
};

LogFile& logFile() {
  static LogFile& log = *new LogFile;  // lines come until the very end of the process
  return log;
}

}  // namespace

void appendToLogFile(std::wstring_view line) {
  LogFile& log = logFile();
  const std::lock_guard lock(log.mutex);
  const char* const named = std::getenv("TVRSCN_LOG");
  const std::string name = named != nullptr ? named : "";
  if (name != log.name || !log.file.valid()) {
    log.name = name;
    log.file = UniqueFd();
    if (name.empty()) return;
    log.file =
        UniqueFd(::open(name.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOCTTY | O_CLOEXEC, 0644));
    if (!log.file.valid()) return;
  }
  // One call, so that lines of several processes do not mix.
  const std::string bytes = utf8FromWide(line) + '\n';
  while (::write(log.file.get(), bytes.data(), bytes.size()) < 0 && errno == EINTR) {
  }
}

}  // namespace tvrscn
