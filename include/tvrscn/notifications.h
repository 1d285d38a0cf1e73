// How a job speaks to its caller: status codes, notification codes and the record that carries
// them. Values and layout cross into the driver and never change.
#ifndef TVRSCN_NOTIFICATIONS_H
#define TVRSCN_NOTIFICATIONS_H

#include <cstddef>
#include <cstdint>

// Status of a command, a sequence or a job inside the library. CScanUSBClient::Scan uses another
// convention, 0 and 1; the two are never mixed.
enum USBStatusErrors : std::int32_t {
  USB_ERR_CONNECTION = 15000,       // the connection failed
  USB_ERR_RESOURCE = 15001,         // no memory or resource for the job, at the device or here
  USB_ERR_READ = 15002,             // a read failed, came short, or brought a failing status
  USB_ERR_WRITE = 15005,            // a write failed; HP: a parameter cannot be saved
  USB_ERR_OPEN = 15007,             // the endpoint could not be opened
  USB_ERR_NO_DEVICE_SETUP = 15008,  // the device-setup service, or a function of it, is missing
  USB_SUCCESS = 15009,
  USB_ERR_GENERAL = 15010,         // failure without further detail
  USB_ERR_POWER_RESET = 15011,     // the device was switched on or reset
  USB_ERR_PAPER_JAM = 15012,       // document jam
  USB_ERR_COVER_OPEN = 15013,      // a cover is open
  USB_ERR_SCANNER_STATE = 15015,   // the scanner refuses in its present state
  USB_ERR_COMMAND = 15016,         // a command failed or was refused
  USB_ERR_SCANNER_BUSY = 15017,    // the scanner is busy or in use
  USB_ERR_SCANNER_IN_USE = 15018,  // busy when the window was set
  USB_ERR_JOB_CANCELLED = 15019,   // cancelled at the device
};

// What a notification says. Its text is empty but for NOTIFY_IMAGE_READY.
enum NotificationType : std::int32_t {
  NOTIFY_SCANNER_BUSY = 1001,      // another job has the scanner; the job is over
  NOTIFY_SCAN_FAILED = 1002,       // the job failed
  NOTIFY_TRANSFER_STARTED = 1004,  // the first page is there; once a job, before its IMAGE_READY
  NOTIFY_IMAGE_READY = 1005,       // one page is stored; text holds the path of its file
  NOTIFY_JOB_COMPLETE = 1006,      // the job ended well; the last notification of a good job
  NOTIFY_CONN_FAILURE = 1011,      // the link or the device failed; the job is over
  NOTIFY_ERROR_DISPLAYED = 1020,   // LowEnd: a failure dialog is about to open
  NOTIFY_JOB_ABORTED = 1021,       // the device ended the job in a state that the user can cure
};

// Priorities of the suite. This library sends TVR_NOTIF_PRIORITY_NORMAL only.
enum TVR_DEVICE_NOTIF_PRIORITY : std::int32_t {
  TVR_NOTIF_PRIORITY_NORMAL = 2,
};

// Length of ScanNotification::text in bytes, the terminating zero included.
constexpr std::size_t kScanNotificationTextSize = 1024;

// The record handed to the caller's function. It lives for the length of that call: a receiver
// that wants to keep the text copies it.
struct ScanNotification {
  NotificationType type;
  TVR_DEVICE_NOTIF_PRIORITY priority;
  // Narrow text, zero-filled behind its end. A path is narrowed by keeping the low byte of each
  // character; a text that is too long is cut, its terminator in place.
  char text[kScanNotificationTextSize];
};
static_assert(offsetof(ScanNotification, type) == 0, "fixed by the driver contract");
static_assert(offsetof(ScanNotification, priority) == 4, "fixed by the driver contract");
static_assert(offsetof(ScanNotification, text) == 8, "fixed by the driver contract");
static_assert(sizeof(ScanNotification) == 1032, "fixed by the driver contract");

// The caller's callback record. The caller owns it and keeps it until the job has ended. A null
// pointer to a record silences notifications; a record whose two fields are null is refused.
struct TVR_FP_CALLBACK {
  // Called synchronously on the thread that has something to say.
  void (*pfnNotify)(ScanNotification* notification, void* context);
  // Handed back unchanged as the second argument.
  void* pContext;
};

// Stands in the signature of Scan and is never called by this library.
struct TVR_FP_DEVCOMM_CALLBACK {
  void (*pfnNotify)(void* context);
  void* pContext;
};

#endif  // TVRSCN_NOTIFICATIONS_H
