// Reads the quantisation tables out of the file's header segments. Every length in them is judged
// against what is there.
#include "platform/tevrautil/windows/jpeg_quality.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
#include <vector>

#include "platform/files.h"

namespace tvrscn::imaging {
namespace {

constexpr int kUsualQuality = 75;
constexpr int kBestQuality = 100;

constexpr std::uint8_t kMarker = 0xFF;
constexpr std::uint8_t kStartOfScan = 0xDA;
constexpr std::uint8_t kQuantisation = 0xDB;
constexpr std::size_t kSteps = 64;
constexpr unsigned kTables = 4;

using Steps = std::array<std::uint16_t, kSteps>;

// The tables of quality 50 that encoders scale, in the order in which a file has them.
constexpr Steps kLumaSteps = {
    16, 11, 12,  14,  12,  10, 16, 14,  13,  14,  18,  17,  16, 19,  24,  40,
    26, 24, 22,  22,  24,  49, 35, 37,  29,  40,  58,  51,  61, 60,  57,  51,
    56, 55, 64,  72,  92,  78, 64, 68,  87,  69,  55,  56,  80, 109, 81,  87,
    95, 98, 103, 104, 103, 62, 77, 113, 121, 112, 100, 120, 92, 101, 103, 99,
};
constexpr Steps kChromaSteps = {
    17, 18, 18, 24, 21, 24, 47, 26, 26, 47, 99, 66, 56, 66, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
};

int scaledStep(int step, int quality) {
  const int percent = 200 - 2 * quality;
  return std::clamp((step * percent + 50) / 100, 1, 255);
}

bool isFineEnough(const Steps& file, const Steps& usual, int quality) {
  for (std::size_t i = 0; i < kSteps; ++i) {
    if (scaledStep(usual[i], quality) > file[i]) return false;
  }
  return true;
}

class Tables {
 public:
  // The content of one segment, which may hold several tables of 8 or 16 bits a step.
  void add(const std::uint8_t* at, std::size_t length) {
    while (length > 0) {
      const unsigned id = *at & 0x0FU;
      const std::size_t stepBytes = (*at >> 4U) != 0 ? 2 : 1;
      const std::size_t size = 1 + kSteps * stepBytes;
      if (id >= kTables || length < size) return;
      Steps& steps = tables_[id].emplace();
      for (std::size_t i = 0; i < kSteps; ++i) {
        const std::uint8_t* const step = at + 1 + i * stepBytes;
        steps[i] = static_cast<std::uint16_t>(stepBytes == 1 ? step[0] : step[0] << 8U | step[1]);
      }
      at += size;
      length -= size;
    }
  }

  [[nodiscard]] int quality() const {
    int quality = kUsualQuality;
    while (quality < kBestQuality && !areKeptBy(quality))
      ++quality;
    return quality;
  }

 private:
  [[nodiscard]] bool areKeptBy(int quality) const {
    for (unsigned id = 0; id < kTables; ++id) {
      const Steps& usual = id == 0 ? kLumaSteps : kChromaSteps;
      if (tables_[id] && !isFineEnough(*tables_[id], usual, quality)) return false;
    }
    return true;
  }

  std::optional<Steps> tables_[kTables];
};

}  // namespace

int jpegQuality(const std::wstring& path) {
  std::ifstream file(systemPath(path), std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file),
                                std::istreambuf_iterator<char>()};
  const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
  Tables tables;
  constexpr std::size_t kSegmentHeader = 4;
  std::size_t at = 2;  // behind the start of image
  while (at + kSegmentHeader <= data.size() && data[at] == kMarker) {
    const std::uint8_t code = data[at + 1];
    if (code == kMarker) {  // fill
      ++at;
      continue;
    }
    if (code == kStartOfScan) break;
    const std::size_t length = static_cast<std::size_t>(data[at + 2]) << 8U | data[at + 3];
    if (length < 2 || at + 2 + length > data.size()) break;
    if (code == kQuantisation) tables.add(data.data() + at + kSegmentHeader, length - 2);
    at += 2 + length;
  }
  return tables.quality();
}

}  // namespace tvrscn::imaging
