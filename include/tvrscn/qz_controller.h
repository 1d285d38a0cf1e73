// The controller of the QZ family: requests and replies behind an 8-byte header, pages as one JPEG
// stream each.
#ifndef TVRSCN_QZ_CONTROLLER_H
#define TVRSCN_QZ_CONTROLLER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "tvrscn/export.h"
#include "tvrscn/qz_scan_data_source.h"
#include "tvrscn/qz_wire.h"
#include "tvrscn/usb_controller.h"

// The order of the virtual functions belongs to the contract. Commands return 0 when the exchange
// itself went well, else USB_ERR_RESOURCE (15001), USB_ERR_READ (15002) or USB_ERR_WRITE (15005);
// what the device thinks of the command stands in m_operationStatus.
class TVRSCN_API USB_QZ_Controller : public BaseUSBController {
 public:
  USB_QZ_Controller();
  ~USB_QZ_Controller() override;

  // Runs a whole job on the caller's thread, holding the mutex that jobs of all processes share.
  // Pages become Image_<number>.jpg in outputFolder, numbered on through the life of the process.
  // Returns 0 for success, 1 for failure; 0 as well, with no notification at all, when the mutex
  // could not be had. Throws std::invalid_argument or std::out_of_range for settings that hold no
  // number, before the device is touched. errorShown is left alone.
  long doScan(TevraScanUIData& settings, TVR_FP_CALLBACK* callback,
              const std::wstring& outputFolder, bool& errorShown) override;

  // The family has no ranges to tell: both records stay as they are.
  void GetUSBBrightnessContrastValue(IPPMinMaxNormalStepData& brightness,
                                     IPPMinMaxNormalStepData& contrast) override;

 private:
  virtual int sendCancelScanSequence();
  virtual int sendInquiryCommand();
  virtual int sendWakeupCommand();
  virtual int sendReleaseCommand();
  virtual int sendTestUnitReadyCommand();
  // USB_ERR_GENERAL (15010), with a log line, when the name of the computer or user does not fit.
  virtual int sendReserveUnitCommand();
  virtual int sendIntializeCommand();  // spelt as drivers know it
  virtual int sendSetWindow();
  virtual int sendScanCommand();
  virtual int sendModeSenseCommand(unsigned char page);
  virtual int sendModeSelectCommand();
  virtual int sendReadBlockHeaderCommand();
  // Runs the whole chain of READ transactions of a page.
  virtual int sendReadCommand();
  // From wake-up to release; USB_SUCCESS (15009) or USB_ERR_GENERAL (15010).
  virtual int sendScanSequence();
  // Appends to the page in reception.
  virtual void readImageData(char* data, unsigned long size);
  // Takes the two status bytes of a reply apart and sets the job flags.
  virtual void setOperationStatusCode(USBVendorPacketHeader* header);
  virtual void mapSenseInformation();
  // sense is six hexadecimal digits, made upper case in place.
  virtual void setSenseInformation(unsigned char command, char* sense);
  virtual int ReadVendorHeader(void* handle, USBVendorPacketHeader* header);
  // One whole transaction: request, reply, dispatch of the reply.
  virtual int HandleUsbDeviceCommunication(void* handle, char* header, char* payload, int length);
  // Reads what header announces into buffer, which has room for 8 bytes more than that, and
  // dispatches it.
  virtual int ReadVendorResponseData(void* handle, char* buffer, USBVendorPacketHeader* header);

 public:
  // The settings of the running or latest job; empty before the first.
  std::shared_ptr<CQZUSBScanDataSource> GetUSBScanDataSource();

  // Runs one command by its code, or the scan (0) or cancel (1) sequence, and cleans up after a
  // failure as a job does. False only for a failed scan sequence. Takes no mutex.
  bool sendCommandstoDevice(int command);

  // Reads the store application's settings file into a new source. The defaults stay without a
  // file. Throws std::invalid_argument or std::out_of_range for a field that holds no number; a
  // line of fewer than twelve fields ends the process.
  void setStoreAppPropertiesToScan();

 private:
  friend class QZScanJob;        // the sequence of one scan
  friend class QZTransaction;    // one exchange
  friend class QZPageReception;  // the making of one page
  friend struct QZTestPeer;      // tests call the single operations

  // text with its terminator, which counts in the length; empty when it cannot be converted.
  std::string GetEncodedString(std::wstring text, unsigned int codePage);

  int sendPlainCommand(unsigned char clientId, unsigned char command);
  int sendCommandWith(unsigned char clientId, unsigned char command, char* payload,
                      std::size_t length);
  // buffer holds length bytes of a mode page.
  void keepModePage(const char* buffer, std::size_t length);
  bool takeSettings(const TevraScanUIData& settings);
  bool runPasses();
  void reportFailedSequence();
  // What the flags of the latest reply ask for after a failure.
  void cleanUpAfterFailure();
  void sendSingleCommand(int command);

  std::map<std::string, std::string> m_senseMessages;
  std::shared_ptr<CQZUSBScanDataSource> m_scanDataSource;  // of the job
  const char* m_operationStatusText;                       // of the latest known status
  const char* m_scannerStatusText;                         // of the latest known state
  const char* m_senseText;                                 // of the latest known sense code
  char* m_imageData;  // page in reception, of the C allocator; null between pages
  std::uint32_t m_imageDataSize;
  std::uint32_t m_blockSize;  // reported last; not read
  std::wstring m_scanFolder;  // of the page files
  bool m_retryScan;           // the user wants the whole sequence again
  std::uint8_t m_pendingModePage;
  std::uint8_t m_operationStatus;   // of the latest reply
  std::uint32_t m_documentPresent;  // 0 or 1, bit 6 of the latest scanner status
  std::uint32_t m_scannerFlag7;     // bits of the latest scanner status; not read
  std::uint32_t m_scannerFlag5;
  std::uint32_t m_scannerFlag4;
};

#endif  // TVRSCN_QZ_CONTROLLER_H
