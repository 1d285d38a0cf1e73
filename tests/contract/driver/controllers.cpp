#include <memory>

#include "check.h"

namespace {

void checkFlags(BaseUSBController& controller) {
  CHECK(!controller.getJobCancelled() && !controller.getReleaseInfo());
  controller.setJobCancelled(true);
  controller.setReleaseInfo(true);
  CHECK(controller.getJobCancelled() && controller.getReleaseInfo());
  controller.setRetryCommand(true);
  controller.setJobCancelled(false);
  CHECK(!controller.getJobCancelled() && controller.getReleaseInfo());
}

void checkMutex(BaseUSBController& controller) {
  XMutex* mutex = controller.GetMutexPtr();
  CHECK(mutex != nullptr);
  CHECK(controller.GetMutexPtr() == mutex);
  if (mutex != nullptr) CHECK(mutex->WaitWithRetry(100, 100));
}

void checkDictionary(BaseUSBController& controller) {
  auto dictionary = std::make_shared<CErrorCodeDictionary>();
  controller.InitExceptionStrings(dictionary);
  CHECK(dictionary.use_count() == 2);
  // No dialog may come up in a test: without a dictionary there is none.
  std::shared_ptr<CErrorCodeDictionary> none;
  controller.InitExceptionStrings(none);
  CHECK(dictionary.use_count() == 1);
}

// What all families share, on a device that is not there.
void checkBase(BaseUSBController& controller) {
  checkFlags(controller);
  checkMutex(controller);
  checkDictionary(controller);
  CHECK(controller.ConvertStringToWstring("") == L"");
  CHECK(controller.ConvertStringToWstring("abc") == L"abc");
  controller.InitScanConfigInfo("name", kAbsentDevice, L"label");
  wchar_t enumerator[] = L"USB";
  CHECK(controller.FindStatusEndPointFromPrinterPort(enumerator, kAbsentDevice, false) == 55);
  CHECK(controller.FindStatusEndPointFromPrinterPort(enumerator, kAbsentDevice, true) ==
        USB_ERR_OPEN);
  IPPMinMaxNormalStepData brightness{1, 2, 3, 4};
  IPPMinMaxNormalStepData contrast{5, 6, 7, 8};
  controller.GetUSBBrightnessContrastValue(brightness, contrast);
  CHECK(brightness.Min == 1 && brightness.Step == 4 && contrast.Max == 6);
}

void checkHP() {
  const auto owner = std::make_unique<USB_HP_Controller>();
  BaseUSBController& controller = *owner;
  checkBase(controller);
  Listener listener;
  TevraScanUIData job = smallJob();
  bool errorShown = true;
  CHECK(controller.doScan(job, &listener.record, L"", errorShown) == 1);
  CHECK(errorShown);
  CHECK(listener.types == Heard{NOTIFY_CONN_FAILURE});
}

void checkLowEndJob(USB_LowEnd_Controller& lowEnd) {
  BaseUSBController& controller = lowEnd;
  Listener listener;
  TevraScanUIData job = smallJob();
  bool errorShown = true;
  CHECK(lowEnd.GetImageOutputFormat() == L".JPG");
  job.colorMode = "BlackAndWhite";
  CHECK(throwsSomething([&] { controller.doScan(job, &listener.record, L"folder", errorShown); }));
  CHECK(!errorShown && listener.types.empty());
  CHECK(lowEnd.GetImageFolderPath() == L"folder");
  CHECK(lowEnd.GetImageOutputFormat() == L".TIF");

  lowEnd.SendImageTransferNotification(L"a path");
  CHECK((listener.types == Heard{NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY}));
  CHECK(listener.lastText == "a path");
  CHECK(lowEnd.ErrorHandler(USB_ERR_PAPER_JAM, 0) == USB_ERR_PAPER_JAM);
  CHECK(listener.types.back() == NOTIFY_CONN_FAILURE);
}

void checkLowEnd() {
  const auto owner = std::make_unique<USB_LowEnd_Controller>();
  USB_LowEnd_Controller& lowEnd = *owner;
  checkBase(lowEnd);
  checkLowEndJob(lowEnd);
  CHECK(lowEnd.GetFileCount() == 1);
  lowEnd.IncrementFileCount();
  CHECK(lowEnd.GetFileCount() == 2);
  lowEnd.ResetFileCount();
  CHECK(lowEnd.GetFileCount() == 0);
  CHECK(lowEnd.RemoveBlockBytesFromUSBPackets("abcBLOCK012345678TES\ndef") == "abcdef");
  CHECK(throwsSomething([&] { lowEnd.RemoveBlockBytesFromUSBPackets("BLOCKTES\n"); }));
}

// Each command fails at its write, and single ones tell nobody.
void checkQZ() {
  const auto owner = std::make_unique<USB_QZ_Controller>();
  USB_QZ_Controller& qz = *owner;
  checkBase(qz);
  CHECK(qz.GetUSBScanDataSource() == nullptr);
  qz.setStoreAppPropertiesToScan();
  CHECK(qz.GetUSBScanDataSource() != nullptr);
  for (const int command : {7, 18, 22, 23, 27, 36, 40, 85, 90, 193, 194, 195, 999})
    CHECK(qz.sendCommandstoDevice(command));
  scanFromStoreApp(999);
}

}  // namespace

void checkControllers() {
  checkHP();
  checkLowEnd();
  checkQZ();
}
