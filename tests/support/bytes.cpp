// The notation for bytes keeps scripts as short as the protocol's own tables: a byte with a count
// behind a star stands for that many.
#include "tests/support/bytes.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace tvrscn::test {
namespace {

unsigned parseNumber(std::string_view text, int base, unsigned limit) {
  unsigned value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base);
  if (text.empty() || error != std::errc() || stop != end || value > limit) {
    throw std::invalid_argument("not a byte of a script: " + std::string(text));
  }
  return value;
}

void appendCodePoint(std::string& out, std::uint32_t point) {
  const auto put = [&out](std::uint32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (point < 0x80U) {
    put(point);
  } else if (point < 0x800U) {
    put(0xC0U | (point >> 6U));
    put(0x80U | (point & 0x3FU));
  } else if (point < 0x10000U) {
    put(0xE0U | (point >> 12U));
    put(0x80U | ((point >> 6U) & 0x3FU));
    put(0x80U | (point & 0x3FU));
  } else {
    put(0xF0U | (point >> 18U));
    put(0x80U | ((point >> 12U) & 0x3FU));
    put(0x80U | ((point >> 6U) & 0x3FU));
    put(0x80U | (point & 0x3FU));
  }
}

}  // namespace

Bytes bytes(std::string_view hex) {
  constexpr unsigned kMostRepeats = 1U << 24U;
  Bytes result;
  std::istringstream words{std::string(hex)};
  for (std::string word; words >> word;) {
    const std::size_t star = word.find('*');
    const std::string_view value = std::string_view(word).substr(0, star);
    const unsigned count =
        star == std::string::npos
            ? 1U
            : parseNumber(std::string_view(word).substr(star + 1), 10, kMostRepeats);
    result.insert(result.end(), count, static_cast<std::uint8_t>(parseNumber(value, 16, 0xFFU)));
  }
  return result;
}

std::string hex(std::span<const std::uint8_t> data) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string result;
  for (const std::uint8_t byte : data) {
    if (!result.empty()) result.push_back(' ');
    result.push_back(kDigits[byte >> 4U]);
    result.push_back(kDigits[byte & 0xFU]);
  }
  return result;
}

std::string hexNumber(std::uint64_t number) {
  std::ostringstream out;
  out << "0x" << std::uppercase << std::hex << number;
  return out.str();
}

std::string utf8(std::wstring_view text) {
  std::string result;
  for (const wchar_t character : text) {
    const auto point = static_cast<std::uint32_t>(character);
    const bool valid = point < 0xD800U || (point >= 0xE000U && point <= 0x10FFFFU);
    appendCodePoint(result, valid ? point : 0xFFFDU);
  }
  return result;
}

std::filesystem::path toPath(std::wstring_view name) {
  return {utf8(name)};
}

std::string describeMismatch(std::span<const std::uint8_t> expected,
                             std::span<const std::uint8_t> actual) {
  const auto [left, right] =
      std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
  if (left == expected.end() && right == actual.end()) return {};
  const auto offset = static_cast<std::size_t>(left - expected.begin());
  constexpr std::size_t kShown = 16;
  const auto part = [offset, kShown](std::span<const std::uint8_t> data) {
    const auto rest = data.subspan(std::min(offset, data.size()));
    return rest.empty() ? std::string("(end)") : hex(rest.first(std::min(kShown, rest.size())));
  };
  std::ostringstream out;
  out << "offset " << offset << ": expected " << part(expected) << ", actual " << part(actual)
      << " (lengths " << expected.size() << " and " << actual.size() << ")";
  return out.str();
}

}  // namespace tvrscn::test
