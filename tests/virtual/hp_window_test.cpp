// The window request, byte by byte, and the arithmetic from 1/1200 inch to pixels.
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "virtual/hp/hp_window.h"

namespace tvrscn::virtual_device {
namespace {

// A4 at 300 dpi in grey from the flatbed: 9921 (0x26C1) by 14031 (0x36CF) units.
const Bytes kA4Gray = {0x1B, 0xA8, 0x24, 0x13, 0x30, 0x00, 0x00, 0x26, 0xC1, 0x00, 0x00, 0x36, 0xCF,
                       0x05, 0x05, 0x00, 0x00, 0x00, 0x00, 0x03, 0x06, 0x01, 0x15, 0x40, 0x01};

Bytes withByte(std::size_t at, std::uint8_t value) {
  Bytes request = kA4Gray;
  request.at(at) = value;
  return request;
}

Bytes withSize(std::uint32_t width, std::uint32_t height) {
  Bytes request = kA4Gray;
  for (std::size_t i = 0; i < 4; ++i) {
    request[5 + i] = static_cast<std::uint8_t>((width >> (24 - 8 * i)) & 0xFF);
    request[9 + i] = static_cast<std::uint8_t>((height >> (24 - 8 * i)) & 0xFF);
  }
  return request;
}

TEST(HpWindow, A4At300DpiIs2480By3507Pixels) {
  HpWindow window;
  ASSERT_EQ(readHpWindow(kA4Gray, window), 0);
  EXPECT_EQ(window.width, 2480);
  EXPECT_EQ(window.height, 3507);
  EXPECT_EQ(window.dotsPerInch, 300);
  EXPECT_TRUE(window.gray);
  EXPECT_FALSE(window.cleanBackground);
  EXPECT_EQ(window.source, HpSource::kFlatbed);
}

TEST(HpWindow, EachResolutionCodeHasItsResolution) {
  struct Row {
    std::uint8_t code;
    int dotsPerInch;
    int width;  // 9921 units in pixels
  };
  const Row rows[] = {
      {0x00, 75, 620},   {0x0A, 100, 826},  {0x02, 150, 1240}, {0x09, 200, 1653},
      {0x05, 300, 2480}, {0x0E, 400, 3307}, {0x07, 600, 4960}, {0x08, 1200, 9921},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.dotsPerInch);
    Bytes request = withByte(13, row.code);
    request[14] = row.code;
    HpWindow window;
    ASSERT_EQ(readHpWindow(request, window), 0);
    EXPECT_EQ(window.dotsPerInch, row.dotsPerInch);
    EXPECT_EQ(window.width, row.width);
  }
}

TEST(HpWindow, EachSourceCodeHasItsSource) {
  struct Row {
    std::uint8_t first, second;
    HpSource source;
  };
  const Row rows[] = {
      {0x40, 0x01, HpSource::kFlatbed},
      {0x20, 0x00, HpSource::kFeederOneSide},
      {0x11, 0x00, HpSource::kFeederTwoSides},
      {0x10, 0x00, HpSource::kFeederTwoSidesTurned},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(int{row.first});
    Bytes request = withByte(23, row.first);
    request[24] = row.second;
    HpWindow window;
    ASSERT_EQ(readHpWindow(request, window), 0);
    EXPECT_EQ(window.source, row.source);
  }
}

TEST(HpWindow, ColorAndBackgroundCodesAreUnderstood) {
  HpWindow window;
  EXPECT_EQ(readHpWindow(withByte(19, 0x05), window), 0);
  EXPECT_FALSE(window.gray);
  EXPECT_EQ(readHpWindow(withByte(21, 0x09), window), 0);
  EXPECT_TRUE(window.gray);
  EXPECT_TRUE(window.cleanBackground);
}

TEST(HpWindow, EachWrongFixedByteIsACommandError) {
  for (const std::size_t at : {3U, 4U, 15U, 16U, 17U, 18U, 20U, 22U}) {
    SCOPED_TRACE(at);
    HpWindow window;
    EXPECT_EQ(readHpWindow(withByte(at, 0x77), window), 0x0002);
  }
}

TEST(HpWindow, UnknownCodesAreUnsupported) {
  HpWindow window;
  EXPECT_EQ(readHpWindow(withByte(13, 0x07), window), 0x0004) << "unequal resolutions";
  Bytes request = withByte(13, 0x01);
  request[14] = 0x01;
  EXPECT_EQ(readHpWindow(request, window), 0x0004) << "unknown resolution";
  EXPECT_EQ(readHpWindow(withByte(21, 0x00), window), 0x0004) << "unknown background";
  EXPECT_EQ(readHpWindow(withByte(23, 0x80), window), 0x0004) << "unknown source";
  EXPECT_EQ(readHpWindow(withByte(24, 0x00), window), 0x0004) << "half a source";
}

TEST(HpWindow, AreasThatAreNoneOrTooLargeAreInvalid) {
  struct Row {
    std::uint32_t width, height;
    std::uint16_t message;
  };
  const Row rows[] = {
      {0, 1200, 0x0200},          {1200, 0, 0x0200},
      {3, 1200, 0x0200},          {4, 8, 0},
      {1200, 7, 0x0200},          {14409, 21590, 0},
      {15000, 22200, 0},          {15001, 22200, 0x0200},
      {15000, 22201, 0x0200},     {0xFFFFFFFF, 8, 0x0200},
      {1200, 0xFFFFFFFF, 0x0200},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.width) + " x " + std::to_string(row.height));
    HpWindow window;
    EXPECT_EQ(readHpWindow(withSize(row.width, row.height), window), row.message);
  }
}

}  // namespace
}  // namespace tvrscn::virtual_device
