// Case-insensitive comparison of the names that device setup and the registry deal in. Letters
// beyond ASCII count as different from their other case; no locale is asked.
#ifndef TVRSCN_PLATFORM_POSIX_ASCII_H
#define TVRSCN_PLATFORM_POSIX_ASCII_H

#include <algorithm>
#include <string_view>

namespace tvrscn {

inline wchar_t asciiUpper(wchar_t character) {
  const bool lower = character >= L'a' && character <= L'z';
  return lower ? static_cast<wchar_t>(character - L'a' + L'A') : character;
}

inline bool equalsIgnoringCase(std::wstring_view a, std::wstring_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](wchar_t x, wchar_t y) { return asciiUpper(x) == asciiUpper(y); });
}

inline bool startsWithIgnoringCase(std::wstring_view text, std::wstring_view start) {
  return text.size() >= start.size() && equalsIgnoringCase(text.substr(0, start.size()), start);
}

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_POSIX_ASCII_H
