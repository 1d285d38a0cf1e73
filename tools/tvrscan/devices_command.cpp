#include <algorithm>

#include "commands.h"
#include "console.h"
#include "device_list.h"
#include "json_output.h"

namespace tvrscn::cli {
namespace {

void printTable(Console& console, const std::vector<Device>& devices) {
  std::size_t width = std::string("HARDWARE ID").size();
  for (const Device& device : devices)
    width = std::max(width, device.hardwareId.size());
  const auto row = [&](const std::string& family, std::string id, const std::string& endpoint) {
    id.resize(width, ' ');
    console.data(family + "  " + id + "  " + endpoint);
  };
  row("FAMILY", "HARDWARE ID", "ENDPOINT");
  for (const Device& device : devices) {
    row("?     ", device.hardwareId,
        device.endpoint.empty() ? "(" + device.problem + ")" : device.endpoint);
  }
}

}  // namespace

int runDevices(const DevicesOptions& options) {
  Console console(false);
  const std::vector<Device> devices = presentDevices();
  if (options.json) {
    // Which family a device belongs to is not known from its ids alone.
    for (const Device& device : devices)
      console.data(deviceLine(device, ""));
  } else if (devices.empty()) {
    console.note("no USB device is connected; 'tvrscan virtual hp' runs a virtual one");
  } else {
    printTable(console, devices);
  }
  return static_cast<int>(ExitCode::kDone);
}

}  // namespace tvrscn::cli
