// Whole jobs of a QZ device: the sequence for flatbed and feeder, and the frame that doScan puts
// around it.
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/unit/qz_job_support.h"

namespace {

using tvrscn::test::bytes;
using tvrscn::test::kCommDialog;
using tvrscn::test::Kind;
using tvrscn::test::kInitializeBytes;
using tvrscn::test::kReadBytes;
using tvrscn::test::kReserveBytes;
using tvrscn::test::kWakeup;
using tvrscn::test::kWindowBytes;
using tvrscn::test::Lines;
using tvrscn::test::QZDialogue;
using tvrscn::test::QZJob;
using tvrscn::test::Step;
using tvrscn::test::zeros;

// Calls of one exchange: a request, the data of its reply if there are any, what comes in between.
Lines exchange(const std::string& bytesOut, const std::string& data = "",
               const Lines& within = {}) {
  Lines lines = {"Flush write", "Flush read", "Write " + bytesOut, "Read 8"};
  if (!data.empty()) lines.push_back("Read " + data);
  lines.insert(lines.end(), within.begin(), within.end());
  lines.insert(lines.end(), {"Flush read", "Flush write"});
  return lines;
}

Lines joined(const std::vector<Lines>& parts) {
  Lines all;
  for (const Lines& part : parts)
    all.insert(all.end(), part.begin(), part.end());
  return all;
}

// --- Whole jobs
// ---------------------------------------------------------------------------------------------

TEST_F(QZJob, FlatbedJobInItsWholeTraffic) {
  device.openFlatbed().flatbedPage().close();
  EXPECT_EQ(scan(), 0);
  const Lines notified = platform.notifications();
  ASSERT_EQ(notified.size(), 3U);
  EXPECT_EQ(platform.calls({Kind::kMutex, Kind::kDevice, Kind::kNotification, Kind::kDialog,
                            Kind::kLog, Kind::kSleep}),
            joined({{"XMutex MutexUSB", "WaitWithRetry 100 100"},
                    exchange("00 C3 00 00 00 00 00 00"),
                    exchange(kReserveBytes),
                    exchange("05 C1 00 00 00 00 00 00"),
                    exchange(kInitializeBytes),
                    exchange("05 5A 00 00 00 00 00 04 20 00 00 00", "56"),
                    exchange("05 5A 00 00 00 00 00 04 03 00 00 00", "8"),
                    exchange("05 55 00 00 00 00 00 38 00 00 00 00 01" + zeros(51)),
                    exchange(kWindowBytes),
                    exchange("05 1B 00 00 00 00 00 00"),
                    exchange("05 C2 00 00 00 00 00 00", "8"),
                    exchange(kReadBytes, "3", {"Notify 1004", "Notify " + notified[1]}),
                    exchange("05 C1 00 00 00 00 00 00"),
                    exchange(kInitializeBytes),
                    exchange("05 17 00 00 00 00 00 00"),
                    {"Notify 1006", "Log ...USB success.\n", "~XMutex held"}}));
  EXPECT_EQ(contentOfLastPage(), "70 71 72");
  EXPECT_EQ(BasePeer::mutex(controller), nullptr);
}

TEST_F(QZJob, FeederJobOfTwoPagesInAllItsRequests) {
  device.openFeeder().feederPage(QZDialogue::kDocument).feederPage({}).close();
  EXPECT_EQ(scan(), 0);
  const std::string sensor = "Write 05 C1 00 00 00 00 00 00";
  const Lines pass = {"Write " + kInitializeBytes,
                      "Write 05 5A 00 00 00 00 00 04 20 00 00 00",
                      "Write 05 5A 00 00 00 00 00 04 03 00 00 00",
                      "Write 05 55 00 00 00 00 00 38 00 00 40" + zeros(53),
                      "Write " + kWindowBytes,
                      "Write 05 1B 00 00 00 00 00 00",
                      "Write 05 C2 00 00 00 00 00 00",
                      "Write " + kReadBytes,
                      sensor};
  EXPECT_EQ(writes(), joined({{"Write 00 C3 00 00 00 00 00 00", "Write " + kReserveBytes, sensor},
                              pass,
                              pass,
                              {"Write " + kInitializeBytes, "Write 05 17 00 00 00 00 00 00"}}));
  EXPECT_EQ(types(), (Lines{"1004", "1005", "1005", "1006"}));
}

TEST_F(QZJob, PageOfManyRepliesIsOnePassOfTheSequence) {
  device.openFlatbed().setUp();
  device.readImage(2, "01 02").readImage(2, "03").readImage(3, "04").testUnitReady().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(contentOfLastPage(), "01 02 03 04");
  EXPECT_EQ(types(), (Lines{"1004", "1005", "1006"}));
}

TEST_F(QZJob, FlatbedJobHasOnePassWhateverTheSensorSaysBehindIt) {
  device.openFlatbed().setUp().readImage(3, "01").testUnitReady(QZDialogue::kDocument).close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(Peer::dataSource(controller)->GetPaperSource(), 0);
  EXPECT_EQ(types(), (Lines{"1004", "1005", "1006"}));
}

TEST_F(QZJob, PaperSourceIsFixedByTheFirstWordOfTheSensor) {
  // Other replies carry the sensor's bit too; that of the first TEST UNIT READY decides.
  device.wakeup(QZDialogue::kDocument).reserve(QZDialogue::kDocument).testUnitReady();
  device.initialize(QZDialogue::kDocument).modeSenseLimits().modeSenseUnits().modeSelect();
  device.setWindow().startScan().readBlockHeader().readImage(0x43, "01").testUnitReady();
  device.close();
  EXPECT_EQ(scan(), 0);
  forget();

  device.openFeeder().feederPage({}).close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(Peer::dataSource(controller)->GetPaperSource(), 1);
}

TEST_F(QZJob, OtherBitsOfTheScannerStatusAreNoDocument) {
  device.wakeup().reserve().testUnitReady({0, 0xB1}).flatbedPage().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(Peer::dataSource(controller)->GetPaperSource(), 0);
}

TEST_F(QZJob, FeederDividesBrightnessAndContrastForEachPage) {
  settings_.brightness = L"100";
  settings_.contrast = L"100";
  device.openFeeder();
  for (int i = 0; i < 3; ++i)
    device.feederPage(QZDialogue::kDocument);
  device.feederPage({}).close();
  EXPECT_EQ(scan(), 0);
  Lines values;
  for (const std::string& line : platform.calls({Kind::kImaging})) {
    if (line.starts_with("Brightness")) values.push_back(line.substr(line.find(".jpg ") + 5));
  }
  EXPECT_EQ(values, (Lines{"-25 25", "6 6", "-1 1"}));  // 0 and 0 from the fourth page on
  EXPECT_EQ(platform.count("GdiWrapper"), 4);
}

TEST_F(QZJob, BlackAndWhiteIsMadeOfEveryPage) {
  settings_.colorMode = "BlackAndWhite";
  const std::string_view window =
      "00*2 01 2C 01 2C 00*10 00 00 08 34 00 00 0B 9A 00*2 10 08 10 01 00*10 "
      "00 00 08 34 00 00 0B 9A";
  device.openFeeder();
  device.setUp(QZDialogue::kFeederSelect, window)
      .readImage(3, "01")
      .testUnitReady(QZDialogue::kDocument);
  device.setUp(QZDialogue::kFeederSelect, window).readImage(3, "02").testUnitReady().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(platform.count("BlackandWhiteImageProcessing"), 2);
}

TEST_F(QZJob, PlainColourJobMakesNoImaging) {
  settings_.colorMode = "FullColor";
  device.openFlatbed().setUp(QZDialogue::kFlatbedSelect,
                             "00*2 01 2C 01 2C 00*10 00 00 08 34 00 00 0B 9A 00*2 10 08 10 01 "
                             "00*10 00 00 08 34 00 00 0B 9A");
  device.readImage(3, "01").testUnitReady().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(platform.calls({Kind::kImaging}), Lines{});
}

TEST_F(QZJob, NextJobHasASourceOfItsOwnAndAsksForTheModePagesAgain) {
  settings_.brightness = L"40";
  device.openFlatbed().flatbedPage().close();
  EXPECT_EQ(scan(), 0);
  const std::weak_ptr<CQZUSBScanDataSource> first = controller.GetUSBScanDataSource();
  EXPECT_EQ(first.lock()->getBrightness(), -10);
  EXPECT_TRUE(first.lock()->isNeedImageProcessing());
  forget();
  settings_.brightness = L"0";
  device.openFlatbed().setUp();
  // The limits of the first job are gone: before the mode page nothing is known.
  device.readImage(3, "01").testUnitReady().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_TRUE(first.expired());
  EXPECT_FALSE(controller.GetUSBScanDataSource()->isNeedImageProcessing());
  EXPECT_EQ(types(), (Lines{"1004", "1005", "1006"}));  // the start once in each job
}

TEST_F(QZJob, BytesOfAnAbortedPageComeInFrontOfTheNextJobsPage) {
  hideDialogs();
  play(10);
  device.readImage(2, "01 02").readRequest().failRead();
  expectFailure({"Notify 1011"});
  device.openFlatbed().flatbedPage().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(contentOfLastPage(), "01 02 70 71 72");
}

TEST_F(QZJob, BytesOfABlockEndComeWithTheNextPageOrNever) {
  device.openFeeder().setUp(QZDialogue::kFeederSelect).readImage(5, "01 02").readBlockHeader();
  device.testUnitReady(QZDialogue::kDocument).feederPage({}).close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(contentOfLastPage(), "01 02 70 71 72");
  EXPECT_EQ(types(), (Lines{"1004", "1005", "1006"}));
  forget();

  device.openFlatbed().setUp().readImage(5, "03").readBlockHeader().testUnitReady().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(types(), Lines{"1006"});
  EXPECT_EQ(Peer::imageSize(controller), 1U);
}

TEST_F(QZJob, StateThatBringsNoImageEndsTheJobWell) {
  device.openFlatbed().setUp().readImage(4, "01").testUnitReady().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(platform.calls({Kind::kLog, Kind::kNotification}),
            (Lines{"Log Read: Device Status Error Good:Command is accepted correctly\r\n",
                   "Notify 1006", "Log ...USB success.\n"}));
}

TEST_F(QZJob, PageThatCannotBeWrittenDoesNotEndTheJob) {
  giveDictionary();
  platform.onCall("MultiByteToWideChar", 1, [] { throw std::runtime_error("no name"); });
  device.openFlatbed().flatbedPage().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(platform.calls({Kind::kLog, Kind::kDialog, Kind::kNotification}),
            (Lines{"Log Error: Writing image data to temp path is failed no name",
                   "Dialog [Title] InvalidRequest 0x40000", "Notify 1002", "Notify 1006",
                   "Log ...USB success.\n"}));
}

TEST_F(QZJob, PageThatCannotBeProcessedFailsTheJobAndLeavesItsNumber) {
  giveDictionary();
  settings_.contrast = L"100";
  device.openFlatbed().flatbedPage().close();
  EXPECT_EQ(scan(), 0);
  forget();
  platform.onCall("BrightnessContrastApplyEffect", 1, [] { throw std::runtime_error("no"); });
  play(11);
  expectFailure({kCommDialog, "Notify 1011"});
  const Lines files = folder.fileNames();
  EXPECT_EQ(files.size(), 2U);
  device.openFlatbed().flatbedPage().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(folder.fileNames(), files);
}

// The numbers run through the process, so this looks at them in a process of its own.
using QZJobDeathTest = QZJob;

TEST_F(QZJobDeathTest, NumbersRunThroughTheJobsOfAProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto numbersGoOn = [this] {
    device.openFeeder().feederPage(QZDialogue::kDocument).feederPage({}).close();
    scan();
    const bool first = types() == Lines{"1004", "1005", "1005", "1006"} &&
                       folder.fileNames() == Lines{"Image_1.jpg", "Image_2.jpg"};
    forget();
    device.openFeeder().feederPage(QZDialogue::kDocument).feederPage(QZDialogue::kDocument);
    device.feederPage({}).close();
    scan();
    return first && types() == Lines{"1004", "1005", "1005", "1005", "1006"} &&
           folder.fileNames() ==
               Lines{"Image_1.jpg", "Image_2.jpg", "Image_3.jpg", "Image_4.jpg", "Image_5.jpg"};
  };
  EXPECT_EXIT(std::_Exit(numbersGoOn() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

// --- doScan
// ------------------------------------------------------------------------------------------------

TEST_F(QZJob, RecordOfTwoNullFieldsIsRefusedBeforeTheMutex) {
  TVR_FP_CALLBACK nobody{nullptr, nullptr};
  BasePeer::imageNotified(controller) = true;
  bool errorShown = true;
  EXPECT_EQ(controller.doScan(settings_, &nobody, L"/folder", errorShown), 1);
  EXPECT_EQ(platform.calls(), Lines{"Log Error from ScanviaUSBThreaded....Callback is not valid. "
                                    "Bailing out of scan...."});
  EXPECT_EQ(BasePeer::callback(controller), nullptr);
  EXPECT_FALSE(BasePeer::imageNotified(controller));
  EXPECT_EQ(controller.GetUSBScanDataSource(), nullptr);
  EXPECT_TRUE(errorShown);
}

TEST_F(QZJob, RecordWithOneFieldAndNoRecordAreAccepted) {
  int context = 0;
  TVR_FP_CALLBACK noFunction{nullptr, &context};
  TVR_FP_CALLBACK noContext{[](ScanNotification*, void*) {}, nullptr};
  TVR_FP_CALLBACK* const kNoRecord = nullptr;
  for (TVR_FP_CALLBACK* callback : {&noFunction, &noContext, kNoRecord}) {
    BasePeer::callback(controller) = platform.callback();
    device.openFlatbed().flatbedPage().close();
    bool errorShown = false;
    EXPECT_EQ(controller.doScan(settings_, callback, folder.path().wstring(), errorShown), 0);
    EXPECT_EQ(BasePeer::callback(controller), callback);
    EXPECT_EQ(platform.notifications(), Lines{});
    forget();
  }
  EXPECT_EQ(folder.fileNames().size(), 3U);
}

TEST_F(QZJob, ErrorFlagOfTheCallerIsLeftAlone) {
  giveDictionary();
  for (const bool shown : {true, false}) {
    bool errorShown = shown;
    device.request(kWakeup).reply(kWakeup, 8);
    EXPECT_EQ(controller.doScan(settings_, platform.callback(), L"/folder", errorShown), 1);
    EXPECT_EQ(errorShown, shown);
  }
}

TEST_F(QZJob, MutexThatIsTakenMakesAJobThatDidNothing) {
  platform.mutexFree = false;
  Peer::scanFolder(controller) = L"/before";
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(platform.calls(), (Lines{"XMutex MutexUSB", "WaitWithRetry 100 100"}));
  EXPECT_EQ(controller.GetUSBScanDataSource(), nullptr);
  EXPECT_EQ(Peer::scanFolder(controller), L"/before");
  EXPECT_EQ(BasePeer::callback(controller), platform.callback());

  // Its object is waited on again by the next job.
  platform.mutexFree = true;
  forget();
  device.openFlatbed().flatbedPage().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(platform.calls({Kind::kMutex}), (Lines{"WaitWithRetry 100 100", "~XMutex held"}));
}

TEST_F(QZJob, MutexIsMadeAnewForEachJob) {
  for (int i = 0; i < 2; ++i) {
    device.openFlatbed().flatbedPage().close();
    EXPECT_EQ(scan(), 0);
  }
  EXPECT_EQ(platform.calls({Kind::kMutex}),
            (Lines{"XMutex MutexUSB", "WaitWithRetry 100 100", "~XMutex held", "XMutex MutexUSB",
                   "WaitWithRetry 100 100", "~XMutex held"}));
}

TEST_F(QZJob, SettingsThatAreNoNumbersThrowBeforeTheDeviceIsTouched) {
  settings_.brightness = L"abc";
  EXPECT_THROW(scan(), std::invalid_argument);
  settings_.brightness = L"99999999999";
  EXPECT_THROW(scan(), std::out_of_range);
  EXPECT_EQ(platform.calls({Kind::kDevice, Kind::kNotification, Kind::kLog}), Lines{});
}

TEST_F(QZJob, ExceptionLeavesTheMutexToALaterJob) {
  settings_.contrast = L"abc";
  EXPECT_THROW(scan(), std::invalid_argument);
  EXPECT_NE(BasePeer::mutex(controller), nullptr);
  settings_.contrast = L"0";
  device.openFlatbed().flatbedPage().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(platform.calls({Kind::kMutex}), (Lines{"XMutex MutexUSB", "WaitWithRetry 100 100",
                                                   "WaitWithRetry 100 100", "~XMutex held"}));
}

TEST_F(QZJob, ExceptionOfTheCallbackPassesOutOfTheJob) {
  platform.onNotification = [](const ScanNotification& notification) {
    if (notification.type == NOTIFY_JOB_COMPLETE) throw std::runtime_error("caller");
  };
  device.openFlatbed().flatbedPage().close();
  EXPECT_THROW(scan(), std::runtime_error);
  EXPECT_NE(BasePeer::mutex(controller), nullptr);
  EXPECT_EQ(platform.logLines(), Lines{});
}

TEST_F(QZJob, NameThatDoesNotFitEndsTheJobBeforeTheReservation) {
  giveDictionary();
  platform.computerName = std::wstring(17, L'\u00E4');  // 34 bytes of UTF-8
  play(1);
  EXPECT_EQ(scan(), 1);
  EXPECT_EQ(told(), (Lines{kCommDialog, "Notify 1011"}));
  const Lines log = platform.logLines();
  ASSERT_EQ(log.size(), 1U);
  EXPECT_NE(log[0].find("csComputerName"), std::string::npos) << log[0];
}

TEST_F(QZJob, FamilyHasNoRangesToTell) {
  IPPMinMaxNormalStepData brightness{1, 2, 3, 4};
  IPPMinMaxNormalStepData contrast{5, 6, 7, 8};
  controller.GetUSBBrightnessContrastValue(brightness, contrast);
  EXPECT_EQ(brightness.Min, 1);
  EXPECT_EQ(brightness.Max, 2);
  EXPECT_EQ(brightness.Normal, 3);
  EXPECT_EQ(brightness.Step, 4);
  EXPECT_EQ(contrast.Min + contrast.Max + contrast.Normal + contrast.Step, 26);
  EXPECT_EQ(platform.calls(), Lines{});
}

}  // namespace
