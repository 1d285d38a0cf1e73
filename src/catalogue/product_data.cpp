// The record of one model: its constructor from the values of a row, and how list texts are cut.
#include "tvrscn/product_data.h"

#include <cstddef>
#include <sstream>

namespace {

// Spaces alone count as blank: the texts are ours.
std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// An empty text has no piece, and there is none behind a comma at the end.
std::vector<std::string> pieces(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, ',');)
    result.push_back(trimmed(piece));
  return result;
}

}  // namespace

ProductData::ProductData(const std::wstring& modelName, const std::wstring& sysObjectIds,
                         const std::wstring& usbProductId, const std::wstring& usbVendorId,
                         const std::wstring& conditionalModelDesignation, int ratedSpeed,
                         const std::string& colorModes, const std::string& resolutions,
                         const std::string& scanSides, const std::string& paperSupport,
                         const std::wstring& mimic, const std::wstring& printerMimic,
                         const std::wstring& twainSettingURL, int usbScanSupport,
                         int nspScanSupport, int ippScanSupport, const std::wstring& sslSysObjectId,
                         const std::wstring& mopriaSettingURL, int defaultNetworkScan,
                         const std::string& controllerFamily, const std::string& usbEndPointHWID)
    : ModelName(modelName),
      SysObjectIds(sysObjectIds),
      USBProductId(usbProductId),
      USBVendorId(usbVendorId),
      ConditionalModelDesignation(conditionalModelDesignation),
      Mimic(mimic),
      PrinterMimic(printerMimic),
      TwainSettingURL(twainSettingURL),
      MopriaSettingURL(mopriaSettingURL),
      RatedSpeed(ratedSpeed),
      DefaultNetworkScan(defaultNetworkScan),
      USBScanSupport(usbScanSupport != 0),
      IPPScanSupport(ippScanSupport != 0),
      NSPScanSupport(nspScanSupport != 0),
      SslSysObjectId(sslSysObjectId),
      ControllerFamily(controllerFamily),
      USBEndPointHWID(usbEndPointHWID) {
  SetCapabilityLists(colorModes, resolutions, scanSides, paperSupport);
}

void ProductData::SetCapabilityLists(const std::string& colorModes, const std::string& resolutions,
                                     const std::string& scanSides,
                                     const std::string& paperSupport) {
  ColorModes = pieces(colorModes);
  Resolution = pieces(resolutions);
  ScanSides = pieces(scanSides);
  PaperSupport = pieces(paperSupport);
}

void ProductData::SetDefaultValues(const std::string& colorMode, const std::string& resolution,
                                   const std::string& scanSide, const std::string& paperSupport) {
  DefaultColorMode = trimmed(colorMode);
  DefaultResolution = trimmed(resolution);
  DefaultScanSide = trimmed(scanSide);
  DefaultPaperSupport = trimmed(paperSupport);
}
