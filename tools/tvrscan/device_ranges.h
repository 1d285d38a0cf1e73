// The ranges of brightness and contrast that a device tells.
#ifndef TVRSCN_TOOLS_TVRSCAN_DEVICE_RANGES_H
#define TVRSCN_TOOLS_TVRSCAN_DEVICE_RANGES_H

#include <optional>

#include "tvrscn/scan_client.h"

namespace tvrscn::cli {

// Empty where the device does not tell, or tells something that is no range.
struct DeviceRanges {
  std::optional<IPPMinMaxNormalStepData> brightness;  // in the device's own sense: a darkness
  std::optional<IPPMinMaxNormalStepData> contrast;
};

// Asks the device that the client is set to.
DeviceRanges askForRanges(CScanUSBClient& client);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_DEVICE_RANGES_H
