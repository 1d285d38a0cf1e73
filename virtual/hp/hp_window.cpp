// Layout of the request, 25 bytes, big-endian:
//
//   0   1B A8 24       command
//   3   13 30          fixed
//   5   4              width in 1/1200 inch
//   9   4              height in 1/1200 inch
//   13  1, 1           resolution codes, across and down
//   15  4              zero
//   19  1              colour: 03 grey, anything else colour
//   20  06             fixed
//   21  1              background: 01 as it is, 09 cleaned
//   22  15             fixed
//   23  2              source
#include "virtual/hp/hp_window.h"

#include "virtual/hp/hp_protocol.h"

namespace tvrscn::virtual_device {
namespace {

struct FixedByte {
  std::size_t at;
  std::uint8_t value;
};

constexpr FixedByte kFixedBytes[] = {
    {3, 0x13},  {4, 0x30},   // behind the command code
    {15, 0x00}, {16, 0x00},  // reserved
    {17, 0x00}, {18, 0x00},  //
    {20, 0x06}, {22, 0x15},  // around the background code
};

constexpr std::size_t kWidthAt = 5;
constexpr std::size_t kHeightAt = 9;
constexpr std::size_t kResolutionAcrossAt = 13;
constexpr std::size_t kResolutionDownAt = 14;
constexpr std::size_t kColorAt = 19;
constexpr std::size_t kBackgroundAt = 21;
constexpr std::size_t kSourceAt = 23;

constexpr std::uint8_t kColorGray = 0x03;
constexpr std::uint8_t kBackgroundAsIs = 0x01;
constexpr std::uint8_t kBackgroundCleaned = 0x09;

struct Resolution {
  std::uint8_t code;
  int dotsPerInch;
};

constexpr Resolution kResolutions[] = {
    {0x00, 75},  {0x0A, 100}, {0x02, 150}, {0x09, 200},
    {0x05, 300}, {0x0E, 400}, {0x07, 600}, {0x08, 1200},
};

struct SourceCode {
  std::uint8_t first;
  std::uint8_t second;
  HpSource source;
};

constexpr SourceCode kSources[] = {
    {0x40, 0x01, HpSource::kFlatbed},
    {0x20, 0x00, HpSource::kFeederOneSide},
    {0x11, 0x00, HpSource::kFeederTwoSides},
    {0x10, 0x00, HpSource::kFeederTwoSidesTurned},
};

// The glass: 12.5 by 18.5 inches, so that 12 by 18 given in whole millimetres still fits.
constexpr std::uint32_t kUnitsPerInch = 1200;
constexpr std::uint32_t kMaxWidth = 15000;
constexpr std::uint32_t kMaxHeight = 22200;

// A page is at least a header block and an end block.
constexpr int kLeastLines = 2;

int toPixels(std::uint32_t units, int dotsPerInch) {
  return static_cast<int>(units * static_cast<std::uint32_t>(dotsPerInch) / kUnitsPerInch);
}

bool readResolution(const Bytes& request, HpWindow& window) {
  const std::uint8_t code = request.at(kResolutionAcrossAt);
  if (request.at(kResolutionDownAt) != code) return false;
  for (const Resolution& resolution : kResolutions) {
    if (resolution.code != code) continue;
    window.dotsPerInch = resolution.dotsPerInch;
    return true;
  }
  return false;
}

bool readSource(const Bytes& request, HpWindow& window) {
  for (const SourceCode& code : kSources) {
    if (request.at(kSourceAt) != code.first || request.at(kSourceAt + 1) != code.second) continue;
    window.source = code.source;
    return true;
  }
  return false;
}

bool readBackground(const Bytes& request, HpWindow& window) {
  const std::uint8_t code = request.at(kBackgroundAt);
  window.cleanBackground = code == kBackgroundCleaned;
  return code == kBackgroundAsIs || code == kBackgroundCleaned;
}

}  // namespace

std::uint16_t readHpWindow(const Bytes& request, HpWindow& window) {
  for (const FixedByte& fixed : kFixedBytes) {
    if (request.at(fixed.at) != fixed.value) return kHpCommandError;
  }
  if (!readResolution(request, window) || !readSource(request, window) ||
      !readBackground(request, window)) {
    return kHpUnsupported;
  }
  window.gray = request.at(kColorAt) == kColorGray;

  const std::uint32_t width = getBig32(request, kWidthAt);
  const std::uint32_t height = getBig32(request, kHeightAt);
  if (width > kMaxWidth || height > kMaxHeight) return kHpInvalidArea;
  window.width = toPixels(width, window.dotsPerInch);
  window.height = toPixels(height, window.dotsPerInch);
  if (window.width < 1 || window.height < kLeastLines) return kHpInvalidArea;
  return 0;
}

}  // namespace tvrscn::virtual_device
