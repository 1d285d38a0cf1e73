// The device status library of the suite: what a device itself reports.
#ifndef TVRSCN_TDSPCLIENT_SCAN_TDSP_CLIENT_H
#define TVRSCN_TDSPCLIENT_SCAN_TDSP_CLIENT_H

#include <vector>

#include "tvrscn/export.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"

// Keeps no state; an object serves any number of calls.
class TVRSCN_TDSP_API CScanTDSPClient {
 public:
  CScanTDSPClient();
  CScanTDSPClient(const CScanTDSPClient&) = delete;
  CScanTDSPClient& operator=(const CScanTDSPClient&) = delete;
  ~CScanTDSPClient();

  // Asks the device at host for its state, by IPP (Get-Printer-Attributes at "/ipp/print", then at
  // "/"; no encryption), and replaces alerts by what is wrong with it, nothing for a device that is
  // well. True if the device answered; false leaves alerts as it came in. Blocks for 5 s at most,
  // look-up of the name included.
  //
  // host is a name or an address, "name", "192.0.2.7" or "[2001:db8::7]", with ":port" behind it
  // where that is not 631; a path behind a "/" is left out. For a null pointer and for a text of
  // another form the answer is false at once. Safe from several threads. After a device that did
  // not answer in time the library stays loaded, with a thread that is about to end.
  //
  // keyword is the device's own word for the alert ("media-jam"), severity one of "error",
  // "warning" and "report", description the device's text in UTF-8 or nothing.
  bool GetDeviceStatus(const wchar_t* host, std::vector<AlertStatus>& alerts);
};

#endif  // TVRSCN_TDSPCLIENT_SCAN_TDSP_CLIENT_H
