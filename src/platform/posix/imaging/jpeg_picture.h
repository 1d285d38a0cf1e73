// What reader and writer of a JPEG tell each other about a picture.
#ifndef TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_PICTURE_H
#define TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_PICTURE_H

#include "platform/imaging.h"

namespace tvrscn::imaging {

// What saving without encoder parameters means.
constexpr int kDefaultJpegQuality = 75;
constexpr int kMaxJpegQuality = 100;

struct JpegPicture {
  UINT width = 0;
  UINT height = 0;
  Gdiplus::PixelFormat format = Gdiplus::PixelFormat24bppRGB;  // or 8bpp
  Gdiplus::REAL xDpi = 96;
  Gdiplus::REAL yDpi = 96;
  int quality = kDefaultJpegQuality;
  // Luma samples for each chroma sample, across and down: 2 and 2 is the usual 4:2:0.
  int lumaAcross = 2;
  int lumaDown = 2;
};

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_PICTURE_H
