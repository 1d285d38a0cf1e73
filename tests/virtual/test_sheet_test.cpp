// What a machine can check of the test sheet: scale, edges, tint, patches and the number.
#include "virtual/common/test_sheet.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tvrscn::virtual_device {
namespace {

PageRequest a4At(int dotsPerInch) {
  PageRequest request;
  request.dotsPerInch = dotsPerInch;
  request.width = 9921 * dotsPerInch / 1200;
  request.height = 14031 * dotsPerInch / 1200;
  return request;
}

Raster rendered(const PageRequest& request) {
  Raster raster(request.width, request.height, 3);
  makeTestSheet(request)->render(0, raster);
  return raster;
}

std::vector<int> pixelOf(const Raster& raster, int x, int y) {
  const std::uint8_t* pixel = raster.line(y) + x * 3;
  return {pixel[0], pixel[1], pixel[2]};
}

bool isDark(const Raster& raster, int x, int y) {
  const std::vector<int> pixel = pixelOf(raster, x, y);
  return pixel[0] < 150 && pixel[1] < 150 && pixel[2] < 150;
}

TEST(TestSheet, RulersMarkEveryTenMillimetresOnTwoEdges) {
  for (const int dotsPerInch : {75, 100, 300}) {
    SCOPED_TRACE(dotsPerInch);
    const Raster sheet = rendered(a4At(dotsPerInch));
    const double perMillimetre = dotsPerInch / 25.4;
    // Between the ends of the 5 mm ticks and those of the 10 mm ticks.
    const int depth = static_cast<int>(3.9 * perMillimetre);
    int across = 0;
    for (int mark = 10; mark < 200; mark += 10) {
      const int at = static_cast<int>(mark * perMillimetre);
      across += isDark(sheet, at, depth) || isDark(sheet, at - 1, depth) ? 1 : 0;
      across += isDark(sheet, depth, at) || isDark(sheet, depth, at - 1) ? 1 : 0;
      const int between = static_cast<int>((mark + 5) * perMillimetre);
      EXPECT_FALSE(isDark(sheet, between, depth)) << mark;
      EXPECT_FALSE(isDark(sheet, depth, between)) << mark;
    }
    EXPECT_EQ(across, 2 * 19);
  }
}

TEST(TestSheet, TheFrameStandsOnTheOutermostPixels) {
  const PageRequest request = a4At(100);
  const Raster sheet = rendered(request);
  const int right = request.width - 1;
  const int bottom = request.height - 1;
  for (const int x : {100, 333, 555}) {
    EXPECT_TRUE(isDark(sheet, x, bottom));
    EXPECT_FALSE(isDark(sheet, x, bottom - 2));
  }
  for (const int y : {100, 333, 555}) {
    EXPECT_TRUE(isDark(sheet, right, y));
    EXPECT_FALSE(isDark(sheet, right - 2, y));
  }
  // The corners are red: much more red than green.
  for (const int x : {1, right - 1}) {
    for (const int y : {1, bottom - 1}) {
      const std::vector<int> pixel = pixelOf(sheet, x, y);
      EXPECT_GT(pixel[0], pixel[1] + 80) << x << "," << y;
    }
  }
}

TEST(TestSheet, PaperIsTintedUnlessTheBackgroundIsCleaned) {
  PageRequest request = a4At(75);
  Raster sheet = rendered(request);
  const int x = request.width / 2;
  const int y = request.height - 20;
  EXPECT_LT(pixelOf(sheet, x, y)[2], 245);
  EXPECT_GT(pixelOf(sheet, x, y)[2], 200);
  request.cleanBackground = true;
  sheet = rendered(request);
  EXPECT_EQ(pixelOf(sheet, x, y), (std::vector<int>{255, 255, 255}));
}

int countOf(const Raster& sheet, const std::vector<int>& color) {
  int count = 0;
  for (std::size_t i = 0; i + 2 < sheet.data.size(); i += 3) {
    if (sheet.data[i] == color[0] && sheet.data[i + 1] == color[1] &&
        sheet.data[i + 2] == color[2]) {
      ++count;
    }
  }
  return count;
}

TEST(TestSheet, AllPatchesAndGreysAreThere) {
  const Raster sheet = rendered(a4At(75));
  const std::vector<std::vector<int>> colors = {{255, 0, 0},   {0, 255, 0},   {0, 0, 255},
                                                {0, 255, 255}, {255, 0, 255}, {255, 255, 0}};
  for (const std::vector<int>& color : colors) {
    EXPECT_GT(countOf(sheet, color), 1000) << ::testing::PrintToString(color);
  }
  for (const int level : {0, 26, 51, 77, 102, 128, 153, 179, 204, 230, 255}) {
    EXPECT_GT(countOf(sheet, {level, level, level}), 1000) << level;
  }
}

TEST(TestSheet, OnlyTheLegendDiffersBetweenPages) {
  PageRequest request = a4At(75);
  const Raster first = rendered(request);
  request.page = request.sheet = 2;
  const Raster second = rendered(request);
  const auto startOfRamp = static_cast<std::ptrdiff_t>(second.lineBytes()) * request.height / 4;
  EXPECT_NE(first.data, second.data);
  EXPECT_TRUE(std::equal(first.data.begin() + startOfRamp, first.data.end(),
                         second.data.begin() + startOfRamp));
  request.backSide = true;
  const Raster back = rendered(request);
  EXPECT_NE(back.data, second.data);
  request.gray = true;
  EXPECT_NE(rendered(request).data, back.data);
}

TEST(TestSheet, WindowsOfAnySizeGetASheet) {
  for (const int width : {1, 2, 10, 75, 700}) {
    for (const int height : {2, 3, 50, 900}) {
      SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
      PageRequest request;
      request.dotsPerInch = 75;
      request.width = width;
      request.height = height;
      request.page = 1234567;
      const Raster sheet = rendered(request);
      EXPECT_NE(pixelOf(sheet, 0, 0), (std::vector<int>{250, 245, 230})) << "the corner is marked";
    }
  }
}

}  // namespace
}  // namespace tvrscn::virtual_device
