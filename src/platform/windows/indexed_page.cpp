// Pictures are read as colour, whatever they are, and reduced by the same rule as on every system.
#include "platform/windows/indexed_page.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "platform/imaging_math/luma.h"
#include "platform/windows/locked_rows.h"

namespace tvrscn::imaging {
namespace {

using Gdiplus::GpBitmap;
using Gdiplus::GpStatus;

constexpr std::size_t kColourBytes = 3;
constexpr Gdiplus::ARGB kOpaque = 0xFF000000U;

// A palette of the system, which ends in an array of one entry for all sizes.
struct GreyPalette {
  UINT flags;
  UINT count;
  Gdiplus::ARGB entries[256];
};
static_assert(offsetof(GreyPalette, entries) == offsetof(Gdiplus::ColorPalette, Entries));

UINT levelsOf(Gdiplus::PixelFormat format) {
  return format == Gdiplus::PixelFormat1bppIndexed ? 2 : 256;
}

struct Size {
  UINT width = 0;
  UINT height = 0;
};

Size sizeOf(GpBitmap* bitmap) {
  Size size;
  Gdiplus::DllExports::GdipGetImageWidth(bitmap, &size.width);
  Gdiplus::DllExports::GdipGetImageHeight(bitmap, &size.height);
  return size;
}

Gdiplus::PixelFormat formatOf(Gdiplus::GpImage* image) {
  Gdiplus::PixelFormat format = 0;
  Gdiplus::DllExports::GdipGetImagePixelFormat(image, &format);
  return format;
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

BYTE lumaAt(const BYTE* pixel) {
  return luma(pixel[0], pixel[1], pixel[2]);
}

void drawBits(BYTE* page, const BYTE* picture, const Span& across) {
  const BYTE* pixel = picture + across.pictureStart * kColourBytes;
  for (UINT x = across.pageStart; x < across.pageStart + across.length; ++x) {
    const unsigned mask = 0x80U >> (x % 8);
    const unsigned old = page[x / 8];
    page[x / 8] = static_cast<BYTE>(lumaAt(pixel) >= kWhiteFrom ? old | mask : old & ~mask);
    pixel += kColourBytes;
  }
}

void drawGrey(BYTE* page, const BYTE* picture, const Span& across) {
  const BYTE* pixel = picture + across.pictureStart * kColourBytes;
  for (UINT x = across.pageStart; x < across.pageStart + across.length; ++x) {
    page[x] = lumaAt(pixel);
    pixel += kColourBytes;
  }
}

BYTE mapPacked(BYTE packed, bool blackBecomesWhite, bool whiteBecomesWhite) {
  const unsigned fromWhite = whiteBecomesWhite ? packed : 0U;
  const unsigned fromBlack = blackBecomesWhite ? ~static_cast<unsigned>(packed) : 0U;
  return static_cast<BYTE>(fromWhite | fromBlack);
}

void mapRow(BYTE* row, std::size_t length, const std::array<BYTE, 256>& table, bool packed) {
  const bool black = table.front() >= kWhiteFrom;
  const bool white = table.back() >= kWhiteFrom;
  for (std::size_t i = 0; i < length; ++i)
    row[i] = packed ? mapPacked(row[i], black, white) : table[row[i]];
}

}  // namespace

bool isIndexed(Gdiplus::GpImage* image) {
  const Gdiplus::PixelFormat format = formatOf(image);
  return format == Gdiplus::PixelFormat1bppIndexed || format == Gdiplus::PixelFormat8bppIndexed;
}

GpStatus setGreyPalette(GpBitmap* page, Gdiplus::PixelFormat format) {
  const UINT levels = levelsOf(format);
  GreyPalette palette = {Gdiplus::PaletteFlagsGrayScale, levels, {}};
  for (UINT i = 0; i < levels; ++i) {
    const UINT grey = i * 255 / (levels - 1);
    palette.entries[i] = kOpaque | grey << 16 | grey << 8 | grey;
  }
  return Gdiplus::DllExports::GdipSetImagePalette(
      page, reinterpret_cast<const Gdiplus::ColorPalette*>(&palette));
}

GpStatus drawOnIndexed(GpBitmap* page, GpBitmap* picture, INT x, INT y) {
  const Size pageSize = sizeOf(page);
  const Size pictureSize = sizeOf(picture);
  const Span across = clip(x, pictureSize.width, pageSize.width);
  const Span down = clip(y, pictureSize.height, pageSize.height);
  if (across.length == 0) return Gdiplus::Ok;
  const Gdiplus::PixelFormat format = formatOf(page);
  const auto drawRow = format == Gdiplus::PixelFormat1bppIndexed ? drawBits : drawGrey;
  for (UINT done = 0; done < down.length; done += kBandRows) {
    const UINT rows = std::min(kBandRows, down.length - done);
    const LockedRows from(picture, pictureSize.width, down.pictureStart + done, rows,
                          Gdiplus::PixelFormat24bppRGB, LockedRows::For::kReading);
    if (from.status() != Gdiplus::Ok) return from.status();
    const LockedRows to(page, pageSize.width, down.pageStart + done, rows, format,
                        LockedRows::For::kWriting);
    if (to.status() != Gdiplus::Ok) return to.status();
    for (UINT i = 0; i < rows; ++i)
      drawRow(to.row(i), from.row(i), across);
  }
  return Gdiplus::Ok;
}

GpStatus mapLevels(GpBitmap* page, const std::array<BYTE, 256>& table) {
  const Size size = sizeOf(page);
  const bool indexed = isIndexed(page);
  const Gdiplus::PixelFormat format = indexed ? formatOf(page) : Gdiplus::PixelFormat24bppRGB;
  const bool packed = format == Gdiplus::PixelFormat1bppIndexed;
  const std::size_t bits = packed ? 1 : indexed ? 8 : 24;
  const std::size_t length = (size.width * bits + 7) / 8;
  for (UINT done = 0; done < size.height; done += kBandRows) {
    const UINT rows = std::min(kBandRows, size.height - done);
    const LockedRows band(page, size.width, done, rows, format, LockedRows::For::kWriting);
    if (band.status() != Gdiplus::Ok) return band.status();
    for (UINT i = 0; i < rows; ++i)
      mapRow(band.row(i), length, table, packed);
  }
  return Gdiplus::Ok;
}

}  // namespace tvrscn::imaging
