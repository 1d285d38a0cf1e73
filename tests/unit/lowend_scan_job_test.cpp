// The caller's side of LowEnd jobs: each state of the device, in the order of its transfers, log
// lines, waits and notifications, up to the start of the worker.
#include <exception>
#include <functional>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/lowend_test.h"

namespace {

using tvrscn::test::Bytes;
using tvrscn::test::bytes;
using tvrscn::test::hex;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::LowEndDialogue;
using tvrscn::test::LowEndTest;
using tvrscn::test::readFile;

const std::string kBadStatus =
    "Something wrong in LowEnd USB Status command response, please check on it.";
const std::string kJam = "LowEnd USB ADF Jam detected, please clean it up";
const std::string kCover =
    "LowEnd USB either Flatbed or ADF cover is open, please close and try scan next.";
const std::string kBusy = "LowEnd USB Scanner is busy";
const std::string kNotReady = "LowEnd USB Scanner is not ready";
const std::string kRefused =
    "Error from SendStartScanCommand....The return status is not good.... check for status dump "
    "text file";
const std::string kScanFailed = "Something wrong in scan operation";
const std::string kFailureLine = "Sending FAILURE Notification to DS ...\n";

// The cover of a feeder that is not there is none.
const char* const kCoverOfNoFeeder =
    R"({"status":{"ready":true},"adfStatus":{"installed":false,"adfCoverOpen":true,)"
    R"("adfPaperLoaded":false}})";
const char* const kNothingKnown = R"({"status":{},"adfStatus":{}})";

std::string textHex(std::string_view text) {
  return hex(Bytes(text.begin(), text.end()));
}

// The request of `settings()` from a source: 0 the feeder, 7 the flatbed.
std::string request(int source) {
  const std::string flatbed(LowEndDialogue::kFlatbedRequest);
  return flatbed.substr(0, flatbed.size() - 2) + std::to_string(source) + "}";
}

// Jobs here have no dictionary unless they say otherwise, so every failure is heard as 1011.
class LowEndJob : public LowEndTest {
 protected:
  LowEndJob() { platform.emptyReadLimit = 3; }

  void expectFailure(const Lines& log) {
    EXPECT_EQ(scan(), 1);
    EXPECT_EQ(platform.logLines(), log);
    EXPECT_EQ(platform.notifications(), Lines{"1011"});
    EXPECT_FALSE(errorShown_);
    EXPECT_TRUE(platform.threads.empty());
  }

  // The device was accepted and the worker asked for, without a word.
  void expectStart(const Lines& log = {}) {
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(platform.logLines(), log);
    EXPECT_EQ(platform.notifications(), Lines{});
    EXPECT_EQ(platform.threads.size(), 1U);
    discardWorker();
  }

  // Takes back what a worker that never runs would have given back.
  void discardWorker() {
    platform.threads.clear();
    Peer::shutDownThread(controller);
  }

  // The library's exception reaches the caller; nobody else hears of it.
  void expectException(const Lines& log = {}) {
    showDialogs();
    EXPECT_THROW(scan(), std::exception);
    EXPECT_EQ(platform.logLines(), log);
    EXPECT_EQ(platform.calls({Kind::kNotification, Kind::kDialog}), Lines{});
    EXPECT_FALSE(errorShown_);
    EXPECT_TRUE(platform.threads.empty());
  }

  Lines waits() const { return platform.calls({Kind::kSleep}); }

  // What a job of statuses and dialogs looks like from outside.
  Lines told() const { return platform.calls({Kind::kDialog, Kind::kLog, Kind::kNotification}); }
};

// --- Whole jobs
// ----------------------------------------------------------------------------------

TEST_F(LowEndJob, JobInItsWholeSequence) {
  device.open();
  EXPECT_EQ(scan(), 0);
  EXPECT_FALSE(errorShown_);
  const Lines expected = {
      "Flush write",
      "Write 1B 4E 03 00 00 00 00 00 80 00",
      "Flush read",
      "Read 10",
      "Flush read",
      "Read 53",
      "Flush write",
      "Write 1B 4E 04 00 00 00 00 00 80 00",
      "Flush read",
      "Read 10",
      "Flush read",
      "Read 157",
      "Flush write",
      "Write 1B 4E 01 00 A6 00 00 00 80 00 " + textHex(LowEndDialogue::kFlatbedRequest),
      "Flush read",
      "Read 10",
      "Sleep 500",
      "Flush read",
      "Read 39",
      "_beginthreadex"};
  EXPECT_EQ(platform.calls(), expected);
  discardWorker();
}

TEST_F(LowEndJob, WorkerGetsTheControllerAndTheCallback) {
  device.open();
  EXPECT_EQ(scan(), 0);
  const LowEndImageThreadArgs* arguments = Peer::threadArgs(controller);
  ASSERT_NE(arguments, nullptr);
  EXPECT_EQ(arguments->controller, &controller);
  EXPECT_EQ(arguments->callback, platform.callback());
  EXPECT_EQ(arguments->unused, nullptr);
  EXPECT_EQ(platform.liveObjects("handle"), (Lines{"write", "read", "thread"}));
  EXPECT_NE(platform.find(Peer::thread(controller), "handle"), nullptr);
  device.lastPacket();
  EXPECT_EQ(runWorker(), 15009U);
  EXPECT_EQ(Peer::threadArgs(controller), nullptr);
  EXPECT_EQ(platform.liveObjects("handle"), (Lines{"write", "read"}));
}

TEST_F(LowEndJob, WorkerDeliversThePageAfterTheReturn) {
  device.open();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(platform.notifications(), Lines{});
  device.packet("\xFF\xD8\xFF\xE0 page").lastPacket();
  EXPECT_EQ(runWorker(), 15009U);
  const std::string path = (folder.path() / "Image_1.JPG").string();
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + path, "1006"}));
  EXPECT_EQ(hex(readFile(path)), "FF D8 FF E0 20 70 61 67 65");
}

TEST_F(LowEndJob, SecondJobGetsASourceOfItsOwnAndTheNextNumber) {
  device.open();
  EXPECT_EQ(scan(), 0);
  device.packet("\xFF\xD8\xFF\xE0").lastPacket();
  EXPECT_EQ(runWorker(), 15009U);
  const std::weak_ptr<CLowEndUSBScanDataSource> first = Peer::dataSource(controller);
  platform.forgetCalls();

  device.open();
  EXPECT_EQ(scan(), 0);
  EXPECT_TRUE(first.expired());
  device.packet("\xFF\xD8\xFF\xE0").lastPacket();
  EXPECT_EQ(runWorker(), 15009U);
  EXPECT_EQ(platform.notifications(),
            (Lines{"1004", "1005 " + (folder.path() / "Image_2.JPG").string(), "1006"}));
}

// --- doScan
// --------------------------------------------------------------------------------------

TEST_F(LowEndJob, RecordOfTwoNullFieldsIsRefusedBeforeAnyTraffic) {
  TVR_FP_CALLBACK nobody{nullptr, nullptr};
  BasePeer::imageNotified(controller) = true;
  BasePeer::errorShown(controller) = true;
  bool errorShown = true;
  EXPECT_EQ(controller.doScan(settings_, &nobody, L"/folder", errorShown), 1);
  EXPECT_EQ(platform.calls(), Lines{"Log Error from ScanviaUSBThreaded....Callback is not valid. "
                                    "Bailing out of scan...."});
  EXPECT_FALSE(errorShown);
  EXPECT_FALSE(BasePeer::errorShown(controller));
  EXPECT_EQ(BasePeer::callback(controller), nullptr);
  EXPECT_FALSE(BasePeer::imageNotified(controller));
  EXPECT_EQ(controller.GetImageFolderPath(), L"/folder");
  EXPECT_NE(Peer::dataSource(controller), nullptr);
}

TEST_F(LowEndJob, RecordWithOneFieldAndNoRecordAreAcceptedAndKept) {
  int context = 0;
  TVR_FP_CALLBACK noFunction{nullptr, &context};
  TVR_FP_CALLBACK noContext{[](ScanNotification*, void*) {}, nullptr};
  TVR_FP_CALLBACK* const kNoRecord = nullptr;
  for (TVR_FP_CALLBACK* callback : {&noFunction, &noContext, kNoRecord}) {
    BasePeer::callback(controller) = platform.callback();
    device.open();
    EXPECT_EQ(controller.doScan(settings_, callback, L"/folder", errorShown_), 0);
    EXPECT_EQ(BasePeer::callback(controller), callback);
    EXPECT_EQ(Peer::threadArgs(controller)->callback, callback);
    discardWorker();
  }
}

TEST_F(LowEndJob, SettingsThatAreNoNumbersThrowBeforeTheRecordIsJudged) {
  settings_.contrast = L"abc";
  TVR_FP_CALLBACK nobody{nullptr, nullptr};
  bool errorShown = true;
  EXPECT_THROW(controller.doScan(settings_, &nobody, L"/folder", errorShown),
               std::invalid_argument);
  EXPECT_FALSE(errorShown);
  settings_.contrast = L"99999999999";
  EXPECT_THROW(controller.doScan(settings_, platform.callback(), L"/folder", errorShown),
               std::out_of_range);
  EXPECT_EQ(platform.calls(), Lines{});
}

TEST_F(LowEndJob, DialogFlagIsClearedAtTheStartAndSetByAFailure) {
  showDialogs();
  errorShown_ = true;
  device.open();
  EXPECT_EQ(scan(), 0);
  EXPECT_FALSE(errorShown_);
  discardWorker();
  device.features().status(R"({"status":{"busy":true},"adfStatus":{}})");
  EXPECT_EQ(scan(), 1);
  EXPECT_TRUE(errorShown_);
  BasePeer::usingTevraUI(controller) = false;
  device.features().status(R"({"status":{"busy":true},"adfStatus":{}})");
  EXPECT_EQ(scan(), 1);
  EXPECT_FALSE(errorShown_);
}

TEST_F(LowEndJob, DialogFlagIsNotCopiedWhenTheJobWasStarted) {
  device.open();
  // The worker's dialogs come too late for the flag of the call.
  platform.onCall("_beginthreadex", 1, [this] { BasePeer::errorShown(controller) = true; });
  EXPECT_EQ(scan(), 0);
  EXPECT_FALSE(errorShown_);
  discardWorker();
}

TEST_F(LowEndJob, ExceptionOfTheCallbackPasses) {
  platform.onNotification = [](const ScanNotification&) { throw std::runtime_error("caller"); };
  device.features().status(R"({"status":{"busy":true},"adfStatus":{}})");
  EXPECT_THROW(scan(), std::runtime_error);
}

// --- Features
// ------------------------------------------------------------------------------------

TEST_F(LowEndJob, FeaturesAreKeptWhateverCame) {
  for (const char* document : {R"({"a":1})", "no json", "[]"}) {
    // A document without media sizes asks for a custom size in whole inches.
    device.features(document).status(R"({"status":{"busy":true},"adfStatus":{}})");
    EXPECT_EQ(scan(), 1);
    EXPECT_EQ(Peer::support(*Peer::dataSource(controller)), document);
  }
}

TEST_F(LowEndJob, JobWithoutFeaturesGoesOnWithACustomSize) {
  // 210 x 297 mm are 8.3 x 11.7 inches; without limits their whole inches count.
  const std::string custom =
      R"({"compression":1,"contrast":0,"customHeight":3300,"customWidth":2400,"darkness":0,)"
      R"("fileFormat":1,"imageComposition":2,"mediaSize":20,"name":"","offsetX":0,"offsetY":0,)"
      R"("orientation":0,"resolution":300,"scanDuplex":0,"scanSource":7})";
  const auto status = [this, &custom] {
    device.status().startRequest(custom).reply(1, LowEndDialogue::kAccepted);
  };
  device.request(3).reply(3, "");
  status();
  expectStart();
  device.request(3).failRead();
  status();
  expectStart();
  device.request(3).reply(4, "");
  status();
  expectStart();
}

// --- Status
// --------------------------------------------------------------------------------------

struct StateRow {
  const char* name;
  const char* document;
  int status;
  std::string log;
  const char* dialog;
  int notification;
};

const StateRow kStates[] = {
    {"jam before all else",
     R"({"status":{"busy":true,"ready":false,"flatbedCoverOpen":true},)"
     R"("adfStatus":{"jamPresent":true,"installed":true,"adfCoverOpen":true}})",
     15012, kJam, "Dialog [PaperJamTitle] PaperJam 0x40000", 1002},
    {"jam of a ready device", R"({"status":{"ready":true},"adfStatus":{"jamPresent":true}})", 15012,
     kJam, "Dialog [PaperJamTitle] PaperJam 0x40000", 1002},
    {"feeder cover before busy",
     R"({"status":{"busy":true},"adfStatus":{"installed":true,"adfCoverOpen":true}})", 15013,
     kCover, "Dialog [Title] CoverOpen 0x40000", 1021},
    {"flatbed cover before busy",
     R"({"status":{"busy":true,"flatbedCoverOpen":true},"adfStatus":{}})", 15013, kCover,
     "Dialog [Title] CoverOpen 0x40000", 1021},
    {"flatbed cover of a ready device",
     R"({"status":{"ready":true,"flatbedCoverOpen":true},"adfStatus":{"installed":false}})", 15013,
     kCover, "Dialog [Title] CoverOpen 0x40000", 1021},
    {"flatbed cover before the wait", R"({"status":{"flatbedCoverOpen":true},"adfStatus":{}})",
     15013, kCover, "Dialog [Title] CoverOpen 0x40000", 1021},
    {"busy", R"({"status":{"busy":true,"ready":false},"adfStatus":{}})", 15017, kBusy,
     "Dialog [Title] ScannerBusy 0x40000", 1001},
    {"no status section", R"({"adfStatus":{"installed":true}})", 15016, kBadStatus,
     "Dialog [Title] CommFailure 0x40000", 1021},
    {"no feeder section", R"({"status":{"ready":true}})", 15016, kBadStatus,
     "Dialog [Title] CommFailure 0x40000", 1021},
    {"no section", "{}", 15016, kBadStatus, "Dialog [Title] CommFailure 0x40000", 1021},
    {"no object", "[]", 15016, kBadStatus, "Dialog [Title] CommFailure 0x40000", 1021},
};

TEST_F(LowEndJob, StateThatPreventsAScanIsToldWithDialog) {
  showDialogs();
  for (const StateRow& row : kStates) {
    SCOPED_TRACE(row.name);
    platform.forgetCalls();
    device.features().status(row.document);
    EXPECT_EQ(scan(), 1);
    EXPECT_TRUE(errorShown_);
    EXPECT_EQ(told(), (Lines{"Log " + row.log, "Notify 1020", row.dialog, "Log " + kFailureLine,
                             "Notify " + std::to_string(row.notification)}));
    EXPECT_EQ(waits(), Lines{});
    device.features().status(row.document);
    EXPECT_EQ(Peer::scanViaUSB(controller), row.status);
  }
}

TEST_F(LowEndJob, StateThatPreventsAScanIsToldWithoutDialog) {
  showDialogs();
  BasePeer::usingTevraUI(controller) = false;
  for (const StateRow& row : kStates) {
    SCOPED_TRACE(row.name);
    platform.forgetCalls();
    device.features().status(row.document);
    expectFailure({row.log, kFailureLine});
  }
}

TEST_F(LowEndJob, ReadyDeviceIsToldToScan) {
  for (const char* document : {
           R"({"status":{"ready":true},"adfStatus":{"adfPaperLoaded":false}})",
           R"({"status":{"busy":true,"ready":true},"adfStatus":{"adfPaperLoaded":false}})",
           kCoverOfNoFeeder,
           R"({"status":{"ready":true},"adfStatus":{"adfCoverOpen":true,"adfPaperLoaded":false}})",
           R"({"status":{"ready":true},"adfStatus":{"installed":true,"adfPaperLoaded":false}})",
       }) {
    SCOPED_TRACE(document);
    platform.forgetCalls();
    device.features().status(document).startScan();
    expectStart();
    EXPECT_EQ(waits(), Lines{"Sleep 500"});
  }
}

TEST_F(LowEndJob, PaperInTheFeederDecidesTheSource) {
  const struct {
    const char* feeder;
    int source;
  } kCases[] = {
      {R"({"adfPaperLoaded":true})", 0},
      {R"({"adfPaperLoaded":false})", 7},
      {R"({})", 0},  // a device that does not say
      {R"({"installed":false})", 0},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.feeder);
    platform.forgetCalls();
    device.features().status(std::string(R"({"status":{"ready":true},"adfStatus":)") + row.feeder +
                             "}");
    device.startRequest(request(row.source)).reply(1, LowEndDialogue::kAccepted);
    expectStart();
  }
}

TEST_F(LowEndJob, StatusThatIsNoDocumentThrowsToTheCaller) {
  device.features().request(4).reply(4, "");
  expectException();
  device.features().status("busy");
  expectException();
  device.features().request(4).failRead();
  expectException();
  device.features().request(4).reply(3, "");  // the answer of another operation
  expectException();
}

TEST_F(LowEndJob, StatusOfAWrongTypeThrowsToTheCaller) {
  device.features().status(R"({"status":{"ready":1},"adfStatus":{}})");
  expectException();
  // Both sections are read, though the first alone is enough to fail.
  device.features().status(R"({"adfStatus":{"installed":1}})");
  expectException();
}

TEST_F(LowEndJob, StatusWhoseHeaderSaysItNeverCameIsABadStatus) {
  // The driver brings the header and says that it brought nothing.
  platform.claimRead(3, 0);
  device.features().status();
  expectFailure({kBadStatus, kFailureLine});
}

TEST_F(LowEndJob, JobWithoutASourceIsABadStatus) {
  BasePeer::callback(controller) = platform.callback();
  device.features().status();
  EXPECT_EQ(Peer::scanViaUSB(controller), 15016);
  EXPECT_EQ(platform.logLines(), (Lines{kBadStatus, kFailureLine}));
  EXPECT_EQ(platform.notifications(), Lines{"1011"});
  device.features().request(4).reply(4, "");
  EXPECT_EQ(Peer::scanViaUSB(controller), 15016);
}

// --- The wait
// ------------------------------------------------------------------------------------

class LowEndWait : public LowEndJob {
 protected:
  // Features and a first status that is neither busy nor ready, with the paper in the feeder.
  void startWaiting() { device.features().status(kNothingKnown); }

  // Polls without news, then one with a document.
  void poll(int without, std::string_view document) {
    for (int i = 0; i < without; ++i)
      device.status(kNothingKnown);
    device.status(document);
  }

  void accept() { device.startRequest(request(0)).reply(1, LowEndDialogue::kAccepted); }

  static Lines seconds(int count) { return Lines(static_cast<std::size_t>(count), "Sleep 1000"); }
};

TEST_F(LowEndWait, ReadyAtAnyPollIsToldToScan) {
  for (const int polls : {1, 2, 10, 11}) {
    SCOPED_TRACE(polls);
    platform.forgetCalls();
    startWaiting();
    poll(polls - 1, R"({"status":{"ready":true}})");
    accept();
    expectStart({kNotReady});
    Lines expected = seconds(polls);
    expected.emplace_back("Sleep 500");
    EXPECT_EQ(waits(), expected);
  }
}

TEST_F(LowEndWait, BusyEndsTheWaitWithAScan) {
  startWaiting();
  poll(2, R"({"status":{"busy":true,"ready":false}})");
  accept();
  expectStart({kNotReady});
}

TEST_F(LowEndWait, DeviceThatNeverGetsReadyIsBusy) {
  startWaiting();
  poll(10, kNothingKnown);
  expectFailure({kNotReady, kNotReady, kFailureLine});
  EXPECT_EQ(waits(), seconds(11));
}

TEST_F(LowEndWait, DeviceThatNeverGetsReadyShowsTheBusyDialog) {
  showDialogs();
  startWaiting();
  poll(10, kNothingKnown);
  EXPECT_EQ(scan(), 1);
  EXPECT_EQ(told(),
            (Lines{"Log " + kNotReady, "Log " + kNotReady, "Notify 1020",
                   "Dialog [Title] ScannerBusy 0x40000", "Log " + kFailureLine, "Notify 1001"}));
}

TEST_F(LowEndWait, WaitComesBeforeThePoll) {
  startWaiting();
  poll(0, R"({"status":{"ready":true}})");
  accept();
  EXPECT_EQ(scan(), 0);
  const Lines calls = platform.calls({Kind::kDevice, Kind::kSleep, Kind::kLog});
  EXPECT_EQ(Lines(calls.begin() + 12, calls.begin() + 16),
            (Lines{"Log " + kNotReady, "Sleep 1000", "Flush write",
                   "Write 1B 4E 04 00 00 00 00 00 80 00"}));
  discardWorker();
}

TEST_F(LowEndWait, CoversAndFeederAreNotLookedAtAgain) {
  startWaiting();
  poll(0, R"({"status":{"ready":true,"flatbedCoverOpen":true},)"
          R"("adfStatus":{"jamPresent":true,"installed":1,"adfPaperLoaded":false}})");
  accept();
  expectStart({kNotReady});
}

TEST_F(LowEndWait, PollWithoutTheSectionCounts) {
  startWaiting();
  for (int i = 0; i < 10; ++i)
    device.status("{}");
  device.status(R"({"status":{"ready":true}})");
  accept();
  expectStart({kNotReady});
}

TEST_F(LowEndWait, PollThatBringsNoDocumentThrowsToTheCaller) {
  startWaiting();
  device.status(kNothingKnown).request(4).reply(4, "");
  expectException({kNotReady});
  platform.forgetCalls();
  startWaiting();
  device.status("no json");
  expectException({kNotReady});
  platform.forgetCalls();
  startWaiting();
  device.request(4).failRead();
  expectException({kNotReady});
  platform.forgetCalls();
  startWaiting();
  device.status(R"({"status":{"ready":"yes"}})");
  expectException({kNotReady});
}

TEST_F(LowEndWait, PollWhoseHeaderSaysItNeverCameIsNotRead) {
  platform.claimRead(5, 0);
  startWaiting();
  device.status("not read");
  device.status(R"({"status":{"ready":true}})");
  accept();
  expectStart({kNotReady});
  EXPECT_EQ(waits(), (Lines{"Sleep 1000", "Sleep 1000", "Sleep 500"}));
}

// --- The start request
// ---------------------------------------------------------------------------

// SendStartScanCommand alone, on a source of `settings()` that knows no media.
class LowEndStart : public LowEndJob {
 protected:
  LowEndStart() {
    BasePeer::callback(controller) = platform.callback();
    Peer::imageFolder(controller) = folder.path().wstring();
    auto source = std::make_shared<CLowEndUSBScanDataSource>();
    source->setAppDataToScanCommand(settings_);
    source->SetDeviceSupportJSONResponse(std::string(LowEndDialogue::kFeatures));
    Peer::dataSource(controller) = source;
  }

  int send() { return Peer::sendStartScanCommand(controller, false); }
  int start() { return Peer::startScanOperation(controller, false); }
};

TEST_F(LowEndStart, WithoutASourceNothingIsSent) {
  Peer::dataSource(controller).reset();
  EXPECT_EQ(send(), 15015);
  EXPECT_EQ(platform.calls(), Lines{});
  EXPECT_EQ(start(), 15010);
  EXPECT_EQ(platform.logLines(), (Lines{kRefused, kFailureLine}));
}

TEST_F(LowEndStart, WaitLiesBetweenHeaderAndDocument) {
  device.startRequest().answer("1B 4E 01 00 27 00 00 00 00 00");
  device.answer(Bytes(LowEndDialogue::kAccepted.begin(), LowEndDialogue::kAccepted.end()));
  EXPECT_EQ(send(), 15009);
  EXPECT_EQ(
      platform.calls(),
      (Lines{"Flush write",
             "Write 1B 4E 01 00 A6 00 00 00 80 00 " + textHex(LowEndDialogue::kFlatbedRequest),
             "Flush read", "Read 10", "Sleep 500", "Flush read", "Read 39"}));
  EXPECT_EQ(Peer::lastIoResult(controller), 10U);
  EXPECT_EQ(folder.fileNames(), Lines{});
}

TEST_F(LowEndStart, DocumentInPiecesIsPutTogether) {
  device.startRequest().answer("1B 4E 01 00 27 00 00 00 00 00");
  const std::string document(LowEndDialogue::kAccepted);
  device.answer(Bytes(document.begin(), document.begin() + 1)).answer("").failRead();
  device.answer(Bytes(document.begin() + 1, document.begin() + 30));
  device.answer(Bytes(document.begin() + 30, document.end()));
  EXPECT_EQ(send(), 15009);
  const Lines calls = platform.calls({Kind::kDevice});
  EXPECT_EQ(Lines(calls.begin() + 4, calls.end()),
            (Lines{"Flush read", "Read 39", "Flush read", "Read 38", "Flush read", "Read 38",
                   "Flush read", "Read 38", "Flush read", "Read 9"}));
}

TEST_F(LowEndStart, LowFourBitsOfTheStatusDecide) {
  for (unsigned value = 0; value <= 255; ++value) {
    const unsigned low = value % 16;
    int status = 15010;
    if (low == 0) status = 15009;
    if (low == 1 || low == 2) status = 15016;
    if (low == 4 || low == 6) status = 15011;
    device.startScan(LowEndDialogue::kAccepted, value);
    EXPECT_EQ(send(), status) << value;
  }
  EXPECT_EQ(folder.fileNames(), Lines{});
}

TEST_F(LowEndStart, RefusalByStatusReadsTheDocumentAndDoesNotLookAtIt) {
  for (const unsigned status : {1U, 4U, 3U, 15U}) {
    device.startScan("no json", status);
    EXPECT_NE(send(), 15009);
    device.startScan(R"({"status":400,"result":"x"})", status);
    EXPECT_NE(send(), 15009);
    device.startScan("", status);
    EXPECT_NE(send(), 15009);
  }
  EXPECT_EQ(folder.fileNames(), Lines{});
}

TEST_F(LowEndStart, RefusalByDocumentIsKeptInTheFolder) {
  device.startScan(R"({"error": {"message": "no paper"}, "status": 400, "result": "x"})");
  EXPECT_EQ(send(), 15010);
  EXPECT_EQ(folder.fileNames(), Lines{"ScanRequestError.txt"});
  const std::string text = R"({"error":{"message":"no paper"},"result":"x","status":400})";
  EXPECT_EQ(readFile(folder.path() / "ScanRequestError.txt"), Bytes(text.begin(), text.end()));
}

TEST_F(LowEndStart, AnswerWithoutADocumentThrowsAfterTheWait) {
  const auto expectThrow = [this] {
    EXPECT_THROW(send(), std::exception);
    EXPECT_EQ(waits(), Lines{"Sleep 500"});
    EXPECT_EQ(platform.calls({Kind::kLog, Kind::kNotification, Kind::kDialog}), Lines{});
    platform.forgetCalls();
  };
  device.startScan("");
  expectThrow();
  device.startScan("Starting scan");
  expectThrow();
  device.startScan("null");
  expectThrow();
  device.startRequest().failRead();
  expectThrow();
  EXPECT_EQ(Peer::lastIoResult(controller), 0U);
  // An answer to another operation is not read any further.
  device.startRequest().answer("1B 4E 04 00 27 00 00 00 00 00");
  expectThrow();
  device.startRequest().answer("1B 4E");
  expectThrow();
  EXPECT_EQ(Peer::lastIoResult(controller), 2U);
}

TEST_F(LowEndStart, FailedWriteIsFollowedByTheReadAllTheSame) {
  platform.failCall("WriteFile");
  device.reply(1, LowEndDialogue::kAccepted);
  EXPECT_EQ(send(), 15009);
}

TEST_F(LowEndStart, FailedWriteWithoutAnErrorSkipsTheRead) {
  platform.failCall("WriteFile", 1, 0);
  EXPECT_THROW(send(), std::exception);
  EXPECT_EQ(platform.count("ReadFile"), 0);
  EXPECT_EQ(Peer::lastIoResult(controller), 0U);
  EXPECT_EQ(waits(), Lines{"Sleep 500"});
}

TEST_F(LowEndStart, AnswerNeedsNoLeadIn) {
  device.startRequest().answer("00 00 01 00 27 00 00 00 00 00");
  device.answer(Bytes(LowEndDialogue::kAccepted.begin(), LowEndDialogue::kAccepted.end()));
  EXPECT_EQ(send(), 15009);
}

// --- The start of the worker
// ---------------------------------------------------------------------

TEST_F(LowEndJob, RefusalIsReportedTwice) {
  showDialogs();
  device.features().status().startScan(LowEndDialogue::kAccepted, 4);
  EXPECT_EQ(scan(), 1);
  EXPECT_TRUE(errorShown_);
  EXPECT_EQ(told(),
            (Lines{"Log " + kRefused, "Notify 1020", "Dialog [Title] CommFailure 0x40000",
                   "Log " + kFailureLine, "Notify 1021", "Log " + kScanFailed, "Notify 1020",
                   "Dialog [Title] GeneralError 0x40000", "Log " + kFailureLine, "Notify 1002"}));
  EXPECT_TRUE(platform.threads.empty());
}

TEST_F(LowEndJob, RefusalWithoutDialogsIsTwoConnectionFailures) {
  device.features().status().startScan(R"({"status":400,"result":"x"})");
  EXPECT_EQ(scan(), 1);
  EXPECT_FALSE(errorShown_);
  EXPECT_EQ(told(), (Lines{"Log " + kRefused, "Notify 1011", "Log " + kFailureLine,
                           "Log " + kScanFailed, "Notify 1011", "Log " + kFailureLine}));
  EXPECT_EQ(folder.fileNames(), Lines{"ScanRequestError.txt"});
}

TEST_F(LowEndJob, StartThatBringsNoDocumentThrowsToTheCaller) {
  device.features().status().startScan("");
  expectException();
}

TEST_F(LowEndJob, WorkerThatCannotBeStartedIsToldAndTheJobCountsAsStarted) {
  showDialogs();
  platform.failCall("_beginthreadex");
  device.open();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(told(), Lines{"Notify 1021"});
  EXPECT_FALSE(errorShown_);
  EXPECT_EQ(Peer::threadArgs(controller), nullptr);
  EXPECT_EQ(Peer::thread(controller), nullptr);
}

TEST_F(LowEndJob, WorkerWhoseStartThrowsIsToldAndTheJobCountsAsStarted) {
  const std::function<void()> kTroubles[] = {[] { throw std::runtime_error("no threads"); },
                                             [] { throw 5; }};
  for (const auto& trouble : kTroubles) {
    platform.forgetCalls();
    platform.onCall("_beginthreadex", 1, trouble);
    device.open();
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(told(), Lines{"Notify 1021"});
    EXPECT_EQ(Peer::threadArgs(controller), nullptr);
    EXPECT_EQ(Peer::thread(controller), nullptr);
  }
}

// --- The ends of the worker, as the user hears of them
// ------------------------------------------------

TEST_F(LowEndJob, CancelAtTheDeviceShowsItsDialogAndNoCompletion) {
  showDialogs();
  device.open().packet("JOBCANCEL").lastPacket();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(runWorker(), 15015U);
  EXPECT_EQ(platform.calls({Kind::kDialog, Kind::kNotification}),
            (Lines{"Notify 1020", "Dialog [Title] JobCancelled 0x40000", "Notify 1021"}));
  // The call has long returned: its flag keeps what it said then.
  EXPECT_FALSE(errorShown_);
  EXPECT_TRUE(BasePeer::errorShown(controller));
}

TEST_F(LowEndJob, ExceptionOfTheWorkerShowsTheConnectionDialog) {
  showDialogs();
  device.open().answer("1B 4E 02 00 01 00 00 00 00 00 61 62 63");  // two bytes too many
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(runWorker(), 15007U);
  EXPECT_EQ(platform.calls({Kind::kDialog, Kind::kNotification}),
            (Lines{"Notify 1020", "Dialog [CommFailureTitle] CommFailure 0x40000", "Notify 1011"}));
}

// --- The small operations
// ------------------------------------------------------------------------

TEST_F(LowEndJob, NewControllerHasItsValues) {
  EXPECT_EQ(controller.GetFileCount(), 1);
  EXPECT_EQ(controller.GetImageFolderPath(), L"");
  EXPECT_EQ(controller.GetImageOutputFormat(), L".JPG");
  EXPECT_EQ(Peer::imageExtension(controller), L".JPG");
  EXPECT_EQ(Peer::imageMimeType(controller), L"image/jpeg");
  EXPECT_EQ(Peer::threadArgs(controller), nullptr);
  EXPECT_EQ(Peer::thread(controller), nullptr);
  EXPECT_EQ(Peer::lastIoResult(controller), 0U);
  EXPECT_EQ(Peer::dataSource(controller), nullptr);
  EXPECT_TRUE(Peer::records(controller).empty());
  EXPECT_FALSE(BasePeer::imageNotified(controller));
  EXPECT_TRUE(BasePeer::usingTevraUI(controller));
  EXPECT_FALSE(BasePeer::errorShown(controller));
}

TEST_F(LowEndJob, FileCountStartsAtOneAndIsResetToZero) {
  controller.IncrementFileCount();
  EXPECT_EQ(controller.GetFileCount(), 2);
  controller.ResetFileCount();
  EXPECT_EQ(controller.GetFileCount(), 0);
  controller.IncrementFileCount();
  EXPECT_EQ(controller.GetFileCount(), 1);
}

TEST_F(LowEndJob, OutputFormatIsThatOfTheSource) {
  Peer::imageExtension(controller) = L".XYZ";
  EXPECT_EQ(controller.GetImageOutputFormat(), L".XYZ");
  const struct {
    const char* color;
    const wchar_t* extension;
  } kCases[] = {{"FullColor", L".JPG"}, {"Grayscale", L".JPG"}, {"BlackAndWhite", L".TIF"}};
  for (const auto& row : kCases) {
    settings_.colorMode = row.color;
    Peer::dataSource(controller) = std::make_shared<CLowEndUSBScanDataSource>();
    Peer::dataSource(controller)->setAppDataToScanCommand(settings_);
    EXPECT_EQ(controller.GetImageOutputFormat(), row.extension) << row.color;
  }
}

TEST_F(LowEndJob, FirstFileOfAJobIsToldWithTheStartOfTheTransfer) {
  BasePeer::callback(controller) = platform.callback();
  controller.SendImageTransferNotification(L"/a/Image_1.JPG");
  EXPECT_TRUE(BasePeer::imageNotified(controller));
  controller.SendImageTransferNotification(L"/a/Image_2.JPG");
  EXPECT_EQ(platform.calls(),
            (Lines{"Notify 1004", "Notify 1005 /a/Image_1.JPG", "Notify 1005 /a/Image_2.JPG"}));
}

TEST_F(LowEndJob, PathIsToldByTheLowByteOfEachCharacter) {
  BasePeer::callback(controller) = platform.callback();
  BasePeer::imageNotified(controller) = true;
  controller.SendImageTransferNotification(L"/\u00E4\u0141/\u4E2D");
  EXPECT_EQ(platform.notifications(), Lines{"1005 /\xE4\x41/\x2D"});
}

}  // namespace
