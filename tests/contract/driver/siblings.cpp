// The classes of the two sibling libraries that drivers meet.
#include <tvrscn/tdspclient/scan_tdsp_client.h>
#include <tvrscn/tevrautil/gdi_wrapper.h>
#include <tvrscn/tevrautil/tevra_logger.h>

#include "check.h"

namespace {

void checkDictionary() {
  CErrorCodeDictionary dictionary;
  CHECK(dictionary.m_strPaperJam.empty());
  dictionary.InitExceptionStrings(nullptr);
  for (const std::wstring* text :
       {&dictionary.m_strScannerBusy, &dictionary.m_strDeviceError, &dictionary.m_strGeneralError,
        &dictionary.m_strJobCancelled, &dictionary.m_strNoDocument, &dictionary.m_strInvalidRequest,
        &dictionary.m_strPaperJam, &dictionary.m_strCommFailure, &dictionary.m_strTitle,
        &dictionary.m_strCommFailureTitle, &dictionary.m_strCoverOpen,
        &dictionary.m_strPaperJamTitle})
    CHECK(!text->empty());
  const CErrorCodeDictionary copy(dictionary);
  CErrorCodeDictionary assigned;
  assigned = copy;
  CHECK(assigned.m_strCoverOpen == dictionary.m_strCoverOpen);
  std::vector<AlertStatus> alerts;
  std::wstring message = L"from before";
  dictionary.GetErrorString(alerts, "HP", message);
  CHECK(message.empty());
}

void checkLogger() {
  CTevraLogger* logger = CTevraLogger::GetLogInstance();
  CHECK(logger != nullptr && CTevraLogger::GetLogInstance() == logger);
  std::wstring heard;
  const auto hear = [](const wchar_t* line, void* context) {
    *static_cast<std::wstring*>(context) += line;
  };
  logger->SetLineListener(hear, &heard);
  logger->WriteToLog(L"a line");
  logger->SetLineListener(nullptr, nullptr);
  logger->WriteToLog(L"unheard");
  CHECK(heard == L"a line");
}

void checkImaging(const std::string& folder) {
  std::wstring missing = std::wstring(folder.begin(), folder.end()) + L"/missing.jpg";
  GdiWrapper gdi;
  CLSID encoder = {};
  CHECK(gdi.GetEncoderClsid(L"image/jpeg", &encoder) >= 0);
  CHECK(encoder.Data1 != 0);
  CHECK(gdi.GetEncoderClsid(L"image/none", &encoder) == -1);
  CHECK(encoder.Data1 == 0);
  gdi.BlackandWhiteImageProcessing(missing, 0, 0);
  gdi.BrightnessContrastApplyEffect(missing, 10, 10);
  CHECK(gdi.ConvertMultiPageTIFF2SinglePageTIFF(missing, missing, 1) == 0);
}

}  // namespace

void checkSiblings(const std::string& folder) {
  checkDictionary();
  checkLogger();
  checkImaging(folder);
  XMutex mutex(L"TvrscnContractDriver");
  CHECK(mutex.WaitWithRetry(10, 10));
  CScanTDSPClient status;
  std::vector<AlertStatus> alerts;
  // Nobody listens at that port.
  CHECK(!status.GetDeviceStatus(L"127.0.0.1:1", alerts));
  CHECK(alerts.empty());
}
