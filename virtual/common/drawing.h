// A picture as a list of shapes, drawn into any band of lines of it. Shapes are anti-aliased by the
// share of each pixel that they cover, and come out the same however the page is cut into bands.
// All coordinates are in pixels of the page, from its top left corner.
#ifndef TVRSCN_VIRTUAL_COMMON_DRAWING_H
#define TVRSCN_VIRTUAL_COMMON_DRAWING_H

#include <cstdint>
#include <vector>

#include "virtual/common/raster.h"

namespace tvrscn::virtual_device {

struct Point {
  double x = 0;
  double y = 0;
};

// Points joined by straight lines; one point is a dot.
using Polyline = std::vector<Point>;

class Drawing {
 public:
  explicit Drawing(Rgb background) : background_(background) {}

  void addRectangle(Point corner, Point opposite, Rgb color);
  // Runs evenly from the one colour at the left to the other at the right.
  void addGradient(Point corner, Point opposite, Rgb left, Rgb right);
  // Lines with round ends and joints, drawn as one shape: where they cross they do not add up.
  void addStroke(std::vector<Polyline> lines, double width, Rgb color);

  // Fills the band, three channels, with the lines of the page from firstLine on.
  void render(int firstLine, Raster& band) const;

 private:
  struct Rectangle {
    double left, top, right, bottom;
    Rgb from, to;
  };
  struct Segment {
    Point from, to;
  };
  struct Stroke {
    double left, top, right, bottom;
    double radius;
    Rgb color;
    std::vector<Segment> segments;
  };

  static void renderRectangle(const Rectangle& shape, int firstLine, Raster& band);
  static void renderStroke(const Stroke& shape, int firstLine, Raster& band);

  Rgb background_;
  std::vector<Rectangle> rectangles_;
  std::vector<Stroke> strokes_;  // above all rectangles
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_DRAWING_H
