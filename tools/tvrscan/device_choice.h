// Settles which device a command talks to: the one that was named, a virtual one, or the only one.
#ifndef TVRSCN_TOOLS_TVRSCAN_DEVICE_CHOICE_H
#define TVRSCN_TOOLS_TVRSCAN_DEVICE_CHOICE_H

#include <filesystem>
#include <memory>
#include <optional>

#include "tvrscn/scan_client.h"

#include "device_list.h"
#include "job_report.h"
#include "options.h"
#include "virtual/virtual_scanner.h"

namespace tvrscn::cli {

// A folder for the temporary files of this process, all of them: the library's too. Removed with
// the object.
class ProcessFolder {
 public:
  // Before there are threads. Throws OutputError.
  ProcessFolder();
  ProcessFolder(const ProcessFolder&) = delete;
  ProcessFolder& operator=(const ProcessFolder&) = delete;
  ~ProcessFolder();

  const std::filesystem::path& path() const { return path_; }
  void cleanUp() noexcept;

 private:
  std::filesystem::path path_;
};

// The client of this process, made at the first call for the family of its one device. It stays
// until the end: a client that goes leaves its controller and the open device behind in any case.
CScanUSBClient& processClient(ControllerType controller);

// The placement of a virtual scanner that has another instance id than usual, under a name that no
// scanner with a third one has.
virtual_device::Placement placementAs(const virtual_device::Placement& usual,
                                      const std::string& instanceId);

class DeviceChoice {
 public:
  // Starts the virtual scanner where one is wanted, with a device folder of its own: before the
  // first client of the process. Throws std::runtime_error.
  DeviceChoice(const DeviceOptions& options, const ProcessFolder& folder);

  // Finds the device; or says why there is none.
  std::optional<Outcome> choose(CScanUSBClient& client);

  const Device& device() const { return device_; }

  // Ends a virtual scanner, and its registration, before its time; from any thread.
  void endScanner() noexcept;

 private:
  DeviceOptions options_;
  std::unique_ptr<virtual_device::RunningScanner> scanner_;
  Device device_;
};

// Fills in the family where neither --family nor --virtual has named it: that of the device's
// model, and the first of all families where the model does not tell. A device that is the only one
// to choose from is settled with it.
void settleFamily(DeviceOptions& options);
void settleFamily(DeviceOptions& options, const std::vector<Device>& devices);

// The device when exactly one that can be opened is of a model that scans over USB, or when there
// is none of these and one of any other kind; else why none can be chosen.
std::optional<Outcome> chooseOnly(const std::vector<Device>& devices, Device& chosen);

// Why a device cannot scan whose model does not; nothing for any other.
std::optional<Outcome> withoutUsbScan(const Device& device);

// What the result of a probe for the device means; nothing when it is there.
std::optional<Outcome> probeOutcome(int result, const std::string& hardwareId,
                                    const std::vector<Device>& devices);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_DEVICE_CHOICE_H
