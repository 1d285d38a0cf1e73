// The settings of a job as typed values.
#include "tvrscn/scan_data_source.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/platform_test.h"
#include "tests/support/test_peers.h"

namespace {

using Peer = DataSourceTestPeer;

TEST(ScanDataSource, StartsWithItsDefaults) {
  CUSBScanDataSource source;
  EXPECT_EQ(Peer::width(source), 0);
  EXPECT_EQ(Peer::height(source), 0);
  EXPECT_EQ(Peer::pageLimit(source), 0);
  EXPECT_EQ(Peer::feedEdge(source), 1);
  EXPECT_EQ(Peer::backgroundRemoval(source), "");
  EXPECT_EQ(Peer::resolution(source), "200x200");
  EXPECT_EQ(Peer::sides(source), "OneSided");
  EXPECT_EQ(Peer::contrast(source), 0);
  EXPECT_EQ(Peer::brightness(source), 0);
  EXPECT_EQ(Peer::colorMode(source), "FullColor");
  EXPECT_EQ(Peer::hardwareId(source), "");
  EXPECT_FALSE(Peer::needImageProcessing(source));
  EXPECT_EQ(Peer::paperSource(source), 1);
  EXPECT_EQ(Peer::mediaSize(source), "");
  EXPECT_EQ(source.GetAppResolution(), 200);
  EXPECT_EQ(source.getColorToScan(), "FullColor");
  EXPECT_EQ(source.GetPaperSource(), 1);
}

void fillWithOddValues(CUSBScanDataSource& source) {
  source.SetScaningPropertiesFromApp("Auto", "75x75", "TwoSided", 11, 22, 33, 44, -55, "On", 66,
                                     "ISO_A4LEF");
  source.setHardwareId("VID_0A7E");
  Peer::needImageProcessing(source) = true;
}

void expectOddValues(CUSBScanDataSource& source) {
  EXPECT_EQ(Peer::colorMode(source), "Auto");
  EXPECT_EQ(Peer::resolution(source), "75x75");
  EXPECT_EQ(Peer::sides(source), "TwoSided");
  EXPECT_EQ(Peer::width(source), 11);
  EXPECT_EQ(Peer::height(source), 22);
  EXPECT_EQ(Peer::paperSource(source), 33);
  EXPECT_EQ(Peer::brightness(source), 44);
  EXPECT_EQ(Peer::contrast(source), -55);
  EXPECT_EQ(Peer::backgroundRemoval(source), "On");
  EXPECT_EQ(Peer::pageLimit(source), 66);
  EXPECT_EQ(Peer::mediaSize(source), "ISO_A4LEF");
  EXPECT_EQ(Peer::feedEdge(source), 0);
  EXPECT_EQ(Peer::hardwareId(source), "VID_0A7E");
  EXPECT_TRUE(Peer::needImageProcessing(source));
}

TEST(ScanDataSource, SetScaningPropertiesStoresEachArgument) {
  CUSBScanDataSource source;
  fillWithOddValues(source);
  expectOddValues(source);
}

TEST(ScanDataSource, CopiesTakeEveryField) {
  CUSBScanDataSource source;
  fillWithOddValues(source);
  CUSBScanDataSource copy(source);
  expectOddValues(copy);
  CUSBScanDataSource assigned;
  assigned = source;
  expectOddValues(assigned);
}

TEST(ScanDataSource, AccessorsReadAndWriteOneField) {
  CUSBScanDataSource source;
  fillWithOddValues(source);
  EXPECT_EQ(source.getBrightness(), 44);
  EXPECT_EQ(source.getContrast(), -55);
  EXPECT_EQ(source.getColorToScan(), "Auto");
  EXPECT_EQ(source.getHardwareId(), "VID_0A7E");
  EXPECT_EQ(source.GetPaperSource(), 33);
  EXPECT_TRUE(source.isNeedImageProcessing());
  source.SetPaperSource(0);
  EXPECT_EQ(source.GetPaperSource(), 0);
  source.SetPaperSource(33);
  expectOddValues(source);
}

TEST(ScanDataSource, MediaNameDecidesTheFeedEdge) {
  const struct {
    const char* media;
    int edge;
  } kCases[] = {
      {"ISO_A4LEF", 0}, {"ISO_A4SEF", 1}, {"LEF", 0},        {"LE", 1},   {"", 1},
      {"xLEFx", 0},     {"lef", 1},       {"NA_8x10LEF", 0}, {"Auto", 1},
  };
  for (const auto& row : kCases) {
    CUSBScanDataSource source;
    source.SetScaningPropertiesFromApp("", "", "", 0, 0, 0, 0, 0, "", 0, row.media);
    EXPECT_EQ(Peer::feedEdge(source), row.edge) << row.media;
  }
}

TEST(ScanDataSource, FeedEdgeIsNeverSetBack) {
  CUSBScanDataSource source;
  source.SetScaningPropertiesFromApp("", "", "", 0, 0, 0, 0, 0, "", 0, "ISO_A4LEF");
  source.SetScaningPropertiesFromApp("", "", "", 0, 0, 0, 0, 0, "", 0, "ISO_A4SEF");
  EXPECT_EQ(Peer::feedEdge(source), 0);
}

TEST(ScanDataSource, ResolutionTextGivesDotsPerInch) {
  const struct {
    const char* text;
    int dpi;
  } kCases[] = {
      {"75x75", 75},    {"100x100", 100}, {"150x150", 150}, {"200x200", 200},   {"300x300", 300},
      {"400x400", 400}, {"600x600", 600}, {"72x72", 200},   {"1200x1200", 200}, {"75x7", 200},
      {"", 200},        {"200x100", 200}, {"200x400", 200}, {"300x300 ", 200},  {"300X300", 200},
  };
  for (const auto& row : kCases) {
    CUSBScanDataSource source;
    Peer::resolution(source) = row.text;
    EXPECT_EQ(source.GetAppResolution(), row.dpi) << row.text;
  }
}

TEST(ScanDataSource, BrightnessIsNegatedAndBothAreQuartered) {
  const struct {
    int brightness;
    int contrast;
    int brightnessAfter;
    int contrastAfter;
    bool flag;
  } kCases[] = {
      {10, -10, -2, -2, true},
      {3, 0, 0, 0, true},
      {0, 0, 0, 0, false},
      {0, 3, 0, 0, true},
      {-10, 10, 2, 2, true},
      {100, -100, -25, -25, true},
      {-7, -7, 1, -1, true},
      {0, -4, 0, -1, true},
      {4, 0, -1, 0, true},
      {-2147483647 - 1, 0, 536870912, 0, true},
      {2147483647, 2147483647, -536870911, 536870911, true},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(std::to_string(row.brightness) + "/" + std::to_string(row.contrast));
    CUSBScanDataSource source;
    Peer::brightness(source) = row.brightness;
    Peer::contrast(source) = row.contrast;
    source.SetBrightnessContrast();
    EXPECT_EQ(source.getBrightness(), row.brightnessAfter);
    EXPECT_EQ(source.getContrast(), row.contrastAfter);
    EXPECT_EQ(source.isNeedImageProcessing(), row.flag);
  }
}

TEST(ScanDataSource, SetBrightnessContrastDividesAgainEachTime) {
  CUSBScanDataSource source;
  Peer::brightness(source) = 64;
  Peer::contrast(source) = -64;
  source.SetBrightnessContrast();
  source.SetBrightnessContrast();
  EXPECT_EQ(source.getBrightness(), 4);
  EXPECT_EQ(source.getContrast(), -4);
}

TEST(ScanDataSource, TakesTheSettingsOfTheUserInterface) {
  TevraScanUIData settings = tvrscn::test::settings();
  settings.brightness = L" 12 and more";
  settings.contrast = L"-34";
  CUSBScanDataSource source;
  EXPECT_TRUE(source.setAppDataToScanCommand(settings));
  EXPECT_EQ(Peer::colorMode(source), "Grayscale");
  EXPECT_EQ(Peer::resolution(source), "300x300");
  EXPECT_EQ(Peer::sides(source), "OneSided");
  EXPECT_EQ(Peer::width(source), 210);
  EXPECT_EQ(Peer::height(source), 297);
  EXPECT_EQ(Peer::paperSource(source), 0);
  EXPECT_EQ(Peer::brightness(source), 12);
  EXPECT_EQ(Peer::contrast(source), -34);
  EXPECT_EQ(Peer::backgroundRemoval(source), "Off");
  EXPECT_EQ(Peer::pageLimit(source), 0);
  EXPECT_EQ(Peer::mediaSize(source), "ISO_A4SEF");
  EXPECT_FALSE(source.isNeedImageProcessing());
}

TEST(ScanDataSource, WideSettingsAreNarrowedToTheirLowBytes) {
  TevraScanUIData settings = tvrscn::test::settings();
  settings.brightness = L"\u0131\u0232";          // low bytes "12"
  settings.backgroundRemoval = L"\u014F\u4E66f";  // low bytes "Off"
  CUSBScanDataSource source;
  EXPECT_TRUE(source.setAppDataToScanCommand(settings));
  EXPECT_EQ(Peer::brightness(source), 12);
  EXPECT_EQ(Peer::backgroundRemoval(source), "Off");
}

template <typename Error, typename Settings>
void expectRefused(const Settings& settings, const char* text) {
  CUSBScanDataSource source;
  fillWithOddValues(source);
  try {
    source.setAppDataToScanCommand(settings);
    ADD_FAILURE() << "accepted";
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(), text);
  }
  expectOddValues(source);
}

TEST(ScanDataSource, SettingsThatAreNoNumbersAreRefusedWithNothingStored) {
  const struct {
    const wchar_t* brightness;
    const wchar_t* contrast;
  } kCases[] = {{L"abc", L"0"}, {L"0", L"abc"}, {L"", L"0"}, {L"0", L""}, {L"-", L"0"}};
  for (const auto& row : kCases) {
    TevraScanUIData settings = tvrscn::test::settings();
    settings.brightness = row.brightness;
    settings.contrast = row.contrast;
    expectRefused<std::invalid_argument>(settings, "invalid stoi argument");
  }
}

TEST(ScanDataSource, ContrastIsReadBeforeBrightness) {
  TevraScanUIData settings = tvrscn::test::settings();
  settings.brightness = L"abc";
  settings.contrast = L"99999999999";
  expectRefused<std::out_of_range>(settings, "stoi argument out of range");
}

TEST(ScanDataSource, TakesSettingsFromALine) {
  CUSBScanDataSource source;
  EXPECT_TRUE(source.setAppDataToScanCommand(
      std::string("FullColor,200x200,OneSided,216,279,0,0,Off,ISO_A4SEF")));
  EXPECT_EQ(Peer::colorMode(source), "FullColor");
  EXPECT_EQ(Peer::resolution(source), "200x200");
  EXPECT_EQ(Peer::sides(source), "OneSided");
  EXPECT_EQ(Peer::width(source), 216);
  EXPECT_EQ(Peer::height(source), 279);
  EXPECT_EQ(Peer::brightness(source), 0);
  EXPECT_EQ(Peer::contrast(source), 0);
  EXPECT_EQ(Peer::backgroundRemoval(source), "Off");
  EXPECT_EQ(Peer::mediaSize(source), "ISO_A4SEF");
  EXPECT_EQ(source.GetPaperSource(), 0);
  EXPECT_EQ(Peer::pageLimit(source), 0);
}

TEST(ScanDataSource, LineFieldsGoWhereTheyBelong) {
  const char* const kLines[] = {
      "Auto,75x75,TwoSided,1,-2,3,-4,On,ISO_A4LEF",
      "Auto,75x75,TwoSided,1,-2,3,-4,On,ISO_A4LEF,tenth",
      "Auto,75x75,TwoSided,1,-2,3,-4,On,ISO_A4LEF,tenth,eleventh",
      ",,Auto,,75x75,TwoSided,1,-2,,,3,-4,On,ISO_A4LEF,",
      "Auto,75x75,TwoSided, 1,-2mm,+3,-4%,On,ISO_A4LEF",
  };
  for (const char* line : kLines) {
    SCOPED_TRACE(line);
    CUSBScanDataSource source;
    EXPECT_TRUE(source.setAppDataToScanCommand(std::string(line)));
    EXPECT_EQ(Peer::colorMode(source), "Auto");
    EXPECT_EQ(Peer::resolution(source), "75x75");
    EXPECT_EQ(Peer::sides(source), "TwoSided");
    EXPECT_EQ(Peer::width(source), 1);
    EXPECT_EQ(Peer::height(source), -2);
    EXPECT_EQ(Peer::brightness(source), 3);
    EXPECT_EQ(Peer::contrast(source), -4);
    EXPECT_EQ(Peer::backgroundRemoval(source), "On");
    EXPECT_EQ(Peer::mediaSize(source), "ISO_A4LEF");
    EXPECT_EQ(Peer::feedEdge(source), 0);
  }
}

TEST(ScanDataSource, EmptyLineChangesNothing) {
  CUSBScanDataSource source;
  fillWithOddValues(source);
  EXPECT_FALSE(source.setAppDataToScanCommand(std::string()));
  expectOddValues(source);
}

TEST(ScanDataSource, LineWithTextForANumberIsRefusedWithNothingStored) {
  for (const char* line : {"a,b,c,x,2,3,4,Off,m", "a,b,c,1,x,3,4,Off,m", "a,b,c,1,2,x,4,Off,m",
                           "a,b,c,1,2,3,x,Off,m"}) {
    SCOPED_TRACE(line);
    expectRefused<std::invalid_argument>(std::string(line), "invalid stoi argument");
  }
  expectRefused<std::out_of_range>(std::string("a,b,c,1,2,3,3000000000,Off,m"),
                                   "stoi argument out of range");
}

TEST(ScanDataSource, LineWithFewerThanNineFieldsIsALogicError) {
  for (const char* line :
       {",", "a", "a,b,c", "a,b,c,1,2,3,4,Off", "a,b,c,1,2,3,4,Off,", ",,,,,,,,,"}) {
    SCOPED_TRACE(line);
    CUSBScanDataSource source;
    fillWithOddValues(source);
    EXPECT_THROW(source.setAppDataToScanCommand(std::string(line)), std::logic_error);
    expectOddValues(source);
  }
}

}  // namespace
