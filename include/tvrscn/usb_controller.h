// What the controllers of all device families have in common.
#ifndef TVRSCN_USB_CONTROLLER_H
#define TVRSCN_USB_CONTROLLER_H

#include <cstdint>
#include <memory>
#include <string>

#include "tvrscn/export.h"
#include "tvrscn/notifications.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"
#include "tvrscn/tevrautil/named_mutex.h"
#include "tvrscn/tevrautil/scan_ui_data.h"
#include "tvrscn/types.h"

// Range of a setting as the device reports it. The caller owns the record; a family that does not
// know leaves it untouched, and Step is never written.
struct IPPMinMaxNormalStepData {
  std::int32_t Min;
  std::int32_t Max;
  std::int32_t Normal;
  std::int32_t Step;
};

// Owns the two handles on the device and knows how to find it; speaks no protocol. Used on the
// caller's thread; nothing in it is locked. The private members belong to the exported layout.
class TVRSCN_API BaseUSBController {
 public:
  // Loads the device-setup service. A service that is missing is no error here: the search for the
  // device then answers USB_ERR_NO_DEVICE_SETUP.
  BaseUSBController();
  BaseUSBController(const BaseUSBController&) = delete;
  BaseUSBController& operator=(const BaseUSBController&) = delete;

  // Closes the handles that are open and unloads the device-setup service.
  virtual ~BaseUSBController();

  // Runs one job and returns 0 for success, 1 for failure. settings and callback stay the caller's
  // and must outlive the job. errorShown is set where the family tells the user of a failure
  // itself.
  virtual long doScan(TevraScanUIData& settings, TVR_FP_CALLBACK* callback,
                      const std::wstring& outputFolder, bool& errorShown) = 0;

  // Asks the device for its ranges; leaves the records alone in families that cannot tell.
  virtual void GetUSBBrightnessContrastValue(IPPMinMaxNormalStepData& brightness,
                                             IPPMinMaxNormalStepData& contrast) = 0;

  // Keeps the three texts, the hardware id in upper case, then searches the device and opens it. A
  // failure is not reported: it shows later, as a failing job. A second call opens new handles and
  // does not close the old ones.
  void InitScanConfigInfo(const std::string& deviceName, const std::string& hardwareId,
                          const std::wstring& deviceLabel);

  // Shares the dictionary whose texts the failure dialogs show.
  void InitExceptionStrings(std::shared_ptr<CErrorCodeDictionary>& dictionary);

  // Searches the present devices of an enumerator ("USB") for the first whose upper-cased instance
  // id holds hardwareId, and opens its endpoint twice when openDevice is true. hardwareId is
  // compared as it stands: pass it in upper case. An empty one matches every device.
  //
  // Returns 0 for success; USB_ERR_OPEN (15007) when nothing was found or opened and no handle was
  // open before; USB_ERR_NO_DEVICE_SETUP (15008); 55 when the device was not to be opened and was
  // not found; or the system's last error at the step that failed, which may be stale, even 0.
  int FindStatusEndPointFromPrinterPort(wchar_t* enumerator, std::string hardwareId,
                                        bool openDevice);

  // The mutex "MutexUSB" that jobs of all processes share; made on first use, owned by the
  // controller, not yet held.
  XMutex* GetMutexPtr();

  // Widens text by the system's narrow code page (UTF-8 on Linux); ends at a zero byte.
  std::wstring ConvertStringToWstring(std::string text);

  // Job flags. The QZ family alone sets and reads them.
  bool getJobCancelled();
  void setJobCancelled(bool cancelled);
  bool getReleaseInfo();
  void setReleaseInfo(bool release);
  void setRetryCommand(bool retry);

 private:
  friend class CScanUSBClient;       // SetUsingTevraUI
  friend class USB_QZ_Controller;    // the operations that are its own
  friend struct ControllerTestPeer;  // tests look at the members and call the private operations

  bool getRetryCommand();
  unsigned char getECPCommandId();
  unsigned char getReservedClientID();
  // Vendor and product id out of a hardware id: "x" and up to four characters behind "VID_" or
  // "PID_", or nothing when fewer than three stand there.
  std::string getVid(const std::string& hardwareId);
  std::string getPid(const std::string& hardwareId);

 protected:
  XMutex* m_pMutex;                 // owned; null until GetMutexPtr
  std::uint8_t m_reservedClientID;  // QZ: client id out of the RESERVE UNIT reply
  std::uint8_t m_ecpCommandId;      // QZ: command byte of the last reply header
  bool m_bRetryCommand;             // QZ: the device answered busy
  bool m_bReleaseInfo;              // QZ: release the reservation after this failure
  bool m_bJobCancelled;             // QZ: the device reported the job as cancelled
  bool m_bImageNotified;            // NOTIFY_TRANSFER_STARTED went out in this job
  HANDLE m_hDeviceWrite;            // requests go out here
  HANDLE m_hDeviceRead;             // replies come in here
  TVR_FP_CALLBACK* m_pCallback;     // of the running job, not owned
  bool m_bUsingTevraUI;             // failures may show dialogs
  std::shared_ptr<CErrorCodeDictionary> m_pErrorDictionary;
  bool m_bErrorShown;          // LowEnd: a failure dialog was shown in this job
  std::wstring m_deviceLabel;  // kept, never read
  std::string m_hardwareId;    // upper case
  std::string m_deviceName;    // kept, never read

  // The device-setup service; each null when it could not be resolved.
  PfnSetupDiGetClassDevsW m_pfnSetupDiGetClassDevsW;
  PfnSetupDiEnumDeviceInfo m_pfnSetupDiEnumDeviceInfo;
  PfnSetupDiGetDeviceInstanceIdW m_pfnSetupDiGetDeviceInstanceIdW;
  PfnSetupDiDestroyDeviceInfoList m_pfnSetupDiDestroyDeviceInfoList;
  PfnSetupDiEnumDeviceInterfaces m_pfnSetupDiEnumDeviceInterfaces;
  PfnSetupDiGetDeviceInterfaceDetailW m_pfnSetupDiGetDeviceInterfaceDetailW;
  PfnSetupDiGetDeviceRegistryPropertyW m_pfnSetupDiGetDeviceRegistryPropertyW;
  HMODULE m_hSetupApi;  // null when the service could not be loaded
};

#endif  // TVRSCN_USB_CONTROLLER_H
