// Wide text of the system and of the libraries as the UTF-8 of this program.
#ifndef TVRSCN_TOOLS_TVRSCAN_WIDE_TEXT_H
#define TVRSCN_TOOLS_TVRSCAN_WIDE_TEXT_H

#include <string>

namespace tvrscn::cli {

// Empty for what cannot be told in UTF-8.
std::string utf8(const std::wstring& wide);

// One character a byte, as the library widens names.
std::wstring widened(const std::string& text);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_WIDE_TEXT_H
