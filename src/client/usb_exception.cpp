// From a failed exchange to a dialog and a notification. Nothing is kept between calls.
#include "tvrscn/usb_exception.h"

#include <string_view>

#include "client/failure_dialog.h"
#include "platform/dialog.h"
#include "tvrscn/scan_client.h"
#include "usb/log_writer.h"

namespace {

using tvrscn::FailureText;
using tvrscn::showFailure;

// Results of the handlers, fixed by their callers.
constexpr int kRetry = 1;
constexpr int kNoRetry = -1;
constexpr int kWithoutDialog = 1022;
constexpr int kOtherStatus = 52;

// Operation status of a QZ reply that carries sense data.
constexpr unsigned char kCheckCondition = 2;

struct SenseRow {
  std::string_view code;
  FailureText text;
  FailureText title;
  UINT flags;
};

constexpr std::string_view kCancelledSense = "060000";
constexpr SenseRow kSenseRows[] = {
    {"025300", &CErrorCodeDictionary::m_strPaperJam, &CErrorCodeDictionary::m_strPaperJamTitle,
     MB_TOPMOST | MB_RETRYCANCEL},
    {"050000", &CErrorCodeDictionary::m_strInvalidRequest, &CErrorCodeDictionary::m_strTitle,
     MB_TOPMOST},
    {"023A00", &CErrorCodeDictionary::m_strNoDocument, &CErrorCodeDictionary::m_strTitle,
     MB_TOPMOST},
    {"010400", &CErrorCodeDictionary::m_strCoverOpen, &CErrorCodeDictionary::m_strTitle,
     MB_TOPMOST},
    {"040000", &CErrorCodeDictionary::m_strDeviceError, &CErrorCodeDictionary::m_strTitle,
     MB_TOPMOST},
    {"041A00", &CErrorCodeDictionary::m_strDeviceError, &CErrorCodeDictionary::m_strTitle,
     MB_TOPMOST},
    {"042000", &CErrorCodeDictionary::m_strDeviceError, &CErrorCodeDictionary::m_strTitle,
     MB_TOPMOST},
    {"042400", &CErrorCodeDictionary::m_strDeviceError, &CErrorCodeDictionary::m_strTitle,
     MB_TOPMOST},
    {"042600", &CErrorCodeDictionary::m_strDeviceError, &CErrorCodeDictionary::m_strTitle,
     MB_TOPMOST},
};

SenseRow senseRow(std::string_view code, bool busy) {
  const FailureText title = &CErrorCodeDictionary::m_strTitle;
  if (code == kCancelledSense) {
    return {code, &CErrorCodeDictionary::m_strJobCancelled, title, MB_TOPMOST};
  }
  if (busy) return {code, &CErrorCodeDictionary::m_strScannerBusy, title, MB_TOPMOST};
  for (const SenseRow& row : kSenseRows) {
    if (row.code == code) return row;
  }
  return {code, &CErrorCodeDictionary::m_strGeneralError, title, MB_TOPMOST};
}

struct OperationRow {
  unsigned char operationStatus;
  FailureText text;
};

constexpr OperationRow kOperationRows[] = {
    {8, &CErrorCodeDictionary::m_strScannerBusy},  {9, &CErrorCodeDictionary::m_strDeviceError},
    {24, &CErrorCodeDictionary::m_strDeviceError}, {33, &CErrorCodeDictionary::m_strDeviceError},
    {34, &CErrorCodeDictionary::m_strDeviceError}, {35, &CErrorCodeDictionary::m_strDeviceError},
    {36, &CErrorCodeDictionary::m_strDeviceError},
};

void showOperationStatus(unsigned char operationStatus, const CErrorCodeDictionary* dictionary) {
  for (const OperationRow& row : kOperationRows) {
    if (row.operationStatus == operationStatus) {
      showFailure(dictionary, row.text, &CErrorCodeDictionary::m_strTitle);
      return;
    }
  }
  showFailure(dictionary, &CErrorCodeDictionary::m_strCommFailure,
              &CErrorCodeDictionary::m_strCommFailureTitle);
}

void notify(const TVR_FP_CALLBACK* callback, NotificationType type) {
  ScanBaseClient::SendNotification(callback, type, TVR_NOTIF_PRIORITY_NORMAL, "");
}

}  // namespace

int USBException::m_bIsCommError = 0;

USBException::USBException() = default;
USBException::USBException(const USBException& other) = default;
USBException& USBException::operator=(const USBException& other) = default;
USBException::~USBException() = default;

int USBException::USBExceptionHandler(std::string senseCode, int busy, TVR_FP_CALLBACK* callback,
                                      const CErrorCodeDictionary* dictionary, int showDialog) {
  if (senseCode.empty()) {
    tvrscn::writeLog(L"USB error code is invalid");
    return kNoRetry;
  }
  if (showDialog == 0) {
    notify(callback, NOTIFY_SCAN_FAILED);
    return kWithoutDialog;
  }
  int result = kNoRetry;
  if (dictionary != nullptr) {
    const SenseRow row = senseRow(senseCode, busy != 0);
    const bool mayRetry = (row.flags & MB_RETRYCANCEL) == MB_RETRYCANCEL;
    const int answer = showFailure(dictionary, row.text, row.title, row.flags);
    if (mayRetry && answer == IDRETRY) result = kRetry;
  }
  notify(callback, NOTIFY_SCAN_FAILED);
  return result;
}

int USBException::USBReturnHandler(TVR_FP_CALLBACK* callback, int status,
                                   unsigned char operationStatus,
                                   const CErrorCodeDictionary* dictionary, int showDialog) {
  if (showDialog == 0) {
    notify(callback, NOTIFY_CONN_FAILURE);
    return kWithoutDialog;
  }
  if (status != USB_ERR_GENERAL) {
    if (dictionary != nullptr) {
      showFailure(dictionary, &CErrorCodeDictionary::m_strCommFailure,
                  &CErrorCodeDictionary::m_strCommFailureTitle);
    }
    notify(callback, NOTIFY_CONN_FAILURE);
    tvrscn::writeLog(L"Sending CONNFAILURE Notification to DS ...\n");
    return status == USB_ERR_CONNECTION ? USB_ERR_CONNECTION : kOtherStatus;
  }
  // The sense data says more, and USBExceptionHandler reports it.
  if (operationStatus == kCheckCondition) return USB_ERR_GENERAL;
  showOperationStatus(operationStatus, dictionary);
  notify(callback, NOTIFY_CONN_FAILURE);
  return USB_ERR_GENERAL;
}

int USBException::USBReturnHandlerForLowEnd(TVR_FP_CALLBACK* callback, unsigned char replyStatus,
                                            const CErrorCodeDictionary* dictionary,
                                            int showDialog) {
  if (showDialog == 0) {
    notify(callback, NOTIFY_CONN_FAILURE);
    return kWithoutDialog;
  }
  if (replyStatus == 1 || replyStatus == 2) {
    showFailure(dictionary, &CErrorCodeDictionary::m_strDeviceError,
                &CErrorCodeDictionary::m_strTitle);
  } else {
    showFailure(dictionary, &CErrorCodeDictionary::m_strCommFailure,
                &CErrorCodeDictionary::m_strCommFailureTitle);
  }
  notify(callback, NOTIFY_CONN_FAILURE);
  return USB_ERR_GENERAL;
}
