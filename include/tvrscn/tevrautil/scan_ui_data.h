// The settings of one scan job, as the user interface of the suite spells them.
#ifndef TVRSCN_TEVRAUTIL_SCAN_UI_DATA_H
#define TVRSCN_TEVRAUTIL_SCAN_UI_DATA_H

#include <cstdint>
#include <string>

#include "tvrscn/export.h"

// Filled by the driver, read by the scan client; a plain value without behaviour. Texts are
// compared exactly and case-sensitively; an unknown text is no error but takes the family's usual
// value.
class TVRSCN_UTIL_API TevraScanUIData {
 public:
  TevraScanUIData();
  TevraScanUIData(const TevraScanUIData& other);
  TevraScanUIData& operator=(const TevraScanUIData& other);
  ~TevraScanUIData();

  std::string mediaSize;   // a media name such as "ISO_A4SEF"
  std::int32_t pageWidth;  // millimetres
  std::int32_t pageHeight;
  std::string sides;        // "OneSided", "TwoSided" or "SecondSideRotation"
  std::string resolution;   // "300x300" and the like, dots per inch
  std::string colorMode;    // "FullColor", "Grayscale", "BlackAndWhite" or "Auto"
  std::wstring brightness;  // decimal digits, a sign allowed; a darkness: larger is darker
  std::wstring contrast;
  std::wstring backgroundRemoval;  // "Off", anything else is on
  std::string modelName;           // model of the device, for its own error messages
};

#endif  // TVRSCN_TEVRAUTIL_SCAN_UI_DATA_H
