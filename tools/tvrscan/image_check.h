// Whether a file that was delivered is a whole image: one that a full disk cut off is not.
#ifndef TVRSCN_TOOLS_TVRSCAN_IMAGE_CHECK_H
#define TVRSCN_TOOLS_TVRSCAN_IMAGE_CHECK_H

#include <filesystem>

namespace tvrscn::cli {

// Begins and ends as a JPEG does.
bool isWholeJpeg(const std::filesystem::path& file);

// A little-endian TIFF, the only one that the devices know, whose first page and its strips lie
// within the file.
bool isWholeTiff(const std::filesystem::path& file);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_IMAGE_CHECK_H
