// The controller of the LowEnd family: requests and answers are JSON documents behind a short
// header, images come up in packets that a worker thread cuts into files.
#ifndef TVRSCN_LOWEND_CONTROLLER_H
#define TVRSCN_LOWEND_CONTROLLER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tvrscn/export.h"
#include "tvrscn/lowend_scan_data_source.h"
#include "tvrscn/lowend_wire.h"
#include "tvrscn/usb_controller.h"

class USB_LowEnd_Controller;

// What one image packet brought, without its header.
struct ScannedRecord {
  std::string bytes;   // cut at the device's end-of-job word
  std::size_t length;  // of bytes
};

// What the worker thread is given. The controller owns it; the worker frees it at its end.
struct LowEndImageThreadArgs {
  USB_LowEnd_Controller* controller;
  TVR_FP_CALLBACK* callback;
  void* unused;  // null
};

// doScan ends as soon as the device has accepted the job and the worker runs; from then on the
// caller hears by notification alone, on the worker's thread. Nothing here is locked. The job is
// over when NOTIFY_JOB_COMPLETE or a failure notification has been sent, the callback has returned
// from it and the worker has ended its clean-up, which takes no more than freeing a few words.
// Before that no other job and no query may be started on the controller, and neither the
// controller nor the callback record may go.
class TVRSCN_API USB_LowEnd_Controller : public BaseUSBController {
 public:
  USB_LowEnd_Controller();
  // Does not wait for a worker.
  ~USB_LowEnd_Controller() override;

  // Starts a job: 0 when it was accepted and started, 1 otherwise, after a notification. A worker
  // thread that cannot be started is told by NOTIFY_JOB_ABORTED, with result 0. errorShown is
  // cleared, and set when this call fails after showing a dialog. Throws std::invalid_argument or
  // std::out_of_range for settings that hold no number, before the device is touched; and the JSON
  // library's exception, derived from std::exception, when the device answers a status or start
  // request with something that is no JSON document. No notification is sent then.
  long doScan(TevraScanUIData& settings, TVR_FP_CALLBACK* callback, const std::wstring& imageFolder,
              bool& errorShown) override;

  // Asks the device. A record of which the device does not tell minimum, maximum and normal stays
  // as it is.
  void GetUSBBrightnessContrastValue(IPPMinMaxNormalStepData& brightness,
                                     IPPMinMaxNormalStepData& contrast) override;

  // Tells the user, where dialogs are wanted and texts are there, and the caller. Returns status.
  int ErrorHandler(USBStatusErrors status, int showDialog);

  // Number of the next image file: 1 in a new controller, rising over its jobs.
  int GetFileCount();
  void IncrementFileCount();
  // To 0, not to the 1 of a new controller.
  void ResetFileCount();
  // Folder of the job's image files, as doScan was given it.
  std::wstring GetImageFolderPath();
  // ".JPG" or ".TIF".
  std::wstring GetImageOutputFormat();

  // Takes the framing out of the payload of one packet. For drivers; jobs clean whole files
  // instead. Throws std::out_of_range for a marker whose 18 bytes reach beyond the packet. Does not
  // return for a packet without "BLOC" and "LINFO" that has "TES\n" at offset 19 or later: do not
  // hand in such a packet.
  std::string RemoveBlockBytesFromUSBPackets(const std::string& packet);

  // Sends NOTIFY_IMAGE_READY with path, each character cut to its low byte; before the first of a
  // job NOTIFY_TRANSFER_STARTED.
  void SendImageTransferNotification(const std::wstring& path);

 private:
  friend class LowEndScanJob;     // the flow of one job up to the start of the worker
  friend class LowEndImageFiles;  // the cutting of the records into files
  friend struct LowEndTestPeer;   // tests call the single operations

  // One flush and one transfer each. WriteRequest: non-zero, the last error where it failed.
  // ReadResponse: the bytes read.
  int WriteRequest(const void* buffer, std::size_t length);
  unsigned long ReadResponse(void* buffer, std::size_t length);
  // Reads length bytes behind text, in as many transfers as it takes.
  void ReadPayload(std::string& text, std::size_t length);
  // One operation without request payload. Returns the bytes of the answer's header. payload keeps
  // what it held when the answer is that of another operation.
  int SendRequestAndReceiveResponse(LowEndUSBOperationCode code, LowEnd_USB_Response& response,
                                    std::string& payload);
  // What the status of a start-scan answer means; takes the byte as it is.
  USBStatusErrors CheckResponseStatus(const unsigned char& status);
  // The document, and USB_ERR_COMMAND (15016) when none came.
  int GetLowEndUSBSupportedFeatures(std::string& json);
  int GetLowEndUSBDeviceStatus(std::string& json);
  void Get_Supported_Darkness_Brightness(std::string& json, IPPMinMaxNormalStepData& first,
                                         IPPMinMaxNormalStepData& second);
  int AbortScanOperation(bool& unused);

  // The job up to the start of the worker; USB_SUCCESS (15009) when it was started.
  USBStatusErrors ScanViaUSB();
  USBStatusErrors StartScanOperation(const bool& adfPaperLoaded);
  USBStatusErrors SendStartScanCommand(const bool& adfPaperLoaded);

  // The worker. argument is a LowEndImageThreadArgs. Returns 0 for one that is unusable, 15009 for
  // a finished job, 15015 for one that the device ended, 15007 after an exception.
  static unsigned GetImageLowEndUSBThreadProc(void* argument);
  // Reads packets up to the last one of the job: USB_SUCCESS or USB_ERR_JOB_CANCELLED (15019).
  USBStatusErrors RetrieveScannedRecordData();
  // Frees the argument block and closes the thread's handle. Always 0.
  long ShutDownImageLowEndUSBThread();
  // Rewrites the file at path without block markers, by way of temp.bin in the image folder. Throws
  // std::runtime_error when the file is not there.
  void RemoveBlockToBytesWithNewline(const std::wstring& path);

  std::vector<ScannedRecord> m_scannedRecords;  // of the job, in order of arrival
  LowEndImageThreadArgs* m_pImageThreadArgs;    // owned; null when no worker runs
  HANDLE m_hImageThread;                        // keeps its value when it has been closed
  std::uint32_t m_lastIoResult;                 // of the start-scan exchange
  std::wstring m_defaultImageExtension;
  std::wstring m_defaultImageMimeType;
  std::wstring m_imageFolderPath;                              // of the running job
  std::shared_ptr<CLowEndUSBScanDataSource> m_scanDataSource;  // of the running job
  std::int32_t m_fileCount;                                    // number of the next image file
};

#endif  // TVRSCN_LOWEND_CONTROLLER_H
