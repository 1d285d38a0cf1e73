// Conversion between UTF-8 and wide text, which is UTF-32 on this system. Whatever is not valid
// (stray or cut bytes, overlong forms, surrogates, values beyond U+10FFFF) becomes U+FFFD; nothing
// fails.
#ifndef TVRSCN_PLATFORM_POSIX_UTF8_H
#define TVRSCN_PLATFORM_POSIX_UTF8_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tvrscn {

static_assert(sizeof(wchar_t) == 4, "one wide character holds one code point");

inline constexpr std::uint32_t kReplacementCharacter = 0xFFFD;

inline std::string utf8FromWide(std::wstring_view wide) {
  std::string narrow;
  narrow.reserve(wide.size());
  const auto append = [&narrow](std::uint32_t byte) { narrow.push_back(static_cast<char>(byte)); };
  for (const wchar_t character : wide) {
    // NOLINTNEXTLINE(bugprone-signed-char-misuse): a wide character is no byte
    auto code = static_cast<std::uint32_t>(character);
    if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) code = kReplacementCharacter;
    if (code < 0x80) {
      append(code);
    } else if (code < 0x800) {
      append(0xC0 | (code >> 6U));
      append(0x80 | (code & 0x3FU));
    } else if (code < 0x10000) {
      append(0xE0 | (code >> 12U));
      append(0x80 | ((code >> 6U) & 0x3FU));
      append(0x80 | (code & 0x3FU));
    } else {
      append(0xF0 | (code >> 18U));
      append(0x80 | ((code >> 12U) & 0x3FU));
      append(0x80 | ((code >> 6U) & 0x3FU));
      append(0x80 | (code & 0x3FU));
    }
  }
  return narrow;
}

struct DecodedCharacter {
  std::uint32_t code;
  std::size_t length;  // bytes it took, at least 1
};

// The first character of a text that is not empty. A broken one takes the bytes that could have
// been the start of a good one.
inline DecodedCharacter decodeUtf8(std::string_view text) {
  const auto byteAt = [text](std::size_t i) -> std::uint32_t {
    return static_cast<unsigned char>(text[i]);
  };
  const std::uint32_t lead = byteAt(0);
  if (lead < 0x80) return {lead, 1};
  if (lead < 0xC2 || lead > 0xF4) return {kReplacementCharacter, 1};
  const std::size_t trailing = lead < 0xE0 ? 1 : (lead < 0xF0 ? 2 : 3);
  std::uint32_t code = lead & (0x3FU >> trailing);
  // The second byte alone tells overlong forms, surrogates and values that are too large.
  std::uint32_t low = lead == 0xE0 ? 0xA0 : (lead == 0xF0 ? 0x90 : 0x80);
  std::uint32_t high = lead == 0xED ? 0x9F : (lead == 0xF4 ? 0x8F : 0xBF);
  for (std::size_t i = 1; i <= trailing; ++i) {
    if (i >= text.size() || byteAt(i) < low || byteAt(i) > high) return {kReplacementCharacter, i};
    code = (code << 6U) | (byteAt(i) & 0x3FU);
    low = 0x80;
    high = 0xBF;
  }
  return {code, trailing + 1};
}

inline std::wstring wideFromUtf8(std::string_view narrow) {
  std::wstring wide;
  wide.reserve(narrow.size());
  while (!narrow.empty()) {
    const DecodedCharacter character = decodeUtf8(narrow);
    wide.push_back(static_cast<wchar_t>(character.code));
    narrow.remove_prefix(character.length);
  }
  return wide;
}

// A path as the file system knows it: UTF-8, both separators read as '/'.
inline std::string pathFromWide(std::wstring_view wide) {
  std::string path = utf8FromWide(wide);
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_POSIX_UTF8_H
