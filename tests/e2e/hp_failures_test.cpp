// Whole HP jobs that go wrong, each fault of the virtual scanner: how the job ends, what the caller
// is told, and what the user sees where dialogs are wanted. Pages that came before stay.
#include <chrono>
#include <thread>
#include <vector>

#include "tests/e2e/e2e_support.h"

namespace tvrscn::test {
namespace {

using virtual_device::addHpFault;
using virtual_device::HpScannerOptions;

enum class Source { kFlatbed, kFeeder };

// One job with one fault. Without dialogs every failure is NOTIFY_CONN_FAILURE; with them the
// notification and the dialog are the family's own.
struct FailureCase {
  const char* name;
  Source source;
  const char* fault;
  long result;
  std::size_t pages;
  NotificationType withDialogs;
  std::wstring CErrorCodeDictionary::*text;  // null: no dialog
  std::wstring CErrorCodeDictionary::*title;
};

using D = CErrorCodeDictionary;
constexpr auto kFlatbed = Source::kFlatbed;
constexpr auto kFeeder = Source::kFeeder;

const FailureCase kCases[] = {
    // Busy and in use
    {"BusyAtInquiry", kFlatbed, "busy@inquiry", 1, 0, NOTIFY_SCANNER_BUSY, &D::m_strScannerBusy,
     &D::m_strTitle},
    {"InUseAtInquiry", kFlatbed, "status@inquiry=9", 1, 0, NOTIFY_SCANNER_BUSY,
     &D::m_strScannerBusy, &D::m_strTitle},
    {"OddStatusAtInquiry", kFlatbed, "status@inquiry=3", 1, 0, NOTIFY_JOB_ABORTED,
     &D::m_strCommFailure, &D::m_strTitle},
    {"BusyAtReserve", kFlatbed, "busy@reserve", 1, 0, NOTIFY_SCANNER_BUSY, &D::m_strScannerBusy,
     &D::m_strTitle},
    {"NoMemoryAtReserve", kFlatbed, "status@reserve=4", 1, 0, NOTIFY_JOB_ABORTED,
     &D::m_strCommFailure, &D::m_strTitle},
    {"NoResourceAtReserve", kFlatbed, "status@reserve=255", 1, 0, NOTIFY_JOB_ABORTED,
     &D::m_strCommFailure, &D::m_strTitle},
    {"BusyAtWindowEndsWell", kFlatbed, "busy@window", 0, 0, NOTIFY_JOB_COMPLETE, nullptr, nullptr},
    {"InUseAtWindow", kFlatbed, "status@window=9", 1, 0, NOTIFY_JOB_ABORTED, &D::m_strCoverOpen,
     &D::m_strTitle},
    {"RefusedAtWindow", kFlatbed, "message@window=0x200", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strGeneralError, &D::m_strTitle},
    {"CancelledAtWindow", kFlatbed, "status@window=4", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strGeneralError, &D::m_strTitle},
    {"FlatbedBusyAtPosition", kFlatbed, "busy@position", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strGeneralError, &D::m_strTitle},
    {"FeederBusyTwiceAtPosition", kFeeder, "busy@position=2", 0, 2, NOTIFY_JOB_COMPLETE, nullptr,
     nullptr},
    {"BusyAtRead", kFlatbed, "busy@read=2", 0, 1, NOTIFY_JOB_COMPLETE, nullptr, nullptr},
    // Message words
    {"NoErrorAtReserveGoesOn", kFlatbed, "message@reserve=0x1", 0, 1, NOTIFY_JOB_COMPLETE, nullptr,
     nullptr},
    {"CommandError", kFlatbed, "message@reserve=0x2", 1, 0, NOTIFY_JOB_ABORTED,
     &D::m_strCommFailure, &D::m_strTitle},
    {"SavingNotSupported", kFlatbed, "message@reserve=0x4", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strInvalidRequest, &D::m_strTitle},
    {"PowerOn", kFlatbed, "message@reserve=0x8", 1, 0, NOTIFY_JOB_ABORTED, &D::m_strCommFailure,
     &D::m_strTitle},
    {"NoDocumentAtReserve", kFlatbed, "message@reserve=0x10", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strGeneralError, &D::m_strTitle},
    {"JamAtReserve", kFlatbed, "message@reserve=0x20", 1, 0, NOTIFY_SCAN_FAILED, &D::m_strPaperJam,
     &D::m_strPaperJamTitle},
    {"CoverAtReserve", kFlatbed, "message@reserve=0x40", 1, 0, NOTIFY_JOB_ABORTED,
     &D::m_strCoverOpen, &D::m_strTitle},
    {"WarmingUp", kFlatbed, "warming-up", 1, 0, NOTIFY_SCAN_FAILED, &D::m_strInvalidRequest,
     &D::m_strTitle},
    {"LockingError", kFlatbed, "message@reserve=0x100", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strInvalidRequest, &D::m_strTitle},
    {"InvalidArea", kFlatbed, "message@reserve=0x200", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strInvalidRequest, &D::m_strTitle},
    {"ResourceBusy", kFlatbed, "message@reserve=0x400", 1, 0, NOTIFY_JOB_ABORTED,
     &D::m_strCommFailure, &D::m_strTitle},
    {"InvalidKey", kFlatbed, "message@reserve=0x800", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strInvalidRequest, &D::m_strTitle},
    {"Banknote", kFlatbed, "message@reserve=0x1000", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strInvalidRequest, &D::m_strTitle},
    {"Quota", kFlatbed, "message@reserve=0x2000", 1, 0, NOTIFY_SCAN_FAILED, &D::m_strInvalidRequest,
     &D::m_strTitle},
    {"TwoBitsAreNoMessage", kFlatbed, "message@reserve=0x60", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strGeneralError, &D::m_strTitle},
    // Page by page
    {"JamBeforeSecondPage", kFeeder, "paper-jam=2", 1, 1, NOTIFY_SCAN_FAILED, &D::m_strPaperJam,
     &D::m_strPaperJamTitle},
    {"JamBeforeAnyPage", kFeeder, "paper-jam=1", 1, 0, NOTIFY_SCAN_FAILED, &D::m_strGeneralError,
     &D::m_strTitle},
    {"CoverOpenBeforeSecondPage", kFeeder, "cover-open=2", 1, 1, NOTIFY_JOB_ABORTED,
     &D::m_strCoverOpen, &D::m_strTitle},
    {"NoPaperBeforeAnyPage", kFeeder, "no-paper=1", 1, 0, NOTIFY_SCAN_FAILED, &D::m_strGeneralError,
     &D::m_strTitle},
    {"NoPaperBehindAPageEndsWell", kFeeder, "no-paper=2", 0, 1, NOTIFY_JOB_COMPLETE, nullptr,
     nullptr},
    {"CancelledBeforeAnyPage", kFeeder, "cancelled=1", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strGeneralError, &D::m_strTitle},
    {"CancelledBehindAPageEndsWell", kFeeder, "cancelled=2", 0, 1, NOTIFY_JOB_COMPLETE, nullptr,
     nullptr},
    {"EndBlockOfFirstPageLost", kFlatbed, "end-block-lost=1", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strGeneralError, &D::m_strTitle},
    {"EndBlockOfSecondPageLostKeepsIt", kFeeder, "end-block-lost=2", 0, 2, NOTIFY_JOB_COMPLETE,
     nullptr, nullptr},
    // Transfers
    {"InquiryFails", kFlatbed, "failed-read@inquiry", 1, 0, NOTIFY_JOB_ABORTED,
     &D::m_strCommFailure, &D::m_strTitle},
    {"ReserveFails", kFlatbed, "failed-read@reserve", 1, 0, NOTIFY_JOB_ABORTED,
     &D::m_strCommFailure, &D::m_strTitle},
    {"ReadFails", kFlatbed, "failed-read@read", 1, 0, NOTIFY_SCAN_FAILED, &D::m_strGeneralError,
     &D::m_strTitle},
    {"ShortInquiryMeansFlatbed", kFeeder, "short@inquiry=10", 0, 1, NOTIFY_JOB_COMPLETE, nullptr,
     nullptr},
    {"ShortReadAnswerIsNoBlock", kFlatbed, "short@read=2", 1, 0, NOTIFY_SCAN_FAILED,
     &D::m_strGeneralError, &D::m_strTitle},
    {"AbortFailsUnnoticed", kFlatbed, "failed-read@abort", 0, 1, NOTIFY_JOB_COMPLETE, nullptr,
     nullptr},
    {"ReleaseBusyUnnoticed", kFlatbed, "busy@release", 0, 1, NOTIFY_JOB_COMPLETE, nullptr, nullptr},
    {"SlowDevice", kFlatbed, "slow=20", 0, 1, NOTIFY_JOB_COMPLETE, nullptr, nullptr},
};

class HPFailure : public ScannerTest, public ::testing::WithParamInterface<FailureCase> {
 protected:
  void startFaulty() {
    const FailureCase& row = GetParam();
    HpScannerOptions options;
    options.feeder = row.source == Source::kFeeder;
    options.sheets = 2;
    ASSERT_EQ(addHpFault(options, row.fault), "");
    start(options);
  }

  void expectPages() {
    ASSERT_EQ(pages().size(), GetParam().pages);
    for (const fs::path& page : pages())
      EXPECT_GT(readJpegHead(page).width, 0);
  }
};

TEST_P(HPFailure, WithoutDialogsEndsAsItShould) {
  startFaulty();
  EXPECT_EQ(scan(smallJob()), GetParam().result);
  expectPages();
  ASSERT_FALSE(notifications_.empty());
  EXPECT_EQ(notifications_.back().type,
            GetParam().result == 0 ? NOTIFY_JOB_COMPLETE : NOTIFY_CONN_FAILURE);
}

TEST_P(HPFailure, WithDialogsTellsTheUser) {
  startFaulty();
  answerDialogs();
  const auto client = openClient();
  client->SetUsingTevraUI(1);
  EXPECT_EQ(scan(*client, smallJob()), GetParam().result);
  expectPages();
  ASSERT_FALSE(notifications_.empty());
  EXPECT_EQ(notifications_.back().type, GetParam().withDialogs);
  EXPECT_FALSE(client->m_bClientErrorShown);
  if (GetParam().text == nullptr) {
    EXPECT_TRUE(dialogs().empty());
    return;
  }
  CErrorCodeDictionary texts;
  texts.InitExceptionStrings(nullptr);
  constexpr unsigned int kTopmost = 0x40000;
  ASSERT_EQ(dialogs().size(), 1U);
  EXPECT_EQ(dialogs()[0].title, texts.*GetParam().title);
  EXPECT_EQ(dialogs()[0].text, texts.*GetParam().text);
  EXPECT_EQ(dialogs()[0].buttons, 1);
  EXPECT_EQ(dialogs()[0].flags.value_or(kTopmost), kTopmost);
  for (const Notification& notification : notifications_) {
    EXPECT_EQ(notification.dialogsBefore, notification.type == GetParam().withDialogs ? 1U : 0U);
  }
}

std::string caseName(const ::testing::TestParamInfo<FailureCase>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Faults, HPFailure, ::testing::ValuesIn(kCases), caseName);

class HPLink : public ScannerTest {};

TEST_F(HPLink, DeviceThatIsNotThereFailsTheJobAtItsFirstCommand) {
  EXPECT_EQ(scan(smallJob()), 1);
  EXPECT_EQ(types(), std::vector<NotificationType>{NOTIFY_CONN_FAILURE});
  EXPECT_EQ(logLines(), (std::vector<std::string>{"COMMAND: INQUIRY", "Received Error code : 6",
                                                  "Sending FAILURE Notification to DS ..."}));
}

TEST_F(HPLink, EmptyCallbackRecordIsRefusedBeforeTheDeviceIsTouched) {
  start({});
  const auto client = openClient();
  TevraScanUIData job = smallJob();
  TVR_FP_CALLBACK empty = {nullptr, nullptr};
  EXPECT_EQ(client->Scan(job, &empty, out_.wstring(), nullptr), 1);
  EXPECT_EQ(logLines(), (std::vector<std::string>{
                            "Error from ScanviaUSBThreaded....Callback is not valid. Bailing out "
                            "of scan...."}));
}

// A connection that drops within a block leaves the host reading: nothing but data ends that wait.
// The host is a process of its own here, so that the test can end it.
TEST_F(HPLink, DropWithinABlockKeepsThePagesBeforeIt) {
  HpScannerOptions options;
  options.feeder = true;
  options.sheets = 2;
  ASSERT_EQ(addHpFault(options, "drop=2"), "");
  start(options);
  ChildProcess host({kOneJobArgument, out_.string()});
  std::this_thread::sleep_for(std::chrono::seconds(3));
  EXPECT_TRUE(host.isRunning()) << "the host has given up its wait";
  host.kill();
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(out_))
    files.push_back(entry.path());
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(readJpegHead(files[0]).height, 236);
}

TEST_F(HPLink, FolderThatCannotBeWrittenIsNotNoticedByTheLibrary) {
  start({});
  const auto client = openClient();
  TevraScanUIData job = smallJob();
  EXPECT_EQ(client->Scan(job, nullptr, (folder_ / "no" / "such").wstring(), nullptr), 0);
}

}  // namespace
}  // namespace tvrscn::test
