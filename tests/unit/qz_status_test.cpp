// The words of a QZ device: operation status, scanner status, sense; and what of them becomes job
// flags, notifications and dialogs.
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/qz_test.h"

namespace {

using tvrscn::test::Kind;
using tvrscn::test::kInitialize;
using tvrscn::test::kModeSelect;
using tvrscn::test::kModeSense;
using tvrscn::test::kQZStatusTexts;
using tvrscn::test::kRead;
using tvrscn::test::kReadBlockHeader;
using tvrscn::test::kRelease;
using tvrscn::test::kReserve;
using tvrscn::test::kScan;
using tvrscn::test::kSetWindow;
using tvrscn::test::kTestUnitReady;
using tvrscn::test::kWakeup;
using tvrscn::test::Lines;
using tvrscn::test::QZDialogue;
using tvrscn::test::QZTest;

constexpr unsigned kCommands[] = {0x07, 0x12, 0x16, 0x17, 0x1B, 0x24,
                                  0x28, 0x55, 0x5A, 0xC1, 0xC2, 0xC3};

const char* const kStateTexts[] = {
    "Idle : Scanner resouce can be ensured",
    "Scan Ready : Scanning is ready",
    "Image Transferring: image data is transferring",
    "Image End: Image data transfer has ended",
    "Error with Reserved: Error when scanner resource is ensured",
    "Image Transferring (Block End): Image transfer has ended for one block",
};

class QZStatus : public QZTest {
 protected:
  QZStatus() { BasePeer::callback(controller) = platform.callback(); }

  void take(unsigned command, unsigned status, unsigned scannerStatus = 0) {
    USBVendorPacketHeader header = {};
    header.bCommandId = static_cast<std::uint8_t>(command);
    header.bOperationStatus = static_cast<std::uint8_t>(status);
    header.bScannerStatus = static_cast<std::uint8_t>(scannerStatus);
    Peer::operationStatus(controller, header);
  }
  void setFlags(bool set) {
    controller.setReleaseInfo(set);
    controller.setRetryCommand(set);
    controller.setJobCancelled(set);
  }
  // "release", "retry" and "cancelled", those that are set.
  std::string flags() {
    std::string text;
    if (controller.getReleaseInfo()) text += "release ";
    if (BasePeer::getRetryCommand(controller)) text += "retry ";
    if (controller.getJobCancelled()) text += "cancelled ";
    return text;
  }
  // The code as it stands after setSenseInformation.
  std::string sense(unsigned command, std::string_view code) {
    std::string text(code);
    Peer::senseInformation(controller, static_cast<unsigned char>(command), text.data());
    return text;
  }
  Lines heard() { return platform.calls({Kind::kDialog, Kind::kNotification}); }
};

// --- Operation status
// -----------------------------------------------------------------------------

TEST_F(QZStatus, OperationStatusHasItsText) {
  for (const auto& row : kQZStatusTexts) {
    take(kTestUnitReady, row.status);
    EXPECT_EQ(Peer::operationStatus(controller), row.status);
    EXPECT_STREQ(Peer::operationStatusText(controller), row.text) << row.status;
  }
}

TEST_F(QZStatus, UnknownOperationStatusIsTakenAndKeepsTheText) {
  std::map<unsigned, const char*> known;
  for (const auto& row : kQZStatusTexts)
    known[row.status] = row.text;
  EXPECT_STREQ(Peer::operationStatusText(controller), "") << "before the first reply";
  for (unsigned status = 0; status <= 0xFF; ++status) {
    if (known.contains(status)) continue;
    take(kTestUnitReady, 9);
    take(kTestUnitReady, status);
    EXPECT_EQ(Peer::operationStatus(controller), status);
    EXPECT_STREQ(Peer::operationStatusText(controller), known[9]) << status;
    EXPECT_EQ(flags(), "") << status;
  }
}

TEST_F(QZStatus, FlagsFollowStatusAndCommand) {
  for (const unsigned command : kCommands) {
    for (unsigned status = 0; status <= 0xFF; ++status) {
      std::string expected;
      if (status == 2 && command != 0x16 && command != 0xC3) expected = "release ";
      if (status == 8 && command == 0xC3) expected = "retry ";
      if (status == 35 || status == 36) expected = "release ";
      setFlags(false);
      take(command, status);
      EXPECT_EQ(flags(), expected) << command << " " << status;
      setFlags(true);
      take(command, status);
      EXPECT_EQ(flags(), expected) << "what an earlier reply left is wiped";
    }
  }
}

// --- Scanner status
// -------------------------------------------------------------------------------

TEST_F(QZStatus, ScannerStatusIsTextAndFourFlags) {
  for (unsigned status = 0; status <= 0xFF; ++status) {
    Peer::scannerStatusText(controller) = "kept";
    take(kTestUnitReady, 0, status);
    const unsigned state = status % 16;
    EXPECT_STREQ(Peer::scannerStatusText(controller), state < 6 ? kStateTexts[state] : "kept")
        << status;
    EXPECT_EQ(Peer::scannerFlag4(controller), status / 16 % 2) << status;
    EXPECT_EQ(Peer::scannerFlag5(controller), status / 32 % 2) << status;
    EXPECT_EQ(Peer::documentPresent(controller), status / 64 % 2) << status;
    EXPECT_EQ(Peer::scannerFlag7(controller), status / 128) << status;
  }
}

TEST_F(QZStatus, ScannerStatusIsTakenFromEveryReply) {
  take(kRead, 2, 0xF5);
  EXPECT_STREQ(Peer::scannerStatusText(controller), kStateTexts[5]);
  EXPECT_EQ(Peer::documentPresent(controller), 1U);
  EXPECT_EQ(Peer::scannerFlag4(controller) + Peer::scannerFlag5(controller) +
                Peer::scannerFlag7(controller),
            3U);
}

// --- Sense
// ----------------------------------------------------------------------------------------

struct SenseRow {
  const char* code;
  const char* message;
  const char* dialog;  // with a dictionary
};

constexpr const char* kGeneralError = "Dialog [Title] GeneralError 0x40000";
constexpr const char* kDeviceError = "Dialog [Title] DeviceError 0x40000";
constexpr const char* kPaperJam = "Dialog [PaperJamTitle] PaperJam 0x40005";

const SenseRow kSenseRows[] = {
    {"000000", "No Error", kGeneralError},
    {"010400",
     "Scanner Not Ready - Incomplete scan condition or Scan data was requested without an invalid "
     "scan command.",
     "Dialog [Title] CoverOpen 0x40000"},
    {"018000", "ADF cover is open or was opened during scanning.", kGeneralError},
    {"018001", "ADF cover for maintenance is open or was opened during scanning.", kGeneralError},
    {"018002",
     "Scanner cannot operate because ADF cover was once opened and then closed. Error needs to be "
     "cleared",
     kGeneralError},
    {"019000",
     "Scanning from ADF cannot start because the platen cover is open or was opened during "
     "scanning.",
     kGeneralError},
    {"023A00",
     "No document on ADF at MODE SELECT. Issue RELEASE UNIT if RESERVE UNIT is established "
     "already.",
     "Dialog [Title] NoDocument 0x40000"},
    {"025300",
     "Paper Jam occured while ADF was used or stopped abnormally during operation. Issue RELEASE "
     "UNIT if RESERVE UNIT is established already. Jam clear operation by user is necessary.",
     kPaperJam},
    {"036000", "Lamp failure - Error in white balance and in optical hardware.", kGeneralError},
    {"036200", "Scan Head Positioning Error - Error in motor or head home positioning sensor.",
     kGeneralError},
    {"030000", "Hardware Error. Power OFF is necessary.", kGeneralError},
    {"040000",
     "Illegal Request - Command for changing the status cannot be accepted during scanning.",
     kDeviceError},
    {"041A00",
     "Parameter List Length error - Length block value is out of the specification. Change the "
     "Length block value.",
     kDeviceError},
    {"042000",
     "Invalid Command Operation Code - Command is not supported or cannot be used in the current "
     "status. Check the Client ID and Command Value.",
     kDeviceError},
    {"042400", "Invalid Field in parameter - Error in setting of Command Descriptor Block.",
     kDeviceError},
    {"042600",
     "Invalid field in parameter list - Error in setting of the transferred parameter. Check the "
     "command value.",
     kDeviceError},
    {"050000",
     "No scanned data is remaining because the byte count of data requested is more than the byte "
     "count of scanned data. Data transfer terminated.",
     "Dialog [Title] InvalidRequest 0x40000"},
    {"060000", "Scan Job is cancelled at the device.", "Dialog [Title] JobCancelled 0x40000"},
};

// Codes that the table does not hold.
const SenseRow kUnknownSenseRows[] = {
    {"FFFFFF", nullptr, kGeneralError},
    {"02530A", nullptr, kGeneralError},
    {"060001", nullptr, kGeneralError},
    {"042500", nullptr, kGeneralError},
};

std::vector<SenseRow> allSenseRows() {
  std::vector<SenseRow> rows(std::begin(kSenseRows), std::end(kSenseRows));
  rows.insert(rows.end(), std::begin(kUnknownSenseRows), std::end(kUnknownSenseRows));
  return rows;
}

bool isOfCleanUp(unsigned command) {
  return command == kInitialize || command == kRelease;
}

TEST_F(QZStatus, SenseTableIsMadeWithTheController) {
  std::map<std::string, std::string> expected;
  for (const SenseRow& row : kSenseRows)
    expected[row.code] = row.message;
  EXPECT_EQ(expected.size(), 18U);
  EXPECT_EQ(Peer::senseMessages(controller), expected);
}

TEST_F(QZStatus, SenseHasItsMessageAndCancelFlagForEveryCommand) {
  for (const unsigned command : kCommands) {
    for (const SenseRow& row : allSenseRows()) {
      Peer::senseText(controller) = "kept";
      setFlags(false);
      EXPECT_EQ(sense(command, row.code), row.code);
      EXPECT_STREQ(Peer::senseText(controller), row.message != nullptr ? row.message : "kept")
          << row.code;
      EXPECT_EQ(flags(), std::string(row.code) == "060000" ? "cancelled " : "") << row.code;
    }
  }
}

TEST_F(QZStatus, SenseIsMadeUpperCaseInPlace) {
  giveDictionary();
  EXPECT_EQ(sense(kModeSelect, "023a00"), "023A00");
  EXPECT_EQ(heard(), (Lines{"Dialog [Title] NoDocument 0x40000", "Notify 1002"}));
  EXPECT_EQ(sense(kModeSelect, "abcdef"), "ABCDEF");
}

TEST_F(QZStatus, SenseReachesTheUserButForTheCommandsOfTheCleanUp) {
  giveDictionary();
  for (const unsigned command : kCommands) {
    for (const SenseRow& row : allSenseRows()) {
      platform.forgetCalls();
      sense(command, row.code);
      EXPECT_EQ(heard(), isOfCleanUp(command) ? Lines{} : (Lines{row.dialog, "Notify 1002"}))
          << command << " " << row.code;
    }
  }
}

TEST_F(QZStatus, WithoutDialogsOrDictionarySenseIsANotificationAlone) {
  for (const bool dialogs : {true, false}) {  // the first time without a dictionary
    BasePeer::usingTevraUI(controller) = dialogs;
    for (const unsigned command : kCommands) {
      for (const SenseRow& row : allSenseRows()) {
        platform.forgetCalls();
        sense(command, row.code);
        EXPECT_EQ(heard(), isOfCleanUp(command) ? Lines{} : Lines{"Notify 1002"})
            << command << " " << row.code;
      }
    }
    giveDictionary();
  }
}

TEST_F(QZStatus, RetryIsTheAnswerToAPaperJamAlone) {
  const struct {
    const char* code;
    int answer;
    bool retry;
  } kCases[] = {
      {"025300", 4, true},
      {"025300", 2, false},
      {"025300", 1, false},
      {"023A00", 4, false},
  };
  giveDictionary();
  for (const auto& row : kCases) {
    platform.dialogAnswers = {row.answer};
    Peer::retryScan(controller) = !row.retry;
    sense(kRead, row.code);
    EXPECT_EQ(Peer::retryScan(controller), row.retry) << row.code << " " << row.answer;
  }
}

TEST_F(QZStatus, PaperJamWithoutDialogsIsNoRetry) {
  Peer::retryScan(controller) = true;
  sense(kRead, "025300");  // no dictionary
  EXPECT_FALSE(Peer::retryScan(controller));
  giveDictionary();
  hideDialogs();
  Peer::retryScan(controller) = true;
  sense(kRead, "025300");
  EXPECT_FALSE(Peer::retryScan(controller));
}

TEST_F(QZStatus, SenseOfTheCleanUpKeepsTheRetry) {
  giveDictionary();
  for (const unsigned command : {0x07U, 0x17U}) {
    for (const bool retry : {true, false}) {
      platform.dialogAnswers = {4};
      Peer::retryScan(controller) = retry;
      sense(command, "025300");
      EXPECT_EQ(Peer::retryScan(controller), retry);
    }
  }
}

TEST_F(QZStatus, CancelFlagHoldsUntilTheNextReply) {
  take(kRead, 2);
  sense(kRead, "060000");
  EXPECT_EQ(flags(), "release cancelled ");
  take(kInitialize, 0);
  EXPECT_EQ(flags(), "");
}

// --- In a job
// -------------------------------------------------------------------------------------

struct Step {
  unsigned command;
  std::string_view payload;
  unsigned state;
  std::string_view data;
};

const Step kSequence[] = {
    {kWakeup, "", 0, ""},
    {kReserve, QZDialogue::kReservation, 0, ""},
    {kTestUnitReady, "", 0, ""},
    {kInitialize, "00*4", 0, ""},
    {kModeSense, "20 00*3", 0, QZDialogue::kLimits},
    {kModeSense, "03 00*3", 0, QZDialogue::kUnits},
    {kModeSelect, QZDialogue::kFlatbedSelect, 0, ""},
    {kSetWindow, QZDialogue::kWindow, 0, ""},
    {kScan, "", 0, ""},
    {kReadBlockHeader, "", 0, "EE*4 00 04 00 00"},
    {kRead, "00 04 00 00", 3, "70 71 72"},
    {kTestUnitReady, "", 0, ""},
    {kInitialize, "00*4", 0, ""},
    {kRelease, "", 0, ""},
};

class QZFailedStep : public QZTest {
 protected:
  // The sequence up to the step with that number, and its request.
  const Step& stopAt(std::size_t number) {
    for (std::size_t i = 0; i < number; ++i) {
      const Step& step = kSequence[i];
      device.request(step.command, step.payload).reply(step.command, 0, step.state, step.data);
    }
    device.request(kSequence[number].command, kSequence[number].payload);
    return kSequence[number];
  }
  void expectRelease(std::size_t number) {
    device.expect(number == 0 ? "00 17 00*6" : "05 17 00*6").answer("EE 17 00*6");
  }
  // What the user and the caller hear of the job but for its pages.
  Lines runFailing() {
    BasePeer::reservedClientID(controller) = 0;
    platform.forgetCalls();
    EXPECT_EQ(scan(), 1);
    EXPECT_EQ(device.problems(), Lines{});
    Lines lines = platform.calls({Kind::kDialog, Kind::kNotification});
    std::erase_if(lines, [](const std::string& line) {
      return line == "Notify 1004" || line.starts_with("Notify 1005 ");
    });
    device.forget();
    return lines;
  }
  // Runs a check for each step, first with dialogs, then without.
  void forEachStep(const std::function<void(std::size_t number, bool dialogs)>& check) {
    giveDictionary();
    for (const bool dialogs : {true, false}) {
      BasePeer::usingTevraUI(controller) = dialogs;
      for (std::size_t number = 0; number < std::size(kSequence); ++number)
        check(number, dialogs);
    }
  }
};

TEST_F(QZFailedStep, SenseIsToldOnceAndTheReservationGivenBack) {
  forEachStep([this](std::size_t number, bool dialogs) {
    for (const SenseRow& row : allSenseRows()) {
      const std::string code = row.code;
      const Step& step = stopAt(number);
      device.checkCondition(step.command,
                            code.substr(0, 2) + " " + code.substr(2, 2) + " " + code.substr(4, 2));
      const bool reserved = number > 1;
      if (reserved && code == "060000") device.initializeCancelled();
      if (reserved) expectRelease(number);
      Lines expected;
      if (!isOfCleanUp(step.command)) {
        if (dialogs) expected.emplace_back(row.dialog);
        expected.emplace_back("Notify 1002");
      }
      if (!dialogs) expected.emplace_back("Notify 1011");
      EXPECT_EQ(runFailing(), expected) << "step " << number << " " << code;
    }
  });
}

TEST_F(QZFailedStep, StatusIsToldOnceAndSomeGiveTheReservationBack) {
  const struct {
    unsigned status;
    const char* dialog;
  } kCases[] = {
      {8, "Dialog [Title] ScannerBusy 0x40000"},
      {9, kDeviceError},
      {24, kDeviceError},
      {33, kDeviceError},
      {34, kDeviceError},
      {35, kDeviceError},
      {36, kDeviceError},
      {1, "Dialog [CommFailureTitle] CommFailure 0x40000"},
      {255, "Dialog [CommFailureTitle] CommFailure 0x40000"},
  };
  forEachStep([this, &kCases](std::size_t number, bool dialogs) {
    for (const auto& row : kCases) {
      const Step& step = stopAt(number);
      device.reply(step.command, row.status, step.state, step.data);
      if (row.status == 35 || row.status == 36) expectRelease(number);
      EXPECT_EQ(runFailing(), dialogs ? (Lines{row.dialog, "Notify 1011"}) : Lines{"Notify 1011"})
          << "step " << number << " status " << row.status;
      EXPECT_FALSE(Peer::retryScan(controller));
    }
  });
}

TEST_F(QZFailedStep, BusyWakeupSetsTheRetryFlagAndNothingIsRepeated) {
  device.wakeup({8, 0});
  EXPECT_EQ(runFailing(), (Lines{"Dialog []  0x40000", "Notify 1011"})) << "no dictionary";
  EXPECT_TRUE(BasePeer::getRetryCommand(controller));
  EXPECT_FALSE(Peer::retryScan(controller));
}

TEST_F(QZFailedStep, CancelAtTheDeviceSendsTheCancelBitOnce) {
  hideDialogs();
  stopAt(10);
  device.checkCondition(kRead, "06 00 00").initializeCancelled().release();
  EXPECT_EQ(runFailing(), (Lines{"Notify 1002", "Notify 1011"}));
  device.wakeup().reserve().testUnitReady().initialize({9, 0});
  EXPECT_EQ(runFailing(), Lines{"Notify 1011"}) << "the next job starts without it";
}

TEST_F(QZFailedStep, CancelBeforeTheReservationSendsNothing) {
  hideDialogs();
  for (const std::size_t number : {0U, 1U}) {
    device.checkCondition(stopAt(number).command, "06 00 00");
    EXPECT_EQ(runFailing(), (Lines{"Notify 1002", "Notify 1011"}));
    EXPECT_TRUE(controller.getJobCancelled());
    EXPECT_FALSE(controller.getReleaseInfo());
  }
}

TEST_F(QZFailedStep, TransportFailureCleansUpByTheLastHeaderRead) {
  hideDialogs();
  // No header: the flags of the reply before stay, and those of a good one are clear.
  stopAt(8);
  device.failRead();
  EXPECT_EQ(runFailing(), Lines{"Notify 1011"});
  // The header has come, its sense has not.
  stopAt(8);
  device.replyHeader(kScan, 8, {2, 0}).failRead();
  expectRelease(8);
  EXPECT_EQ(runFailing(), Lines{"Notify 1011"});
}

}  // namespace
