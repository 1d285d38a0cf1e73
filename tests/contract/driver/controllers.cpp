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

}  // namespace

void checkControllers() {
  const auto owner = std::make_unique<USB_HP_Controller>();
  BaseUSBController& controller = *owner;
  checkFlags(controller);
  checkMutex(controller);
  CHECK(controller.ConvertStringToWstring("") == L"");
  CHECK(controller.ConvertStringToWstring("abc") == L"abc");
  auto dictionary = std::make_shared<CErrorCodeDictionary>();
  controller.InitExceptionStrings(dictionary);
  CHECK(dictionary.use_count() == 2);
  // No dialog may come up in a test: without a dictionary there is none.
  std::shared_ptr<CErrorCodeDictionary> none;
  controller.InitExceptionStrings(none);
  CHECK(dictionary.use_count() == 1);

  controller.InitScanConfigInfo("name", kAbsentDevice, L"label");
  wchar_t enumerator[] = L"USB";
  CHECK(controller.FindStatusEndPointFromPrinterPort(enumerator, kAbsentDevice, false) == 55);
  CHECK(controller.FindStatusEndPointFromPrinterPort(enumerator, kAbsentDevice, true) ==
        USB_ERR_OPEN);

  Listener listener;
  TevraScanUIData job = smallJob();
  bool errorShown = true;
  CHECK(controller.doScan(job, &listener.record, L"", errorShown) == 1);
  CHECK(errorShown);
  CHECK(listener.types == Heard{NOTIFY_CONN_FAILURE});

  IPPMinMaxNormalStepData brightness{1, 2, 3, 4};
  IPPMinMaxNormalStepData contrast{5, 6, 7, 8};
  controller.GetUSBBrightnessContrastValue(brightness, contrast);
  CHECK(brightness.Min == 1 && brightness.Step == 4 && contrast.Max == 6);
}
