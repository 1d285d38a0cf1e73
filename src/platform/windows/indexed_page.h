// Pages of 1 and 8 bits a pixel. The system makes, locks and saves them but gives no drawing
// context on them; here they are drawn on row by row.
#ifndef TVRSCN_PLATFORM_WINDOWS_INDEXED_PAGE_H
#define TVRSCN_PLATFORM_WINDOWS_INDEXED_PAGE_H

#include <array>

#include "platform/imaging.h"

namespace tvrscn::imaging {

bool isIndexed(Gdiplus::GpImage* image);

// Gives a page the palette in which its values are levels of grey, or black and white.
Gdiplus::GpStatus setGreyPalette(Gdiplus::GpBitmap* page, Gdiplus::PixelFormat format);

// Draws picture pixel for pixel, its corner at x, y; what lies outside is left out. Colours become
// grey, or black and white by their brightness. A page cannot be drawn onto itself.
Gdiplus::GpStatus drawOnIndexed(Gdiplus::GpBitmap* page, Gdiplus::GpBitmap* picture, INT x, INT y);

// Sends every level of every channel through the table; on a 1-bit page the two levels go through
// it and become black or white again.
Gdiplus::GpStatus mapLevels(Gdiplus::GpBitmap* page, const std::array<BYTE, 256>& table);

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_WINDOWS_INDEXED_PAGE_H
