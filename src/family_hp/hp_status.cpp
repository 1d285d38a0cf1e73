// What the device says, in words and as a job status, and how the end of a failed job is told.
#include <string_view>

#include "client/failure_dialog.h"
#include "tvrscn/hp_controller.h"
#include "tvrscn/scan_client.h"
#include "usb/log_writer.h"

namespace {

using tvrscn::FailureText;

struct StatusRow {
  HPPKUSBStatusCode code;
  const char* text;
};

constexpr StatusRow kStatusTexts[] = {
    {HPPKUSB_STATUS_GOOD, "Good"},
    {HPPKUSB_STATUS_CHECK_CONDITION, "Check condition"},
    {HPPKUSB_STATUS_CANCELLED, "Cancelled"},
    {HPPKUSB_STATUS_BUSY, "Busy"},
    {HPPKUSB_STATUS_IN_USE, "Scanner in use"},
};

struct MessageRow {
  HPPKUSBMessageData message;
  const char* text;
  USBStatusErrors status;
};

// Compared as whole words: two bits at once have no row. No document has none either; the job flow
// treats it by itself.
constexpr MessageRow kMessages[] = {
    {HPPKUSB_MESSAGE_NO_ERROR, "No Error", USB_SUCCESS},
    {HPPKUSB_MESSAGE_COMMAND_ERROR, "Command Error", USB_ERR_COMMAND},
    {HPPKUSB_MESSAGE_SAVING_NOT_SUPPORTED, "Saving parameter is not supported", USB_ERR_WRITE},
    {HPPKUSB_MESSAGE_POWER_ON_RESET, "Power on / Reset set", USB_ERR_POWER_RESET},
    {HPPKUSB_MESSAGE_DOCUMENT_JAM, "Document JAM detected", USB_ERR_PAPER_JAM},
    {HPPKUSB_MESSAGE_COVER_OPEN, "Cover is being opened", USB_ERR_COVER_OPEN},
    {HPPKUSB_MESSAGE_WARMUP, "Scanner is in warmup", USB_ERR_SCANNER_STATE},
    {HPPKUSB_MESSAGE_LOCKING_ERROR, "Scanner locking error", USB_ERR_SCANNER_STATE},
    {HPPKUSB_MESSAGE_INVALID_AREA, "Requested Invalid area to scan", USB_ERR_SCANNER_STATE},
    {HPPKUSB_MESSAGE_RESOURCE_BUSY, "Scanner Resource Busy", USB_ERR_RESOURCE},
    {HPPKUSB_MESSAGE_INVALID_KEY, "Invalid Key is being sent", USB_ERR_SCANNER_STATE},
    {HPPKUSB_MESSAGE_BANKNOTE, "Banknote", USB_ERR_SCANNER_STATE},
    {HPPKUSB_MESSAGE_INSUFFICIENT_QUOTA, "Insufficient Quota (Job Accounting)",
     USB_ERR_SCANNER_STATE},
};

struct FailureRow {
  USBStatusErrors error;
  FailureText body;
  FailureText title;
  NotificationType notification;
};

constexpr FailureText kTitle = &CErrorCodeDictionary::m_strTitle;

constexpr FailureRow kFailures[] = {
    {USB_ERR_RESOURCE, &CErrorCodeDictionary::m_strCommFailure, kTitle, NOTIFY_JOB_ABORTED},
    {USB_ERR_POWER_RESET, &CErrorCodeDictionary::m_strCommFailure, kTitle, NOTIFY_JOB_ABORTED},
    {USB_ERR_COMMAND, &CErrorCodeDictionary::m_strCommFailure, kTitle, NOTIFY_JOB_ABORTED},
    {USB_ERR_WRITE, &CErrorCodeDictionary::m_strInvalidRequest, kTitle, NOTIFY_SCAN_FAILED},
    {USB_ERR_SCANNER_STATE, &CErrorCodeDictionary::m_strInvalidRequest, kTitle, NOTIFY_SCAN_FAILED},
    {USB_ERR_GENERAL, &CErrorCodeDictionary::m_strGeneralError, kTitle, NOTIFY_SCAN_FAILED},
    {USB_ERR_PAPER_JAM, &CErrorCodeDictionary::m_strPaperJam,
     &CErrorCodeDictionary::m_strPaperJamTitle, NOTIFY_SCAN_FAILED},
    {USB_ERR_COVER_OPEN, &CErrorCodeDictionary::m_strCoverOpen, kTitle, NOTIFY_JOB_ABORTED},
    {USB_ERR_SCANNER_IN_USE, &CErrorCodeDictionary::m_strCoverOpen, kTitle, NOTIFY_JOB_ABORTED},
    {USB_ERR_SCANNER_BUSY, &CErrorCodeDictionary::m_strScannerBusy, kTitle, NOTIFY_SCANNER_BUSY},
};
constexpr FailureRow kOtherFailure = {USB_SUCCESS, &CErrorCodeDictionary::m_strCommFailure,
                                      &CErrorCodeDictionary::m_strCommFailureTitle,
                                      NOTIFY_CONN_FAILURE};

const FailureRow& failureRow(USBStatusErrors error) {
  for (const FailureRow& row : kFailures) {
    if (row.error == error) return row;
  }
  return kOtherFailure;
}

void logFailureNotification() {
  tvrscn::writeLog(L"Sending FAILURE Notification to DS ...\n");
}

}  // namespace

std::string USB_HP_Controller::GetStatusCodeAsString(HPPKUSBStatusCode code) {
  for (const StatusRow& row : kStatusTexts) {
    if (row.code == code) return row.text;
  }
  return " ";
}

USBStatusErrors USB_HP_Controller::GetMessageScannerStatus(HPPKUSBMessageData message) {
  const char* text = "";
  USBStatusErrors status = USB_ERR_GENERAL;
  for (const MessageRow& row : kMessages) {
    if (row.message == message) {
      text = row.text;
      status = row.status;
    }
  }
  tvrscn::writeLog(L"Scanner status message : %S", {text});
  return status;
}

int USB_HP_Controller::ErrorHandler(USBStatusErrors error, int showDialog) {
  if (showDialog == 0 || !m_pErrorDictionary) {
    ScanBaseClient::SendNotification(m_pCallback, NOTIFY_CONN_FAILURE, TVR_NOTIF_PRIORITY_NORMAL,
                                     "");
    logFailureNotification();
    return error;
  }
  const FailureRow& row = failureRow(error);
  tvrscn::showFailure(m_pErrorDictionary.get(), row.body, row.title);
  logFailureNotification();
  ScanBaseClient::SendNotification(m_pCallback, row.notification, TVR_NOTIF_PRIORITY_NORMAL, "");
  return error;
}
