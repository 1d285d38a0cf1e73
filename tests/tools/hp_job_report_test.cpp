// Ends of jobs, told by the log lines that the library writes.
#include "hp_job_report.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tvrscn::cli {
namespace {

using Lines = std::vector<std::string>;

const Lines kStart = {"COMMAND: INQUIRY", "COMMAND: RESERVE UNIT"};
const Lines kWindow = {"COMMAND: SET_WINDOW_PARAM Status: Good",
                       "Scanner status message : ", "Height Received: 877", "Width Received: 620 "};
const Lines kBlock = {"COMMAND: READ Status: Good",   "Received Block Size: 1000",
                      "Received Vertical  Size: 128", "Received Horizontal Size: 620",
                      "Received JPEG Header block",   "COMMAND: READ IMAGE"};
const Lines kEndBlock = {"COMMAND: READ Status: Good",   "Received Block Size: 500",
                         "Received Vertical  Size: 100", "Received Horizontal Size: 620",
                         "Received end block",           "COMMAND: READ IMAGE"};
const Lines kPosition = {"COMMAND: OBJECT POSITION Status: Good"};
const Lines kNoDocument = {
    "COMMAND: OBJECT POSITION Status: Check condition",
    "Scanner status message : ", "Scanner status message %s: check condition and no document"};
const Lines kPageLines = {"Total Block Size : 1500", "Total Height : 228", "Total Width : 620"};
const Lines kClosing = {"COMMAND: ABORT Status: Good", "COMMAND: RELEASE_UNIT Status: Good"};
const Lines kUnusable = {"No Proper Scanned Page Information and Skipping"};

class Job {
 public:
  Job& lines(const Lines& lines) {
    for (const std::string& line : lines)
      report.onLogLine(line);
    return *this;
  }
  Job& page(int number) {
    lines(kPosition).lines(kBlock).lines(kEndBlock);
    return stored(number);
  }
  Job& stored(int number) {
    lines({"Scanned Page : " + std::to_string(number)}).lines(kPageLines);
    report.onPageStored();
    return *this;
  }
  Job& end(int pages) {
    return lines({"Total Page Scanned : " + std::to_string(pages)}).lines(kClosing);
  }
  Outcome failed() { return report.outcome(1); }
  Outcome succeeded() { return report.outcome(0); }

  HpJobReport report;
};

Job started() {
  Job job;
  job.lines(kStart).lines(kWindow);
  return job;
}

TEST(HpJobReport, FlatbedPageIsDone) {
  EXPECT_EQ(started().page(1).end(1).succeeded().code, ExitCode::kDone);
}

TEST(HpJobReport, FeederThatRunsEmptyIsDone) {
  const Outcome outcome = started().page(1).page(2).lines(kNoDocument).end(2).succeeded();
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_TRUE(outcome.notes.empty());
}

TEST(HpJobReport, FeederMayBeBusyInBetween) {
  Job job = started();
  job.lines({"COMMAND: OBJECT POSITION Status: Busy",
             "Scanner status : Busy !!! wait and continuing...."});
  EXPECT_EQ(job.page(1).lines(kNoDocument).end(1).succeeded().code, ExitCode::kDone);
}

TEST(HpJobReport, EmptyFeederIsNoPaper) {
  const Outcome outcome = started().lines(kNoDocument).end(0).failed();
  EXPECT_EQ(outcome.code, ExitCode::kNoPaper);
  EXPECT_EQ(outcome.deviceSaid, "OBJECT POSITION: Check condition, no document");
}

struct MessageCase {
  const char* message;
  ExitCode code;
};
constexpr MessageCase kMessageCases[] = {
    {"Command Error", ExitCode::kRefused},
    {"Saving parameter is not supported", ExitCode::kRefused},
    {"Power on / Reset set", ExitCode::kRefused},
    {"Document JAM detected", ExitCode::kPaperJam},
    {"Cover is being opened", ExitCode::kCoverOpen},
    {"Scanner is in warmup", ExitCode::kRefused},
    {"Scanner locking error", ExitCode::kRefused},
    {"Requested Invalid area to scan", ExitCode::kRefused},
    {"Scanner Resource Busy", ExitCode::kBusy},
    {"Invalid Key is being sent", ExitCode::kRefused},
    {"Banknote", ExitCode::kRefused},
    {"Insufficient Quota (Job Accounting)", ExitCode::kRefused},
    {"", ExitCode::kDeviceFailed},
};

TEST(HpJobReport, EachMessageBeforeAPageIsACause) {
  for (const MessageCase& row : kMessageCases) {
    Job job = started();
    job.page(1).lines({"COMMAND: OBJECT POSITION Status: Check condition",
                       std::string("Scanner status message : ") + row.message});
    const Outcome outcome = job.end(1).failed();
    EXPECT_EQ(outcome.code, row.code) << row.message;
    EXPECT_FALSE(outcome.what.empty()) << row.message;
    EXPECT_FALSE(outcome.remedy.empty()) << row.message;
    EXPECT_EQ(outcome.deviceSaid.find("OBJECT POSITION: Check condition"), 0U) << row.message;
    EXPECT_NE(outcome.deviceSaid.find(row.message), std::string::npos) << row.message;
  }
}

TEST(HpJobReport, EachMessageToTheReservationIsACause) {
  for (const MessageCase& row : kMessageCases) {
    Job job;
    job.lines(kStart).lines({std::string("Scanner status message : ") + row.message});
    const Outcome outcome = job.failed();
    EXPECT_EQ(outcome.code, row.code) << row.message;
    EXPECT_EQ(outcome.deviceSaid.find("RESERVE UNIT: Check condition"), 0U) << row.message;
  }
}

TEST(HpJobReport, NoErrorToTheReservationGoesOn) {
  Job job;
  job.lines(kStart).lines({"Scanner status message : No Error"}).lines(kWindow);
  EXPECT_EQ(job.page(1).end(1).succeeded().code, ExitCode::kDone);
}

TEST(HpJobReport, AMessageInAGoodAnswerIsNoCause) {
  Job job;
  job.lines(kStart).lines(
      {"COMMAND: SET_WINDOW_PARAM Status: Good", "Scanner status message : Cover is being opened"});
  EXPECT_EQ(job.page(1).end(1).succeeded().code, ExitCode::kDone);
}

struct StatusCase {
  const char* status;
  long result;  // of Scan
  ExitCode code;
};

// The library counts busy and unknown answers to the settings as success.
TEST(HpJobReport, EveryBadStatusOfTheWindowIsACause) {
  const StatusCase cases[] = {
      {"Busy", 0, ExitCode::kBusy},           {"Scanner in use", 1, ExitCode::kBusy},
      {"Cancelled", 1, ExitCode::kCancelled}, {"Check condition", 0, ExitCode::kRefused},
      {" ", 0, ExitCode::kDeviceFailed},
  };
  for (const StatusCase& row : cases) {
    Job job;
    job.lines(kStart)
        .lines({std::string("COMMAND: SET_WINDOW_PARAM Status: ") + row.status})
        .lines(kClosing);
    EXPECT_EQ(job.report.outcome(row.result).code, row.code) << row.status;
  }
}

TEST(HpJobReport, AMessageOfTheWindowIsTheCause) {
  Job job;
  job.lines(kStart).lines({"COMMAND: SET_WINDOW_PARAM Status: Check condition",
                           "Scanner status message : Requested Invalid area to scan"});
  const Outcome outcome = job.lines(kClosing).failed();
  EXPECT_EQ(outcome.code, ExitCode::kRefused);
  EXPECT_EQ(outcome.deviceSaid, "SET WINDOW: Check condition, Requested Invalid area to scan");
}

// A job that the device cancels after a page counts as a success in the library.
TEST(HpJobReport, EveryEndAtTheObjectPositionIsACause) {
  const StatusCase cases[] = {
      {"Cancelled", 0, ExitCode::kCancelled},
      {"Scanner in use", 0, ExitCode::kBusy},
      {" ", 0, ExitCode::kDeviceFailed},
  };
  for (const StatusCase& row : cases) {
    Job job = started();
    job.page(1).lines({std::string("COMMAND: OBJECT POSITION Status: ") + row.status,
                       "Received CANCEL Signal and Skipping"});
    EXPECT_EQ(job.end(1).report.outcome(row.result).code, row.code) << row.status;
  }
}

TEST(HpJobReport, ABusyFlatbedIsBusy) {
  Job job = started();
  job.lines({"COMMAND: OBJECT POSITION Status: Busy",
             "Scanner status : Busy !!! wait and continuing...."});
  const Outcome outcome = job.end(0).failed();
  EXPECT_EQ(outcome.code, ExitCode::kBusy);
  EXPECT_EQ(outcome.deviceSaid, "OBJECT POSITION: Busy");
}

TEST(HpJobReport, AScannerInUseIsBusy) {
  Job inquiry;
  inquiry.lines({"COMMAND: INQUIRY", "Scanner is in use. Please try again later"});
  EXPECT_EQ(inquiry.failed().code, ExitCode::kBusy);
  EXPECT_EQ(inquiry.failed().deviceSaid, "INQUIRY: Scanner in use");
  Job reserve;
  reserve.lines(kStart).lines(
      {"Scanner is not allocated memory new scan operation. Please try again later"});
  EXPECT_EQ(reserve.failed().code, ExitCode::kBusy);
}

TEST(HpJobReport, TransferErrorsAreFailuresOfTheDevice) {
  for (const char* code : {"6", "31", "1167"}) {
    Job job;
    job.lines({"COMMAND: INQUIRY", std::string("Received Error code : ") + code});
    EXPECT_EQ(job.failed().code, ExitCode::kDeviceFailed) << code;
    EXPECT_NE(job.failed().deviceSaid.find(code), std::string::npos) << code;
  }
}

TEST(HpJobReport, AnUnexpectedStatusOfTheInquiryIsARefusal) {
  Job job;
  job.lines({"COMMAND: INQUIRY", "Sending FAILURE Notification to DS ...\n"});
  EXPECT_EQ(job.failed().code, ExitCode::kRefused);
}

// The reading of a dead device: every answer is zero, and so good.
TEST(HpJobReport, ADeadLinkIsAFailureAlthoughTheJobSucceeds) {
  Job job = started();
  job.page(1).lines(kPosition).lines({"COMMAND: READ Status: Good"}).lines(kUnusable).end(1);
  const Outcome outcome = job.succeeded();
  EXPECT_EQ(outcome.code, ExitCode::kDeviceFailed);
  EXPECT_EQ(outcome.deviceSaid, "READ: no usable answer");
}

TEST(HpJobReport, ReadingThatIsCancelledIsCancelled) {
  Job job = started();
  job.lines(kPosition).lines(kBlock).lines({"COMMAND: READ Status: Cancelled"}).lines(kUnusable);
  EXPECT_EQ(job.end(0).failed().code, ExitCode::kCancelled);
}

TEST(HpJobReport, APageWithoutItsEndIsNoSuccess) {
  Job job = started();
  job.page(1).lines(kPosition).lines(kBlock).lines({"COMMAND: READ Status:  "}).stored(1);
  const Outcome outcome = job.lines(kNoDocument).end(1).succeeded();
  EXPECT_EQ(outcome.code, ExitCode::kDeviceFailed);
  EXPECT_NE(outcome.what.find("page 2 is incomplete"), std::string::npos) << outcome.what;
}

TEST(HpJobReport, ALostPageIsAFailureOfTheOutput) {
  Job job = started();
  job.lines(kPosition).lines(kEndBlock).lines({"Scanned Page : 1"}).lines(kPageLines);
  job.report.onPageLost("page 1 could not be stored", "Make room.");
  EXPECT_EQ(job.end(1).succeeded().code, ExitCode::kOutput);
}

TEST(HpJobReport, AnExceptionWithinAPageIsAFailureOfTheOutput) {
  Job job = started();
  job.page(1).lines(kPosition).lines(kEndBlock).lines({"Scanned Page : 2"}).lines(kPageLines);
  job.lines({"Error: Writing image data to temp path is failed no memory"});
  const Outcome outcome = job.lines(kNoDocument).end(2).succeeded();
  EXPECT_EQ(outcome.code, ExitCode::kOutput);
  EXPECT_NE(outcome.what.find("no memory"), std::string::npos);
}

TEST(HpJobReport, ANoteTellsWhatWentWrongBesides) {
  Job job = started();
  job.lines(kPosition).lines(kEndBlock).lines({"Scanned Page : 1"});
  job.report.onPageLost("page 1 could not be stored", "Make room.");
  job.lines({"COMMAND: OBJECT POSITION Status: Check condition",
             "Scanner status message : Document JAM detected"});
  const Outcome outcome = job.end(1).failed();
  EXPECT_EQ(outcome.code, ExitCode::kPaperJam);
  EXPECT_EQ(outcome.notes, Lines{"page 1 could not be stored"});
}

TEST(HpJobReport, SuccessWithoutAPageIsNone) {
  Job job;
  EXPECT_EQ(job.succeeded().code, ExitCode::kDeviceFailed);
  EXPECT_EQ(started().end(0).succeeded().code, ExitCode::kDeviceFailed);
}

TEST(HpJobReport, FailureWithoutACauseIsAFailure) {
  EXPECT_NE(started().page(1).end(1).failed().code, ExitCode::kDone);
}

TEST(HpJobReport, WhatTheDeviceSaysAtTheEndIsNoCause) {
  Job job = started();
  job.page(1).lines({"Total Page Scanned : 1", "COMMAND: ABORT Status: Busy",
                     "COMMAND: RELEASE_UNIT Status: Cancelled"});
  EXPECT_EQ(job.succeeded().code, ExitCode::kDone);
}

TEST(HpJobReport, BusyAnswersAreNoProgress) {
  HpJobReport report;
  EXPECT_TRUE(report.onLogLine("COMMAND: OBJECT POSITION Status: Good"));
  EXPECT_FALSE(report.onLogLine("COMMAND: OBJECT POSITION Status: Busy"));
  EXPECT_FALSE(report.onLogLine("Scanner status : Busy !!! wait and continuing...."));
  EXPECT_NE(report.waitingFor().find("Busy"), std::string::npos);
  EXPECT_TRUE(report.onLogLine("COMMAND: READ Status: Good"));
  EXPECT_FALSE(report.onLogLine("COMMAND: READ Status: Busy"));
}

TEST(HpJobReport, KnowsWhatItWaitsFor) {
  HpJobReport report;
  EXPECT_EQ(report.waitingFor(), "the device to be opened");
  report.onLogLine("COMMAND: INQUIRY");
  EXPECT_EQ(report.waitingFor(), "the answer to INQUIRY");
  report.onLogLine("COMMAND: RESERVE UNIT");
  EXPECT_EQ(report.waitingFor(), "the answer to RESERVE UNIT or SET WINDOW");
  report.onLogLine("COMMAND: SET_WINDOW_PARAM Status: Good");
  EXPECT_EQ(report.waitingFor(), "the answer to OBJECT POSITION");
  report.onLogLine("COMMAND: OBJECT POSITION Status: Good");
  EXPECT_EQ(report.waitingFor(), "the first data of the page (READ)");
  report.onLogLine("COMMAND: READ Status: Good");
  EXPECT_EQ(report.waitingFor(), "image data (READ IMAGE)");
  report.onLogLine("Received Block Size: 70000");
  report.onLogLine("COMMAND: READ IMAGE");
  EXPECT_EQ(report.waitingFor(), "the next block of the page (READ)");
  EXPECT_EQ(report.bytesOfPage(), 70000U);
}

}  // namespace
}  // namespace tvrscn::cli
