// Text conversions without code page or locale.
#include "usb/text.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace tvrscn {
namespace {

bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

std::string narrow(std::wstring_view text) {
  std::string result;
  result.reserve(text.size());
  for (const wchar_t c : text) {
    result.push_back(static_cast<char>(static_cast<unsigned char>(c & 0xFF)));
  }
  return result;
}

std::wstring widen(std::string_view text) {
  std::wstring result;
  result.reserve(text.size());
  for (const char c : text) {
    result.push_back(static_cast<wchar_t>(static_cast<unsigned char>(c)));
  }
  return result;
}

int toInt(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && isSpace(text[at]))
    ++at;
  const bool negative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  if (at == text.size() || !isDigit(text[at])) {
    throw std::invalid_argument("invalid stoi argument");
  }

  const std::int64_t limit =
      std::int64_t{std::numeric_limits<std::int32_t>::max()} + (negative ? 1 : 0);
  std::int64_t magnitude = 0;
  for (; at < text.size() && isDigit(text[at]); ++at) {
    magnitude = magnitude * 10 + (text[at] - '0');
    if (magnitude > limit) throw std::out_of_range("stoi argument out of range");
  }
  return static_cast<int>(negative ? -magnitude : magnitude);
}

std::vector<std::string> splitFields(std::string_view line, std::size_t most) {
  std::vector<std::string> fields;
  while (fields.size() < most) {
    const std::size_t start = line.find_first_not_of(',');
    if (start == std::string_view::npos) break;
    const std::size_t end = std::min(line.find(',', start), line.size());
    fields.emplace_back(line.substr(start, end - start));
    line.remove_prefix(end);
  }
  return fields;
}

}  // namespace tvrscn
