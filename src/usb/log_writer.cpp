// Formatting of log lines, and the one log instance of the library. The instance is fetched by the
// first controller and never given up; controllers are built on one thread.
#include "usb/log_writer.h"

#include "tvrscn/tevrautil/tevra_logger.h"
#include "usb/text.h"

namespace tvrscn {
namespace {

CTevraLogger* logInstance = nullptr;

bool isLengthModifier(wchar_t c) {
  return c == L'l' || c == L'h';
}
bool isConversion(wchar_t c) {
  return std::wstring_view(L"sSdiu").find(c) != std::wstring_view::npos;
}

// Length of the placeholder that starts with the '%' at the front of rest; 0 when it is none.
std::size_t placeholderLength(std::wstring_view rest) {
  std::size_t at = 1;
  while (at < rest.size() && isLengthModifier(rest[at]))
    ++at;
  return at < rest.size() && isConversion(rest[at]) ? at + 1 : 0;
}

}  // namespace

void LogArgument::appendTo(std::wstring& line) const {
  if (const auto* number = std::get_if<std::int64_t>(&value_)) {
    line += std::to_wstring(*number);
  } else if (const auto* wide = std::get_if<std::wstring_view>(&value_)) {
    line += *wide;
  } else {
    line += widen(std::get<std::string_view>(value_));
  }
}

std::wstring formatLogLine(const wchar_t* format, std::initializer_list<LogArgument> arguments) {
  std::wstring line;
  const auto* next = arguments.begin();
  std::wstring_view rest(format);
  while (!rest.empty()) {
    const bool percent = rest[0] == L'%';
    const std::size_t length = percent ? placeholderLength(rest) : 0;
    if (length != 0 && next != arguments.end()) {
      next->appendTo(line);
      ++next;
      rest.remove_prefix(length);
    } else {
      line.push_back(rest[0]);
      rest.remove_prefix(percent && rest.size() > 1 && rest[1] == L'%' ? 2 : 1);
    }
  }
  if (line.size() >= kLogLineCapacity) line.resize(kLogLineCapacity - 1);
  return line;
}

void fetchLogInstance() {
  if (logInstance == nullptr) logInstance = CTevraLogger::GetLogInstance();
}

void writeLog(const wchar_t* format, std::initializer_list<LogArgument> arguments) {
  if (logInstance == nullptr) return;
  logInstance->WriteToLog(formatLogLine(format, arguments).c_str());
}

}  // namespace tvrscn
