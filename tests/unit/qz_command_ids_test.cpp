// The single commands and the two sequences by their ids: what each sends, and what its failure
// brings.
#include <string>

#include <gtest/gtest.h>

#include "tests/unit/qz_job_support.h"

namespace {

using tvrscn::test::bytes;
using tvrscn::test::isBeforeReservation;
using tvrscn::test::isCleanUp;
using tvrscn::test::kCommDialog;
using tvrscn::test::kDeviceErrorDialog;
using tvrscn::test::Kind;
using tvrscn::test::kInitialize;
using tvrscn::test::kInquiry;
using tvrscn::test::kJamDialog;
using tvrscn::test::kModeSelect;
using tvrscn::test::kModeSense;
using tvrscn::test::kRead;
using tvrscn::test::kReadBlockHeader;
using tvrscn::test::kRelease;
using tvrscn::test::kReserve;
using tvrscn::test::kReserveBytes;
using tvrscn::test::kRetryAnswer;
using tvrscn::test::kScan;
using tvrscn::test::kSetWindow;
using tvrscn::test::kStepCount;
using tvrscn::test::kTestUnitReady;
using tvrscn::test::kWakeup;
using tvrscn::test::Lines;
using tvrscn::test::QZAnswer;
using tvrscn::test::QZDialogue;
using tvrscn::test::QZJob;

// --- Single commands
// ---------------------------------------------------------------------------------------

// What an id sends, and the bytes that its reply brings.
struct CommandRow {
  int id;
  unsigned code;
  const char* request;
  const char* data = "";
};
const CommandRow kCommands[] = {
    {7, kInitialize, "05 07 00 00 00 00 00 04 00 00 00 00"},
    {18, kInquiry, "05 12 00 00 00 00 00 00", "06 80 00*78"},
    {22, kReserve, nullptr},
    {23, kRelease, "05 17 00 00 00 00 00 00"},
    {27, kScan, "05 1B 00 00 00 00 00 00"},
    {36, kSetWindow, nullptr},
    {40, kRead, "05 28 00 00 00 00 00 04 00 04 00 00"},
    {85, kModeSelect, nullptr},
    {193, kTestUnitReady, "05 C1 00 00 00 00 00 00"},
    {194, kReadBlockHeader, "05 C2 00 00 00 00 00 00", "00*8"},
    {195, kWakeup, "00 C3 00 00 00 00 00 00"},
};

class QZCommandIds : public QZJob {
 protected:
  QZCommandIds() {
    giveDictionary();
    prepareJob();
  }

  void expectRequest(const CommandRow& row) {
    if (row.id == 22) {
      device.expect(kReserveBytes);
    } else if (row.id == 36) {
      // Without limits of the device, everything is 0.
      device.expect("05 24 00 00 00 00 00 30 00*26 20 08 10 01 00*18");
    } else if (row.id == 85) {
      device.expect("05 55 00 00 00 00 00 38 00*3 00 01 00*51");
    } else {
      device.expect(row.request);
    }
  }
  bool run(int id) {
    Peer::retryScan(controller) = true;
    const bool result = controller.sendCommandstoDevice(id);
    EXPECT_EQ(platform.calls({Kind::kMutex}), Lines{});
    return result;
  }
};

TEST_F(QZCommandIds, EachSendsItsCommandAlone) {
  for (const CommandRow& row : kCommands) {
    SCOPED_TRACE(row.id);
    expectRequest(row);
    device.reply(row.code, 0, 1, row.data);
    EXPECT_TRUE(run(row.id));
    EXPECT_FALSE(Peer::retryScan(controller));
    EXPECT_EQ(device.problems(), Lines{});
    EXPECT_EQ(told(), Lines{});
  }
}

TEST_F(QZCommandIds, StatusOfACommandIsNoFailureAndNotTold) {
  for (const CommandRow& row : kCommands) {
    SCOPED_TRACE(row.id);
    for (const unsigned status : {8U, 9U, 255U}) {
      expectRequest(row);
      device.reply(row.code, status, 1, row.data);
      EXPECT_TRUE(run(row.id));
    }
    // These two statuses ask for the release of the unit.
    for (const unsigned status : {35U, 36U}) {
      expectRequest(row);
      device.reply(row.code, status, 1, row.data).release();
      EXPECT_TRUE(run(row.id));
    }
    expectRequest(row);
    device.failRead();
    EXPECT_TRUE(run(row.id));
    EXPECT_EQ(device.problems(), Lines{});
    EXPECT_EQ(told(), Lines{});
  }
}

TEST_F(QZCommandIds, SenseOfACommandIsCleanedUpAndNotRetried) {
  for (const CommandRow& row : kCommands) {
    SCOPED_TRACE(row.id);
    platform.forgetCalls();
    platform.dialogAnswers = {kRetryAnswer};
    expectRequest(row);
    device.checkCondition(row.code, "02 53 00");
    if (!isBeforeReservation(row.code)) device.release();
    EXPECT_TRUE(run(row.id));
    EXPECT_EQ(Peer::retryScan(controller), !isCleanUp(row.code));
    EXPECT_EQ(told(), isCleanUp(row.code) ? Lines{} : (Lines{kJamDialog, "Notify 1002"}));

    expectRequest(row);
    device.checkCondition(row.code, "06 00 00");
    if (!isBeforeReservation(row.code)) expectCancelSequence();
    EXPECT_TRUE(run(row.id));
    EXPECT_EQ(device.problems(), Lines{});
  }
}

TEST_F(QZCommandIds, NinetyAsksForBothModePages) {
  device.modeSenseLimits().modeSenseUnits();
  EXPECT_TRUE(run(90));
  EXPECT_EQ(Peer::pendingModePage(controller), 0);
  CQZUSBScanDataSource& source = *controller.GetUSBScanDataSource();
  EXPECT_EQ(source.GetSubDevicesPageData()->bFeederOptions, 0x23);
  EXPECT_EQ(source.GetMeasurementUnitData()->bytes[7], 0xA7);
}

TEST_F(QZCommandIds, NinetyAsksForTheSecondPageWhateverBecameOfTheFirst) {
  device.request(kModeSense, "20 00*3").failRead();
  device.modeSenseUnits();
  EXPECT_TRUE(run(90));
  // The clean-up goes by the last reply alone.
  device.modeSenseLimits(QZDialogue::kLimits, {35, 0}).modeSenseUnits();
  EXPECT_TRUE(run(90));
  device.modeSenseLimits().modeSenseUnits(QZDialogue::kUnits, {35, 0}).release();
  EXPECT_TRUE(run(90));
}

TEST_F(QZCommandIds, UnknownIdsSendNothing) {
  for (const int id : {-1, 2, 3, 8, 17, 91, 192, 196, 255, 256 + 7, 999}) {
    platform.forgetCalls();
    EXPECT_TRUE(run(id));
    EXPECT_FALSE(Peer::retryScan(controller));
    EXPECT_EQ(platform.calls(), Lines{}) << id;
  }
}

TEST_F(QZCommandIds, ZeroRunsTheScanSequence) {
  play(kStepCount);
  EXPECT_TRUE(run(0));
  EXPECT_EQ(types(), (Lines{"1004", "1005", "1006"}));
  EXPECT_EQ(platform.logLines(), Lines{});
}

TEST_F(QZCommandIds, ZeroThatFailsIsToldAndCleanedUp) {
  play(8);
  device.startScan({36, 0}).release();
  EXPECT_FALSE(run(0));
  EXPECT_EQ(told(), (Lines{kDeviceErrorDialog, "Notify 1011"}));
  platform.forgetCalls();

  hideDialogs();
  play(8);
  device.request(kScan).checkCondition(kScan, "06 00 00");
  expectCancelSequence();
  EXPECT_FALSE(run(0));
  EXPECT_EQ(told(), (Lines{"Notify 1002", "Notify 1011"}));
}

TEST_F(QZCommandIds, ZeroIsNotRetriedAfterAJam) {
  platform.dialogAnswers = {kRetryAnswer};
  play(8);
  device.request(kScan).checkCondition(kScan, "02 53 00").release();
  EXPECT_FALSE(run(0));
  EXPECT_TRUE(Peer::retryScan(controller));
}

TEST_F(QZCommandIds, OneRunsTheCancelSequence) {
  device.initialize().release();
  EXPECT_TRUE(run(1));
  EXPECT_EQ(told(), Lines{});
}

TEST_F(QZCommandIds, OneThatFailsIsToldAndStaysTrue) {
  device.initialize().release({9, 0});
  EXPECT_TRUE(run(1));
  EXPECT_EQ(told(), (Lines{kDeviceErrorDialog, "Notify 1011"}));
  platform.forgetCalls();

  device.initialize().request(kRelease).failRead();
  EXPECT_TRUE(run(1));
  EXPECT_EQ(told(), (Lines{kCommDialog, "Notify 1011"}));
  platform.forgetCalls();

  // The flags of the failed release ask for another one.
  device.initialize().release({35, 0}).release();
  EXPECT_TRUE(run(1));
  EXPECT_EQ(told(), (Lines{kDeviceErrorDialog, "Notify 1011"}));
}

TEST_F(QZCommandIds, SequenceWithoutASourceCountsAsFeeder) {
  Peer::dataSource(controller).reset();
  const auto pass = [this](QZAnswer end) {
    device.initialize().modeSenseLimits().modeSenseUnits();
    device.modeSelect("00*56").setWindow("00*48").startScan().readBlockHeader();
    device.readImage(3, "01").testUnitReady(end);
  };
  device.openFlatbed();
  pass(QZDialogue::kDocument);
  pass({});
  device.close();
  EXPECT_TRUE(run(0));
  EXPECT_EQ(types(), (Lines{"1004", "1005", "1005", "1006"}));
}

TEST_F(QZCommandIds, CancelSequenceTellsWhetherTheUnitIsReleased) {
  device.initialize().release();
  EXPECT_EQ(Peer::cancelSequence(controller), 15009);
  device.initialize({9, 0}).release();
  EXPECT_EQ(Peer::cancelSequence(controller), 15009);
  device.initialize().release({24, 0});
  EXPECT_EQ(Peer::cancelSequence(controller), 15010);
  device.initialize().request(kRelease).failRead();
  EXPECT_EQ(Peer::cancelSequence(controller), 15010);
  EXPECT_EQ(told(), Lines{});
}

TEST_F(QZCommandIds, ScanSequenceTellsItsResult) {
  play(kStepCount);
  EXPECT_EQ(Peer::scanSequence(controller), 15009);
  device.wakeup({8, 0});
  EXPECT_EQ(Peer::scanSequence(controller), 15010);
}

}  // namespace
