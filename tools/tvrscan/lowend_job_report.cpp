#include "lowend_job_report.h"

#include <utility>

#include <nlohmann/json.hpp>

#include "console.h"
#include "file_content.h"
#include "words.h"

namespace tvrscn::cli {
namespace {

namespace fs = std::filesystem;

struct LineCause {
  std::string_view prefix;  // of the log line
  ExitCode code;
  const char* what;
  const char* remedy;
  const char* deviceSaid;
};

constexpr LineCause kLineCauses[] = {
    {"LowEnd USB ADF Jam detected", ExitCode::kPaperJam, "a document is jammed in the scanner",
     kJamRemedy, "status: a jam in the feeder"},
    {"LowEnd USB either Flatbed or ADF cover is open", ExitCode::kCoverOpen,
     "a cover of the scanner is open", kCoverRemedy,
     "status: the cover of the flatbed or of the feeder is open"},
    {"LowEnd USB Scanner is busy", ExitCode::kBusy, "the scanner is busy with another job",
     kTryLater, "status: busy"},
    {"Something wrong in LowEnd USB Status command response", ExitCode::kDeviceFailed,
     "the device's status cannot be understood",
     "Switch the device off and on again; check that --family is right.",
     "a status that tells nothing of the scanner or of the feeder"},
    {"Error from RetrieveScannedRecordData", ExitCode::kCancelled,
     "the job was cancelled at the device", kScanAgain, "the job is cancelled"},
};

constexpr std::string_view kNotReadyLine = "LowEnd USB Scanner is not ready";
constexpr std::string_view kRefusedLine = "Error from SendStartScanCommand";
// These say nothing that another line has not said already.
constexpr std::string_view kSecondReportLine = "Something wrong in scan operation";
constexpr std::string_view kSendingLine = "Sending FAILURE Notification";
constexpr std::string_view kFileMissing = "Exception thrown from RemoveBlockToBytesWithNewline";

constexpr std::string_view kJsonException = "[json.exception.";
// Both stand in the text for a document of nothing; releases of the parser differ in the rest.
constexpr std::string_view kAtTheStart = "line 1, column 1:";
constexpr std::string_view kNothingThere[] = {"empty input", "unexpected end of input"};

constexpr const char* kRefusalFile = "ScanRequestError.txt";

bool isOfNothing(std::string_view exception) {
  const auto says = [&](std::string_view words) {
    return exception.find(words) != std::string_view::npos;
  };
  return says(kAtTheStart) && (says(kNothingThere[0]) || says(kNothingThere[1]));
}

// The device's words in its refusal; empty when it gave none.
std::string wordsOfRefusal(const fs::path& file) {
  const nlohmann::json document = nlohmann::json::parse(fileContent(file), nullptr, false);
  const nlohmann::json::json_pointer places[] = {nlohmann::json::json_pointer("/error/message"),
                                                 nlohmann::json::json_pointer("/result")};
  for (const auto& place : places) {
    if (document.contains(place) && document.at(place).is_string())
      return printableText(document.at(place).get<std::string>());
  }
  return {};
}

}  // namespace

LowEndJobReport::LowEndJobReport(fs::path deliveryFolder) : folder_(std::move(deliveryFolder)) {}

bool LowEndJobReport::onLogLine(std::string_view line) {
  line = trimmed(line);
  for (const LineCause& row : kLineCauses) {
    if (!line.starts_with(row.prefix)) continue;
    fail(row.code, row.what, row.remedy, row.deviceSaid);
    return true;
  }
  if (line == kNotReadyLine) {
    onNotReady();
  } else if (line.starts_with(kRefusedLine)) {
    onRefusal();
  } else if (!line.starts_with(kSecondReportLine) && !line.starts_with(kSendingLine)) {
    exception_ = printableText(line);
  }
  return true;
}

// Written at the start of the wait and at its end.
void LowEndJobReport::onNotReady() {
  if (step_ != Step::kNotReady) {
    step_ = Step::kNotReady;
    return;
  }
  fail(ExitCode::kBusy, "the scanner did not become ready within 11 seconds", kTryLater,
       "status: neither ready nor busy");
}

void LowEndJobReport::onRefusal() {
  const std::string words = wordsOfRefusal(folder_ / kRefusalFile);
  fail(ExitCode::kRefused, "the device refuses the job",
       "Try other settings; if that doesn't help, switch the device off and on again.",
       words.empty() ? "a refusal without a word" : words);
}

void LowEndJobReport::onNotification(NotificationType type) {
  switch (type) {
    case NOTIFY_TRANSFER_STARTED:
    case NOTIFY_IMAGE_READY:
      step_ = Step::kStoring;
      break;
    case NOTIFY_ERROR_DISPLAYED:
      step_ = Step::kDialog;
      break;
    case NOTIFY_JOB_COMPLETE:
      complete_ = true;
      over_ = true;
      break;
    default:
      if (!cause_) onFailureWithoutCause(type);
      over_ = true;
  }
}

void LowEndJobReport::onFailureWithoutCause(NotificationType type) {
  if (exception_.starts_with(kFileMissing)) {
    fail(ExitCode::kOutput, "a page could not be written",
         "Make room on the disk of the --out folder, and check that it can be written.", {});
  } else if (!exception_.empty()) {
    fail(
        ExitCode::kDeviceFailed,
        "the data of the pages cannot be used, or there is no memory for them",
        "Scan again; if that doesn't help, scan fewer pages or switch the device off and on again.",
        "a stream that ended in an error here: " + exception_);
  } else if (type == NOTIFY_JOB_ABORTED) {
    fail(ExitCode::kFailed, "the system has no thread left to receive the pages",
         "Close other programs, then scan again.", {});
  }
}

// The library stores the bytes as they came, so a page that is no picture came so.
void LowEndJobReport::onFileUnusable(const std::string& problem, bool hadRoom) {
  loseAsDelivered(problem, hadRoom);
}

void LowEndJobReport::onScanReturned(long result) {
  const bool asking = step_ == Step::kAsking || step_ == Step::kNotReady;
  if (result == 0 && asking) step_ = Step::kScanning;
}

// What is no JSON document, or not of the right shape, leaves the library as an exception.
void LowEndJobReport::onScanThrew(const std::string& what) {
  if (!what.starts_with(kJsonException)) {
    JobReport::onScanThrew(what);
    return;
  }
  constexpr const char* kRemedy =
      "Check that the device is switched on, that its cable sits firmly, that no other program "
      "holds it and that --family is right; then scan again.";
  if (isOfNothing(what)) {
    fail(ExitCode::kDeviceFailed, "the device does not answer", kRemedy, "nothing");
  } else {
    fail(ExitCode::kDeviceFailed, "the device's answer cannot be understood", kRemedy,
         printableText(trimmed(std::string_view(what).substr(what.find(']') + 1))));
  }
}

void LowEndJobReport::fail(ExitCode code, const std::string& what, const std::string& remedy,
                           const std::string& deviceSaid) {
  cause_ = Outcome{code, what, remedy, deviceSaid, {}};
}

std::string LowEndJobReport::waitingFor() const {
  switch (step_) {
    case Step::kAsking:
      return "the device's answer (its abilities, its status or the scan request)";
    case Step::kNotReady:
      return "the scanner to become ready";
    case Step::kScanning:
      return "the end of the job; a device of this family is heard of only then, with all its "
             "pages";
    case Step::kStoring:
      return "the next page to be stored, or the end of the job";
    case Step::kDialog:
      return "an answer to the message box";
  }
  return {};
}

std::string LowEndJobReport::activity() const {
  if (step_ == Step::kScanning) return "the device scans";
  return step_ == Step::kNotReady ? "the scanner is not ready yet" : "";
}

Outcome LowEndJobReport::outcome(long scanResult) const {
  if (const auto found = whatWentWrong()) return *found;
  if (scanResult == 0 && complete_ && pagesStored() > 0) return {ExitCode::kDone, "", "", "", {}};
  const std::string what = pagesStored() > 0 ? "the job failed after " + pageText(pagesStored())
                                             : "the device ended the job without a page";
  return {ExitCode::kDeviceFailed, what, kLinkRemedy, "", {}};
}

}  // namespace tvrscn::cli
