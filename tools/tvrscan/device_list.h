// The present USB devices, as the device search of the library will find them.
#ifndef TVRSCN_TOOLS_TVRSCAN_DEVICE_LIST_H
#define TVRSCN_TOOLS_TVRSCAN_DEVICE_LIST_H

#include <string>
#include <vector>

namespace tvrscn::cli {

struct Device {
  std::string instanceId;  // "USB\VID_0A7E&PID_1F48&MI_00\VIRTUALHP01"
  std::string hardwareId;  // its middle part, which selects the device
  std::string endpoint;    // what is opened; empty when it cannot be read
  std::string problem;     // why not
};

// In the order of the search.
std::vector<Device> presentDevices();

// "VID_0A7E&PID_1F48&MI_00" out of "USB\VID_0A7E&PID_1F48&MI_00\1-2"; a text of another form as it
// is.
std::string hardwareIdOf(const std::string& instanceId);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_DEVICE_LIST_H
