// The controller of the HP family: short commands that begin with 1B A8, answers of fixed length,
// and pages in blocks that are each a JPEG strip of their own.
#ifndef TVRSCN_HP_CONTROLLER_H
#define TVRSCN_HP_CONTROLLER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tvrscn/export.h"
#include "tvrscn/hp_scan_data_source.h"
#include "tvrscn/hp_wire.h"
#include "tvrscn/usb_controller.h"

class TVRSCN_API USB_HP_Controller : public BaseUSBController {
 public:
  USB_HP_Controller();
  ~USB_HP_Controller() override;

  // Runs a whole job on the caller's thread. Pages become Image_<number>.JPG in imageFolder,
  // numbered on through the life of the process. Throws std::invalid_argument or std::out_of_range
  // for settings that hold no number, before the device is touched. errorShown is left alone.
  long doScan(TevraScanUIData& settings, TVR_FP_CALLBACK* callback, const std::wstring& imageFolder,
              bool& errorShown) override;

  // The family has no ranges to tell: both records stay as they are.
  void GetUSBBrightnessContrastValue(IPPMinMaxNormalStepData& brightness,
                                     IPPMinMaxNormalStepData& contrast) override;

 private:
  friend class HPScanJob;            // the flow of one job
  friend class HPPageAssembly;       // the making of one page
  friend struct ControllerTestPeer;  // tests call the single operations

  // One exchange each: a command out, a record in. Non-zero when both transfers succeeded. The
  // record is overwritten in any case, with zeros where nothing came.
  int SendInquiryCommand(HPPKUSBInquiryResponse& response);
  int SendExtendedInquiryCommand(HPPKUSBExtendedInquiryResponse& response);
  int SendReserveUnitCommand(HPPKUSBReserveUnitResponse& response);
  int SendReleaseUnitCommand(HPPKUSBResponse& response);
  int SendAbortCommand(HPPKUSBResponse& response);
  // Fills the request from the job's settings, where there are any.
  int SendSetWndParamCommand(HPPKUSBSetWindowParameterResponse& response);
  int SendExtendedSetWndParamCommand(HPPKUSBExtendedSetWindowParameterResponse& response);
  int SendObjectPositionCommand(HPPKUSBObjectPosition& response);
  int SendReadCommand(HPPKUSBReadResponse& response);
  // No answer comes back; the result is that of the write.
  int SendTimeoutCommand();
  // Reads exactly size bytes of block data into buffer, in chunks of a power of two up to 4096, and
  // goes on until they are there. 0 when the command could not be written; the last error when the
  // last read failed; else non-zero.
  int SendReadImageCommand(unsigned char* buffer, unsigned long size);

  // One flushed transfer each; the result is that of the transfer.
  int WriteRequest(const void* data, std::size_t length);
  int ReadResponse(void* data, std::size_t length);

  // The job from inquiry to release; USB_SUCCESS (15009) when it went well.
  USBStatusErrors ScanViaUSB();

  // Makes one page file out of the blocks in order of arrival and tells the caller. width in
  // pixels, height in lines, fileNumber goes into the name. What fails is not reported but for an
  // exception.
  void prepareFinalImage(
      std::vector<std::pair<std::shared_ptr<unsigned char>, unsigned long>>& blocks,
      unsigned short width, unsigned short height, short fileNumber);

  // Text of a status byte for the log.
  std::string GetStatusCodeAsString(HPPKUSBStatusCode code);
  // Logs the text of a message word and gives the job status that it stands for.
  USBStatusErrors GetMessageScannerStatus(HPPKUSBMessageData message);
  // Tells the user, where dialogs are wanted and texts are there, and the caller. Returns error.
  int ErrorHandler(USBStatusErrors error, int showDialog);

  std::int32_t m_lastIoResult;  // of the latest transfer of the three operations that keep it
  std::string m_defaultImageExtension;
  std::wstring m_defaultImageMimeType;
  std::wstring m_imageFolderPath;                          // of the running job
  std::shared_ptr<CHPUSBScanDataSource> m_scanDataSource;  // of the running job
};

#endif  // TVRSCN_HP_CONTROLLER_H
