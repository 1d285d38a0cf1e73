// Tells how a command goes: as words for people, or as one JSON object a line for programs.
#ifndef TVRSCN_TOOLS_TVRSCAN_REPORTER_H
#define TVRSCN_TOOLS_TVRSCAN_REPORTER_H

#include <chrono>
#include <string>
#include <vector>

#include "console.h"
#include "device_list.h"
#include "job_report.h"
#include "page_store.h"

namespace tvrscn::cli {

class Reporter {
 public:
  Reporter(Console& console, bool json);

  // The device that the job goes to.
  void device(const Device& device, const std::string& family);
  // A page that is stored.
  void page(const StoredPage& page);
  // The end, with the pages that are safe. Returns the exit code.
  int end(const Outcome& outcome, const std::vector<StoredPage>& pages);
  // The end of a command that has no pages.
  int end(const Outcome& outcome) { return end(outcome, {}); }

  Console& console() { return console_; }
  std::chrono::milliseconds elapsed() const;

 private:
  void endInWords(const Outcome& outcome, const std::vector<StoredPage>& pages);

  Console& console_;
  bool json_;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_REPORTER_H
