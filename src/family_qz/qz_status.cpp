// What a QZ device says of itself in each reply, as texts and job flags, and what of it the user
// hears.
#include <algorithm>
#include <cctype>
#include <string_view>

#include "tvrscn/qz_controller.h"
#include "tvrscn/usb_exception.h"

namespace {

// Which job flag a status sets, and for which commands.
enum class Flag { kNone, kRelease, kReleaseOnceReserved, kRetryOfWakeup };

struct OperationRow {
  std::uint8_t status;
  const char* text;
  Flag flag;
};

constexpr OperationRow kOperationRows[] = {
    {USBVENDOR_STATUS_GOOD, "Good:Command is accepted correctly", Flag::kNone},
    {USBVENDOR_STATUS_CHECK_CONDITION, "Check condition: Error due to command has occured",
     Flag::kReleaseOnceReserved},
    {USBVENDOR_STATUS_BUSY, "Busy: Command cannot be accepted, Resend the command",
     Flag::kRetryOfWakeup},
    {USBVENDOR_STATUS_SCANNING, "Scanning: Command cannot be accepted, scanning is in progress",
     Flag::kNone},
    {USBVENDOR_STATUS_RESERVATION_CONFLICT,
     "Reservation Conflict: Scanning resource is reserved by a different job", Flag::kNone},
    {USBVENDOR_STATUS_AUTHENTICATION_ERROR,
     "Scan Auth Error: Authentication error for scan occurred", Flag::kNone},
    {USBVENDOR_STATUS_FUNCTION_DISABLED, "Scan Function Disabled: Scan feature is disabled",
     Flag::kNone},
    {USBVENDOR_STATUS_PROHIBITED_TIME,
     "Scan Prohibited Time: Scanning is not possible due to the time limitation for the scan "
     "feature.",
     Flag::kRelease},
    {USBVENDOR_STATUS_IMAGING_ERROR, "Scan imaging Error: Scanning could not complete.",
     Flag::kRelease},
};

struct StateRow {
  std::uint8_t state;
  const char* text;
};

// The words are the device's own, slips included.
constexpr StateRow kStateRows[] = {
    {USBVENDOR_STATE_IDLE, "Idle : Scanner resouce can be ensured"},
    {USBVENDOR_STATE_READY, "Scan Ready : Scanning is ready"},
    {USBVENDOR_STATE_TRANSFERRING, "Image Transferring: image data is transferring"},
    {USBVENDOR_STATE_IMAGE_END, "Image End: Image data transfer has ended"},
    {USBVENDOR_STATE_ERROR_RESERVED, "Error with Reserved: Error when scanner resource is ensured"},
    {USBVENDOR_STATE_BLOCK_END,
     "Image Transferring (Block End): Image transfer has ended for one block"},
};

struct SenseRow {
  const char* code;
  const char* message;
};

constexpr SenseRow kSenseRows[] = {
    {"000000", "No Error"},
    {"010400",
     "Scanner Not Ready - Incomplete scan condition or Scan data was requested without an invalid "
     "scan command."},
    {"018000", "ADF cover is open or was opened during scanning."},
    {"018001", "ADF cover for maintenance is open or was opened during scanning."},
    {"018002",
     "Scanner cannot operate because ADF cover was once opened and then closed. Error needs to be "
     "cleared"},
    {"019000",
     "Scanning from ADF cannot start because the platen cover is open or was opened during "
     "scanning."},
    {"023A00",
     "No document on ADF at MODE SELECT. Issue RELEASE UNIT if RESERVE UNIT is established "
     "already."},
    {"025300",
     "Paper Jam occured while ADF was used or stopped abnormally during operation. Issue RELEASE "
     "UNIT if RESERVE UNIT is established already. Jam clear operation by user is necessary."},
    {"036000", "Lamp failure - Error in white balance and in optical hardware."},
    {"036200", "Scan Head Positioning Error - Error in motor or head home positioning sensor."},
    {"030000", "Hardware Error. Power OFF is necessary."},
    {"040000",
     "Illegal Request - Command for changing the status cannot be accepted during scanning."},
    {"041A00",
     "Parameter List Length error - Length block value is out of the specification. Change the "
     "Length block value."},
    {"042000",
     "Invalid Command Operation Code - Command is not supported or cannot be used in the current "
     "status. Check the Client ID and Command Value."},
    {"042400", "Invalid Field in parameter - Error in setting of Command Descriptor Block."},
    {"042600",
     "Invalid field in parameter list - Error in setting of the transferred parameter. Check the "
     "command value."},
    {"050000",
     "No scanned data is remaining because the byte count of data requested is more than the byte "
     "count of scanned data. Data transfer terminated."},
    {"060000", "Scan Job is cancelled at the device."},
};

constexpr std::string_view kCancelledSense = "060000";
constexpr int kSenseNotForBusy = 0;
constexpr int kUserWantsRetry = 1;

constexpr std::uint32_t bit(std::uint8_t value, unsigned position) {
  return (std::uint32_t{value} >> position) & 1U;
}

bool beforeReservation(std::uint8_t command) {
  return command == USBVENDOR_RESERVE_UNIT || command == USBVENDOR_WAKEUP;
}

}  // namespace

void USB_QZ_Controller::setOperationStatusCode(USBVendorPacketHeader* header) {
  const std::uint8_t command = header->bCommandId;
  m_operationStatus = header->bOperationStatus;
  setReleaseInfo(false);
  setRetryCommand(false);
  setJobCancelled(false);
  for (const OperationRow& row : kOperationRows) {
    if (row.status != m_operationStatus) continue;
    m_operationStatusText = row.text;
    if (row.flag == Flag::kRelease) setReleaseInfo(true);
    if (row.flag == Flag::kReleaseOnceReserved) setReleaseInfo(!beforeReservation(command));
    if (row.flag == Flag::kRetryOfWakeup) setRetryCommand(command == USBVENDOR_WAKEUP);
  }
  const std::uint8_t state = header->bScannerStatus & kQZStateMask;
  for (const StateRow& row : kStateRows) {
    if (row.state == state) m_scannerStatusText = row.text;
  }
  m_scannerFlag4 = bit(header->bScannerStatus, 4);
  m_scannerFlag5 = bit(header->bScannerStatus, 5);
  m_documentPresent = bit(header->bScannerStatus, 6);
  m_scannerFlag7 = bit(header->bScannerStatus, 7);
}

void USB_QZ_Controller::mapSenseInformation() {
  for (const SenseRow& row : kSenseRows)
    m_senseMessages.emplace(row.code, row.message);
}

void USB_QZ_Controller::setSenseInformation(unsigned char command, char* sense) {
  for (char* digit = sense; *digit != '\0'; ++digit)
    *digit = static_cast<char>(std::toupper(static_cast<unsigned char>(*digit)));
  const auto message = m_senseMessages.find(sense);
  if (message != m_senseMessages.end()) m_senseText = message->second.c_str();
  if (sense == kCancelledSense) setJobCancelled(true);

  // The two commands of the clean-up follow a failure that has been told already.
  if (command == USBVENDOR_RELEASE_UNIT || command == USBVENDOR_INITIALIZE) return;
  const int answer = USBException::USBExceptionHandler(sense, kSenseNotForBusy, m_pCallback,
                                                       m_pErrorDictionary.get(),
                                                       static_cast<int>(m_bUsingTevraUI));
  m_retryScan = answer == kUserWantsRetry;
}
