// The flow of one HP job. The device is asked page by page; a feeder says that it is empty by a
// check condition with its own message, which is the normal end of a job of several pages.
#include "family_hp/hp_scan_job.h"

#include <algorithm>
#include <cstdlib>

#include "platform/device_file.h"
#include "platform/threads.h"
#include "usb/log_writer.h"

namespace {

using tvrscn::writeLog;

constexpr DWORD kPositionBusyWait = 500;  // milliseconds, all three
constexpr DWORD kBeforePageWait = 200;
constexpr DWORD kReadBusyWait = 100;

// Numbers the page files of this process, from job to job, and is never reset. Files are named by
// its signed value.
std::uint16_t scanPageCounter = 1;

bool hasMessage(std::uint8_t statusCode, std::uint8_t messageFlag) {
  return statusCode == HPPKUSB_STATUS_CHECK_CONDITION && messageFlag == kHPMessagePresent;
}

bool isTaken(std::uint8_t statusCode) {
  return statusCode == HPPKUSB_STATUS_BUSY || statusCode == HPPKUSB_STATUS_IN_USE;
}

HPPKUSBMessageData message(const BigEndian16& word) {
  return static_cast<HPPKUSBMessageData>(word.value());
}

// Header, data and end blocks, by the device's own rule for their numbers. Zero, the type in an
// answer that never came, is none of them.
bool isImageBlock(std::uint8_t blockType) {
  constexpr unsigned kOffset = 0x90;
  constexpr unsigned kMask = 0xEE;
  constexpr std::uint8_t kNoImage = 0x71;
  return ((blockType + kOffset) & kMask) == 0 && blockType != kNoImage;
}

USBStatusErrors logTransferFailure() {
  writeLog(L"Received Error code : %lu", {GetLastError()});
  return USB_ERR_COMMAND;
}

USBStatusErrors logInUse() {
  writeLog(L"Scanner is in use. Please try again later");
  return USB_ERR_SCANNER_BUSY;
}

// Zeroed, since a read that fails leaves its part as it was; null when the memory cannot be had.
// What the device announces is not touched before it comes, so a size that is a lie costs nothing.
std::shared_ptr<unsigned char> allocateBlock(std::uint32_t size) {
  auto* bytes = static_cast<unsigned char*>(std::calloc(std::max<std::size_t>(size, 1), 1));
  return {bytes, std::free};
}

}  // namespace

USBStatusErrors HPScanJob::run() {
  if (const auto failure = inquire()) return *failure;
  if (const auto failure = reserve()) return *failure;
  if (setWindow()) readPages();
  close();
  return result_;
}

std::optional<USBStatusErrors> HPScanJob::inquire() {
  HPPKUSBInquiryResponse answer = {};
  writeLog(L"COMMAND: INQUIRY");
  if (controller_.SendInquiryCommand(answer) == 0) return logTransferFailure();
  if (isTaken(answer.statusCode)) return logInUse();
  if (answer.statusCode != HPPKUSB_STATUS_GOOD) return USB_ERR_COMMAND;

  feeder_ = answer.documentSource == kHPDocumentSourceFeeder;
  controller_.m_scanDataSource->SetPaperSource(static_cast<int>(feeder_));
  return std::nullopt;
}

std::optional<USBStatusErrors> HPScanJob::reserve() {
  HPPKUSBReserveUnitResponse answer = {};
  writeLog(L"COMMAND: RESERVE UNIT");
  if (controller_.SendReserveUnitCommand(answer) == 0) return logTransferFailure();
  if (answer.statusCode == HPPKUSB_STATUS_NO_MEMORY ||
      answer.statusCode == HPPKUSB_STATUS_NO_RESOURCE) {
    writeLog(L"Scanner is not allocated memory new scan operation. Please try again later");
    return USB_ERR_RESOURCE;
  }
  if (isTaken(answer.statusCode)) return logInUse();
  if (hasMessage(answer.statusCode, answer.messageFlag)) {
    const USBStatusErrors status = controller_.GetMessageScannerStatus(message(answer.messageData));
    if (status != USB_SUCCESS) return status;
  }
  return std::nullopt;
}

bool HPScanJob::setWindow() {
  HPPKUSBSetWindowParameterResponse answer = {};
  controller_.SendSetWndParamCommand(answer);
  logStatus(L"COMMAND: SET_WINDOW_PARAM Status: %S", answer.statusCode);
  switch (answer.statusCode) {
    case HPPKUSB_STATUS_GOOD:
      controller_.GetMessageScannerStatus(message(answer.messageData));
      writeLog(L"Height Received: %lu", {answer.imageHeight.value()});
      writeLog(L"Width Received: %lu ", {answer.imageWidth.value()});
      return true;
    case HPPKUSB_STATUS_CHECK_CONDITION:
      if (answer.messageFlag == kHPMessagePresent) {
        controller_.GetMessageScannerStatus(message(answer.messageData));
        result_ = USB_ERR_GENERAL;
      }
      return false;
    case HPPKUSB_STATUS_CANCELLED:
      result_ = USB_ERR_GENERAL;
      return false;
    case HPPKUSB_STATUS_IN_USE:
      result_ = USB_ERR_SCANNER_IN_USE;
      return false;
    default:
      // Busy too: such a job ends well, without a page.
      return false;
  }
}

void HPScanJob::readPages() {
  bool done = false;
  do {
    switch (askPosition()) {
      case Position::kPage:
        done = !readPage();
        break;
      case Position::kWait:
        done = false;
        break;
      case Position::kStop:
        done = true;
        break;
    }
  } while (feeder_ && !done);  // the flatbed is asked once, whatever it answers

  writeLog(L"Total Page Scanned : %d", {pages_});
  if (pages_ == 0) result_ = USB_ERR_GENERAL;
}

HPScanJob::Position HPScanJob::askPosition() {
  HPPKUSBObjectPosition answer = {};
  controller_.SendObjectPositionCommand(answer);
  logStatus(L"COMMAND: OBJECT POSITION Status: %S", answer.statusCode);
  switch (answer.statusCode) {
    case HPPKUSB_STATUS_BUSY:
      writeLog(L"Scanner status : Busy !!! wait and continuing....");
      Sleep(kPositionBusyWait);
      return Position::kWait;
    case HPPKUSB_STATUS_CHECK_CONDITION:
      return checkCondition(message(answer.messageData));
    case HPPKUSB_STATUS_GOOD:
      Sleep(kBeforePageWait);
      return Position::kPage;
    default:
      writeLog(L"Received CANCEL Signal and Skipping");
      return Position::kStop;
  }
}

HPScanJob::Position HPScanJob::checkCondition(HPPKUSBMessageData message) {
  result_ = controller_.GetMessageScannerStatus(message);
  if (message == HPPKUSB_MESSAGE_NO_DOCUMENT) {
    writeLog(L"Scanner status message %s: check condition and no document");
    result_ = USB_SUCCESS;
  }
  return Position::kStop;
}

bool HPScanJob::readPage() {
  Page page;
  readBlocks(page);
  return finishPage(page);
}

void HPScanJob::readBlocks(Page& page) {
  while (!page.endSeen) {
    HPPKUSBReadResponse answer = {};
    controller_.SendReadCommand(answer);
    logStatus(L"COMMAND: READ Status: %S", answer.statusCode);
    if (answer.statusCode == HPPKUSB_STATUS_BUSY) {
      Sleep(kReadBusyWait);
      continue;
    }
    if (answer.statusCode != HPPKUSB_STATUS_GOOD || !isImageBlock(answer.blockType)) return;
    if (!readBlock(answer, page)) return;
  }
}

bool HPScanJob::readBlock(const HPPKUSBReadResponse& announced, Page& page) {
  const std::uint32_t size = announced.blockSize.value();
  page.totalSize += size;
  page.totalHeight = static_cast<std::uint16_t>(page.totalHeight + announced.verticalSize.value());
  page.width = announced.horizontalSize.value();
  writeLog(L"Received Block Size: %lu", {size});
  writeLog(L"Received Vertical  Size: %u", {announced.verticalSize.value()});
  writeLog(L"Received Horizontal Size: %u", {page.width});
  if (announced.blockType == HPPKUSB_BLOCK_END) {
    page.endSeen = true;
    writeLog(L"Received end block");
    ++pages_;
    result_ = USB_SUCCESS;
  } else if (announced.blockType == HPPKUSB_BLOCK_JPEG_HEADER) {
    writeLog(L"Received JPEG Header block");
  }

  std::shared_ptr<unsigned char> bytes = allocateBlock(size);
  if (bytes == nullptr) return false;
  controller_.SendReadImageCommand(bytes.get(), size);
  writeLog(L"COMMAND: READ IMAGE");
  page.blocks.emplace_back(std::move(bytes), size);
  return true;
}

bool HPScanJob::finishPage(Page& page) {
  // Pages counts the whole job: a page that lost its end block is kept when one before it was
  // whole.
  if (page.blocks.empty() || pages_ == 0 || page.totalSize == 0) {
    writeLog(L"No Proper Scanned Page Information and Skipping");
    return false;
  }
  writeLog(L"Scanned Page : %d", {pages_});
  writeLog(L"Total Block Size : %lu", {page.totalSize});
  writeLog(L"Total Height : %u", {page.totalHeight});
  writeLog(L"Total Width : %u", {page.width});
  const auto fileNumber = static_cast<short>(scanPageCounter);
  ++scanPageCounter;
  controller_.prepareFinalImage(page.blocks, page.width, page.totalHeight, fileNumber);
  return true;
}

void HPScanJob::close() {
  HPPKUSBResponse answer = {};
  controller_.SendAbortCommand(answer);
  logStatus(L"COMMAND: ABORT Status: %S", answer.statusCode);
  controller_.SendReleaseUnitCommand(answer);
  logStatus(L"COMMAND: RELEASE_UNIT Status: %S", answer.statusCode);
}

void HPScanJob::logStatus(const wchar_t* format, std::uint8_t statusCode) {
  writeLog(format, {controller_.GetStatusCodeAsString(static_cast<HPPKUSBStatusCode>(statusCode))});
}
