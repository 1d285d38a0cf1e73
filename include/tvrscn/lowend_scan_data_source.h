// The settings source of the LowEnd family: writes the scan request, reads what the device says of
// itself and of the request. All documents are JSON.
#ifndef TVRSCN_LOWEND_SCAN_DATA_SOURCE_H
#define TVRSCN_LOWEND_SCAN_DATA_SOURCE_H

#include <map>
#include <string>

#include "tvrscn/export.h"
#include "tvrscn/notifications.h"
#include "tvrscn/scan_data_source.h"

// Used on the thread of the job. Where a document is no JSON, or a value has a type that the device
// should not send, the JSON library's exception, derived from std::exception, goes to the caller;
// each operation says so.
class TVRSCN_API CLowEndUSBScanDataSource : public CUSBScanDataSource {
 public:
  CLowEndUSBScanDataSource();
  CLowEndUSBScanDataSource(const CLowEndUSBScanDataSource& other);
  CLowEndUSBScanDataSource& operator=(const CLowEndUSBScanDataSource& other);
  ~CLowEndUSBScanDataSource() override;

  // The request for the job's settings, compact and with its keys in ascending order. Paper in the
  // feeder goes before the paper source of the settings. Throws the JSON library's exception for
  // texts that are no UTF-8.
  std::string GetScanRequestJSON(std::string name, bool adfPaperLoaded);

  // Judges the answer to a request: USB_SUCCESS (15009) when the job runs, else USB_ERR_GENERAL
  // (15010). message receives the device's words, where there are any. A refusal is written to
  // ScanRequestError.txt in folder, over an earlier one. Throws for an answer that is no JSON
  // object, and for words that are no text.
  USBStatusErrors CheckScanningRequestStatus(const std::string& response,
                                             const std::wstring& folder, std::string& message);

  // Extension of the image files that the request asks for: ".JPG" or ".TIF".
  std::wstring GetImageFileFormat();

  // Keeps the capability document that the request is fitted to. It is not checked here.
  void SetDeviceSupportJSONResponse(const std::string& document);

  // Reads the scanner's section of a status document into those outputs that it names; false
  // without such a section. Keys count when they contain the known word. Throws for a document that
  // is no JSON and for a value that is no Boolean.
  bool ParseScannerStatus(const std::string& document, bool& busy, bool& ready,
                          bool& flatbedCoverOpen);
  // The same for the feeder's section.
  bool ParseADFStatus(const std::string& document, bool& jamPresent, bool& installed,
                      bool& adfCoverOpen, bool& adfPaperLoaded);

  // Writes text to the file at path, over an earlier one. Always true.
  bool DumpDebugDataToFile(const std::wstring& path, const std::string& text);

 private:
  friend struct LowEndTestPeer;

  // Names and codes of the media that the device offers in each source; left alone where no
  // document is kept or it is no JSON.
  void GetSupportedMediaSizesFromJSON(std::map<std::string, int>& adfSizes,
                                      std::map<std::string, int>& flatbedSizes);
  // The name of a media code, empty for one without a name.
  void GetMediaSizeString(const int& code, std::string& name);
  // The code that the device offers for the job's media, or 20 for a custom size. scanSource is 0
  // for the feeder, any other value for the flatbed. orientation is always 0.
  void GetMediaSize(const int& scanSource, unsigned short& mediaSize, unsigned short& orientation);
  // Fits a size in inches into the device's limits and gives it in dots. False when the limits
  // could not be consulted; the dots are usable either way.
  bool CheckCustomSizeValidity(const double& height, const double& width, const int& resolution,
                               const int& scanSource, int& heightDots, int& widthDots);
  // Scales a percentage into a device range. REQUIRES: the range reaches no further than 100 from
  // normal, on the side that is used.
  int CalculateMatchingValue(const int& value, const int& minimum, const int& maximum,
                             const int& normal, const int& unused);

  std::string m_deviceSupportJSON;  // the capability document; empty: not known
};

#endif  // TVRSCN_LOWEND_SCAN_DATA_SOURCE_H
