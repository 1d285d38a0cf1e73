// Each request's answer in literal bytes, and whole jobs down to their pages.
#include "virtual/lowend/lowend_scanner.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/support/fake_host.h"
#include "tests/virtual/support/images.h"
#include "tests/virtual/support/lowend_host.h"

namespace tvrscn::virtual_device {
namespace {

using testing::bilevelFields;
using testing::BilevelPage;
using testing::colorFields;
using testing::documentOf;
using testing::Event;
using testing::exchangeWith;
using testing::Fields;
using testing::filled;
using testing::kAbortRequest;
using testing::kCapabilityRequest;
using testing::kStatusRequest;
using testing::Picture;
using testing::readJpegBytes;
using testing::readTiffBytes;
using testing::startRequest;
using testing::StreamModel;
using testing::TestFolder;
using testing::with;

Bytes withHeader(Bytes header, const std::string& document) {
  header.insert(header.end(), document.begin(), document.end());
  return header;
}

std::vector<Bytes> transfersOf(LowEndScanner& scanner, const std::deque<Bytes>& requests) {
  std::vector<Bytes> transfers;
  for (const Event& event : exchangeWith(scanner, requests)) {
    EXPECT_EQ(event.kind, Event::Kind::kTransfer);
    transfers.push_back(event.bytes);
  }
  return transfers;
}

Bytes answerTo(const Bytes& request, const LowEndScannerOptions& options = {}) {
  LowEndScanner scanner(options);
  const std::vector<Bytes> transfers = transfersOf(scanner, {request});
  return transfers.empty() ? Bytes{} : transfers.front();
}

TEST(LowEndScanner, TheCapabilityDocumentTellsTheOptions) {
  const std::string document =
      "{\"basicres\":300,\"maxAdfHeight\":4200,\"maxAdfWidth\":2550,\"maxFbHeight\":3510,"
      "\"maxFbWidth\":2550,\"minAdfHeight\":1500,\"minAdfWidth\":1200,\"minFbHeight\":300,"
      "\"minFbWidth\":300,\"supportedContrastInfo\":{\"end\":100,\"start\":-100,"
      "\"userDefault\":0},\"supportedDarknessInfo\":{\"end\":100,\"start\":-100,"
      "\"userDefault\":0},\"supportedMediaSizes\":{\"adf\":[0,2,4,5,7,10,14,15],"
      "\"flatbed\":[0,4,5,7,10,26]}}";
  ASSERT_EQ(document.size(), 373U);  // 75 01
  EXPECT_EQ(answerTo(kCapabilityRequest),
            withHeader({0x1B, 0x4E, 0x03, 0x00, 0x75, 0x01, 0x00, 0x00, 0x00, 0x00}, document));
}

TEST(LowEndScanner, TheCapabilityDocumentFollowsEachMember) {
  LowEndScannerOptions options;
  options.feederMedia = {8};
  options.flatbedMedia = {};
  options.basicres = 100;
  options.feederLimits = {1, 2, 3, 4};
  options.flatbedLimits = {5, 6, 7, 8};
  options.darkness = {1, 9, 5};
  options.contrast = {-4, 4, 1};
  EXPECT_EQ(documentOf(answerTo(kCapabilityRequest, options)),
            "{\"basicres\":100,\"maxAdfHeight\":4,\"maxAdfWidth\":3,\"maxFbHeight\":8,"
            "\"maxFbWidth\":7,\"minAdfHeight\":2,\"minAdfWidth\":1,\"minFbHeight\":6,"
            "\"minFbWidth\":5,\"supportedContrastInfo\":{\"end\":4,\"start\":-4,"
            "\"userDefault\":1},\"supportedDarknessInfo\":{\"end\":9,\"start\":1,"
            "\"userDefault\":5},\"supportedMediaSizes\":{\"adf\":[8],\"flatbed\":[]}}");
  options.capabilityText = "anything";
  EXPECT_EQ(answerTo(kCapabilityRequest, options),
            withHeader({0x1B, 0x4E, 0x03, 0x00, 0x08, 0x00, 0x00, 0x00, 0x00, 0x00}, "anything"));
}

TEST(LowEndScanner, TheStatusDocumentOfAFlatbedInBytes) {
  EXPECT_EQ(answerTo(kStatusRequest),
            withHeader({0x1B, 0x4E, 0x04, 0x00, 0x9D, 0x00, 0x00, 0x00, 0x00, 0x00},
                       "{\"adfStatus\":{\"adfCoverOpen\":false,\"adfPaperLoaded\":false,"
                       "\"installed\":true,\"jamPresent\":false},\"status\":{\"busy\":false,"
                       "\"flatbedCoverOpen\":false,\"ready\":true}}"));
}

std::string feederSection(const LowEndScannerOptions& options) {
  const std::string document = documentOf(answerTo(kStatusRequest, options));
  return document.substr(0, document.find("},"));
}

TEST(LowEndScanner, TheStatusDocumentTellsWhatLiesInTheFeeder) {
  LowEndScannerOptions options;
  options.feeder = true;
  EXPECT_EQ(feederSection(options),
            "{\"adfStatus\":{\"adfCoverOpen\":false,\"adfPaperLoaded\":true,\"installed\":true,"
            "\"jamPresent\":false");
  options.sheets = 0;
  EXPECT_EQ(feederSection(options),
            "{\"adfStatus\":{\"adfCoverOpen\":false,\"adfPaperLoaded\":false,\"installed\":true,"
            "\"jamPresent\":false");
  options.feeder = false;
  options.feederInstalled = false;
  EXPECT_EQ(feederSection(options),
            "{\"adfStatus\":{\"adfCoverOpen\":false,\"adfPaperLoaded\":false,\"installed\":false,"
            "\"jamPresent\":false");
  options.statusText = "{}";
  EXPECT_EQ(answerTo(kStatusRequest, options),
            withHeader({0x1B, 0x4E, 0x04, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00}, "{}"));
}

TEST(LowEndScanner, IsReadyAfterSoManyPolls) {
  LowEndScannerOptions options;
  options.pollsUntilReady = 2;
  LowEndScanner scanner(options);
  std::vector<bool> ready;
  for (int poll = 0; poll < 4; ++poll) {
    const std::string document = documentOf(transfersOf(scanner, {kStatusRequest}).at(0));
    EXPECT_THAT(document, ::testing::HasSubstr("\"busy\":false"));
    ready.push_back(document.find("\"ready\":true") != std::string::npos);
  }
  EXPECT_EQ(ready, (std::vector<bool>{false, false, true, true}));
}

TEST(LowEndScanner, AbortIsAnsweredWithNothingBehindTheHeader) {
  EXPECT_EQ(answerTo(kAbortRequest),
            (Bytes{0x1B, 0x4E, 0x0F, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}));
}

TEST(LowEndScanner, AnAcceptedRequestSaysSoInBytes) {
  EXPECT_EQ(answerTo(startRequest(colorFields())),
            withHeader({0x1B, 0x4E, 0x01, 0x00, 0x27, 0x00, 0x00, 0x00, 0x00, 0x00},
                       "{\"result\":\"Starting scan\",\"status\":204}"));
}

TEST(LowEndScanner, ARefusedRequestSaysWhyInBytes) {
  LowEndScanner scanner{LowEndScannerOptions{}};
  const std::vector<Bytes> transfers =
      transfersOf(scanner, {startRequest(with(colorFields(), "scanSource", "0"))});
  ASSERT_EQ(transfers.size(), 1U) << "no image follows";
  EXPECT_EQ(transfers[0], withHeader({0x1B, 0x4E, 0x01, 0x00, 0x58, 0x00, 0x00, 0x00, 0x00, 0x00},
                                     "{\"error\":{\"message\":\"the feeder is empty\"},"
                                     "\"result\":\"Scan request refused\",\"status\":400}"));
}

TEST(LowEndScanner, MalformedRequestsGetStatusOneAndTheScannerGoesOn) {
  Bytes longHeader = kStatusRequest;
  longHeader.push_back(0);
  Bytes wrongLength = startRequest("{}");
  wrongLength[4] = 3;
  Bytes payloadWhereNoneBelongs = startRequest("{}");
  payloadWhereNoneBelongs[2] = 4;
  Bytes unmarked = kStatusRequest;
  unmarked[8] = 0;
  Bytes reserved = kStatusRequest;
  reserved[3] = 1;
  Bytes reservedToo = kStatusRequest;
  reservedToo[9] = 1;
  Bytes otherLead = kStatusRequest;
  otherLead[1] = 0x4F;
  Bytes image = kStatusRequest;
  image[2] = 2;
  const Bytes requests[] = {
      longHeader,
      wrongLength,
      payloadWhereNoneBelongs,
      unmarked,
      reserved,
      reservedToo,
      otherLead,
      image,
      startRequest(""),
      startRequest("{"),
      {0x1B, 0x4E},
      {},
      Bytes(5, 0x04),
      Bytes(65536, 0x01),
  };
  const std::uint8_t codes[] = {4, 1, 4, 4, 4, 4, 4, 2, 1, 1, 0, 0, 4, 1};
  for (std::size_t i = 0; i < std::size(requests); ++i) {
    SCOPED_TRACE(i);
    LowEndScanner scanner{LowEndScannerOptions{}};
    const std::vector<Bytes> transfers = transfersOf(scanner, {requests[i], kAbortRequest});
    ASSERT_EQ(transfers.size(), 2U);
    EXPECT_EQ(transfers[0], (Bytes{0x1B, 0x4E, codes[i], 0, 0, 0, 0, 0, 0x01, 0}));
    EXPECT_EQ(transfers[1][2], 0x0F);
  }
}

TEST(LowEndScanner, AnswersCanComeInPieces) {
  LowEndScannerOptions options;
  options.splitAnswers = true;
  LowEndScanner scanner(options);
  const std::vector<Bytes> pieces = transfersOf(scanner, {kStatusRequest});
  EXPECT_EQ(pieces.at(0), (Bytes{0x1B, 0x4E, 0x04, 0x00, 0x9D, 0x00, 0x00, 0x00, 0x00, 0x00}));
  ASSERT_GT(pieces.size(), 2U);
  Bytes together;
  for (const Bytes& piece : pieces)
    together.insert(together.end(), piece.begin(), piece.end());
  EXPECT_EQ(together, answerTo(kStatusRequest));
  EXPECT_EQ(transfersOf(scanner, {kAbortRequest}).size(), 1U);
}

// The image files of one job.
std::vector<Bytes> filesOf(const LowEndScannerOptions& options, const Fields& fields) {
  LowEndScanner scanner(options);
  std::vector<Bytes> transfers = transfersOf(scanner, {startRequest(fields)});
  EXPECT_THAT(documentOf(transfers.at(0)), ::testing::HasSubstr("204"));
  transfers.erase(transfers.begin());
  const StreamModel host(transfers);
  EXPECT_TRUE(host.hasEnded());
  return host.files();
}

// A feeder that takes small sheets, so that jobs are short.
LowEndScannerOptions feederWith(int sheets) {
  LowEndScannerOptions options;
  options.feeder = true;
  options.sheets = sheets;
  options.feederLimits = {300, 300, 2550, 4200};
  options.mostPacket = 700;
  options.blockDistance = 300;
  return options;
}

Fields fromFeeder(const Fields& fields, const std::string& sides) {
  return with(with(fields, "scanSource", "0"), "scanDuplex", sides);
}

TEST(LowEndScanner, AColourPageIsAJpegOfTheRequestedSizeAndResolution) {
  const std::vector<Bytes> files = filesOf({}, colorFields());
  ASSERT_EQ(files.size(), 1U);
  const Picture page = readJpegBytes(files[0]);
  EXPECT_EQ(page.width, 75);
  EXPECT_EQ(page.height, 150);
  EXPECT_EQ(page.channels, 3);
  EXPECT_EQ(page.densityUnit, 1);
  EXPECT_EQ(page.densityX, 75);
  EXPECT_EQ(page.densityY, 75);
}

TEST(LowEndScanner, AGreyPageHasOneChannel) {
  Fields fields = with(colorFields(), "imageComposition", "2");
  fields = with(fields, "resolution", "100");
  const std::vector<Bytes> files = filesOf({}, with(fields, "customWidth", "100"));
  ASSERT_EQ(files.size(), 1U);
  const Picture page = readJpegBytes(files[0]);
  EXPECT_EQ(page.width, 100);
  EXPECT_EQ(page.channels, 1);
  EXPECT_EQ(page.densityX, 100);
}

TEST(LowEndScanner, AMediaCodeGivesItsSize) {
  Fields fields = with(colorFields(), "mediaSize", "26");
  for (const char* key : {"offsetX", "offsetY", "customWidth", "customHeight"})
    fields.erase(key);
  // A6, 105 x 148 mm at 75 dpi: 310.04 x 437.01.
  const Picture page = readJpegBytes(filesOf({}, fields).at(0));
  EXPECT_EQ(page.width, 310);
  EXPECT_EQ(page.height, 437);
}

TEST(LowEndScanner, TheFeederGivesAFilePerPageInColour) {
  EXPECT_EQ(filesOf(feederWith(3), fromFeeder(colorFields(), "0")).size(), 3U);
  EXPECT_EQ(filesOf(feederWith(2), fromFeeder(colorFields(), "2")).size(), 4U);
  EXPECT_EQ(filesOf(feederWith(3), colorFields()).size(), 1U) << "the flatbed has one page";
  EXPECT_EQ(filesOf({}, with(colorFields(), "scanDuplex", "2")).size(), 1U) << "and one side";
}

std::vector<BilevelPage> bilevelPages(const LowEndScannerOptions& options, const Fields& fields) {
  const std::vector<Bytes> files = filesOf(options, fields);
  EXPECT_EQ(files.size(), 1U);
  return readTiffBytes(files.at(0));
}

TEST(LowEndScanner, BlackAndWhitePagesAreOneTiffFile) {
  for (const bool group4 : {true, false}) {
    LowEndScannerOptions options = feederWith(2);
    options.group4 = group4;
    const std::vector<BilevelPage> pages = bilevelPages(options, fromFeeder(bilevelFields(), "2"));
    ASSERT_EQ(pages.size(), 4U);
    for (const BilevelPage& page : pages) {
      EXPECT_EQ(page.width, 75);
      EXPECT_EQ(page.height, 150);
      EXPECT_EQ(page.compression, group4 ? 4 : 1);
      EXPECT_EQ(page.resolutionUnit, 2);
      EXPECT_EQ(page.resolutionX, 75);
      EXPECT_EQ(page.pageCount, 4);
    }
  }
}

TEST(LowEndScanner, OrATiffFileEach) {
  LowEndScannerOptions options = feederWith(3);
  options.documentShape = LowEndDocumentShape::kFilePerPage;
  const std::vector<Bytes> files = filesOf(options, fromFeeder(bilevelFields(), "0"));
  ASSERT_EQ(files.size(), 3U);
  for (const Bytes& file : files) {
    const std::vector<BilevelPage> pages = readTiffBytes(file);
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_EQ(pages[0].pageCount, 1);
  }
}

TEST(LowEndScanner, TheBackOfASheetIsTurnedWhenAskedFor) {
  const std::vector<BilevelPage> straight =
      bilevelPages(feederWith(1), fromFeeder(bilevelFields(), "2"));
  const std::vector<BilevelPage> turned =
      bilevelPages(feederWith(1), fromFeeder(bilevelFields(), "1"));
  ASSERT_EQ(straight.size(), 2U);
  ASSERT_EQ(turned.size(), 2U);
  EXPECT_TRUE(turned[0].black == straight[0].black);
  Bytes back = turned[1].black;
  std::reverse(back.begin(), back.end());
  EXPECT_FALSE(turned[1].black == straight[1].black);
  EXPECT_TRUE(back == straight[1].black);
}

// A page of one level, scanned in grey.
int levelOf(int level, const std::string& darkness, const std::string& contrast,
            const LowEndScannerOptions& ranges = {}) {
  const TestFolder folder;
  const auto value = static_cast<std::uint8_t>(level);
  writePngFile(folder / "page.png", filled(40, 40, {value, value, value}));
  LowEndScannerOptions options = ranges;
  options.pageFiles = {folder / "page.png"};
  Fields fields = with(colorFields(), "imageComposition", "2");
  fields = with(with(fields, "darkness", darkness), "contrast", contrast);
  return readJpegBytes(filesOf(options, fields).at(0)).at(30, 70).at(0);
}

TEST(LowEndScanner, DarknessAndContrastChangeTheLevels) {
  EXPECT_NEAR(levelOf(200, "0", "0"), 200, 2);
  // All of the range takes half of the way between white and black.
  EXPECT_NEAR(levelOf(200, "100", "0"), 200 - 128, 3);
  EXPECT_NEAR(levelOf(100, "-50", "0"), 100 + 64, 3);
  // Twice the distance from 127.5, or none at all.
  EXPECT_NEAR(levelOf(150, "0", "100"), 172, 3);
  EXPECT_NEAR(levelOf(150, "0", "-100"), 128, 3);
  EXPECT_EQ(levelOf(255, "0", "100"), 255);
  LowEndScannerOptions ranges;
  ranges.darkness = {1, 9, 5};
  EXPECT_NEAR(levelOf(200, "5", "0", ranges), 200, 2);
  EXPECT_NEAR(levelOf(200, "7", "0", ranges), 200 - 64, 3);
  EXPECT_NEAR(levelOf(100, "1", "0", ranges), 100 + 128, 3);
}

TEST(LowEndScanner, BlackIsWhatIsDarkerThanMidGrey) {
  for (const int level : {127, 128}) {
    const TestFolder folder;
    const auto value = static_cast<std::uint8_t>(level);
    writePngFile(folder / "page.png", filled(8, 8, {value, value, value}));
    LowEndScannerOptions options;
    options.pageFiles = {folder / "page.png"};
    const std::vector<BilevelPage> pages = bilevelPages(options, bilevelFields());
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_EQ(pages[0].black, Bytes(75 * 150, level == 127 ? 1 : 0));
  }
}

TEST(LowEndScanner, PagesAreTheSameWhateverTheSeed) {
  const TestFolder folder;
  Picture picture = filled(60, 60, {250, 240, 90});
  for (int box = 0; box < 10; ++box)
    fillBox(picture, box * 6, box * 5, box * 6 + 9, box * 5 + 14, {10, 20, 200});
  writePngFile(folder / "page.png", picture);
  const Fields jobs[] = {fromFeeder(colorFields(), "2"), fromFeeder(bilevelFields(), "2")};
  for (const Fields& job : jobs) {
    LowEndScannerOptions plain = feederWith(1);
    plain.pageFiles = {folder / "page.png"};
    plain.blockDistance = 0;
    plain.controlPackets = 0;
    const std::vector<Bytes> expected = filesOf(plain, job);
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
      SCOPED_TRACE(seed);
      LowEndScannerOptions options = plain;
      options.seed = seed;
      options.mostPacket = 1 + static_cast<int>(seed * 13 % 2000);
      options.blockDistance = 1 + static_cast<int>(seed * 7 % 500);
      options.controlPackets = static_cast<int>(seed % 6);
      options.jobDone = seed % 2 == 0;
      ASSERT_EQ(filesOf(options, job), expected);
    }
  }
}

TEST(LowEndScanner, EveryJobDrawsFromTheSeedAnew) {
  LowEndScanner scanner(feederWith(1));
  const Bytes request = startRequest(fromFeeder(colorFields(), "0"));
  const std::vector<Bytes> first = transfersOf(scanner, {request});
  EXPECT_EQ(transfersOf(scanner, {request}), first);
  LowEndScannerOptions options = feederWith(1);
  options.seed = 2;
  LowEndScanner other(options);
  EXPECT_NE(transfersOf(other, {request}), first);
}

TEST(LowEndScanner, AJobFollowsAJobAndARefusal) {
  LowEndScanner scanner{LowEndScannerOptions{}};
  const Bytes good = startRequest(colorFields());
  const Bytes bad = startRequest(with(colorFields(), "resolution", "1"));
  const std::size_t one = transfersOf(scanner, {good}).size();
  EXPECT_EQ(transfersOf(scanner, {bad, good, kStatusRequest, good}).size(), 2 * one + 2);
}

TEST(LowEndScanner, ImpossibleOptionsAreRefusedInWords) {
  const auto errorOf = [](auto&& change) -> std::string {
    LowEndScannerOptions options;
    change(options);
    try {
      const LowEndScanner scanner(options);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "no error";
  };
  using Options = LowEndScannerOptions;
  using ::testing::HasSubstr;
  EXPECT_THAT(errorOf([](Options& o) { o.sheets = -1; }),
              HasSubstr("-1 as number of sheets; give 0 to 9999"));
  EXPECT_THAT(errorOf([](Options& o) { o.jpegQuality = 0; }),
              HasSubstr("0 as JPEG quality; give 1 to 100"));
  EXPECT_THAT(errorOf([](Options& o) { o.basicres = 0; }), HasSubstr("0 as units an inch"));
  EXPECT_THAT(errorOf([](Options& o) { o.feederLimits.maxWidth = -3; }),
              HasSubstr("-3 as size limit of the feeder"));
  EXPECT_THAT(errorOf([](Options& o) { o.flatbedLimits.minHeight = 100001; }),
              HasSubstr("100001 as size limit of the flatbed"));
  EXPECT_THAT(errorOf([](Options& o) {
                o.resolutions = {75, 1201};
              }),
              HasSubstr("1201 as resolution; give 1 to 1200"));
  EXPECT_THAT(errorOf([](Options& o) { o.pollsUntilReady = -1; }), HasSubstr("polls"));
  EXPECT_THAT(errorOf([](Options& o) { o.leastPacket = 0; }), HasSubstr("0 as least packet"));
  EXPECT_THAT(errorOf([](Options& o) { o.mostPacket = 1 << 21; }),
              HasSubstr("2097152 as largest packet; give 1 to 1048576"));
  EXPECT_THAT(errorOf([](Options& o) { o.leastPacket = 9000; }),
              HasSubstr("8192 as largest packet; give 9000 to"));
  EXPECT_THAT(errorOf([](Options& o) { o.blockDistance = -1; }), HasSubstr("block markers"));
  EXPECT_THAT(errorOf([](Options& o) { o.controlPackets = -1; }), HasSubstr("control packets"));
  EXPECT_THAT(errorOf([](Options& o) {
                o.feeder = true;
                o.feederInstalled = false;
              }),
              HasSubstr("give one of the two"));
  EXPECT_THAT(errorOf([](Options& o) { o.pageFiles = {"gone.png"}; }), HasSubstr("gone.png"));
}

}  // namespace
}  // namespace tvrscn::virtual_device
