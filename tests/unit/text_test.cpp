// Narrowing, widening, and the reading of whole numbers.
#include "usb/text.h"

#include <climits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using tvrscn::narrow;
using tvrscn::splitFields;
using tvrscn::toInt;
using tvrscn::widen;

TEST(Narrow, KeepsTheLowByteOfEachCharacter) {
  EXPECT_EQ(narrow(L""), "");
  EXPECT_EQ(narrow(L"abc"), "abc");
  EXPECT_EQ(narrow(L"\u00E4"), "\xE4");
  EXPECT_EQ(narrow(L"\u0141\u4E2D"), "A\x2D");
  EXPECT_EQ(narrow(std::wstring(L"a\0b", 3)), std::string("a\0b", 3));
}

TEST(Widen, MakesOneCharacterOfEachByte) {
  EXPECT_EQ(widen(""), L"");
  EXPECT_EQ(widen(".JPG"), L".JPG");
  EXPECT_EQ(widen("\xE4\xFF"), L"\u00E4\u00FF");
  EXPECT_EQ(widen(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
}

TEST(ToInt, ReadsTheNumberAtTheStart) {
  const struct {
    const char* text;
    int value;
  } kCases[] = {
      {"0", 0},
      {"10", 10},
      {"-10", -10},
      {"+7", 7},
      {" \t\n42", 42},
      {"12abc", 12},
      {"3.9", 3},
      {"007", 7},
      {"0x10", 0},
      {"5 6", 5},
      {"\v\f\r8", 8},
      {"-0", 0},
      {"2147483647", INT_MAX},
      {"-2147483648", INT_MIN},
      {"00000000000000000000000012", 12},
  };
  for (const auto& row : kCases)
    EXPECT_EQ(toInt(row.text), row.value) << row.text;
}

TEST(ToInt, TextWithoutDigitsIsAnInvalidArgument) {
  for (const char* text : {"", " ", "abc", "-", "+", "--1", "+-1", "- 1", ".5"}) {
    try {
      toInt(text);
      ADD_FAILURE() << "accepted: " << text;
    } catch (const std::invalid_argument& error) {
      EXPECT_STREQ(error.what(), "invalid stoi argument") << text;
    }
  }
}

TEST(ToInt, NumberBeyondThirtyTwoBitsIsOutOfRange) {
  for (const char* text : {"2147483648", "-2147483649", "99999999999999999999999", "4294967296"}) {
    try {
      toInt(text);
      ADD_FAILURE() << "accepted: " << text;
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "stoi argument out of range") << text;
    }
  }
}

TEST(SplitFields, CommasInSuccessionCountAsOne) {
  using Fields = std::vector<std::string>;
  const struct {
    std::string_view line;
    Fields fields;
  } kCases[] = {
      {"", {}},
      {",", {}},
      {",,,", {}},
      {"a", {"a"}},
      {",a", {"a"}},
      {"a,", {"a"}},
      {"a,b", {"a", "b"}},
      {",,a,,,b,,", {"a", "b"}},
      {" a , b", {" a ", " b"}},
      {" ", {" "}},
      {"a;b\tc\n,\xE4", {"a;b\tc\n", "\xE4"}},
      {std::string_view("a\0b,c", 5), {std::string("a\0b", 3), "c"}},
  };
  for (const auto& row : kCases)
    EXPECT_EQ(splitFields(row.line, 100), row.fields) << row.line;
}

TEST(SplitFields, NothingIsSplitOffBehindTheMost) {
  using Fields = std::vector<std::string>;
  EXPECT_EQ(splitFields("a,b,c", 0), Fields{});
  EXPECT_EQ(splitFields("a,b,c", 1), Fields{"a"});
  EXPECT_EQ(splitFields("a,b,c", 2), (Fields{"a", "b"}));
  EXPECT_EQ(splitFields("a,b,c", 3), (Fields{"a", "b", "c"}));
  EXPECT_EQ(splitFields("a,b,c,d", 3), (Fields{"a", "b", "c"}));
  EXPECT_EQ(splitFields("a,b,c,", 3), (Fields{"a", "b", "c"}));
}

}  // namespace
