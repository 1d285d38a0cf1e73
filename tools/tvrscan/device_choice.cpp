#include "device_choice.h"

#include <algorithm>
#include <array>
#include <system_error>

#include "device_model.h"
#include "families.h"
#include "page_store.h"
#include "system.h"
#include "words.h"

namespace tvrscn::cli {

namespace fs = std::filesystem;

namespace {

constexpr int kProbeNotFound = 55;

std::string listOf(const std::vector<Device>& devices) {
  std::string text;
  for (const Device& device : devices)
    text += (text.empty() ? "" : ", ") + device.hardwareId;
  return text;
}

// The first one whose instance id holds the hardware id; one of that id alone when there is none.
Device namedDevice(const std::vector<Device>& devices, const std::string& hardwareId) {
  const auto named = std::find_if(devices.begin(), devices.end(), [&](const Device& device) {
    return upperCase(device.instanceId).find(hardwareId) != std::string::npos;
  });
  if (named != devices.end()) return *named;
  Device absent;
  absent.hardwareId = hardwareId;
  absent.instanceId = hardwareId;
  return absent;
}

}  // namespace

ProcessFolder::ProcessFolder() {
  std::error_code error;
  const fs::path parent = fs::temp_directory_path(error);
  if (error) throw OutputError("there is no folder for temporary files: " + error.message());
  try {
    path_ = createPrivateFolder(parent, "tvrscan-");
  } catch (const std::system_error& failure) {
    throw OutputError("the folder for temporary files " + textOf(parent) +
                      " cannot be written: " + failure.code().message());
  }
  setTemporaryFolder(path_);
}

ProcessFolder::~ProcessFolder() {
  cleanUp();
}

void ProcessFolder::cleanUp() noexcept {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

CScanUSBClient& processClient(ControllerType controller) {
  static CScanUSBClient& client = *new CScanUSBClient(controller);
  return client;
}

virtual_device::Placement placementAs(const virtual_device::Placement& usual,
                                      const std::string& instanceId) {
  virtual_device::Placement placement = usual;
  placement.instanceId = instanceId;
  placement.name = instanceId;
  std::replace(placement.name.begin(), placement.name.end(), '\\', '#');
  return placement;
}

DeviceChoice::DeviceChoice(const DeviceOptions& options, const ProcessFolder& folder)
    : options_(options) {
  if (!options_.useVirtual) return;
  // An id of its own: on some systems it stands in one list with the devices of other processes.
  const virtual_device::Placement usual = options_.family->placement();
  virtual_device::Placement placement =
      placementAs(usual, "USB\\" + hardwareIdOf(usual.instanceId) + "\\" +
                             upperCase(textOf(folder.path().filename())));
  placement.socket = folder.path() / "endpoint";
  placement.deviceFolder = folder.path() / "devices";
  fs::create_directories(placement.deviceFolder);
  setEnvironment("TVRSCN_DEVICE_PATH", textOf(placement.deviceFolder));
  scanner_ = options_.family->startScanner(options_.virtualOptions, placement);
  options_.hardwareId = upperCase(scanner_->placement().instanceId);
}

void DeviceChoice::endScanner() noexcept {
  scanner_.reset();
}

std::optional<Outcome> DeviceChoice::choose(CScanUSBClient& client) {
  const std::vector<Device> devices = presentDevices();
  if (options_.hardwareId.empty()) {
    if (auto outcome = chooseOnly(devices, device_)) return outcome;
  } else {
    device_ = namedDevice(devices, options_.hardwareId);
  }
  if (options_.familyFromDevice) {
    if (auto outcome = withoutUsbScan(device_)) return outcome;
  }
  std::array<wchar_t, 4> enumerator = {L'U', L'S', L'B', L'\0'};
  const std::string wanted =
      options_.hardwareId.empty() ? upperCase(device_.instanceId) : options_.hardwareId;
  const int result = client.FindStatusEndPointFromPrinterPort(enumerator.data(), wanted, false);
  return probeOutcome(result, device_.hardwareId, devices);
}

void settleFamily(DeviceOptions& options) {
  if (options.family == nullptr) settleFamily(options, presentDevices());
}

void settleFamily(DeviceOptions& options, const std::vector<Device>& devices) {
  if (options.family != nullptr) return;
  options.familyFromDevice = true;
  options.family = &families().front();
  Device device;
  if (!options.hardwareId.empty()) {
    device = namedDevice(devices, options.hardwareId);
  } else if (chooseOnly(devices, device)) {
    return;
  } else {
    options.hardwareId = upperCase(device.instanceId);
  }
  if (const Family* family = familyOf(device.instanceId)) options.family = family;
}

std::optional<Outcome> chooseOnly(const std::vector<Device>& devices, Device& chosen) {
  std::vector<Device> usable;
  std::vector<Device> scanners;
  for (const Device& device : devices) {
    if (device.endpoint.empty()) continue;
    usable.push_back(device);
    if (familyOf(device.instanceId) != nullptr) scanners.push_back(device);
  }
  if (!scanners.empty()) usable = scanners;
  if (usable.size() == 1) {
    chosen = usable.front();
    return std::nullopt;
  }
  if (usable.empty()) {
    return Outcome{ExitCode::kNoDevice,
                   "no scanner is connected",
                   "Connect one and switch it on, or try '--virtual hp'.",
                   "",
                   {}};
  }
  return Outcome{ExitCode::kNoDevice,
                 "there is more than one device: " + listOf(usable),
                 "Say which with --device HWID.",
                 "",
                 {}};
}

std::optional<Outcome> withoutUsbScan(const Device& device) {
  if (!isNoUsbScanner(device.instanceId)) return std::nullopt;
  return Outcome{ExitCode::kNotSupported,
                 "the model " + modelNameOf(device.instanceId) + " does not scan over USB",
                 "Scan over the network, or try a family of devices with --family.",
                 "",
                 {}};
}

std::optional<Outcome> probeOutcome(int result, const std::string& hardwareId,
                                    const std::vector<Device>& devices) {
  if (result == 0) return std::nullopt;
  if (result == kProbeNotFound) {
    return Outcome{ExitCode::kNoDevice,
                   "the device " + hardwareId + " is not connected",
                   devices.empty() ? "No device is connected. Connect it and switch it on."
                                   : "Connected are: " + listOf(devices) + ".",
                   "",
                   {}};
  }
  if (result == USB_ERR_NO_DEVICE_SETUP) {
    return Outcome{ExitCode::kFailed,
                   "the system's list of devices cannot be read",
                   "Repair the installation of this program.",
                   "",
                   {}};
  }
  return Outcome{ExitCode::kDeviceFailed,
                 "the device " + hardwareId + " is connected, but its driver names no endpoint",
                 "Install the device's driver again.",
                 "nothing; the system reports error " + std::to_string(result),
                 {}};
}

}  // namespace tvrscn::cli
