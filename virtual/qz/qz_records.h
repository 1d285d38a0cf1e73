// What the QZ scanner says of itself.
#ifndef TVRSCN_VIRTUAL_QZ_QZ_RECORDS_H
#define TVRSCN_VIRTUAL_QZ_QZ_RECORDS_H

#include "virtual/common/bytes.h"
#include "virtual/virtual_qz_scanner.h"

namespace tvrscn::virtual_device {

Bytes qzInquiryData();
// The two mode pages.
Bytes qzSubDevicePage(const QzScannerOptions& options);
Bytes qzMeasurementUnit();

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_QZ_QZ_RECORDS_H
