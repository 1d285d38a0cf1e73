#include <algorithm>
#include <exception>
#include <string>
#include <system_error>
#include <vector>

#include "command_line.h"
#include "commands.h"
#include "console.h"
#include "device_choice.h"
#include "device_list.h"
#include "families.h"
#include "reporter.h"
#include "system.h"
#include "words.h"

namespace tvrscn::cli {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds kLongWait{3600};

// Empty where the system keeps no folder of devices.
fs::path deviceFolder(const VirtualCommandOptions& options) {
  if (userDeviceFolder().empty()) {
    if (!options.deviceFolder.empty()) {
      throw UsageProblem{ExitCode::kUsage,
                         "--device-folder: devices are registered in the registry on this system"};
    }
    return {};
  }
  fs::path folder = options.deviceFolder;
  if (folder.empty()) folder = pathOf(environment("TVRSCN_DEVICE_PATH"));
  if (folder.empty()) folder = userDeviceFolder();
  std::error_code error;
  fs::create_directories(folder, error);
  if (!fs::is_directory(folder)) {
    throw OutputError("the folder " + textOf(folder) + " cannot be made" +
                      (error ? ": " + error.message() : ""));
  }
  return fs::absolute(folder);
}

// A list of devices has room for one of each id.
void tellOfTheSame(Console& console, const std::string& instanceId) {
  const std::vector<Device> devices = presentDevices();
  const bool taken = std::any_of(devices.begin(), devices.end(), [&](const Device& device) {
    return upperCase(device.instanceId) == upperCase(instanceId);
  });
  if (!taken) return;
  console.note("a device is registered as " + instanceId +
               " already and gives way to this one; --instance-id gives this one another id");
}

}  // namespace

int runVirtual(const VirtualCommandOptions& options, StopRequests& stop) {
  Console console(false);
  Reporter reporter(console, false);
  try {
    virtual_device::Placement placement = options.family->placement();
    if (!options.instanceId.empty()) placement = placementAs(placement, options.instanceId);
    placement.deviceFolder = deviceFolder(options);
    if (!placement.deviceFolder.empty())
      setEnvironment("TVRSCN_DEVICE_PATH", textOf(placement.deviceFolder));
    tellOfTheSame(console, placement.instanceId);
    if (!options.listen.empty()) placement.socket = endpointPlace(options.listen);
    const auto scanner = options.family->startScanner(options.scanner, placement);
    const virtual_device::Placement& placed = scanner->placement();
    console.data("hardware id: " + hardwareIdOf(placed.instanceId));
    console.data("endpoint: " + endpointName(placed.socket));
    const fs::path& folder = placed.deviceFolder;
    console.note("registered in " + (folder.empty() ? "the registry" : textOf(folder)) +
                 "; Ctrl-C ends it");
    while (!stop.wait(kLongWait)) {
    }
    scanner->stop();
    scanner->wait();
    return static_cast<int>(ExitCode::kDone);
  } catch (const OutputError& error) {
    return reporter.end({ExitCode::kOutput, error.what(), "Choose another place.", "", {}});
  } catch (const std::exception& error) {
    return reporter.end({ExitCode::kFailed, error.what(), "", "", {}});
  }
}

}  // namespace tvrscn::cli
