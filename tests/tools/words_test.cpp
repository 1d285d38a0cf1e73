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
  const TevraScanUIData data = hpJobSettings(ScanSettings{}, {});
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
  EXPECT_EQ(hpJobSettings(settings, {}).brightness, L"-1020");
  EXPECT_EQ(hpJobSettings(settings, {}).contrast, L"400");
  settings.brightness = -100;
  settings.contrast = -100;
  EXPECT_EQ(hpJobSettings(settings, {}).brightness, L"1020");
  EXPECT_EQ(hpJobSettings(settings, {}).contrast, L"-400");
  settings.brightness = 1;
  EXPECT_EQ(hpJobSettings(settings, {}).brightness, L"-12");
}

TEST(SettingsWithoutEffect, AreTold) {
  ScanSettings settings;
  EXPECT_TRUE(hpSettingsWithoutEffect(settings).empty());
  settings.colorMode = "BlackAndWhite";
  EXPECT_TRUE(hpSettingsWithoutEffect(settings).empty());
  settings.contrast = 5;
  EXPECT_EQ(hpSettingsWithoutEffect(settings).size(), 1U);
  settings.resolution = "72x72";
  EXPECT_EQ(hpSettingsWithoutEffect(settings).size(), 2U);
}

// Percent of the way from normal to one end of the range, to the nearest value.
TEST(LowEndJobSettings, PercentCoverTheRangesOfTheDevice) {
  const DeviceRanges ranges = {IPPMinMaxNormalStepData{-4, 10, 2, 0},
                               IPPMinMaxNormalStepData{1, 9, 5, 0}};
  const struct {
    int brightness;
    int contrast;
    const wchar_t* darkness;
    const wchar_t* hardness;
  } rows[] = {
      {0, 0, L"2", L"5"},    {100, 100, L"-4", L"9"}, {-100, -100, L"10", L"1"},
      {50, 50, L"-1", L"7"}, {-50, -50, L"6", L"3"},  {1, 1, L"2", L"5"},
      {-13, 13, L"3", L"6"},
  };
  for (const auto& row : rows) {
    ScanSettings settings;
    settings.brightness = row.brightness;
    settings.contrast = row.contrast;
    EXPECT_EQ(lowEndJobSettings(settings, ranges).brightness, row.darkness) << row.brightness;
    EXPECT_EQ(lowEndJobSettings(settings, ranges).contrast, row.hardness) << row.contrast;
    EXPECT_TRUE(settingsWithoutRange(settings, ranges).empty());
  }
}

TEST(LowEndJobSettings, ARangeAsWideAsNumbersGoIsFine) {
  const DeviceRanges ranges = {IPPMinMaxNormalStepData{-2147483647 - 1, 2147483647, 0, 0},
                               std::nullopt};
  ScanSettings settings;
  settings.brightness = 100;
  EXPECT_EQ(lowEndJobSettings(settings, ranges).brightness, L"-2147483648");
  settings.brightness = -100;
  EXPECT_EQ(lowEndJobSettings(settings, ranges).brightness, L"2147483647");
}

TEST(LowEndJobSettings, WithoutARangeZeroGoesOutAndTheUserIsTold) {
  ScanSettings settings;
  EXPECT_TRUE(settingsWithoutRange(settings, {}).empty());
  settings.brightness = 30;
  settings.contrast = -30;
  EXPECT_EQ(lowEndJobSettings(settings, {}).brightness, L"0");
  EXPECT_EQ(lowEndJobSettings(settings, {}).contrast, L"0");
  EXPECT_EQ(settingsWithoutRange(settings, {}).size(), 2U);
}

TEST(LowEndJobSettings, WhatHasNoEffectIsTold) {
  ScanSettings settings;
  EXPECT_TRUE(lowEndSettingsWithoutEffect(settings).empty());
  settings.resolution = "1200x1200";
  EXPECT_EQ(lowEndSettingsWithoutEffect(settings).size(), 1U);
  settings.colorMode = "Auto";
  EXPECT_EQ(lowEndSettingsWithoutEffect(settings).size(), 2U);
  settings.background = "On";
  EXPECT_EQ(lowEndSettingsWithoutEffect(settings).size(), 3U);
}

TEST(PrintableText, NothingInItSteersATerminal) {
  EXPECT_EQ(printableText("no paper"), "no paper");
  EXPECT_EQ(printableText("\x1B[2Ja\r\nb\x7F\tc"), " [2Ja  b  c");
  EXPECT_EQ(printableText("a\xC2\x9B"
                          "2Jb"),
            "a 2Jb");
  EXPECT_EQ(printableText("Gr\xC3\xBC\xC3\x9F"
                          "e, 5 \xC2\xB5m"),
            "Gr\xC3\xBC\xC3\x9F"
            "e, 5 \xC2\xB5m");
  EXPECT_EQ(printableText(""), "");
}

TEST(PrintableText, ALongOneIsCutBetweenCharacters) {
  EXPECT_EQ(printableText(std::string(400, 'x')), std::string(300, 'x') + "...");
  const std::string text = std::string(299, 'x') + "\xE2\x82\xAC";
  EXPECT_EQ(printableText(text), text);
  EXPECT_EQ(printableText(text + "y"), text + "...");
}

}  // namespace
}  // namespace tvrscn::cli
