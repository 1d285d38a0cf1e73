#include <cstring>
#include <stdexcept>

#include "check.h"

namespace {

constexpr const char* kLine = "FullColor,200x200,OneSided,216,279,10,-10,Off,ISO_A4SEF";

void checkStart() {
  CUSBScanDataSource source;
  CHECK(source.GetAppResolution() == 200);
  CHECK(source.getColorToScan() == "FullColor");
  CHECK(source.GetPaperSource() == 1);
  CHECK(source.getBrightness() == 0 && source.getContrast() == 0);
  CHECK(source.getHardwareId().empty());
  CHECK(!source.isNeedImageProcessing());
}

void checkFilling() {
  CUSBScanDataSource source;
  TevraScanUIData job = smallJob();
  CHECK(source.setAppDataToScanCommand(job));
  CHECK(source.GetAppResolution() == 75 && source.GetPaperSource() == 0);
  CHECK(!source.setAppDataToScanCommand(std::string()));
  CHECK(source.setAppDataToScanCommand(std::string(kLine)));
  CHECK(source.GetAppResolution() == 200);
  CHECK(source.getBrightness() == 10 && source.getContrast() == -10);
  source.SetBrightnessContrast();
  CHECK(source.getBrightness() == -2 && source.getContrast() == -2);
  CHECK(source.isNeedImageProcessing());
  job.contrast = L"dark";
  CHECK(throwsWith<std::invalid_argument>("invalid stoi argument",
                                          [&] { source.setAppDataToScanCommand(job); }));
  source.SetScaningPropertiesFromApp("Grayscale", "600x600", "TwoSided", 1, 2, 1, 3, 4, "On", 5,
                                     "ISO_A4LEF");
  CHECK(source.GetAppResolution() == 600 && source.getColorToScan() == "Grayscale");
  source.SetPaperSource(0);
  source.setHardwareId(kAbsentDevice);

  const CUSBScanDataSource& original = source;
  CUSBScanDataSource copy(original);
  CHECK(copy.GetPaperSource() == 0 && copy.getHardwareId() == kAbsentDevice);
  CUSBScanDataSource assigned;
  assigned = original;
  CHECK(assigned.getBrightness() == 3 && assigned.getContrast() == 4);
}

void checkRequest() {
  // 216 mm are 10204/1200 inch, 279 mm are 13181/1200 inch.
  constexpr unsigned char kRequest[] = {0x1B, 0xA8, 0x24, 0x13, 0x30, 0x00, 0x00, 0x27, 0xDC,
                                        0x00, 0x00, 0x33, 0x7D, 0x09, 0x09, 0x00, 0x00, 0x00,
                                        0x00, 0x05, 0x06, 0x01, 0x15, 0x40, 0x01};
  CHPUSBScanDataSource source;
  CHECK(source.setAppDataToScanCommand(std::string(kLine)));
  CHPUSBScanDataSource copy(source);
  CHPUSBScanDataSource assigned;
  assigned = copy;
  for (CHPUSBScanDataSource* each : {&source, &copy, &assigned}) {
    HPPKUSBSetWindowParameterRequest request;
    each->FillSetWindowData(request);
    static_assert(sizeof request == sizeof kRequest, "the request as it goes out");
    CHECK(std::memcmp(&request, kRequest, sizeof kRequest) == 0);
    CHECK(each->isNeedImageProcessing() && each->getBrightness() == -2);
  }
}

}  // namespace

void checkSettingsSources() {
  checkStart();
  checkFilling();
  checkRequest();
}
