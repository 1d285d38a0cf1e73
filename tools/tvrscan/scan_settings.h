// The job settings in the library's own terms.
#ifndef TVRSCN_TOOLS_TVRSCAN_SCAN_SETTINGS_H
#define TVRSCN_TOOLS_TVRSCAN_SCAN_SETTINGS_H

#include <string>
#include <vector>

#include "tvrscn/tevrautil/scan_ui_data.h"

#include "options.h"

namespace tvrscn::cli {

// Brightness and contrast are percent here and cover the whole range of the image effect: level
// -255..255 and -100..100. The library takes a darkness, divides both by four and turns the sign of
// brightness.
TevraScanUIData jobSettings(const ScanSettings& settings);

// What a device of the HP family will not do although it was asked to, a sentence each.
std::vector<std::string> settingsWithoutEffect(const ScanSettings& settings);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_SCAN_SETTINGS_H
