// Shapes on their pixels.
#include "virtual/common/drawing.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "virtual/common/stroke_font.h"

namespace tvrscn::virtual_device {
namespace {

constexpr Rgb kWhite{255, 255, 255};
constexpr Rgb kBlack{0, 0, 0};

Raster rendered(const Drawing& drawing, int width, int height, int firstLine = 0) {
  Raster raster(width, height, 3);
  drawing.render(firstLine, raster);
  return raster;
}

int redAt(const Raster& raster, int x, int y) {
  return raster.line(y)[x * 3];
}

TEST(Drawing, ARectangleCoversItsPixelsByTheirShare) {
  Drawing drawing(kWhite);
  drawing.addRectangle({1, 1}, {3.5, 2}, kBlack);
  const Raster raster = rendered(drawing, 5, 3);
  const int expected[] = {255, 0, 0, 127, 255};
  for (int x = 0; x < 5; ++x) {
    EXPECT_EQ(redAt(raster, x, 0), 255);
    EXPECT_NEAR(redAt(raster, x, 1), expected[x], 1) << x;
    EXPECT_EQ(redAt(raster, x, 2), 255);
  }
}

TEST(Drawing, ShapesBeyondThePageAreCut) {
  Drawing drawing(kWhite);
  drawing.addRectangle({-1e7, -1e7}, {1e7, 1}, kBlack);
  drawing.addStroke({{{-1e7, 3.5}, {1e7, 3.5}}}, 1, kBlack);
  drawing.addStroke({{{50, 50}}}, 4, kBlack);
  const Raster raster = rendered(drawing, 4, 6);
  EXPECT_EQ(redAt(raster, 0, 0), 0);
  EXPECT_EQ(redAt(raster, 3, 1), 255);
  EXPECT_LT(redAt(raster, 2, 3), 10);
  EXPECT_EQ(redAt(raster, 2, 5), 255);
}

TEST(Drawing, AGradientRunsFromLeftToRight) {
  Drawing drawing(kWhite);
  drawing.addGradient({0, 0}, {256, 1}, kBlack, kWhite);
  const Raster raster = rendered(drawing, 256, 1);
  for (int x = 0; x < 256; ++x)
    EXPECT_NEAR(redAt(raster, x, 0), x, 1);
}

TEST(Drawing, AStrokeThatCrossesItselfIsNotDarkerThere) {
  Drawing once(kWhite);
  once.addStroke({{{2, 2.3}, {18, 2.3}}}, 1, kBlack);
  Drawing twice(kWhite);
  twice.addStroke({{{2, 2.3}, {18, 2.3}}, {{18, 2.3}, {2, 2.3}}}, 1, kBlack);
  EXPECT_EQ(rendered(once, 20, 5).data, rendered(twice, 20, 5).data);
}

TEST(Drawing, BandsFitTogether) {
  Drawing drawing({250, 240, 230});
  drawing.addRectangle({1.3, 2.7}, {30.2, 11.1}, {200, 10, 10});
  drawing.addStroke({{{3, 3}, {29, 27}, {3, 27}}}, 2.6, kBlack);
  const Raster whole = rendered(drawing, 32, 30);
  for (int y = 0; y < 30; ++y) {
    const Raster line = rendered(drawing, 32, 1, y);
    EXPECT_TRUE(std::equal(line.data.begin(), line.data.end(), whole.line(y))) << y;
  }
}

TEST(StrokeFont, EveryPrintableLetterHasAGlyphOfItsOwn) {
  const double boxWidth = textWidth("\x7F", 7);
  const std::vector<std::vector<Polyline>> box = textStrokes("\x7F", {0, 0}, 7);
  ASSERT_EQ(box.size(), 1U);
  const std::string_view characters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.,:;!?-+=/()%'\"";
  for (const char character : characters) {
    SCOPED_TRACE(character);
    const std::vector<std::vector<Polyline>> glyph =
        textStrokes(std::string_view(&character, 1), {0, 0}, 7);
    ASSERT_EQ(glyph.size(), 1U);
    const bool isBox = glyph[0].size() == 1 && glyph[0][0].size() == box[0][0].size() &&
                       textWidth(std::string_view(&character, 1), 7) == boxWidth;
    EXPECT_FALSE(isBox);
    for (const Polyline& line : glyph[0]) {
      for (const Point& point : line) {
        EXPECT_GE(point.x, -0.5);
        EXPECT_LE(point.x, 8);
        EXPECT_GE(point.y, -7.5) << "no higher than a capital";
        EXPECT_LE(point.y, 2.7) << "no deeper than a tail";
      }
    }
  }
}

TEST(StrokeFont, BytesBeyondAsciiAreBoxes) {
  EXPECT_EQ(textStrokes("\xC3\xA4", {0, 0}, 7).size(), 2U);
  EXPECT_EQ(textWidth("\xC3", 7), textWidth("\x01", 7));
}

}  // namespace
}  // namespace tvrscn::virtual_device
