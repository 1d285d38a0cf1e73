// Each kind of the LowEnd scanner's misbehaviour with exactly what comes over the wire, and that it
// stops when it should.
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/support/fake_host.h"
#include "tests/virtual/support/images.h"
#include "tests/virtual/support/lowend_host.h"
#include "virtual/lowend/lowend_scanner.h"

namespace tvrscn::virtual_device {
namespace {

using testing::bilevelFields;
using testing::colorFields;
using testing::documentOf;
using testing::Event;
using testing::exchangeWith;
using testing::Fields;
using ::testing::HasSubstr;
using testing::kAbortRequest;
using testing::kCapabilityRequest;
using testing::kStatusRequest;
using testing::startRequest;
using testing::StreamModel;
using Kind = LowEndFault::Kind;
using Step = LowEndStep;

LowEndScannerOptions with(const LowEndFault& fault) {
  LowEndScannerOptions options;
  options.feeder = true;
  options.sheets = 3;
  options.feederLimits = {300, 300, 2550, 4200};
  options.leastPacket = 100;
  options.mostPacket = 600;
  options.faults = {fault};
  return options;
}

const Fields kFeederFields = testing::with(colorFields(), "scanSource", "0");
const Bytes kFeederRequest = startRequest(kFeederFields);
const Bytes kDocumentRequest = startRequest(testing::with(bilevelFields(), "scanSource", "0"));

struct StepRow {
  Step step;
  const char* name;
  Bytes request;
  std::uint8_t code;
};

const StepRow kAnswerSteps[] = {
    {Step::kCapabilities, "capabilities", kCapabilityRequest, 3},
    {Step::kStatus, "status", kStatusRequest, 4},
    {Step::kStart, "start", kFeederRequest, 1},
    {Step::kAbort, "abort", kAbortRequest, 15},
};

bool hasDocument(const StepRow& row) {
  return row.step != Step::kAbort;
}

std::vector<Event> eventsOf(const LowEndFault& fault, const std::deque<Bytes>& requests) {
  LowEndScanner scanner(with(fault));
  return exchangeWith(scanner, requests);
}

std::vector<std::string> statusDocuments(const LowEndFault& fault, int count) {
  std::vector<std::string> documents;
  for (const Event& event :
       eventsOf(fault, std::deque<Bytes>(static_cast<std::size_t>(count), kStatusRequest))) {
    documents.push_back(documentOf(event.bytes));
  }
  return documents;
}

TEST(LowEndFaults, BusyComesCountTimes) {
  const std::vector<std::string> documents = statusDocuments({Kind::kBusy, Step::kStatus, 1, 2}, 3);
  for (const std::size_t i : {0U, 1U})
    EXPECT_THAT(documents.at(i),
                HasSubstr("\"busy\":true,\"flatbedCoverOpen\":false,\"ready\":false"));
  EXPECT_THAT(documents.at(2),
              HasSubstr("\"busy\":false,\"flatbedCoverOpen\":false,\"ready\":true"));
  EXPECT_THAT(statusDocuments({Kind::kBusy, Step::kStatus, 1, 0}, 30).at(29),
              HasSubstr("\"busy\":true"));
}

TEST(LowEndFaults, NotReadyIsNeitherBusyNorReady) {
  const std::vector<std::string> documents =
      statusDocuments({Kind::kNotReady, Step::kStatus, 1, 1, 2}, 3);
  for (const std::size_t i : {0U, 1U})
    EXPECT_THAT(documents.at(i),
                HasSubstr("\"busy\":false,\"flatbedCoverOpen\":false,\"ready\":false"));
  EXPECT_THAT(documents.at(2), HasSubstr("\"ready\":true"));
}

TEST(LowEndFaults, TheStatusDocumentTellsOfCoversAndPaper) {
  EXPECT_THAT(statusDocuments({Kind::kCoverOpen, Step::kStatus, 1, 1, 0}, 1).at(0),
              AllOf(HasSubstr("\"adfCoverOpen\":true"), HasSubstr("\"flatbedCoverOpen\":false")));
  EXPECT_THAT(statusDocuments({Kind::kCoverOpen, Step::kStatus, 1, 1, 1}, 1).at(0),
              AllOf(HasSubstr("\"adfCoverOpen\":false"), HasSubstr("\"flatbedCoverOpen\":true")));
  EXPECT_THAT(statusDocuments({Kind::kPaperJam}, 1).at(0), HasSubstr("\"jamPresent\":true"));
}

TEST(LowEndFaults, AStatusDocumentMayLackTheFeedersSection) {
  EXPECT_EQ(statusDocuments({Kind::kNoSection}, 1).at(0),
            "{\"status\":{\"busy\":false,\"flatbedCoverOpen\":false,\"ready\":true}}");
}

TEST(LowEndFaults, ARefusalHasItsWordsAndNoImageFollows) {
  const std::vector<Event> events = eventsOf(
      {Kind::kRefuse, Step::kStart, 1, 1, 0, "say \"please\""}, {kFeederRequest, kAbortRequest});
  ASSERT_EQ(events.size(), 2U);
  EXPECT_EQ(documentOf(events[0].bytes),
            "{\"error\":{\"message\":\"say \\\"please\\\"\"},\"result\":\"Scan request refused\","
            "\"status\":400}");
  EXPECT_EQ(events[0].bytes[8], 0x00);
}

TEST(LowEndFaults, StatusBytesOfEveryKindCanBeAnswered) {
  for (const std::uint32_t value : {0x00U, 0x01U, 0x02U, 0x03U, 0x04U, 0x05U, 0x06U, 0x07U, 0x08U,
                                    0x0FU, 0x10U, 0x80U, 0x91U, 0xF0U, 0xF4U, 0xFFU}) {
    SCOPED_TRACE(value);
    const std::vector<Event> events =
        eventsOf({Kind::kNibble, Step::kStart, 1, 1, value}, {kFeederRequest});
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events[0].bytes[8], value);
    if (value % 16 == 0) {
      EXPECT_THAT(documentOf(events[0].bytes), HasSubstr("Starting scan"));
      EXPECT_GT(events.size(), 1U) << "the upper four bits mean nothing";
    } else {
      EXPECT_EQ(events[0].bytes,
                (Bytes{0x1B, 0x4E, 1, 0, 0, 0, 0, 0, static_cast<std::uint8_t>(value), 0}));
      EXPECT_EQ(events.size(), 1U);
    }
  }
}

TEST(LowEndFaults, AnEmptyAnswerIsAHeaderAlone) {
  for (const StepRow& row : kAnswerSteps) {
    if (!hasDocument(row)) continue;
    SCOPED_TRACE(row.name);
    const std::vector<Event> events =
        eventsOf({Kind::kEmpty, row.step}, {row.request, row.request});
    EXPECT_EQ(events[0].bytes, (Bytes{0x1B, 0x4E, row.code, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_GT(events.at(1).bytes.size(), 10U) << "and only the first one";
    EXPECT_EQ(events.at(1).bytes[2], row.code) << "no image follows";
  }
}

TEST(LowEndFaults, AnAnswerThatIsNoJson) {
  for (const StepRow& row : kAnswerSteps) {
    if (!hasDocument(row)) continue;
    SCOPED_TRACE(row.name);
    const std::vector<Event> events =
        eventsOf({Kind::kNotJson, row.step}, {row.request, row.request});
    const std::string text = "this is no document";
    Bytes expected = {0x1B, 0x4E, row.code, 0, 19, 0, 0, 0, 0, 0};
    expected.insert(expected.end(), text.begin(), text.end());
    EXPECT_EQ(events[0].bytes, expected);
    EXPECT_EQ(documentOf(events.at(1).bytes)[0], '{');
  }
}

TEST(LowEndFaults, AnAnswerWithAnotherCode) {
  for (const StepRow& row : kAnswerSteps) {
    SCOPED_TRACE(row.name);
    const std::vector<Event> events =
        eventsOf({Kind::kWrongCode, row.step}, {row.request, row.request});
    EXPECT_EQ(events[0].bytes[2], 0x20);
    EXPECT_EQ(events.at(1).bytes[2], row.code);
    Bytes mended = events[0].bytes;
    mended[2] = row.code;
    EXPECT_EQ(mended, events[1].bytes);
  }
}

TEST(LowEndFaults, ShortAnswersAreCut) {
  for (const StepRow& row : kAnswerSteps) {
    SCOPED_TRACE(row.name);
    const std::vector<Event> events =
        eventsOf({Kind::kShortAnswer, row.step, 1, 1, 4}, {row.request, row.request});
    EXPECT_EQ(events[0].bytes, (Bytes{0x1B, 0x4E, row.code, 0}));
    EXPECT_GE(events.at(1).bytes.size(), 10U);
  }
  EXPECT_EQ(
      eventsOf({Kind::kShortAnswer, Step::kAbort, 1, 1, 1000}, {kAbortRequest})[0].bytes.size(),
      10U)
      << "never longer than the whole one";
}

TEST(LowEndFaults, AStallEndsTheExchangeAtEveryStep) {
  for (const StepRow& row : kAnswerSteps) {
    SCOPED_TRACE(row.name);
    const std::vector<Event> events =
        eventsOf({Kind::kStall, row.step}, {row.request, row.request});
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].kind, Event::Kind::kStall);
  }
  const std::vector<Event> events = eventsOf({Kind::kStall, Step::kImage}, {kFeederRequest});
  ASSERT_EQ(events.size(), 2U);
  EXPECT_THAT(documentOf(events[0].bytes), HasSubstr("Starting scan"));
  EXPECT_EQ(events[1].kind, Event::Kind::kStall);
}

TEST(LowEndFaults, AFailedReadTakesTheAnswersPlace) {
  for (const StepRow& row : kAnswerSteps) {
    SCOPED_TRACE(row.name);
    const std::vector<Event> events =
        eventsOf({Kind::kFailedRead, row.step}, {row.request, row.request});
    EXPECT_EQ(events[0].kind, Event::Kind::kFailure);
    EXPECT_EQ(events.at(1).kind, Event::Kind::kTransfer);
    EXPECT_EQ(events[1].bytes[2], row.code) << "no image follows the failure";
  }
}

// The transfers of a job behind the answer to its request.
std::vector<Bytes> imageTransfers(const LowEndScannerOptions& options, const Bytes& request) {
  LowEndScanner scanner(options);
  std::vector<Bytes> transfers;
  for (const Event& event : exchangeWith(scanner, {request})) {
    if (event.kind == Event::Kind::kTransfer) transfers.push_back(event.bytes);
  }
  transfers.erase(transfers.begin());
  return transfers;
}

std::vector<Bytes> goodTransfers(const Bytes& request) {
  LowEndScannerOptions options = with({Kind::kSlow});
  options.faults.clear();
  return imageTransfers(options, request);
}

TEST(LowEndFaults, AFailedReadOfImageDataComesBeforeTheData) {
  const std::vector<Event> events = eventsOf({Kind::kFailedRead, Step::kImage}, {kFeederRequest});
  EXPECT_EQ(events.at(1).kind, Event::Kind::kFailure);
  EXPECT_EQ(imageTransfers(with({Kind::kFailedRead, Step::kImage}), kFeederRequest),
            goodTransfers(kFeederRequest));
}

TEST(LowEndFaults, TheFirstPacketHasAnotherCodeOrIsCut) {
  std::vector<Bytes> expected = goodTransfers(kFeederRequest);
  expected[0][2] = 0x20;
  EXPECT_EQ(imageTransfers(with({Kind::kWrongCode, Step::kImage}), kFeederRequest), expected);
  expected = goodTransfers(kFeederRequest);
  expected[0].resize(30);
  EXPECT_EQ(imageTransfers(with({Kind::kShortAnswer, Step::kImage, 1, 1, 30}), kFeederRequest),
            expected);
}

TEST(LowEndFaults, AnEmptyJobIsALastPacketOnce) {
  LowEndScanner scanner(with({Kind::kEmpty, Step::kImage}));
  const std::vector<Event> events = exchangeWith(scanner, {kFeederRequest});
  ASSERT_EQ(events.size(), 2U);
  EXPECT_EQ(events[1].bytes[8], 0x01);
  EXPECT_TRUE(StreamModel({events[1].bytes}).records().empty());
  EXPECT_GT(exchangeWith(scanner, {kFeederRequest}).size(), 4U);
}

TEST(LowEndFaults, ADropComesInTheMiddleOfItsPage) {
  const std::vector<Event> events =
      eventsOf({Kind::kDrop, Step::kStatus, 2}, {kFeederRequest, kAbortRequest});
  const Event& drop = events.back();
  ASSERT_EQ(drop.kind, Event::Kind::kDrop);
  EXPECT_EQ(drop.count, drop.bytes.size() / 2);
  std::vector<Bytes> transfers;
  transfers.reserve(events.size());
  for (const Event& event : events)
    transfers.push_back(event.bytes);
  transfers.erase(transfers.begin());
  transfers.pop_back();
  const std::vector<Bytes> files = StreamModel(transfers).files();
  const std::vector<Bytes> whole = StreamModel(goodTransfers(kFeederRequest)).files();
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0], whole[0]);
  // Half of the page had come.
  EXPECT_EQ(files[1], Bytes(whole[1].begin(),
                            whole[1].begin() + static_cast<std::ptrdiff_t>(whole[1].size() / 2)));
}

TEST(LowEndFaults, ATruncatedPageIsTheLast) {
  const std::vector<Bytes> transfers =
      imageTransfers(with({Kind::kTruncatedPage, Step::kStatus, 2}), kFeederRequest);
  const StreamModel host(transfers);
  EXPECT_TRUE(host.hasEnded());
  const std::vector<Bytes> whole = StreamModel(goodTransfers(kFeederRequest)).files();
  ASSERT_EQ(host.files().size(), 2U);
  EXPECT_EQ(host.files()[0], whole[0]);
  EXPECT_EQ(host.files()[1].size(), whole[1].size() / 2);
}

TEST(LowEndFaults, ATruncatedDocumentKeepsItsFirstPages) {
  const std::vector<Bytes> transfers =
      imageTransfers(with({Kind::kTruncatedPage, Step::kStatus, 3}), kDocumentRequest);
  const std::vector<Bytes> files = StreamModel(transfers).files();
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(testing::readTiffBytes(files[0]).size(), 2U);
  EXPECT_EQ(testing::readTiffBytes(StreamModel(goodTransfers(kDocumentRequest)).files()[0]).size(),
            3U);
}

TEST(LowEndFaults, ASlowDevicePausesBeforeEachAnswerAndPacket) {
  const std::vector<Event> events =
      eventsOf({Kind::kSlow, Step::kStatus, 1, 1, 70}, {kStatusRequest, kFeederRequest});
  ASSERT_GT(events.size(), 6U);
  for (std::size_t i = 0; i < events.size(); i += 2) {
    EXPECT_EQ(events[i].kind, Event::Kind::kPause);
    EXPECT_EQ(events[i].count, 70U);
    EXPECT_EQ(events[i + 1].kind, Event::Kind::kTransfer);
  }
}

TEST(LowEndFaults, ACancelledJobHasTheWordAndTheEnd) {
  const std::vector<Bytes> transfers = imageTransfers(with({Kind::kCancelled}), kFeederRequest);
  ASSERT_EQ(transfers.size(), 2U);
  EXPECT_EQ(transfers[0], (Bytes{0x1B, 0x4E, 2, 0, 9, 0, 0, 0, 0, 0, 'J', 'O', 'B', 'C', 'A', 'N',
                                 'C', 'E', 'L'}));
  EXPECT_TRUE(StreamModel(transfers).hasEnded());
}

TEST(LowEndFaults, JunkStandsAmongThePacketsAndHurtsNobody) {
  const std::vector<Bytes> transfers = imageTransfers(with({Kind::kJunk}), kFeederRequest);
  int junk = 0;
  for (const Bytes& transfer : transfers) {
    if (transfer[0] != 0x1B || transfer[2] != 2) ++junk;
  }
  EXPECT_GT(junk, 3);
  EXPECT_EQ(StreamModel(transfers).files(), StreamModel(goodTransfers(kFeederRequest)).files());
}

TEST(LowEndFaults, ASilentEndLacksTheLastPacketAlone) {
  const std::vector<Event> events = eventsOf({Kind::kSilentEnd}, {kFeederRequest, kAbortRequest});
  EXPECT_EQ(events.back().kind, Event::Kind::kStall);
  const StreamModel host(imageTransfers(with({Kind::kSilentEnd}), kFeederRequest));
  EXPECT_FALSE(host.hasEnded());
  EXPECT_EQ(host.files(), StreamModel(goodTransfers(kFeederRequest)).files());
}

TEST(LowEndFaults, SeveralFaultsWorkTogether) {
  LowEndScannerOptions options = with({Kind::kPaperJam});
  options.faults.push_back({Kind::kBusy, Step::kStatus, 1, 1});
  options.faults.push_back({Kind::kShortAnswer, Step::kStatus, 1, 1, 0});
  LowEndScanner scanner(options);
  const std::vector<Event> events = exchangeWith(scanner, {kStatusRequest, kStatusRequest});
  EXPECT_TRUE(events[0].bytes.empty());
  EXPECT_THAT(documentOf(events[1].bytes),
              AllOf(HasSubstr("\"busy\":false"), HasSubstr("\"jamPresent\":true")));
}

}  // namespace
}  // namespace tvrscn::virtual_device
