// Handlers that turn a failed exchange into a dialog and a notification. Nothing throws this
// class; it is their home.
#ifndef TVRSCN_USB_EXCEPTION_H
#define TVRSCN_USB_EXCEPTION_H

#include <exception>
#include <string>

#include "tvrscn/export.h"
#include "tvrscn/notifications.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"

// In all three handlers callback and dictionary stay the caller's and may be null, and showDialog
// is the caller's wish for dialogs: with 0 the dictionary is not touched and the result is 1022. A
// dialog blocks the calling thread until the user has answered.
class TVRSCN_API USBException : public std::exception {
 public:
  USBException();
  USBException(const USBException& other);
  USBException& operator=(const USBException& other);
  ~USBException() override;

  // Reports a sense code of six characters ("023A00"). Returns 1 when the user wants to try again,
  // 1022 without dialogs, -1 otherwise. An empty code is logged and reported to nobody.
  static int USBExceptionHandler(std::string senseCode, int busy, TVR_FP_CALLBACK* callback,
                                 const CErrorCodeDictionary* dictionary, int showDialog);

  // Reports a failed exchange of the QZ family. Returns 1022 without dialogs, 15000 and 15010 for
  // these statuses, 52 for every other one. A check condition (status 15010, operationStatus 2) is
  // left to USBExceptionHandler.
  static int USBReturnHandler(TVR_FP_CALLBACK* callback, int status, unsigned char operationStatus,
                              const CErrorCodeDictionary* dictionary, int showDialog);

  // Reports a failing reply of the LowEnd family. Returns 1022 without dialogs, else 15010.
  static int USBReturnHandlerForLowEnd(TVR_FP_CALLBACK* callback, unsigned char replyStatus,
                                       const CErrorCodeDictionary* dictionary, int showDialog);

  static int m_bIsCommError;  // 0; for drivers, neither read nor written here
};

#endif  // TVRSCN_USB_EXCEPTION_H
