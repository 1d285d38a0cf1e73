// The report of the QZ family. The library says little of such a job: no line for a step, none for
// a status or a sense code but that of a READ. What the device reports otherwise shows in message
// boxes alone.
#ifndef TVRSCN_TOOLS_TVRSCAN_QZ_JOB_REPORT_H
#define TVRSCN_TOOLS_TVRSCAN_QZ_JOB_REPORT_H

#include "job_report.h"

namespace tvrscn::cli {

class QzJobReport : public JobReport {
 public:
  void onTurnTaken() override { waitsForTurn_ = true; }
  bool onLogLine(std::string_view line) override;
  void onNotification(NotificationType type) override;
  void onScanThrew(const std::string& what) override;
  void onFileUnusable(const std::string& problem, bool hadRoom) override;
  std::string waitingFor() const override;
  std::string activity() const override;
  Outcome outcome(long scanResult) const override;

 private:
  void onFault();
  void onFailedExchange();

  bool waitsForTurn_ = false;
  bool heard_ = false;     // a notification has come
  bool complete_ = false;  // and well
};

// What the library's log lines about a QZ device mean; nothing for those that tell of no failure.
std::optional<Outcome> qzCauseOf(std::string_view line);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_QZ_JOB_REPORT_H
