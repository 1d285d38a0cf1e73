// The job settings in the library's own terms, for each family.
#ifndef TVRSCN_TOOLS_TVRSCAN_SCAN_SETTINGS_H
#define TVRSCN_TOOLS_TVRSCAN_SCAN_SETTINGS_H

#include <string>
#include <vector>

#include "tvrscn/tevrautil/scan_ui_data.h"

#include "device_ranges.h"
#include "options.h"

namespace tvrscn::cli {

// HP: brightness and contrast are percent here and cover the whole range of the image effect: level
// -255..255 and -100..100. The library takes a darkness, divides both by four and turns the sign of
// brightness.
TevraScanUIData hpJobSettings(const ScanSettings& settings, const DeviceRanges& ranges);

// LowEnd: the device itself makes the page brighter or harder, and gets the values as they stand
// here. Percent cover the device's own ranges, 0 being what it calls normal; its brightness is a
// darkness. 0 goes out where it tells no range.
TevraScanUIData lowEndJobSettings(const ScanSettings& settings, const DeviceRanges& ranges);

// QZ: the image effect is the same as with HP; the library works it out anew for every page of a
// job, with a quarter of the values of the page before.
TevraScanUIData qzJobSettings(const ScanSettings& settings, const DeviceRanges& ranges);

// What devices of the family will not do although they were asked to, a sentence each.
std::vector<std::string> hpSettingsWithoutEffect(const ScanSettings& settings);
std::vector<std::string> lowEndSettingsWithoutEffect(const ScanSettings& settings);
std::vector<std::string> qzSettingsWithoutEffect(const ScanSettings& settings);

// The same for what depends on the ranges that a device tells, of a family whose devices tell them.
std::vector<std::string> settingsWithoutRange(const ScanSettings& settings,
                                              const DeviceRanges& ranges);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_SCAN_SETTINGS_H
