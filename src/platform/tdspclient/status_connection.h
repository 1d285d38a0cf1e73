// One conversation with a device about its state, in the system's own means.
#ifndef TVRSCN_PLATFORM_TDSPCLIENT_STATUS_CONNECTION_H
#define TVRSCN_PLATFORM_TDSPCLIENT_STATUS_CONNECTION_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/tdspclient/device_address.h"
#include "platform/tdspclient/printer_status.h"

namespace tvrscn {

enum class Reply {
  kNone,     // nothing that makes sense came
  kRefused,  // the device speaks, but has nothing to tell at this path
  kStatus,
};

using Deadline = std::chrono::steady_clock::time_point;

// The code of the question (Get-Printer-Attributes), and the number by which its answer is known.
constexpr std::uint16_t kGetPrinterAttributes = 0x000B;
constexpr std::uint32_t kRequestId = 1;
// Answers from here on are failures.
constexpr std::uint16_t kFirstFailureStatus = 0x0100;

constexpr const char* kIppMediaType = "application/ipp";

class StatusConnection {
 public:
  StatusConnection() = default;
  StatusConnection(const StatusConnection&) = delete;
  StatusConnection& operator=(const StatusConnection&) = delete;
  virtual ~StatusConnection() = default;

  // Asks once and fills status when the reply is kStatus. The deadline is kept as well as the
  // system's means allow; who must be sure waits outside and calls abort.
  virtual Reply ask(const DeviceAddress& address, const std::string& path, Deadline deadline,
                    PrinterStatus& status) = 0;

  // From another thread: makes ask end early, and any further one fail.
  virtual void abort() = 0;
};

std::unique_ptr<StatusConnection> makeStatusConnection();

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_TDSPCLIENT_STATUS_CONNECTION_H
