// The QZ controller's front: jobs, single commands, and what they clean up. Its parts are
// qz_transaction.cpp and qz_reply.cpp (the wire), qz_commands.cpp, qz_scan_job.cpp (the sequence),
// qz_page_reception.cpp (the pages), qz_status.cpp (the words).
#include "tvrscn/qz_controller.h"

#include <cstdlib>

#include "family_qz/qz_scan_job.h"
#include "tvrscn/usb_exception.h"
#include "usb/callback_record.h"
#include "usb/log_writer.h"

namespace {

constexpr long kScanDone = 0;
constexpr long kScanFailed = 1;

// How often and how long, in milliseconds, a job waits for its turn.
constexpr unsigned long kMutexTries = 100;
constexpr unsigned long kMutexWait = 100;

constexpr const char* kIllegalRequestSense = "040000";

// What sendCommandstoDevice runs besides the codes of the commands.
enum Sequence { kScanSequence = 0, kCancelSequence = 1 };

}  // namespace

USB_QZ_Controller::USB_QZ_Controller()
    : m_operationStatusText(""),
      m_scannerStatusText(""),
      m_senseText(""),
      m_imageData(nullptr),
      m_imageDataSize(0),
      m_blockSize(0),
      m_retryScan(false),
      m_pendingModePage(0),
      m_operationStatus(0),
      m_documentPresent(0),
      m_scannerFlag7(0),
      m_scannerFlag5(0),
      m_scannerFlag4(0) {
  m_bImageNotified = false;
  m_bUsingTevraUI = true;
  USB_QZ_Controller::mapSenseInformation();
}

USB_QZ_Controller::~USB_QZ_Controller() {
  std::free(m_imageData);
}

long USB_QZ_Controller::doScan(TevraScanUIData& settings, TVR_FP_CALLBACK* callback,
                               const std::wstring& outputFolder, bool& /*errorShown*/) {
  m_bImageNotified = false;
  if (tvrscn::isEmptyRecord(callback)) {
    tvrscn::writeLog(
        L"Error from ScanviaUSBThreaded....Callback is not valid. Bailing out of scan....");
    return kScanFailed;
  }
  m_pCallback = callback;
  XMutex* const mutex = GetMutexPtr();
  // Drivers know a scanner that stays in use as a job that did nothing.
  if (mutex == nullptr || !mutex->WaitWithRetry(kMutexTries, kMutexWait)) return kScanDone;
  m_scanFolder = outputFolder;
  m_scanDataSource = std::make_shared<CQZUSBScanDataSource>();
  const bool done = takeSettings(settings) && runPasses();
  if (done) tvrscn::writeLog(L"...USB success.\n");
  delete m_pMutex;
  m_pMutex = nullptr;
  return done ? kScanDone : kScanFailed;
}

bool USB_QZ_Controller::takeSettings(const TevraScanUIData& settings) {
  if (m_scanDataSource->setAppDataToScanCommand(settings)) return true;
  USBException::USBExceptionHandler(kIllegalRequestSense, 0, m_pCallback, m_pErrorDictionary.get(),
                                    static_cast<int>(m_bUsingTevraUI));
  return false;
}

// One pass, and another whole one each time the user wants to try again.
bool USB_QZ_Controller::runPasses() {
  bool good = false;
  do {
    m_retryScan = false;
    good = sendScanSequence() != USB_ERR_GENERAL;
    if (!good) reportFailedSequence();
    cleanUpAfterFailure();
  } while (m_retryScan);
  return good;
}

void USB_QZ_Controller::reportFailedSequence() {
  USBException::USBReturnHandler(m_pCallback, USB_ERR_GENERAL, m_operationStatus,
                                 m_pErrorDictionary.get(), static_cast<int>(m_bUsingTevraUI));
}

void USB_QZ_Controller::cleanUpAfterFailure() {
  if (!getReleaseInfo()) return;
  if (getJobCancelled()) {
    sendCancelScanSequence();
  } else {
    sendReleaseCommand();
  }
}

int USB_QZ_Controller::sendScanSequence() {
  return QZScanJob(*this).run() ? USB_SUCCESS : USB_ERR_GENERAL;
}

int USB_QZ_Controller::sendCancelScanSequence() {
  sendIntializeCommand();
  const bool released = sendReleaseCommand() == 0 && m_operationStatus == USBVENDOR_STATUS_GOOD;
  return released ? USB_SUCCESS : USB_ERR_GENERAL;
}

void USB_QZ_Controller::GetUSBBrightnessContrastValue(IPPMinMaxNormalStepData& /*brightness*/,
                                                      IPPMinMaxNormalStepData& /*contrast*/) {}

std::shared_ptr<CQZUSBScanDataSource> USB_QZ_Controller::GetUSBScanDataSource() {
  return m_scanDataSource;
}

bool USB_QZ_Controller::sendCommandstoDevice(int command) {
  m_retryScan = false;
  bool result = true;
  switch (command) {
    case kScanSequence:
      result = sendScanSequence() != USB_ERR_GENERAL;
      if (!result) reportFailedSequence();
      break;
    case kCancelSequence:
      if (sendCancelScanSequence() == USB_ERR_GENERAL) reportFailedSequence();
      break;
    default:
      sendSingleCommand(command);
  }
  cleanUpAfterFailure();
  return result;
}

void USB_QZ_Controller::sendSingleCommand(int command) {
  switch (command) {
    case USBVENDOR_INITIALIZE:
      sendIntializeCommand();
      break;
    case USBVENDOR_INQUIRY:
      sendInquiryCommand();
      break;
    case USBVENDOR_RESERVE_UNIT:
      sendReserveUnitCommand();
      break;
    case USBVENDOR_RELEASE_UNIT:
      sendReleaseCommand();
      break;
    case USBVENDOR_SCAN:
      sendScanCommand();
      break;
    case USBVENDOR_SET_WINDOW:
      sendSetWindow();
      break;
    case USBVENDOR_READ:
      sendReadCommand();
      break;
    case USBVENDOR_MODE_SELECT:
      sendModeSelectCommand();
      break;
    case USBVENDOR_MODE_SENSE:
      for (const std::uint8_t page : {kQZSubDevicePage, kQZMeasurementUnitPage}) {
        m_pendingModePage = page;
        sendModeSenseCommand(page);
      }
      break;
    case USBVENDOR_TEST_UNIT_READY:
      sendTestUnitReadyCommand();
      break;
    case USBVENDOR_READ_BLOCK_HEADER:
      sendReadBlockHeaderCommand();
      break;
    case USBVENDOR_WAKEUP:
      sendWakeupCommand();
      break;
    default:
      break;
  }
}
