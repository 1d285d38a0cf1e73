// Small bitmaps come as malloc gives them and are cleared row by row, large ones from calloc: fresh
// zero pages of the system, which cost nothing until a row is written.
#include "platform/posix/imaging/bitmap.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "platform/posix/imaging/pixel_rows.h"

namespace tvrscn::imaging {
namespace {

// Memory up to this size has often been used before, by the last strip or page; beyond it, it comes
// fresh and zero from the system, and only as far as it is written.
constexpr std::size_t kMaxUncleared = std::size_t{32} << 20;

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
  bitmap.reset();
  const std::size_t stride = rowBytes(format, width);
  if (stride == 0 || height == 0) return Gdiplus::InvalidParameter;
  if (width > kMaxSide || height > kMaxSide || stride * height > kMaxBytes)
    return Gdiplus::OutOfMemory;
  const bool cleared = stride * height > kMaxUncleared;
  auto* pixels =
      static_cast<BYTE*>(cleared ? std::calloc(height, stride) : std::malloc(height * stride));
  if (pixels == nullptr) return Gdiplus::OutOfMemory;
  bitmap.reset(new (std::nothrow)
                   Bitmap(width, height, format, stride, cleared ? height : 0, pixels));
  if (bitmap) return Gdiplus::Ok;
  std::free(pixels);
  return Gdiplus::OutOfMemory;
}

void Bitmap::setFilled(UINT rows) {
  filled_ = std::max(filled_, rows);
}

void Bitmap::clearUpTo(UINT rows) {
  if (rows <= filled_) return;
  std::memset(row(filled_), 0, (rows - filled_) * stride_);
  filled_ = rows;
}

void Bitmap::draw(const Bitmap& picture, INT x, INT y) {
  const Span across = clip(x, picture.width_, width_);
  const Span down = clip(y, picture.height_, height_);
  if (across.length == 0 || down.length == 0) return;
  const UINT end = down.pageStart + down.length;
  // Packed pixels are set one by one within their bytes, and a row's last byte may be used in part.
  const bool overwritten = across.length == width_ && format_ != Gdiplus::PixelFormat1bppIndexed;
  clearUpTo(overwritten ? down.pageStart : end);
  setFilled(end);
  const auto copyRow = rowCopy(format_, picture.format_);
  // A bitmap drawn onto itself further down is drawn from its end, so that no row is read after it
  // was overwritten.
  const bool upwards = down.pageStart > down.pictureStart;
  for (UINT i = 0; i < down.length; ++i) {
    const UINT line = upwards ? down.length - 1 - i : i;
    copyRow(row(down.pageStart + line), across.pageStart, picture.row(down.pictureStart + line),
            across.pictureStart, across.length);
  }
}

void Bitmap::mapLevels(const std::array<BYTE, 256>& table) {
  complete();
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
