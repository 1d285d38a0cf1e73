// The front door: a driver creates one CScanUSBClient for its device and scans through it.
//
// Calling order: constructor, InitExceptionStrings, SetUsingTevraUI if dialogs are not wanted,
// InitScanConfigInfo, optionally GetBrightnessContrastValue, Scan as often as wanted, destructor.
// One client serves one job at a time, on the caller's thread, without locks; a LowEnd job runs on
// behind the return of Scan, on a thread of its own (see USB_LowEnd_Controller).
#ifndef TVRSCN_SCAN_CLIENT_H
#define TVRSCN_SCAN_CLIENT_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tvrscn/export.h"
#include "tvrscn/notifications.h"
#include "tvrscn/product_data.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"
#include "tvrscn/tevrautil/scan_ui_data.h"
#include "tvrscn/types.h"
#include "tvrscn/usb_controller.h"

// Which controller a client drives. Values without a name, 3 and 4 among them, are not served: the
// client is built all the same, and its first use of the device ends the process with a message.
enum ControllerType : std::int32_t {
  CONTROLLER_QZ = 1,
  CONTROLLER_HP = 2,
  CONTROLLER_HP_ALT = 5,  // the same controller as CONTROLLER_HP
  CONTROLLER_LOWEND = 6,
};

// Transport-neutral base that a driver can hold. Its own operations touch no device.
class TVRSCN_API ScanBaseClient {
 public:
  ScanBaseClient();
  ScanBaseClient(const ScanBaseClient& other);             // shares the dictionary
  ScanBaseClient& operator=(const ScanBaseClient& other);  // shares the dictionary
  virtual ~ScanBaseClient();

  // Runs one job: 0 for success, 1 for failure. Pages arrive as files in outputFolder and are told
  // by callback, which may be null to silence it; a record with two null fields is refused with 1.
  // For a LowEnd device 0 says that the job was started: its pages and its end are told later. For
  // a QZ device 0 without a single notification says that other jobs kept the mutex: nothing was
  // done. deviceCallback is never called. The base class returns 1 and does nothing.
  virtual long Scan(TevraScanUIData& settings, TVR_FP_CALLBACK* callback,
                    const std::wstring& outputFolder, TVR_FP_DEVCOMM_CALLBACK* deviceCallback);

  // Finds the device whose instance id holds hardwareId ("VID_0A7E&PID_1234&MI_00", any case) and
  // opens it. Failure is not reported here: the job fails later. The base class does nothing.
  virtual void InitScanConfigInfo(const std::string& deviceName, const std::string& hardwareId,
                                  const std::wstring& deviceLabel);

  // Ranges of the device for brightness and contrast; records stay untouched where the family has
  // none to tell. The base class does nothing.
  virtual void GetBrightnessContrastValue(IPPMinMaxNormalStepData& brightness,
                                          IPPMinMaxNormalStepData& contrast);

  // Loads the texts of the failure dialogs from resourceModule, or the built-in ones where it has
  // none (null is fine). Calling it again replaces them. The base class does nothing.
  virtual void InitExceptionStrings(HINSTANCE resourceModule);

  // Returns 0 and leaves its arguments as they are.
  virtual int GetScanInterfaceVersion(std::string& version, short& major, short& minor);

  // Replaces the content of the file by text, byte for byte. A file that cannot be opened is
  // ignored.
  virtual void Dump(const std::string& text, const std::wstring& filePath);

  // Whether failures show dialogs (any value but 0; the start value) or only notify (0). The base
  // class does nothing.
  virtual void SetUsingTevraUI(int enabled);

  // Looks the model up in the built-in catalogue: the first one whose full name stands anywhere in
  // modelName, in exact spelling. Only ControllerFamily and NSPScanSupport of result are set; with
  // no such model result stays as it is. May be called from any thread.
  void GetProductData(std::string modelName, ProductData& result);

  // Hands one notification to callback, synchronously. A null callback makes no call; text beyond
  // 1023 bytes is cut. The record is the library's and gone after the call.
  static void SendNotification(const TVR_FP_CALLBACK* callback, NotificationType type,
                               TVR_DEVICE_NOTIF_PRIORITY priority, std::string text);

  // Sets message to the dictionary's text for a device's alerts in the wording of the controller
  // family ("" for none), empty when it has none. Without a dictionary message stays as it is.
  void GetErrorMessage(std::vector<AlertStatus>& alerts, std::string family, std::wstring& message);

  // Asks the device at deviceUri ("scheme://host", host as CScanTDSPClient takes it) what is wrong
  // and tells the user in a dialog: the text for its alerts, the general text when they give none,
  // or that the device cannot be reached. Blocks until the user has answered. Sets
  // m_bClientErrorShown whatever comes of it. Without a dictionary it does nothing at all. Without
  // "//" the first character of deviceUri is left out; an empty one raises std::out_of_range. Not
  // during a Scan of the same client.
  void ShowErrorMessageFromDevice(const wchar_t* deviceUri);

  // True when the user has been told of the last failure in a dialog. For the caller to read; false
  // at the start.
  bool m_bClientErrorShown;

 private:
  std::int32_t m_nClientState;  // 0; carried along for drivers

 public:
  TevraScanUIData m_scanUIData;  // filled by the driver, not written here

 protected:
  std::shared_ptr<CErrorCodeDictionary> m_pErrorDictionary;  // empty until InitExceptionStrings

 private:
  friend struct ClientTestPeer;
};

// The client of a scanner on USB. It holds one controller, chosen at construction, and forwards.
class TVRSCN_API CScanUSBClient : public ScanBaseClient {
 public:
  explicit CScanUSBClient(ControllerType type);
  CScanUSBClient(const CScanUSBClient&) = delete;  // a controller is never shared
  CScanUSBClient& operator=(const CScanUSBClient&) = delete;

  // Leaves the controller in being, its handles open, until the process ends: a device stays
  // claimed by the handles of a client that is gone.
  ~CScanUSBClient() override;

  long Scan(TevraScanUIData& settings, TVR_FP_CALLBACK* callback, const std::wstring& outputFolder,
            TVR_FP_DEVCOMM_CALLBACK* deviceCallback) override;
  void InitScanConfigInfo(const std::string& deviceName, const std::string& hardwareId,
                          const std::wstring& deviceLabel) override;
  void GetBrightnessContrastValue(IPPMinMaxNormalStepData& brightness,
                                  IPPMinMaxNormalStepData& contrast) override;
  void InitExceptionStrings(HINSTANCE resourceModule) override;
  void Dump(const std::string& text, const std::wstring& filePath) override;
  void SetUsingTevraUI(int enabled) override;

  // Searches a device and opens it if told to; see BaseUSBController for arguments and results.
  int FindStatusEndPointFromPrinterPort(wchar_t* enumerator, std::string hardwareId,
                                        bool openDevice);

 private:
  friend struct ClientTestPeer;

  BaseUSBController* m_pController;  // null for a type that is not served
};

#endif  // TVRSCN_SCAN_CLIENT_H
