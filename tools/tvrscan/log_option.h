#ifndef TVRSCN_TOOLS_TVRSCAN_LOG_OPTION_H
#define TVRSCN_TOOLS_TVRSCAN_LOG_OPTION_H

#include <filesystem>

namespace tvrscn::cli {

// Sends the library's log to this file; an empty path changes nothing. Before there are threads.
// Throws OutputError.
void openLog(const std::filesystem::path& file);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_LOG_OPTION_H
