// The virtual scanners' codec on this system's imaging component.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"
#include "virtual/common/codec.h"
#include "virtual/common/tiff_writer.h"

namespace tvrscn::virtual_device {
namespace {

using std::string_view_literals::operator""sv;

// Made with another program: 2 x 1 pixels, half see-through red and opaque blue.
constexpr std::string_view kSeeThroughPng =
    "\x89PNG\r\n\x1A\n"
    "\0\0\0\x0D"
    "IHDR\0\0\0\x02\0\0\0\x01\x08\x06\0\0\0\xF4\x22\x7F\x8A"
    "\x00\x00\x00\x14"
    "IDAT\x78\x01\x01\x09\x00\xF6\xFF\x00\xFF\x00\x00\x80\x00\x00\xFF\xFF\x0D\x7E\x03\x7E"
    "\xB3\xF6\x6B\x41"
    "\0\0\0\0"
    "IEND"
    "\xAE\x42\x60\x82"sv;

class Codec : public testing::Test {
 protected:
  std::filesystem::path write(const std::string& name, std::string_view content) const {
    const std::filesystem::path file = folder_.path() / name;
    test::writeFile(file, content);
    return file;
  }
  std::filesystem::path write(const std::string& name, const Bytes& bytes) const {
    return write(name, std::string(bytes.begin(), bytes.end()));
  }

  test::TemporaryFolder folder_;
};

Raster filled(int width, int height, const std::vector<std::uint8_t>& colour) {
  Raster raster(width, height, static_cast<int>(colour.size()));
  for (std::size_t i = 0; i < raster.data.size(); ++i)
    raster.data[i] = colour[i % colour.size()];
  return raster;
}

TEST_F(Codec, GreyStripHasOneComponentAndItsResolution) {
  const Bytes jpeg = encodeJpeg(filled(40, 30, {100}), 90, 150);
  const std::string text(jpeg.begin(), jpeg.end());
  // Frame header: length 11 is that of one component; precision 8, 30 lines, 40 columns.
  EXPECT_NE(text.find("\xFF\xC0\x00\x0B\x08\x00\x1E\x00\x28\x01"sv), std::string::npos);
  // JFIF: unit 1, dots per inch, 150 both ways.
  EXPECT_NE(text.find("JFIF\0\x01\x01\x01\x00\x96\x00\x96"sv), std::string::npos);
}

TEST_F(Codec, ColourStripHasThreeComponents) {
  const Bytes jpeg = encodeJpeg(filled(40, 30, {200, 100, 50}), 90, 75);
  const std::string text(jpeg.begin(), jpeg.end());
  EXPECT_NE(text.find("\xFF\xC0\x00\x11\x08\x00\x1E\x00\x28\x03"sv), std::string::npos);
  EXPECT_NE(text.find("JFIF\0\x01\x01\x01\x00\x4B\x00\x4B"sv), std::string::npos);
}

TEST_F(Codec, ColoursSurviveTheWayThereAndBack) {
  const Raster colour =
      decodeImageFile(write("c.jpg", encodeJpeg(filled(40, 30, {200, 100, 50}), 95, 75)));
  ASSERT_EQ(colour.width, 40);
  ASSERT_EQ(colour.height, 30);
  ASSERT_EQ(colour.channels, 3);
  EXPECT_NEAR(colour.line(15)[60], 200, 3);
  EXPECT_NEAR(colour.line(15)[61], 100, 3);
  EXPECT_NEAR(colour.line(15)[62], 50, 3);
  const Raster grey = decodeImageFile(write("g.jpg", encodeJpeg(filled(40, 30, {77}), 95, 75)));
  ASSERT_EQ(grey.channels, 3);
  for (int channel = 0; channel < 3; ++channel)
    EXPECT_NEAR(grey.line(15)[60 + channel], 77, 2);
}

TEST_F(Codec, APageEncodedBandByBandIsTheWholePage) {
  // Twice the band's lines and some; each line has its own level.
  constexpr int kHeight = 2 * kBandLines + 10;
  const PictureShape shape = {40, kHeight, 1, 200};
  int calls = 0;
  const Bytes jpeg = encodeJpeg(
      shape,
      [&](int firstLine, Raster& band) {
        ++calls;
        for (int y = 0; y < band.height; ++y)
          std::fill_n(band.line(y), band.width, static_cast<std::uint8_t>(firstLine + y));
      },
      95);
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(std::string(jpeg.begin(), jpeg.begin() + 4), "\xFF\xD8\xFF\xE0");
  const std::string text(jpeg.begin(), jpeg.end());
  EXPECT_NE(text.find("JFIF\0\x01\x01\x01\x00\xC8\x00\xC8"sv), std::string::npos);
  const Raster page = decodeImageFile(write("page.jpg", jpeg));
  ASSERT_EQ(page.width, 40);
  ASSERT_EQ(page.height, kHeight);
  for (const int line : {5, kBandLines - 1, kBandLines, kHeight - 3})
    EXPECT_NEAR(page.line(line)[60], line, 3);
}

TEST_F(Codec, BlackAndWhiteFilesOfTheScannersAreReadable) {
  for (const TiffCompression compression : {TiffCompression::kNone, TiffCompression::kGroup4}) {
    TiffWriter writer(1, compression);
    const Bytes file = writer.nextPage({70, 50, 1, 200}, [](int firstLine, Raster& band) {
      // Black below the diagonal.
      for (int y = 0; y < band.height; ++y) {
        for (int x = 0; x < band.width; ++x)
          band.line(y)[x] = x < firstLine + y ? 0 : 255;
      }
    });
    const Raster picture = decodeImageFile(write("page.tif", file));
    ASSERT_EQ(picture.width, 70);
    ASSERT_EQ(picture.height, 50);
    for (int y = 0; y < 50; ++y) {
      for (int x = 0; x < 70; ++x)
        ASSERT_EQ(picture.line(y)[3 * x], x < y ? 0 : 255) << x << ", " << y;
    }
  }
}

TEST_F(Codec, SeeThroughPartsLieOverWhite) {
  const Raster picture = decodeImageFile(write("p.png", kSeeThroughPng));
  ASSERT_EQ(picture.width, 2);
  ASSERT_EQ(picture.height, 1);
  const std::vector<int> levels(picture.data.begin(), picture.data.end());
  EXPECT_EQ(levels, (std::vector<int>{255, 127, 127, 0, 0, 255}));
}

TEST_F(Codec, WhatIsNoImageIsRefusedByName) {
  const std::pair<const char*, std::string> files[] = {
      {"empty.jpg", ""}, {"text.jpg", "not an image at all"}, {"broken.png", "\x89PNG\r\n\x1A\n"}};
  for (const auto& [name, content] : files) {
    const std::filesystem::path file = write(name, content);
    try {
      decodeImageFile(file);
      ADD_FAILURE() << name << " was read";
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(name), std::string::npos) << error.what();
      EXPECT_NE(std::string(error.what()).find("JPEG, PNG or TIFF"), std::string::npos);
    }
  }
  EXPECT_THROW(decodeImageFile(folder_.path() / "gone.png"), std::runtime_error);
}

}  // namespace
}  // namespace tvrscn::virtual_device
