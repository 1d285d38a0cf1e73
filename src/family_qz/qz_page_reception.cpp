#include "family_qz/qz_page_reception.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <limits>
#include <memory>
#include <new>
#include <string>

#include "family_qz/qz_transaction.h"
#include "platform/files.h"
#include "tvrscn/scan_client.h"
#include "tvrscn/tevrautil/gdi_wrapper.h"
#include "tvrscn/usb_exception.h"
#include "usb/log_writer.h"
#include "usb/text.h"

namespace {

// Number of the next page file, for all controllers and jobs of the process.
int s_imageFileNumber = 1;

constexpr int kProcessingFailed = 1;
constexpr int kNoImaging = 1018;

}  // namespace

int QZPageReception::onReply(const USBVendorPacketHeader& header, char* buffer) {
  if (header.bOperationStatus != USBVENDOR_STATUS_GOOD) {
    tvrscn::writeLog(L"Read: Operation Error %s\r\n", {controller_.m_operationStatusText});
    return 0;
  }
  const unsigned state = header.bScannerStatus & kQZStateMask;
  if (state != USBVENDOR_STATE_TRANSFERRING && state != USBVENDOR_STATE_IMAGE_END &&
      state != USBVENDOR_STATE_BLOCK_END) {
    tvrscn::writeLog(L"Read: Device Status Error %s\r\n", {controller_.m_operationStatusText});
    return 0;
  }
  controller_.readImageData(buffer, header.dwDataLength.value());
  if (state == USBVENDOR_STATE_TRANSFERRING) return QZTransaction::readOn(controller_);
  if (state == USBVENDOR_STATE_IMAGE_END) return finishPage();
  // The block that follows is not read: its bytes come with the next page, if there is one.
  controller_.sendReadBlockHeaderCommand();
  return 0;
}

int QZPageReception::finishPage() {
  try {
    const std::string name = fileName();
    const std::wstring path = controller_.ConvertStringToWstring(name);
    writeFile(path);
    std::free(controller_.m_imageData);
    controller_.m_imageData = nullptr;
    controller_.m_imageDataSize = 0;
    if (const int failure = process(path); failure != 0) return failure;
    ++s_imageFileNumber;
    announce(name);
  } catch (const std::exception& error) {
    tvrscn::writeLog(L"Error: Writing image data to temp path is failed %s", {error.what()});
    USBException::USBExceptionHandler("050000", 0, controller_.m_pCallback,
                                      controller_.m_pErrorDictionary.get(),
                                      static_cast<int>(controller_.m_bUsingTevraUI));
  }
  return 0;
}

// A file that cannot be written is no failure here: the page is announced all the same.
void QZPageReception::writeFile(const std::wstring& path) {
  std::ofstream file(tvrscn::systemPath(path), std::ios::binary | std::ios::trunc);
  if (controller_.m_imageData != nullptr)
    file.write(controller_.m_imageData, std::streamsize{controller_.m_imageDataSize});
  file.flush();
  file.close();
}

int QZPageReception::process(std::wstring path) {
  const std::shared_ptr<CQZUSBScanDataSource> source = controller_.m_scanDataSource;
  if (source == nullptr || !source->isNeedImageProcessing()) return 0;
  try {
    const std::unique_ptr<GdiWrapper> imaging(new (std::nothrow) GdiWrapper);
    if (imaging == nullptr) return kNoImaging;
    const int brightness = source->getBrightness();
    const int contrast = source->getContrast();
    if (source->getColorToScan() == "BlackAndWhite") {
      imaging->BlackandWhiteImageProcessing(path, brightness, contrast);
    } else if (brightness != 0 || contrast != 0) {
      imaging->BrightnessContrastApplyEffect(path, brightness, contrast);
    }
    return 0;
  } catch (...) {
    return kProcessingFailed;
  }
}

void QZPageReception::announce(const std::string& name) {
  TVR_FP_CALLBACK* const callback = controller_.m_pCallback;
  if (!controller_.m_bImageNotified) {
    ScanBaseClient::SendNotification(callback, NOTIFY_TRANSFER_STARTED, TVR_NOTIF_PRIORITY_NORMAL,
                                     "");
    controller_.m_bImageNotified = true;
  }
  ScanBaseClient::SendNotification(callback, NOTIFY_IMAGE_READY, TVR_NOTIF_PRIORITY_NORMAL, name);
}

// Callers know a page by the narrow form of its path, and it is that path which is written.
std::string QZPageReception::fileName() {
  return tvrscn::narrow(controller_.m_scanFolder + tvrscn::kPathSeparator + L"Image_" +
                        std::to_wstring(s_imageFileNumber) + L".jpg");
}

// Grows by just what comes: a reserve would cost the most where memory is short.
void USB_QZ_Controller::readImageData(char* data, unsigned long size) {
  constexpr std::size_t kLargestPage = std::numeric_limits<std::uint32_t>::max();
  const bool first = m_imageData == nullptr;
  const std::size_t kept = first ? 0 : m_imageDataSize;
  const std::size_t total = kept + size;
  // Of no bytes, one allocator gives no memory and another takes away what there was.
  const std::size_t needed = std::max<std::size_t>(total, 1);
  void* const grown = total > kLargestPage ? nullptr
                      : first              ? std::malloc(needed)
                                           : std::realloc(m_imageData, needed);
  if (grown == nullptr) {
    tvrscn::writeLog(first ? L" Error readImageData: malloc failed \r\n"
                           : L" Error: readImageData: realloc failed \r\n");
    return;
  }
  m_imageData = static_cast<char*>(grown);
  if (size != 0) std::memcpy(m_imageData + kept, data, size);
  m_imageDataSize = static_cast<std::uint32_t>(total);
}
