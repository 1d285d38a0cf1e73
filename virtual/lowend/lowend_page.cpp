#include "virtual/lowend/lowend_page.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace tvrscn::virtual_device {
namespace {

constexpr double kMidLevel = 127.5;
constexpr double kMostLevel = 255;

// -1 at the start of the range, 0 at its default, 1 at its end.
double shareOf(int value, const LowEndRange& range) {
  const int from = range.userDefault;
  const int to = value < from ? range.start : range.end;
  if (value == from || to == from) return 0;
  const double share = (double{1} * value - from) / (double{1} * to - from);
  return value < from ? -share : share;
}

}  // namespace

LevelTable levelTable(const LowEndRequest& request, const LowEndRange& darkness,
                      const LowEndRange& contrast) {
  const double shift = -kMidLevel * shareOf(request.darkness, darkness);
  const double slope = 1 + shareOf(request.contrast, contrast);
  LevelTable table{};
  for (std::size_t level = 0; level < table.size(); ++level) {
    const double value = kMidLevel + (static_cast<double>(level) - kMidLevel) * slope + shift;
    table[level] = static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, kMostLevel)));
  }
  return table;
}

PageRequest pageRequestFor(const LowEndRequest& request, int page) {
  const bool twoSides = request.fromFeeder && request.sides != LowEndSides::kOne;
  PageRequest wanted;
  wanted.page = page;
  wanted.sheet = twoSides ? (page + 1) / 2 : page;
  wanted.backSide = twoSides && page % 2 == 0;
  wanted.upsideDown = wanted.backSide && request.sides == LowEndSides::kTwoTurned;
  wanted.fromFeeder = request.fromFeeder;
  wanted.width = request.width;
  wanted.height = request.height;
  wanted.dotsPerInch = request.dotsPerInch;
  wanted.gray = request.mode != LowEndMode::kColor;
  return wanted;
}

PictureShape pictureShapeFor(const LowEndRequest& request) {
  PictureShape shape;
  shape.width = request.width;
  shape.height = request.height;
  shape.channels = request.mode == LowEndMode::kColor ? 3 : 1;
  shape.dotsPerInch = request.dotsPerInch;
  return shape;
}

LineSource linesOf(const Page& page, const LevelTable& levels) {
  return [&page, &levels](int firstLine, Raster& band) {
    Raster color(band.width, band.height, 3);
    page.render(firstLine, color);
    for (std::uint8_t& level : color.data)
      level = levels[level];
    band = band.channels == 1 ? toGray(color) : std::move(color);
  };
}

}  // namespace tvrscn::virtual_device
