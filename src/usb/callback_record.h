// What a job asks of the caller's callback record before it starts.
#ifndef TVRSCN_USB_CALLBACK_RECORD_H
#define TVRSCN_USB_CALLBACK_RECORD_H

#include "tvrscn/notifications.h"

namespace tvrscn {

// A record that neither says where to call nor for whom is a mistake of the caller. No record at
// all is none: it silences the job.
inline bool isEmptyRecord(const TVR_FP_CALLBACK* callback) {
  return callback != nullptr && callback->pfnNotify == nullptr && callback->pContext == nullptr;
}

}  // namespace tvrscn

#endif  // TVRSCN_USB_CALLBACK_RECORD_H
