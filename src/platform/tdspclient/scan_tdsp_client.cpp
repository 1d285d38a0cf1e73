// Device status over the network. No protocol is spoken yet, so no device answers.
#include "tvrscn/tdspclient/scan_tdsp_client.h"

// Both stand here so that they are exported.
CScanTDSPClient::CScanTDSPClient() = default;
CScanTDSPClient::~CScanTDSPClient() {}

bool CScanTDSPClient::GetDeviceStatus(const wchar_t* /*host*/,
                                      std::vector<AlertStatus>& /*alerts*/) {
  return false;
}
