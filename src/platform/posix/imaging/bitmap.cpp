// Pixels come from calloc: large blocks are fresh zero pages of the system, which cost nothing
// until a row is written.
#include "platform/posix/imaging/bitmap.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "platform/posix/imaging/pixel_rows.h"

namespace tvrscn::imaging {
namespace {

// Strips of a page come and go in memory that is there already; clearing it for each of them would
// be a notable part of what a strip costs.
constexpr std::size_t kMaxUncleared = std::size_t{32} << 20;

void* allocateToFill(std::size_t rows, std::size_t stride) {
  return rows * stride <= kMaxUncleared ? std::malloc(rows * stride) : std::calloc(rows, stride);
}

// The part of a picture's side that falls on the page.
struct Span {
  UINT pageStart = 0;
  UINT pictureStart = 0;
  UINT length = 0;
};

Span clip(INT position, UINT picture, UINT page) {
  const std::int64_t start = std::max<std::int64_t>(position, 0);
  const std::int64_t end = std::min<std::int64_t>(std::int64_t{position} + picture, page);
  if (end <= start) return {};
  return {static_cast<UINT>(start), static_cast<UINT>(start - position),
          static_cast<UINT>(end - start)};
}

BYTE mapPacked(BYTE packed, bool blackBecomesWhite, bool whiteBecomesWhite) {
  const unsigned fromWhite = whiteBecomesWhite ? packed : 0u;
  const unsigned fromBlack = blackBecomesWhite ? ~static_cast<unsigned>(packed) : 0u;
  return static_cast<BYTE>(fromWhite | fromBlack);
}

}  // namespace

Gdiplus::GpStatus Bitmap::create(UINT width, UINT height, Gdiplus::PixelFormat format,
                                 std::unique_ptr<Bitmap>& bitmap) {
  return createIn(std::calloc, width, height, format, bitmap);
}

Gdiplus::GpStatus Bitmap::createToFill(UINT width, UINT height, Gdiplus::PixelFormat format,
                                       std::unique_ptr<Bitmap>& bitmap) {
  return createIn(allocateToFill, width, height, format, bitmap);
}

Gdiplus::GpStatus Bitmap::createIn(Allocate allocate, UINT width, UINT height,
                                   Gdiplus::PixelFormat format, std::unique_ptr<Bitmap>& bitmap) {
  bitmap.reset();
  const std::size_t stride = rowBytes(format, width);
  if (stride == 0 || height == 0) return Gdiplus::InvalidParameter;
  if (width > kMaxSide || height > kMaxSide || stride * height > kMaxBytes)
    return Gdiplus::OutOfMemory;
  auto* pixels = static_cast<BYTE*>(allocate(height, stride));
  if (pixels == nullptr) return Gdiplus::OutOfMemory;
  bitmap.reset(new (std::nothrow) Bitmap(width, height, format, stride, pixels));
  if (bitmap) return Gdiplus::Ok;
  std::free(pixels);
  return Gdiplus::OutOfMemory;
}

void Bitmap::clearFrom(UINT y) {
  // Larger ones were zero from the start, and clearing them would take their memory.
  const std::size_t bytes = stride_ * height_;
  if (y < height_ && bytes <= kMaxUncleared) std::memset(row(y), 0, bytes - y * stride_);
}

void Bitmap::draw(const Bitmap& picture, INT x, INT y) {
  const Span across = clip(x, picture.width_, width_);
  const Span down = clip(y, picture.height_, height_);
  const auto copyRow = rowCopy(format_, picture.format_);
  // A bitmap drawn onto itself further down is drawn from its end, so that no row is read after it
  // was overwritten.
  const bool upwards = down.pageStart > down.pictureStart;
  for (UINT i = 0; across.length > 0 && i < down.length; ++i) {
    const UINT line = upwards ? down.length - 1 - i : i;
    copyRow(row(down.pageStart + line), across.pageStart, picture.row(down.pictureStart + line),
            across.pictureStart, across.length);
  }
}

void Bitmap::mapLevels(const std::array<BYTE, 256>& table) {
  BYTE* const begin = pixels_.get();
  BYTE* const end = begin + stride_ * height_;
  if (format_ != Gdiplus::PixelFormat1bppIndexed) {
    std::transform(begin, end, begin, [&table](BYTE level) { return table[level]; });
    return;
  }
  const bool black = table.front() >= kWhiteFrom;
  const bool white = table.back() >= kWhiteFrom;
  std::transform(begin, end, begin,
                 [black, white](BYTE packed) { return mapPacked(packed, black, white); });
}

}  // namespace tvrscn::imaging
