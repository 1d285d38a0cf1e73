// The library's own conventions for text: no code page, no locale.
#ifndef TVRSCN_USB_TEXT_H
#define TVRSCN_USB_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tvrscn {

// Keeps the low byte of each character.
std::string narrow(std::wstring_view text);

// One character per byte.
std::wstring widen(std::string_view text);

// The integer at the start of text, base 10, as std::stoi reads it: leading white space and a sign
// are taken, what follows the digits is ignored. Throws std::invalid_argument ("invalid stoi
// argument") without digits, std::out_of_range ("stoi argument out of range") beyond 32 bits; the
// words are the same on every system.
int toInt(std::string_view text);

// The fields of a settings line, at most so many; commas in succession count as one, so that no
// field is empty.
std::vector<std::string> splitFields(std::string_view line, std::size_t most);

}  // namespace tvrscn

#endif  // TVRSCN_USB_TEXT_H
