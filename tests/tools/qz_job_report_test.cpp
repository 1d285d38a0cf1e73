// Ends of jobs, told by the few log lines and the notifications of the library.
#include "qz_job_report.h"

#include <string>

#include <gtest/gtest.h>

namespace tvrscn::cli {
namespace {

class QzJobReportTest : public testing::Test {
 protected:
  void pageComes() {
    report.onNotification(NOTIFY_TRANSFER_STARTED);
    report.onNotification(NOTIFY_IMAGE_READY);
    report.onPageStored();
  }

  QzJobReport report;
};

TEST_F(QzJobReportTest, PagesAndTheEndAreADoneJob) {
  pageComes();
  report.onLogLine("...USB success.\n");
  report.onNotification(NOTIFY_JOB_COMPLETE);
  EXPECT_EQ(report.outcome(0).code, ExitCode::kDone);
  EXPECT_TRUE(report.isOver());
}

TEST_F(QzJobReportTest, JobWithoutAnEndNeverHadItsTurn) {
  report.onTurnTaken();
  const Outcome outcome = report.outcome(0);
  EXPECT_EQ(outcome.code, ExitCode::kBusy);
  EXPECT_EQ(outcome.what,
            "the scanner is in use by another program, which did not end within 10 seconds");
  EXPECT_FALSE(outcome.remedy.empty());
}

TEST_F(QzJobReportTest, TellsThatItWaitsForItsTurnUntilSomethingIsHeard) {
  EXPECT_EQ(report.waitingFor(), "the first page");
  EXPECT_EQ(report.activity(), "");
  report.onTurnTaken();
  EXPECT_NE(report.waitingFor().find("its turn"), std::string::npos);
  EXPECT_EQ(report.activity(), "waits for its turn");
  pageComes();
  EXPECT_EQ(report.waitingFor(), "the next page or the end of the job");
  EXPECT_EQ(report.activity(), "");
}

TEST_F(QzJobReportTest, EachStatusOfAReadIsACauseWithARemedy) {
  const struct {
    const char* status;
    ExitCode code;
  } rows[] = {
      {"Busy: Command cannot be accepted, Resend the command", ExitCode::kBusy},
      {"Scanning: Command cannot be accepted, scanning is in progress", ExitCode::kBusy},
      {"Reservation Conflict: Scanning resource is reserved by a different job", ExitCode::kBusy},
      {"Scan Auth Error: Authentication error for scan occurred", ExitCode::kRefused},
      {"Scan Function Disabled: Scan feature is disabled", ExitCode::kRefused},
      {"Scan Prohibited Time: Scanning is not possible due to the time limitation for the scan "
       "feature.",
       ExitCode::kRefused},
      {"Scan imaging Error: Scanning could not complete.", ExitCode::kDeviceFailed},
  };
  for (const auto& row : rows) {
    QzJobReport one;
    one.onLogLine(std::string("Read: Operation Error ") + row.status + "\r\n");
    one.onNotification(NOTIFY_CONN_FAILURE);
    const Outcome outcome = one.outcome(1);
    EXPECT_EQ(outcome.code, row.code) << row.status;
    EXPECT_EQ(outcome.deviceSaid, std::string("READ: ") + row.status);
    EXPECT_FALSE(outcome.remedy.empty()) << row.status;
  }
  // The text of a status without a name is that of the one before it.
  report.onLogLine("Read: Operation Error Good:Command is accepted correctly\r\n");
  EXPECT_EQ(report.outcome(1).code, ExitCode::kDeviceFailed);
  EXPECT_EQ(report.outcome(1).deviceSaid, "READ: a status without a name");
}

TEST_F(QzJobReportTest, AFaultAndAFailedExchangeAreToldApart) {
  report.onNotification(NOTIFY_SCAN_FAILED);
  report.onNotification(NOTIFY_CONN_FAILURE);
  EXPECT_EQ(report.outcome(1).what, "the device reports a fault");
  EXPECT_EQ(report.outcome(1).deviceSaid, "check condition");
  QzJobReport other;
  other.onNotification(NOTIFY_CONN_FAILURE);
  EXPECT_EQ(other.outcome(1).what, "the device refuses the job, or the link to it failed");
  EXPECT_FALSE(other.outcome(1).remedy.empty());
}

TEST_F(QzJobReportTest, AJamThatWasCuredIsNoFailure) {
  report.onNotification(NOTIFY_SCAN_FAILED);
  pageComes();
  report.onNotification(NOTIFY_JOB_COMPLETE);
  EXPECT_EQ(report.outcome(0).code, ExitCode::kDone);
}

TEST_F(QzJobReportTest, ANameThatIsTooLongIsNamed) {
  report.onLogLine(
      "RESERVE UNIT is not sent: the name for csUserName has 40 bytes in UTF-8, and only 33 fit");
  report.onNotification(NOTIFY_CONN_FAILURE);
  EXPECT_EQ(report.outcome(1).code, ExitCode::kNotSupported);
  EXPECT_NE(report.outcome(1).what.find("csUserName has 40 bytes"), std::string::npos);
}

TEST_F(QzJobReportTest, APageThatIsNotWholeSpoilsAJobThatEndsWell) {
  const struct {
    const char* line;
    ExitCode code;
  } rows[] = {
      {"Read: Device Status Error Good:Command is accepted correctly\r\n", ExitCode::kDeviceFailed},
      {" Error readImageData: malloc failed \r\n", ExitCode::kFailed},
      {" Error: readImageData: realloc failed \r\n", ExitCode::kFailed},
      {"Error: Writing image data to temp path is failed bad\x1B allocation", ExitCode::kOutput},
  };
  for (const auto& row : rows) {
    QzJobReport one;
    one.onNotification(NOTIFY_IMAGE_READY);
    one.onPageStored();
    one.onLogLine(row.line);
    one.onNotification(NOTIFY_SCAN_FAILED);
    one.onNotification(NOTIFY_JOB_COMPLETE);
    EXPECT_EQ(one.outcome(0).code, row.code) << row.line;
    EXPECT_EQ(one.outcome(0).what.find('\x1B'), std::string::npos);
  }
}

TEST_F(QzJobReportTest, AFileThatIsNoPictureIsTheDevicesFaultWhereThereWasRoom) {
  QzJobReport full;
  full.onFileUnusable("page 1 could not be stored", false);
  EXPECT_EQ(full.outcome(0).code, ExitCode::kOutput);
  report.onFileUnusable("page 1 could not be stored", true);
  EXPECT_EQ(report.outcome(0).code, ExitCode::kDeviceFailed);
}

TEST_F(QzJobReportTest, AJobWithoutAPageIsAFailure) {
  report.onNotification(NOTIFY_JOB_COMPLETE);
  EXPECT_EQ(report.outcome(0).code, ExitCode::kDeviceFailed);
  QzJobReport other;
  other.onNotification(NOTIFY_IMAGE_READY);
  other.onPageStored();
  EXPECT_EQ(other.outcome(1).what, "the job failed after 1 page");
}

TEST_F(QzJobReportTest, AnExceptionIsOurFailure) {
  report.onScanThrew("invalid stoi\n argument");
  EXPECT_EQ(report.outcome(1).code, ExitCode::kFailed);
  EXPECT_EQ(report.outcome(1).what, "invalid stoi  argument");
}

}  // namespace
}  // namespace tvrscn::cli
