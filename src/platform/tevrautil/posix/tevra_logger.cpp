// The log file is looked up in the environment at each line, so that a program can turn its log on
// and off; the file stays open as long as its name stays the same.
//
// Listener and file have locks of their own. The listener is called under the listener's lock, so
// that it is never called again once SetLineListener has taken it away.
#include "tvrscn/tevrautil/tevra_logger.h"

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/unique_fd.h"
#include "platform/posix/utf8.h"

namespace {

struct LogState {
  std::mutex fileMutex;
  std::string fileName;  // of the open file
  tvrscn::UniqueFd file;
  std::recursive_mutex listenerMutex;  // a listener may take itself away
  CTevraLogger::LineListener listener = nullptr;
  void* context = nullptr;
};

LogState& logState() {
  static LogState& state = *new LogState;  // lines come until the very end of the process
  return state;
}

// A listener that writes to the log does not hear itself.
thread_local bool insideListener = false;

// One line of the file: without line ends inside, with one behind it.
std::string fileLine(std::wstring_view text) {
  const auto isLineEnd = [](char c) { return c == '\n' || c == '\r'; };
  std::string line = tvrscn::utf8FromWide(text);
  while (!line.empty() && isLineEnd(line.back()))
    line.pop_back();
  for (char& c : line) {
    if (isLineEnd(c)) c = ' ';
  }
  line.push_back('\n');
  return line;
}

void tellListener(const wchar_t* line) {
  if (insideListener) return;
  LogState& state = logState();
  const std::lock_guard lock(state.listenerMutex);
  if (state.listener == nullptr) return;
  insideListener = true;
  state.listener(line, state.context);
  insideListener = false;
}

void appendToFile(const wchar_t* line) {
  LogState& state = logState();
  const std::lock_guard lock(state.fileMutex);
  const char* const named = std::getenv("TVRSCN_LOG");
  const std::string name = named != nullptr ? named : "";
  if (name != state.fileName || !state.file.valid()) {
    state.fileName = name;
    state.file = tvrscn::UniqueFd();
    if (name.empty()) return;
    state.file = tvrscn::UniqueFd(
        ::open(name.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOCTTY | O_CLOEXEC, 0644));
    if (!state.file.valid()) return;
  }
  // One call, so that lines of several processes do not mix.
  const std::string bytes = fileLine(line);
  while (::write(state.file.get(), bytes.data(), bytes.size()) < 0 && errno == EINTR) {
  }
}

}  // namespace

CTevraLogger::CTevraLogger() = default;
CTevraLogger::~CTevraLogger() {}

CTevraLogger* CTevraLogger::GetLogInstance() {
  static CTevraLogger* const instance = new CTevraLogger;
  return instance;
}

void CTevraLogger::WriteToLog(const wchar_t* line) {
  if (line == nullptr) return;
  appendToFile(line);
  tellListener(line);
}

void CTevraLogger::SetLineListener(LineListener listener, void* context) {
  LogState& state = logState();
  const std::lock_guard lock(state.listenerMutex);
  state.listener = listener;
  state.context = context;
}
