// A bitmap of the system's, owned, whose pixels can be seen and set.
#ifndef TVRSCN_TESTS_WINDOWS_TEST_BITMAP_H
#define TVRSCN_TESTS_WINDOWS_TEST_BITMAP_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

#include "platform/imaging.h"
#include "platform/windows/locked_rows.h"

namespace tvrscn::test {

using Bytes = std::vector<std::uint8_t>;

class TestBitmap {
 public:
  TestBitmap(UINT width, UINT height, Gdiplus::PixelFormat format)
      : width_(width), height_(height) {
    gdip::GdipCreateBitmapFromScan0(static_cast<INT>(width), static_cast<INT>(height), 0, format,
                                    nullptr, &bitmap_);
  }
  explicit TestBitmap(const std::filesystem::path& file) {
    gdip::GdipCreateBitmapFromFile(file.c_str(), &bitmap_);
    gdip::GdipGetImageWidth(bitmap_, &width_);
    gdip::GdipGetImageHeight(bitmap_, &height_);
  }
  TestBitmap(const TestBitmap&) = delete;
  TestBitmap& operator=(const TestBitmap&) = delete;
  ~TestBitmap() { dispose(); }

  void dispose() {
    if (bitmap_ != nullptr) gdip::GdipDisposeImage(bitmap_);
    bitmap_ = nullptr;
  }
  Gdiplus::GpBitmap* get() const { return bitmap_; }
  UINT width() const { return width_; }
  UINT height() const { return height_; }
  Gdiplus::PixelFormat format() const {
    Gdiplus::PixelFormat format = 0;
    gdip::GdipGetImagePixelFormat(bitmap_, &format);
    return format;
  }
  Gdiplus::REAL dpi() const {
    Gdiplus::REAL dpi = 0;
    gdip::GdipGetImageHorizontalResolution(bitmap_, &dpi);
    return dpi;
  }

  // The bytes of one row as they lie in the bitmap.
  Bytes stored(UINT y, std::size_t count) const {
    const imaging::LockedRows rows(bitmap_, width_, y, 1, format(),
                                   imaging::LockedRows::For::kReading);
    if (rows.status() != Gdiplus::Ok) return {};
    return Bytes(rows.row(0), rows.row(0) + count);
  }
  // Blue, green and red of one pixel, whatever the format.
  Bytes colour(UINT x, UINT y) const {
    const imaging::LockedRows rows(bitmap_, width_, y, 1, Gdiplus::PixelFormat24bppRGB,
                                   imaging::LockedRows::For::kReading);
    if (rows.status() != Gdiplus::Ok) return {};
    return Bytes(rows.row(0) + x * 3, rows.row(0) + x * 3 + 3);
  }
  // One row of colours; every pixel three bytes.
  void setRow(UINT y, const Bytes& bytes) const {
    const imaging::LockedRows rows(bitmap_, width_, y, 1, format(),
                                   imaging::LockedRows::For::kWriting);
    ASSERT_EQ(Gdiplus::Ok, rows.status());
    std::copy(bytes.begin(), bytes.end(), rows.row(0));
  }
  void fill(BYTE grey) const {
    const imaging::LockedRows rows(bitmap_, width_, 0, height_, Gdiplus::PixelFormat24bppRGB,
                                   imaging::LockedRows::For::kWriting);
    ASSERT_EQ(Gdiplus::Ok, rows.status());
    for (UINT y = 0; y < height_; ++y)
      std::fill_n(rows.row(y), width_ * 3, grey);
  }

 private:
  Gdiplus::GpBitmap* bitmap_ = nullptr;
  UINT width_ = 0;
  UINT height_ = 0;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_WINDOWS_TEST_BITMAP_H
