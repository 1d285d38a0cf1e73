// The window request, field by field.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/bytes.h"
#include "tests/support/platform_test.h"
#include "tests/support/test_peers.h"
#include "tvrscn/hp_scan_data_source.h"

namespace {

using Peer = DataSourceTestPeer;
using tvrscn::test::Bytes;
using tvrscn::test::hex;

std::string filled(CHPUSBScanDataSource& source, HPPKUSBSetWindowParameterRequest request = {}) {
  source.FillSetWindowData(request);
  Bytes content(sizeof request);
  std::memcpy(content.data(), &request, sizeof request);
  return hex(content);
}

// The settings of the example: A4, 300 dpi, grey, background off, flatbed.
CHPUSBScanDataSource exampleSource() {
  CHPUSBScanDataSource source;
  source.SetScaningPropertiesFromApp("Grayscale", "300x300", "OneSided", 210, 297, 0, 0, 0, "Off",
                                     0, "ISO_A4SEF");
  return source;
}

std::string byteAt(const std::string& request, std::size_t offset, std::size_t count = 1) {
  return request.substr(3 * offset, 3 * count - 1);
}

TEST(HPWindow, TemplateStandsBeforeFilling) {
  const HPPKUSBSetWindowParameterRequest request;
  Bytes content(sizeof request);
  std::memcpy(content.data(), &request, sizeof request);
  EXPECT_EQ(hex(content),
            "1B A8 24 13 00 00 00 00 00 00 00 00 00 05 05 00 00 00 00 05 06 01 15 00 00");
}

TEST(HPWindow, A4GreyOnTheFlatbed) {
  CHPUSBScanDataSource source = exampleSource();
  EXPECT_EQ(filled(source),
            "1B A8 24 13 30 00 00 26 C1 00 00 36 CF 05 05 00 00 00 00 03 06 01 15 40 01");
}

TEST(HPWindow, MillimetresBecomeTwelfthsOfAHundredthInch) {
  const struct {
    int width;
    int height;
    const char* bytes;
  } kCases[] = {
      {0, 0, "00 00 00 00 00 00 00 00"},
      {210, 297, "00 00 26 C1 00 00 36 CF"},       // 9921, 14031
      {216, 279, "00 00 27 DC 00 00 33 7D"},       // 10204, 13181
      {1, 2, "00 00 00 2F 00 00 00 5E"},           // 47.24, 94.48
      {254, 127, "00 00 2E E0 00 00 17 70"},       // 12000, 6000
      {-1, -254, "FF FF FF D1 FF FF D1 20"},       // -47, -12000
      {1789570, 0, "05 0A 14 36 00 00 00 00"},     // 84546614.17: beyond 32 bits before dividing
      {2147483647, 0, "9F 3E 7C CA 00 00 00 00"},  // 101455920330.71, low 32 bits
  };
  for (const auto& row : kCases) {
    CHPUSBScanDataSource source = exampleSource();
    Peer::width(source) = row.width;
    Peer::height(source) = row.height;
    EXPECT_EQ(byteAt(filled(source), 5, 8), row.bytes) << row.width << "x" << row.height;
  }
}

TEST(HPWindow, ResolutionTextGivesTheCode) {
  const struct {
    const char* text;
    const char* code;
  } kCases[] = {
      {"75x75", "00 00"},   {"100x100", "0A 0A"}, {"150x150", "02 02"},  {"200x200", "09 09"},
      {"300x300", "05 05"}, {"400x400", "0E 0E"}, {"600x600", "07 07"},  {"1200x1200", "08 08"},
      {"72x72", "05 05"},   {"", "05 05"},        {"300x300 ", "05 05"}, {"600X600", "05 05"},
      {"200x400", "05 05"}, {"75x75 ", "05 05"},
  };
  for (const auto& row : kCases) {
    CHPUSBScanDataSource source = exampleSource();
    Peer::resolution(source) = row.text;
    EXPECT_EQ(byteAt(filled(source), 13, 2), row.code) << row.text;
  }
}

TEST(HPWindow, ColourTextGivesTheCode) {
  const struct {
    const char* text;
    const char* code;
  } kCases[] = {
      {"Grayscale", "03"},  {"BlackAndWhite", "05"}, {"Auto", "05"},
      {"FullColor", "05"},  {"grayscale", "05"},     {"", "05"},
      {"Grayscale ", "05"},
  };
  for (const auto& row : kCases) {
    CHPUSBScanDataSource source = exampleSource();
    Peer::colorMode(source) = row.text;
    EXPECT_EQ(byteAt(filled(source), 19), row.code) << row.text;
  }
}

TEST(HPWindow, BackgroundIsOffForExactlyOneText) {
  const struct {
    const char* text;
    const char* code;
  } kCases[] = {{"Off", "01"}, {"On", "09"}, {"", "09"}, {"off", "09"}, {"Off ", "09"}};
  for (const auto& row : kCases) {
    CHPUSBScanDataSource source = exampleSource();
    Peer::backgroundRemoval(source) = row.text;
    EXPECT_EQ(byteAt(filled(source), 21), row.code) << row.text;
  }
}

TEST(HPWindow, SourceAndSidesGiveTheSourceCode) {
  const struct {
    int source;
    const char* sides;
    const char* code;
  } kCases[] = {
      {0, "OneSided", "40 01"}, {0, "TwoSided", "40 01"},           {1, "OneSided", "20 00"},
      {1, "TwoSided", "11 00"}, {1, "SecondSideRotation", "10 00"}, {1, "", "20 00"},
      {1, "twosided", "20 00"}, {-5, "TwoSided", "11 00"},
  };
  for (const auto& row : kCases) {
    CHPUSBScanDataSource source = exampleSource();
    source.SetPaperSource(row.source);
    Peer::sides(source) = row.sides;
    EXPECT_EQ(byteAt(filled(source), 23, 2), row.code) << row.source << " " << row.sides;
  }
}

HPPKUSBSetWindowParameterRequest requestOf(std::uint8_t fill) {
  HPPKUSBSetWindowParameterRequest request;
  std::memset(static_cast<void*>(&request), fill, sizeof request);
  return request;
}

TEST(HPWindow, FieldsThatNoSettingNamesStayAsTheyAre) {
  CHPUSBScanDataSource source;  // 200x200, full colour, feeder
  Peer::resolution(source) = "72x72";
  source.SetPaperSource(0);
  EXPECT_EQ(filled(source, requestOf(0xAA)),
            "AA AA AA 13 30 00 00 00 00 00 00 00 00 AA AA AA AA AA AA AA 06 09 15 40 01");
}

TEST(HPWindow, FeederClearsTheReservedBytes) {
  CHPUSBScanDataSource source;
  Peer::resolution(source) = "72x72";
  EXPECT_EQ(filled(source, requestOf(0xAA)),
            "AA AA AA 13 30 00 00 00 00 00 00 00 00 AA AA 00 00 00 00 AA 06 09 15 20 00");
}

// A colour that names its code writes it, even the template's own.
TEST(HPWindow, BlackAndWhiteAndAutoWriteTheirCode) {
  for (const char* text : {"BlackAndWhite", "Auto"}) {
    CHPUSBScanDataSource source = exampleSource();
    Peer::colorMode(source) = text;
    EXPECT_EQ(byteAt(filled(source, requestOf(0xAA)), 19), "05") << text;
  }
}

TEST(HPWindow, BrightnessAndContrastAreConvertedOnTheWay) {
  const struct {
    int brightness;
    int contrast;
    int brightnessAfter;
    int contrastAfter;
    bool flag;
  } kCases[] = {{10, -7, -2, -1, true}, {0, 3, 0, 0, true}, {0, 0, 0, 0, false}};
  for (const auto& row : kCases) {
    CHPUSBScanDataSource source = exampleSource();
    Peer::brightness(source) = row.brightness;
    Peer::contrast(source) = row.contrast;
    EXPECT_EQ(filled(source),
              "1B A8 24 13 30 00 00 26 C1 00 00 36 CF 05 05 00 00 00 00 03 06 01 15 40 01");
    EXPECT_EQ(source.getBrightness(), row.brightnessAfter);
    EXPECT_EQ(source.getContrast(), row.contrastAfter);
    EXPECT_EQ(source.isNeedImageProcessing(), row.flag);
  }
}

TEST(HPWindow, SecondFillingConvertsAgain) {
  CHPUSBScanDataSource source = exampleSource();
  Peer::brightness(source) = 64;
  filled(source);
  filled(source);
  EXPECT_EQ(source.getBrightness(), 4);
}

TEST(HPWindow, CopiesTakeEveryField) {
  CHPUSBScanDataSource source = exampleSource();
  CHPUSBScanDataSource copy(source);
  CHPUSBScanDataSource assigned;
  assigned = source;
  const std::string request = filled(source);
  EXPECT_EQ(filled(copy), request);
  EXPECT_EQ(filled(assigned), request);
}

}  // namespace
