// The scan request as the LowEnd scanner understands it.
#ifndef TVRSCN_VIRTUAL_LOWEND_LOWEND_REQUEST_H
#define TVRSCN_VIRTUAL_LOWEND_LOWEND_REQUEST_H

#include <string>
#include <string_view>

#include "virtual/virtual_lowend_scanner.h"

namespace tvrscn::virtual_device {

// Values of "imageComposition" and "scanDuplex".
enum class LowEndMode { kBlackWhite = 1, kGray = 2, kColor = 3 };
enum class LowEndSides {
  kOne = 0,
  kTwoTurned = 1,  // the back comes out rotated by 180 degrees
  kTwo = 2,
};

struct LowEndRequest {
  int dotsPerInch = 0;
  LowEndMode mode = LowEndMode::kColor;
  LowEndSides sides = LowEndSides::kOne;
  bool fromFeeder = false;
  int width = 0;   // pixels
  int height = 0;  // pixels
  int darkness = 0;
  int contrast = 0;
};

struct LowEndRequestReading {
  bool isJson = false;
  std::string wrong;      // the reason to refuse it; empty when there is none
  LowEndRequest request;  // of a request without fault
};

// Judges a request by what the scanner can do and what lies in it.
LowEndRequestReading readLowEndRequest(std::string_view text, const LowEndScannerOptions& options);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_LOWEND_LOWEND_REQUEST_H
