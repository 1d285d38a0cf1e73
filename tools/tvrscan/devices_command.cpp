#include "commands.h"
#include "console.h"
#include "device_list.h"
#include "device_model.h"
#include "families.h"
#include "json_output.h"
#include "table.h"

namespace tvrscn::cli {
namespace {

void listDevices(Console& console, const std::vector<Device>& devices) {
  std::vector<TableRow> rows = {{"FAMILY", "HARDWARE ID", "ENDPOINT", "MODEL"}};
  for (const Device& device : devices) {
    const Family* const family = familyOf(device.instanceId);
    const char* const unknown = isNoUsbScanner(device.instanceId) ? "-" : "?";
    const std::string model = modelNameOf(device.instanceId);
    rows.push_back({family == nullptr ? unknown : family->word, device.hardwareId,
                    device.endpoint.empty() ? "(" + device.problem + ")" : device.endpoint,
                    model.empty() ? "?" : model});
  }
  printTable(console, rows);
}

}  // namespace

int runDevices(const DevicesOptions& options) {
  Console console(false);
  const std::vector<Device> devices = presentDevices();
  if (options.json) {
    for (const Device& device : devices) {
      const Family* const family = familyOf(device.instanceId);
      console.data(deviceLine(device, family == nullptr ? "" : family->word));
    }
  } else if (devices.empty()) {
    console.note("no USB device is connected; 'tvrscan virtual hp' runs a virtual one");
  } else {
    listDevices(console, devices);
  }
  return static_cast<int>(ExitCode::kDone);
}

}  // namespace tvrscn::cli
