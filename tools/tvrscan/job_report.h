// Finds out how a job went, and why. The notifications and the result of the library say little (a
// device that cancels after page 3 makes a "successful" job), so this reads the library's log
// lines, which tell every step and every answer of the device. No threads, no devices, no output.
#ifndef TVRSCN_TOOLS_TVRSCAN_JOB_REPORT_H
#define TVRSCN_TOOLS_TVRSCAN_JOB_REPORT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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
  // Takes one log line. True when it shows that the job has moved on; a device that answers "busy"
  // again and again does not move.
  bool onLogLine(std::string_view line);

  // A page that was announced is stored. It counts whatever happens later.
  void onPageStored();
  // A page that was announced could not be stored.
  void onPageLost(const std::string& problem, const std::string& remedy);

  // What the job waits for right now, behind "waiting for ".
  std::string waitingFor() const;

  // Bytes received of the page in work, and how many pages the device has completed.
  std::uint64_t bytesOfPage() const { return bytesOfPage_; }
  int pagesReceived() const { return pagesReceived_; }

  // The end of the job, from the result of CScanUSBClient::Scan and all that was heard.
  Outcome outcome(long scanResult) const;

 private:
  enum class Step {
    kNone,
    kInquiry,
    kReserve,
    kWindow,
    kPosition,
    kRead,
    kReadImage,
    kStore,
    kAbort,
    kRelease
  };

  bool onStep(std::string_view line);
  bool onImageLine(std::string_view line);
  void onErrorCode(std::string_view number);
  void onMessage(std::string_view message);
  void onWindowStatus();
  void onPositionStatus();
  void onPageWithoutEnd();
  void onPageUnusable();
  void fail(ExitCode code, const std::string& what, const std::string& remedy);
  std::string deviceStatus() const;

  Step step_ = Step::kNone;
  std::string status_;    // the device's word for its last answer at step_
  std::string message_;   // detail of a check condition
  bool endSeen_ = false;  // the page in work is complete
  std::uint64_t bytesOfPage_ = 0;
  int pagesReceived_ = 0;
  int pagesStored_ = 0;
  std::optional<Outcome> cause_;       // what ended the job
  std::optional<Outcome> lost_;        // the first page that could not be stored
  std::optional<Outcome> incomplete_;  // the first page whose end never came
};

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_JOB_REPORT_H
