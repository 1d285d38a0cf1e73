// Failed jobs of a QZ device: who is told of a failure at each step and what the device is sent
// behind it, and the second run after a jam.
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/unit/qz_job_support.h"

namespace {

using tvrscn::test::Bytes;
using tvrscn::test::bytes;
using tvrscn::test::hex;
using tvrscn::test::isBeforeReservation;
using tvrscn::test::isCleanUp;
using tvrscn::test::kBusyDialog;
using tvrscn::test::kCancelAnswer;
using tvrscn::test::kCancelledDialog;
using tvrscn::test::kCommDialog;
using tvrscn::test::kDeviceErrorDialog;
using tvrscn::test::kFlatbedSteps;
using tvrscn::test::Kind;
using tvrscn::test::kInitialize;
using tvrscn::test::kJamDialog;
using tvrscn::test::kModeSense;
using tvrscn::test::kRead;
using tvrscn::test::kReadBlockHeader;
using tvrscn::test::kReadBytes;
using tvrscn::test::kRelease;
using tvrscn::test::kReserveBytes;
using tvrscn::test::kRetryAnswer;
using tvrscn::test::kScan;
using tvrscn::test::kStepCount;
using tvrscn::test::kWakeup;
using tvrscn::test::Lines;
using tvrscn::test::QZDialogue;
using tvrscn::test::qzHeader;
using tvrscn::test::QZJob;
using tvrscn::test::Step;

// --- Failures
// ----------------------------------------------------------------------------------------------

struct StatusRow {
  unsigned status;
  bool releases;
  const std::string& dialog;
};
const StatusRow kStatuses[] = {
    {8, false, kBusyDialog},         {9, false, kDeviceErrorDialog},
    {24, false, kDeviceErrorDialog}, {33, false, kDeviceErrorDialog},
    {34, false, kDeviceErrorDialog}, {35, true, kDeviceErrorDialog},
    {36, true, kDeviceErrorDialog},  {1, false, kCommDialog},
    {255, false, kCommDialog},
};

class QZFailures : public QZJob {
 protected:
  QZFailures() { giveDictionary(); }

  void replyAtEachStep(const StatusRow& row, const Lines& toldOfIt) {
    SCOPED_TRACE(row.status);
    atEachStep(
        [&](const Step& step) {
          request(step);
          device.reply(step.command, row.status, step.state, step.data);
          if (row.releases) expectRelease(step);
        },
        [&](const Step&) { expectFailure(toldOfIt); });
  }

  // The two commands of the clean-up have words of their own for a sense: fewer.
  void senseAtEachStep(const char* sense, const Lines& toldOfIt, const Lines& toldOfCleanUp) {
    atEachStep(
        [&](const Step& step) {
          request(step);
          device.checkCondition(step.command, sense);
          if (isBeforeReservation(step.command)) return;
          if (std::string(sense) == kCancelledSense) {
            expectCancelSequence();
          } else {
            device.release();
          }
        },
        [&](const Step& step) {
          expectFailure(isCleanUp(step.command) ? toldOfCleanUp : toldOfIt);
        });
  }

  static constexpr const char* kCancelledSense = "06 00 00";
};

TEST_F(QZFailures, StatusAtEachStepIsToldOnceAndCleanedUpByItsFlag) {
  for (const StatusRow& row : kStatuses)
    replyAtEachStep(row, {row.dialog, "Notify 1011"});
}

TEST_F(QZFailures, StatusAtEachStepWithoutDialogs) {
  hideDialogs();
  for (const StatusRow& row : kStatuses)
    replyAtEachStep(row, {"Notify 1011"});
}

TEST_F(QZFailures, SenseAtEachStepIsToldAloneAndReleasesWhatIsReserved) {
  senseAtEachStep("04 00 00", {kDeviceErrorDialog, "Notify 1002"}, {});
}

TEST_F(QZFailures, SenseAtEachStepWithoutDialogsIsToldTwice) {
  hideDialogs();
  senseAtEachStep("04 00 00", {"Notify 1002", "Notify 1011"}, {"Notify 1011"});
}

TEST_F(QZFailures, CancelAtTheDeviceRunsTheCancelSequence) {
  senseAtEachStep(kCancelledSense, {kCancelledDialog, "Notify 1002"}, {});
}

TEST_F(QZFailures, FirstWakeupThatIsRefusedLeavesNothingToDo) {
  request(kFlatbedSteps[0]);
  device.checkCondition(kWakeup, "01 04 00");
  EXPECT_EQ(scan(), 1);
  EXPECT_FALSE(controller.getReleaseInfo());
  EXPECT_FALSE(controller.getJobCancelled());
  EXPECT_EQ(writes(), Lines{"Write 00 C3 00 00 00 00 00 00"});
}

TEST_F(QZFailures, BusyWakeupIsNotRepeated) {
  device.wakeup({8, 0});
  EXPECT_EQ(scan(), 1);
  EXPECT_TRUE(BasePeer::getRetryCommand(controller));
  EXPECT_EQ(writes().size(), 1U);
}

TEST_F(QZFailures, TransportFailureAtEachStepHasNoCleanUp) {
  const std::function<void(const Step&)> kFailures[] = {
      [this](const Step& step) {
        const bool withoutClient = isBeforeReservation(step.command);
        Bytes data = bytes(step.payload);
        Bytes packet = qzHeader(withoutClient ? 0 : 5, step.command, 0, 0,
                                static_cast<std::uint32_t>(data.size()));
        packet.insert(packet.end(), data.begin(), data.end());
        device.expectAndFail(hex(packet));
      },
      [this](const Step& step) {
        request(step);
        device.failRead();
      },
      [this](const Step& step) {
        request(step);
        device.answer("EE EE 00 00 00 00 00");
      },
      [this](const Step& step) {
        request(step);
        device.replyHeader(step.command, 5, {0, 3}).failRead();
      },
      [this](const Step& step) {
        request(step);
        device.replyHeader(step.command, 5, {0, 3}).answer("01 02 03 04");
      },
  };
  for (const auto& fail : kFailures) {
    atEachStep(fail, [&](const Step&) { expectFailure({kCommDialog, "Notify 1011"}); });
    if (HasFailure()) return;
  }
}

TEST_F(QZFailures, TransportFailureBehindAHeaderKeepsTheHeadersFlags) {
  atEachStep(
      [&](const Step& step) {
        request(step);
        device.replyHeader(step.command, 5, {35, 0}).failRead();
        expectRelease(step);
      },
      [&](const Step&) {
        expectFailure({kDeviceErrorDialog, "Notify 1011"});
      });
}

TEST_F(QZFailures, SenseThatDoesNotComeIsToldNobodyWhileDialogsAreWanted) {
  const auto arrange = [&](const Step& step) {
    request(step);
    device.replyHeader(step.command, 7, {2, 0}).failRead();
    if (!isBeforeReservation(step.command)) device.release();
  };
  atEachStep(arrange, [&](const Step&) { expectFailure({}); });
  hideDialogs();
  atEachStep(arrange, [&](const Step&) { expectFailure({"Notify 1011"}); });
}

TEST_F(QZFailures, FailureWithinTheReadsOfAPageCleansUpByTheLastHeader) {
  play(10);
  device.readImage(2, "01").readRequest().checkCondition(kRead, "06 00 00");
  expectCancelSequence();
  expectFailure({kCancelledDialog, "Notify 1002"});

  play(10);
  device.readImage(2, "01").readImage(2, "02", 36).release();
  expectFailure({kDeviceErrorDialog, "Notify 1011"});
}

TEST_F(QZFailures, StatusOfTheHeaderBehindABlockEndFailsTheJob) {
  play(10);
  device.readImage(5, "01").readBlockHeader({9, 0});
  expectFailure({kDeviceErrorDialog, "Notify 1011"});

  play(10);
  device.readImage(5, "01").request(kReadBlockHeader).checkCondition(kReadBlockHeader, "06 00 00");
  expectCancelSequence();
  expectFailure({kCancelledDialog, "Notify 1002"});

  play(10);
  device.readImage(5, "01").request(kReadBlockHeader).failRead();
  device.testUnitReady().close();
  EXPECT_EQ(scan(), 0);
}

TEST_F(QZFailures, CleanUpThatFailsIsNotCleanedUpAndNotTold) {
  const std::function<void()> kReleases[] = {
      [this] {
        device.release({9, 0});
      },
      [this] {
        device.release({35, 0});
      },
      [this] { device.request(kRelease).checkCondition(kRelease, "04 20 00"); },
      [this] { device.request(kRelease).failRead(); },
      [this] { device.expectAndFail("05 17 00*6"); },
  };
  for (const auto& release : kReleases) {
    play(8);
    device.startScan({36, 0});
    release();
    expectFailure({kDeviceErrorDialog, "Notify 1011"});
  }
}

TEST_F(QZFailures, CancelSequenceReleasesWhateverBecomesOfItsInitialize) {
  const std::function<void()> kInitializes[] = {
      [this] {
        device.initializeCancelled({9, 0});
      },
      [this] { device.request(kInitialize, "80 00*3").checkCondition(kInitialize, "06 00 00"); },
      [this] { device.request(kInitialize, "80 00*3").failRead(); },
      [this] { device.expectAndFail("05 07 00 00 00 00 00 04 80 00*3"); },
  };
  for (const auto& initialize : kInitializes) {
    play(8);
    device.request(kScan).checkCondition(kScan, "06 00 00");
    initialize();
    device.release();
    expectFailure({kCancelledDialog, "Notify 1002"});
  }
}

TEST_F(QZFailures, PagesInFrontOfTheFailureStayValid) {
  device.openFeeder().feederPage(QZDialogue::kDocument);
  device.request(kInitialize, "00*4").reply(kInitialize, 24);
  EXPECT_EQ(scan(), 1);
  EXPECT_EQ(types(), (Lines{"1004", "1005", "1011"}));
  EXPECT_EQ(contentOfLastPage(), "70 71 72");
}

// --- The second run
// ----------------------------------------------------------------------------------------

class QZRetry : public QZFailures {
 protected:
  void answer(std::vector<int> answers) { platform.dialogAnswers = std::move(answers); }
  // A feeder job up to its first READ, which jams, and the clean-up.
  void jamAtTheFirstRead() {
    device.openFeeder().setUp(QZDialogue::kFeederSelect).readRequest();
    device.checkCondition(kRead, "02 53 00").release();
  }
};

TEST_F(QZRetry, RetryRunsTheWholeSequenceFromTheWakeup) {
  answer({kRetryAnswer});
  jamAtTheFirstRead();
  device.openFeeder().feederPage({}).close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(told(), (Lines{kJamDialog, "Notify 1002", "Notify 1006"}));
  const Lines sent = writes();
  ASSERT_EQ(sent.size(), 26U);
  EXPECT_EQ(sent[10], "Write " + kReadBytes);
  EXPECT_EQ(sent[11], "Write 05 17 00 00 00 00 00 00");
  EXPECT_EQ(sent[12], "Write 00 C3 00 00 00 00 00 00");
  EXPECT_EQ(sent[13], "Write " + kReserveBytes);
  EXPECT_EQ(platform.calls({Kind::kMutex}),
            (Lines{"XMutex MutexUSB", "WaitWithRetry 100 100", "~XMutex held"}));
  EXPECT_EQ(platform.logLines(), Lines{"...USB success.\n"});
}

TEST_F(QZRetry, SecondRunDividesBrightnessAndContrastOnceMore) {
  settings_.brightness = L"100";
  settings_.contrast = L"-100";
  answer({kRetryAnswer});
  jamAtTheFirstRead();
  device.openFeeder().feederPage({}).close();
  EXPECT_EQ(scan(), 0);
  const Lines imaging = platform.calls({Kind::kImaging});
  ASSERT_EQ(imaging.size(), 3U);
  EXPECT_TRUE(imaging[1].ends_with(".jpg 6 -6")) << imaging[1];
}

TEST_F(QZRetry, SecondRunKeepsLeftoversAndTellsTheStartOnceAlone) {
  answer({kRetryAnswer});
  device.openFeeder().feederPage(QZDialogue::kDocument).setUp(QZDialogue::kFeederSelect);
  device.readImage(2, "01 02").readRequest().checkCondition(kRead, "02 53 00").release();
  device.openFeeder().feederPage({}).close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(types(), (Lines{"1004", "1005", "1002", "1005", "1006"}));
  EXPECT_EQ(contentOfLastPage(), "01 02 70 71 72");
}

TEST_F(QZRetry, PaperSourceIsChosenAnewInTheSecondRun) {
  answer({kRetryAnswer});
  jamAtTheFirstRead();
  device.openFlatbed().flatbedPage().close();
  EXPECT_EQ(scan(), 0);
}

TEST_F(QZRetry, UserMayRetryAsOftenAsTheJamComesBack) {
  answer({kRetryAnswer, kRetryAnswer, kRetryAnswer});
  for (int i = 0; i < 3; ++i)
    jamAtTheFirstRead();
  device.openFeeder().feederPage({}).close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(types(), (Lines{"1002", "1002", "1002", "1004", "1005", "1006"}));
}

TEST_F(QZRetry, LastRunDecidesTheResult) {
  answer({kRetryAnswer});
  jamAtTheFirstRead();
  device.wakeup({8, 0});
  EXPECT_EQ(scan(), 1);
  EXPECT_EQ(told(), (Lines{kJamDialog, "Notify 1002", kBusyDialog, "Notify 1011"}));
  forget();

  answer({kRetryAnswer, kCancelAnswer});
  jamAtTheFirstRead();
  jamAtTheFirstRead();
  EXPECT_EQ(scan(), 1);
  EXPECT_EQ(told(), (Lines{kJamDialog, "Notify 1002", kJamDialog, "Notify 1002"}));
}

TEST_F(QZRetry, CancelledDialogEndsTheJob) {
  answer({kCancelAnswer});
  jamAtTheFirstRead();
  expectFailure({kJamDialog, "Notify 1002"});
}

TEST_F(QZRetry, JamWithoutADialogIsNotRetried) {
  hideDialogs();
  answer({kRetryAnswer});
  jamAtTheFirstRead();
  expectFailure({"Notify 1002", "Notify 1011"});

  BasePeer::usingTevraUI(controller) = true;
  BasePeer::dictionary(controller).reset();
  jamAtTheFirstRead();
  expectFailure({"Notify 1002"});
}

TEST_F(QZRetry, JamAtEachStepButTheCleanUpsMayBeRetried) {
  atEachStep(
      [&](const Step& step) {
        answer({kRetryAnswer});
        request(step);
        device.checkCondition(step.command, "02 53 00");
        if (!isBeforeReservation(step.command)) device.release();
        if (!isCleanUp(step.command)) play(kStepCount);
      },
      [&](const Step& step) {
        if (isCleanUp(step.command)) {
          expectFailure({});
          return;
        }
        EXPECT_EQ(scan(), 0);
        EXPECT_EQ(told(), (Lines{kJamDialog, "Notify 1002", "Notify 1006"}));
        EXPECT_EQ(device.problems(), Lines{});
        forget();
      });
}

TEST_F(QZRetry, SenseOfTheCleanUpDoesNotTakeTheRetryBack) {
  answer({kRetryAnswer});
  play(10);
  request(kFlatbedSteps[10]);
  device.checkCondition(kRead, "02 53 00");
  device.request(kRelease).checkCondition(kRelease, "04 20 00");
  play(kStepCount);
  EXPECT_EQ(scan(), 0);
}

TEST_F(QZRetry, OtherSensesHaveNoRetry) {
  for (const char* sense : {"02 3A 00", "01 04 00", "04 26 00", "02 53 01", "05 00 00"}) {
    SCOPED_TRACE(sense);
    answer({kRetryAnswer});
    play(3);
    device.request(kInitialize, "00*4").reply(kInitialize);
    device.request(kModeSense, "20 00*3").checkCondition(kModeSense, sense).release();
    EXPECT_EQ(scan(), 1);
    EXPECT_EQ(device.problems(), Lines{});
    forget();
  }
}

}  // namespace
