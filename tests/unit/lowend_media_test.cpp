// The choice of the media code, sizes within the device's limits, values within its ranges.
#include <csignal>
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/lowend_test_peer.h"
#include "tests/support/test_peers.h"
#include "tests/unit/lowend_document_support.h"
#include "tvrscn/lowend_scan_data_source.h"

namespace {

using namespace tvrscn::test;
using Peer = LowEndTestPeer;
using Source = CLowEndUSBScanDataSource;

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

const struct MediaName {
  int code;
  const char* name;
} kMedia[] = {
    {0, "NA_8.5x11SEF"}, {1, "NA_7.25x10.5SEF"}, {2, "NA_8.5x14SEF"},   {3, "ISO_A3SEF"},
    {4, "ISO_A4SEF"},    {5, "ISO_A5SEF"},       {6, "JIS_B4SEF"},      {7, "JIS_B5SEF"},
    {8, "NA_11x17SEF"},  {9, "NA_12x19SEF"},     {10, "NA_5.5x8.5SEF"}, {14, "Auto"},
    {15, "Mixed"},       {26, "ISO_A6SEF"},
};

std::string nameOf(int code) {
  Source source;
  std::string name = "as it was";
  Peer::mediaName(source, code, name);
  return name;
}

TEST(LowEndMedia, CodesHaveTheirNames) {
  for (const MediaName& row : kMedia)
    EXPECT_EQ(nameOf(row.code), row.name);
}

TEST(LowEndMedia, OtherCodesHaveNone) {
  for (const int code : {kLeast, -1, 11, 12, 13, 16, 17,  18,    19,    20,   21,
                         22,     23, 24, 25, 27, 28, 260, 65536, 65540, kMost})
    EXPECT_EQ(nameOf(code), "") << code;
}

constexpr const char* kAllMedia =
    R"({"supportedMediaSizes":{"adf":[0,1,2,3,4,5,6,7,8,9,10,14,15,26],)"
    R"("flatbed":[26,15,14,10,9,8,7,6,5,4,3,2,1,0]}})";

// The code for a media name; 99 where orientation was left alone.
int codeFor(const std::string& capabilities, const std::string& media, int scanSource) {
  Source source;
  source.SetDeviceSupportJSONResponse(capabilities);
  DataSourceTestPeer::mediaSize(source) = media;
  unsigned short size = 77;
  unsigned short orientation = 88;
  Peer::mediaSize(source, scanSource, size, orientation);
  return orientation == 0 ? size : 99;
}

TEST(LowEndMedia, NameThatIsOfferedGivesItsCode) {
  for (const MediaName& row : kMedia) {
    EXPECT_EQ(codeFor(kAllMedia, row.name, 0), row.code) << row.name;
    EXPECT_EQ(codeFor(kAllMedia, row.name, 7), row.code) << row.name;
  }
}

TEST(LowEndMedia, OtherNamesGiveACustomSize) {
  for (const char* media : {"", "ISO_A4LEF", "ISO_A4", "iso_a4sef", "ISO_A4SEF ", "Custom", "20"})
    EXPECT_EQ(codeFor(kAllMedia, media, 0), 20) << media;
}

TEST(LowEndMedia, EverySourceButZeroIsTheFlatbed) {
  const std::string capabilities = R"({"supportedMediaSizes":{"adf":[4],"flatbed":[5]}})";
  EXPECT_EQ(codeFor(capabilities, "ISO_A4SEF", 0), 4);
  EXPECT_EQ(codeFor(capabilities, "ISO_A5SEF", 0), 20);
  for (const int flatbed : {7, 1, -1, kLeast, kMost}) {
    EXPECT_EQ(codeFor(capabilities, "ISO_A5SEF", flatbed), 5) << flatbed;
    EXPECT_EQ(codeFor(capabilities, "ISO_A4SEF", flatbed), 20) << flatbed;
  }
}

TEST(LowEndMedia, WithoutCapabilitiesEveryNameIsACustomSize) {
  for (const char* capabilities :
       {"", "no document", "{}", "[]", R"({"supportedMediaSizes":{}})"}) {
    for (const MediaName& row : kMedia)
      EXPECT_EQ(codeFor(capabilities, row.name, 0), 20) << capabilities << " " << row.name;
  }
}

// The job's media is offered though the reading broke off behind it.
TEST(LowEndMedia, MediaInFrontOfABadElementIsOffered) {
  const std::string capabilities = R"({"supportedMediaSizes":{"adf":[4,"x",5],"flatbed":[4]}})";
  EXPECT_EQ(codeFor(capabilities, "ISO_A4SEF", 0), 4);
  EXPECT_EQ(codeFor(capabilities, "ISO_A5SEF", 0), 20);
  EXPECT_EQ(codeFor(capabilities, "ISO_A4SEF", 7), 20);
}

// Custom sizes.

struct Fit {
  bool consulted;
  int heightDots;
  int widthDots;
};
bool operator==(const Fit& a, const Fit& b) {
  return a.consulted == b.consulted && a.heightDots == b.heightDots && a.widthDots == b.widthDots;
}
std::ostream& operator<<(std::ostream& out, const Fit& fit) {
  return out << (fit.consulted ? "true " : "false ") << fit.heightDots << " x " << fit.widthDots;
}

struct SizeCase {
  double height;
  double width;
  int resolution;
  Fit fit;
};

constexpr int kFeeder = 0;
constexpr int kFlatbed = 7;

Fit fitOf(const std::string& capabilities, double height, double width, int resolution,
          int scanSource) {
  Source source;
  source.SetDeviceSupportJSONResponse(capabilities);
  Fit fit{false, -99, -99};
  fit.consulted = Peer::customSize(source, height, width, resolution, scanSource, fit.heightDots,
                                   fit.widthDots);
  return fit;
}

// Feeder 5.5 to 14 by 4.5 to 8.5 inches, flatbed 2.5 to 11.5 by 1.5 to 8 inches.
const std::string kLimits =
    R"({"basicres":300,"maxAdfHeight":4200,"maxAdfWidth":2550,"minAdfHeight":1650,)"
    R"("minAdfWidth":1350,"maxFbHeight":3450,"maxFbWidth":2400,"minFbHeight":750,)"
    R"("minFbWidth":450})";

TEST(LowEndCustomSize, OfAnUnknownDeviceIsInWholeInches) {
  const SizeCase kCases[] = {
      {11.7, 8.3, 300, {false, 3300, 2400}},
      {0.9, 1.0, 600, {false, 0, 600}},
      {-1.9, -0.9, 100, {false, -100, 0}},
      {1e8, -1e8, 600, {false, kMost, kLeast}},  // beyond an int
      {1e300, std::numeric_limits<double>::infinity(), 75, {false, kMost, kMost}},
      {std::numeric_limits<double>::quiet_NaN(), 1, 75, {false, 0, 75}},
      {3579139, 3579140, 600, {false, 2147483400, kMost}},  // 2147484000 is beyond
  };
  for (const auto& row : kCases) {
    EXPECT_EQ(fitOf("", row.height, row.width, row.resolution, kFeeder), row.fit);
    EXPECT_EQ(fitOf("", row.height, row.width, row.resolution, kFlatbed), row.fit);
    EXPECT_EQ(fitOf("no document", row.height, row.width, row.resolution, kFeeder), row.fit);
  }
}

TEST(LowEndCustomSize, TextThatIsNoDocumentLeavesWholeInches) {
  for (const std::string& text : kNoDocuments)
    EXPECT_EQ(fitOf(text, 11.7, 8.3, 300, kFeeder), (Fit{false, 3300, 2400})) << text.substr(0, 40);
}

TEST(LowEndCustomSize, IsFittedIntoTheLimitsOfTheSource) {
  const struct {
    double height;
    double width;
    int scanSource;
    Fit fit;  // at 300 dpi
  } kCases[] = {
      // within, both ends included
      {11.7, 8.3, kFeeder, {true, 3510, 2490}},
      {5.5, 4.5, kFeeder, {true, 1650, 1350}},
      {14.0, 8.5, kFeeder, {true, 4200, 2550}},
      {11.0, 7.7, kFlatbed, {true, 3300, 2310}},
      {2.5, 1.5, kFlatbed, {true, 750, 450}},
      {11.5, 8.0, kFlatbed, {true, 3450, 2400}},
      // below
      {5.4, 4.4, kFeeder, {true, 1650, 1350}},
      {0.0, -3.0, kFeeder, {true, 1650, 1350}},
      {2.4, 1.4, kFlatbed, {true, 750, 450}},
      // above
      {14.1, 8.6, kFeeder, {true, 4200, 2550}},
      {11.6, 8.1, kFlatbed, {true, 3450, 2400}},
      {1e300, 1e300, 1, {true, 3450, 2400}},
      // each side on its own
      {20.0, 6.0, kFeeder, {true, 4200, 1800}},
      {6.0, 20.0, kFeeder, {true, 1800, 2550}},
      {1.0, 6.0, -1, {true, 750, 1800}},
      {6.0, 1.0, -1, {true, 1800, 450}},
  };
  for (const auto& row : kCases) {
    EXPECT_EQ(fitOf(kLimits, row.height, row.width, 300, row.scanSource), row.fit)
        << row.height << " x " << row.width;
  }
}

TEST(LowEndCustomSize, DotsAreRoundedWithHalvesAwayFromZero) {
  const SizeCase kCases[] = {
      {6.5, 6.1, 75, {true, 488, 458}},       // 487.5, 457.5
      {6.6, 6.7, 75, {true, 495, 503}},       // 495, 502.5
      {6.03, 6.04, 100, {true, 603, 604}},    //
      {6.004, 6.006, 100, {true, 600, 601}},  // 600.4, 600.6
  };
  for (const auto& row : kCases)
    EXPECT_EQ(fitOf(kLimits, row.height, row.width, row.resolution, kFeeder), row.fit);
  const std::string negative =
      R"({"basicres":300,"maxAdfHeight":-450,"maxAdfWidth":-450,"minAdfHeight":-450,)"
      R"("minAdfWidth":-450})";
  EXPECT_EQ(fitOf(negative, 0, 0, 25, kFeeder), (Fit{true, -38, -38}));  // -37.5
}

// At 75 dpi the width is one dot more at the least width of the feeder, one less at the greatest.
TEST(LowEndCustomSize, WidthIsNudgedAt75Dpi) {
  const struct {
    const char* name;
    double width;
    int scanSource;
    int resolution;
    int widthDots;
  } kCases[] = {
      {"feeder, at the minimum", 4.5, kFeeder, 75, 339},  // 337.5
      {"feeder, below the minimum", 4.0, kFeeder, 75, 339},
      {"feeder, within", 6.0, kFeeder, 75, 450},
      {"feeder, at the maximum", 8.5, kFeeder, 75, 637},  // 637.5
      {"feeder, above the maximum", 9.0, kFeeder, 75, 637},
      {"flatbed, at the minimum", 1.5, kFlatbed, 75, 113},  // 112.5
      {"flatbed, below the minimum", 1.0, kFlatbed, 75, 113},
      {"flatbed, within", 6.0, kFlatbed, 75, 450},
      {"flatbed, at the maximum", 8.0, kFlatbed, 75, 599},
      {"flatbed, above the maximum", 9.0, kFlatbed, 75, 599},
      {"feeder, minimum at 100 dpi", 4.5, kFeeder, 100, 450},
      {"feeder, maximum at 150 dpi", 8.5, kFeeder, 150, 1275},
      {"feeder, maximum at 76 dpi", 8.5, kFeeder, 76, 646},
      {"flatbed, maximum at 74 dpi", 8.0, kFlatbed, 74, 592},
  };
  for (const auto& row : kCases) {
    EXPECT_EQ(fitOf(kLimits, 6, row.width, row.resolution, row.scanSource),
              (Fit{true, 6 * row.resolution, row.widthDots}))
        << row.name;
  }
}

TEST(LowEndCustomSize, HeightIsNeverNudged) {
  EXPECT_EQ(fitOf(kLimits, 5.5, 6, 75, kFeeder), (Fit{true, 413, 450}));  // 412.5
  EXPECT_EQ(fitOf(kLimits, 5, 6, 75, kFeeder), (Fit{true, 413, 450}));
  EXPECT_EQ(fitOf(kLimits, 14, 6, 75, kFeeder), (Fit{true, 1050, 450}));
  EXPECT_EQ(fitOf(kLimits, 15, 6, 75, kFlatbed), (Fit{true, 863, 450}));  // 862.5
}

TEST(LowEndCustomSize, OneWidthAloneIsNudgedBothWays) {
  const std::string one =
      R"({"basicres":300,"maxAdfHeight":4200,"maxAdfWidth":2550,"minAdfHeight":0,)"
      R"("minAdfWidth":2550,"maxFbHeight":4200,"maxFbWidth":2550,"minFbHeight":0,)"
      R"("minFbWidth":2550})";
  EXPECT_EQ(fitOf(one, 1, 8.5, 75, kFeeder), (Fit{true, 75, 638}));
  EXPECT_EQ(fitOf(one, 1, 8.5, 75, kFlatbed), (Fit{true, 75, 637}));
  EXPECT_EQ(fitOf(one, 1, 8, 75, kFeeder), (Fit{true, 75, 639}));
  EXPECT_EQ(fitOf(one, 1, 9, 75, kFeeder), (Fit{true, 75, 637}));
}

TEST(LowEndCustomSize, MinimumAboveMaximumIsAskedFirst) {
  const std::string crossed =
      R"({"basicres":10,"maxAdfHeight":45,"maxAdfWidth":45,"minAdfHeight":85,"minAdfWidth":85})";
  EXPECT_EQ(fitOf(crossed, 6, 6, 100, kFeeder), (Fit{true, 850, 850}));
  EXPECT_EQ(fitOf(crossed, 4, 4, 100, kFeeder), (Fit{true, 850, 850}));
  EXPECT_EQ(fitOf(crossed, 9, 9, 100, kFeeder), (Fit{true, 450, 450}));
  EXPECT_EQ(fitOf(crossed, 6, 6, 75, kFeeder), (Fit{true, 638, 638}));  // both nudges
}

TEST(LowEndCustomSize, LimitsAreRoundedDownToATenth) {
  const struct {
    const char* unit;
    const char* limit;
    int dots;  // of the limit at 600 dpi
  } kCases[] = {
      {"300", "2480", 4920},  // 8.27
      {"300", "2519", 4980},  // 8.397
      {"300", "2520", 5040},  // 8.4
      {"300", "-100", -240},  // -0.33
      {"1", "8", 4800},
      {"1000", "8299", 4920},
      // 4.19999999, which single precision holds as 4.2
      {"100000000", "419999999", 2520},
      // fractions are cut before the division
      {"10.9", "82.9", 4920},
      {"true", "8", 4800},
      {"4294967306", "4294967378", 4920},  // 2^32 + 10, 2^32 + 82
      {"-10", "82", -4920},
  };
  for (const auto& row : kCases) {
    const std::string document =
        filled(R"({"basicres":@,"maxFbHeight":@,"maxFbWidth":@,"minFbHeight":@,"minFbWidth":@})",
               {row.unit, row.limit});
    for (const double size : {-50.0, 50.0}) {
      EXPECT_EQ(fitOf(document, size, size, 600, kFlatbed), (Fit{true, row.dots, row.dots}))
          << document;
    }
  }
}

constexpr const char* kFeederKeys[] = {"maxAdfHeight", "maxAdfWidth", "minAdfWidth",
                                       "minAdfHeight"};
constexpr const char* kFlatbedKeys[] = {"maxFbHeight", "maxFbWidth", "minFbWidth", "minFbHeight"};

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

// A limit that is missing takes the other three of its source with it.
TEST(LowEndCustomSize, AllLimitsButOneAreNoLimits) {
  for (const char* key : kFeederKeys) {
    const std::string document = replaced(kLimits, key, "other");
    EXPECT_EQ(fitOf(document, 11.7, 8.3, 300, kFeeder), (Fit{true, 0, 0})) << key;
    EXPECT_EQ(fitOf(document, 11.7, 8.3, 75, kFeeder), (Fit{true, 0, -1})) << key;
    EXPECT_EQ(fitOf(document, 0, 0, 75, kFeeder), (Fit{true, 0, 0})) << key;
    EXPECT_EQ(fitOf(document, 20, 20, 300, kFlatbed), (Fit{true, 3450, 2400})) << key;
  }
  for (const char* key : kFlatbedKeys) {
    const std::string document = replaced(kLimits, key, "other");
    EXPECT_EQ(fitOf(document, 11.7, 8.3, 300, kFlatbed), (Fit{true, 0, 0})) << key;
    EXPECT_EQ(fitOf(document, 11.7, 8.3, 75, kFlatbed), (Fit{true, 0, -1})) << key;
    EXPECT_EQ(fitOf(document, 20, 20, 300, kFeeder), (Fit{true, 4200, 2550})) << key;
  }
}

// A missing limit also keeps the others from being read as numbers.
TEST(LowEndCustomSize, IncompleteLimitsAreNotConverted) {
  EXPECT_EQ(fitOf(R"({"basicres":300,"maxAdfHeight":"tall"})", 11.7, 8.3, 300, kFeeder),
            (Fit{true, 0, 0}));
}

TEST(LowEndCustomSize, ValueThatIsNoNumberLeavesWholeInches) {
  const auto withValue = [](const char* key, const std::string& value) {
    const std::string start = std::string("\"") + key + "\":";
    const std::size_t at = kLimits.find(start) + start.size();
    const std::size_t end = kLimits.find_first_of(",}", at);
    return kLimits.substr(0, at) + value + kLimits.substr(end);
  };
  const Fit kWholeInches = {false, 2200, 1600};
  for (const TypedValue& value : kTypedValues) {
    if (value.type == std::string("number") || value.type == std::string("boolean")) continue;
    for (const int scanSource : {kFeeder, kFlatbed}) {
      EXPECT_EQ(fitOf(withValue("basicres", value.text), 11.7, 8.3, 200, scanSource), kWholeInches)
          << value.text;
    }
    for (const char* key : kFeederKeys) {
      const std::string document = withValue(key, value.text);
      EXPECT_EQ(fitOf(document, 11.7, 8.3, 200, kFeeder), kWholeInches) << document;
      EXPECT_TRUE(fitOf(document, 11.7, 8.3, 200, kFlatbed).consulted) << document;
    }
    for (const char* key : kFlatbedKeys) {
      const std::string document = withValue(key, value.text);
      EXPECT_EQ(fitOf(document, 11.7, 8.3, 200, kFlatbed), kWholeInches) << document;
      EXPECT_TRUE(fitOf(document, 11.7, 8.3, 200, kFeeder).consulted) << document;
    }
  }
}

// Zero over zero is no number, and compares with nothing.
TEST(LowEndCustomSize, WithoutUnitAndLimitsWholeInchesStand) {
  for (const char* document :
       {"{}", R"({"basicres":0})", R"({"basicres":false})", R"({"basicres":0.9})", "[]", "null",
        "true", "7", "7.5", "\"7\"", R"(["basicres"])", R"({"maxAdfHeight":4200})"}) {
    for (const int resolution : {75, 300}) {
      EXPECT_EQ(fitOf(document, 11.7, 8.3, resolution, kFeeder),
                (Fit{true, 11 * resolution, 8 * resolution}))
          << document;
    }
  }
}

// A limit over zero is infinite.
TEST(LowEndCustomSize, WithoutUnitLimitsAreInfinite) {
  const struct {
    const char* minimum;
    const char* maximum;
    int resolution;
    Fit fit;  // of 11.7 by 8.3 inches
  } kCases[] = {
      {"1", "2", 300, {true, kMost, kMost}},      // both above everything
      {"1", "2", 75, {true, kMost, kMost}},       // one more does not fit
      {"-2", "-1", 300, {true, kLeast, kLeast}},  // both below everything
      {"-2", "-1", 75, {true, kLeast, kLeast}},   // one less does not fit
      {"-1", "1", 300, {true, 3510, 2490}},       // everything is within
      {"-1", "1", 75, {true, 878, 623}},          // 877.5, 622.5
      {"0", "1", 300, {true, 3300, 2400}},        // no number: whole inches
      {"0", "-1", 300, {true, kLeast, kLeast}},   // above the maximum all the same
      {"1", "0", 300, {true, kMost, kMost}},     {"0", "0", 75, {true, 825, 600}},
  };
  for (const auto& row : kCases) {
    const std::string document =
        filled(R"({"maxAdfHeight":@,"maxAdfWidth":@,"minAdfHeight":@,"minAdfWidth":@})",
               {row.maximum, row.maximum, row.minimum});
    EXPECT_EQ(fitOf(document, 11.7, 8.3, row.resolution, kFeeder), row.fit) << document;
  }
}

TEST(LowEndCustomSize, HugeLimitsAreCutToAnInt) {
  const std::string document =
      R"({"basicres":1,"maxFbHeight":1e300,"maxFbWidth":99999999999999999999,"minFbHeight":1e9,)"
      R"("minFbWidth":0})";
  EXPECT_EQ(fitOf(document, 1, 1e8, 600, kFlatbed), (Fit{true, kMost, kMost}));
  EXPECT_EQ(fitOf(document, 1, 1, 600, kFlatbed), (Fit{true, kMost, 600}));
}

// Values within a range.

int matching(int value, int minimum, int maximum, int normal, int unused = 0) {
  Source source;
  return Peer::matchingValue(source, value, minimum, maximum, normal, unused);
}

TEST(LowEndMatchingValue, ScalesAPercentageIntoTheRange) {
  const struct {
    const char* name;
    int value;
    int minimum;
    int maximum;
    int normal;
    int expected;
  } kCases[] = {
      {"nothing to scale", 0, 1, 9, 5, 5},
      {"nothing to scale, normal outside", 0, 1, 9, 50, 50},
      {"half way up", 50, 1, 9, 5, 7},
      {"all the way down", -100, 1, 9, 5, 1},
      {"all the way up", 100, 1, 9, 5, 9},
      {"less than a step", 24, 1, 9, 5, 5},
      {"less than a step down", -24, 1, 9, 5, 5},
      {"one step", 25, 1, 9, 5, 6},
      {"step cut: 100 by 3 is 33", 99, 0, 3, 0, 3},
      {"cut at the maximum", 1000, 1, 9, 5, 9},
      {"cut at the minimum", -1000, 1, 9, 5, 1},
      {"towards the minimum: 50 by -10", 50, 0, 10, 10, 5},
      {"towards the minimum, downwards value", -50, 0, 10, 10, 10},
      {"towards the minimum, step cut: 100 by -60 is -1", 20, -50, 10, 10, -10},
      {"maximum below normal", 100, 0, 3, 5, 3},
      {"no span", 50, 5, 5, 5, 5},
      {"no span: minimum and maximum at normal", -50, 7, 7, 7, 7},
      {"span of 100", 37, 0, 100, 0, 37},
      {"span of -100", 37, 0, 100, 100, 63},
      {"span of 51: step 1", 60, 0, 51, 0, 51},
      {"least value over -1", kLeast, 0, 100, 100, 100},
      {"least value over 1", kLeast, 0, 100, 0, 0},
      {"sum beyond an int", kMost, kLeast, kMost, kMost - 100, kMost},
      {"sum below an int", kLeast, kLeast, kLeast + 100, kLeast, kLeast},
      {"minimum above maximum", 50, 9, 1, 5, 9},
  };
  for (const auto& row : kCases) {
    for (const int unused : {0, 1, kLeast}) {
      EXPECT_EQ(matching(row.value, row.minimum, row.maximum, row.normal, unused), row.expected)
          << row.name;
    }
  }
}

// A caller's mistake ends the process; where there is nothing to divide, there is no mistake.
TEST(LowEndMatchingValueDeathTest, RangeThatReachesTooFar) {
  const struct {
    int minimum;
    int maximum;
    int normal;
  } kCases[] = {
      {0, 101, 0},  {0, 101, 101},           {0, 255, 128 - 1},
      {-200, 0, 0}, {kLeast, kMost, kLeast}, {kLeast, kMost, kMost},
      {0, -101, 0},
  };
  for (const auto& row : kCases) {
    EXPECT_EXIT(matching(1, row.minimum, row.maximum, row.normal),
                ::testing::KilledBySignal(SIGABRT), "at most 100 on each side of the normal value")
        << row.minimum << " " << row.maximum << " " << row.normal;
    EXPECT_EQ(matching(0, row.minimum, row.maximum, row.normal), row.normal);
  }
}

}  // namespace
