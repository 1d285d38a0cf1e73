// Texts of tvrscan are UTF-8 on every system; Windows wants UTF-16. What is no text in one of them
// becomes replacement characters in the other.
#ifndef TVRSCN_TOOLS_TVRSCAN_WINDOWS_TEXT_H
#define TVRSCN_TOOLS_TVRSCAN_WINDOWS_TEXT_H

#include <string>
#include <string_view>

namespace tvrscn::cli {

std::wstring wideText(std::string_view utf8);
std::string utf8Text(std::wstring_view wide);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_WINDOWS_TEXT_H
