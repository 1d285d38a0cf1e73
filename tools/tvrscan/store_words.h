// The commands of a store application, by the words that people give.
#ifndef TVRSCN_TOOLS_TVRSCAN_STORE_WORDS_H
#define TVRSCN_TOOLS_TVRSCAN_STORE_WORDS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvrscn::cli {

// The code of a command by its word in any case, or by the code itself ("40", "0x28"); nothing for
// what the library would not send.
std::optional<int> parseStoreCommand(std::string_view word);
std::vector<std::string> storeCommandWords();

// The table as lines of text.
std::string storeCommandHelp();

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_STORE_WORDS_H
