// Image files of every kind, their scaling, and the errors for files that are none.
#include "virtual/common/page_source.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/support/images.h"
#include "virtual/common/codec.h"
#include "virtual/common/image_scaler.h"

namespace tvrscn::virtual_device {
namespace {

using ::testing::AllOf;
using testing::contentOf;
using testing::filled;
using ::testing::HasSubstr;
using testing::Picture;
using testing::TestFolder;

// Left half and right half in two colours.
Picture halves(int width, int height, const std::vector<std::uint8_t>& left,
               const std::vector<std::uint8_t>& right) {
  Picture picture = filled(width, height, left);
  fillBox(picture, width / 2, 0, width, height, right);
  return picture;
}

std::vector<int> pixelOf(const Raster& raster, int x, int y) {
  const std::uint8_t* pixel = raster.line(y) + x * raster.channels;
  return {pixel[0], pixel[1], pixel[2]};
}

void expectNear(const std::vector<int>& pixel, const std::vector<int>& expected, int tolerance) {
  ASSERT_EQ(pixel.size(), expected.size());
  for (std::size_t i = 0; i < pixel.size(); ++i)
    EXPECT_NEAR(pixel[i], expected[i], tolerance);
}

void expectHalves(const std::filesystem::path& file, const std::vector<int>& left,
                  const std::vector<int>& right, int tolerance = 0) {
  SCOPED_TRACE(file.string());
  const Raster raster = decodeImageFile(file);
  EXPECT_EQ(raster.width, 32);
  EXPECT_EQ(raster.height, 16);
  EXPECT_EQ(raster.channels, 3);
  expectNear(pixelOf(raster, 3, 3), left, tolerance);
  expectNear(pixelOf(raster, 28, 12), right, tolerance);
}

TEST(ImageFiles, EveryKindComesOutInThreeChannels) {
  const TestFolder folder;
  const Picture color = halves(32, 16, {200, 40, 10}, {0, 90, 250});
  const Picture gray = halves(32, 16, {70}, {210});
  testing::writePngFile(folder / "color.png", color);
  testing::writePngFile(folder / "gray.png", gray);
  testing::writeTiffFile(folder / "color.tif", color);
  testing::writeTiffFile(folder / "gray.tif", gray);
  testing::writeJpegFile(folder / "color.jpg", color);
  testing::writeJpegFile(folder / "gray.jpg", gray);
  expectHalves(folder / "color.png", {200, 40, 10}, {0, 90, 250});
  expectHalves(folder / "gray.png", {70, 70, 70}, {210, 210, 210});
  expectHalves(folder / "color.tif", {200, 40, 10}, {0, 90, 250});
  expectHalves(folder / "gray.tif", {70, 70, 70}, {210, 210, 210});
  expectHalves(folder / "color.jpg", {200, 40, 10}, {0, 90, 250}, 6);
  expectHalves(folder / "gray.jpg", {70, 70, 70}, {210, 210, 210}, 3);
}

TEST(ImageFiles, SeeThroughPixelsLieOverWhite) {
  const TestFolder folder;
  const Picture picture = halves(32, 16, {200, 0, 0, 0}, {0, 80, 0, 255});
  testing::writePngFile(folder / "clear.png", picture);
  testing::writeTiffFile(folder / "clear.tif", picture);
  expectHalves(folder / "clear.png", {255, 255, 255}, {0, 80, 0});
  expectHalves(folder / "clear.tif", {255, 255, 255}, {0, 80, 0});
}

TEST(ImageFiles, TheKindIsToldFromTheContentNotTheName) {
  const TestFolder folder;
  testing::writePngFile(folder / "page.jpg", halves(32, 16, {1, 2, 3}, {4, 5, 6}));
  expectHalves(folder / "page.jpg", {1, 2, 3}, {4, 5, 6});
}

std::string errorOf(const std::filesystem::path& file) {
  try {
    decodeImageFile(file);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "no error";
}

void writeFile(const std::filesystem::path& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}

TEST(ImageFiles, UnreadableFilesAreNamedWithTheRemedy) {
  const TestFolder folder;
  writeFile(folder / "empty.png", "");
  writeFile(folder / "note.txt", "just some text");
  writeFile(folder / "bare.jpg", "\xFF\xD8\xFF");
  writeFile(folder / "bare.png", "\x89PNG\r\n\x1A\n");
  writeFile(folder / "bare.tif", std::string("II*\0", 4));
  for (const char* name :
       {"missing.png", "empty.png", "note.txt", "bare.jpg", "bare.png", "bare.tif"}) {
    SCOPED_TRACE(name);
    EXPECT_THAT(errorOf(folder / name), AllOf(HasSubstr((folder / name).string()),
                                              HasSubstr("name a readable JPEG, PNG or TIFF file")));
  }
}

// The last bytes of a PNG are sums and an end mark; the picture is whole without them.
constexpr std::size_t kTail = 24;

TEST(ImageFiles, FilesCutShortAnywhereAreRefused) {
  const TestFolder folder;
  const Picture picture = halves(32, 16, {200, 40, 10}, {0, 90, 250});
  testing::writePngFile(folder / "whole.png", picture);
  testing::writeTiffFile(folder / "whole.tif", picture);
  testing::writeJpegFile(folder / "whole.jpg", picture);
  for (const char* name : {"whole.png", "whole.tif", "whole.jpg"}) {
    const std::string whole = contentOf(folder / name);
    for (std::size_t size = 0; size + kTail < whole.size(); size += 3) {
      SCOPED_TRACE(std::string(name) + " cut to " + std::to_string(size));
      writeFile(folder / "cut", whole.substr(0, size));
      EXPECT_THAT(errorOf(folder / "cut"), HasSubstr("name a readable"));
    }
  }
}

TEST(ImageFiles, PrintingColorsAreRefusedWithAReason) {
  const TestFolder folder;
  testing::writeJpegFile(folder / "cmyk.jpg", filled(16, 16, {10, 20, 30, 40}));
  EXPECT_THAT(errorOf(folder / "cmyk.jpg"), HasSubstr("save it in RGB"));
}

Raster rasterOf(const Picture& picture) {
  Raster raster(picture.width, picture.height, 3);
  raster.data = picture.data;
  return raster;
}

Raster scaled(const Raster& image, int width, int height) {
  Raster result(width, height, 3);
  ImageScaler(image, width, height).render(0, result);
  return result;
}

TEST(ImageScaler, TheSameSizeChangesNothing) {
  const Raster image = rasterOf(halves(7, 5, {200, 40, 10}, {0, 90, 250}));
  EXPECT_EQ(scaled(image, 7, 5).data, image.data);
}

TEST(ImageScaler, ShrinkingAveragesTheAreaOfAPixel) {
  Picture picture = filled(4, 2, {0, 0, 0});
  fillBox(picture, 1, 0, 2, 2, {200, 100, 40});  // half of the left output pixel
  fillBox(picture, 2, 0, 4, 1, {80, 80, 80});    // half of the right one
  const Raster small = scaled(rasterOf(picture), 2, 1);
  EXPECT_EQ(pixelOf(small, 0, 0), (std::vector<int>{100, 50, 20}));
  EXPECT_EQ(pixelOf(small, 1, 0), (std::vector<int>{40, 40, 40}));
}

TEST(ImageScaler, EnlargingBlendsBetweenPixels) {
  Picture picture = filled(2, 1, {0, 0, 0});
  fillBox(picture, 1, 0, 2, 1, {200, 200, 200});
  const Raster large = scaled(rasterOf(picture), 4, 3);
  for (int y = 0; y < 3; ++y) {
    const int expected[] = {0, 50, 150, 200};
    for (int x = 0; x < 4; ++x)
      EXPECT_EQ(pixelOf(large, x, y)[0], expected[x]) << x << "," << y;
  }
}

TEST(ImageScaler, BandsFitTogether) {
  Picture picture = filled(13, 11, {0, 0, 0});
  for (std::size_t i = 0; i < picture.data.size(); ++i) {
    picture.data[i] = static_cast<std::uint8_t>((i * 37) % 251);
  }
  const Raster image = rasterOf(picture);
  const ImageScaler scaler(image, 9, 23);
  Raster whole(9, 23, 3);
  scaler.render(0, whole);
  for (int y = 0; y < 23; ++y) {
    Raster line(9, 1, 3);
    scaler.render(y, line);
    EXPECT_TRUE(std::equal(line.data.begin(), line.data.end(), whole.line(y))) << y;
  }
}

TEST(PageSource, CleaningLiftsPaperToWhiteAndLeavesColors) {
  const TestFolder folder;
  testing::writePngFile(folder / "tinted.png", halves(32, 16, {245, 240, 232}, {220, 60, 60}));
  const std::unique_ptr<PageSource> source = makePageSource({folder / "tinted.png"});
  PageRequest request;
  request.width = 32;
  request.height = 16;
  Raster band(32, 16, 3);
  source->page(request)->render(0, band);
  EXPECT_EQ(pixelOf(band, 3, 3), (std::vector<int>{245, 240, 232}));
  request.cleanBackground = true;
  source->page(request)->render(0, band);
  EXPECT_EQ(pixelOf(band, 3, 3), (std::vector<int>{255, 255, 255}));
  EXPECT_EQ(pixelOf(band, 28, 3), (std::vector<int>{220, 60, 60}));
}

TEST(PageSource, UpsideDownIsAHalfTurnInAnyBands) {
  const TestFolder folder;
  Picture picture = filled(3, 4, {0, 0, 0});
  for (std::size_t i = 0; i < picture.data.size(); ++i) {
    picture.data[i] = static_cast<std::uint8_t>(i);
  }
  testing::writePngFile(folder / "page.png", picture);
  const std::unique_ptr<PageSource> source = makePageSource({folder / "page.png"});
  PageRequest request;
  request.width = 3;
  request.height = 4;
  request.upsideDown = true;
  const std::unique_ptr<Page> page = source->page(request);
  for (int y = 0; y < 4; ++y) {
    Raster line(3, 1, 3);
    page->render(y, line);
    for (int x = 0; x < 3; ++x)
      EXPECT_EQ(pixelOf(line, x, 0), picture.at(2 - x, 3 - y));
  }
}

TEST(Codec, AStripThatNoEncoderTakesIsAnError) {
  EXPECT_THROW(encodeJpeg(Raster(0, 4, 3), 90, 300), std::runtime_error);
}

}  // namespace
}  // namespace tvrscn::virtual_device
