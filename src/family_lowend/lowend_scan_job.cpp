// The flow of one LowEnd job up to its worker. The device is asked what it can and how it is, then
// told what to scan; all that follows is the worker's.
#include "family_lowend/lowend_scan_job.h"

#include <cstdint>
#include <string>

#include "family_lowend/lowend_thread_handle.h"
#include "platform/threads.h"
#include "tvrscn/scan_client.h"
#include "usb/log_writer.h"

namespace {

using tvrscn::writeLog;

constexpr int kReadyPolls = 11;
constexpr DWORD kBeforePollWait = 1000;  // milliseconds

// Null for a start that throws, too.
HANDLE startThread(unsigned (*start)(void*), void* argument) {
  try {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system gives handles of threads as numbers
    return reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, start, argument, 0, nullptr));
  } catch (...) {
    return nullptr;
  }
}

}  // namespace

USBStatusErrors LowEndScanJob::run() {
  askFeatures();
  USBStatusErrors result = askStatus();
  if (result == USB_SUCCESS) result = start();
  if (result != USB_SUCCESS) {
    controller_.ErrorHandler(result, static_cast<int>(controller_.m_bUsingTevraUI));
  }
  return result;
}

void LowEndScanJob::askFeatures() {
  std::string document;
  controller_.GetLowEndUSBSupportedFeatures(document);
  if (controller_.m_scanDataSource) {
    controller_.m_scanDataSource->SetDeviceSupportJSONResponse(document);
  }
}

USBStatusErrors LowEndScanJob::askStatus() {
  std::string document;
  const int check = controller_.GetLowEndUSBDeviceStatus(document);
  const auto& source = controller_.m_scanDataSource;
  // An empty document is not stopped here: its check is no zero, and the parser throws over it.
  bool understood = source != nullptr && check != 0;
  if (understood) {
    const bool scanner =
        source->ParseScannerStatus(document, state_.busy, state_.ready, state_.flatbedCoverOpen);
    const bool feeder = source->ParseADFStatus(document, state_.jamPresent, state_.feederInstalled,
                                               state_.feederCoverOpen, state_.feederLoaded);
    understood = scanner && feeder;
  }
  if (understood) return judgeState();
  writeLog(L"Something wrong in LowEnd USB Status command response, please check on it.");
  return USB_ERR_COMMAND;
}

USBStatusErrors LowEndScanJob::judgeState() {
  if (state_.jamPresent) {
    writeLog(L"LowEnd USB ADF Jam detected, please clean it up");
    return USB_ERR_PAPER_JAM;
  }
  if ((state_.feederInstalled && state_.feederCoverOpen) || state_.flatbedCoverOpen) {
    writeLog(L"LowEnd USB either Flatbed or ADF cover is open, please close and try scan next.");
    return USB_ERR_COVER_OPEN;
  }
  if (state_.ready) return USB_SUCCESS;
  if (state_.busy) {
    writeLog(L"LowEnd USB Scanner is busy");
    return USB_ERR_SCANNER_BUSY;
  }
  return waitUntilReady();
}

// Busy ends the wait as well as ready does: a device that has just woken takes the job then. Covers
// and feeder are not looked at again.
USBStatusErrors LowEndScanJob::waitUntilReady() {
  writeLog(L"LowEnd USB Scanner is not ready");
  for (int poll = 0; poll < kReadyPolls; ++poll) {
    Sleep(kBeforePollWait);
    std::string document;
    const int check = controller_.GetLowEndUSBDeviceStatus(document);
    if (check != 0) {
      controller_.m_scanDataSource->ParseScannerStatus(document, state_.busy, state_.ready,
                                                       state_.flatbedCoverOpen);
    }
    if (state_.busy || state_.ready) return USB_SUCCESS;
  }
  writeLog(L"LowEnd USB Scanner is not ready");
  return USB_ERR_SCANNER_BUSY;
}

USBStatusErrors LowEndScanJob::start() {
  const USBStatusErrors result = controller_.StartScanOperation(state_.feederLoaded);
  if (result != USB_SUCCESS) writeLog(L"Something wrong in scan operation");
  return result;
}

// A refusal is reported here, by its own status, and by the caller as a general failure.
USBStatusErrors USB_LowEnd_Controller::StartScanOperation(const bool& adfPaperLoaded) {
  const USBStatusErrors status = SendStartScanCommand(adfPaperLoaded);
  if (status != USB_SUCCESS) {
    writeLog(
        L"Error from SendStartScanCommand....The return status is not good.... check for status "
        L"dump text file");
    ErrorHandler(status, static_cast<int>(m_bUsingTevraUI));
    return USB_ERR_GENERAL;
  }

  m_pImageThreadArgs = new LowEndImageThreadArgs{this, m_pCallback, nullptr};
  const HANDLE thread = startThread(GetImageLowEndUSBThreadProc, m_pImageThreadArgs);
  tvrscn::storeThreadHandle(m_hImageThread, thread);
  if (thread == nullptr) {
    delete m_pImageThreadArgs;
    m_pImageThreadArgs = nullptr;
    ScanBaseClient::SendNotification(m_pCallback, NOTIFY_JOB_ABORTED, TVR_NOTIF_PRIORITY_NORMAL,
                                     "");
  }
  return USB_SUCCESS;
}
