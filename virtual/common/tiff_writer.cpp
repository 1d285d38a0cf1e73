// Layout: a header of 8 bytes, then for each page its directory, the resolution that the directory
// points at, and the strip, padded to an even length since the next directory has to begin at one.
#include "virtual/common/tiff_writer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "virtual/common/fax_encoder.h"

namespace tvrscn::virtual_device {
namespace {

constexpr std::uint8_t kHeader[] = {'I', 'I', 42, 0, 8, 0, 0, 0};

constexpr std::uint16_t kShort = 3;
constexpr std::uint16_t kLong = 4;
constexpr std::uint16_t kRational = 5;

struct Entry {
  std::uint16_t tag;
  std::uint16_t type;
  std::uint32_t count;
  std::uint32_t value;  // where it does not fit: its place in the file
};
constexpr std::uint32_t kEntrySize = 12;
constexpr std::uint32_t kEntries = 14;
constexpr std::uint32_t kDirectorySize = 2 + kEntries * kEntrySize + 4;
constexpr std::uint32_t kResolutionSize = 8;

constexpr std::uint32_t kOnePageOfSeveral = 2;
constexpr std::uint32_t kWhiteIsZero = 0;
constexpr std::uint32_t kPerInch = 2;

constexpr int kMidGray = 128;

void putLittle16(Bytes& bytes, std::uint32_t value) {
  bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
  bytes.push_back(static_cast<std::uint8_t>((value >> 8) & 0xFF));
}

void putLittle32(Bytes& bytes, std::uint32_t value) {
  putLittle16(bytes, value & 0xFFFF);
  putLittle16(bytes, value >> 16);
}

// Two numbers of 16 bits in the place of one of 32.
std::uint32_t pairOf(int first, int second) {
  return static_cast<std::uint32_t>(first) | (static_cast<std::uint32_t>(second) << 16);
}

// Calls use(black) with each line, one byte a pixel, not 0 where it is black.
template <typename Use>
void forEachLine(const PictureShape& shape, const LineSource& lines, const Use& use) {
  std::vector<std::uint8_t> black(static_cast<std::size_t>(shape.width));
  for (int first = 0; first < shape.height; first += kBandLines) {
    Raster band(shape.width, std::min(kBandLines, shape.height - first), 1);
    lines(first, band);
    for (int y = 0; y < band.height; ++y) {
      const std::uint8_t* gray = band.line(y);
      std::transform(gray, gray + shape.width, black.begin(), [](std::uint8_t level) {
        return static_cast<std::uint8_t>(level < kMidGray ? 1 : 0);
      });
      use(black);
    }
  }
}

Bytes packedStrip(const PictureShape& shape, const LineSource& lines) {
  Bytes strip;
  forEachLine(shape, lines, [&](const std::vector<std::uint8_t>& black) {
    const std::size_t start = strip.size();
    strip.resize(start + (black.size() + 7) / 8, 0);
    for (std::size_t x = 0; x < black.size(); ++x) {
      if (black[x] == 0) continue;
      std::uint8_t& byte = strip[start + x / 8];
      byte = static_cast<std::uint8_t>(byte | (0x80U >> (x % 8)));
    }
  });
  return strip;
}

Bytes faxStrip(const PictureShape& shape, const LineSource& lines) {
  FaxEncoder encoder(shape.width);
  forEachLine(shape, lines,
              [&](const std::vector<std::uint8_t>& black) { encoder.addLine(black.data()); });
  return encoder.finish();
}

// Where the parts of a page lie in the file.
struct Places {
  std::uint32_t directory;
  std::uint32_t resolution;
  std::uint32_t strip;
  std::uint32_t end;
};

Places placesFor(std::size_t directory, std::size_t stripLength) {
  // Offsets have 32 bits, and readers take them for signed numbers.
  constexpr std::size_t kMost = 0x7FFFFFFF;
  const std::size_t resolution = directory + kDirectorySize;
  const std::size_t strip = resolution + kResolutionSize;
  const std::size_t end = strip + stripLength + stripLength % 2;
  if (end > kMost) throw std::runtime_error("the document is too long for a TIFF file");
  return {static_cast<std::uint32_t>(directory), static_cast<std::uint32_t>(resolution),
          static_cast<std::uint32_t>(strip), static_cast<std::uint32_t>(end)};
}

using Entries = std::array<Entry, kEntries>;

Entries entriesOf(const PictureShape& shape, TiffCompression compression, std::size_t stripLength,
                  const Places& places, std::uint32_t pageNumber) {
  const auto width = static_cast<std::uint32_t>(shape.width);
  const auto height = static_cast<std::uint32_t>(shape.height);
  return {{
      {254, kLong, 1, kOnePageOfSeveral},                         // subfile type
      {256, kLong, 1, width},                                     //
      {257, kLong, 1, height},                                    //
      {258, kShort, 1, 1},                                        // bits a sample
      {259, kShort, 1, static_cast<std::uint32_t>(compression)},  //
      {262, kShort, 1, kWhiteIsZero},                             // photometric
      {273, kLong, 1, places.strip},                              //
      {277, kShort, 1, 1},                                        // samples a pixel
      {278, kLong, 1, height},                                    // rows in a strip
      {279, kLong, 1, static_cast<std::uint32_t>(stripLength)},   //
      {282, kRational, 1, places.resolution},                     // across
      {283, kRational, 1, places.resolution},                     // down
      {296, kShort, 1, kPerInch},                                 // resolution unit
      {297, kShort, 2, pageNumber},                               // and of how many
  }};
}

void putEntries(Bytes& bytes, const Entries& entries) {
  putLittle16(bytes, kEntries);
  for (const Entry& entry : entries) {
    putLittle16(bytes, entry.tag);
    putLittle16(bytes, entry.type);
    putLittle32(bytes, entry.count);
    putLittle32(bytes, entry.value);
  }
}

}  // namespace

TiffWriter::TiffWriter(int pages, TiffCompression compression)
    : pages_(pages), compression_(compression) {}

Bytes TiffWriter::nextPage(const PictureShape& shape, const LineSource& lines) {
  const Bytes strip =
      compression_ == TiffCompression::kGroup4 ? faxStrip(shape, lines) : packedStrip(shape, lines);
  Bytes bytes;
  if (pagesDone_ == 0) bytes.assign(std::begin(kHeader), std::end(kHeader));
  const Places places = placesFor(size_ + bytes.size(), strip.size());
  const bool isLast = pagesDone_ + 1 == pages_;
  putEntries(bytes,
             entriesOf(shape, compression_, strip.size(), places, pairOf(pagesDone_, pages_)));
  putLittle32(bytes, isLast ? 0 : places.end);  // the next directory
  putLittle32(bytes, static_cast<std::uint32_t>(shape.dotsPerInch));
  putLittle32(bytes, 1);  // the resolution's denominator
  bytes.insert(bytes.end(), strip.begin(), strip.end());
  if (strip.size() % 2 != 0) bytes.push_back(0);
  ++pagesDone_;
  size_ = places.end;
  return bytes;
}

}  // namespace tvrscn::virtual_device
