// The commands of the QZ family.
#include <algorithm>
#include <array>
#include <cstring>

#include "platform/identity_text.h"
#include "tvrscn/qz_controller.h"
#include "usb/log_writer.h"

namespace {

constexpr std::uint8_t kWithoutClient = 0;
constexpr std::uint8_t kCancelledJob = 0x80;
constexpr char kCharacterSet[] = "UTF-8";

using Parameters = std::array<std::uint8_t, 4>;

USBVendorPacketHeader requestHeader(std::uint8_t clientId, std::uint8_t command,
                                    std::size_t payloadLength) {
  USBVendorPacketHeader header = {};
  header.bClientID = clientId;
  header.bCommandId = command;
  header.dwDataLength.set(static_cast<std::uint32_t>(payloadLength));
  return header;
}

// Records are plain bytes, so they may be sent as such.
template <typename Record>
char* bytesOf(Record& record) {
  static_assert(alignof(Record) == 1, "a wire record has no padding");
  return reinterpret_cast<char*>(&record);
}

// Room for a name and its terminator, as the device's record has it.
using Name = std::array<wchar_t, kQZNameSize>;

Name userName() {
  Name name = {};
  DWORD size = name.size();
  if (GetUserNameW(name.data(), &size) == 0) return {};
  return name;
}

Name computerName() {
  Name name = {};
  DWORD size = name.size();
  if (GetComputerNameW(name.data(), &size) == 0) return {};
  return name;
}

// A name is never cut: the device would reserve for somebody else.
bool setName(char (&field)[kQZNameSize], const char* fieldName, const std::string& encoded) {
  if (encoded.size() > kQZNameSize) {
    tvrscn::writeLog(
        L"RESERVE UNIT is not sent: the name for %S has %u bytes in UTF-8, and only %u fit",
        {fieldName, static_cast<unsigned>(encoded.size() - 1), unsigned{kQZNameSize - 1}});
    return false;
  }
  std::copy(encoded.begin(), encoded.end(), field);
  return true;
}

}  // namespace

int USB_QZ_Controller::sendPlainCommand(unsigned char clientId, unsigned char command) {
  USBVendorPacketHeader header = requestHeader(clientId, command, 0);
  return HandleUsbDeviceCommunication(m_hDeviceWrite, bytesOf(header), nullptr, 0);
}

int USB_QZ_Controller::sendCommandWith(unsigned char clientId, unsigned char command, char* payload,
                                       std::size_t length) {
  USBVendorPacketHeader header = requestHeader(clientId, command, length);
  return HandleUsbDeviceCommunication(m_hDeviceWrite, bytesOf(header), payload,
                                      static_cast<int>(length));
}

int USB_QZ_Controller::sendWakeupCommand() {
  return sendPlainCommand(kWithoutClient, USBVENDOR_WAKEUP);
}

int USB_QZ_Controller::sendReserveUnitCommand() {
  const Name user = userName();
  const Name computer = computerName();
  USBVendorReservation reservation = {};
  std::copy(std::begin(kCharacterSet), std::end(kCharacterSet), reservation.csCharacterSet);
  if (!setName(reservation.csComputerName, "csComputerName",
               GetEncodedString(computer.data(), CP_UTF8)) ||
      !setName(reservation.csUserName, "csUserName", GetEncodedString(user.data(), CP_UTF8))) {
    return USB_ERR_GENERAL;
  }
  return sendCommandWith(kWithoutClient, USBVENDOR_RESERVE_UNIT, bytesOf(reservation),
                         sizeof(reservation));
}

int USB_QZ_Controller::sendTestUnitReadyCommand() {
  return sendPlainCommand(getReservedClientID(), USBVENDOR_TEST_UNIT_READY);
}

int USB_QZ_Controller::sendIntializeCommand() {
  Parameters parameters = {};
  if (getJobCancelled()) parameters[0] = kCancelledJob;
  return sendCommandWith(getReservedClientID(), USBVENDOR_INITIALIZE, bytesOf(parameters),
                         sizeof(parameters));
}

int USB_QZ_Controller::sendInquiryCommand() {
  return sendPlainCommand(getReservedClientID(), USBVENDOR_INQUIRY);
}

int USB_QZ_Controller::sendModeSenseCommand(unsigned char page) {
  Parameters parameters = {page};
  return sendCommandWith(getReservedClientID(), USBVENDOR_MODE_SENSE, bytesOf(parameters),
                         sizeof(parameters));
}

int USB_QZ_Controller::sendModeSelectCommand() {
  USBVendorSubDevicePage page = {};
  if (m_scanDataSource != nullptr) m_scanDataSource->FillModeSelectData(&page);
  return sendCommandWith(getReservedClientID(), USBVENDOR_MODE_SELECT, bytesOf(page), sizeof(page));
}

int USB_QZ_Controller::sendSetWindow() {
  USBVendorSetWindowData window = {};
  if (m_scanDataSource != nullptr) m_scanDataSource->FillSetWindowData(&window);
  return sendCommandWith(getReservedClientID(), USBVENDOR_SET_WINDOW, bytesOf(window),
                         sizeof(window));
}

int USB_QZ_Controller::sendScanCommand() {
  return sendPlainCommand(getReservedClientID(), USBVENDOR_SCAN);
}

int USB_QZ_Controller::sendReadBlockHeaderCommand() {
  return sendPlainCommand(getReservedClientID(), USBVENDOR_READ_BLOCK_HEADER);
}

int USB_QZ_Controller::sendReadCommand() {
  BigEndian32 transferLength = {};
  transferLength.set(kQZTransferLength);
  return sendCommandWith(getReservedClientID(), USBVENDOR_READ, bytesOf(transferLength),
                         sizeof(transferLength));
}

int USB_QZ_Controller::sendReleaseCommand() {
  return sendPlainCommand(getReservedClientID(), USBVENDOR_RELEASE_UNIT);
}

std::string USB_QZ_Controller::GetEncodedString(std::wstring text, unsigned int codePage) {
  const int wideLength = static_cast<int>(text.size()) + 1;
  const int length =
      WideCharToMultiByte(codePage, 0, text.c_str(), wideLength, nullptr, 0, nullptr, nullptr);
  if (length <= 0) return {};
  std::string encoded(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(codePage, 0, text.c_str(), wideLength, encoded.data(), length, nullptr,
                      nullptr);
  return encoded;
}
