#include "words.h"

#include <gtest/gtest.h>

#include "exit_codes.h"
#include "scan_settings.h"

namespace tvrscn::cli {
namespace {

TEST(Words, StandForTheTextsOfTheSettings) {
  EXPECT_EQ(parseMode("color"), "FullColor");
  EXPECT_EQ(parseMode("Colour"), "FullColor");
  EXPECT_EQ(parseMode("gray"), "Grayscale");
  EXPECT_EQ(parseMode("grey"), "Grayscale");
  EXPECT_EQ(parseMode("BW"), "BlackAndWhite");
  EXPECT_EQ(parseMode("auto"), "Auto");
  EXPECT_EQ(parseSides("one"), "OneSided");
  EXPECT_EQ(parseSides("two"), "TwoSided");
  EXPECT_EQ(parseSides("flip"), "SecondSideRotation");
  EXPECT_EQ(parseBackground("off"), "Off");
  EXPECT_EQ(parseBackground("ON"), "On");
}

TEST(Words, UnknownOnesAreRefused) {
  EXPECT_FALSE(parseMode(""));
  EXPECT_FALSE(parseMode("colr"));
  EXPECT_FALSE(parseSides("three"));
  EXPECT_FALSE(parseBackground("yes"));
}

TEST(Resolution, TakesOneNumberOrTwo) {
  EXPECT_EQ(parseResolution("300"), "300x300");
  EXPECT_EQ(parseResolution("300x300"), "300x300");
  EXPECT_EQ(parseResolution("600dpi"), "600x600");
  EXPECT_EQ(parseResolution("1200"), "1200x1200");
  EXPECT_EQ(parseResolution("72"), "72x72");
  EXPECT_EQ(parseResolution("200x100"), "200x100");
  EXPECT_EQ(parseResolution("200x400"), "200x400");
  for (const char* bad : {"", "0", "301", "300x", "x300", "300x600", "-300", "300 ", "100x200"}) {
    EXPECT_FALSE(parseResolution(bad)) << bad;
  }
}

TEST(Suggestion, NamesTheNearestFirst) {
  EXPECT_EQ(nearestWords("leter", {"legal", "letter", "a4"}).front(), "letter");
  EXPECT_EQ(suggestion("lettr", {"a4", "letter"}), "did you mean letter?");
  EXPECT_EQ(suggestion("a7", {"a4", "a5", "letter"}), "did you mean a4 or a5?");
}

TEST(Suggestion, SaysNothingWhenNothingIsNear) {
  EXPECT_EQ(suggestion("zzzzzz", {"a4", "letter"}), "");
  EXPECT_EQ(suggestion("", {"a4"}), "");
}

TEST(ExitCodes, AreDistinctAndNamed) {
  for (const ExitCodeRow& row : kExitCodes) {
    int same = 0;
    for (const ExitCodeRow& other : kExitCodes)
      same += other.code == row.code ? 1 : 0;
    EXPECT_EQ(same, 1) << row.name;
    EXPECT_STREQ(exitCodeRow(row.code).name, row.name);
    EXPECT_NE(exitCodeHelp().find(row.meaning), std::string::npos);
  }
}

TEST(JobSettings, DefaultsAreAnA4PageInColourAt300) {
  const TevraScanUIData data = jobSettings(ScanSettings{});
  EXPECT_EQ(data.mediaSize, "ISO_A4SEF");
  EXPECT_EQ(data.pageWidth, 210);
  EXPECT_EQ(data.pageHeight, 297);
  EXPECT_EQ(data.resolution, "300x300");
  EXPECT_EQ(data.colorMode, "FullColor");
  EXPECT_EQ(data.sides, "OneSided");
  EXPECT_EQ(data.backgroundRemoval, L"Off");
  EXPECT_EQ(data.brightness, L"0");
  EXPECT_EQ(data.contrast, L"0");
}

// The library divides by four and turns the sign of brightness: -1020 becomes the level 255.
TEST(JobSettings, PercentCoversTheWholeRangeOfTheEffect) {
  ScanSettings settings;
  settings.brightness = 100;
  settings.contrast = 100;
  EXPECT_EQ(jobSettings(settings).brightness, L"-1020");
  EXPECT_EQ(jobSettings(settings).contrast, L"400");
  settings.brightness = -100;
  settings.contrast = -100;
  EXPECT_EQ(jobSettings(settings).brightness, L"1020");
  EXPECT_EQ(jobSettings(settings).contrast, L"-400");
  settings.brightness = 1;
  EXPECT_EQ(jobSettings(settings).brightness, L"-12");
}

TEST(SettingsWithoutEffect, AreTold) {
  ScanSettings settings;
  EXPECT_TRUE(settingsWithoutEffect(settings).empty());
  settings.colorMode = "BlackAndWhite";
  EXPECT_TRUE(settingsWithoutEffect(settings).empty());
  settings.contrast = 5;
  EXPECT_EQ(settingsWithoutEffect(settings).size(), 1U);
  settings.resolution = "72x72";
  EXPECT_EQ(settingsWithoutEffect(settings).size(), 2U);
}

}  // namespace
}  // namespace tvrscn::cli
