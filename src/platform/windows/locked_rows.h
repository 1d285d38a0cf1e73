// Rows of a bitmap, within reach for as long as this object lives.
#ifndef TVRSCN_PLATFORM_WINDOWS_LOCKED_ROWS_H
#define TVRSCN_PLATFORM_WINDOWS_LOCKED_ROWS_H

#include <cstddef>

#include "platform/imaging.h"

namespace tvrscn::imaging {

// Rows are locked in bands: the system copies what it has to convert, and a whole page is large.
constexpr UINT kBandRows = 128;

// The rows [top, top + rows) over the bitmap's whole width, in the format asked for. Rows that are
// written must be locked in the bitmap's own format.
class LockedRows {
 public:
  enum class For { kReading, kWriting };

  LockedRows(Gdiplus::GpBitmap* bitmap, UINT width, UINT top, UINT rows,
             Gdiplus::PixelFormat format, For purpose)
      : bitmap_(bitmap) {
    const Gdiplus::Rect area(0, static_cast<INT>(top), static_cast<INT>(width),
                             static_cast<INT>(rows));
    const UINT mode = purpose == For::kReading
                          ? UINT{Gdiplus::ImageLockModeRead}
                          : UINT{Gdiplus::ImageLockModeRead} | UINT{Gdiplus::ImageLockModeWrite};
    status_ = Gdiplus::DllExports::GdipBitmapLockBits(bitmap, &area, mode, format, &data_);
  }
  LockedRows(const LockedRows&) = delete;
  LockedRows& operator=(const LockedRows&) = delete;
  ~LockedRows() {
    if (status_ == Gdiplus::Ok) Gdiplus::DllExports::GdipBitmapUnlockBits(bitmap_, &data_);
  }

  [[nodiscard]] Gdiplus::GpStatus status() const { return status_; }
  // Counted from the first locked row; only while status() is Ok.
  [[nodiscard]] BYTE* row(UINT index) const {
    return static_cast<BYTE*>(data_.Scan0) + std::ptrdiff_t{data_.Stride} * index;
  }

 private:
  Gdiplus::GpBitmap* bitmap_;
  Gdiplus::BitmapData data_ = {};
  Gdiplus::GpStatus status_;
};

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_WINDOWS_LOCKED_ROWS_H
