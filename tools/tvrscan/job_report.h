// Finds out how a job went, and why. The notifications and the result of the library say little, so
// each family has a report that reads the library's log lines as well. No threads, no devices, no
// output.
#ifndef TVRSCN_TOOLS_TVRSCAN_JOB_REPORT_H
#define TVRSCN_TOOLS_TVRSCAN_JOB_REPORT_H

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tvrscn/notifications.h"

#include "exit_codes.h"

namespace tvrscn::cli {

// The end of a job in words for people.
struct Outcome {
  ExitCode code = ExitCode::kDone;
  std::string what;                // what happened
  std::string remedy;              // what to do about it
  std::string deviceSaid;          // the device's own status behind it, may be empty
  std::vector<std::string> notes;  // what went wrong besides
};

class JobReport {
 public:
  virtual ~JobReport() = default;

  // Another program's job holds the scanners; this one has to wait for its turn.
  virtual void onTurnTaken() {}
  // Takes one log line. True when it shows that the job has moved on; a device that answers "busy"
  // again and again does not move.
  virtual bool onLogLine(std::string_view line) = 0;
  // Takes the type of a notification.
  virtual void onNotification(NotificationType /*type*/) {}
  // CScanUSBClient::Scan has ended with this result, or with an exception of this text.
  virtual void onScanReturned(long /*result*/) {}
  virtual void onScanThrew(const std::string& what);

  // A page that was announced is stored. It counts whatever happens later.
  void onPageStored() { ++pagesStored_; }
  // A page that was announced could not be stored.
  void onPageLost(const std::string& problem, const std::string& remedy);
  // Its file is not there, or no whole picture, with room left on the disk or none.
  virtual void onFileUnusable(const std::string& problem, bool hadRoom);

  // Whether a job is over whose Scan has returned 0.
  virtual bool isOver() const { return true; }

  // What the job waits for right now, behind "waiting for ".
  virtual std::string waitingFor() const = 0;
  // What the device is doing now, as far as it can be told; may be empty.
  virtual std::string activity() const { return {}; }

  // The end of the job, from the result of CScanUSBClient::Scan and all that was heard.
  virtual Outcome outcome(long scanResult) const = 0;

 protected:
  JobReport() = default;
  JobReport(const JobReport&) = default;
  JobReport& operator=(const JobReport&) = default;

  std::size_t pagesStored() const { return pagesStored_; }
  // What ended the job, with lost pages and further troubles as notes; nothing when nothing did.
  std::optional<Outcome> whatWentWrong(
      std::initializer_list<const std::optional<Outcome>*> further = {}) const;

  // For families whose library stores the bytes as they came: a page that is no picture came so.
  void loseAsDelivered(const std::string& problem, bool hadRoom);
  // The end of a job that lost a page; the first one counts.
  void loseTo(const Outcome& outcome);

  std::optional<Outcome> cause_;  // what ended the job

 private:
  std::size_t pagesStored_ = 0;
  std::optional<Outcome> lost_;  // the first page that could not be stored
};

// The remedies that all families share.
inline constexpr const char* kTryLater = "Wait until the scanner is ready, then scan again.";
inline constexpr const char* kScanAgain = "Scan again if you want to.";
inline constexpr const char* kLinkRemedy =
    "Check that the device is switched on and its cable sits firmly, then scan again.";
inline constexpr const char* kJamRemedy =
    "Open the feeder, take the jammed sheet out, put the remaining sheets back and scan again.";
inline constexpr const char* kCoverRemedy = "Close the cover and scan again.";

inline constexpr const char* kRoomRemedy =
    "Make room on the disk of the --out folder, then scan that page again. If there is room, the "
    "device sent data that is no image.";

// A log line as it is looked at: its ASCII letters, and a question mark for each other one.
std::string plainText(const wchar_t* line);

// A log line without the blanks and line ends around it.
std::string_view trimmed(std::string_view text);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_JOB_REPORT_H
