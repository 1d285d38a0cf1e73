// Whole LowEnd jobs that go wrong, each fault of the virtual scanner: how the job ends, what the
// caller is told, and what the user sees where dialogs are wanted.
#include <chrono>
#include <exception>
#include <thread>
#include <vector>

#include "tests/e2e/e2e_support.h"

namespace tvrscn::test {
namespace {

using virtual_device::addLowEndFault;
using virtual_device::LowEndScannerOptions;
using Lines = std::vector<std::string>;
using Types = std::vector<NotificationType>;
using D = CErrorCodeDictionary;

// How a failure is told where dialogs are wanted; without them it is NOTIFY_CONN_FAILURE.
struct Report {
  NotificationType type;
  std::wstring CErrorCodeDictionary::*text;
  std::wstring CErrorCodeDictionary::*title = &D::m_strTitle;
};
constexpr Report kBusy = {NOTIFY_SCANNER_BUSY, &D::m_strScannerBusy};
constexpr Report kJam = {NOTIFY_SCAN_FAILED, &D::m_strPaperJam, &D::m_strPaperJamTitle};
constexpr Report kCover = {NOTIFY_JOB_ABORTED, &D::m_strCoverOpen};
constexpr Report kLink = {NOTIFY_JOB_ABORTED, &D::m_strCommFailure};
constexpr Report kGeneral = {NOTIFY_SCAN_FAILED, &D::m_strGeneralError};
constexpr Report kCancelled = {NOTIFY_JOB_ABORTED, &D::m_strJobCancelled};

const char* const kSending = "Sending FAILURE Notification to DS ...";
const char* const kStartRefused =
    "Error from SendStartScanCommand....The return status is not good.... check for status dump "
    "text file";
const char* const kSecondReport = "Something wrong in scan operation";

struct FailureCase {
  const char* name;
  const char* fault;
  long result;
  std::vector<Report> reports;
  Lines log;  // with dialogs or without
};

const FailureCase kCases[] = {
    {"Busy", "busy", 1, {kBusy}, {"LowEnd USB Scanner is busy", kSending}},
    {"PaperJam",
     "paper-jam",
     1,
     {kJam},
     {"LowEnd USB ADF Jam detected, please clean it up", kSending}},
    {"FeederCover",
     "cover-open=adf",
     1,
     {kCover},
     {"LowEnd USB either Flatbed or ADF cover is open, please close and try scan next.", kSending}},
    {"FlatbedCover",
     "cover-open=flatbed",
     1,
     {kCover},
     {"LowEnd USB either Flatbed or ADF cover is open, please close and try scan next.", kSending}},
    {"NoSection",
     "no-section",
     1,
     {kLink},
     {"Something wrong in LowEnd USB Status command response, please check on it.", kSending}},
    {"Refused",
     "refuse=no toner",
     1,
     {kGeneral, kGeneral},
     {kStartRefused, kSending, kSecondReport, kSending}},
    // Power reset
    {"StatusFour",
     "status=0x84",
     1,
     {kLink, kGeneral},
     {kStartRefused, kSending, kSecondReport, kSending}},
    {"Cancelled",
     "cancelled",
     0,
     {kCancelled},
     {"Error from RetrieveScannedRecordData....The return status is not good.... check for status "
      "dump text file",
      kSending}},
};

class LowEndFailure : public ScannerTest, public ::testing::WithParamInterface<FailureCase> {
 protected:
  void startFaulty() {
    LowEndScannerOptions options;
    options.feeder = true;
    ASSERT_EQ(addLowEndFault(options, GetParam().fault), "");
    startLowEnd(options);
  }
};

TEST_P(LowEndFailure, WithoutDialogsTellsTheCallerAlone) {
  startFaulty();
  EXPECT_EQ(scan(smallJob()), GetParam().result);
  EXPECT_EQ(types(), Types(GetParam().reports.size(), NOTIFY_CONN_FAILURE));
  EXPECT_EQ(logLines(), GetParam().log);
  // The words of a refusal stay in the folder.
  const fs::path words = out_ / "ScanRequestError.txt";
  ASSERT_EQ(fs::exists(words), std::string(GetParam().name) == "Refused");
  if (!fs::exists(words)) return;
  const std::vector<std::uint8_t> bytes = readFile(words);
  const std::string text(bytes.begin(), bytes.end());
  EXPECT_NE(text.find(R"("message":"no toner")"), std::string::npos) << text;
}

TEST_P(LowEndFailure, WithDialogsTellsTheUser) {
  startFaulty();
  answerDialogs();
  const auto client = openClient();
  client->SetUsingTevraUI(1);
  EXPECT_EQ(scan(*client, smallJob()), GetParam().result);
  EXPECT_EQ(client->m_bClientErrorShown, GetParam().result != 0);
  EXPECT_EQ(logLines(), GetParam().log);

  D texts;
  texts.InitExceptionStrings(nullptr);
  constexpr unsigned int kTopmost = 0x40000;
  const std::vector<Report>& reports = GetParam().reports;
  ASSERT_EQ(dialogs().size(), reports.size());
  ASSERT_EQ(notifications_.size(), 2 * reports.size());
  for (std::size_t i = 0; i < reports.size(); ++i) {
    EXPECT_EQ(notifications_[2 * i].type, NOTIFY_ERROR_DISPLAYED);
    EXPECT_EQ(notifications_[2 * i].dialogsBefore, i);
    EXPECT_EQ(notifications_[2 * i + 1].type, reports[i].type);
    EXPECT_EQ(notifications_[2 * i + 1].dialogsBefore, i + 1);
    EXPECT_EQ(dialogs()[i].text, texts.*reports[i].text);
    EXPECT_EQ(dialogs()[i].title, texts.*reports[i].title);
    EXPECT_EQ(dialogs()[i].buttons, 1);
    EXPECT_EQ(dialogs()[i].flags.value_or(kTopmost), kTopmost);
  }
}

template <class Case>
std::string caseName(const ::testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Faults, LowEndFailure, ::testing::ValuesIn(kCases), caseName<FailureCase>);

// What a device may do wrong and the job goes well all the same, with the page or with a file in
// its place that is none: whatever was stored is reported.
struct HarmlessCase {
  const char* name;
  const char* fault;
  bool isWhole;  // the page
};

class LowEndHarmless : public ScannerTest, public ::testing::WithParamInterface<HarmlessCase> {};

TEST_P(LowEndHarmless, JobEndsWell) {
  LowEndScannerOptions options;
  ASSERT_EQ(addLowEndFault(options, GetParam().fault), "");
  startLowEnd(options);
  EXPECT_EQ(scan(smallJob()), 0);
  EXPECT_EQ(types(), (Types{NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY, NOTIFY_JOB_COMPLETE}));
  ASSERT_EQ(pages().size(), 1U);
  const std::vector<std::uint8_t> bytes = readFile(pages()[0]);
  const bool isWhole = bytes.size() > 4 && bytes[0] == 0xFF && bytes[1] == 0xD8 &&
                       bytes[bytes.size() - 2] == 0xFF && bytes.back() == 0xD9;
  EXPECT_EQ(isWhole, GetParam().isWhole);
}

INSTANTIATE_TEST_SUITE_P(Faults, LowEndHarmless,
                         ::testing::Values(HarmlessCase{"Junk", "junk", true},
                                           HarmlessCase{"NoNibble", "status=0x10", true},
                                           HarmlessCase{"OddAbilities", "not-json@capabilities",
                                                        true},
                                           HarmlessCase{"NoData", "empty@image", false},
                                           HarmlessCase{"FirstPacketIsCut", "short@image=9", false},
                                           HarmlessCase{"HalfAPage", "truncated-page=1", false}),
                         caseName<HarmlessCase>);

// An answer that is no document, or none at all, leaves Scan as an exception, with no word to
// anybody else.
struct ThrowCase {
  const char* name;
  const char* fault;
};

class LowEndThrow : public ScannerTest, public ::testing::WithParamInterface<ThrowCase> {};

TEST_P(LowEndThrow, LeavesScanWithoutANotification) {
  LowEndScannerOptions options;
  ASSERT_EQ(addLowEndFault(options, GetParam().fault), "");
  startLowEnd(options);
  answerDialogs();
  const auto client = openClient();
  client->SetUsingTevraUI(1);
  EXPECT_THROW(scan(*client, smallJob()), std::exception);
  EXPECT_EQ(types(), Types{});
  EXPECT_TRUE(dialogs().empty());
  EXPECT_EQ(logLines(), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Faults, LowEndThrow,
                         ::testing::Values(ThrowCase{"NoStatus", "empty@status"},
                                           ThrowCase{"OddStatus", "not-json@status"},
                                           ThrowCase{"OtherStatus", "wrong-code@status"},
                                           ThrowCase{"ShortStatus", "short@status=4"},
                                           ThrowCase{"FailedStatus", "failed-read@status"},
                                           ThrowCase{"NoVerdict", "empty@start"}),
                         caseName<ThrowCase>);

class LowEndLink : public ScannerTest {};

TEST_F(LowEndLink, AJobAfterOneThatFailedGoesWell) {
  LowEndScannerOptions options;
  ASSERT_EQ(addLowEndFault(options, "not-json@status"), "");
  ASSERT_EQ(addLowEndFault(options, "busy=1"), "");
  startLowEnd(options);
  const auto client = openClient();
  EXPECT_THROW(scan(*client, smallJob()), std::exception);
  EXPECT_EQ(scan(*client, smallJob()), 0);
  ASSERT_EQ(pages().size(), 1U);
  EXPECT_EQ(pages()[0].filename(), "Image_1.JPG");
}

TEST_F(LowEndLink, EmptyCallbackRecordIsRefusedBeforeTheDeviceIsTouched) {
  startLowEnd({});
  const auto client = openClient();
  TevraScanUIData job = smallJob();
  TVR_FP_CALLBACK empty = {nullptr, nullptr};
  EXPECT_EQ(client->Scan(job, &empty, out_.wstring(), nullptr), 1);
  EXPECT_EQ(logLines(), Lines{"Error from ScanviaUSBThreaded....Callback is not valid. Bailing out "
                              "of scan...."});
}

// Paths of this family's files are narrow. The worker finds out, so Scan has returned 0 by then.
TEST_F(LowEndLink, FolderThatCannotBeSaidInNarrowLettersFailsTheJob) {
  startLowEnd({});
  fs::create_directories(folder_ / u8"Bl\u00E4tter \u7528\u7D19");
  const std::wstring wide = folder_.wstring() + L"/Bl\u00E4tter \u7528\u7D19";
  answerDialogs();
  const auto client = openClient();
  client->SetUsingTevraUI(1);
  EXPECT_EQ(scanInto(wide, *client, smallJob()), 0);
  EXPECT_EQ(types(), (Types{NOTIFY_ERROR_DISPLAYED, NOTIFY_CONN_FAILURE}));
  EXPECT_EQ(logLines(), (Lines{"Exception thrown from RemoveBlockToBytesWithNewline due to Input "
                               "Image file to process is not available",
                               kSending}));
  D texts;
  texts.InitExceptionStrings(nullptr);
  ASSERT_EQ(dialogs().size(), 1U);
  EXPECT_EQ(dialogs()[0].text, texts.m_strCommFailure);
  EXPECT_EQ(dialogs()[0].title, texts.m_strCommFailureTitle);
}

// A device that falls silent leaves the worker reading: nothing but data ends that wait. The hosts
// are processes of their own here, so that the test can end them.
TEST_F(LowEndLink, ADeviceThatFallsSilentLeavesTheHostWaiting) {
  std::vector<std::unique_ptr<virtual_device::RunningScanner>> scanners;
  std::vector<std::unique_ptr<ChildProcess>> hosts;
  for (const char* fault : {"drop=1", "silent-end"}) {
    LowEndScannerOptions options;
    ASSERT_EQ(addLowEndFault(options, fault), "");
    virtual_device::Placement placement = virtual_device::lowEndPlacement();
    const std::string name = "SILENT" + std::to_string(hosts.size());
    placement.instanceId = "USB\\" + lowEndDevice().hardwareId + "\\" + name;
    placement.name = name;
    placement.deviceFolder = folder_ / "devices";
    scanners.push_back(virtual_device::startLowEndScanner(options, placement));
    setVariable("TVRSCN_DEVICE_PATH", scanners.back()->placement().deviceFolder.string());
    const fs::path folder = out_ / name;
    fs::create_directories(folder);
    hosts.push_back(std::make_unique<ChildProcess>(
        oneJobArguments(folder, {CONTROLLER_LOWEND, placement.instanceId})));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  for (const auto& host : hosts) {
    EXPECT_TRUE(host->isRunning()) << "the host has given up its wait";
    host->kill();
  }
  for (const auto& entry : fs::directory_iterator(out_))
    EXPECT_TRUE(fs::is_empty(entry.path())) << "pages come after the last packet";
}

}  // namespace
}  // namespace tvrscn::test
