// The report of the HP family. A device that cancels after page 3 makes a "successful" job there;
// the log lines tell every step and every answer of the device.
#ifndef TVRSCN_TOOLS_TVRSCAN_HP_JOB_REPORT_H
#define TVRSCN_TOOLS_TVRSCAN_HP_JOB_REPORT_H

#include "job_report.h"

namespace tvrscn::cli {

class HpJobReport : public JobReport {
 public:
  bool onLogLine(std::string_view line) override;
  std::string waitingFor() const override;
  std::string activity() const override;
  Outcome outcome(long scanResult) const override;

  // Bytes received of the page in work.
  std::uint64_t bytesOfPage() const { return bytesOfPage_; }

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
  std::size_t pagesReceived_ = 0;      // that the device has completed
  std::optional<Outcome> incomplete_;  // the first page whose end never came
};

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_HP_JOB_REPORT_H
