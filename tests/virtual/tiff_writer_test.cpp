// Fax code bit by bit, the file byte by byte, and everything once more through libtiff.
#include "virtual/common/tiff_writer.h"

#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/virtual/support/images.h"
#include "virtual/common/fax_encoder.h"

namespace tvrscn::virtual_device {
namespace {

using testing::BilevelPage;
using testing::readTiffBytes;

// Lines of '#' and '.', each encoded below the one before.
Bytes faxOf(const std::vector<std::string>& lines) {
  FaxEncoder encoder(static_cast<int>(lines.front().size()));
  for (const std::string& line : lines) {
    Bytes black;
    for (const char pixel : line)
      black.push_back(pixel == '#' ? 1 : 0);
    encoder.addLine(black.data());
  }
  return encoder.finish();
}

// In each, the end mark 000000000001 000000000001 follows the code in front of it.
TEST(FaxEncoder, AWhiteLineIsOneBit) {
  // 1 0000000 | 00001000 | 00000000 | 1
  EXPECT_EQ(faxOf({"........"}), (Bytes{0x80, 0x08, 0x00, 0x80}));
}

TEST(FaxEncoder, EdgesFarFromThoseAboveAreTwoRuns) {
  // 001: two runs, 1000: three white, 11: two black, 1: the end as above.
  EXPECT_EQ(faxOf({"...##..."}), (Bytes{0x31, 0xC0, 0x04, 0x00, 0x40}));
}

TEST(FaxEncoder, APairOfEdgesThatIsGoneIsPassedOver) {
  // As before, then 0001: both edges above lie left of the next one, 1: the end as above.
  // 00110001 11000110 00000000 00100000 0000001
  EXPECT_EQ(faxOf({"...##...", "........"}), (Bytes{0x31, 0xC6, 0x00, 0x20, 0x02}));
}

TEST(FaxEncoder, EdgesNearThoseAboveAreVerticalCodes) {
  const Bytes first = faxOf({"....####...."});
  // 001 1011 011 1: four white, four black, the end. Then both edges two to the left, 000010 twice,
  // and the end: 00110110 11100001 00000101 | 000000000001000000000001
  EXPECT_EQ(faxOf({"....####....", "..####......"}), (Bytes{0x36, 0xE1, 0x05, 0x00, 0x10, 0x01}));
  EXPECT_EQ(first[0], 0x36);
}

TEST(FaxEncoder, ALineMayBeginBlack) {
  // 001: two runs, 00110101: no white, 0011: five black, up to the end of the line.
  // 00100110 10100110 00000000 00100000 0000001
  EXPECT_EQ(faxOf({"#####"}), (Bytes{0x26, 0xA6, 0x00, 0x20, 0x02}));
  // Its edge is near enough to the end of the line above: 0000010, and 1 for the end.
  EXPECT_EQ(faxOf({"###"}), (Bytes{0x05, 0x00, 0x10, 0x01}));
}

PictureShape shapeOf(int width, int height, int dotsPerInch) {
  PictureShape shape;
  shape.width = width;
  shape.height = height;
  shape.channels = 1;
  shape.dotsPerInch = dotsPerInch;
  return shape;
}

// Lines of a picture with one byte a pixel, 1 where it is black.
LineSource linesOf(const Bytes& black, int width) {
  return [&black, width](int firstLine, Raster& band) {
    const std::size_t start = static_cast<std::size_t>(firstLine) * static_cast<std::size_t>(width);
    for (std::size_t i = 0; i < band.data.size(); ++i)
      band.data[i] = black.at(start + i) != 0 ? 127 : 128;
  };
}

TEST(TiffWriter, AFileOfOnePixelLineInBytes) {
  TiffWriter writer(1, TiffCompression::kNone);
  const Bytes line = {0, 0, 0, 1, 1, 0, 0, 0};
  const Bytes expected = {
      'I',  'I',  0x2A, 0x00, 0x08, 0x00, 0x00, 0x00,                          // directory at 8
      0x0E, 0x00,                                                              // 14 entries
      0xFE, 0x00, 0x04, 0x00, 0x01, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00,  // page of several
      0x00, 0x01, 0x04, 0x00, 0x01, 0x00, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00,  // width 8
      0x01, 0x01, 0x04, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,  // height 1
      0x02, 0x01, 0x03, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,  // 1 bit
      0x03, 0x01, 0x03, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,  // not compressed
      0x06, 0x01, 0x03, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // white is zero
      0x11, 0x01, 0x04, 0x00, 0x01, 0x00, 0x00, 0x00, 0xBE, 0x00, 0x00, 0x00,  // strip at 190
      0x15, 0x01, 0x03, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,  // 1 sample
      0x16, 0x01, 0x04, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,  // 1 row a strip
      0x17, 0x01, 0x04, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,  // 1 byte in it
      0x1A, 0x01, 0x05, 0x00, 0x01, 0x00, 0x00, 0x00, 0xB6, 0x00, 0x00, 0x00,  // across, at 182
      0x1B, 0x01, 0x05, 0x00, 0x01, 0x00, 0x00, 0x00, 0xB6, 0x00, 0x00, 0x00,  // down, the same
      0x28, 0x01, 0x03, 0x00, 0x01, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00,  // an inch
      0x29, 0x01, 0x03, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00,  // page 0 of 1
      0x00, 0x00, 0x00, 0x00,                                                  // no next one
      0x2C, 0x01, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,                          // 300 / 1
      0x18, 0x00};                                                             // the strip, padded
  EXPECT_EQ(writer.nextPage(shapeOf(8, 1, 300), linesOf(line, 8)), expected);
}

class TiffRoundTrip : public ::testing::TestWithParam<TiffCompression> {};

TEST_P(TiffRoundTrip, EveryRunOfEitherColourComesBack) {
  constexpr int kWidth = 5300;
  constexpr int kLines = 2650;
  Bytes black(static_cast<std::size_t>(kWidth) * kLines, 0);
  for (int y = 0; y < kLines; ++y) {
    // A white run of y, a black one of y, then white; every other line the other way round, so that
    // no edge is near one above.
    std::uint8_t* line = black.data() + static_cast<std::size_t>(y) * kWidth;
    for (int x = 0; x < kWidth; ++x) {
      const bool inRun = x >= y && x < 2 * y;
      line[x] = (y % 2 == 0) == inRun ? 1 : 0;
    }
  }
  TiffWriter writer(1, GetParam());
  const std::vector<BilevelPage> pages =
      readTiffBytes(writer.nextPage(shapeOf(kWidth, kLines, 600), linesOf(black, kWidth)));
  ASSERT_EQ(pages.size(), 1U);
  EXPECT_TRUE(pages[0].black == black);
}

TEST_P(TiffRoundTrip, PagesOfAnySizeComeBackInOrder) {
  std::mt19937 random(7);
  const int widths[] = {1, 7, 8, 9, 75, 640};
  TiffWriter writer(static_cast<int>(std::size(widths)), GetParam());
  Bytes file;
  std::vector<Bytes> pictures;
  for (const int width : widths) {
    const int height = 1 + width / 2;
    Bytes black(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    // From single dots to long stretches.
    for (std::uint8_t& pixel : black) {
      const bool repeats =
          &pixel != black.data() && random() % 8 < static_cast<unsigned>(width % 8);
      pixel = repeats ? *(&pixel - 1) : static_cast<std::uint8_t>(random() % 2);
    }
    const Bytes page = writer.nextPage(shapeOf(width, height, 150), linesOf(black, width));
    file.insert(file.end(), page.begin(), page.end());
    pictures.push_back(black);
  }
  const std::vector<BilevelPage> pages = readTiffBytes(file);
  ASSERT_EQ(pages.size(), pictures.size());
  for (std::size_t i = 0; i < pages.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(pages[i].width, widths[i]);
    EXPECT_EQ(pages[i].compression, static_cast<int>(GetParam()));
    EXPECT_EQ(pages[i].resolutionUnit, 2);
    EXPECT_EQ(pages[i].resolutionX, 150);
    EXPECT_EQ(pages[i].resolutionY, 150);
    EXPECT_EQ(pages[i].pageNumber, static_cast<int>(i));
    EXPECT_EQ(pages[i].pageCount, 6);
    EXPECT_TRUE(pages[i].black == pictures[i]);
  }
}

INSTANTIATE_TEST_SUITE_P(, TiffRoundTrip,
                         ::testing::Values(TiffCompression::kNone, TiffCompression::kGroup4),
                         [](const auto& row) {
                           return row.param == TiffCompression::kNone ? "Plain" : "Group4";
                         });

}  // namespace
}  // namespace tvrscn::virtual_device
