// What leaves the libraries. Each library defines its *_BUILD macro while it is itself compiled;
// everybody else imports. Nothing without one of these marks is visible outside.
#ifndef TVRSCN_EXPORT_H
#define TVRSCN_EXPORT_H

#if defined(_WIN32)
#define TVRSCN_EXPORT_SYMBOL __declspec(dllexport)
#define TVRSCN_IMPORT_SYMBOL __declspec(dllimport)
#else
#define TVRSCN_EXPORT_SYMBOL __attribute__((visibility("default")))
#define TVRSCN_IMPORT_SYMBOL __attribute__((visibility("default")))
#endif

// tvrscn_USBClient, the scan client library.
#if defined(TVRSCN_USBCLIENT_BUILD)
#define TVRSCN_API TVRSCN_EXPORT_SYMBOL
#else
#define TVRSCN_API TVRSCN_IMPORT_SYMBOL
#endif

// tvrscn_tevrautil, the utility library of the suite.
#if defined(TVRSCN_TEVRAUTIL_BUILD)
#define TVRSCN_UTIL_API TVRSCN_EXPORT_SYMBOL
#else
#define TVRSCN_UTIL_API TVRSCN_IMPORT_SYMBOL
#endif

// tvrscn_TDSPClient, the device status library of the suite.
#if defined(TVRSCN_TDSPCLIENT_BUILD)
#define TVRSCN_TDSP_API TVRSCN_EXPORT_SYMBOL
#else
#define TVRSCN_TDSP_API TVRSCN_IMPORT_SYMBOL
#endif

#endif  // TVRSCN_EXPORT_H
