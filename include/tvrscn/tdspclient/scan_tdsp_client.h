// The device status library of the suite: what a device itself reports.
#ifndef TVRSCN_TDSPCLIENT_SCAN_TDSP_CLIENT_H
#define TVRSCN_TDSPCLIENT_SCAN_TDSP_CLIENT_H

#include <vector>

#include "tvrscn/export.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"

class TVRSCN_TDSP_API CScanTDSPClient {
 public:
  CScanTDSPClient();
  CScanTDSPClient(const CScanTDSPClient&) = delete;
  CScanTDSPClient& operator=(const CScanTDSPClient&) = delete;
  ~CScanTDSPClient();

  // Reads the alerts of the device at host into alerts. True if the device answered; false leaves
  // alerts as it came in. This version speaks no network protocol yet: no device can be reached.
  bool GetDeviceStatus(const wchar_t* host, std::vector<AlertStatus>& alerts);
};

#endif  // TVRSCN_TDSPCLIENT_SCAN_TDSP_CLIENT_H
