// The messages that failure dialogs show.
#ifndef TVRSCN_TEVRAUTIL_ERROR_CODE_DICTIONARY_H
#define TVRSCN_TEVRAUTIL_ERROR_CODE_DICTIONARY_H

#include <string>
#include <vector>

#include "tvrscn/export.h"
#include "tvrscn/types.h"

// One alert of a device: the keyword, the severity and the device's own description.
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

  // Sets message to the text for a device's alerts in the wording of the given controller family;
  // leaves it empty when there is nothing to say.
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
