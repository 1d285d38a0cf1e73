// The USB client: the choice of the controller, and forwards to it.
#include <new>

#include "client/fatal_fault.h"
#include "tvrscn/hp_controller.h"
#include "tvrscn/lowend_controller.h"
#include "tvrscn/qz_controller.h"
#include "tvrscn/scan_client.h"

namespace {

BaseUSBController* makeController(ControllerType type) {
  switch (type) {
    case CONTROLLER_HP:
    case CONTROLLER_HP_ALT:
      return new (std::nothrow) USB_HP_Controller();
    case CONTROLLER_LOWEND:
      return new (std::nothrow) USB_LowEnd_Controller();
    case CONTROLLER_QZ:
      return new (std::nothrow) USB_QZ_Controller();
  }
  return nullptr;
}

// A client without a controller has nothing to forward to and no way to say so: using it is a
// mistake of the caller that ends the process, here and in a defined state.
BaseUSBController& require(BaseUSBController* controller) {
  if (controller == nullptr) {
    tvrscn::endAtFault(
        "this client's ControllerType is not served; construct CScanUSBClient with a served one");
  }
  return *controller;
}

}  // namespace

CScanUSBClient::CScanUSBClient(ControllerType type) : m_pController(makeController(type)) {}

// The controller stays in being: drivers rely on the device's handles outliving the client.
CScanUSBClient::~CScanUSBClient() {
  m_pController = nullptr;
}

long CScanUSBClient::Scan(TevraScanUIData& settings, TVR_FP_CALLBACK* callback,
                          const std::wstring& outputFolder,
                          TVR_FP_DEVCOMM_CALLBACK* /*deviceCallback*/) {
  // The client's own flag goes where a device callback once went: it is the only way by which a
  // controller reports to the client object.
  return require(m_pController).doScan(settings, callback, outputFolder, m_bClientErrorShown);
}

void CScanUSBClient::InitScanConfigInfo(const std::string& deviceName,
                                        const std::string& hardwareId,
                                        const std::wstring& deviceLabel) {
  require(m_pController).InitScanConfigInfo(deviceName, hardwareId, deviceLabel);
}

void CScanUSBClient::GetBrightnessContrastValue(IPPMinMaxNormalStepData& brightness,
                                                IPPMinMaxNormalStepData& contrast) {
  require(m_pController).GetUSBBrightnessContrastValue(brightness, contrast);
}

void CScanUSBClient::InitExceptionStrings(HINSTANCE resourceModule) {
  m_pErrorDictionary = std::make_shared<CErrorCodeDictionary>();
  m_pErrorDictionary->InitExceptionStrings(resourceModule);
  require(m_pController).InitExceptionStrings(m_pErrorDictionary);
}

void CScanUSBClient::Dump(const std::string& text, const std::wstring& filePath) {
  ScanBaseClient::Dump(text, filePath);
}

void CScanUSBClient::SetUsingTevraUI(int enabled) {
  require(m_pController).m_bUsingTevraUI = enabled != 0;
}

int CScanUSBClient::FindStatusEndPointFromPrinterPort(wchar_t* enumerator, std::string hardwareId,
                                                      bool openDevice) {
  return require(m_pController)
      .FindStatusEndPointFromPrinterPort(enumerator, hardwareId, openDevice);
}
