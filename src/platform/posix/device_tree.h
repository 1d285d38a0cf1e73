// The present devices: those that the device folder describes, then the system's own USB devices.
// Read afresh at each call; no call touches the last error.
#ifndef TVRSCN_PLATFORM_POSIX_DEVICE_TREE_H
#define TVRSCN_PLATFORM_POSIX_DEVICE_TREE_H

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tvrscn {

struct PresentDevice {
  std::wstring instanceId;
  std::optional<std::wstring> driver;          // the driver key
  std::optional<std::wstring> createFileName;  // the endpoint
  bool hasEnumKey = true;                      // the device's own registry key can be opened
};

// $TVRSCN_DEVICE_PATH, else tvrscn/devices in the user's runtime folder.
std::filesystem::path deviceFolder();

// The files *.device of a folder in byte order of their names, hidden ones left out. Each is lines
// of key=value in UTF-8: InstanceId (a file without one is no device), Driver, CreateFileName,
// EnumKey=absent. Nothing is trimmed but a carriage return at the end of a line; the last line of
// a key counts; unknown keys and lines that are no pair are passed over.
std::vector<PresentDevice> devicesOfFolder(const std::filesystem::path& folder);

// One device per USB interface under a folder made like /sys/bus/usb/devices, in bus order: by bus,
// then by port path, then by interface, all as numbers.
std::vector<PresentDevice> devicesOfSystem(const std::filesystem::path& usbDevices);

std::vector<PresentDevice> presentDevices();

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_POSIX_DEVICE_TREE_H
