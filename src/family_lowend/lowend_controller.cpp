// The LowEnd controller's front: one job from settings to the start of its worker. Its parts are
// lowend_commands.cpp (the wire), lowend_scan_job.cpp (the flow), lowend_image_thread.cpp (the
// worker), lowend_status.cpp (the words).
#include "tvrscn/lowend_controller.h"

#include "family_lowend/lowend_scan_job.h"
#include "tvrscn/scan_client.h"
#include "usb/callback_record.h"
#include "usb/log_writer.h"
#include "usb/text.h"

namespace {

constexpr long kScanStarted = 0;
constexpr long kScanFailed = 1;

}  // namespace

USB_LowEnd_Controller::USB_LowEnd_Controller()
    : m_pImageThreadArgs(nullptr),
      m_hImageThread(nullptr),
      m_lastIoResult(0),
      m_defaultImageExtension(L".JPG"),
      m_defaultImageMimeType(L"image/jpeg"),
      m_fileCount(1) {
  m_bImageNotified = false;
  m_bUsingTevraUI = true;
}

USB_LowEnd_Controller::~USB_LowEnd_Controller() {
  delete m_pImageThreadArgs;
}

long USB_LowEnd_Controller::doScan(TevraScanUIData& settings, TVR_FP_CALLBACK* callback,
                                   const std::wstring& imageFolder, bool& errorShown) {
  m_bImageNotified = false;
  m_imageFolderPath = imageFolder;
  errorShown = false;
  m_bErrorShown = false;
  m_scanDataSource = std::make_shared<CLowEndUSBScanDataSource>();
  m_scanDataSource->setAppDataToScanCommand(settings);
  if (tvrscn::isEmptyRecord(callback)) {
    tvrscn::writeLog(
        L"Error from ScanviaUSBThreaded....Callback is not valid. Bailing out of scan....");
    return kScanFailed;
  }
  m_pCallback = callback;

  if (ScanViaUSB() == USB_SUCCESS) return kScanStarted;
  errorShown = m_bErrorShown;
  return kScanFailed;
}

void USB_LowEnd_Controller::GetUSBBrightnessContrastValue(IPPMinMaxNormalStepData& brightness,
                                                          IPPMinMaxNormalStepData& contrast) {
  std::string features;
  GetLowEndUSBSupportedFeatures(features);
  Get_Supported_Darkness_Brightness(features, brightness, contrast);
}

int USB_LowEnd_Controller::GetFileCount() {
  return m_fileCount;
}
void USB_LowEnd_Controller::IncrementFileCount() {
  ++m_fileCount;
}
void USB_LowEnd_Controller::ResetFileCount() {
  m_fileCount = 0;
}

std::wstring USB_LowEnd_Controller::GetImageFolderPath() {
  return m_imageFolderPath;
}

std::wstring USB_LowEnd_Controller::GetImageOutputFormat() {
  return m_scanDataSource ? m_scanDataSource->GetImageFileFormat() : m_defaultImageExtension;
}

void USB_LowEnd_Controller::SendImageTransferNotification(const std::wstring& path) {
  if (!m_bImageNotified) {
    ScanBaseClient::SendNotification(m_pCallback, NOTIFY_TRANSFER_STARTED,
                                     TVR_NOTIF_PRIORITY_NORMAL, "");
    m_bImageNotified = true;
  }
  ScanBaseClient::SendNotification(m_pCallback, NOTIFY_IMAGE_READY, TVR_NOTIF_PRIORITY_NORMAL,
                                   tvrscn::narrow(path));
}

USBStatusErrors USB_LowEnd_Controller::ScanViaUSB() {
  return LowEndScanJob(*this).run();
}
