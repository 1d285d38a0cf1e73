// A rectangle's coverage is exact, a stroke's that of its distance to the pixel's centre. Strokes
// go through a mask of their own, so that overlapping lines of one stroke do not darken each
// other's rims.
#include "virtual/common/drawing.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace tvrscn::virtual_device {
namespace {

// Pixels from `first` to before `end`.
struct Range {
  int first = 0;
  int end = 0;
};

Range pixelsWithin(double low, double high, int from, int end) {
  const double first =
      std::clamp(std::floor(low), static_cast<double>(from), static_cast<double>(end));
  const double last =
      std::clamp(std::ceil(high), static_cast<double>(from), static_cast<double>(end));
  return {static_cast<int>(first), static_cast<int>(last)};
}

// How much of the pixel lies between low and high.
double covered(int pixel, double low, double high) {
  return std::clamp(std::min(high, pixel + 1.0) - std::max(low, static_cast<double>(pixel)), 0.0,
                    1.0);
}

std::uint8_t mix(std::uint8_t under, std::uint8_t over, int share) {
  return static_cast<std::uint8_t>((under * (255 - share) + over * share + 127) / 255);
}

void blend(std::uint8_t* pixel, Rgb color, int share) {
  pixel[0] = mix(pixel[0], color.red, share);
  pixel[1] = mix(pixel[1], color.green, share);
  pixel[2] = mix(pixel[2], color.blue, share);
}

std::uint8_t between(std::uint8_t from, std::uint8_t to, double position) {
  return static_cast<std::uint8_t>(std::lround(from + (to - from) * position));
}

double distance(double x, double y, Point from, Point to) {
  const double alongX = to.x - from.x;
  const double alongY = to.y - from.y;
  const double length2 = alongX * alongX + alongY * alongY;
  double position = 0;
  if (length2 > 0) {
    position = std::clamp(((x - from.x) * alongX + (y - from.y) * alongY) / length2, 0.0, 1.0);
  }
  return std::hypot(x - (from.x + alongX * position), y - (from.y + alongY * position));
}

}  // namespace

void Drawing::addRectangle(Point corner, Point opposite, Rgb color) {
  addGradient(corner, opposite, color, color);
}

void Drawing::addGradient(Point corner, Point opposite, Rgb left, Rgb right) {
  rectangles_.push_back({corner.x, corner.y, opposite.x, opposite.y, left, right});
}

void Drawing::addStroke(std::vector<Polyline> lines, double width, Rgb color) {
  Stroke stroke{1e9, 1e9, -1e9, -1e9, width / 2, color, {}};
  const double reach = width / 2 + 1;
  for (const Polyline& line : lines) {
    for (std::size_t i = 0; i < line.size(); ++i) {
      stroke.left = std::min(stroke.left, line[i].x - reach);
      stroke.right = std::max(stroke.right, line[i].x + reach);
      stroke.top = std::min(stroke.top, line[i].y - reach);
      stroke.bottom = std::max(stroke.bottom, line[i].y + reach);
      if (i > 0) stroke.segments.push_back({line[i - 1], line[i]});
    }
    if (line.size() == 1) stroke.segments.push_back({line[0], line[0]});
  }
  strokes_.push_back(std::move(stroke));
}

void Drawing::render(int firstLine, Raster& band) const {
  for (std::size_t i = 0; i + 2 < band.data.size(); i += 3) {
    band.data[i] = background_.red;
    band.data[i + 1] = background_.green;
    band.data[i + 2] = background_.blue;
  }
  for (const Rectangle& shape : rectangles_)
    renderRectangle(shape, firstLine, band);
  for (const Stroke& shape : strokes_)
    renderStroke(shape, firstLine, band);
}

void Drawing::renderRectangle(const Rectangle& shape, int firstLine, Raster& band) {
  const Range lines = pixelsWithin(shape.top, shape.bottom, firstLine, firstLine + band.height);
  if (lines.first >= lines.end) return;
  const Range columns = pixelsWithin(shape.left, shape.right, 0, band.width);
  for (int x = columns.first; x < columns.end; ++x) {
    const double position =
        std::clamp((x + 0.5 - shape.left) / (shape.right - shape.left), 0.0, 1.0);
    const Rgb color{between(shape.from.red, shape.to.red, position),
                    between(shape.from.green, shape.to.green, position),
                    between(shape.from.blue, shape.to.blue, position)};
    const double across = covered(x, shape.left, shape.right) * 255;
    for (int y = lines.first; y < lines.end; ++y) {
      const int share = static_cast<int>(std::lround(across * covered(y, shape.top, shape.bottom)));
      blend(band.line(y - firstLine) + static_cast<std::size_t>(x) * 3, color, share);
    }
  }
}

void Drawing::renderStroke(const Stroke& shape, int firstLine, Raster& band) {
  const Range lines = pixelsWithin(shape.top, shape.bottom, firstLine, firstLine + band.height);
  const Range columns = pixelsWithin(shape.left, shape.right, 0, band.width);
  if (lines.first >= lines.end || columns.first >= columns.end) return;
  // Hairlines thinner than a pixel keep a pixel's width and lose strength instead.
  const double radius = std::max(shape.radius, 0.5);
  const double strength = std::min(shape.radius / radius, 1.0) * 255;
  const double reach = radius + 1;
  Raster mask(columns.end - columns.first, lines.end - lines.first, 1);
  for (const Segment& segment : shape.segments) {
    const Range ys =
        pixelsWithin(std::min(segment.from.y, segment.to.y) - reach,
                     std::max(segment.from.y, segment.to.y) + reach, lines.first, lines.end);
    const Range xs =
        pixelsWithin(std::min(segment.from.x, segment.to.x) - reach,
                     std::max(segment.from.x, segment.to.x) + reach, columns.first, columns.end);
    for (int y = ys.first; y < ys.end; ++y) {
      std::uint8_t* line = mask.line(y - lines.first);
      for (int x = xs.first; x < xs.end; ++x) {
        const double away = distance(x + 0.5, y + 0.5, segment.from, segment.to);
        const double share = std::clamp(radius - away + 0.5, 0.0, 1.0) * strength;
        std::uint8_t& most = line[x - columns.first];
        most = std::max(most, static_cast<std::uint8_t>(std::lround(share)));
      }
    }
  }
  for (int y = 0; y < mask.height; ++y) {
    std::uint8_t* out =
        band.line(lines.first - firstLine + y) + static_cast<std::size_t>(columns.first) * 3;
    const std::uint8_t* shares = mask.line(y);
    for (int x = 0; x < mask.width; ++x)
      blend(out + static_cast<std::size_t>(x) * 3, shape.color, shares[x]);
  }
}

}  // namespace tvrscn::virtual_device
