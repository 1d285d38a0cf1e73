// Device status over the network: one question by IPP, no state between calls.
#include "tvrscn/tdspclient/scan_tdsp_client.h"

#include <chrono>
#include <optional>

#include "platform/tdspclient/alert_list.h"
#include "platform/tdspclient/device_address.h"
#include "platform/tdspclient/status_connection.h"
#include "platform/tdspclient/status_query.h"

namespace {
constexpr std::chrono::seconds kLimit(5);
}  // namespace

// Both stand here so that they are exported.
CScanTDSPClient::CScanTDSPClient() = default;
CScanTDSPClient::~CScanTDSPClient() {}

bool CScanTDSPClient::GetDeviceStatus(const wchar_t* host, std::vector<AlertStatus>& alerts) {
  if (host == nullptr) return false;
  const std::optional<tvrscn::DeviceAddress> address = tvrscn::deviceAddress(host);
  if (!address) return false;
  const std::optional<tvrscn::PrinterStatus> status =
      tvrscn::askDevice(*address, tvrscn::makeStatusConnection(), kLimit);
  if (!status) return false;
  alerts = tvrscn::alertsOf(*status);
  return true;
}
