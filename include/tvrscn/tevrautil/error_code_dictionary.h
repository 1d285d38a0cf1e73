// The messages that failure dialogs show.
#ifndef TVRSCN_TEVRAUTIL_ERROR_CODE_DICTIONARY_H
#define TVRSCN_TEVRAUTIL_ERROR_CODE_DICTIONARY_H

#include <string>
#include <vector>

#include "tvrscn/export.h"
#include "tvrscn/types.h"

// One alert of a device: the keyword ("media-jam"), the severity ("error", "warning" or "report";
// anything else counts as "error") and the device's own description, UTF-8, which may be empty.
struct AlertStatus {
  std::string keyword;
  std::string severity;
  std::string description;
};

// Twelve texts, empty until InitExceptionStrings has run. Client and controller share one
// dictionary.
class TVRSCN_UTIL_API CErrorCodeDictionary {
 public:
  CErrorCodeDictionary();
  CErrorCodeDictionary(const CErrorCodeDictionary& other);
  CErrorCodeDictionary& operator=(const CErrorCodeDictionary& other);
  ~CErrorCodeDictionary();

  // Loads the twelve texts: from the string resources of resourceModule where it has them (ids from
  // 101 on, in field order), else this library's own. A null module is fine.
  void InitExceptionStrings(HINSTANCE resourceModule);

  // Sets message to what to tell a user about a device's alerts: what is wrong and what to do, for
  // the most severe one ("error" before "warning" before "report"), of those the scanner's and the
  // feeder's first. Feeder, glass and display are called what the controller family ("LANTERN"; ""
  // for none) calls them. Keywords that are not known give a general sentence with the device's
  // description. Empty when no alert says anything. The texts are there without
  // InitExceptionStrings.
  void GetErrorString(std::vector<AlertStatus>& alerts, std::string family, std::wstring& message);

  std::wstring m_strScannerBusy;
  std::wstring m_strDeviceError;
  std::wstring m_strGeneralError;
  std::wstring m_strJobCancelled;
  std::wstring m_strNoDocument;
  std::wstring m_strInvalidRequest;
  std::wstring m_strPaperJam;
  std::wstring m_strCommFailure;
  std::wstring m_strTitle;             // usual title of a dialog
  std::wstring m_strCommFailureTitle;  // title of the communication failure dialog
  std::wstring m_strCoverOpen;
  std::wstring m_strPaperJamTitle;  // title of the paper jam dialog
};

#endif  // TVRSCN_TEVRAUTIL_ERROR_CODE_DICTIONARY_H
