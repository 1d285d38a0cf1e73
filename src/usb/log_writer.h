// The one place that writes log lines.
//
// Formats are those of wide printf on Windows, on every system: %s takes wide text, %S narrow text.
// The arguments carry their types, so a placeholder can never read an argument that is not there;
// it then stands in the line as it is.
#ifndef TVRSCN_USB_LOG_WRITER_H
#define TVRSCN_USB_LOG_WRITER_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

namespace tvrscn {

// Length of a formatted line in characters, the terminator included; what is longer is cut.
inline constexpr std::size_t kLogLineCapacity = 1024;

// One value for a placeholder. Texts are borrowed for the length of the call.
class LogArgument {
 public:
  LogArgument(int value) : value_(std::int64_t{value}) {}       // NOLINT(*-explicit-*)
  LogArgument(long value) : value_(std::int64_t{value}) {}      // NOLINT(*-explicit-*)
  LogArgument(unsigned value) : value_(std::int64_t{value}) {}  // NOLINT(*-explicit-*)
  LogArgument(unsigned long value)                              // NOLINT(*-explicit-*)
      : value_(static_cast<std::int64_t>(value)) {}
  LogArgument(const wchar_t* text) : value_(std::wstring_view(text)) {}  // NOLINT(*-explicit-*)
  LogArgument(const std::wstring& text)
      : value_(std::wstring_view(text)) {}                                  // NOLINT(*-explicit-*)
  LogArgument(const char* text) : value_(std::string_view(text)) {}         // NOLINT(*-explicit-*)
  LogArgument(const std::string& text) : value_(std::string_view(text)) {}  // NOLINT(*-explicit-*)

  // Appends the value as text; narrow text is widened byte by byte.
  void appendTo(std::wstring& line) const;

 private:
  std::variant<std::int64_t, std::wstring_view, std::string_view> value_;
};

// Fetches the process-wide logger unless that has been done. Lines before the first call are lost.
void fetchLogInstance();

// Formats one line and hands it to the logger; nothing without a logger.
void writeLog(const wchar_t* format, std::initializer_list<LogArgument> arguments = {});

// The formatting alone: %s %S %d %u %lu and the like take the next argument, %% is a percent sign.
std::wstring formatLogLine(const wchar_t* format, std::initializer_list<LogArgument> arguments);

}  // namespace tvrscn

#endif  // TVRSCN_USB_LOG_WRITER_H
