#include <stdexcept>

#include "check.h"

namespace {

constexpr long kFailed = 1;
constexpr int kNotFound = 55;

void checkDump(ScanBaseClient& client, const std::string& folder) {
  const std::string file = folder + "/dump.txt";
  const std::wstring wideFile = wide(file);
  client.Dump("a longer text\n", wideFile);
  CHECK(contentOf(file) == "a longer text\n");
  client.Dump("short", wideFile);
  CHECK(contentOf(file) == "short");
  client.Dump("nowhere", wideFile + L"/missing/file");
  CHECK(contentOf(file) == "short");
}

void checkVersion(ScanBaseClient& client) {
  std::string version = "as it was";
  short major = 7;
  short minor = 8;
  CHECK(client.GetScanInterfaceVersion(version, major, minor) == 0);
  CHECK(version == "as it was" && major == 7 && minor == 8);
}

void checkRanges(ScanBaseClient& client) {
  IPPMinMaxNormalStepData brightness{1, 2, 3, 4};
  IPPMinMaxNormalStepData contrast{5, 6, 7, 8};
  client.GetBrightnessContrastValue(brightness, contrast);
  CHECK(brightness.Min == 1 && brightness.Max == 2 && brightness.Normal == 3);
  CHECK(brightness.Step == 4 && contrast.Min == 5 && contrast.Step == 8);
}

void checkProducts(ScanBaseClient& client) {
  ProductData product;
  product.RatedSpeed = 7;
  client.GetProductData("Tevra Birch 120", product);
  CHECK(product.ControllerFamily.empty());
  client.GetProductData("Tevra Alder 3020 (copy 1)", product);
  CHECK(product.ControllerFamily == "MERIDIAN" && product.NSPScanSupport);
  client.GetProductData("Tevra Birch 120 MFP", product);
  CHECK(product.ControllerFamily == "LOWEND" && !product.NSPScanSupport);
  const ProductData copy(product);
  CHECK(copy.ControllerFamily == "LOWEND" && copy.RatedSpeed == 7 && copy.ModelName.empty());
}

void checkBase(const std::string& folder) {
  ScanBaseClient client;
  CHECK(!client.m_bClientErrorShown);
  client.m_scanUIData = smallJob();
  client.m_bClientErrorShown = true;
  ScanBaseClient copy(client);
  CHECK(copy.m_scanUIData.resolution == "75x75" && copy.m_bClientErrorShown);
  ScanBaseClient assigned;
  assigned = client;
  CHECK(assigned.m_scanUIData.pageHeight == 148);

  Listener listener;
  TevraScanUIData job = smallJob();
  CHECK(client.Scan(job, &listener.record, L"", nullptr) == kFailed);
  CHECK(listener.types.empty());
  client.InitScanConfigInfo("name", kAbsentDevice, L"label");
  client.InitExceptionStrings(nullptr);
  client.SetUsingTevraUI(0);
  checkRanges(client);
  checkVersion(client);
  checkProducts(client);
  checkDump(client, folder);
}

void checkNotification() {
  Listener listener;
  ScanBaseClient::SendNotification(&listener.record, NOTIFY_IMAGE_READY, TVR_NOTIF_PRIORITY_NORMAL,
                                   "a text");
  CHECK(listener.types == Heard{NOTIFY_IMAGE_READY});
  CHECK(listener.lastText == "a text");
  ScanBaseClient::SendNotification(&listener.record, NOTIFY_IMAGE_READY, TVR_NOTIF_PRIORITY_NORMAL,
                                   std::string(5000, 'x'));
  CHECK(listener.lastText == std::string(1023, 'x'));
}

// A LowEnd job asks its device for a document first, and has nothing to go by without one.
void checkDocumentlessJob(CScanUSBClient& client, TevraScanUIData& job, Listener& listener) {
  CHECK(throwsSomething([&] { client.Scan(job, &listener.record, L"", nullptr); }));
  CHECK(throwsSomething([&] { client.Scan(job, nullptr, L"", nullptr); }));
  CHECK(listener.types.empty());
}

void checkFailingJob(CScanUSBClient& client, TevraScanUIData& job, Listener& listener) {
  CHECK(client.Scan(job, &listener.record, L"", nullptr) == kFailed);
  CHECK(listener.types == Heard{NOTIFY_CONN_FAILURE});
  CHECK(listener.lastText.empty());
  CHECK(client.Scan(job, nullptr, L"", nullptr) == kFailed);
}

void checkJobWithoutDevice(CScanUSBClient& client, ControllerType type) {
  Listener listener;
  TevraScanUIData job = smallJob();
  if (type == CONTROLLER_LOWEND) {
    checkDocumentlessJob(client, job, listener);
  } else {
    checkFailingJob(client, job, listener);
  }
  const Heard heard = listener.types;
  TVR_FP_CALLBACK nobody = {nullptr, nullptr};
  CHECK(client.Scan(job, &nobody, L"", nullptr) == kFailed);
  CHECK(!client.m_bClientErrorShown);

  job.brightness = L"abc";
  CHECK(throwsWith<std::invalid_argument>(
      "invalid stoi argument", [&] { client.Scan(job, &listener.record, L"", nullptr); }));
  job.brightness = L"99999999999";
  CHECK(throwsWith<std::out_of_range>("stoi argument out of range",
                                      [&] { client.Scan(job, &listener.record, L"", nullptr); }));
  CHECK(listener.types == heard);
}

void checkUsb(ControllerType type, const std::string& folder) {
  CScanUSBClient client(type);
  client.InitExceptionStrings(nullptr);
  client.InitExceptionStrings(nullptr);
  client.SetUsingTevraUI(0);
  client.InitScanConfigInfo("name", kAbsentDevice, L"label");
  wchar_t enumerator[] = L"USB";
  CHECK(client.FindStatusEndPointFromPrinterPort(enumerator, kAbsentDevice, false) == kNotFound);
  CHECK(client.FindStatusEndPointFromPrinterPort(enumerator, kAbsentDevice, true) == USB_ERR_OPEN);
  checkRanges(client);
  checkVersion(client);
  checkDump(client, folder);
  checkJobWithoutDevice(client, type);
}

}  // namespace

void checkClients(const std::string& folder) {
  checkBase(folder);
  checkNotification();
  checkUsb(CONTROLLER_HP, folder);
  checkUsb(CONTROLLER_HP_ALT, folder);
  checkUsb(CONTROLLER_LOWEND, folder);
  // Types without a controller: a client can be made and go.
  for (const int type : {0, 3, 4, 7})
    CScanUSBClient client(static_cast<ControllerType>(type));
}

void checkQZClient(const std::string& folder) {
  checkUsb(CONTROLLER_QZ, folder);
}
