// Ends of jobs, told by the log lines and notifications that the library writes and sends.
#include "lowend_job_report.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

namespace tvrscn::cli {
namespace {

class LowEndJobReportTest : public testing::Test {
 protected:
  // One report of a failure as the library makes it without dialogs.
  void fails(const std::string& line) {
    report.onLogLine(line);
    report.onNotification(NOTIFY_CONN_FAILURE);
    report.onLogLine("Sending FAILURE Notification to DS ...\n");
  }
  void pageComes() {
    report.onNotification(NOTIFY_TRANSFER_STARTED);
    report.onNotification(NOTIFY_IMAGE_READY);
    report.onPageStored();
  }
  void refuses(const std::string& document) {
    test::writeFile(folder.path() / "ScanRequestError.txt", document);
    fails(
        "Error from SendStartScanCommand....The return status is not good.... check for status "
        "dump text file");
    fails("Something wrong in scan operation");
  }

  test::TemporaryFolder folder;
  LowEndJobReport report{folder.path()};
};

TEST_F(LowEndJobReportTest, AJobIsOverWithItsNotification) {
  report.onScanReturned(0);
  EXPECT_FALSE(report.isOver());
  pageComes();
  EXPECT_FALSE(report.isOver());
  report.onNotification(NOTIFY_JOB_COMPLETE);
  EXPECT_TRUE(report.isOver());
  EXPECT_EQ(report.outcome(0).code, ExitCode::kDone);
}

TEST_F(LowEndJobReportTest, AJobMayEndBeforeScanReturns) {
  pageComes();
  report.onNotification(NOTIFY_JOB_COMPLETE);
  report.onScanReturned(0);
  EXPECT_TRUE(report.isOver());
  EXPECT_EQ(report.outcome(0).code, ExitCode::kDone);
}

TEST_F(LowEndJobReportTest, EachFailureNotificationIsAnEnd) {
  for (const NotificationType type :
       {NOTIFY_SCANNER_BUSY, NOTIFY_SCAN_FAILED, NOTIFY_CONN_FAILURE, NOTIFY_JOB_ABORTED}) {
    LowEndJobReport one(folder.path());
    one.onScanReturned(0);
    one.onNotification(NOTIFY_ERROR_DISPLAYED);
    EXPECT_FALSE(one.isOver());
    EXPECT_EQ(one.waitingFor(), "an answer to the message box");
    one.onNotification(type);
    EXPECT_TRUE(one.isOver()) << type;
    EXPECT_NE(one.outcome(0).code, ExitCode::kDone) << type;
  }
}

TEST_F(LowEndJobReportTest, EachLogLineOfAFailureIsACause) {
  const struct {
    const char* line;
    ExitCode code;
    const char* words;
  } rows[] = {
      {"LowEnd USB ADF Jam detected, please clean it up", ExitCode::kPaperJam, "jam"},
      {"LowEnd USB either Flatbed or ADF cover is open, please close and try scan next.",
       ExitCode::kCoverOpen, "cover"},
      {"LowEnd USB Scanner is busy", ExitCode::kBusy, "busy"},
      {"Something wrong in LowEnd USB Status command response, please check on it.",
       ExitCode::kDeviceFailed, "status"},
      {"Error from RetrieveScannedRecordData....The return status is not good.... check for status "
       "dump text file",
       ExitCode::kCancelled, "cancelled"},
  };
  for (const auto& row : rows) {
    fails(row.line);
    const Outcome outcome = report.outcome(1);
    EXPECT_EQ(outcome.code, row.code) << row.line;
    EXPECT_NE(outcome.what.find(row.words), std::string::npos) << outcome.what;
    EXPECT_FALSE(outcome.remedy.empty()) << row.line;
    EXPECT_FALSE(outcome.deviceSaid.empty()) << row.line;
  }
}

TEST_F(LowEndJobReportTest, NotReadyIsAFailureOnlyTheSecondTime) {
  report.onLogLine("LowEnd USB Scanner is not ready");
  EXPECT_EQ(report.waitingFor(), "the scanner to become ready");
  report.onScanReturned(0);
  pageComes();
  report.onNotification(NOTIFY_JOB_COMPLETE);
  EXPECT_EQ(report.outcome(0).code, ExitCode::kDone);

  LowEndJobReport other(folder.path());
  other.onLogLine("LowEnd USB Scanner is not ready");
  other.onLogLine("LowEnd USB Scanner is not ready");
  other.onNotification(NOTIFY_CONN_FAILURE);
  EXPECT_EQ(other.outcome(1).code, ExitCode::kBusy);
}

TEST_F(LowEndJobReportTest, ARefusalIsToldInTheDevicesOwnWords) {
  refuses(R"({"error":{"message":"media not\u001b loaded"},"result":"no","status":400})");
  const Outcome outcome = report.outcome(1);
  EXPECT_EQ(outcome.code, ExitCode::kRefused);
  EXPECT_EQ(outcome.deviceSaid, "media not  loaded");
  EXPECT_TRUE(outcome.notes.empty());
}

TEST_F(LowEndJobReportTest, ARefusalMayHaveFewWordsOrNone) {
  const struct {
    const char* document;
    const char* said;
  } rows[] = {
      {R"({"result":"later","status":204})", "later"},
      {R"({"error":{"message":5},"result":"odd"})", "odd"},
      {R"({"error":7,"status":400})", "a refusal without a word"},
      {R"([1])", "a refusal without a word"},
      {"{", "a refusal without a word"},
      {"", "a refusal without a word"},
  };
  for (const auto& row : rows) {
    refuses(row.document);
    EXPECT_EQ(report.outcome(1).code, ExitCode::kRefused) << row.document;
    EXPECT_EQ(report.outcome(1).deviceSaid, row.said) << row.document;
  }
}

TEST_F(LowEndJobReportTest, AnExceptionOfTheWorkerIsADamagedStream) {
  report.onScanReturned(0);
  pageComes();
  fails("vector::_M_default_append");
  const Outcome outcome = report.outcome(0);
  EXPECT_TRUE(report.isOver());
  EXPECT_EQ(outcome.code, ExitCode::kDeviceFailed);
  EXPECT_NE(outcome.deviceSaid.find("vector::_M_default_append"), std::string::npos);
}

TEST_F(LowEndJobReportTest, AFileThatIsMissingIsAFailureOfTheOutput) {
  report.onScanReturned(0);
  fails(
      "Exception thrown from RemoveBlockToBytesWithNewline due to Input Image file to process is "
      "not available");
  EXPECT_EQ(report.outcome(0).code, ExitCode::kOutput);
}

TEST_F(LowEndJobReportTest, AWorkerThatDoesNotStartIsOurFailure) {
  report.onNotification(NOTIFY_JOB_ABORTED);
  report.onScanReturned(0);
  EXPECT_TRUE(report.isOver());
  EXPECT_EQ(report.outcome(0).code, ExitCode::kFailed);
  EXPECT_FALSE(report.outcome(0).remedy.empty());
}

TEST_F(LowEndJobReportTest, WhatIsNoDocumentIsAnAnswerThatMakesNoSense) {
  report.onScanThrew(
      "[json.exception.parse_error.101] parse error at line 1, column 1: attempting to parse an "
      "empty input; check that your input string or stream contains the expected JSON");
  EXPECT_EQ(report.outcome(1).code, ExitCode::kDeviceFailed);
  EXPECT_EQ(report.outcome(1).what, "the device does not answer");
  report.onScanThrew(
      "[json.exception.parse_error.101] parse error at line 1, column 1: syntax error while "
      "parsing value - unexpected end of input; expected '[', '{', or a literal");
  EXPECT_EQ(report.outcome(1).deviceSaid, "nothing");
  report.onScanThrew(
      "[json.exception.parse_error.101] parse error at line 1, column 9: syntax error while "
      "parsing object - unexpected end of input; expected '}'");
  EXPECT_EQ(report.outcome(1).what, "the device's answer cannot be understood");

  report.onScanThrew("[json.exception.type_error.302] type must be boolean, but is \x1Bnumber");
  EXPECT_EQ(report.outcome(1).code, ExitCode::kDeviceFailed);
  EXPECT_EQ(report.outcome(1).what, "the device's answer cannot be understood");
  EXPECT_EQ(report.outcome(1).deviceSaid, "type must be boolean, but is  number");
}

TEST_F(LowEndJobReportTest, AnyOtherExceptionIsOurFailure) {
  report.onScanThrew("std::bad_alloc");
  EXPECT_EQ(report.outcome(1).code, ExitCode::kFailed);
  EXPECT_EQ(report.outcome(1).what, "std::bad_alloc");
}

TEST_F(LowEndJobReportTest, ALostPageIsAFailureOfTheOutput) {
  report.onScanReturned(0);
  report.onNotification(NOTIFY_IMAGE_READY);
  report.onPageLost("page 1 could not be stored", "Make room.");
  report.onNotification(NOTIFY_JOB_COMPLETE);
  EXPECT_EQ(report.outcome(0).code, ExitCode::kOutput);
}

TEST_F(LowEndJobReportTest, APageThatIsNoPictureIsTheDevicesFaultWhereThereWasRoom) {
  LowEndJobReport full(folder.path());
  full.onFileUnusable("page 1 could not be stored", false);
  EXPECT_EQ(full.outcome(0).code, ExitCode::kOutput);
  report.onFileUnusable("page 1 could not be stored", true);
  EXPECT_EQ(report.outcome(0).code, ExitCode::kDeviceFailed);
  EXPECT_NE(report.outcome(0).remedy.find("scan that page again"), std::string::npos);
}

TEST_F(LowEndJobReportTest, SuccessWithoutAPageIsNone) {
  report.onScanReturned(0);
  report.onNotification(NOTIFY_JOB_COMPLETE);
  EXPECT_EQ(report.outcome(0).code, ExitCode::kDeviceFailed);
}

TEST_F(LowEndJobReportTest, FailureWithoutACauseIsAFailure) {
  report.onScanReturned(0);
  pageComes();
  report.onNotification(NOTIFY_CONN_FAILURE);
  EXPECT_EQ(report.outcome(0).code, ExitCode::kDeviceFailed);
}

TEST_F(LowEndJobReportTest, KnowsWhatItWaitsFor) {
  EXPECT_NE(report.waitingFor().find("the device's answer"), std::string::npos);
  EXPECT_EQ(report.activity(), "");
  report.onScanReturned(0);
  EXPECT_NE(report.waitingFor().find("with all its pages"), std::string::npos);
  EXPECT_EQ(report.activity(), "the device scans");
  pageComes();
  EXPECT_NE(report.waitingFor().find("the next page"), std::string::npos);
}

}  // namespace
}  // namespace tvrscn::cli
