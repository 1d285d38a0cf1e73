// The settings source of the HP family.
#ifndef TVRSCN_HP_SCAN_DATA_SOURCE_H
#define TVRSCN_HP_SCAN_DATA_SOURCE_H

#include "tvrscn/export.h"
#include "tvrscn/hp_wire.h"
#include "tvrscn/scan_data_source.h"

class TVRSCN_API CHPUSBScanDataSource : public CUSBScanDataSource {
 public:
  CHPUSBScanDataSource();
  CHPUSBScanDataSource(const CHPUSBScanDataSource& other);
  CHPUSBScanDataSource& operator=(const CHPUSBScanDataSource& other);
  ~CHPUSBScanDataSource() override;

  // Writes the job's settings into a request that holds the template's values; an unknown text
  // leaves its field as it is. Calls SetBrightnessContrast, so it runs once per source.
  void FillSetWindowData(HPPKUSBSetWindowParameterRequest& request);
};

#endif  // TVRSCN_HP_SCAN_DATA_SOURCE_H
