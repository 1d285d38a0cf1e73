// The line in which a store application leaves the settings of its job. The library takes whatever
// stands there, ends the process where a field is missing and scans with something else where a
// word is unknown; here each field is looked at first.
#ifndef TVRSCN_TOOLS_TVRSCAN_STORE_SETTINGS_H
#define TVRSCN_TOOLS_TVRSCAN_STORE_SETTINGS_H

#include <string>
#include <string_view>
#include <vector>

namespace tvrscn::cli {

// What is wrong with the content of a settings file, a sentence each; nothing when it is good.
std::vector<std::string> settingsProblems(std::string_view content);

// The hardware id in the content of a good settings file.
std::string settingsHardwareId(std::string_view content);

// A good line: an A4 page in colour, from a device of this hardware id.
std::string settingsTemplate(const std::string& hardwareId);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_STORE_SETTINGS_H
