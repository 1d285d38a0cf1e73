// The settings line of a store application, and the words for its commands.
#include "store_settings.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "store_words.h"

namespace tvrscn::cli {
namespace {

const std::string kGood =
    "Grayscale,200x200,TwoSided,210,297,1,-80,40,On,1,VID_0A7E&PID_1C5A,A4LEF";

// The good line with another text in one field, counted from 1.
std::string lineWith(std::size_t field, const std::string& text) {
  std::size_t at = 0;
  for (std::size_t i = 1; i < field; ++i)
    at = kGood.find(',', at) + 1;
  std::string line = kGood;
  return line.replace(at, kGood.find(',', at) - at, text);
}

TEST(StoreSettings, GoodLinesHaveNoProblem) {
  for (const std::string& content :
       {kGood, kGood + "\n", kGood + "\r\n", kGood + "\nanything", kGood + ",a thirteenth field",
        settingsTemplate("VID_0A7E&PID_1C5A&MI_02"), lineWith(7, "-1020"), lineWith(8, "400"),
        lineWith(9, "Off"), lineWith(9, "medium"), lineWith(4, "2000"), lineWith(12, "Custom")}) {
    EXPECT_EQ(settingsProblems(content), std::vector<std::string>{}) << content;
  }
}

TEST(StoreSettings, ABadFieldIsNamedWithWhatItHoldsAndWhatIsAllowed) {
  const struct {
    std::size_t field;
    const char* text;
    const char* problem;
  } rows[] = {
      {1, "Color", "field 1 (colour) is 'Color'; write FullColor, Grayscale or BlackAndWhite"},
      {1, "fullcolor",
       "field 1 (colour) is 'fullcolor'; write FullColor, Grayscale or BlackAndWhite"},
      {2, "200",
       "field 2 (resolution) is '200'; write 75x75, 100x100, 150x150, 200x200, 300x300, 400x400 "
       "or 600x600"},
      {3, "Both", "field 3 (sides) is 'Both'; write OneSided, TwoSided or SecondSideRotation"},
      {4, "210mm", "field 4 (width) is '210mm'; write whole millimetres from 1 to 2000"},
      {4, "0", "field 4 (width) is '0'; write whole millimetres from 1 to 2000"},
      {5, "2001", "field 5 (height) is '2001'; write whole millimetres from 1 to 2000"},
      {5, " 297", "field 5 (height) is ' 297'; write whole millimetres from 1 to 2000"},
      {6, "2", "field 6 (paper source) is '2'; write 0 for the flatbed or 1 for the feeder"},
      {7, "bright",
       "field 7 (brightness) is 'bright'; write a whole number from -1020 (white) to 1020 "
       "(black)"},
      {8, "401",
       "field 8 (contrast) is '401'; write a whole number from -400 (flat grey) to 400 (hardest)"},
      {8, "99999999999",
       "field 8 (contrast) is '99999999999'; write a whole number from -400 (flat grey) to 400 "
       "(hardest)"},
      {9, "off", "field 9 (background removal) is 'off'; write Off, or On"},
      {10, "one", "field 10 (page limit) is 'one'; write 1 for one page, or 0 for all"},
      {11, "vid_1",
       "field 11 (hardware id) is 'vid_1'; write it in upper case, as tvrscan "
       "devices does"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(settingsProblems(lineWith(row.field, row.text)),
              std::vector<std::string>{row.problem});
}

TEST(StoreSettings, EveryBadFieldAndEveryMissingOneIsNamed) {
  const auto problems = settingsProblems("FullColor,300,OneSided,210,x,0,0,0,Off,0");
  ASSERT_EQ(problems.size(), 4U);
  EXPECT_TRUE(problems[0].starts_with("field 2 (resolution)"));
  EXPECT_TRUE(problems[1].starts_with("field 5 (height)"));
  EXPECT_TRUE(problems[2].starts_with("field 11 (hardware id) is missing"));
  EXPECT_TRUE(problems[3].starts_with("field 12 (media) is missing"));
}

TEST(StoreSettings, ALineThatIsReadOtherwiseThanItLooksIsOneProblem) {
  const struct {
    std::string content;
    const char* words;
  } rows[] = {
      {"", "the first line is empty"},
      {"\n" + kGood, "the first line is empty"},
      {lineWith(5, ""), "a field is empty"},
      {"," + kGood, "a field is empty"},
      {"\xEF\xBB\xBF" + kGood, "byte order mark"},
      {std::string("F\0u\0", 4), "zero byte"},
      {kGood + std::string(512 - kGood.size(), 'x'), "the line has 512 characters"},
  };
  for (const auto& row : rows) {
    const auto problems = settingsProblems(row.content);
    ASSERT_EQ(problems.size(), 1U) << row.words;
    EXPECT_NE(problems[0].find(row.words), std::string::npos) << problems[0];
  }
  EXPECT_TRUE(settingsProblems(kGood + std::string(511 - kGood.size(), 'x')).empty());
}

TEST(StoreSettings, TextOfAFileReachesNoTerminal) {
  EXPECT_EQ(settingsProblems(lineWith(1, "\x1B[2J")).at(0).find('\x1B'), std::string::npos);
}

TEST(StoreSettings, HardwareIdIsTheEleventhField) {
  EXPECT_EQ(settingsHardwareId(kGood), "VID_0A7E&PID_1C5A");
  EXPECT_EQ(settingsHardwareId("FullColor"), "");
}

TEST(StoreCommands, AreKnownByWordAndByCode) {
  const struct {
    const char* word;
    int code;
  } rows[] = {
      {"scan", 0},
      {"Scan", 0},
      {"0", 0},
      {"cancel", 1},
      {"1", 1},
      {"read", 40},
      {"0x28", 40},
      {"mode-sense", 90},
      {"90", 90},
      {"wake-up", 195},
      {"0XC3", 195},
      {"start", 27},
      {"initialize", 7},
      {"inquiry", 18},
      {"reserve", 22},
      {"release", 23},
      {"window", 36},
      {"ready", 193},
      {"block-header", 194},
      {"mode-select", 85},
  };
  for (const auto& row : rows)
    EXPECT_EQ(parseStoreCommand(row.word), row.code) << row.word;
  for (const char* word : {"", "999", "2", "-1", "0x", "28x", "scans", "0x1C3"})
    EXPECT_FALSE(parseStoreCommand(word).has_value()) << word;
}

}  // namespace
}  // namespace tvrscn::cli
