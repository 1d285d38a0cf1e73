// One model of the catalogue: what it is called, how it shows up on USB and on the network, what it
// offers and what it starts with. A plain record, complete in this header but for its constructor
// from values, which is the catalogue's own: nothing of it is exported.
#ifndef TVRSCN_PRODUCT_DATA_H
#define TVRSCN_PRODUCT_DATA_H

#include <cstdint>
#include <string>
#include <vector>

struct ProductData {
  ProductData() = default;  // texts and lists empty, numbers 0, flags false
  ProductData(const ProductData& other) = default;
  ProductData(ProductData&& other) = default;
  ProductData& operator=(const ProductData& other) = default;
  ProductData& operator=(ProductData&& other) = default;
  ~ProductData() = default;

  // A row of the catalogue; its four defaults are set apart. Not in the order of the fields. The
  // lists are texts of names with commas between them; a flag is true for any value but 0. Not
  // exported: drivers copy records and do not make rows.
  ProductData(const std::wstring& modelName, const std::wstring& sysObjectIds,
              const std::wstring& usbProductId, const std::wstring& usbVendorId,
              const std::wstring& conditionalModelDesignation, int ratedSpeed,
              const std::string& colorModes, const std::string& resolutions,
              const std::string& scanSides, const std::string& paperSupport,
              const std::wstring& mimic, const std::wstring& printerMimic,
              const std::wstring& twainSettingURL, int usbScanSupport, int nspScanSupport,
              int ippScanSupport, const std::wstring& sslSysObjectId,
              const std::wstring& mopriaSettingURL, int defaultNetworkScan,
              const std::string& controllerFamily, const std::string& usbEndPointHWID);

  std::wstring ModelName;                    // full name, the search key
  std::wstring SysObjectIds;                 // SNMP sysObjectID, dotted decimal
  std::wstring USBProductId;                 // four hexadecimal digits, upper case
  std::wstring USBVendorId;                  // four hexadecimal digits, the same for all models
  std::wstring ConditionalModelDesignation;  // short designation; two models may share one
  std::wstring Mimic;                        // file name of the picture of 48 by 48 pixels
  std::wstring PrinterMimic;                 // file name of the picture of 128 by 128 pixels
  std::wstring TwainSettingURL;              // settings page; "{0}" stands for the device's address
  std::wstring MopriaSettingURL;  // Mopria settings; "{0}" stands for the device's address
  std::string DefaultColorMode;
  std::string DefaultResolution;
  std::string DefaultScanSide;          // empty: no choice is made for the user
  std::string DefaultPaperSupport;      // "Manual" or "Auto"
  std::int32_t RatedSpeed = 0;          // carried along; its unit is the model data's own
  std::int32_t DefaultNetworkScan = 0;  // network protocol to start with: 1 NSP, 4 IPP
  bool USBScanSupport = false;
  bool IPPScanSupport = false;
  bool NSPScanSupport = false;   // the other network protocol of the suite
  std::wstring SslSysObjectId;   // second object id, for the secure connection; may be empty
  std::string ControllerFamily;  // "MERIDIAN", "LANTERN", "HARBOR", "AMBER" or "LOWEND"
  std::string USBEndPointHWID;   // USB interface of the scanner: "MI_00" or "MI_02"
  std::vector<std::string> ColorModes;
  std::vector<std::string> Resolution;
  std::vector<std::string> ScanSides;
  std::vector<std::string> PaperSupport;  // media names

 private:
  friend void BuildProductTable(std::vector<ProductData>& table);
  friend struct ProductDataTestPeer;

  // Each replaces its list by the pieces of its text between commas, without the spaces around
  // them.
  void SetCapabilityLists(const std::string& colorModes, const std::string& resolutions,
                          const std::string& scanSides, const std::string& paperSupport);

  // Sets the four defaults, without the spaces around them.
  void SetDefaultValues(const std::string& colorMode, const std::string& resolution,
                        const std::string& scanSide, const std::string& paperSupport);
};

#endif  // TVRSCN_PRODUCT_DATA_H
