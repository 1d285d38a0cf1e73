// One scan, as several threads see it. The job's thread, and in some families a worker that goes on
// behind it, bring log lines and notifications; the watch thread looks after progress, silence, the
// time limit and Ctrl-C. A library call cannot be interrupted, so the watch ends the whole process
// where it has to, with the pages safe and the private folders gone.
#ifndef TVRSCN_TOOLS_TVRSCAN_SCAN_SESSION_H
#define TVRSCN_TOOLS_TVRSCAN_SCAN_SESSION_H

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tvrscn/notifications.h"

#include "device_choice.h"
#include "families.h"
#include "page_store.h"
#include "reporter.h"
#include "silence.h"
#include "system.h"

namespace tvrscn::cli {

class ScanSession {
 public:
  // All arguments outlive the session. A timeout of 0 is none.
  ScanSession(Reporter& reporter, PageStore& pages, ProcessFolder& folder, DeviceChoice& choice,
              StopRequests& stop, std::chrono::seconds timeout, const Family& family);
  ScanSession(const ScanSession&) = delete;
  ScanSession& operator=(const ScanSession&) = delete;
  // Stops listening and watching.
  ~ScanSession();

  // The record for the library.
  TVR_FP_CALLBACK* callback() { return &callback_; }

  // Tells which device the job goes to. Before anything is asked of the device.
  void useDevice(const Device& device);

  // Tells that another program's job has to end first.
  void waitForTurn();

  // Notes for people.
  void tell(const std::vector<std::string>& notes);

  // Takes what CScanUSBClient::Scan returned, or the text of what it threw; waits for the end of a
  // job that goes on behind it, and tells the end. Returns the exit code.
  int finish(long scanResult);
  int finishAfterException(const std::string& what);
  // Tells an end that came before the job, or instead of it.
  int finish(const Outcome& outcome);

 private:
  static void onLogLine(const wchar_t* line, void* context);
  static void onNotification(ScanNotification* notification, void* context);

  void onLine(const wchar_t* line);
  void onType(NotificationType type);
  void onPage(const std::string& path);
  void watch();
  void tick();
  void showProgress();
  void checkSilence();
  [[noreturn]] void endProcessWith(const Outcome& outcome);
  [[noreturn]] void interrupt();

  Reporter& reporter_;
  PageStore& pages_;
  ProcessFolder& folder_;
  DeviceChoice& choice_;
  StopRequests& stop_;
  const Family& family_;
  const std::chrono::seconds timeout_;
  TVR_FP_CALLBACK callback_;

  std::timed_mutex mutex_;             // guards all above and below, and whatever is printed
  std::condition_variable_any heard_;  // signalled for each notification
  std::unique_ptr<JobReport> report_;
  Silence silence_;
  std::string deviceName_ = "the device";
  Silence::Clock::time_point lastProgress_;

  std::atomic<bool> over_{false};
  std::thread watchThread_;  // last: it uses all the others
};

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_SCAN_SESSION_H
