// What the device says of itself: the capability document's media, the status document, and the
// numbers and texts of documents.
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "family_lowend/lowend_document.h"
#include "tests/support/lowend_test_peer.h"
#include "tests/support/test_peers.h"
#include "tests/unit/lowend_document_support.h"
#include "tvrscn/lowend_scan_data_source.h"

namespace {

using namespace tvrscn::test;
using nlohmann::json;
using Peer = LowEndTestPeer;
using Sizes = Peer::Sizes;
using Source = CLowEndUSBScanDataSource;

// The outputs of both operations, all set to the same value before.
struct Status {
  explicit Status(bool before)
      : busy(before),
        ready(before),
        flatbedCoverOpen(before),
        jamPresent(before),
        installed(before),
        adfCoverOpen(before),
        adfPaperLoaded(before) {}

  bool scanner(const std::string& document) {
    return Source().ParseScannerStatus(document, busy, ready, flatbedCoverOpen);
  }
  bool feeder(const std::string& document) {
    return Source().ParseADFStatus(document, jamPresent, installed, adfCoverOpen, adfPaperLoaded);
  }
  bool parse(const std::string& section, const std::string& document) {
    return section == "status" ? scanner(document) : feeder(document);
  }

  // The outputs that differ from what they were, in the order of the declarations.
  std::string changed(bool before) const {
    const struct {
      bool value;
      const char* name;
    } kOutputs[] = {
        {busy, "busy"},
        {ready, "ready"},
        {flatbedCoverOpen, "flatbedCoverOpen"},
        {jamPresent, "jamPresent"},
        {installed, "installed"},
        {adfCoverOpen, "adfCoverOpen"},
        {adfPaperLoaded, "adfPaperLoaded"},
    };
    std::string names;
    for (const auto& output : kOutputs) {
      if (output.value != before) names += std::string(names.empty() ? "" : " ") + output.name;
    }
    return names;
  }

  bool busy;
  bool ready;
  bool flatbedCoverOpen;
  bool jamPresent;
  bool installed;
  bool adfCoverOpen;
  bool adfPaperLoaded;
};

const struct {
  const char* section;
  const char* key;
} kStatusKeys[] = {
    {"status", "busy"},
    {"status", "ready"},
    {"status", "flatbedCoverOpen"},
    {"adfStatus", "installed"},
    {"adfStatus", "jamPresent"},
    {"adfStatus", "adfCoverOpen"},
    {"adfStatus", "adfPaperLoaded"},
};

std::string statusDocument(const std::string& section, const std::string& content) {
  return "{\"" + section + "\":" + content + "}";
}
std::string statusDocument(const std::string& section, const std::string& key,
                           const std::string& value) {
  return statusDocument(section, "{\"" + key + "\":" + value + "}");
}

TEST(LowEndStatus, EachKeySetsItsOutputAndNoOther) {
  for (const auto& row : kStatusKeys) {
    Status set(false);
    EXPECT_TRUE(set.parse(row.section, statusDocument(row.section, row.key, "true")));
    EXPECT_EQ(set.changed(false), row.key);
    Status cleared(true);
    EXPECT_TRUE(cleared.parse(row.section, statusDocument(row.section, row.key, "false")));
    EXPECT_EQ(cleared.changed(true), row.key);
  }
}

TEST(LowEndStatus, WholeDocumentIsRead) {
  const std::string document =
      R"({"status":{"busy":false,"ready":true,"flatbedCoverOpen":true},)"
      R"("adfStatus":{"installed":true,"jamPresent":false,"adfCoverOpen":false,)"
      R"("adfPaperLoaded":true}})";
  Status status(false);
  EXPECT_TRUE(status.scanner(document));
  EXPECT_EQ(status.changed(false), "ready flatbedCoverOpen");
  EXPECT_TRUE(status.feeder(document));
  EXPECT_EQ(status.changed(false), "ready flatbedCoverOpen installed adfPaperLoaded");
}

TEST(LowEndStatus, ValueThatIsNoBooleanRaises) {
  for (const auto& row : kStatusKeys) {
    for (const TypedValue& value : kTypedValues) {
      if (value.type == std::string("boolean")) continue;
      Status status(false);
      EXPECT_EQ(
          thrownBy(
              [&] { status.parse(row.section, statusDocument(row.section, row.key, value.text)); }),
          std::string("[json.exception.type_error.302] type must be boolean, but is ") + value.type)
          << row.key << " " << value.text;
      EXPECT_EQ(status.changed(false), "");
    }
  }
}

TEST(LowEndStatus, InstalledAsANumberRaisesTheTypeError) {
  Status status(false);
  EXPECT_EQ(thrownBy([&] { status.feeder(R"({"adfStatus":{"installed":1}})"); }),
            "[json.exception.type_error.302] type must be boolean, but is number");
}

TEST(LowEndStatus, OutputsReadBeforeABadValueStay) {
  Status before(false);
  EXPECT_TRUE(
      throwsNumber(kTypeError, [&] { before.scanner(R"({"status":{"ready":1,"busy":true}})"); }));
  EXPECT_EQ(before.changed(false), "busy");
  Status behind(false);
  EXPECT_TRUE(
      throwsNumber(kTypeError, [&] { behind.scanner(R"({"status":{"ready":true,"busy":1}})"); }));
  EXPECT_EQ(behind.changed(false), "");
}

TEST(LowEndStatus, KeysCountWhenTheyContainAWord) {
  const struct {
    const char* section;
    const char* key;
    const char* output;
  } kCases[] = {
      {"status", "scannerbusy", "busy"},
      {"status", "busyNow", "busy"},
      {"status", "notready", "ready"},
      {"status", "the flatbedCoverOpen flag", "flatbedCoverOpen"},
      {"adfStatus", "uninstalled", "installed"},
      {"adfStatus", "jamPresent2", "jamPresent"},
      {"adfStatus", "xadfCoverOpen", "adfCoverOpen"},
      {"adfStatus", "adfPaperLoadedNow", "adfPaperLoaded"},
      // Case counts.
      {"status", "scannerBusy", ""},
      {"status", "Ready", ""},
      {"status", "FlatbedCoverOpen", ""},
      {"status", "flatbedcoveropen", ""},
      {"adfStatus", "Installed", ""},
      {"adfStatus", "JamPresent", ""},
      // Part of a word does not.
      {"status", "bus", ""},
      {"status", "", ""},
      {"status", "coverOpen", ""},
      {"adfStatus", "adfPaper", ""},
      // Nor does a word of the other section.
      {"status", "installed", ""},
      {"status", "adfCoverOpen", ""},
      {"adfStatus", "busy", ""},
      {"adfStatus", "ready", ""},
      {"adfStatus", "flatbedCoverOpen", ""},
  };
  for (const auto& row : kCases) {
    Status status(false);
    EXPECT_TRUE(status.parse(row.section, statusDocument(row.section, row.key, "true"))) << row.key;
    EXPECT_EQ(status.changed(false), row.output) << row.key;
  }
}

// In each section, of two words in one key the one that stands first in this order.
TEST(LowEndStatus, FirstWordOfAKeyWins) {
  const struct {
    const char* section;
    const char* key;
    const char* output;
  } kCases[] = {
      {"status", "ready flatbedCoverOpen busy", "busy"},
      {"status", "ready flatbedCoverOpen", "flatbedCoverOpen"},
      {"adfStatus", "adfPaperLoaded adfCoverOpen jamPresent installed", "installed"},
      {"adfStatus", "adfPaperLoaded adfCoverOpen jamPresent", "jamPresent"},
      {"adfStatus", "adfPaperLoaded adfCoverOpen", "adfCoverOpen"},
  };
  for (const auto& row : kCases) {
    Status status(false);
    EXPECT_TRUE(status.parse(row.section, statusDocument(row.section, row.key, "true")));
    EXPECT_EQ(status.changed(false), row.output) << row.key;
  }
}

TEST(LowEndStatus, KeysAreReadInAscendingOrder) {
  Status readyLast(false);
  EXPECT_TRUE(readyLast.scanner(R"({"status":{"ready":true,"aready":false}})"));
  EXPECT_TRUE(readyLast.ready);
  Status zreadyLast(false);
  EXPECT_TRUE(zreadyLast.scanner(R"({"status":{"zready":false,"ready":true}})"));
  EXPECT_FALSE(zreadyLast.ready);
}

TEST(LowEndStatus, UnknownKeysAreSkippedWhateverTheyHold) {
  for (const TypedValue& value : kTypedValues) {
    for (const char* section : {"status", "adfStatus"}) {
      Status status(false);
      EXPECT_TRUE(status.parse(section, statusDocument(section, "level", value.text)));
      EXPECT_EQ(status.changed(false), "") << value.text;
    }
  }
}

TEST(LowEndStatus, EmptySectionIsEnough) {
  for (const bool before : {false, true}) {
    Status status(before);
    EXPECT_TRUE(status.scanner(R"({"status":{}})"));
    EXPECT_TRUE(status.feeder(R"({"adfStatus":{}})"));
    EXPECT_EQ(status.changed(before), "");
  }
}

TEST(LowEndStatus, SectionThatIsNoObjectIsWalkedWithoutAMatch) {
  for (const TypedValue& value : kTypedValues) {
    if (value.type == std::string("object")) continue;
    for (const char* section : {"status", "adfStatus"}) {
      Status status(false);
      EXPECT_TRUE(status.parse(section, statusDocument(section, value.text))) << value.text;
      EXPECT_EQ(status.changed(false), "") << value.text;
    }
  }
}

TEST(LowEndStatus, MissingSectionIsFalse) {
  const char* const kDocuments[] = {
      "{}",
      R"({"Status":{"busy":true}})",
      R"({"state":{"busy":true}})",
      R"({"busy":true,"installed":true})",
      "null",
      "true",
      "7",
      "7.5",
      R"("status")",
      R"(["status","adfStatus"])",
      R"([{"status":{"busy":true}}])",
  };
  for (const char* document : kDocuments) {
    Status status(false);
    EXPECT_FALSE(status.scanner(document)) << document;
    EXPECT_FALSE(status.feeder(document)) << document;
    EXPECT_EQ(status.changed(false), "") << document;
  }
  Status status(false);
  EXPECT_FALSE(status.feeder(R"({"status":{"busy":true}})"));
  EXPECT_FALSE(status.scanner(R"({"adfStatus":{"installed":true}})"));
}

TEST(LowEndStatus, TextThatIsNoDocumentRaises) {
  for (const std::string& text : kNoDocuments) {
    Status status(false);
    EXPECT_TRUE(throwsNumber(kParseError, [&] { status.scanner(text); })) << text.substr(0, 40);
    EXPECT_TRUE(throwsNumber(kParseError, [&] { status.feeder(text); })) << text.substr(0, 40);
  }
}

TEST(LowEndStatus, DepthOfADocumentIsNoDanger) {
  Status status(false);
  EXPECT_TRUE(status.scanner(R"({"status":{"busy":true,"more":)" + nested(kVeryDeep, "1") + "}}"));
  EXPECT_TRUE(status.busy);
}

// The capability document.

Source sourceWith(const std::string& capabilities) {
  Source source;
  source.SetDeviceSupportJSONResponse(capabilities);
  return source;
}

const Sizes kStale = {{"stale", 99}};

struct Media {
  Sizes adf = kStale;
  Sizes flatbed = kStale;
};
Media mediaOf(const std::string& capabilities) {
  Source source = sourceWith(capabilities);
  Media media;
  Peer::mediaSizes(source, media.adf, media.flatbed);
  return media;
}

TEST(LowEndCapabilities, AreEmptyAtFirstAndKeptAsTheyCome) {
  Source source;
  EXPECT_EQ(Peer::support(source), "");
  source.SetDeviceSupportJSONResponse("no JSON at all");
  EXPECT_EQ(Peer::support(source), "no JSON at all");
  source.SetDeviceSupportJSONResponse(std::string("a\0b", 3));
  EXPECT_EQ(Peer::support(source), std::string("a\0b", 3));
  source.SetDeviceSupportJSONResponse(Peer::support(source));
  EXPECT_EQ(Peer::support(source), std::string("a\0b", 3));
  source.SetDeviceSupportJSONResponse("");
  EXPECT_EQ(Peer::support(source), "");
}

TEST(LowEndCapabilities, CopiesTakeTheDocumentAndTheSettings) {
  Source source = sourceWith("{}");
  DataSourceTestPeer::width(source) = 17;
  Source copy(source);
  EXPECT_EQ(Peer::support(copy), "{}");
  EXPECT_EQ(DataSourceTestPeer::width(copy), 17);
  Source assigned;
  assigned = source;
  EXPECT_EQ(Peer::support(assigned), "{}");
  EXPECT_EQ(DataSourceTestPeer::width(assigned), 17);
}

TEST(LowEndCapabilities, ListsBecomeNamesAndCodes) {
  const Media media = mediaOf(R"({"supportedMediaSizes":{"adf":[0,2,4],"flatbed":[0,4,5]}})");
  EXPECT_EQ(media.adf, (Sizes{{"NA_8.5x11SEF", 0}, {"NA_8.5x14SEF", 2}, {"ISO_A4SEF", 4}}));
  EXPECT_EQ(media.flatbed, (Sizes{{"NA_8.5x11SEF", 0}, {"ISO_A4SEF", 4}, {"ISO_A5SEF", 5}}));
}

TEST(LowEndCapabilities, EachSourceHasItsOwnList) {
  const Media flatbedOnly = mediaOf(R"({"supportedMediaSizes":{"flatbed":[4]}})");
  EXPECT_EQ(flatbedOnly.adf, Sizes{});
  EXPECT_EQ(flatbedOnly.flatbed, (Sizes{{"ISO_A4SEF", 4}}));
  const Media feederOnly = mediaOf(R"({"supportedMediaSizes":{"adf":[5]}})");
  EXPECT_EQ(feederOnly.adf, (Sizes{{"ISO_A5SEF", 5}}));
  EXPECT_EQ(feederOnly.flatbed, Sizes{});
}

TEST(LowEndCapabilities, CodesConvertAsIntegers) {
  const struct {
    const char* codes;
    Sizes sizes;
  } kCases[] = {
      {"[]", {}},
      {"[11,4]", {{"ISO_A4SEF", 4}}},  // no name: dropped
      {"[20,-1,255]", {}},
      {"[4,4]", {{"ISO_A4SEF", 4}}},
      {"[4.9]", {{"ISO_A4SEF", 4}}},
      {"[-0.9]", {{"NA_8.5x11SEF", 0}}},
      {"[true]", {{"NA_7.25x10.5SEF", 1}}},
      {"[4294967300]", {{"ISO_A4SEF", 4}}},            // 2^32 + 4
      {"[18446744073709551615]", {}},                  // -1
      {"[-4294967292]", {{"ISO_A4SEF", 4}}},           // 4 - 2^32
      {"[1e300,-1e300,99999999999999999999999]", {}},  // the ends of an int
  };
  for (const auto& row : kCases) {
    const std::string list = row.codes;
    const Media media = mediaOf(filled(R"({"supportedMediaSizes":{"adf":@,"flatbed":@}})", {list}));
    EXPECT_EQ(media.adf, row.sizes) << list;
    EXPECT_EQ(media.flatbed, row.sizes) << list;
  }
}

TEST(LowEndCapabilities, ElementThatIsNoNumberEndsTheReading) {
  for (const TypedValue& value : kTypedValues) {
    if (value.type == std::string("number") || value.type == std::string("boolean")) continue;
    const std::string list = std::string("[4,") + value.text + ",5]";
    const Media inAdf = mediaOf(R"({"supportedMediaSizes":{"adf":)" + list + R"(,"flatbed":[4]}})");
    EXPECT_EQ(inAdf.adf, (Sizes{{"ISO_A4SEF", 4}})) << list;
    EXPECT_EQ(inAdf.flatbed, Sizes{}) << list;
    const Media inFlatbed =
        mediaOf(R"({"supportedMediaSizes":{"adf":[5],"flatbed":)" + list + "}}");
    EXPECT_EQ(inFlatbed.adf, (Sizes{{"ISO_A5SEF", 5}})) << list;
    EXPECT_EQ(inFlatbed.flatbed, (Sizes{{"ISO_A4SEF", 4}})) << list;
  }
}

TEST(LowEndCapabilities, WhatIsNoListIsAListOfOne) {
  const struct {
    const char* value;
    Sizes adf;
    Sizes flatbed;
  } kCases[] = {
      {"4", {{"ISO_A4SEF", 4}}, {{"ISO_A5SEF", 5}}},
      {"4.5", {{"ISO_A4SEF", 4}}, {{"ISO_A5SEF", 5}}},
      {"true", {{"NA_7.25x10.5SEF", 1}}, {{"ISO_A5SEF", 5}}},
      {"11", {}, {{"ISO_A5SEF", 5}}},
      // One that is no number ends the reading.
      {"\"4\"", {}, {}},
      {"null", {}, {}},
      {"{\"a\":4}", {}, {}},
  };
  for (const auto& row : kCases) {
    const Media media =
        mediaOf(R"({"supportedMediaSizes":{"adf":)" + std::string(row.value) + R"(,"flatbed":5}})");
    EXPECT_EQ(media.adf, row.adf) << row.value;
    EXPECT_EQ(media.flatbed, row.flatbed) << row.value;
  }
}

TEST(LowEndCapabilities, WithoutListsNothingIsOffered) {
  const char* const kDocuments[] = {
      "{}",
      "null",
      "true",
      "4",
      "4.5",
      R"("adf")",
      "[4]",
      R"([{"supportedMediaSizes":{"adf":[4]}}])",
      R"({"adf":[4],"flatbed":[4]})",
      R"({"supportedMediaSizes":{}})",
      R"({"supportedMediaSizes":null})",
      R"({"supportedMediaSizes":true})",
      R"({"supportedMediaSizes":4})",
      R"({"supportedMediaSizes":4.5})",
      R"({"supportedMediaSizes":"adf"})",
      R"({"supportedMediaSizes":["adf","flatbed"]})",
      R"({"supportedMediaSizes":{"ADF":[4],"Flatbed":[4]}})",
      R"({"SupportedMediaSizes":{"adf":[4]}})",
  };
  for (const char* document : kDocuments) {
    const Media media = mediaOf(document);
    EXPECT_EQ(media.adf, Sizes{}) << document;
    EXPECT_EQ(media.flatbed, Sizes{}) << document;
  }
}

TEST(LowEndCapabilities, TextThatIsNoDocumentLeavesTheMapsAlone) {
  for (const std::string& text : kNoDocuments) {
    const Media media = mediaOf(text);
    EXPECT_EQ(media.adf, kStale) << text.substr(0, 40);
    EXPECT_EQ(media.flatbed, kStale) << text.substr(0, 40);
  }
}

TEST(LowEndCapabilities, DepthOfADocumentIsNoDanger) {
  const Media media = mediaOf(R"({"supportedMediaSizes":{"adf":[4,)" + nested(kVeryDeep, "1") +
                              R"(],"flatbed":[4]}})");
  EXPECT_EQ(media.adf, (Sizes{{"ISO_A4SEF", 4}}));
  EXPECT_EQ(media.flatbed, Sizes{});
}

// Numbers and texts.

TEST(LowEndNumbers, FractionsAreTruncatedIntoAnInt) {
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  const struct {
    double number;
    std::int32_t expected;
  } kCases[] = {
      {0.0, 0},
      {-0.0, 0},
      {0.9, 0},
      {-0.9, 0},
      {1.5, 1},
      {-1.5, -1},
      {2147483646.9, 2147483646},
      {2147483647.0, 2147483647},
      {2147483647.5, 2147483647},
      {2147483648.0, 2147483647},
      {-2147483647.9, -2147483647},
      {-2147483648.0, -2147483647 - 1},
      {-2147483648.9, -2147483647 - 1},
      {-2147483649.0, -2147483647 - 1},
      {1e300, 2147483647},
      {-1e300, -2147483647 - 1},
      {kInfinite, 2147483647},
      {-kInfinite, -2147483647 - 1},
      {std::numeric_limits<double>::quiet_NaN(), 0},
  };
  for (const auto& row : kCases)
    EXPECT_EQ(tvrscn::truncateToInt32(row.number), row.expected) << row.number;
}

TEST(LowEndNumbers, OfADocumentConvertToAnInt) {
  const struct {
    const char* text;
    std::int32_t expected;
  } kCases[] = {
      {"0", 0},
      {"-0", 0},
      {"204", 204},
      {"-2147483648", -2147483647 - 1},
      {"2147483647", 2147483647},
      {"2147483648", -2147483647 - 1},  // the low 32 bits from here on
      {"4294967295", -1},
      {"4294967296", 0},
      {"-4294967297", -1},
      {"9223372036854775807", -1},
      {"-9223372036854775808", 0},
      {"18446744073709551615", -1},
      {"18446744073709551616", 2147483647},  // no integer to the library, but a fraction
      {"-9223372036854775809", -2147483647 - 1},
      {"204.99", 204},
      {"-204.99", -204},
      {"2.04e2", 204},
      {"1e308", 2147483647},
      {"-1e308", -2147483647 - 1},
      {"1e-308", 0},
      {"true", 1},
      {"false", 0},
  };
  for (const auto& row : kCases)
    EXPECT_EQ(tvrscn::toInt32(json::parse(row.text)), row.expected) << row.text;
  EXPECT_EQ(tvrscn::toInt32(json(std::nan(""))), 0);
}

TEST(LowEndNumbers, NothingElseIsANumber) {
  for (const TypedValue& value : kTypedValues) {
    if (value.type == std::string("number") || value.type == std::string("boolean")) continue;
    EXPECT_EQ(
        thrownBy([&] { tvrscn::toInt32(json::parse(value.text)); }),
        std::string("[json.exception.type_error.302] type must be number, but is ") + value.type)
        << value.text;
  }
}

TEST(LowEndNumbers, BeyondADoubleAreNoDocument) {
  EXPECT_TRUE(throwsNumber(kNumberTooLarge, [] { Status(false).scanner("1e999"); }));
  EXPECT_EQ(mediaOf(R"({"supportedMediaSizes":{"adf":[1e999]}})").adf, kStale);
}

TEST(LowEndText, IsCompactAndInTheOrderOfItsKeys) {
  const struct {
    const char* document;
    const char* text;
  } kCases[] = {
      {"null", "null"},
      {" true ", "true"},
      {"-7", "-7"},
      {"7.5", "7.5"},
      {"18446744073709551615", "18446744073709551615"},
      {"[ ]", "[]"},
      {"{ }", "{}"},
      {"[[],[[]],{}]", "[[],[[]],{}]"},
      {"[1, 2 ,3]", "[1,2,3]"},
      {R"({"b": 1, "a": [ {"d":null, "c":{}} , 2]})", R"({"a":[{"c":{},"d":null},2],"b":1})"},
      {R"({"Z":1,"a":2,"A":3,"":4})", R"({"":4,"A":3,"Z":1,"a":2})"},
      {R"({"k\"ey":"a\\b\/c\n\u0001\t"})", R"({"k\"ey":"a\\b/c\n\u0001\t"})"},
      {R"({"\u00fc":"\u20ac\ud83d\ude00"})", "{\"\xC3\xBC\":\"\xE2\x82\xAC\xF0\x9F\x98\x80\"}"},
      {R"({"a":1,"a":2})", R"({"a":2})"},
  };
  for (const auto& row : kCases)
    EXPECT_EQ(tvrscn::compactText(json::parse(row.document)), row.text) << row.document;
}

TEST(LowEndText, OfAnyDepthIsWritten) {
  const std::string lists = nested(kVeryDeep, "7");
  EXPECT_TRUE(tvrscn::compactText(json::parse(lists)) == lists);
  std::string objects;
  for (std::size_t level = 0; level < kVeryDeep; ++level)
    objects += "{\"a\":";
  objects += "7" + std::string(kVeryDeep, '}');
  EXPECT_TRUE(tvrscn::compactText(json::parse(objects)) == objects);
}

}  // namespace
