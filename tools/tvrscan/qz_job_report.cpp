#include "qz_job_report.h"

#include "console.h"
#include "words.h"

namespace tvrscn::cli {
namespace {

struct StatusCause {
  std::string_view words;  // at the start of the status's text
  ExitCode code;
  const char* what;
  const char* remedy;
};

constexpr StatusCause kStatusCauses[] = {
    {"Busy:", ExitCode::kBusy, "the scanner is busy", kTryLater},
    {"Scanning:", ExitCode::kBusy, "the scanner is busy with another scan", kTryLater},
    {"Reservation Conflict:", ExitCode::kBusy, "another user has taken the scanner", kTryLater},
    {"Scan Auth Error:", ExitCode::kRefused, "the device does not know this user",
     "Ask whoever looks after the device for access to its scanner."},
    {"Scan Function Disabled:", ExitCode::kRefused, "scanning is switched off on this device",
     "Ask whoever looks after the device to switch it on."},
    {"Scan Prohibited Time:", ExitCode::kRefused, "the device does not scan at this time of day",
     "Scan at another time, or ask whoever looks after the device."},
    {"Scan imaging Error:", ExitCode::kDeviceFailed, "the device could not finish the page",
     "Scan that page again."},
};

constexpr std::string_view kReadStatusLine = "Read: Operation Error";
constexpr std::string_view kReadStateLine = "Read: Device Status Error";
constexpr std::string_view kWritingLine = "Error: Writing image data to temp path is failed";
constexpr std::string_view kNameLine = "RESERVE UNIT is not sent: ";
constexpr std::string_view kMemoryLines[] = {"Error readImageData: malloc failed",
                                             "Error: readImageData: realloc failed"};

constexpr const char* kNoWord =
    "Look at the device's display: a jam, an open cover, an empty feeder or a job that was "
    "cancelled there are told by it. With --dialogs a message box says which it is.";

Outcome statusOutcome(std::string_view text) {
  const std::string said = "READ: " + printableText(text);
  for (const StatusCause& row : kStatusCauses) {
    if (text.starts_with(row.words)) return {row.code, row.what, row.remedy, said, {}};
  }
  return {ExitCode::kDeviceFailed,
          "the device gives an answer that makes no sense",
          kLinkRemedy,
          "READ: a status without a name",
          {}};
}

}  // namespace

std::optional<Outcome> qzCauseOf(std::string_view line) {
  line = trimmed(line);
  if (line.starts_with(kReadStatusLine))
    return statusOutcome(trimmed(line.substr(kReadStatusLine.size())));
  if (line.starts_with(kNameLine)) {
    return Outcome{ExitCode::kNotSupported,
                   "the device cannot take the name of this computer or user: " +
                       printableText(line.substr(kNameLine.size())),
                   "Choose a shorter name; one beyond ASCII takes more bytes than letters.",
                   "",
                   {}};
  }
  return std::nullopt;
}

bool QzJobReport::onLogLine(std::string_view line) {
  line = trimmed(line);
  if (const auto cause = qzCauseOf(line)) {
    cause_ = cause;
  } else if (line.starts_with(kReadStateLine)) {
    loseTo({ExitCode::kDeviceFailed,
            "a page is not whole: the device stopped sending it",
            "Scan that page again, and look at the one behind it.",
            "READ: a state in which there are no image data",
            {}});
  } else if (line.starts_with(kWritingLine)) {
    onPageLost(
        "a page could not be written: " + printableText(trimmed(line.substr(kWritingLine.size()))),
        kRoomRemedy);
  } else if (line.starts_with(kMemoryLines[0]) || line.starts_with(kMemoryLines[1])) {
    loseTo({ExitCode::kFailed,
            "a page is not whole: there was no memory for it",
            "Close other programs, then scan that page again.",
            "",
            {}});
  }
  return true;
}

void QzJobReport::onNotification(NotificationType type) {
  heard_ = true;
  waitsForTurn_ = false;
  if (type == NOTIFY_SCAN_FAILED) onFault();
  if (type == NOTIFY_CONN_FAILURE) onFailedExchange();
  if (type == NOTIFY_JOB_COMPLETE) {
    complete_ = true;
    cause_.reset();  // a jam that was cured, or a page that was lost and is told as such
  }
}

void QzJobReport::onFault() {
  cause_ = Outcome{
      ExitCode::kDeviceFailed, "the device reports a fault", kNoWord, "check condition", {}};
}

// Behind a fault, or behind a status of a READ, this says nothing new.
void QzJobReport::onFailedExchange() {
  if (cause_) return;
  cause_ = Outcome{ExitCode::kDeviceFailed,
                   "the device refuses the job, or the link to it failed",
                   "Wait until the scanner is ready, check that its cable sits firmly and that "
                   "--family is right, then scan again. With --dialogs a message box says more.",
                   "",
                   {}};
}

// A file that is no picture came so, as the library stores the bytes of a page as they are.
void QzJobReport::onFileUnusable(const std::string& problem, bool hadRoom) {
  loseAsDelivered(problem, hadRoom);
}

void QzJobReport::onScanThrew(const std::string& what) {
  JobReport::onScanThrew(printableText(what));
}

std::string QzJobReport::waitingFor() const {
  if (waitsForTurn_) return "its turn, as another program scans; then the device";
  return heard_ ? "the next page or the end of the job" : "the first page";
}

std::string QzJobReport::activity() const {
  return waitsForTurn_ ? "waits for its turn" : "";
}

Outcome QzJobReport::outcome(long scanResult) const {
  if (const auto found = whatWentWrong()) return *found;
  // A job that never had its turn ends well, and without a word.
  if (scanResult == 0 && !complete_) {
    return {ExitCode::kBusy,
            "the scanner is in use by another program, which did not end within 10 seconds",
            "Wait until that program has ended its scan, then scan again.",
            "",
            {}};
  }
  if (complete_ && pagesStored() > 0) return {ExitCode::kDone, "", "", "", {}};
  const std::string what = pagesStored() > 0 ? "the job failed after " + pageText(pagesStored())
                                             : "the device ended the job without a page";
  return {ExitCode::kDeviceFailed, what, kLinkRemedy, "", {}};
}

}  // namespace tvrscn::cli
