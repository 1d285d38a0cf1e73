// What the scanner takes, what it refuses, and in which words.
#include "virtual/lowend/lowend_request.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/support/lowend_host.h"

namespace tvrscn::virtual_device {
namespace {

using testing::bilevelFields;
using testing::colorFields;
using testing::Fields;
using testing::jsonOf;
using testing::with;
using testing::without;

LowEndScannerOptions loadedFeeder() {
  LowEndScannerOptions options;
  options.feeder = true;
  return options;
}

std::string wrongWith(const Fields& fields, const LowEndScannerOptions& options = {}) {
  const LowEndRequestReading reading = readLowEndRequest(jsonOf(fields), options);
  EXPECT_TRUE(reading.isJson);
  return reading.wrong;
}

LowEndRequest requestOf(const Fields& fields, const LowEndScannerOptions& options = {}) {
  const LowEndRequestReading reading = readLowEndRequest(jsonOf(fields), options);
  EXPECT_EQ(reading.wrong, "");
  return reading.request;
}

TEST(LowEndRequest, FieldsBecomeTheJob) {
  const LowEndRequest color =
      requestOf(with(with(colorFields(), "darkness", "-7"), "contrast", "100"));
  EXPECT_EQ(color.dotsPerInch, 75);
  EXPECT_EQ(color.mode, LowEndMode::kColor);
  EXPECT_EQ(color.sides, LowEndSides::kOne);
  EXPECT_FALSE(color.fromFeeder);
  EXPECT_EQ(color.width, 75);
  EXPECT_EQ(color.height, 150);
  EXPECT_EQ(color.darkness, -7);
  EXPECT_EQ(color.contrast, 100);
  EXPECT_EQ(requestOf(with(colorFields(), "imageComposition", "2")).mode, LowEndMode::kGray);
  EXPECT_EQ(requestOf(bilevelFields()).mode, LowEndMode::kBlackWhite);
  EXPECT_EQ(requestOf(with(colorFields(), "scanDuplex", "1")).sides, LowEndSides::kTwoTurned);
  EXPECT_EQ(requestOf(with(colorFields(), "scanDuplex", "2")).sides, LowEndSides::kTwo);
}

Fields sized(const std::string& code, const std::string& resolution) {
  Fields fields = with(with(colorFields(), "mediaSize", code), "resolution", resolution);
  for (const char* key : {"offsetX", "offsetY", "customWidth", "customHeight"})
    fields.erase(key);
  return fields;
}

TEST(LowEndRequest, EveryMediaCodeHasItsSize) {
  struct Row {
    const char* code;
    int width, height;  // at 300 dots an inch
  };
  const Row rows[] = {
      {"0", 2550, 3300},   // 8.5 x 11 inches
      {"1", 2175, 3150},   // 7.25 x 10.5
      {"2", 2550, 4200},   // 8.5 x 14
      {"3", 3508, 4961},   // 297 x 420 mm: 3507.9 x 4960.6
      {"4", 2480, 3508},   // 210 x 297 mm: 2480.3 x 3507.9
      {"5", 1748, 2480},   // 148 x 210 mm: 1748.0 x 2480.3
      {"6", 3035, 4299},   // 257 x 364 mm: 3035.4 x 4299.2
      {"7", 2150, 3035},   // 182 x 257 mm: 2149.6 x 3035.4
      {"8", 3300, 5100},   // 11 x 17 inches
      {"9", 3600, 5700},   // 12 x 19
      {"10", 1650, 2550},  // 5.5 x 8.5
      {"14", 2480, 3508},  // as A4
      {"15", 2480, 3508},  // as A4
      {"26", 1240, 1748},  // 105 x 148 mm: 1240.2 x 1748.0
  };
  LowEndScannerOptions options;
  options.flatbedMedia = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 14, 15, 26, 11};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.code);
    const LowEndRequest request = requestOf(sized(row.code, "300"), options);
    EXPECT_EQ(request.width, row.width);
    EXPECT_EQ(request.height, row.height);
  }
  EXPECT_EQ(wrongWith(sized("11", "300"), options), "'mediaSize' is 11, whose size is unknown");
}

TEST(LowEndRequest, EverythingElseIsRefusedInWords) {
  struct Row {
    Fields fields;
    const char* wrong;
  };
  const Fields color = colorFields();
  const Row rows[] = {
      {with(color, "colour", "1"), "there is no field 'colour'"},
      {without(color, "name"), "'name' is missing"},
      {with(color, "name", "3"), "'name' must be a text"},
      {without(color, "resolution"), "'resolution' is missing"},
      {with(color, "resolution", "\"75\""), "'resolution' must be a whole number"},
      {with(color, "resolution", "75.0"), "'resolution' must be a whole number"},
      {with(color, "resolution", "true"), "'resolution' must be a whole number"},
      {with(color, "resolution", "null"), "'resolution' must be a whole number"},
      {with(color, "resolution", "[75]"), "'resolution' must be a whole number"},
      {with(color, "resolution", "1200"),
       "'resolution' is 1200; allowed is 75, 100, 150, 200, 300, 400, 600"},
      {with(color, "resolution", "-75"),
       "'resolution' is -75; allowed is 75, 100, 150, 200, 300, 400, 600"},
      {with(color, "resolution", "99999999999999999999"), "'resolution' must be a whole number"},
      {with(color, "resolution", "18446744073709551615"),
       "'resolution' is 2147483647; allowed is 75, 100, 150, 200, 300, 400, 600"},
      {with(color, "resolution", "-9223372036854775808"),
       "'resolution' is -2147483647; allowed is 75, 100, 150, 200, 300, 400, 600"},
      {without(color, "imageComposition"), "'imageComposition' is missing"},
      {with(color, "imageComposition", "0"), "'imageComposition' is 0; allowed is 1, 2, 3"},
      {with(color, "imageComposition", "1"), "'fileFormat' is 1; allowed is 0"},
      {without(color, "fileFormat"), "'fileFormat' is missing"},
      {with(color, "fileFormat", "0"), "'fileFormat' is 0; allowed is 1"},
      {without(color, "compression"), "'compression' is missing"},
      {with(color, "compression", "0"), "'compression' is 0; allowed is 1"},
      {with(bilevelFields(), "compression", "1"), "'compression' does not go with black and white"},
      {without(color, "scanDuplex"), "'scanDuplex' is missing"},
      {with(color, "scanDuplex", "3"), "'scanDuplex' is 3; allowed is 0, 1, 2"},
      {without(color, "scanSource"), "'scanSource' is missing"},
      {with(color, "scanSource", "1"), "'scanSource' is 1; allowed is 0, 7"},
      {with(color, "scanSource", "0"), "the feeder is empty"},
      {without(color, "mediaSize"), "'mediaSize' is missing"},
      {with(color, "mediaSize", "3"), "'mediaSize' is 3; allowed is 0, 4, 5, 7, 10, 26, 20"},
      {without(color, "orientation"), "'orientation' is missing"},
      {with(color, "orientation", "1"), "'orientation' is 1; allowed is 0"},
      {with(color, "mediaSize", "4"), "'offsetX' does not go with a media code"},
      {without(with(color, "mediaSize", "4"), "offsetX"),
       "'offsetY' does not go with a media code"},
      {with(sized("4", "75"), "customWidth", "1"), "'customWidth' does not go with a media code"},
      {with(sized("4", "75"), "customHeight", "1"), "'customHeight' does not go with a media code"},
      {without(color, "offsetX"), "'offsetX' is missing"},
      {with(color, "offsetX", "5"), "'offsetX' is 5; allowed is 0"},
      {with(color, "offsetY", "-5"), "'offsetY' is -5; allowed is 0"},
      {without(color, "customWidth"), "'customWidth' is missing"},
      {with(color, "customHeight", "1.5"), "'customHeight' must be a whole number"},
      {without(color, "darkness"), "'darkness' is missing"},
      {with(color, "darkness", "101"), "'darkness' is 101; allowed is -100 to 100"},
      {with(color, "darkness", "-101"), "'darkness' is -101; allowed is -100 to 100"},
      {without(color, "contrast"), "'contrast' is missing"},
      {with(color, "contrast", "101"), "'contrast' is 101; allowed is -100 to 100"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(jsonOf(row.fields));
    EXPECT_EQ(wrongWith(row.fields), row.wrong);
  }
}

TEST(LowEndRequest, WhatIsNoJsonAndWhatIsNoObjectAreToldApart) {
  for (const char* text : {"", "{", "{}x", "{\"name\":}", "// {}", "\xFF"}) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(readLowEndRequest(text, {}).isJson);
  }
  for (const char* text : {"[]", "null", "7", "\"text\""}) {
    SCOPED_TRACE(text);
    EXPECT_TRUE(readLowEndRequest(text, {}).isJson);
    EXPECT_EQ(readLowEndRequest(text, {}).wrong, "the request must be an object");
  }
}

TEST(LowEndRequest, TheFeederHasItsOwnMediaAndConditions) {
  const Fields fromFeeder = with(sized("14", "75"), "scanSource", "0");
  EXPECT_TRUE(requestOf(fromFeeder, loadedFeeder()).fromFeeder);
  EXPECT_EQ(wrongWith(sized("14", "75")), "'mediaSize' is 14; allowed is 0, 4, 5, 7, 10, 26, 20");
  LowEndScannerOptions none;
  none.feederInstalled = false;
  EXPECT_EQ(wrongWith(fromFeeder, none), "'scanSource' is 0 and there is no feeder; give 7");
  LowEndScannerOptions empty = loadedFeeder();
  empty.sheets = 0;
  EXPECT_EQ(wrongWith(fromFeeder, empty), "the feeder is empty");
}

std::string widthWrong(int dots, const LowEndScannerOptions& options,
                       const std::string& resolution) {
  return wrongWith(
      with(with(colorFields(), "customWidth", std::to_string(dots)), "resolution", resolution),
      options);
}

TEST(LowEndRequest, CustomSizesLieWithinTheLimitsGiveOrTakeADot) {
  // 300 to 2550 units of 1/300 inch: 1 to 8.5 inches, at 75 dpi 75 to 637 (.5) dots.
  const LowEndScannerOptions options;
  EXPECT_EQ(widthWrong(73, options, "75"), "'customWidth' is 73; allowed is 74 to 638");
  EXPECT_EQ(widthWrong(74, options, "75"), "");
  EXPECT_EQ(widthWrong(638, options, "75"), "");
  EXPECT_EQ(widthWrong(639, options, "75"), "'customWidth' is 639; allowed is 74 to 638");
}

TEST(LowEndRequest, TheLeastSizeIsRoundedDownToATenthOfAnInch) {
  // 349 units of 1/300 inch are 1.163 inches; a host makes 1.1 of them, which is 110 dots.
  LowEndScannerOptions options;
  options.flatbedLimits = {349, 100, 2550, 3510};
  EXPECT_EQ(widthWrong(109, options, "100"), "");
  EXPECT_EQ(widthWrong(108, options, "100"), "'customWidth' is 108; allowed is 109 to 851");
}

TEST(LowEndRequest, HeightsHaveTheirOwnLimits) {
  const Fields tall = with(colorFields(), "customHeight", "879");
  EXPECT_EQ(wrongWith(tall), "'customHeight' is 879; allowed is 74 to 878");
}

TEST(LowEndRequest, LimitsOfNothingStillNeedADot) {
  LowEndScannerOptions options;
  options.flatbedLimits = {0, 0, 2550, 3510};
  EXPECT_EQ(widthWrong(0, options, "75"), "'customWidth' is 0; allowed is 1 to 638");
  EXPECT_EQ(widthWrong(1, options, "75"), "");
}

TEST(LowEndRequest, RangesAndResolutionsAreTheOptions) {
  LowEndScannerOptions options;
  options.darkness = {1, 9, 5};
  options.contrast = {-2, 2, 0};
  options.resolutions = {75};
  const Fields fields = with(colorFields(), "darkness", "9");
  EXPECT_EQ(wrongWith(fields, options), "");
  EXPECT_EQ(wrongWith(with(fields, "darkness", "0"), options),
            "'darkness' is 0; allowed is 1 to 9");
  EXPECT_EQ(wrongWith(with(fields, "contrast", "3"), options),
            "'contrast' is 3; allowed is -2 to 2");
  EXPECT_EQ(wrongWith(with(fields, "resolution", "100"), options),
            "'resolution' is 100; allowed is 75");
  options.resolutions.clear();
  EXPECT_EQ(wrongWith(fields, options), "'resolution' is 75; allowed is nothing");
}

}  // namespace
}  // namespace tvrscn::virtual_device
