// Each kind of misbehaviour with exactly what comes over the wire, and that it stops when it
// should.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include <gtest/gtest.h>

#include "tests/virtual/support/fake_host.h"
#include "tests/virtual/support/images.h"
#include "virtual/hp/hp_scanner.h"

namespace tvrscn::virtual_device {
namespace {

using testing::Event;
using testing::exchange;
using testing::JobLink;
using testing::kAbortCommand;
using testing::kInquiryCommand;
using testing::kPositionCommand;
using testing::kReadCommand;
using testing::kReadImageCommand;
using testing::kReleaseCommand;
using testing::kReserveCommand;
using testing::kSmallWindow;
using testing::smallWindowFrom;
using Kind = HpFault::Kind;

HpScannerOptions with(const HpFault& fault) {
  HpScannerOptions options;
  options.feeder = true;
  options.sheets = 3;
  options.faults = {fault};
  return options;
}

const Bytes kFeederWindow = smallWindowFrom(0x20, 0x00);

// The commands that lead up to each step, that step's own last.
struct StepRow {
  HpStep step;
  const char* name;
  std::deque<Bytes> commands;
  std::size_t answerSize;  // 0: image data
};

const StepRow kSteps[] = {
    {HpStep::kInquiry, "inquiry", {kInquiryCommand}, 72},
    {HpStep::kReserve, "reserve", {kReserveCommand}, 8},
    {HpStep::kWindow, "window", {kReserveCommand, kFeederWindow}, 32},
    {HpStep::kPosition, "position", {kReserveCommand, kFeederWindow, kPositionCommand}, 6},
    {HpStep::kRead, "read", {kReserveCommand, kFeederWindow, kPositionCommand, kReadCommand}, 20},
    {HpStep::kReadImage,
     "read image",
     {kReserveCommand, kFeederWindow, kPositionCommand, kReadCommand, kReadImageCommand},
     0},
    {HpStep::kAbort, "abort", {kAbortCommand}, 3},
    {HpStep::kRelease, "release", {kReleaseCommand}, 3},
};

// The commands of row with its last one `times` over.
std::deque<Bytes> repeated(const StepRow& row, int times) {
  std::deque<Bytes> commands = row.commands;
  for (int i = 1; i < times; ++i)
    commands.push_back(row.commands.back());
  return commands;
}

TEST(HpFaults, BusyComesCountTimesAtEveryStepWithAStatus) {
  for (const StepRow& row : kSteps) {
    if (row.answerSize == 0) continue;
    SCOPED_TRACE(row.name);
    HpScanner scanner{with({Kind::kBusy, row.step, 1, 2})};
    const std::vector<Event> events = exchange(scanner, repeated(row, 3));
    ASSERT_EQ(events.size(), row.commands.size() + 2);
    const std::size_t first = row.commands.size() - 1;
    EXPECT_EQ(events[first].bytes.size(), row.answerSize);
    EXPECT_EQ(events[first].bytes[1], 0x08);
    EXPECT_EQ(events[first + 1].bytes[1], 0x08);
    EXPECT_EQ(events[first + 2].bytes[1], 0x00);
    for (std::size_t i = 0; i < first; ++i)
      EXPECT_EQ(events[i].bytes[1], 0x00) << i;
  }
}

TEST(HpFaults, CountsRunOverAllHosts) {
  HpScanner scanner{with({Kind::kBusy, HpStep::kInquiry, 1, 2})};
  EXPECT_EQ(exchange(scanner, {kInquiryCommand})[0].bytes[1], 0x08);
  EXPECT_EQ(exchange(scanner, {kInquiryCommand})[0].bytes[1], 0x08);
  EXPECT_EQ(exchange(scanner, {kInquiryCommand})[0].bytes[1], 0x00);
}

TEST(HpFaults, ABusyObjectPositionDoesNotUseUpAPage) {
  HpScanner scanner{with({Kind::kBusy, HpStep::kPosition, 1, 1})};
  const std::vector<Event> events =
      exchange(scanner, {kReserveCommand, kFeederWindow, kPositionCommand, kPositionCommand,
                         kPositionCommand, kPositionCommand, kPositionCommand});
  const int statuses[] = {0, 0, 8, 0, 0, 0, 2};
  ASSERT_EQ(events.size(), 7U);
  for (std::size_t i = 0; i < 7; ++i)
    EXPECT_EQ(events[i].bytes[1], statuses[i]) << i;
}

TEST(HpFaults, ABusyReadDoesNotUseUpABlock) {
  HpScanner scanner{with({Kind::kBusy, HpStep::kRead, 1, 1})};
  const std::vector<Event> events = exchange(
      scanner, {kReserveCommand, kFeederWindow, kPositionCommand, kReadCommand, kReadCommand});
  Bytes busy(20, 0);
  busy[1] = 0x08;
  EXPECT_EQ(events[3].bytes, busy);
  EXPECT_EQ(events[4].bytes[3], 0x70);
}

TEST(HpFaults, AnyStatusCanBeAnswered) {
  HpScanner scanner{with({Kind::kStatus, HpStep::kReserve, 1, 0, 0xFF})};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(exchange(scanner, {kReserveCommand})[0].bytes,
              (Bytes{0x00, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}))
        << "a count of 0 is every time";
  }
}

TEST(HpFaults, EveryMessageWordCanBeAnsweredWhereThereIsRoom) {
  for (const unsigned word :
       {0x0001U, 0x0002U, 0x0004U, 0x0008U, 0x0010U, 0x0020U, 0x0040U, 0x0080U, 0x0100U, 0x0200U,
        0x0400U, 0x0800U, 0x1000U, 0x2000U, 0xABCDU}) {
    SCOPED_TRACE(word);
    const auto high = static_cast<std::uint8_t>(word / 256);
    const auto low = static_cast<std::uint8_t>(word % 256);
    HpScanner reserve{with({Kind::kMessage, HpStep::kReserve, 1, 1, word})};
    EXPECT_EQ(exchange(reserve, {kReserveCommand})[0].bytes,
              (Bytes{0x00, 0x02, 0x00, 0x20, high, low, 0x00, 0x00}));
    HpScanner position{with({Kind::kMessage, HpStep::kPosition, 1, 1, word})};
    EXPECT_EQ(exchange(position, {kReserveCommand, kFeederWindow, kPositionCommand})[2].bytes,
              (Bytes{0x00, 0x02, 0x00, 0x00, high, low}));
    HpScanner window{with({Kind::kMessage, HpStep::kWindow, 1, 1, word})};
    const Bytes answer = exchange(window, {kReserveCommand, kFeederWindow})[1].bytes;
    ASSERT_EQ(answer.size(), 32U);
    EXPECT_EQ(Bytes(answer.begin(), answer.begin() + 8),
              (Bytes{0x00, 0x02, 0x00, 0x20, high, low, 0x00, 0x00}));
  }
}

TEST(HpFaults, AReservationWithTheMessageNoErrorHoldsAllTheSame) {
  HpScanner scanner{with({Kind::kMessage, HpStep::kReserve, 1, 1, 0x0001})};
  EXPECT_EQ(exchange(scanner, {kReserveCommand, kFeederWindow})[1].bytes[1], 0x00);
}

TEST(HpFaults, PaperTroubleComesBeforeItsPageInEachJob) {
  for (const unsigned word : {0x0010U, 0x0020U, 0x0040U}) {
    SCOPED_TRACE(word);
    HpScanner scanner{with({Kind::kBeforePage, HpStep::kPosition, 2, 1, word})};
    for (int round = 0; round < 2; ++round) {
      JobLink job(kFeederWindow);
      scanner.serve(job);
      EXPECT_EQ(job.pages.size(), 1U);
      EXPECT_EQ(job.lastPosition,
                (Bytes{0x00, 0x02, 0x00, 0x00, 0x00, static_cast<std::uint8_t>(word)}));
    }
  }
}

TEST(HpFaults, CancellingComesBeforeItsPage) {
  HpScanner scanner{with({Kind::kCancelled, HpStep::kPosition, 3})};
  JobLink job(kFeederWindow);
  scanner.serve(job);
  EXPECT_EQ(job.pages.size(), 2U);
  EXPECT_EQ(job.lastPosition, (Bytes{0x00, 0x04, 0x00, 0x00, 0x00, 0x00}));
}

TEST(HpFaults, ShortAnswersAreCutAtEveryStep) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    HpScanner scanner{with({Kind::kShortAnswer, row.step, 1, 1, 1})};
    const std::vector<Event> events = exchange(scanner, repeated(row, 2));
    const std::size_t first = row.commands.size() - 1;
    EXPECT_EQ(events[first].kind, Event::Kind::kTransfer);
    EXPECT_EQ(events[first].bytes.size(), 1U);
    if (row.answerSize != 0) {
      EXPECT_EQ(events[first + 1].bytes.size(), row.answerSize);
    }
  }
}

TEST(HpFaults, AShortAnswerIsNeverLongerThanTheWholeOne) {
  HpScanner scanner{with({Kind::kShortAnswer, HpStep::kReserve, 1, 2, 0})};
  EXPECT_TRUE(exchange(scanner, {kReserveCommand})[0].bytes.empty());
  HpScanner generous{with({Kind::kShortAnswer, HpStep::kReserve, 1, 1, 1000})};
  EXPECT_EQ(exchange(generous, {kReserveCommand})[0].bytes.size(), 8U);
}

TEST(HpFaults, AStallEndsTheExchangeAtEveryStep) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    HpScanner scanner{with({Kind::kStall, row.step})};
    const std::vector<Event> events = exchange(scanner, repeated(row, 2));
    ASSERT_EQ(events.size(), row.commands.size());
    EXPECT_EQ(events.back().kind, Event::Kind::kStall);
  }
}

TEST(HpFaults, AFailedReadTakesTheAnswersPlace) {
  for (const StepRow& row : kSteps) {
    if (row.answerSize == 0) continue;
    SCOPED_TRACE(row.name);
    HpScanner scanner{with({Kind::kFailedRead, row.step, 1, 1})};
    const std::vector<Event> events = exchange(scanner, repeated(row, 2));
    const std::size_t first = row.commands.size() - 1;
    ASSERT_EQ(events.size(), row.commands.size() + 1);
    EXPECT_EQ(events[first].kind, Event::Kind::kFailure);
    EXPECT_EQ(events[first + 1].kind, Event::Kind::kTransfer);
  }
}

TEST(HpFaults, FailedReadsOfImageDataComeBeforeTheData) {
  HpScanner scanner{with({Kind::kFailedRead, HpStep::kReadImage, 1, 2})};
  const std::vector<Event> events = exchange(
      scanner, {kReserveCommand, kFeederWindow, kPositionCommand, kReadCommand, kReadImageCommand});
  ASSERT_EQ(events.size(), 7U);
  EXPECT_EQ(events[4].kind, Event::Kind::kFailure);
  EXPECT_EQ(events[5].kind, Event::Kind::kFailure);
  EXPECT_EQ(events[6].kind, Event::Kind::kTransfer);
  EXPECT_EQ(testing::readJpegBytes(events[6].bytes).width, 75);
}

TEST(HpFaults, ALostEndBlockIsAnsweredAsCancelledAndThePageIsOver) {
  HpScanner scanner{with({Kind::kEndBlockLost, HpStep::kRead, 2})};
  JobLink job(kFeederWindow);
  scanner.serve(job);
  ASSERT_EQ(job.pages.size(), 3U);
  EXPECT_EQ(job.pages[0].back().type, 0x81);
  ASSERT_EQ(job.pages[1].size(), 1U);
  EXPECT_EQ(job.pages[1].back().type, 0x70);
  EXPECT_EQ(job.pages[2].back().type, 0x81);
  Bytes cancelled(20, 0);
  cancelled[1] = 0x04;
  EXPECT_NE(std::find(job.answers.begin(), job.answers.end(), cancelled), job.answers.end());
}

TEST(HpFaults, ADropComesInTheMiddleOfTheSecondBlock) {
  HpScanner scanner{with({Kind::kDrop, HpStep::kReadImage, 1})};
  const std::vector<Event> events =
      exchange(scanner, {kReserveCommand, kFeederWindow, kPositionCommand, kReadCommand,
                         kReadImageCommand, kReadCommand, kReadImageCommand, kReadCommand});
  ASSERT_EQ(events.size(), 7U);
  EXPECT_EQ(events[4].kind, Event::Kind::kTransfer);
  const Event& drop = events[6];
  EXPECT_EQ(drop.kind, Event::Kind::kDrop);
  EXPECT_GT(drop.count, 0U);
  EXPECT_LT(drop.count, drop.bytes.size());
}

TEST(HpFaults, ASlowDevicePausesBeforeEachAnswer) {
  HpScanner scanner{with({Kind::kSlow, HpStep::kInquiry, 1, 1, 70})};
  const std::vector<Event> events = exchange(scanner, {kInquiryCommand, kReserveCommand});
  ASSERT_EQ(events.size(), 4U);
  for (const std::size_t i : {0U, 2U}) {
    EXPECT_EQ(events[i].kind, Event::Kind::kPause);
    EXPECT_EQ(events[i].count, 70U);
    EXPECT_EQ(events[i + 1].kind, Event::Kind::kTransfer);
  }
}

TEST(HpFaults, FaultsOfOneStepStrikeOneAfterAnother) {
  HpScannerOptions options = with({Kind::kBusy, HpStep::kPosition, 1, 1});
  options.faults.push_back({Kind::kBeforePage, HpStep::kPosition, 1, 1, 0x0020});
  HpScanner scanner{options};
  const std::vector<Event> events =
      exchange(scanner, {kReserveCommand, kFeederWindow, kPositionCommand, kPositionCommand});
  EXPECT_EQ(events[2].bytes[1], 0x08);
  EXPECT_EQ(events[3].bytes, (Bytes{0x00, 0x02, 0x00, 0x00, 0x00, 0x20}));
}

}  // namespace
}  // namespace tvrscn::virtual_device
