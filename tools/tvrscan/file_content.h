#ifndef TVRSCN_TOOLS_TVRSCAN_FILE_CONTENT_H
#define TVRSCN_TOOLS_TVRSCAN_FILE_CONTENT_H

#include <filesystem>
#include <string>

namespace tvrscn::cli {

// All bytes of a file; none of one that cannot be read.
std::string fileContent(const std::filesystem::path& file);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_FILE_CONTENT_H
