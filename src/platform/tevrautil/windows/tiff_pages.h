// Single pages out of a TIFF file of several.
#ifndef TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_TIFF_PAGES_H
#define TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_TIFF_PAGES_H

#include <cstdint>
#include <string>

namespace tvrscn::imaging {

// Writes the pages of source, in order, to prefix + decimal number + ".tif" with consecutive
// numbers from firstNumber. The coded data are carried over as they are, so size, resolution, depth
// and compression stay, byte for byte, and so does the byte order. A page that cannot be had whole
// is left out and takes no number; the first page that cannot be written is the end. Returns the
// number of files written, 0 when source is no TIFF.
std::uint32_t splitTiffPages(const std::wstring& source, const std::wstring& prefix,
                             std::uint32_t firstNumber);

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_TIFF_PAGES_H
