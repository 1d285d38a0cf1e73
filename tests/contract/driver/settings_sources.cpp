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

// 216.0 by 279.0 mm, on a device that takes 200.0 mm in width and up to 300 dpi.
void checkWindow() {
  constexpr unsigned char kSizes[] = {0x00, 0x00, 0x07, 0xD0, 0x00, 0x00, 0x0A, 0xE6};
  USBVendorSubDevicePage page = {};
  page.dwFeederMaxWidth.set(2000);
  page.dwFeederMaxLength.set(4000);
  page.wMaxXResolution.set(300);
  page.wMaxYResolution.set(300);
  page.bFeederOptions = 0x21;
  USBVendorMeasurementUnit unit = {{1, 2, 3, 4, 5, 6, 7, 8}};
  CQZUSBScanDataSource source;
  CHECK(source.setAppDataToScanCommand(std::string(kLine)));
  source.SetPaperSource(1);
  source.SetSubDevicesPageData(&page);
  source.SetMeasurementUnitData(&unit);
  CQZUSBScanDataSource copy(source);
  CQZUSBScanDataSource assigned;
  assigned = copy;
  for (CQZUSBScanDataSource* each : {&source, &copy, &assigned}) {
    USBVendorSetWindowData window = {};
    each->FillSetWindowData(&window);
    CHECK(window.wXResolution.value() == 200 && window.wYResolution.value() == 200);
    CHECK(std::memcmp(&window.dwWindowWidth, kSizes, sizeof kSizes) == 0);
    CHECK(std::memcmp(&window.dwScanWidth, kSizes, sizeof kSizes) == 0);
    CHECK(window.bColorMode == 0x10 && window.bBackgroundFlags == 0x10);
    USBVendorSubDevicePage wanted = {};
    each->FillModeSelectData(&wanted);
    CHECK(wanted.bFeederOptions == 0x40 && wanted.bDuplexOptions == 0);
    CHECK(each->GetSubDevicesPageData()->bFeederOptions == 0x21);
    CHECK(std::memcmp(each->GetMeasurementUnitData(), &unit, sizeof unit) == 0);
    CHECK(each->isNeedImageProcessing() && each->getBrightness() == -2);
  }
}

// 216 by 279 mm are 8.5 by 11 inches; the device takes no more than 10 of them.
constexpr const char* kLimits =
    R"({"basicres":100,"maxFbHeight":1000,"maxFbWidth":1000,"minFbHeight":10,"minFbWidth":10})";
constexpr const char* kDocument =
    R"({"compression":1,"contrast":-10,"customHeight":2000,"customWidth":1700,"darkness":10,)"
    R"("fileFormat":1,"imageComposition":3,"mediaSize":20,"name":"a name","offsetX":0,"offsetY":0,)"
    R"("orientation":0,"resolution":200,"scanDuplex":0,"scanSource":7})";

void checkDocument() {
  CLowEndUSBScanDataSource source;
  CHECK(source.setAppDataToScanCommand(std::string(kLine)));
  source.SetDeviceSupportJSONResponse(kLimits);
  CLowEndUSBScanDataSource copy(source);
  CLowEndUSBScanDataSource assigned;
  assigned = copy;
  for (CLowEndUSBScanDataSource* each : {&source, &copy, &assigned}) {
    CHECK(each->GetScanRequestJSON("a name", false) == kDocument);
    CHECK(each->GetImageFileFormat() == L".JPG");
  }
}

void checkStatusDocument() {
  CLowEndUSBScanDataSource source;
  bool busy = false;
  bool ready = false;
  bool coverOpen = true;
  CHECK(source.ParseScannerStatus(R"({"status":{"ready":true,"flatbedCoverOpen":false}})", busy,
                                  ready, coverOpen));
  CHECK(!busy && ready && !coverOpen);
  bool jam = false;
  bool installed = false;
  bool adfCoverOpen = false;
  bool loaded = false;
  const std::string feeder = R"({"adfStatus":{"jamPresent":true,"adfPaperLoaded":true}})";
  CHECK(source.ParseADFStatus(feeder, jam, installed, adfCoverOpen, loaded));
  CHECK(jam && !installed && !adfCoverOpen && loaded);
  CHECK(!source.ParseScannerStatus(feeder, busy, ready, coverOpen));
  CHECK(throwsSomething([&] { source.ParseScannerStatus("", busy, ready, coverOpen); }));
  CHECK(throwsSomething(
      [&] { source.ParseADFStatus("no document", jam, installed, adfCoverOpen, loaded); }));
}

void checkAnswer(const std::string& folder) {
  CLowEndUSBScanDataSource source;
  std::string message;
  CHECK(source.CheckScanningRequestStatus(R"({"status":204,"result":"Starting scan"})",
                                          wide(folder), message) == USB_SUCCESS);
  CHECK(message.empty());
  const std::string refusal = R"({"error":{"message":"no paper"},"result":"","status":400})";
  CHECK(source.CheckScanningRequestStatus(refusal, wide(folder), message) == USB_ERR_GENERAL);
  CHECK(message == "no paper");
  CHECK(contentOf(folder + "/ScanRequestError.txt") == refusal);
  CHECK(throwsSomething([&] { source.CheckScanningRequestStatus("", wide(folder), message); }));
  CHECK(source.DumpDebugDataToFile(wide(folder + "/debug.txt"), "a text\n"));
  CHECK(contentOf(folder + "/debug.txt") == "a text\n");
}

}  // namespace

void checkSettingsSources(const std::string& folder) {
  checkStart();
  checkFilling();
  checkRequest();
  checkWindow();
  checkDocument();
  checkStatusDocument();
  checkAnswer(folder);
}
