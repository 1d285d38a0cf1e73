// The HP controller's front: one job from settings to result. Its parts are hp_commands.cpp (the
// wire), hp_scan_job.cpp (the flow), hp_page_assembly.cpp (the pages), hp_status.cpp (the words).
#include "tvrscn/hp_controller.h"

#include "family_hp/hp_scan_job.h"
#include "tvrscn/scan_client.h"
#include "usb/callback_record.h"
#include "usb/log_writer.h"

namespace {

constexpr long kScanDone = 0;
constexpr long kScanFailed = 1;

}  // namespace

USB_HP_Controller::USB_HP_Controller()
    : m_lastIoResult(0), m_defaultImageExtension(".JPG"), m_defaultImageMimeType(L"image/jpeg") {
  m_bImageNotified = false;
  m_bUsingTevraUI = true;
}

USB_HP_Controller::~USB_HP_Controller() = default;

long USB_HP_Controller::doScan(TevraScanUIData& settings, TVR_FP_CALLBACK* callback,
                               const std::wstring& imageFolder, bool& /*errorShown*/) {
  m_bImageNotified = false;
  m_imageFolderPath = imageFolder;
  m_scanDataSource = std::make_shared<CHPUSBScanDataSource>();
  m_scanDataSource->setAppDataToScanCommand(settings);
  if (tvrscn::isEmptyRecord(callback)) {
    tvrscn::writeLog(
        L"Error from ScanviaUSBThreaded....Callback is not valid. Bailing out of scan....");
    return kScanFailed;
  }
  m_pCallback = callback;

  const USBStatusErrors result = ScanViaUSB();
  if (result != USB_SUCCESS) {
    ErrorHandler(result, static_cast<int>(m_bUsingTevraUI));
    return kScanFailed;
  }
  ScanBaseClient::SendNotification(m_pCallback, NOTIFY_JOB_COMPLETE, TVR_NOTIF_PRIORITY_NORMAL, "");
  return kScanDone;
}

void USB_HP_Controller::GetUSBBrightnessContrastValue(IPPMinMaxNormalStepData& /*brightness*/,
                                                      IPPMinMaxNormalStepData& /*contrast*/) {}

USBStatusErrors USB_HP_Controller::ScanViaUSB() {
  return HPScanJob(*this).run();
}
