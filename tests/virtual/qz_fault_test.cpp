// Each kind of the QZ scanner's misbehaviour with exactly what comes over the wire, and that it
// stops when it should.
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/support/fake_host.h"
#include "tests/virtual/support/qz_host.h"
#include "virtual/qz/qz_scanner.h"

namespace tvrscn::virtual_device {
namespace {

namespace qz = testing::qz;
using qz::JobHost;
using qz::operator+;
using qz::replies;
using qz::Reply;
using qz::senseOf;
using testing::Event;
using testing::exchangeWith;
using Outcomes = std::vector<std::string>;
using Requests = std::deque<Bytes>;

QzScannerOptions with(const std::string& fault) {
  QzScannerOptions options;
  options.feeder = true;
  options.sheets = 3;
  EXPECT_EQ(addQzFault(options, fault), "");
  return options;
}

QzScannerOptions withSmallReplies(const std::string& fault) {
  QzScannerOptions options = with(fault);
  options.pageReplies = 10;
  return options;
}

// The requests that lead up to each step, that step's own last.
struct StepRow {
  const char* name;
  Requests requests;
  std::uint32_t dataSize;  // of the good reply; 0xFFFF: image data
};

const Requests kReserved = {qz::kWakeUp, qz::reserve()};
const Bytes kSelect = qz::select(qz::feeder());
const Requests kSelected = kReserved + Requests{qz::kInitialize, kSelect};

const StepRow kSteps[] = {
    {"wake-up", {qz::kWakeUp}, 0},
    {"reserve", kReserved, 0},
    {"ready", kReserved + Requests{qz::kReady}, 0},
    {"initialize", kReserved + Requests{qz::kInitialize}, 0},
    {"inquiry", kReserved + Requests{qz::kInquiry}, 88},
    {"mode-sense", kReserved + Requests{qz::kSenseSubDevice}, 56},
    {"mode-select", kSelected, 0},
    {"window", kSelected + Requests{qz::window(qz::smallWindow())}, 0},
    {"scan", qz::upToScan(qz::feeder()), 0},
    {"block-header", qz::upToBlockHeader(qz::feeder()), 8},
    {"read", qz::upToBlockHeader(qz::feeder()) + Requests{qz::kRead}, 0xFFFF},
    {"release", kReserved + Requests{qz::kRelease}, 0},
};

std::uint8_t codeOf(const StepRow& row) {
  return row.requests.back()[1];
}

std::string at(const std::string& fault, const StepRow& row, const std::string& argument = "") {
  return fault + "@" + row.name + argument;
}

// The reply to the last of the step's requests.
Reply replyAt(const StepRow& row, const QzScannerOptions& options) {
  QzScanner scanner(options);
  return qz::lastReply(scanner, row.requests);
}

Reply goodReply(const StepRow& row) {
  return replyAt(row, with("slow=0"));
}

// What comes behind the replies to the requests that lead up to the step.
std::vector<Event> eventsAt(const StepRow& row, const std::string& fault) {
  Requests before = row.requests;
  before.pop_back();
  QzScanner good(with("slow=0"));
  const std::size_t skipped = exchangeWith(good, before).size();
  QzScanner scanner(with(fault));
  std::vector<Event> events = exchangeWith(scanner, row.requests);
  // The device's other replies are as they should be.
  EXPECT_GE(events.size(), skipped);
  events.erase(events.begin(), events.begin() + static_cast<std::ptrdiff_t>(skipped));
  return events;
}

TEST(QzFaults, BusyComesCountTimesAndNothingIsDone) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    QzScanner scanner(with(at("busy", row, "=2")));
    const Bytes last = row.requests.back();
    const std::vector<Reply> all = replies(scanner, row.requests + Requests{last, last});
    const std::size_t first = row.requests.size() - 1;
    for (const std::size_t i : {first, first + 1}) {
      EXPECT_EQ(all.at(i).header[1], codeOf(row));
      EXPECT_EQ(all.at(i).header[2], 8);
      EXPECT_TRUE(all.at(i).data.empty());
    }
    EXPECT_EQ(all.at(first + 2).header[2], 0) << "the third try finds all as it was";
  }
}

TEST(QzFaults, CountsRunOverAllHosts) {
  QzScanner scanner(with("busy@wake-up=2"));
  for (const int status : {8, 8, 0})
    EXPECT_EQ(qz::lastReply(scanner, {qz::kWakeUp}).header[2], status);
}

TEST(QzFaults, TheUnitIsReservedByAnotherClient) {
  for (const char* fault : {"reserved", "reserved=1"}) {
    QzScanner scanner(with(fault));
    EXPECT_EQ(qz::lastReply(scanner, kReserved).header, (Bytes{0, 0x16, 24, 0x40, 0, 0, 0, 0}));
    const bool isOver = std::string(fault) == "reserved=1";
    EXPECT_EQ(qz::lastReply(scanner, kReserved).header[2], isOver ? 0 : 24);
  }
}

TEST(QzFaults, EverySenseCodeCanBeGivenAtEveryStep) {
  for (const StepRow& row : kSteps) {
    for (const std::string code :
         {"000000", "010400", "018000", "018001", "018002", "019000", "023A00", "025300", "036000",
          "036200", "030000", "040000", "041A00", "042000", "042400", "042600", "050000", "060000",
          "ABCDEF"}) {
      SCOPED_TRACE(row.name);
      const Reply reply = replyAt(row, with(at("sense", row, "=" + code)));
      EXPECT_EQ(senseOf(reply), code);
      EXPECT_EQ(reply.header[1], codeOf(row));
      EXPECT_EQ(reply.header[7], 8);
    }
  }
}

TEST(QzFaults, ASenseLeavesAllAsItWas) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    QzScanner scanner(with(at("sense", row, "=010400*1")));
    const std::vector<Reply> all = replies(scanner, row.requests + Requests{row.requests.back()});
    EXPECT_EQ(senseOf(all.at(all.size() - 2)), "010400");
    EXPECT_EQ(all.back().header[2], 0);
  }
}

TEST(QzFaults, CountedFaultsComeAfterSoMany) {
  QzScanner scanner(with("sense@ready=030000*2+1"));
  std::vector<std::string> senses;
  for (const Reply& reply :
       replies(scanner, kReserved + Requests{qz::kReady, qz::kReady, qz::kReady, qz::kReady})) {
    senses.push_back(senseOf(reply));
  }
  EXPECT_EQ(senses, (Outcomes{"status 0", "status 0", "status 0", "030000", "030000", "status 0"}));
}

TEST(QzFaults, EveryStatusCanBeGivenAndTheDataStay) {
  for (const StepRow& row : kSteps) {
    const Reply good = goodReply(row);
    for (const int status : {1, 2, 8, 9, 24, 33, 34, 35, 36, 255}) {
      SCOPED_TRACE(row.name);
      const Reply reply = replyAt(row, with(at("status", row, "=" + std::to_string(status))));
      Bytes expected = good.header;
      expected[2] = static_cast<std::uint8_t>(status);
      EXPECT_EQ(reply.header, expected);
      EXPECT_EQ(reply.data, good.data);
    }
  }
}

TEST(QzFaults, EveryStateAndFlagCanBeGivenAndTheDataStay) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    const Reply good = goodReply(row);
    for (int state = 0; state < 16; ++state) {
      const Reply reply = replyAt(row, with(at("state", row, "=" + std::to_string(state))));
      Bytes expected = good.header;
      expected[3] = static_cast<std::uint8_t>((good.header[3] / 16) * 16 + state);
      EXPECT_EQ(reply.header, expected);
      EXPECT_EQ(reply.data, good.data);
      const std::string flags = std::to_string(state * 16 + 7);
      expected[3] = static_cast<std::uint8_t>(state * 16 + good.header[3] % 16);
      EXPECT_EQ(replyAt(row, with(at("flags", row, "=" + flags))).header, expected);
    }
  }
}

TEST(QzFaults, AStateCanComeWithALaterRead) {
  JobHost host;
  QzScanner scanner(withSmallReplies("state=0*1+3"));
  scanner.serve(host);
  ASSERT_GE(host.readStates.size(), 4U);
  EXPECT_EQ((std::vector<int>(host.readStates.begin(), host.readStates.begin() + 4)),
            (std::vector<int>{2, 2, 2, 0}));
  EXPECT_EQ(host.outcomes, Outcomes{""}) << "the device goes on with the next sheet";
  EXPECT_EQ(host.pages.size(), 2U);
}

TEST(QzFaults, TheSensorCanFindAnotherDocument) {
  QzScannerOptions options;
  ASSERT_EQ(addQzFault(options, "flags@ready=0x40+1"), "");
  JobHost host;
  QzScanner scanner(options);
  scanner.serve(host);
  EXPECT_EQ(host.pages.size(), 1U) << "a flatbed job has one page all the same";
  EXPECT_EQ(host.outcomes, Outcomes{""});
}

TEST(QzFaults, ACancelComesInTheMiddleOfItsPage) {
  JobHost host(2);
  QzScanner scanner(withSmallReplies("cancelled=2"));
  scanner.serve(host);
  EXPECT_EQ(host.outcomes, (Outcomes{"060000", "060000"})) << "in each job";
  EXPECT_EQ(host.pages.size(), 2U);
  EXPECT_EQ(host.readSizes.size(), 2U * (10 + 5)) << "half of the page had come";
  const std::vector<int> end(host.commands.end() - 3, host.commands.end());
  EXPECT_EQ(end, (std::vector<int>{0x28, 0x07, 0x17}));
}

TEST(QzFaults, AfterACancelTheBitIsNeededOnce) {
  QzScanner scanner(with("cancelled=1"));
  const std::vector<Reply> all =
      replies(scanner, qz::upToBlockHeader(qz::feeder()) +
                           Requests{qz::kRead, qz::kInitializeAfterCancel, qz::kInitialize,
                                    qz::kInitializeAfterCancel});
  Outcomes senses;
  for (std::size_t i = 10; i < all.size(); ++i)
    senses.push_back(senseOf(all[i]));
  EXPECT_EQ(senses, (Outcomes{"060000", "status 0", "status 0", "042400"}));
  QzScanner other(with("sense@ready=060000"));
  EXPECT_EQ(senseOf(qz::lastReply(other, kReserved + Requests{qz::kReady, qz::kInitialize})),
            "042400");
}

TEST(QzFaults, APaperJamIsReportedOnceAndTheJobGoesOnWithItsPage) {
  JobHost host(3);
  QzScanner scanner(withSmallReplies("paper-jam=2"));
  scanner.serve(host);
  EXPECT_EQ(host.outcomes, (Outcomes{"025300", "", ""}));
  ASSERT_EQ(host.pages.size(), 1U + 2 + 3);
  EXPECT_EQ(host.readSizes.size(), 10U + 5 + 20 + 30);
  EXPECT_EQ(host.pages[0], host.pages[3]);
  // The first half was left with the host.
  const Bytes& jammed = host.pages[1];
  const Bytes& whole = host.pages[4];
  ASSERT_GT(jammed.size(), whole.size());
  EXPECT_EQ(Bytes(jammed.end() - static_cast<std::ptrdiff_t>(whole.size()), jammed.end()), whole);
  EXPECT_EQ(host.pages[2], host.pages[5]);
}

TEST(QzFaults, AfterAPaperJamTheNextHostFindsAllSheets) {
  QzScanner scanner(with("paper-jam=2"));
  JobHost first;
  scanner.serve(first);
  EXPECT_EQ(first.outcomes, Outcomes{"025300"});
  JobHost second;
  scanner.serve(second);
  EXPECT_EQ(second.pages.size(), 3U);
}

TEST(QzFaults, AnOpenCoverPreventsTheScan) {
  JobHost host;
  QzScanner scanner(with("cover-open"));
  scanner.serve(host);
  EXPECT_EQ(host.outcomes, Outcomes{"018000"});
  EXPECT_EQ(host.commands.at(host.commands.size() - 2), 0x1B);
}

TEST(QzFaults, TheFeederIsEmptiedBeforeAPage) {
  JobHost host(2);
  QzScanner scanner(with("no-paper=2"));
  scanner.serve(host);
  EXPECT_EQ(host.outcomes, (Outcomes{"023A00", "023A00"})) << "in each job";
  EXPECT_EQ(host.pages.size(), 2U);
  QzScanner empty(with("no-paper"));
  const Reply reply = qz::lastReply(empty, kSelected);
  EXPECT_EQ(senseOf(reply), "023A00");
  EXPECT_EQ(reply.header[3], 0x04) << "and the sensor knows";
}

TEST(QzFaults, APageInTwoBlocks) {
  JobHost plain;
  QzScanner good(with("slow=0"));
  good.serve(plain);
  const std::size_t size = plain.pages.at(0).size();
  const Requests twoReads = {qz::kRead, qz::kBlockHeader, qz::kRead};
  QzScanner scanner(with("block-end=1"));
  const std::vector<Reply> all = replies(scanner, qz::upToBlockHeader(qz::feeder()) + twoReads);
  const auto low = [](std::size_t value) { return static_cast<std::uint8_t>(value % 256); };
  const auto high = [](std::size_t value) { return static_cast<std::uint8_t>(value / 256); };
  const std::size_t half = size / 2;
  const std::size_t rest = size - half;
  EXPECT_EQ(all.at(9).data, (Bytes{0, 0, 0, 0, 0, 0, high(half), low(half)}));
  EXPECT_EQ(all.at(10).header, (Bytes{1, 0x28, 0, 0x45, 0, 0, high(half), low(half)}));
  EXPECT_EQ(all.at(11).data, (Bytes{0, 0, 0, 0, 0, 0, high(rest), low(rest)}));
  EXPECT_EQ(all.at(12).header, (Bytes{1, 0x28, 0, 0x43, 0, 0, high(rest), low(rest)}));
  Bytes together = all[10].data;
  together.insert(together.end(), all[12].data.begin(), all[12].data.end());
  EXPECT_EQ(together, plain.pages[0]);
}

TEST(QzFaults, ABlockEndsOnceInTheMiddleOfAPageOfManyReplies) {
  JobHost host;
  QzScanner scanner(withSmallReplies("block-end=2"));
  scanner.serve(host);
  std::vector<int> states(10, 2);
  states[9] = 3;
  std::vector<int> expected = states;
  expected.insert(expected.end(), {2, 2, 2, 2, 5});
  // This host does not read on, as drivers do not; the next sheet's bytes come behind.
  expected.insert(expected.end(), states.begin(), states.end());
  EXPECT_EQ(host.readStates, expected);
  EXPECT_EQ(host.pages.size(), 2U);
  EXPECT_EQ(host.outcomes, Outcomes{""});
}

TEST(QzFaults, TheSecondBlockHasToBeAnnounced) {
  QzScanner scanner(with("block-end=1"));
  const std::vector<Reply> all =
      replies(scanner, qz::upToBlockHeader(qz::feeder()) + Requests{qz::kRead, qz::kRead});
  EXPECT_EQ(senseOf(all.back()), "042000");
}

TEST(QzFaults, RepliesCanHaveFewerData) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    const Reply good = goodReply(row);
    const Reply reply = replyAt(row, with(at("fewer", row, "=5")));
    Bytes expected = good.header;
    if (row.dataSize > 0) {
      expected[6] = 0;
      expected[7] = 5;
    }
    EXPECT_EQ(reply.header, expected);
    EXPECT_EQ(reply.data, Bytes(good.data.begin(), good.data.begin() + (row.dataSize > 0 ? 5 : 0)));
    EXPECT_TRUE(replyAt(row, with(at("fewer", row, "=0"))).data.empty());
    EXPECT_EQ(replyAt(row, with(at("fewer", row, "=100000"))).data, good.data);
  }
}

TEST(QzFaults, ShortRepliesAreCutInHeaderOrData) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    const Reply good = goodReply(row);
    std::vector<Event> events = eventsAt(row, at("short", row));
    ASSERT_EQ(events.size(), 1U) << "no data behind a header that is cut";
    EXPECT_EQ(events[0].bytes, Bytes(good.header.begin(), good.header.begin() + 4));
    events = eventsAt(row, at("short", row, "=0"));
    ASSERT_EQ(events.size(), 1U);
    EXPECT_TRUE(events[0].bytes.empty());
    for (const std::size_t count : {0U, 3U}) {
      events = eventsAt(row, at("short", row, "=" + std::to_string(8 + count)));
      EXPECT_EQ(events.at(0).bytes, good.header);
      ASSERT_EQ(events.size(), row.dataSize > 0 ? 2U : 1U);
      if (row.dataSize == 0) continue;
      EXPECT_EQ(events[1].bytes,
                Bytes(good.data.begin(), good.data.begin() + static_cast<std::ptrdiff_t>(count)));
    }
  }
}

TEST(QzFaults, AHugeLengthHasATransferBehindIt) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    const Reply good = goodReply(row);
    const std::vector<Event> events = eventsAt(row, at("huge-length", row));
    ASSERT_EQ(events.size(), 2U);
    Bytes expected = good.header;
    for (std::size_t i = 4; i < 8; ++i)
      expected[i] = 0xFF;
    EXPECT_EQ(events[0].bytes, expected);
    EXPECT_EQ(events[1].bytes, good.data);
  }
}

TEST(QzFaults, AReplyToAnotherCommand) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    const Reply good = goodReply(row);
    Reply reply = replyAt(row, with(at("wrong-command", row)));
    EXPECT_EQ(reply.header[1], 0x20);
    reply = replyAt(row, with(at("wrong-command", row, "=0x5A")));
    EXPECT_EQ(reply.header[1], 0x5A);
    reply.header[1] = codeOf(row);
    EXPECT_EQ(reply.header, good.header);
    EXPECT_EQ(reply.data, good.data);
  }
}

TEST(QzFaults, AStallEndsTheExchangeAtEveryStep) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    const std::vector<Event> events = eventsAt(row, at("stall", row));
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].kind, Event::Kind::kStall);
  }
}

TEST(QzFaults, AFailedReadTakesTheReplysPlace) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    const std::vector<Event> events = eventsAt(row, at("failed-read", row));
    ASSERT_EQ(events.size(), 1U) << "and its data's";
    EXPECT_EQ(events[0].kind, Event::Kind::kFailure);
  }
  QzScanner scanner(with("failed-read@ready"));
  EXPECT_EQ(exchangeWith(scanner, kReserved + Requests{qz::kReady, qz::kReady}).back().bytes.size(),
            8U)
      << "only once";
}

TEST(QzFaults, ADropComesInTheMiddleOfItsPage) {
  const Requests secondPage = {
      qz::kRead, qz::kInitialize,  kSelect,   qz::window(qz::smallWindow()),
      qz::kScan, qz::kBlockHeader, qz::kRead, qz::kReady};
  QzScanner scanner(with("drop=2"));
  const std::vector<Event> events =
      exchangeWith(scanner, qz::upToBlockHeader(qz::feeder()) + secondPage);
  const Event& drop = events.back();
  ASSERT_EQ(drop.kind, Event::Kind::kDrop);
  EXPECT_EQ(drop.count, drop.bytes.size() / 2);
  EXPECT_EQ(drop.bytes.at(0), 0xFF);
  const Bytes& header = events.at(events.size() - 2).bytes;
  EXPECT_EQ(header.at(1), 0x28);
  EXPECT_EQ(header.at(6) * 256U + header.at(7), drop.bytes.size());
}

TEST(QzFaults, ADropTearsTheReplyWithTheMiddle) {
  JobHost host;
  QzScanner scanner(withSmallReplies("drop=1"));
  scanner.serve(host);
  EXPECT_EQ(host.readSizes.size(), 5U);
  EXPECT_GT(host.page.size(), 5 * host.readSizes[0]);
  EXPECT_TRUE(host.pages.empty());
}

TEST(QzFaults, ASlowDevicePausesBeforeEachReply) {
  QzScanner scanner(with("slow=70"));
  const std::vector<Event> events = exchangeWith(scanner, kReserved + Requests{qz::kSenseUnits});
  ASSERT_EQ(events.size(), 7U) << "not within one";
  for (const std::size_t i : {0U, 2U, 4U}) {
    EXPECT_EQ(events[i].kind, Event::Kind::kPause);
    EXPECT_EQ(events[i].count, 70U);
  }
}

TEST(QzFaults, SeveralFaultsWorkTogether) {
  QzScannerOptions options = with("busy@ready");
  for (const char* fault : {"sense@ready=030000*1", "flags@ready=0xF0", "short@ready=11"})
    ASSERT_EQ(addQzFault(options, fault), "");
  QzScanner scanner(options);
  const std::vector<Event> events =
      exchangeWith(scanner, kReserved + Requests{qz::kReady, qz::kReady});
  ASSERT_EQ(events.size(), 5U);
  EXPECT_EQ(events[2].bytes, (Bytes{1, 0xC1, 8, 0xF4, 0, 0, 0, 0}));
  EXPECT_EQ(events[3].bytes, (Bytes{1, 0xC1, 2, 0xF4, 0, 0, 0, 8}));
  EXPECT_EQ(events[4].bytes.size(), 8U) << "the short reply was the first, without data to cut";
}

}  // namespace
}  // namespace tvrscn::virtual_device
