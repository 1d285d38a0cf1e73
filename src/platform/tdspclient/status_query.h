// The question for a device's status, with a bound on the time that it takes.
#ifndef TVRSCN_PLATFORM_TDSPCLIENT_STATUS_QUERY_H
#define TVRSCN_PLATFORM_TDSPCLIENT_STATUS_QUERY_H

#include <chrono>
#include <memory>
#include <optional>

#include "platform/tdspclient/device_address.h"
#include "platform/tdspclient/printer_status.h"
#include "platform/tdspclient/status_connection.h"

namespace tvrscn {

// Asks on a thread of its own, at the usual path and then at the root, and waits for it no longer
// than the limit, look-up of the name, connection and answer together. The thread of a device that
// is slower is told to end and left behind.
std::optional<PrinterStatus> askDevice(const DeviceAddress& address,
                                       std::unique_ptr<StatusConnection> connection,
                                       std::chrono::milliseconds limit);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_TDSPCLIENT_STATUS_QUERY_H
