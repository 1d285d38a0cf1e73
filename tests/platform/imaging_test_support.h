// What the imaging tests share: owned bitmaps whose pixels can be seen, and JPEG files made with
// the codec directly, without the code under test.
#ifndef TVRSCN_TESTS_PLATFORM_IMAGING_TEST_SUPPORT_H
#define TVRSCN_TESTS_PLATFORM_IMAGING_TEST_SUPPORT_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/imaging.h"
#include "platform/posix/imaging/bitmap.h"

namespace tvrscn::test {

using Bytes = std::vector<std::uint8_t>;

class TestBitmap {
 public:
  TestBitmap() = default;
  TestBitmap(INT width, INT height, Gdiplus::PixelFormat format);
  explicit TestBitmap(const std::filesystem::path& file);
  TestBitmap(const TestBitmap&) = delete;
  TestBitmap& operator=(const TestBitmap&) = delete;
  ~TestBitmap();

  Gdiplus::GpStatus status() const { return status_; }
  Gdiplus::GpBitmap* get() const { return bitmap_; }
  imaging::Bitmap& inside() const;
  Bytes pixels() const;
  void setPixels(const Bytes& pixels);
  // 8bpp only.
  BYTE grey(UINT x, UINT y) const { return inside().row(y)[x]; }
  Gdiplus::GpStatus draw(const TestBitmap& picture, INT x, INT y);
  Gdiplus::GpStatus save(const std::filesystem::path& file) const;

 private:
  Gdiplus::GpBitmap* bitmap_ = nullptr;
  Gdiplus::GpStatus status_ = Gdiplus::GenericError;
};

struct JpegRecipe {
  unsigned width = 16;
  unsigned height = 16;
  int channels = 3;  // 1 grey, 3 red green blue, 4 inverted ink as Adobe's programs write it
  int quality = 95;
  int densityUnit = 1;
  unsigned xDensity = 300;
  unsigned yDensity = 300;
  bool jfif = true;
  bool progressive = false;
  bool arithmetic = false;
  unsigned restartInterval = 0;
  bool fullChroma = false;
};
// value(x, y, channel)
using PixelSource = std::function<unsigned(unsigned, unsigned, int)>;

Bytes makeJpeg(const JpegRecipe& recipe, const PixelSource& value);
Bytes makeJpeg(const JpegRecipe& recipe, unsigned level);

// Facts of a JPEG file as the codec sees them.
struct JpegFacts {
  bool valid = false;
  unsigned width = 0;
  unsigned height = 0;
  int components = 0;
  int lumaAcross = 0;
  int lumaDown = 0;
  int densityUnit = 0;
  unsigned xDensity = 0;
  unsigned yDensity = 0;
  std::vector<unsigned> lumaTable;  // row by row
};
JpegFacts jpegFacts(const Bytes& file);

// Where the first marker of that kind stands in the file; the file's length when there is none.
std::size_t findMarker(const Bytes& file, std::uint8_t marker);

// The first bytes of a file.
Bytes prefix(const Bytes& file, std::size_t length);

void storeBytes(const std::filesystem::path& file, const Bytes& bytes);
Bytes loadBytes(const std::filesystem::path& file);

// Limits the size of files that this process writes, for as long as it lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(unsigned long bytes);
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit();

 private:
  unsigned long before_;
  void (*handler_)(int);
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_PLATFORM_IMAGING_TEST_SUPPORT_H
