// The report of the LowEnd family. The library writes a log line for a failure and none for a step
// that goes well; the job goes on after Scan has returned, and ends with a notification.
#ifndef TVRSCN_TOOLS_TVRSCAN_LOWEND_JOB_REPORT_H
#define TVRSCN_TOOLS_TVRSCAN_LOWEND_JOB_REPORT_H

#include <filesystem>

#include "job_report.h"

namespace tvrscn::cli {

class LowEndJobReport : public JobReport {
 public:
  // The library leaves the device's refusal in the folder, as a file.
  explicit LowEndJobReport(std::filesystem::path deliveryFolder);

  bool onLogLine(std::string_view line) override;
  void onNotification(NotificationType type) override;
  void onScanReturned(long result) override;
  void onScanThrew(const std::string& what) override;
  void onFileUnusable(const std::string& problem, bool hadRoom) override;
  bool isOver() const override { return over_; }
  std::string waitingFor() const override;
  std::string activity() const override;
  Outcome outcome(long scanResult) const override;

 private:
  enum class Step {
    kAsking,    // ranges, status, the request
    kNotReady,  // the library asks for the status once a second
    kScanning,  // nothing is heard until the last packet
    kStoring,
    kDialog
  };

  void onNotReady();
  void onRefusal();
  void onFailureWithoutCause(NotificationType type);
  void fail(ExitCode code, const std::string& what, const std::string& remedy,
            const std::string& deviceSaid);

  const std::filesystem::path folder_;
  Step step_ = Step::kAsking;
  bool over_ = false;
  bool complete_ = false;  // and well
  std::string exception_;  // text of what ended the transfer or the cutting into pages
};

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_LOWEND_JOB_REPORT_H
