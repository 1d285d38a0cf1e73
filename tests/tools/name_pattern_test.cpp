#include "name_pattern.h"

#include <gtest/gtest.h>

namespace tvrscn::cli {
namespace {

NamePattern patternOf(const char* text) {
  std::string problem;
  const auto pattern = NamePattern::parse(text, problem);
  EXPECT_TRUE(pattern) << text << ": " << problem;
  return pattern.value_or(NamePattern());
}

TEST(NamePattern, DefaultIsTheLibrarysOwnName) {
  EXPECT_EQ(NamePattern().fileName(12, ".jpg"), "Image_12.jpg");
}

TEST(NamePattern, NumbersAreFilledUp) {
  EXPECT_EQ(patternOf("page-%03d").fileName(7, ".jpg"), "page-007.jpg");
  EXPECT_EQ(patternOf("page-%03d").fileName(1234, ".jpg"), "page-1234.jpg");
  EXPECT_EQ(patternOf("%d of many").fileName(1, ".jpg"), "1 of many.jpg");
  EXPECT_EQ(patternOf("100%%-%02d").fileName(3, ".jpg"), "100%-03.jpg");
}

TEST(NamePattern, AnExtensionIsNotDoubled) {
  EXPECT_EQ(patternOf("a%d.jpg").fileName(1, ".jpg"), "a1.jpg");
  EXPECT_EQ(patternOf("a%d.JPG").fileName(1, ".jpg"), "a1.jpg");
  EXPECT_EQ(patternOf("a%d.jpeg").fileName(1, ".jpg"), "a1.jpg");
  EXPECT_EQ(patternOf("a%d.TIF").fileName(1, ".jpg"), "a1.jpg");
  EXPECT_EQ(patternOf("a%d.tiff").fileName(1, ".tif"), "a1.tif");
  EXPECT_EQ(patternOf("a%d.png").fileName(1, ".jpg"), "a1.png.jpg");
}

TEST(NamePattern, ExactlyOneNumberIsAsked) {
  for (const char* bad : {"", "page", "%d-%d", "%s", "%", "page%", "%3d", "%-3d", "%0d", "%00d",
                          "%010d", "%ld", "%x", "%n", "%d%", "%*d"}) {
    std::string problem;
    EXPECT_FALSE(NamePattern::parse(bad, problem)) << bad;
    EXPECT_FALSE(problem.empty()) << bad;
  }
}

TEST(NamePattern, NamesStayPlainFileNames) {
  for (const char* bad : {"a/%d", "../%d", "a\\%d", "c:%d", "%d?", "%d\n", ".hidden%d", "%d\x7F"}) {
    std::string problem;
    EXPECT_FALSE(NamePattern::parse(bad, problem)) << bad;
  }
  std::string problem;
  EXPECT_FALSE(NamePattern::parse(std::string(300, 'a') + "%d", problem));
}

TEST(NamePattern, FindsItsNumbersAgain) {
  const NamePattern pattern = patternOf("page-%03d");
  EXPECT_EQ(pattern.numberOf("page-007.jpg"), 7);
  EXPECT_EQ(pattern.numberOf("PAGE-12.JPG"), 12);
  EXPECT_EQ(pattern.numberOf("page-013.tif"), 13);
  for (const char* other : {"page-.jpg", "page-1x.jpg", "page-1.png", "xpage-1.jpg", "page--1.jpg",
                            "page-1234567890.jpg", "", ".jpg"}) {
    EXPECT_EQ(pattern.numberOf(other), 0) << other;
  }
}

}  // namespace
}  // namespace tvrscn::cli
