// Whole QZ jobs that go wrong, each fault of the virtual scanner: how the job ends, what the caller
// is told, and what the user sees where dialogs are wanted.
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/e2e/e2e_support.h"

namespace tvrscn::test {
namespace {

using virtual_device::addQzFault;
using virtual_device::QzScannerOptions;
using Lines = std::vector<std::string>;
using Types = std::vector<NotificationType>;
using D = CErrorCodeDictionary;
using Text = std::wstring CErrorCodeDictionary::*;

constexpr unsigned int kTopmost = 0x40000;
constexpr unsigned int kRetryCancel = 0x5;

// A fault that has sense data is told by them; any other by the status, or as a failed link.
struct FailureCase {
  const char* name;
  const char* fault;
  bool feeder;
  bool hasSense;
  Text text;
  Text title = &D::m_strTitle;
  const char* log = nullptr;
};

const FailureCase kCases[] = {
    {"BusyAtWakeUp", "busy@wake-up", false, false, &D::m_strScannerBusy},
    {"BusyAtScan", "busy@scan", false, false, &D::m_strScannerBusy},
    {"BusyAtRead", "busy@read", false, false, &D::m_strScannerBusy, &D::m_strTitle,
     "Read: Operation Error Busy: Command cannot be accepted, Resend the command"},
    {"Reserved", "reserved", false, false, &D::m_strDeviceError},
    {"NoAccess", "status@reserve=33", false, false, &D::m_strDeviceError},
    {"SwitchedOff", "status@window=34", false, false, &D::m_strDeviceError},
    {"ProhibitedTime", "status@read=35", false, false, &D::m_strDeviceError, &D::m_strTitle,
     "Read: Operation Error Scan Prohibited Time: Scanning is not possible due to the time "
     "limitation for the scan feature."},
    {"ImagingError", "status@scan=36", false, false, &D::m_strDeviceError},
    {"UnknownStatus", "status@mode-sense=77", false, false, &D::m_strCommFailure,
     &D::m_strCommFailureTitle},
    {"Cancelled", "cancelled=1", true, true, &D::m_strJobCancelled},
    {"NoPaper", "no-paper", true, true, &D::m_strNoDocument},
    {"CoverOpen", "cover-open", true, true, &D::m_strGeneralError},
    {"NotReady", "sense@scan=010400", false, true, &D::m_strCoverOpen},
    {"WrongField", "sense@window=042400", false, true, &D::m_strDeviceError},
    {"NoMoreData", "sense@read=050000", false, true, &D::m_strInvalidRequest},
    {"UnknownSense", "sense@ready=ABCDEF", false, true, &D::m_strGeneralError},
    {"ShortHeader", "short@reserve", false, false, &D::m_strCommFailure, &D::m_strCommFailureTitle},
    {"ShortData", "short@mode-sense=20", false, false, &D::m_strCommFailure,
     &D::m_strCommFailureTitle},
    {"FailedRead", "failed-read@mode-select", false, false, &D::m_strCommFailure,
     &D::m_strCommFailureTitle},
    {"Unplugged", "drop=1", false, false, &D::m_strCommFailure, &D::m_strCommFailureTitle},
};

class QzFailure : public ScannerTest, public ::testing::WithParamInterface<FailureCase> {
 protected:
  void startFaulty() {
    QzScannerOptions options;
    options.feeder = GetParam().feeder;
    ASSERT_EQ(addQzFault(options, GetParam().fault), "");
    startQz(options);
  }
  static Lines log() { return GetParam().log == nullptr ? Lines{} : Lines{GetParam().log}; }
};

TEST_P(QzFailure, WithoutDialogsTellsTheCallerAlone) {
  startFaulty();
  EXPECT_EQ(scan(smallJob()), 1);
  const Types sense = {NOTIFY_SCAN_FAILED, NOTIFY_CONN_FAILURE};
  EXPECT_EQ(types(), GetParam().hasSense ? sense : Types{NOTIFY_CONN_FAILURE});
  EXPECT_EQ(logLines(), log());
  EXPECT_TRUE(fs::is_empty(out_));
}

TEST_P(QzFailure, WithDialogsTellsTheUser) {
  startFaulty();
  answerDialogs();
  const auto client = openClient();
  client->SetUsingTevraUI(1);
  EXPECT_EQ(scan(*client, smallJob()), 1);
  EXPECT_FALSE(client->m_bClientErrorShown) << "the family leaves it alone";
  EXPECT_EQ(types(), Types{GetParam().hasSense ? NOTIFY_SCAN_FAILED : NOTIFY_CONN_FAILURE});
  EXPECT_EQ(logLines(), log());

  D texts;
  texts.InitExceptionStrings(nullptr);
  ASSERT_EQ(dialogs().size(), 1U);
  EXPECT_EQ(notifications_[0].dialogsBefore, 1U);
  EXPECT_EQ(dialogs()[0].text, texts.*GetParam().text);
  EXPECT_EQ(dialogs()[0].title, texts.*GetParam().title);
  EXPECT_EQ(dialogs()[0].buttons, 1);
  EXPECT_EQ(dialogs()[0].flags.value_or(kTopmost), kTopmost);
}

std::string caseName(const ::testing::TestParamInfo<FailureCase>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Faults, QzFailure, ::testing::ValuesIn(kCases), caseName);

class QzLink : public ScannerTest {
 protected:
  void startWith(QzScannerOptions options, const char* fault) {
    ASSERT_EQ(addQzFault(options, fault), "");
    startQz(options);
  }
  void startJammed(const char* fault) {
    QzScannerOptions options;
    options.feeder = true;
    options.sheets = 2;
    startWith(options, fault);
  }
  void expectJamDialog(std::size_t index) const {
    D texts;
    texts.InitExceptionStrings(nullptr);
    EXPECT_EQ(dialogs().at(index).text, texts.m_strPaperJam);
    EXPECT_EQ(dialogs()[index].title, texts.m_strPaperJamTitle);
    EXPECT_EQ(dialogs()[index].buttons, 2);
    constexpr unsigned int kFlags = kTopmost | kRetryCancel;
    EXPECT_EQ(dialogs()[index].flags.value_or(kFlags), kFlags);
  }
};

TEST_F(QzLink, JamThatTheUserCuresIsScannedAgain) {
  startJammed("paper-jam=1");
  answerDialogs({DialogKey::kEnter});
  const auto client = openClient();
  client->SetUsingTevraUI(1);
  EXPECT_EQ(scan(*client, smallJob()), 0);
  EXPECT_EQ(types(), (Types{NOTIFY_SCAN_FAILED, NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY,
                            NOTIFY_IMAGE_READY, NOTIFY_JOB_COMPLETE}));
  ASSERT_EQ(dialogs().size(), 1U);
  expectJamDialog(0);
}

TEST_F(QzLink, JamOnTheSecondPageLeavesTheFirstOne) {
  startJammed("paper-jam=2");
  answerDialogs({DialogKey::kEnter});
  const auto client = openClient();
  client->SetUsingTevraUI(1);
  EXPECT_EQ(scan(*client, smallJob()), 0);
  EXPECT_EQ(types(), (Types{NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY, NOTIFY_SCAN_FAILED,
                            NOTIFY_IMAGE_READY, NOTIFY_JOB_COMPLETE}));
  for (const fs::path& page : pages())
    EXPECT_EQ(readJpegHead(page).width, 295) << page;
}

TEST_F(QzLink, JamThatTheUserGivesUpOnEndsTheJob) {
  startJammed("paper-jam=2");
  answerDialogs({DialogKey::kEscape});
  const auto client = openClient();
  client->SetUsingTevraUI(1);
  EXPECT_EQ(scan(*client, smallJob()), 1);
  EXPECT_EQ(types(), (Types{NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY, NOTIFY_SCAN_FAILED}));
  ASSERT_EQ(dialogs().size(), 1U);
  expectJamDialog(0);
}

TEST_F(QzLink, JamWithoutDialogsEndsTheJob) {
  startJammed("paper-jam=1");
  EXPECT_EQ(scan(smallJob()), 1);
  EXPECT_EQ(types(), (Types{NOTIFY_SCAN_FAILED, NOTIFY_CONN_FAILURE}));
}

// A sense on the two commands of the clean-up reaches no user.
TEST_F(QzLink, SenseOnReleaseIsToldAsAFailureWithoutWords) {
  startWith({}, "sense@release=030000*1");
  answerDialogs();
  const auto client = openClient();
  client->SetUsingTevraUI(1);
  EXPECT_EQ(scan(*client, smallJob()), 1);
  EXPECT_EQ(types(), (Types{NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY}));
  EXPECT_TRUE(dialogs().empty());
}

TEST_F(QzLink, JobAfterOneThatFailedGoesWell) {
  for (const char* fault : {"busy@wake-up", "sense@scan=010400*1", "status@read=36*1",
                            "cancelled=1", "failed-read@mode-sense"}) {
    startWith({}, fault);
    const auto client = openClient();
    EXPECT_EQ(scan(*client, smallJob()), 1) << fault;
    notifications_.clear();
    scanner_.reset();
    startQz({});
    EXPECT_EQ(scan(smallJob()), 0) << fault;
    EXPECT_EQ(readJpegHead(pages().at(0)).width, 295) << fault;
    scanner_.reset();
  }
}

// What a device may do wrong and the job goes well all the same, with its page or without.
TEST_F(QzLink, HarmlessFaultsLeaveTheJobAlone) {
  const struct {
    const char* fault;
    std::size_t pages;
  } rows[] = {
      {"flags@wake-up=0xB0", 1},    // bits without a meaning
      {"state@scan=9", 1},          // of no interest but in a READ
      {"wrong-command@scan", 1},    // a reply is taken for what it says it is
      {"fewer@block-header=4", 1},  // nobody looks at the size of a block
      {"slow=2", 1},
      {"state@read=0*1", 0},  // the data are dropped
      {"wrong-command@read", 0},
  };
  for (const auto& row : rows) {
    startWith({}, row.fault);
    notifications_.clear();
    EXPECT_EQ(scan(smallJob()), 0) << row.fault;
    EXPECT_EQ(pages().size(), row.pages) << row.fault;
    scanner_.reset();
  }
}

TEST_F(QzLink, EmptyCallbackRecordIsRefusedBeforeTheDeviceIsTouched) {
  startQz({});
  const auto client = openClient();
  TevraScanUIData job = smallJob();
  TVR_FP_CALLBACK empty = {nullptr, nullptr};
  EXPECT_EQ(client->Scan(job, &empty, out_.wstring(), nullptr), 1);
  EXPECT_EQ(logLines(), Lines{"Error from ScanviaUSBThreaded....Callback is not valid. Bailing out "
                              "of scan...."});
}

}  // namespace
}  // namespace tvrscn::test
