// Everything that a scan driver needs of tvrscn_USBClient. Start with scan_client.h.
#ifndef TVRSCN_USBCLIENT_H
#define TVRSCN_USBCLIENT_H

#include "tvrscn/big_endian.h"
#include "tvrscn/export.h"
#include "tvrscn/hp_controller.h"
#include "tvrscn/hp_scan_data_source.h"
#include "tvrscn/hp_wire.h"
#include "tvrscn/little_endian.h"
#include "tvrscn/lowend_controller.h"
#include "tvrscn/lowend_scan_data_source.h"
#include "tvrscn/lowend_wire.h"
#include "tvrscn/notifications.h"
#include "tvrscn/product_data.h"
#include "tvrscn/qz_controller.h"
#include "tvrscn/qz_scan_data_source.h"
#include "tvrscn/qz_wire.h"
#include "tvrscn/scan_client.h"
#include "tvrscn/scan_data_source.h"
#include "tvrscn/store_app.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"
#include "tvrscn/tevrautil/named_mutex.h"
#include "tvrscn/tevrautil/scan_ui_data.h"
#include "tvrscn/types.h"
#include "tvrscn/usb_controller.h"
#include "tvrscn/usb_exception.h"

#endif  // TVRSCN_USBCLIENT_H
