// Each reader takes the values out of a record, builds the record anew from them, and compares:
// what stands anywhere else is wrong.
//
// Reservation, 272 bytes: the texts at 4 (character set), 38 (computer) and 72 (user), 34 bytes
// each with a terminating zero.
//
// Mode select, 56 bytes:
//
//   2   1              40 feeder in use, 10 one page of it
//   3   2              number of pages: 1 for one page or the flatbed
//   5   1              80 two sides, 04 the second one turned
//
// Window, 48 bytes:
//
//   2   2, 2           resolution, across and down
//   16  4, 4           width and length in tenths of a millimetre
//   26  1              10 colour, 20 grey
//   27  08             bits a channel
//   28  1              background: 10 as it is, 40 cleaned
//   29  01             fixed
//   40  4, 4           width and length again
#include "virtual/qz/qz_request.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "virtual/qz/qz_protocol.h"

namespace tvrscn::virtual_device {
namespace {

constexpr std::string_view kCharacterSet = "UTF-8";
constexpr std::size_t kTextSize = 34;
constexpr std::size_t kCharacterSetAt = 4;
constexpr std::size_t kComputerAt = 38;
constexpr std::size_t kUserAt = 72;

constexpr std::size_t kFeederOptionsAt = 2;
constexpr std::size_t kPageCountAt = 3;
constexpr std::size_t kDuplexOptionsAt = 5;
constexpr std::uint8_t kFeederInUse = 0x40;
constexpr std::uint8_t kOnePage = 0x10;
constexpr std::uint8_t kTwoSides = 0x80;
constexpr std::uint8_t kBacksTurned = 0x04;

constexpr std::size_t kResolutionAt = 2;
constexpr std::size_t kWidthAt = 16;
constexpr std::size_t kLengthAt = 20;
constexpr std::size_t kColorAt = 26;
constexpr std::size_t kDepthAt = 27;
constexpr std::size_t kBackgroundAt = 28;
constexpr std::size_t kColorControlAt = 29;
constexpr std::size_t kWidthAgainAt = 40;
constexpr std::size_t kLengthAgainAt = 44;
constexpr std::uint8_t kColor = 0x10;
constexpr std::uint8_t kGray = 0x20;
constexpr std::uint8_t kDepth = 8;
constexpr std::uint8_t kBackgroundAsIs = 0x10;
constexpr std::uint8_t kBackgroundCleaned = 0x40;
constexpr std::uint8_t kColorControl = 1;

constexpr std::int64_t kUnitsPerInch = 254;
constexpr std::int64_t kMostPixels = 65500;  // of a JPEG, either way

bool hasBits(std::uint8_t value, std::uint8_t bits) {
  return (value & bits) != 0;
}

// Up to its zero, which has to be there.
std::optional<std::string> readText(const Bytes& payload, std::size_t at) {
  const auto begin = payload.begin() + static_cast<std::ptrdiff_t>(at);
  const auto end = begin + kTextSize;
  const auto zero = std::find(begin, end, 0);
  if (zero == end) return std::nullopt;
  return std::string(begin, zero);
}

void putText(Bytes& payload, std::size_t at, std::string_view text) {
  std::copy(text.begin(), text.end(), payload.begin() + static_cast<std::ptrdiff_t>(at));
}

// Bytes that follow the first one of a character, or nothing when none begins with it.
std::optional<std::size_t> followers(std::uint8_t first) {
  if (first < 0x80) return 0;
  if (first >= 0xC2 && first < 0xE0) return 1;
  if (first >= 0xE0 && first < 0xF0) return 2;
  if (first >= 0xF0 && first < 0xF5) return 3;
  return std::nullopt;
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::optional<std::size_t> count = followers(static_cast<std::uint8_t>(text.front()));
    text.remove_prefix(1);
    if (!count || *count > text.size()) return false;
    const std::string_view rest = text.substr(0, *count);
    if (!std::all_of(rest.begin(), rest.end(),
                     [](char c) { return (static_cast<std::uint8_t>(c) & 0xC0) == 0x80; })) {
      return false;
    }
    text.remove_prefix(*count);
  }
  return true;
}

std::optional<int> toPixels(std::uint32_t units, int mostUnits, int dotsPerInch) {
  if (units > static_cast<std::uint32_t>(mostUnits)) return std::nullopt;
  const std::int64_t pixels =
      (std::int64_t{units} * dotsPerInch + kUnitsPerInch / 2) / kUnitsPerInch;
  if (pixels < 1 || pixels > kMostPixels) return std::nullopt;
  return static_cast<int>(pixels);
}

// The record with these values and nothing else in it.
Bytes makeWindow(const Bytes& values) {
  Bytes window(kQzWindowSize, 0);
  const std::uint32_t width = getBig32(values, kWidthAt);
  const std::uint32_t length = getBig32(values, kLengthAt);
  putBig32(window, kResolutionAt, getBig32(values, kResolutionAt));
  putBig32(window, kWidthAt, width);
  putBig32(window, kLengthAt, length);
  window[kColorAt] = values[kColorAt];
  window[kDepthAt] = kDepth;
  window[kBackgroundAt] = values[kBackgroundAt];
  window[kColorControlAt] = kColorControl;
  putBig32(window, kWidthAgainAt, width);
  putBig32(window, kLengthAgainAt, length);
  return window;
}

std::optional<int> readResolution(const Bytes& payload, const QzResolutionLimits& limits) {
  const std::uint32_t both = getBig32(payload, kResolutionAt);
  const int across = static_cast<int>(both >> 16);
  const int down = static_cast<int>(both & 0xFFFF);
  if (across != down) return std::nullopt;
  if (across < limits.minX || across > limits.maxX) return std::nullopt;
  if (down < limits.minY || down > limits.maxY) return std::nullopt;
  return across;
}

}  // namespace

std::optional<QzOwner> readQzReservation(const Bytes& payload) {
  const std::optional<std::string> computer = readText(payload, kComputerAt);
  const std::optional<std::string> user = readText(payload, kUserAt);
  if (!computer || !user || !isUtf8(*computer) || !isUtf8(*user)) return std::nullopt;
  Bytes expected(kQzReservationSize, 0);
  putText(expected, kCharacterSetAt, kCharacterSet);
  putText(expected, kComputerAt, *computer);
  putText(expected, kUserAt, *user);
  if (payload != expected) return std::nullopt;
  return QzOwner{*computer, *user};
}

std::optional<QzSelection> readQzSelection(const Bytes& payload, const QzScannerOptions& options) {
  const std::uint8_t feeder = payload.at(kFeederOptionsAt);
  const std::uint8_t duplex = payload.at(kDuplexOptionsAt);
  const int count = payload.at(kPageCountAt) * 256 + payload.at(kPageCountAt + 1);
  Bytes expected(kQzSubDeviceSize, 0);
  expected[kFeederOptionsAt] = feeder & (kFeederInUse | kOnePage);
  putBig16(expected, kPageCountAt, static_cast<std::uint16_t>(count));
  expected[kDuplexOptionsAt] = duplex & (kTwoSides | kBacksTurned);
  if (payload != expected) return std::nullopt;

  QzSelection selection;
  selection.onePage = hasBits(feeder, kOnePage);
  selection.twoSides = hasBits(duplex, kTwoSides);
  selection.backsTurned = hasBits(duplex, kBacksTurned);
  const bool canChoose =
      hasBits(options.feederOptions, 0x20) && hasBits(options.feederOptions, 0x03);
  if (hasBits(feeder, kFeederInUse)) {
    selection.fromFeeder = true;
    if (!canChoose || count != (selection.onePage ? 1 : 0)) return std::nullopt;
  } else {
    // Without the choice, a job on paper from the feeder is one of no number of pages.
    selection.fromFeeder = !canChoose && count == 0;
    if (selection.onePage || (count != 1 && !selection.fromFeeder)) return std::nullopt;
  }
  const bool hasTwoSides = selection.fromFeeder && hasBits(options.duplexOptions, 0x30);
  if (selection.twoSides && !hasTwoSides) return std::nullopt;
  if (selection.backsTurned && !selection.twoSides) return std::nullopt;
  return selection;
}

std::optional<QzWindow> readQzWindow(const Bytes& payload, const QzScannerOptions& options,
                                     bool fromFeeder) {
  if (payload != makeWindow(payload)) return std::nullopt;
  const std::uint8_t color = payload[kColorAt];
  const std::uint8_t background = payload[kBackgroundAt];
  if (color != kColor && color != kGray) return std::nullopt;
  if (background != kBackgroundAsIs && background != kBackgroundCleaned) return std::nullopt;
  const std::optional<int> resolution = readResolution(payload, options.resolutions);
  if (!resolution) return std::nullopt;
  const QzSizeLimits& limits = fromFeeder ? options.feederLimits : options.flatbedLimits;
  const std::optional<int> width =
      toPixels(getBig32(payload, kWidthAt), limits.maxWidth, *resolution);
  const std::optional<int> height =
      toPixels(getBig32(payload, kLengthAt), limits.maxLength, *resolution);
  if (!width || !height) return std::nullopt;

  QzWindow window;
  window.dotsPerInch = *resolution;
  window.width = *width;
  window.height = *height;
  window.gray = color == kGray;
  window.cleanBackground = background == kBackgroundCleaned;
  return window;
}

}  // namespace tvrscn::virtual_device
