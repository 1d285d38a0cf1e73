// One function for each pair of formats. Those that make packed pixels put whole bytes together
// where they can, because a black-and-white page goes through them pixel by pixel.
#include "platform/posix/imaging/pixel_rows.h"

#include <cstring>

namespace tvrscn::imaging {
namespace {

using Gdiplus::PixelFormat;

constexpr std::size_t kColourBytes = 3;
constexpr BYTE kWhite = 255;

bool bitAt(const BYTE* row, std::size_t x) {
  return ((row[x / 8] << (x % 8)) & 0x80) != 0;
}

void setBit(BYTE* row, std::size_t x, bool white) {
  const unsigned mask = 0x80u >> (x % 8);
  const unsigned old = row[x / 8];
  row[x / 8] = static_cast<BYTE>(white ? old | mask : old & ~mask);
}

template <typename IsWhite>
void packRow(BYTE* target, std::size_t targetX, std::size_t count, IsWhite isWhite) {
  std::size_t i = 0;
  for (; i < count && (targetX + i) % 8 != 0; ++i)
    setBit(target, targetX + i, isWhite(i));
  for (; count - i >= 8; i += 8) {
    unsigned packed = 0;
    for (std::size_t bit = 0; bit < 8; ++bit)
      packed = packed << 1 | (isWhite(i + bit) ? 1u : 0u);
    target[(targetX + i) / 8] = static_cast<BYTE>(packed);
  }
  for (; i < count; ++i)
    setBit(target, targetX + i, isWhite(i));
}

void copyBits(BYTE* target, std::size_t targetX, const BYTE* source, std::size_t sourceX,
              std::size_t count) {
  if (targetX % 8 == 0 && sourceX % 8 == 0) {
    const std::size_t whole = count / 8;
    // The last, partial byte is fetched first: the move may overwrite it.
    const BYTE tail = count % 8 != 0 ? source[sourceX / 8 + whole] : BYTE{0};
    std::memmove(target + targetX / 8, source + sourceX / 8, whole);
    for (std::size_t i = 0; i < count % 8; ++i)
      setBit(target, targetX + whole * 8 + i, bitAt(&tail, i));
    return;
  }
  const bool backwards = targetX > sourceX;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = backwards ? count - 1 - i : i;
    setBit(target, targetX + at, bitAt(source, sourceX + at));
  }
}

void copyGrey(BYTE* target, std::size_t targetX, const BYTE* source, std::size_t sourceX,
              std::size_t count) {
  std::memmove(target + targetX, source + sourceX, count);
}

void copyColour(BYTE* target, std::size_t targetX, const BYTE* source, std::size_t sourceX,
                std::size_t count) {
  std::memmove(target + targetX * kColourBytes, source + sourceX * kColourBytes,
               count * kColourBytes);
}

void bitsToGrey(BYTE* target, std::size_t targetX, const BYTE* source, std::size_t sourceX,
                std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    target[targetX + i] = bitAt(source, sourceX + i) ? kWhite : BYTE{0};
}

void bitsToColour(BYTE* target, std::size_t targetX, const BYTE* source, std::size_t sourceX,
                  std::size_t count) {
  BYTE* out = target + targetX * kColourBytes;
  for (std::size_t i = 0; i < count; ++i, out += kColourBytes)
    std::memset(out, bitAt(source, sourceX + i) ? kWhite : 0, kColourBytes);
}

void greyToBits(BYTE* target, std::size_t targetX, const BYTE* source, std::size_t sourceX,
                std::size_t count) {
  const BYTE* in = source + sourceX;
  packRow(target, targetX, count, [in](std::size_t i) { return in[i] >= kWhiteFrom; });
}

void greyToColour(BYTE* target, std::size_t targetX, const BYTE* source, std::size_t sourceX,
                  std::size_t count) {
  BYTE* out = target + targetX * kColourBytes;
  for (std::size_t i = 0; i < count; ++i, out += kColourBytes)
    std::memset(out, source[sourceX + i], kColourBytes);
}

BYTE lumaAt(const BYTE* pixel) {
  return luma(pixel[0], pixel[1], pixel[2]);
}

void colourToBits(BYTE* target, std::size_t targetX, const BYTE* source, std::size_t sourceX,
                  std::size_t count) {
  const BYTE* in = source + sourceX * kColourBytes;
  packRow(target, targetX, count,
          [in](std::size_t i) { return lumaAt(in + i * kColourBytes) >= kWhiteFrom; });
}

void colourToGrey(BYTE* target, std::size_t targetX, const BYTE* source, std::size_t sourceX,
                  std::size_t count) {
  const BYTE* in = source + sourceX * kColourBytes;
  for (std::size_t i = 0; i < count; ++i, in += kColourBytes)
    target[targetX + i] = lumaAt(in);
}

std::size_t index(PixelFormat format) {
  if (format == Gdiplus::PixelFormat1bppIndexed) return 0;
  return format == Gdiplus::PixelFormat8bppIndexed ? 1 : 2;
}

// [target][source], in the order 1bpp, 8bpp, 24bpp
constexpr RowCopy kRowCopies[3][3] = {
    {copyBits, greyToBits, colourToBits},
    {bitsToGrey, copyGrey, colourToGrey},
    {bitsToColour, greyToColour, copyColour},
};

}  // namespace

std::size_t rowBytes(PixelFormat format, std::size_t width) {
  switch (format) {
    case Gdiplus::PixelFormat1bppIndexed:
      return (width + 7) / 8;
    case Gdiplus::PixelFormat8bppIndexed:
      return width;
    case Gdiplus::PixelFormat24bppRGB:
      return width * kColourBytes;
    default:
      return 0;
  }
}

RowCopy rowCopy(PixelFormat target, PixelFormat source) {
  return kRowCopies[index(target)][index(source)];
}

}  // namespace tvrscn::imaging
