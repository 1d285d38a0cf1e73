// A software scanner at work, of any family: where it can be found, and how it is ended.
#ifndef TVRSCN_VIRTUAL_RUNNING_SCANNER_H
#define TVRSCN_VIRTUAL_RUNNING_SCANNER_H

#include <filesystem>
#include <string>

namespace tvrscn::virtual_device {

// Where a scanner can be found once it runs. Empty members are chosen: a private folder below the
// folder for temporary files, removed with the scanner.
struct Placement {
  std::filesystem::path socket;  // path of the endpoint's socket
  std::filesystem::path
      deviceFolder;  // gets one file <name>.device for as long as the scanner runs
  std::string name = "virtual-hp";
  std::string instanceId = "USB\\VID_0A7E&PID_1F48&MI_00\\VIRTUALHP01";
};

// A scanner that runs on a thread of its own and serves one client after another until it is
// destroyed.
class RunningScanner {
 public:
  RunningScanner(const RunningScanner&) = delete;
  RunningScanner& operator=(const RunningScanner&) = delete;
  virtual ~RunningScanner() = default;

  virtual const Placement& placement() const = 0;
  // Blocks until the serving thread has ended by itself, which is only after stop().
  virtual void wait() = 0;
  // Ends a running exchange, also a stalled one; may be called from any thread, and from a signal
  // handler.
  virtual void stop() noexcept = 0;

 protected:
  RunningScanner() = default;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_RUNNING_SCANNER_H
