// The settings source of the QZ family.
#ifndef TVRSCN_QZ_SCAN_DATA_SOURCE_H
#define TVRSCN_QZ_SCAN_DATA_SOURCE_H

#include "tvrscn/export.h"
#include "tvrscn/qz_wire.h"
#include "tvrscn/scan_data_source.h"

// Keeps the two pages that the device tells of itself; they are all zero until they were set. What
// the device cannot do is replaced in the records that go out: its limits win over the settings.
class TVRSCN_API CQZUSBScanDataSource : public CUSBScanDataSource {
 public:
  CQZUSBScanDataSource();
  CQZUSBScanDataSource(const CQZUSBScanDataSource& other);
  CQZUSBScanDataSource& operator=(const CQZUSBScanDataSource& other);
  ~CQZUSBScanDataSource() override;

  // Writes the job's window, all 48 bytes; null does nothing. Calls SetBrightnessContrast, so each
  // call divides brightness and contrast once more.
  void FillSetWindowData(USBVendorSetWindowData* window);

  // Writes what the job wants of feeder and duplex unit into a page that the caller has zeroed;
  // null does nothing.
  void FillModeSelectData(USBVendorSubDevicePage* page);

  // Copy a page in; a pointer to the kept one, valid as long as the source.
  void SetSubDevicesPageData(USBVendorSubDevicePage* page);
  USBVendorSubDevicePage* GetSubDevicesPageData();
  void SetMeasurementUnitData(USBVendorMeasurementUnit* unit);
  USBVendorMeasurementUnit* GetMeasurementUnitData();

 private:
  friend struct QZTestPeer;

  // A resolution outside the device's limits becomes its smallest one.
  void SetResolutionToScan(USBVendorSetWindowData* window);
  void SetScanSizeToScan(USBVendorSetWindowData* window);
  void SetBGRemoval(USBVendorSetWindowData* window);
  void SetColorToScan(USBVendorSetWindowData* window);

  USBVendorSubDevicePage m_subDevicePage;      // as last received
  USBVendorMeasurementUnit m_measurementUnit;  // as last received
};

#endif  // TVRSCN_QZ_SCAN_DATA_SOURCE_H
