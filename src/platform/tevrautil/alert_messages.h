// What a user is told about a device's alerts.
#ifndef TVRSCN_PLATFORM_TEVRAUTIL_ALERT_MESSAGES_H
#define TVRSCN_PLATFORM_TEVRAUTIL_ALERT_MESSAGES_H

#include <string>
#include <string_view>
#include <vector>

#include "tvrscn/tevrautil/error_code_dictionary.h"

namespace tvrscn {

// The text for the most severe alert in the words of a controller family, those of no family for an
// unknown one; empty when no alert says anything.
std::wstring alertMessage(const std::vector<AlertStatus>& alerts, std::string_view family);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_TEVRAUTIL_ALERT_MESSAGES_H
