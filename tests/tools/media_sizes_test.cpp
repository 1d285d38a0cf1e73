#include "media_sizes.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/media_names.h"

namespace tvrscn::cli {
namespace {

struct SizeCase {
  const char* text;
  const char* name;
  int width;
  int height;
};

TEST(PageSize, NamesAliasesAndFreeSizesAreUnderstood) {
  const SizeCase cases[] = {
      {"a4", "ISO_A4SEF", 210, 297},
      {"A4", "ISO_A4SEF", 210, 297},
      {"ISO_A4SEF", "ISO_A4SEF", 210, 297},
      {"iso_a4lef", "ISO_A4LEF", 297, 210},
      {"a4-lef", "ISO_A4LEF", 297, 210},
      {"a3", "ISO_A3SEF", 297, 420},
      {"a6", "ISO_A6SEF", 105, 148},
      {"b5", "ISO_B5SEF", 176, 250},
      {"jisb5", "JIS_B5SEF", 182, 257},
      {"letter", "NA_8.5x11SEF", 216, 279},
      {"legal", "NA_8.5x14SEF", 216, 356},
      {"ledger", "NA_11x17SEF", 279, 432},
      {"tabloid", "NA_11x17SEF", 279, 432},
      {"executive", "NA_7.25x10.5SEF", 184, 267},
      {"statement", "NA_5.5x8.5SEF", 140, 216},
      {"monarch", "NA-3.875X7.5-ENVELOPE-MONARCH", 98, 191},
      {"dl", "ISO-DESIGNATED-LONG-ENVELOPE-DL", 110, 220},
      {"4x6", "NA_4x6SEF", 102, 152},
      {"auto", "Auto", 210, 297},
      {"Mixed", "Mixed", 210, 297},
      {"210x297mm", "ISO_A4SEF", 210, 297},
      {"100x50mm", "Custom", 100, 50},
      {"10x5.5cm", "Custom", 100, 55},
      {"8.5x11in", "NA_8.5x11SEF", 216, 279},
      {"4x6inch", "NA_4x6SEF", 102, 152},
      {"3.3x2IN", "Custom", 84, 51},
      {"1x2000mm", "Custom", 1, 2000},
  };
  for (const SizeCase& row : cases) {
    const auto size = parsePageSize(row.text);
    ASSERT_TRUE(size) << row.text;
    EXPECT_EQ(size->mediaName, row.name) << row.text;
    EXPECT_EQ(size->width, row.width) << row.text;
    EXPECT_EQ(size->height, row.height) << row.text;
  }
}

TEST(PageSize, NonsenseIsRefused) {
  for (const char* bad : {"", "a7", "x", "mm", "xmm", "210x297", "210xmm", "x297mm", "0x10mm",
                          "-1x10mm", "2001x10mm", "1e3x10mm", "10x10x10mm", "1..5x2in", ".x.in",
                          "99999999999x1mm", "0.01x5mm", "10 x 10mm", "nanxinfmm"}) {
    EXPECT_FALSE(parsePageSize(bad)) << bad;
  }
}

TEST(MediaTable, LongEdgeFirstMediaAreWide) {
  for (const MediaSize& media : kMediaSizes) {
    const std::string name = media.name;
    if (name.ends_with("LEF")) {
      EXPECT_GT(media.width, media.height) << name;
    } else {
      EXPECT_LT(media.width, media.height) << name;
    }
  }
}

TEST(MediaTable, LongAndShortEdgeFirstAreTheSameSheet) {
  for (const MediaSize& media : kMediaSizes) {
    std::string name = media.name;
    if (!name.ends_with("LEF")) continue;
    name.replace(name.size() - 3, 3, "SEF");
    const auto turned = std::find_if(kMediaSizes.begin(), kMediaSizes.end(),
                                     [&](const MediaSize& other) { return name == other.name; });
    if (turned == kMediaSizes.end()) continue;
    EXPECT_EQ(turned->width, media.height) << name;
    EXPECT_EQ(turned->height, media.width) << name;
  }
}

TEST(MediaTable, EveryWordMeansOneSize) {
  std::vector<std::string> words = pageSizeWords();
  const std::size_t all = words.size();
  std::sort(words.begin(), words.end());
  words.erase(std::unique(words.begin(), words.end()), words.end());
  EXPECT_EQ(words.size(), all);
  for (const std::string& word : words)
    EXPECT_TRUE(parsePageSize(word)) << word;
}

// The vocabulary of the devices, letter by letter.
TEST(MediaTable, HoldsTheWholeVocabulary) {
  for (const char* name : test::kMediaNames) {
    const auto size = parsePageSize(name);
    ASSERT_TRUE(size) << name;
    EXPECT_EQ(size->mediaName, name);
  }
}

}  // namespace
}  // namespace tvrscn::cli
