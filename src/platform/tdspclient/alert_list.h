// From what a device says about its state to the alerts that callers get.
#ifndef TVRSCN_PLATFORM_TDSPCLIENT_ALERT_LIST_H
#define TVRSCN_PLATFORM_TDSPCLIENT_ALERT_LIST_H

#include <vector>

#include "platform/tdspclient/printer_status.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"

namespace tvrscn {

// One alert for each reason but "none", in the device's order, with the severity that its ending
// tells ("error" without one) and the description of the printer-alert of the same meaning. Behind
// them, critical alerts and warnings that no reason tells; and last, for a device that stands still
// and gives no cause at all, the keyword "stopped".
std::vector<AlertStatus> alertsOf(const PrinterStatus& status);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_TDSPCLIENT_ALERT_LIST_H
