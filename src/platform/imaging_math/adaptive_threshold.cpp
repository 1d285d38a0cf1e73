// The header has the mathematics. Sums of a window are kept up by adding what enters and taking off
// what leaves, so a pixel costs the same whatever the resolution.
#include "platform/imaging_math/adaptive_threshold.h"

#include <algorithm>
#include <utility>

namespace tvrscn::imaging {
namespace {

constexpr float kLocalContrast = 0.85F;
constexpr float kSolidBlack = 0.50F;
constexpr std::uint64_t kPaperPercent = 90;
constexpr std::size_t kPaperReachTiles = 4;
constexpr float kBrightnessRange = 255;
constexpr float kAboveWhite = 256;

constexpr unsigned kWindowsPerInch = 8;  // radii
constexpr unsigned kTilesPerInch = 8;
// Bounds for files that state an odd resolution or none.
constexpr std::size_t kMinExtent = 8;
constexpr std::size_t kMaxExtent = 160;

std::size_t extent(unsigned dpi, unsigned perInch) {
  return std::clamp<std::size_t>(dpi / perInch, kMinExtent, kMaxExtent);
}

BYTE paperOf(const std::array<std::uint32_t, 256>& histogram) {
  std::uint64_t pixels = 0;
  for (const std::uint32_t count : histogram)
    pixels += count;
  std::uint64_t below = 0;
  std::size_t level = 0;
  for (; level < histogram.size() - 1; ++level) {
    below += histogram[level];
    if (below * 100 >= pixels * kPaperPercent) break;
  }
  return static_cast<BYTE>(level);
}

// Each value becomes the largest within reach, along a line of values `step` apart.
void dilateLine(BYTE* line, std::size_t count, std::size_t step, std::vector<BYTE>& before) {
  before.resize(count);
  for (std::size_t i = 0; i < count; ++i)
    before[i] = line[i * step];
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t from = i > kPaperReachTiles ? i - kPaperReachTiles : 0;
    const std::size_t to = std::min(count, i + kPaperReachTiles + 1);
    line[i * step] = *std::max_element(before.data() + from, before.data() + to);
  }
}

// Where a pixel lies between the centres of two neighbouring tiles.
struct Between {
  std::size_t first;
  std::size_t second;
  float share;  // of the second
};

Between between(std::size_t pixel, std::size_t tile, std::size_t tiles) {
  const float place = (static_cast<float>(pixel) + 0.5F) / static_cast<float>(tile) - 0.5F;
  if (place <= 0) return {0, 0, 0};
  const auto first = std::min(static_cast<std::size_t>(place), tiles - 1);
  return {first, std::min(first + 1, tiles - 1), place - static_cast<float>(first)};
}

float mix(BYTE first, BYTE second, float share) {
  const auto low = static_cast<float>(first);
  return low + (static_cast<float>(second) - low) * share;
}

}  // namespace

PaperLevel::PaperLevel(std::size_t width, std::size_t height, unsigned dpi)
    : width_(width),
      tile_(extent(dpi, kTilesPerInch)),
      across_((width + tile_ - 1) / tile_),
      down_((height + tile_ - 1) / tile_),
      histograms_(across_) {
  levels_.reserve(across_ * down_);
}

void PaperLevel::addRow(const BYTE* grey) {
  for (std::size_t x = 0; x < width_; ++x)
    ++histograms_[x / tile_][grey[x]];
  if (++rowsAdded_ % tile_ == 0) closeTileRow();
}

void PaperLevel::closeTileRow() {
  for (auto& histogram : histograms_) {
    levels_.push_back(paperOf(histogram));
    histogram.fill(0);
  }
}

void PaperLevel::finish() {
  if (rowsAdded_ % tile_ != 0) closeTileRow();
  std::vector<BYTE> line;
  for (std::size_t row = 0; row < down_; ++row)
    dilateLine(levels_.data() + row * across_, across_, 1, line);
  for (std::size_t column = 0; column < across_; ++column)
    dilateLine(levels_.data() + column, down_, across_, line);
}

void PaperLevel::rowLevels(std::size_t y, std::vector<float>& levels) const {
  const Between vertical = between(y, tile_, down_);
  const BYTE* const above = levels_.data() + vertical.first * across_;
  const BYTE* const below = levels_.data() + vertical.second * across_;
  levels.resize(width_);
  for (std::size_t x = 0; x < width_; ++x) {
    const Between across = between(x, tile_, across_);
    const float top = mix(above[across.first], above[across.second], across.share);
    const float bottom = mix(below[across.first], below[across.second], across.share);
    levels[x] = top + (bottom - top) * vertical.share;
  }
}

LocalMean::LocalMean(std::size_t width, std::size_t height, unsigned dpi, NextRow nextRow)
    : width_(width),
      height_(height),
      radius_(extent(dpi, kWindowsPerInch)),
      nextRow_(std::move(nextRow)),
      ring_(width * (2 * radius_ + 1)),
      columns_(width) {}

BYTE* LocalMean::slot(std::size_t y) {
  return ring_.data() + y % (2 * radius_ + 1) * width_;
}

const BYTE* LocalMean::advance() {
  const std::size_t y = current_++;
  // The row that leaves goes first: the one that enters takes its place in the ring.
  if (y > radius_) {
    const BYTE* const leaving = slot(y - radius_ - 1);
    for (std::size_t x = 0; x < width_; ++x)
      columns_[x] -= leaving[x];
  }
  for (; fetched_ < std::min(height_, y + radius_ + 1); ++fetched_) {
    BYTE* const entering = slot(fetched_);
    nextRow_(entering);
    for (std::size_t x = 0; x < width_; ++x)
      columns_[x] += entering[x];
  }
  return slot(y);
}

void LocalMean::rowMeans(std::vector<float>& means) const {
  const std::size_t y = current_ - 1;
  const std::size_t top = y > radius_ ? y - radius_ : 0;
  const std::size_t rows = std::min(height_, y + radius_ + 1) - top;
  means.resize(width_);
  std::uint64_t sum = 0;
  std::size_t columns = 0;
  for (std::size_t x = 0; x < std::min(radius_, width_); ++x, ++columns)
    sum += columns_[x];
  for (std::size_t x = 0; x < width_; ++x) {
    if (x + radius_ < width_) {
      sum += columns_[x + radius_];
      ++columns;
    }
    if (x > radius_) {
      sum -= columns_[x - radius_ - 1];
      --columns;
    }
    means[x] = static_cast<float>(sum) / static_cast<float>(rows * columns);
  }
}

void thresholdRow(const BYTE* grey, const std::vector<float>& means,
                  const std::vector<float>& paper, int brightness, std::vector<BYTE>& result) {
  const float shift = static_cast<float>(brightness) / kBrightnessRange;
  result.resize(means.size());
  for (std::size_t x = 0; x < means.size(); ++x) {
    const float plain = std::max(kLocalContrast * means[x], kSolidBlack * paper[x]);
    const float limit = shift >= 0 ? plain * (1 - shift) : plain - (kAboveWhite - plain) * shift;
    result[x] = static_cast<float>(grey[x]) < limit ? BYTE{0} : BYTE{255};
  }
}

}  // namespace tvrscn::imaging
