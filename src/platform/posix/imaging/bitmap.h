// What stands behind the objects of the flat imaging calls. A bitmap owns its pixels; a graphics
// object only points at its bitmap and may outlive it, as long as nothing is drawn any more.
#ifndef TVRSCN_PLATFORM_POSIX_IMAGING_BITMAP_H
#define TVRSCN_PLATFORM_POSIX_IMAGING_BITMAP_H

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>

#include "platform/imaging.h"

namespace tvrscn::imaging {

// Every image that the flat calls hand out is one of these.
class Bitmap final : public Gdiplus::GpBitmap {
 public:
  static constexpr Gdiplus::REAL kDefaultDpi = 96;
  // No side is longer than a JPEG can say, and no picture takes 2 GiB or more: a damaged header
  // must not be able to ask for the whole machine.
  static constexpr UINT kMaxSide = 65535;
  static constexpr std::size_t kMaxBytes = 0x7FFFFFFF;

  // A black bitmap, all bytes zero. The memory of a large one is only taken as rows are written.
  // Sets bitmap to null and answers InvalidParameter for an unknown format or a size of 0,
  // OutOfMemory above the limits.
  static Gdiplus::GpStatus create(UINT width, UINT height, Gdiplus::PixelFormat format,
                                  std::unique_ptr<Bitmap>& bitmap);

  // Rows are made black when they are first needed: most pages are drawn over from top to bottom,
  // and clearing them before would be a notable part of their cost. Whoever fills rows from the top
  // by way of row() says so with setFilled(); whoever reads them calls complete() before.
  void setFilled(UINT rows);
  void complete() { clearUpTo(height_); }

  [[nodiscard]] UINT width() const { return width_; }
  [[nodiscard]] UINT height() const { return height_; }
  [[nodiscard]] Gdiplus::PixelFormat format() const { return format_; }
  [[nodiscard]] std::size_t stride() const { return stride_; }
  [[nodiscard]] BYTE* row(UINT y) { return pixels_.get() + y * stride_; }
  [[nodiscard]] const BYTE* row(UINT y) const { return pixels_.get() + y * stride_; }

  [[nodiscard]] Gdiplus::REAL xDpi() const { return xDpi_; }
  [[nodiscard]] Gdiplus::REAL yDpi() const { return yDpi_; }
  void setResolution(Gdiplus::REAL xDpi, Gdiplus::REAL yDpi) {
    xDpi_ = xDpi;
    yDpi_ = yDpi;
  }

  // Draws picture pixel for pixel, its corner at x, y; what lies outside is left out. picture may
  // be this bitmap itself.
  void draw(const Bitmap& picture, INT x, INT y);
  // Sends every level of every channel through the table; on a 1-bit page the two levels go through
  // it and become black or white again.
  void mapLevels(const std::array<BYTE, 256>& table);

 private:
  struct Free {
    void operator()(BYTE* memory) const { std::free(memory); }
  };

  Bitmap(UINT width, UINT height, Gdiplus::PixelFormat format, std::size_t stride, UINT filled,
         BYTE* pixels)
      : width_(width),
        height_(height),
        format_(format),
        stride_(stride),
        filled_(filled),
        pixels_(pixels) {}

  void clearUpTo(UINT rows);

  UINT width_;
  UINT height_;
  Gdiplus::PixelFormat format_;
  std::size_t stride_;
  UINT filled_;  // rows from the top that hold what they should; the others count as black
  std::unique_ptr<BYTE, Free> pixels_;
  Gdiplus::REAL xDpi_ = kDefaultDpi;
  Gdiplus::REAL yDpi_ = kDefaultDpi;
};

}  // namespace tvrscn::imaging

namespace Gdiplus {

class GpGraphics {
 public:
  explicit GpGraphics(tvrscn::imaging::Bitmap& target) : target_(&target) {}
  [[nodiscard]] tvrscn::imaging::Bitmap& target() const { return *target_; }

 private:
  tvrscn::imaging::Bitmap* target_;  // not owned
};

}  // namespace Gdiplus

#endif  // TVRSCN_PLATFORM_POSIX_IMAGING_BITMAP_H
