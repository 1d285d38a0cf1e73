// Single pages out of a TIFF file of several.
#ifndef TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_TIFF_PAGES_H
#define TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_TIFF_PAGES_H

#include <cstdint>
#include <string>

namespace tvrscn::imaging {

// Writes the pages of source, in order, to prefix + decimal number + ".tif" with consecutive
// numbers from firstNumber. A page that cannot be read or written is left out and takes no number,
// since the system does not tell the two apart; after a few of them that is the end. Returns the
// number of files written, 0 when source is no TIFF.
std::uint32_t splitTiffPages(const std::wstring& source, const std::wstring& prefix,
                             std::uint32_t firstNumber);

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_TIFF_PAGES_H
