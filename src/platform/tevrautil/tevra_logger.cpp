// The listener is called under a lock of its own, so that it is never called again once
// SetLineListener has taken it away.
#include "tvrscn/tevrautil/tevra_logger.h"

#include <mutex>
#include <string>
#include <string_view>

#include "platform/tevrautil/log_file.h"

namespace {

struct ListenerState {
  std::recursive_mutex mutex;  // a listener may take itself away
  CTevraLogger::LineListener listener = nullptr;
  void* context = nullptr;
};

ListenerState& listenerState() {
  static ListenerState& state = *new ListenerState;  // lines come until the very end of the process
  return state;
}

// A listener that writes to the log does not hear itself.
thread_local bool insideListener = false;

// A line of the file has no line ends inside.
std::wstring withoutLineEnds(std::wstring_view text) {
  const auto isLineEnd = [](wchar_t c) { return c == L'\n' || c == L'\r'; };
  while (!text.empty() && isLineEnd(text.back()))
    text.remove_suffix(1);
  std::wstring line(text);
  for (wchar_t& c : line) {
    if (isLineEnd(c)) c = L' ';
  }
  return line;
}

void tellListener(const wchar_t* line) {
  if (insideListener) return;
  ListenerState& state = listenerState();
  const std::lock_guard lock(state.mutex);
  if (state.listener == nullptr) return;
  insideListener = true;
  state.listener(line, state.context);
  insideListener = false;
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
  tvrscn::appendToLogFile(withoutLineEnds(line));
  tellListener(line);
}

void CTevraLogger::SetLineListener(LineListener listener, void* context) {
  ListenerState& state = listenerState();
  const std::lock_guard lock(state.mutex);
  state.listener = listener;
  state.context = context;
}
