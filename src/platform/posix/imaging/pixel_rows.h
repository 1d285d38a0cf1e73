// Rows of pixels in the three formats of a bitmap, and how each becomes another.
//
//   1bpp   packed, the leftmost pixel in the highest bit; 0 black, 1 white
//   8bpp   one byte of grey, 0 black to 255 white
//   24bpp  blue, green, red
//
// Rows stand end to end without padding between them.
#ifndef TVRSCN_PLATFORM_POSIX_IMAGING_PIXEL_ROWS_H
#define TVRSCN_PLATFORM_POSIX_IMAGING_PIXEL_ROWS_H

#include <cstddef>

#include "platform/imaging.h"
#include "platform/imaging_math/luma.h"

namespace tvrscn::imaging {

// Bytes of one row; 0 for a format that no bitmap has.
std::size_t rowBytes(Gdiplus::PixelFormat format, std::size_t width);

// Copies count pixels, converting them. Source and target may overlap when the formats are the
// same.
using RowCopy = void (*)(BYTE* target, std::size_t targetX, const BYTE* source, std::size_t sourceX,
                         std::size_t count);

// Both have to be formats of a bitmap.
RowCopy rowCopy(Gdiplus::PixelFormat target, Gdiplus::PixelFormat source);

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_POSIX_IMAGING_PIXEL_ROWS_H
