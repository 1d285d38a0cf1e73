// The messages of the failure dialogs, in one table: what happened, and what the user can do about
// it.
#include "tvrscn/tevrautil/error_code_dictionary.h"

#include <limits>
#include <string_view>

#include "platform/identity_text.h"
#include "platform/modules.h"

namespace {

struct Message {
  unsigned int resource;  // string resource of a module that has its own wording
  std::wstring CErrorCodeDictionary::*field;
  const wchar_t* text;
};

const Message kMessages[] = {
    {101, &CErrorCodeDictionary::m_strScannerBusy,
     L"The scanner is busy with another job. Wait until that job has ended, then scan again."},
    {102, &CErrorCodeDictionary::m_strDeviceError,
     L"The scanner reports an error. Look at the display of the device, clear the error shown "
     L"there, then scan again."},
    {103, &CErrorCodeDictionary::m_strGeneralError,
     L"The scan could not be completed. Switch the device off and on again, then repeat the scan."},
    {104, &CErrorCodeDictionary::m_strJobCancelled,
     L"The scan was cancelled at the device. Start it again if you still need the pages."},
    {105, &CErrorCodeDictionary::m_strNoDocument,
     L"There is no document in the feeder. Load your document, then scan again."},
    {106, &CErrorCodeDictionary::m_strInvalidRequest,
     L"The scanner cannot carry out this request in its present state. Wait until it is ready, "
     L"check "
     L"paper size and resolution, then scan again."},
    {107, &CErrorCodeDictionary::m_strPaperJam,
     L"Paper is jammed in the document feeder. Open the feeder, take the paper out, close the "
     L"feeder "
     L"and load the remaining pages again."},
    {108, &CErrorCodeDictionary::m_strCommFailure,
     L"The connection to the scanner failed. Check that the device is switched on and that its USB "
     L"cable is plugged in at both ends, then scan again."},
    {109, &CErrorCodeDictionary::m_strTitle, L"Scan"},
    {110, &CErrorCodeDictionary::m_strCommFailureTitle, L"The scanner cannot be reached"},
    {111, &CErrorCodeDictionary::m_strCoverOpen,
     L"A cover of the scanner is open. Close the cover and the document feeder, then scan again."},
    {112, &CErrorCodeDictionary::m_strPaperJamTitle, L"Paper jam"},
};

// Device texts are UTF-8.
std::wstring widened(const std::string& text) {
  if (text.empty() || text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    return {};
  }
  const int length = static_cast<int>(text.size());
  const int needed = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
  if (needed <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(needed), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), needed);
  return wide;
}

}  // namespace

CErrorCodeDictionary::CErrorCodeDictionary() = default;
CErrorCodeDictionary::CErrorCodeDictionary(const CErrorCodeDictionary& other) = default;
CErrorCodeDictionary& CErrorCodeDictionary::operator=(const CErrorCodeDictionary& other) = default;
CErrorCodeDictionary::~CErrorCodeDictionary() = default;

void CErrorCodeDictionary::InitExceptionStrings(HINSTANCE resourceModule) {
  for (const Message& message : kMessages) {
    const std::wstring own = tvrscn::moduleString(resourceModule, message.resource);
    this->*message.field = own.empty() ? message.text : own;
  }
}

// The wording is the same for all families: it is the device's own.
void CErrorCodeDictionary::GetErrorString(std::vector<AlertStatus>& alerts, std::string /*family*/,
                                          std::wstring& message) {
  message.clear();
  for (const AlertStatus& alert : alerts) {
    const std::wstring text =
        widened(alert.description.empty() ? alert.keyword : alert.description);
    if (text.empty()) continue;
    constexpr std::wstring_view kSentenceEnds = L".!?";
    const bool ended = kSentenceEnds.find(text.back()) != std::wstring_view::npos;
    message = L"The device reports: " + text + (ended ? L"" : L".");
    return;
  }
}
