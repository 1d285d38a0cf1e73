// What the device itself says is wrong, told to the user. An operation for callers: nothing of the
// library calls it.
#include <stdexcept>
#include <string>
#include <vector>

#include "client/failure_dialog.h"
#include "platform/dialog.h"
#include "tvrscn/scan_client.h"
#include "tvrscn/tdspclient/scan_tdsp_client.h"

namespace {

constexpr std::wstring_view kSchemeEnd = L"//";

// What stands behind the first "//". A text without one counts as if that stood one place ahead of
// its beginning, so that its first character goes: callers have always had it so.
std::wstring hostOf(const std::wstring& uri) {
  const std::size_t slashes = uri.find(kSchemeEnd);
  const std::size_t start = slashes == std::wstring::npos ? 1 : slashes + kSchemeEnd.size();
  // Said by ourselves, since the words of the standard libraries differ.
  if (start > uri.size()) throw std::out_of_range("invalid string position");
  return uri.substr(start);
}

}  // namespace

void ScanBaseClient::GetErrorMessage(std::vector<AlertStatus>& alerts, std::string family,
                                     std::wstring& message) {
  if (m_pErrorDictionary != nullptr) m_pErrorDictionary->GetErrorString(alerts, family, message);
}

void ScanBaseClient::ShowErrorMessageFromDevice(const wchar_t* deviceUri) {
  if (m_pErrorDictionary == nullptr) return;
  // Before the outcome is known: a caller adds no message of its own, whatever comes.
  m_bClientErrorShown = true;
  const std::wstring host = hostOf(deviceUri == nullptr ? L"" : deviceUri);

  std::vector<AlertStatus> alerts;
  CScanTDSPClient statusClient;
  if (!statusClient.GetDeviceStatus(host.c_str(), alerts)) {
    // A title as the text: it says in a few words all that is known.
    tvrscn::showFailure(m_pErrorDictionary.get(), &CErrorCodeDictionary::m_strCommFailureTitle,
                        &CErrorCodeDictionary::m_strTitle);
    return;
  }
  ProductData product;
  GetProductData(m_scanUIData.modelName, product);
  std::wstring message;
  m_pErrorDictionary->GetErrorString(alerts, product.ControllerFamily, message);
  const std::wstring& text = message.empty() ? m_pErrorDictionary->m_strGeneralError : message;
  MessageBoxW(nullptr, text.c_str(), m_pErrorDictionary->m_strTitle.c_str(), MB_TOPMOST);
}
