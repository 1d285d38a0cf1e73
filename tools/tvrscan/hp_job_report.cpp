#include "hp_job_report.h"

#include <charconv>

#include "console.h"

namespace tvrscn::cli {
namespace {

// What the library writes at each step: in front of the exchange for the first two, behind it and
// with the status of the answer for the others.
constexpr std::string_view kInquiryLine = "COMMAND: INQUIRY";
constexpr std::string_view kReserveLine = "COMMAND: RESERVE UNIT";
constexpr std::string_view kWindowLine = "COMMAND: SET_WINDOW_PARAM Status:";
constexpr std::string_view kPositionLine = "COMMAND: OBJECT POSITION Status:";
constexpr std::string_view kReadLine = "COMMAND: READ Status:";
constexpr std::string_view kReadImageLine = "COMMAND: READ IMAGE";
constexpr std::string_view kAbortLine = "COMMAND: ABORT Status:";
constexpr std::string_view kReleaseLine = "COMMAND: RELEASE_UNIT Status:";
constexpr std::string_view kErrorCodeLine = "Received Error code :";
constexpr std::string_view kMessageLine = "Scanner status message :";
constexpr std::string_view kNoDocumentLine = "check condition and no document";
constexpr std::string_view kBlockSizeLine = "Received Block Size:";
constexpr std::string_view kEndBlockLine = "Received end block";
constexpr std::string_view kPageLine = "Scanned Page :";
constexpr std::string_view kUnusableLine = "No Proper Scanned Page Information";
constexpr std::string_view kPagesLine = "Total Page Scanned :";
constexpr std::string_view kWriteErrorLine = "Error: Writing image data to temp path is failed";
constexpr std::string_view kInUseLine = "Scanner is in use. Please try again later";
constexpr std::string_view kNoMemoryLine = "Scanner is not allocated memory";

constexpr std::string_view kGood = "Good";
constexpr std::string_view kCheckCondition = "Check condition";
constexpr std::string_view kCancelled = "Cancelled";
constexpr std::string_view kBusy = "Busy";
constexpr std::string_view kInUse = "Scanner in use";

// System error values in "Received Error code".
constexpr long kInvalidHandle = 6;
constexpr long kNotConnected = 1167;

struct Explanation {
  std::string_view message;  // the device's words
  ExitCode code;
  const char* what;
  const char* remedy;
};

constexpr Explanation kMessages[] = {
    {"Command Error", ExitCode::kRefused, "the device refuses a command of this job",
     "Try other settings; if that doesn't help, switch the device off and on again."},
    {"Saving parameter is not supported", ExitCode::kRefused,
     "the device does not support these settings", "Try other settings."},
    {"Power on / Reset set", ExitCode::kRefused, "the device has just been switched on or reset",
     kTryLater},
    {"Document JAM detected", ExitCode::kPaperJam, "a document is jammed in the scanner",
     kJamRemedy},
    {"Cover is being opened", ExitCode::kCoverOpen, "a cover of the scanner is open", kCoverRemedy},
    {"Scanner is in warmup", ExitCode::kRefused, "the scanner is still warming up", kTryLater},
    {"Scanner locking error", ExitCode::kRefused, "the scanner's carriage is locked",
     "Release the transport lock of the scanner and switch it off and on again."},
    {"Requested Invalid area to scan", ExitCode::kRefused,
     "the device cannot scan a page of this size", "Choose a smaller --size."},
    {"Scanner Resource Busy", ExitCode::kBusy, "the scanner is busy with another job", kTryLater},
    {"Invalid Key is being sent", ExitCode::kRefused, "the device does not accept the user's key",
     "Ask whoever looks after the device for access to its scanner."},
    {"Banknote", ExitCode::kRefused, "the device takes the document for a banknote",
     "Banknotes cannot be scanned; take the document out."},
    {"Insufficient Quota (Job Accounting)", ExitCode::kRefused,
     "the user's quota on this device is used up",
     "Ask whoever looks after the device for more quota."},
};

const Explanation* explain(std::string_view message) {
  for (const Explanation& row : kMessages) {
    if (row.message == message) return &row;
  }
  return nullptr;
}

// What stands behind the prefix, without blanks around it.
std::optional<std::string_view> behind(std::string_view line, std::string_view prefix) {
  if (!line.starts_with(prefix)) return std::nullopt;
  return trimmed(line.substr(prefix.size()));
}

std::uint64_t number(std::string_view text) {
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() ? value : 0;
}

std::string inQuotes(std::string_view status) {
  return status.empty() ? "an unknown status" : std::string(status);
}

}  // namespace

bool HpJobReport::onLogLine(std::string_view line) {
  line = trimmed(line);
  if (onStep(line)) return status_ != kBusy;
  if (onImageLine(line)) return true;
  if (const auto code = behind(line, kErrorCodeLine)) {
    onErrorCode(*code);
  } else if (const auto message = behind(line, kMessageLine)) {
    onMessage(*message);
  } else if (line.ends_with(kNoDocumentLine)) {
    // The feeder is empty: the normal end of a job that has pages.
    cause_.reset();
    message_ = "no document";
    if (pagesReceived_ == 0) {
      fail(ExitCode::kNoPaper, "there is no document in the feeder",
           "Put documents into the feeder and scan again.");
    }
  } else if (line == kInUseLine) {
    status_ = kInUse;
    fail(ExitCode::kBusy, "the scanner is in use", kTryLater);
  } else if (line.starts_with(kNoMemoryLine)) {
    status_ = "no memory for a new job";
    fail(ExitCode::kBusy, "the scanner has no memory left for another job", kTryLater);
  } else if (const auto detail = behind(line, kWriteErrorLine)) {
    onPageLost("a page could not be put together: " + std::string(*detail),
               "Check the free memory and the free space in the folder for temporary files.");
  }
  // "... busy, continuing" follows a busy answer and is no news either.
  return status_ != kBusy;
}

bool HpJobReport::onStep(std::string_view line) {
  struct Row {
    std::string_view prefix;
    Step step;
    bool answered;  // the line carries the status of the answer
  };
  static constexpr Row kRows[] = {
      {kInquiryLine, Step::kInquiry, false}, {kReserveLine, Step::kReserve, false},
      {kWindowLine, Step::kWindow, true},    {kPositionLine, Step::kPosition, true},
      {kReadLine, Step::kRead, true},        {kReadImageLine, Step::kReadImage, false},
      {kAbortLine, Step::kAbort, true},      {kReleaseLine, Step::kRelease, true},
  };
  for (const Row& row : kRows) {
    const auto rest = behind(line, row.prefix);
    if (!rest) continue;
    // What the device says while the job is being closed explains nothing any more.
    if (row.step == Step::kAbort || row.step == Step::kRelease) {
      step_ = row.step;
      return true;
    }
    step_ = row.step;
    status_ = row.answered ? std::string(*rest) : std::string();
    message_.clear();
    if (step_ == Step::kWindow) onWindowStatus();
    if (step_ == Step::kPosition) onPositionStatus();
    return true;
  }
  return false;
}

bool HpJobReport::onImageLine(std::string_view line) {
  if (const auto size = behind(line, kBlockSizeLine)) {
    bytesOfPage_ += number(*size);
  } else if (line.starts_with(kEndBlockLine)) {
    endSeen_ = true;
    ++pagesReceived_;
  } else if (line.starts_with(kPageLine)) {
    if (!endSeen_) onPageWithoutEnd();
    step_ = Step::kStore;
  } else if (line.starts_with(kUnusableLine)) {
    onPageUnusable();
  } else if (line.starts_with(kPagesLine)) {
    // A flatbed is not asked twice: its busy answer is the end of the job.
    if (step_ == Step::kPosition && status_ == kBusy) {
      fail(ExitCode::kBusy, "the scanner is busy", kTryLater);
    }
    step_ = Step::kAbort;
    status_.clear();
  } else {
    return false;
  }
  return true;
}

void HpJobReport::onErrorCode(std::string_view text) {
  const auto code = static_cast<long>(number(text));
  if (step_ == Step::kStore) {
    onPageLost("a page could not be put together: there is no folder for temporary files",
               "Set TMPDIR to a folder that can be written.");
    return;
  }
  if (code == kInvalidHandle) {
    fail(ExitCode::kDeviceFailed, "the device is there, but it cannot be opened",
         "Check that it is switched on, that you may use it, and that no other program holds it.");
  } else if (code == kNotConnected) {
    fail(ExitCode::kDeviceFailed, "the device is no longer connected", kLinkRemedy);
  } else {
    fail(ExitCode::kDeviceFailed, "the link to the device failed", kLinkRemedy);
  }
  cause_->deviceSaid = "nothing; the system reports error " + std::to_string(code);
}

void HpJobReport::onMessage(std::string_view message) {
  // With a good status the word explains nothing; only a check condition makes it meaningful. The
  // answer to RESERVE UNIT has no line of its own: its word is written in that case alone.
  if (step_ == Step::kReserve) {
    status_ = kCheckCondition;
  } else if (status_ != kCheckCondition) {
    return;
  }
  message_ = message;
  if (const Explanation* row = explain(message)) {
    fail(row->code, row->what, row->remedy);
  } else if (message == "No Error") {
    // The library goes on after the reservation, and counts the end of the pages as a good one.
    if (step_ == Step::kReserve || (step_ == Step::kPosition && pagesReceived_ > 0)) cause_.reset();
  } else if (step_ == Step::kReserve) {
    fail(ExitCode::kDeviceFailed, "the device reports an unknown condition", kLinkRemedy);
  }
  if (cause_) cause_->deviceSaid = deviceStatus();
}

void HpJobReport::onWindowStatus() {
  if (status_ == kGood) return;
  if (status_ == kBusy || status_ == kInUse) {
    fail(ExitCode::kBusy, "the scanner is busy with another job", kTryLater);
  } else if (status_ == kCancelled) {
    fail(ExitCode::kCancelled, "the job was cancelled at the device", kScanAgain);
  } else if (status_ == kCheckCondition) {
    fail(ExitCode::kRefused, "the device refuses the settings of this job", "Try other settings.");
  } else {
    fail(ExitCode::kDeviceFailed, "the device gives an answer that makes no sense", kLinkRemedy);
  }
}

void HpJobReport::onPositionStatus() {
  if (status_ == kGood) {
    endSeen_ = false;
    bytesOfPage_ = 0;
  } else if (status_ == kCheckCondition) {
    fail(ExitCode::kDeviceFailed, "the device reports an unknown condition", kLinkRemedy);
  } else if (status_ == kCancelled) {
    fail(ExitCode::kCancelled, "the job was cancelled at the device", kScanAgain);
  } else if (status_ == kInUse) {
    fail(ExitCode::kBusy, "another user has taken the scanner", kTryLater);
  } else if (status_ != kBusy) {
    fail(ExitCode::kDeviceFailed, "the device gives an answer that makes no sense", kLinkRemedy);
  }
}

void HpJobReport::onPageWithoutEnd() {
  if (incomplete_) return;
  const bool cancelled = status_ == kCancelled;
  incomplete_ = Outcome{cancelled ? ExitCode::kCancelled : ExitCode::kDeviceFailed,
                        "page " + std::to_string(pagesReceived_ + 1) +
                            " is incomplete: the device stopped sending it" +
                            (cancelled ? " because the job was cancelled there" : ""),
                        "Scan that page again.",
                        deviceStatus(),
                        {}};
}

void HpJobReport::onPageUnusable() {
  const std::string page = "page " + std::to_string(pagesReceived_ + (endSeen_ ? 0 : 1));
  if (status_ == kCancelled) {
    fail(ExitCode::kCancelled, "the job was cancelled at the device while it sent " + page,
         kScanAgain);
  } else if (status_ == kInUse) {
    fail(ExitCode::kBusy, "another user has taken the scanner", kTryLater);
  } else {
    fail(ExitCode::kDeviceFailed, "the device or the link failed while it sent " + page,
         kLinkRemedy);
    // An answer that never came reads as a good one.
    if (status_ == kGood) cause_->deviceSaid = "READ: no usable answer";
  }
}

void HpJobReport::fail(ExitCode code, const std::string& what, const std::string& remedy) {
  cause_ = Outcome{code, what, remedy, deviceStatus(), {}};
}

std::string HpJobReport::deviceStatus() const {
  const char* name = "";
  switch (step_) {
    case Step::kInquiry:
      name = "INQUIRY";
      break;
    case Step::kReserve:
      name = "RESERVE UNIT";
      break;
    case Step::kWindow:
      name = "SET WINDOW";
      break;
    case Step::kPosition:
      name = "OBJECT POSITION";
      break;
    case Step::kRead:
    case Step::kReadImage:
      name = "READ";
      break;
    default:
      return {};
  }
  std::string text = std::string(name) + ": " + inQuotes(status_);
  if (!message_.empty()) text += ", " + message_;
  return text;
}

std::string HpJobReport::waitingFor() const {
  const bool busy = status_ == kBusy;
  switch (step_) {
    case Step::kNone:
      return "the device to be opened";
    case Step::kInquiry:
      return "the answer to INQUIRY";
    case Step::kReserve:
      return "the answer to RESERVE UNIT or SET WINDOW";
    case Step::kWindow:
      return status_ == kGood ? "the answer to OBJECT POSITION" : "the answer to ABORT";
    case Step::kPosition:
      if (busy) return "the scanner, which answers OBJECT POSITION with Busy";
      return status_ == kGood ? "the first data of the page (READ)" : "the answer to ABORT";
    case Step::kRead:
      return busy ? "the scanner, which answers READ with Busy" : "image data (READ IMAGE)";
    case Step::kReadImage:
      return "the next block of the page (READ)";
    case Step::kStore:
      return "the page to be stored, or the answer to OBJECT POSITION";
    case Step::kAbort:
      return "the answer to ABORT or RELEASE UNIT";
    case Step::kRelease:
      return "the end of the job; a message box may want an answer";
  }
  return {};
}

std::string HpJobReport::activity() const {
  if (bytesOfPage_ == 0 || pagesReceived_ != pagesStored()) return {};
  return "page " + std::to_string(pagesStored() + 1) + ": " + byteText(bytesOfPage_);
}

Outcome HpJobReport::outcome(long scanResult) const {
  if (const auto found = whatWentWrong({&incomplete_})) return *found;
  if (scanResult == 0 && pagesStored() > 0) return {ExitCode::kDone, "", "", "", {}};
  if (step_ == Step::kInquiry) {
    return {
        ExitCode::kRefused,
        "the device does not want to talk to this computer",
        "Check that --family is right; else switch the device off and on again, then scan again.",
        deviceStatus(),
        {}};
  }
  const std::string what = pagesStored() > 0 ? "the job failed after " + pageText(pagesStored())
                                             : "the device ended the job without a page";
  return {ExitCode::kDeviceFailed, what, kLinkRemedy, deviceStatus(), {}};
}

}  // namespace tvrscn::cli
