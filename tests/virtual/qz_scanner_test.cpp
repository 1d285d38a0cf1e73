// Each request's reply in literal bytes, what is refused and when, and whole jobs down to their
// pages.
#include "virtual/qz/qz_scanner.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/support/images.h"
#include "tests/virtual/support/qz_host.h"

namespace tvrscn::virtual_device {
namespace {

namespace qz = testing::qz;
using qz::JobHost;
using qz::lastReply;
using qz::replies;
using qz::Reply;
using qz::operator+;
using qz::senseOf;
using testing::filled;
using testing::Picture;
using testing::readJpegBytes;
using testing::TestFolder;
using Requests = std::deque<Bytes>;

QzScannerOptions feederWith(int sheets) {
  QzScannerOptions options;
  options.feeder = true;
  options.sheets = sheets;
  return options;
}

Bytes headerOf(const QzScannerOptions& options, const Requests& requests) {
  QzScanner scanner(options);
  return lastReply(scanner, requests).header;
}

Bytes dataOf(const QzScannerOptions& options, const Requests& requests) {
  QzScanner scanner(options);
  return lastReply(scanner, requests).data;
}

std::string senseAfter(const Requests& requests, const QzScannerOptions& options = {}) {
  QzScanner scanner(options);
  return senseOf(lastReply(scanner, requests));
}

const Requests kReserved = {qz::kWakeUp, qz::reserve()};

TEST(QzScanner, EveryRequestOfAFlatbedJobIsAnsweredInBytes) {
  QzScanner scanner{QzScannerOptions{}};
  const std::vector<Reply> all =
      replies(scanner, qz::upToBlockHeader(qz::flatbed()) +
                           Requests{qz::kRead, qz::kReady, qz::kInitialize, qz::kRelease});
  const auto size = static_cast<std::uint32_t>(all.at(10).data.size());
  ASSERT_GT(size, 500U);
  ASSERT_LT(size, 65536U);
  const auto high = static_cast<std::uint8_t>(size / 256);
  const auto low = static_cast<std::uint8_t>(size % 256);
  const Bytes headers[] = {
      {0x00, 0xC3, 0x00, 0x00, 0, 0, 0, 0},       // wake-up: idle
      {0x01, 0x16, 0x00, 0x01, 0, 0, 0, 0},       // reserve: client 1, ready
      {0x01, 0xC1, 0x00, 0x01, 0, 0, 0, 0},       // ready
      {0x01, 0x07, 0x00, 0x01, 0, 0, 0, 0},       // initialize
      {0x01, 0x5A, 0x00, 0x01, 0, 0, 0, 0x38},    // mode sense, sub-device
      {0x01, 0x5A, 0x00, 0x01, 0, 0, 0, 0x08},    // mode sense, units
      {0x01, 0x55, 0x00, 0x01, 0, 0, 0, 0},       // mode select
      {0x01, 0x24, 0x00, 0x01, 0, 0, 0, 0},       // window
      {0x01, 0x1B, 0x00, 0x02, 0, 0, 0, 0},       // scan: transferring
      {0x01, 0xC2, 0x00, 0x02, 0, 0, 0, 0x08},    // block header
      {0x01, 0x28, 0x00, 0x03, 0, 0, high, low},  // read: image end
      {0x01, 0xC1, 0x00, 0x01, 0, 0, 0, 0},       // ready
      {0x01, 0x07, 0x00, 0x01, 0, 0, 0, 0},       // initialize
      {0x01, 0x17, 0x00, 0x00, 0, 0, 0, 0},       // release: idle
  };
  ASSERT_EQ(all.size(), std::size(headers));
  for (std::size_t i = 0; i < all.size(); ++i)
    EXPECT_EQ(all[i].header, headers[i]) << i;
  EXPECT_EQ(all[9].data, (Bytes{0, 0, 0, 0, 0, 0, high, low})) << "the size of the whole block";
}

TEST(QzScanner, TheModePagesTellTheLimits) {
  QzScannerOptions options;
  options.feederOptions = 0x22;
  options.duplexOptions = 0x20;
  options.flatbedLimits = {0x0102, 0x010203};
  options.feederLimits = {0x0405, 0x0607};
  options.resolutions = {100, 200, 600, 1200};
  Bytes page = {
      0x20, 0x36, 0x22, 0,    0, 0x20, 0, 0,                // code, bytes behind it, what it can do
      0,    0,    1,    2,    0, 1,    2, 3,                // flatbed
      0,    0,    4,    5,    0, 0,    6, 7,   0, 0, 0, 0,  // feeder
      2,    0x58, 4,    0xB0, 0, 100,  0, 200,              // largest, least resolutions
  };
  page.resize(56);
  EXPECT_EQ(dataOf(options, kReserved + Requests{qz::kSenseSubDevice}), page);
  EXPECT_EQ(dataOf(options, kReserved + Requests{qz::kSenseUnits}),
            (Bytes{0x03, 0x06, 0x01, 0x00, 0x00, 0x0A, 0x00, 0x00}));
}

TEST(QzScanner, TheInquiryDataTellWhatItIs) {
  Bytes expected(88, 0);
  expected[0] = 0x06;
  const std::string maker = "Tevra";
  const std::string product = "Virtual QZ scanner";
  const std::string version = "1.0";
  std::copy(maker.begin(), maker.end(), expected.begin() + 8);
  std::copy(product.begin(), product.end(), expected.begin() + 40);
  std::copy(version.begin(), version.end(), expected.begin() + 72);
  EXPECT_EQ(dataOf({}, kReserved + Requests{qz::kInquiry}), expected);
  EXPECT_EQ(headerOf({}, kReserved + Requests{qz::kInquiry}),
            (Bytes{0x01, 0x12, 0x00, 0x01, 0, 0, 0, 0x58}));
}

TEST(QzScanner, TheDocumentSensorIsInEveryReply) {
  QzScanner scanner(feederWith(1));
  const std::vector<Reply> all = replies(
      scanner, qz::upToBlockHeader(qz::feeder()) +
                   Requests{qz::kRead, qz::kReady, qz::kInitialize, qz::kRelease, qz::kWakeUp});
  const int statuses[] = {0x40, 0x41, 0x41, 0x41, 0x41, 0x41, 0x41, 0x41,
                          // The last sheet is under the lamp.
                          0x02, 0x02, 0x03, 0x01, 0x01,
                          // Released: there are sheets for the next job.
                          0x40, 0x40};
  ASSERT_EQ(all.size(), std::size(statuses));
  for (std::size_t i = 0; i < all.size(); ++i)
    EXPECT_EQ(all[i].header[3], statuses[i]) << i;
  EXPECT_EQ(headerOf(feederWith(0), {qz::kWakeUp})[3], 0x00);
  EXPECT_EQ(headerOf(feederWith(1), kReserved + Requests{qz::request(1, 0x28)})[3], 0x44)
      << "and the state is an error";
}

TEST(QzScanner, ClientIdsTakeTurns) {
  Requests requests;
  for (int i = 0; i < 257; ++i) {
    const auto client = static_cast<std::uint8_t>(i % 255 + 1);
    requests =
        std::move(requests) + Requests{qz::kWakeUp, qz::reserve(), qz::request(client, 0x17)};
  }
  QzScanner scanner{QzScannerOptions{}};
  const std::vector<Reply> all = replies(scanner, requests);
  for (std::size_t i = 0; i < 257; ++i) {
    EXPECT_EQ(all[3 * i + 1].header[0], i % 255 + 1);
    EXPECT_EQ(all[3 * i + 2].header[2], 0);
  }
  EXPECT_EQ(lastReply(scanner, kReserved).header[0], 3) << "and go on with the next host";
}

TEST(QzScanner, ARequestHasItsLengthAndNoStatus) {
  Bytes status = qz::kReady;
  status[2] = 1;
  Bytes state = qz::kReady;
  state[3] = 1;
  Bytes length = qz::kReady;
  length[7] = 4;
  Bytes hugeLength = qz::kReady;
  hugeLength[4] = 0xFF;
  Bytes longer = qz::kRead;
  longer.push_back(0);
  Bytes announcedLonger = longer;
  announcedLonger[7] = 5;
  Bytes shorter = qz::kRead;
  shorter.pop_back();
  const struct {
    Bytes request;
    const char* sense;
  } rows[] = {
      {status, "042400"},
      {state, "042400"},
      {length, "041A00"},
      {hugeLength, "041A00"},
      {longer, "041A00"},
      {announcedLonger, "041A00"},
      {shorter, "041A00"},
      {qz::request(1, 0xC1, {0}), "041A00"},
      {qz::request(1, 0x55, Bytes(55, 0)), "041A00"},
      {qz::request(1, 0x24, Bytes(49, 0)), "041A00"},
      {qz::request(1, 0x07), "041A00"},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i)
    EXPECT_EQ(senseAfter(kReserved + Requests{rows[i].request}), rows[i].sense) << i;
  EXPECT_EQ(senseAfter({qz::kWakeUp, qz::reserve(Bytes(271, 0))}), "041A00");
}

TEST(QzScanner, WhatIsNoCommandIsRefusedAndTheScannerGoesOn) {
  const struct {
    Bytes request;
    Bytes header;
  } rows[] = {
      {{}, {0x00, 0x00, 0x02, 0x04, 0, 0, 0, 8}},
      {{0x05}, {0x05, 0x00, 0x02, 0x04, 0, 0, 0, 8}},
      {{0x01, 0xC1, 0, 0, 0, 0, 0}, {0x01, 0xC1, 0x02, 0x04, 0, 0, 0, 8}},
      {qz::request(1, 0x00), {0x01, 0x00, 0x02, 0x04, 0, 0, 0, 8}},
      {qz::request(1, 0xFF), {0x01, 0xFF, 0x02, 0x04, 0, 0, 0, 8}},
      {qz::request(1, 0x13), {0x01, 0x13, 0x02, 0x04, 0, 0, 0, 8}},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    QzScanner scanner{QzScannerOptions{}};
    const std::vector<Reply> all =
        replies(scanner, kReserved + Requests{rows[i].request, qz::kReady});
    EXPECT_EQ(all.at(2).header, rows[i].header) << i;
    EXPECT_EQ(all.at(2).data, (Bytes{0, 0, 0, 0, 0x04, 0x20, 0x00, 0})) << i;
    EXPECT_EQ(all.at(3).header[2], 0) << i;
  }
}

TEST(QzScanner, OnlyTheClientThatReservedIsServed) {
  const std::uint8_t commands[] = {0xC1, 0x12, 0x1B, 0xC2, 0x17};
  for (const std::uint8_t command : commands) {
    EXPECT_EQ(senseAfter({qz::kWakeUp, qz::request(0, command)}), "042000");
    EXPECT_EQ(senseAfter({qz::kWakeUp, qz::request(1, command)}), "042000");
    EXPECT_EQ(senseAfter(kReserved + Requests{qz::request(2, command)}), "042000");
    EXPECT_EQ(senseAfter(kReserved + Requests{qz::request(0, command)}), "042000");
    EXPECT_EQ(senseAfter(kReserved + Requests{qz::kRelease, qz::request(1, command)}), "042000");
  }
  EXPECT_EQ(senseAfter({qz::request(1, 0xC3)}), "042000");
  EXPECT_EQ(senseAfter({qz::kWakeUp, qz::request(1, 0x16, qz::reservation())}), "042000");
}

TEST(QzScanner, ReservingTakesAWakeUp) {
  EXPECT_EQ(senseAfter({qz::reserve()}), "042000");
  EXPECT_EQ(senseAfter(kReserved + Requests{qz::kRelease, qz::reserve()}), "042000");
  EXPECT_EQ(headerOf({}, kReserved + Requests{qz::reserve()})[2], 0)
      << "a client whose job broke off reserves again";
}

TEST(QzScanner, EachCommandHasItsPlaceInAPage) {
  const Requests initialized = kReserved + Requests{qz::kInitialize};
  const Requests selected = initialized + Requests{qz::select(qz::flatbed())};
  const Requests windowSet = selected + Requests{qz::window(qz::smallWindow())};
  const Requests scanned = windowSet + Requests{qz::kScan};
  const Requests announced = scanned + Requests{qz::kBlockHeader};
  const Requests ended = announced + Requests{qz::kRead};
  const Bytes select = qz::select(qz::flatbed());
  const Bytes window = qz::window(qz::smallWindow());
  const struct {
    Requests before;
    Bytes request;
    const char* sense;
  } rows[] = {
      {kReserved, select, "042000"},
      {kReserved, window, "042000"},
      {kReserved, qz::kScan, "042000"},
      {kReserved, qz::kBlockHeader, "010400"},
      {kReserved, qz::kRead, "010400"},
      {initialized, window, "042000"},
      {initialized, qz::kScan, "042000"},
      {selected, qz::kScan, "042000"},
      {windowSet, qz::kBlockHeader, "010400"},
      {windowSet, qz::kRead, "010400"},
      {windowSet + Requests{qz::kInitialize}, qz::kScan, "042000"},
      {windowSet + Requests{select}, qz::kScan, "042000"},
      {scanned, qz::kRead, "042000"},
      {scanned, select, "040000"},
      {scanned, window, "040000"},
      {scanned, qz::kScan, "040000"},
      {ended, qz::kRead, "050000"},
      {ended, qz::kBlockHeader, "010400"},
      {ended, qz::kScan, "042000"},
      {ended, select, "042000"},
      {ended + Requests{qz::kInitialize}, qz::kRead, "010400"},
      {announced + Requests{qz::kInitialize}, qz::kRead, "010400"},
      // What may stand anywhere.
      {kReserved, qz::kSenseSubDevice, "status 0"},
      {announced, qz::kSenseUnits, "status 0"},
      {announced, qz::kInquiry, "status 0"},
      {announced, qz::kReady, "status 0"},
      {announced, qz::kBlockHeader, "status 0"},
      {announced, qz::kInitialize, "status 0"},
      {announced, qz::kRelease, "status 0"},
      {windowSet, window, "status 0"},
      {announced, qz::kWakeUp, "status 0"},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i)
    EXPECT_EQ(senseAfter(rows[i].before + Requests{rows[i].request}), rows[i].sense) << i;
}

TEST(QzScanner, ARefusedWindowLeavesTheLastOne) {
  Bytes bad = qz::smallWindow();
  bad[0] = 1;
  EXPECT_EQ(
      senseAfter(kReserved + Requests{qz::kInitialize, qz::select(qz::flatbed()),
                                      qz::window(qz::smallWindow()), qz::window(bad), qz::kScan}),
      "status 0");
}

TEST(QzScanner, FourByteArgumentsAreCheckedToTheLastByte) {
  constexpr std::uint8_t kCommands[] = {0x07, 0x5A, 0x28};
  for (const std::uint8_t command : kCommands) {
    for (std::size_t at = 0; at < 4; ++at) {
      Bytes payload = {0, 0, 0, 0};
      if (command == 0x5A) payload[0] = 0x20;
      if (command == 0x28) payload[1] = 0x04;
      payload[at] ^= 0x01;
      EXPECT_EQ(senseAfter(kReserved + Requests{qz::request(1, command, payload)}), "042400")
          << int{command} << " at " << at;
    }
  }
  EXPECT_EQ(senseAfter(kReserved + Requests{qz::kInitializeAfterCancel}), "042400")
      << "nobody cancelled";
}

TEST(QzScanner, AnotherOwnerFindsTheUnitReserved) {
  QzScanner scanner{QzScannerOptions{}};
  const std::vector<Reply> all = replies(
      scanner, kReserved + Requests{qz::reserve(qz::reservation("desk", "sam")), qz::kReady,
                                    qz::reserve(qz::reservation("shelf", "kim")), qz::kRelease,
                                    qz::kWakeUp, qz::reserve(qz::reservation("shelf", "sam"))});
  EXPECT_EQ(all[2].header, (Bytes{0x00, 0x16, 0x18, 0x04, 0, 0, 0, 0}));
  EXPECT_EQ(all[3].header[2], 0) << "the first client goes on";
  EXPECT_EQ(all[4].header[2], 24);
  EXPECT_EQ(all[7].header, (Bytes{0x02, 0x16, 0x00, 0x01, 0, 0, 0, 0}));
  // That host is gone, and its reservation with it.
  EXPECT_EQ(lastReply(scanner, kReserved).header, (Bytes{0x03, 0x16, 0x00, 0x01, 0, 0, 0, 0}));
}

TEST(QzScanner, TheFeederHasToHoldADocumentAtModeSelect) {
  const Requests select = kReserved + Requests{qz::kInitialize, qz::select(qz::feeder())};
  EXPECT_EQ(senseAfter(select, feederWith(0)), "023A00");
  EXPECT_EQ(senseAfter(select), "023A00");
  EXPECT_EQ(senseAfter(select, feederWith(1)), "status 0");
}

Picture pageOf(JobHost&& host, const QzScannerOptions& options = {}) {
  QzScanner scanner(options);
  scanner.serve(host);
  EXPECT_EQ(host.outcomes, std::vector<std::string>{""});
  EXPECT_EQ(host.pages.size(), 1U);
  return host.pages.empty() ? Picture() : readJpegBytes(host.pages[0]);
}

TEST(QzScanner, APageIsOneJpegStreamOfTheWindowsSize) {
  const Picture page = pageOf(JobHost());
  EXPECT_EQ(page.width, 75);
  EXPECT_EQ(page.height, 150);
  EXPECT_EQ(page.channels, 3);
  EXPECT_EQ(page.densityUnit, 1);
  EXPECT_EQ(page.densityX, 75);
  EXPECT_EQ(page.densityY, 75);
}

TEST(QzScanner, AGreyPageHasOneChannelAndAnyResolution) {
  Bytes window = qz::smallWindow();
  window[26] = 0x20;
  window[3] = window[5] = 100;
  window[19] = window[43] = 128;  // 128 tenths at 100 dpi: 50.39 pixels
  const Picture page = pageOf(JobHost(1, qz::feeder(), qz::flatbed(), window));
  EXPECT_EQ(page.channels, 1);
  EXPECT_EQ(page.width, 50);
  EXPECT_EQ(page.height, 200);
  EXPECT_EQ(page.densityX, 100);
}

TEST(QzScanner, TheBackgroundIsCleanedWhenAskedFor) {
  const TestFolder folder;
  testing::writePngFile(folder / "page.png", filled(40, 80, {235, 235, 235}));
  QzScannerOptions options;
  options.pageFiles = {folder / "page.png"};
  EXPECT_NEAR(pageOf(JobHost(), options).at(30, 70).at(0), 235, 2);
  Bytes window = qz::smallWindow();
  window[28] = 0x40;
  EXPECT_EQ(pageOf(JobHost(1, qz::feeder(), qz::flatbed(), window), options).at(30, 70).at(0), 255);
}

TEST(QzScanner, ImpossibleOptionsAreRefusedInWords) {
  using Options = QzScannerOptions;
  const struct {
    void (*change)(Options&);
    const char* words;
  } rows[] = {
      {[](Options& o) { o.sheets = 10000; }, "10000 for 'sheets' is out of range; give 0 to 9999"},
      {[](Options& o) { o.jpegQuality = 0; }, "'JPEG quality'"},
      {[](Options& o) { o.flatbedLimits.maxWidth = -1; },
       "'flatbed width' is out of range; give 0 to 100000"},
      {[](Options& o) { o.flatbedLimits.maxLength = 100001; }, "'flatbed length'"},
      {[](Options& o) { o.feederLimits.maxWidth = -1; }, "'feeder width'"},
      {[](Options& o) { o.feederLimits.maxLength = -1; }, "'feeder length'"},
      {[](Options& o) { o.resolutions.minX = -1; }, "'least resolution across'"},
      {[](Options& o) { o.resolutions.minY = 65536; },
       "'least resolution down' is out of range; give 0 to 65535"},
      {[](Options& o) { o.resolutions.maxX = -1; }, "'largest resolution across'"},
      {[](Options& o) { o.resolutions.maxY = -1; }, "'largest resolution down'"},
      {[](Options& o) { o.leastReply = 0; },
       "'least bytes of a reply' is out of range; give 1 to 262144"},
      {[](Options& o) { o.mostReply = 262145; },
       "'most bytes of a reply' is out of range; give 262144 to 262144"},
      {[](Options& o) { o.pageReplies = -1; }, "'replies of a page'"},
      {[](Options& o) { o.emptyReplies = -1; }, "'replies between empty ones'"},
      {[](Options& o) { o.pageFiles = {"gone.png"}; }, "gone.png"},
  };
  for (const auto& row : rows) {
    QzScannerOptions options;
    row.change(options);
    try {
      const QzScanner scanner(options);
      ADD_FAILURE() << "taken, in spite of " << row.words;
    } catch (const std::runtime_error& error) {
      EXPECT_THAT(error.what(), ::testing::HasSubstr(row.words));
    }
  }
}

}  // namespace
}  // namespace tvrscn::virtual_device
