// The worker of a job: first every packet up to the last one into memory, then the files. It runs
// on a thread of its own, so what goes wrong here has no caller to go to: every way out ends in a
// notification, and in the release of what the worker was given.
#include <cstdint>
#include <cstring>
#include <exception>
#include <string_view>

#include "family_lowend/lowend_framing.h"
#include "family_lowend/lowend_image_files.h"
#include "family_lowend/lowend_thread_handle.h"
#include "platform/device_file.h"
#include "tvrscn/lowend_controller.h"
#include "tvrscn/scan_client.h"
#include "usb/log_writer.h"

namespace {

using tvrscn::writeLog;

// What the first read of a packet asks for.
constexpr std::size_t kFirstRead = 512;
// Packets of this size, and payloads of the other, control the transfer and carry no record.
constexpr std::size_t kControlPacket = 12;
constexpr std::uint32_t kControlPayload = 2;

constexpr std::string_view kJobCancelled = "JOBCANCEL";
constexpr std::string_view kJobDone = "JOBDONE";

bool isUsable(const LowEndImageThreadArgs* arguments) {
  if (arguments == nullptr || arguments->controller == nullptr) return false;
  const TVR_FP_CALLBACK* callback = arguments->callback;
  return callback == nullptr || callback->pfnNotify != nullptr || callback->pContext != nullptr;
}

// What the first read of a packet brought: its header and the start of its payload.
struct PacketStart {
  char bytes[kFirstRead] = {};
  std::size_t count = 0;
  LowEnd_USB_Response header = {};

  bool isImagePacket() const {
    return count >= sizeof header && header.escapeByte == kLowEndEscapeByte &&
           header.leadByte == kLowEndLeadByte && header.operationCode == LowEndOpImageData;
  }
  bool isLast() const { return header.statusByte == kLowEndLastPacket; }
  bool isControl() const {
    return count == kControlPacket || header.payloadLength.value() == kControlPayload;
  }
  std::string_view payload() const { return {bytes + sizeof header, count - sizeof header}; }
};

}  // namespace

unsigned USB_LowEnd_Controller::GetImageLowEndUSBThreadProc(void* argument) {
  const auto* arguments = static_cast<const LowEndImageThreadArgs*>(argument);
  if (!isUsable(arguments)) return 0;
  USB_LowEnd_Controller& controller = *arguments->controller;
  try {
    const USBStatusErrors status = controller.RetrieveScannedRecordData();
    if (status != USB_SUCCESS) {
      controller.ShutDownImageLowEndUSBThread();
      writeLog(
          L"Error from RetrieveScannedRecordData....The return status is not good.... check for "
          L"status dump text file");
      controller.ErrorHandler(status, static_cast<int>(controller.m_bUsingTevraUI));
      return USB_ERR_SCANNER_STATE;
    }
    LowEndImageFiles(controller).writeAll();
    ScanBaseClient::SendNotification(controller.m_pCallback, NOTIFY_JOB_COMPLETE,
                                     TVR_NOTIF_PRIORITY_NORMAL, "");
  } catch (const std::exception& error) {
    writeLog(L"%S", {error.what()});
    controller.ErrorHandler(USB_ERR_OPEN, static_cast<int>(controller.m_bUsingTevraUI));
    controller.ShutDownImageLowEndUSBThread();
    return USB_ERR_OPEN;
  }
  controller.ShutDownImageLowEndUSBThread();
  return USB_SUCCESS;
}

// Only a packet that says so is the last: nothing else ends this, and nothing here waits between
// reads.
USBStatusErrors USB_LowEnd_Controller::RetrieveScannedRecordData() {
  m_scannedRecords.clear();
  USBStatusErrors status = USB_SUCCESS;
  for (bool finished = false; !finished;) {
    PacketStart packet;
    packet.count = ReadResponse(packet.bytes, sizeof packet.bytes);
    std::memcpy(&packet.header, packet.bytes, sizeof packet.header);
    if (!packet.isImagePacket()) continue;
    finished = packet.isLast();
    if (packet.isControl()) continue;

    std::string record(packet.payload());
    if (m_scannedRecords.empty() && record.find(kJobCancelled) != std::string::npos) {
      status = USB_ERR_JOB_CANCELLED;
    }
    // Wraps where more came than was announced; no memory can hold that, and the job fails.
    ReadPayload(record, packet.header.payloadLength.value() - record.size());
    const std::size_t end = tvrscn::findLast(record, kJobDone);
    if (end != std::string::npos) record.resize(end);
    if (record.empty()) continue;
    const std::size_t length = record.size();
    m_scannedRecords.push_back({std::move(record), length});
  }
  return status;
}

long USB_LowEnd_Controller::ShutDownImageLowEndUSBThread() {
  delete m_pImageThreadArgs;
  m_pImageThreadArgs = nullptr;
  HANDLE thread = tvrscn::loadThreadHandle(m_hImageThread);
  if (thread != nullptr) CloseHandle(thread);
  return 0;
}
