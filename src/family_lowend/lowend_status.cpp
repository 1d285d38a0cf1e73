// How the end of a failed LowEnd job is told, on the thread that failed.
#include "client/failure_dialog.h"
#include "tvrscn/lowend_controller.h"
#include "tvrscn/scan_client.h"
#include "usb/log_writer.h"

namespace {

using tvrscn::FailureText;
using Texts = CErrorCodeDictionary;

struct FailureRow {
  USBStatusErrors status;
  FailureText text;
  FailureText title;
  NotificationType notification;
};

constexpr FailureRow kFailures[] = {
    {USB_ERR_RESOURCE, &Texts::m_strCommFailure, &Texts::m_strTitle, NOTIFY_JOB_ABORTED},
    {USB_ERR_WRITE, &Texts::m_strInvalidRequest, &Texts::m_strTitle, NOTIFY_SCAN_FAILED},
    {USB_ERR_GENERAL, &Texts::m_strGeneralError, &Texts::m_strTitle, NOTIFY_SCAN_FAILED},
    {USB_ERR_POWER_RESET, &Texts::m_strCommFailure, &Texts::m_strTitle, NOTIFY_JOB_ABORTED},
    {USB_ERR_PAPER_JAM, &Texts::m_strPaperJam, &Texts::m_strPaperJamTitle, NOTIFY_SCAN_FAILED},
    {USB_ERR_COVER_OPEN, &Texts::m_strCoverOpen, &Texts::m_strTitle, NOTIFY_JOB_ABORTED},
    {USB_ERR_SCANNER_STATE, &Texts::m_strInvalidRequest, &Texts::m_strTitle, NOTIFY_SCAN_FAILED},
    {USB_ERR_COMMAND, &Texts::m_strCommFailure, &Texts::m_strTitle, NOTIFY_JOB_ABORTED},
    {USB_ERR_SCANNER_BUSY, &Texts::m_strScannerBusy, &Texts::m_strTitle, NOTIFY_SCANNER_BUSY},
    {USB_ERR_SCANNER_IN_USE, &Texts::m_strCoverOpen, &Texts::m_strTitle, NOTIFY_JOB_ABORTED},
    {USB_ERR_JOB_CANCELLED, &Texts::m_strJobCancelled, &Texts::m_strTitle, NOTIFY_JOB_ABORTED},
};
// All others; USB_ERR_OPEN, the end of a worker that threw, is one of them.
constexpr FailureRow kOtherFailure = {USB_SUCCESS, &Texts::m_strCommFailure,
                                      &Texts::m_strCommFailureTitle, NOTIFY_CONN_FAILURE};

const FailureRow& failureRow(USBStatusErrors status) {
  for (const FailureRow& row : kFailures) {
    if (row.status == status) return row;
  }
  return kOtherFailure;
}

void notify(const TVR_FP_CALLBACK* callback, NotificationType type) {
  ScanBaseClient::SendNotification(callback, type, TVR_NOTIF_PRIORITY_NORMAL, "");
}

void logFailureNotification() {
  tvrscn::writeLog(L"Sending FAILURE Notification to DS ...\n");
}

}  // namespace

int USB_LowEnd_Controller::ErrorHandler(USBStatusErrors status, int showDialog) {
  if (showDialog == 0 || !m_pErrorDictionary) {
    notify(m_pCallback, NOTIFY_CONN_FAILURE);
    logFailureNotification();
    return status;
  }
  const FailureRow& row = failureRow(status);
  if (m_bUsingTevraUI) {
    m_bErrorShown = true;
    // Ahead of the dialog, so that the caller can make room for it.
    notify(m_pCallback, NOTIFY_ERROR_DISPLAYED);
    tvrscn::showFailure(m_pErrorDictionary.get(), row.text, row.title);
    logFailureNotification();
  }
  notify(m_pCallback, row.notification);
  return status;
}
