// The HP commands. One command is out at a time: the next is written only after the answer to the
// last has been read. A transfer that fails leaves zeros in the record, which read as status good;
// the flow tells such an answer by its block type.
#include <algorithm>
#include <array>
#include <bit>

#include "platform/device_file.h"
#include "tvrscn/hp_controller.h"

namespace {

enum CommandCode : std::uint8_t {
  kAbort = 0x06,
  kInquiry = 0x12,
  kExtendedInquiry = 0x13,
  kReserveUnit = 0x16,
  kReleaseUnit = 0x17,
  kTimeout = 0x22,
  kExtendedSetWindow = 0x25,
  kRead = 0x28,
  kReadImage = 0x29,
  kObjectPosition = 0x31,
};

constexpr std::uint8_t kLeadIn0 = 0x1B;
constexpr std::uint8_t kLeadIn1 = 0xA8;
constexpr std::uint8_t kLongCommandMark = 0xFB;

using ShortCommand = std::array<std::uint8_t, 4>;
using LongCommand = std::array<std::uint8_t, 255>;  // zeros behind its mark
// The extended set window request is a long command that goes out only up to here.
constexpr std::size_t kExtendedSetWindowSize = 249;

constexpr ShortCommand shortCommand(CommandCode code) {
  return {kLeadIn0, kLeadIn1, code, 0x00};
}

constexpr LongCommand longCommand(CommandCode code) {
  return {kLeadIn0, kLeadIn1, code, kLongCommandMark};
}

// The device takes no read above this, and none whose length is not a power of two.
constexpr unsigned long kLargestChunk = 4096;

// The two ends of the link, for one exchange.
struct Channels {
  HANDLE requests;
  HANDLE replies;

  int write(const void* data, std::size_t length) const {
    DWORD written = 0;  // a short write shows in the answer
    FlushFileBuffers(requests);
    return WriteFile(requests, data, static_cast<DWORD>(length), &written, nullptr);
  }

  int read(void* data, std::size_t length) const {
    DWORD received = 0;  // what did not come stays zero
    FlushFileBuffers(replies);
    return ReadFile(replies, data, static_cast<DWORD>(length), &received, nullptr);
  }

  // A short command out and its answer in, into a record that the caller has zeroed.
  int exchange(CommandCode code, void* record, std::size_t length) const {
    const ShortCommand command = shortCommand(code);
    if (write(command.data(), command.size()) == 0) return 0;
    return read(record, length);
  }
};

}  // namespace

int USB_HP_Controller::WriteRequest(const void* data, std::size_t length) {
  return Channels{m_hDeviceWrite, m_hDeviceRead}.write(data, length);
}

int USB_HP_Controller::ReadResponse(void* data, std::size_t length) {
  return Channels{m_hDeviceWrite, m_hDeviceRead}.read(data, length);
}

int USB_HP_Controller::SendInquiryCommand(HPPKUSBInquiryResponse& response) {
  response = {};
  return Channels{m_hDeviceWrite, m_hDeviceRead}.exchange(kInquiry, &response, sizeof(response));
}

int USB_HP_Controller::SendReserveUnitCommand(HPPKUSBReserveUnitResponse& response) {
  response = {};
  return Channels{m_hDeviceWrite, m_hDeviceRead}.exchange(kReserveUnit, &response,
                                                          sizeof(response));
}

int USB_HP_Controller::SendReleaseUnitCommand(HPPKUSBResponse& response) {
  response = {};
  return Channels{m_hDeviceWrite, m_hDeviceRead}.exchange(kReleaseUnit, &response,
                                                          sizeof(response));
}

int USB_HP_Controller::SendAbortCommand(HPPKUSBResponse& response) {
  response = {};
  return Channels{m_hDeviceWrite, m_hDeviceRead}.exchange(kAbort, &response, sizeof(response));
}

int USB_HP_Controller::SendObjectPositionCommand(HPPKUSBObjectPosition& response) {
  response = {};
  return Channels{m_hDeviceWrite, m_hDeviceRead}.exchange(kObjectPosition, &response,
                                                          sizeof(response));
}

int USB_HP_Controller::SendReadCommand(HPPKUSBReadResponse& response) {
  response = {};
  return Channels{m_hDeviceWrite, m_hDeviceRead}.exchange(kRead, &response, sizeof(response));
}

int USB_HP_Controller::SendSetWndParamCommand(HPPKUSBSetWindowParameterResponse& response) {
  response = {};
  HPPKUSBSetWindowParameterRequest request;
  if (m_scanDataSource) m_scanDataSource->FillSetWindowData(request);
  if (WriteRequest(&request, sizeof(request)) == 0) return 0;
  return ReadResponse(&response, sizeof(response));
}

int USB_HP_Controller::SendExtendedInquiryCommand(HPPKUSBExtendedInquiryResponse& response) {
  response = {};
  const LongCommand command = longCommand(kExtendedInquiry);
  m_lastIoResult = WriteRequest(command.data(), command.size());
  if (m_lastIoResult != 0) m_lastIoResult = ReadResponse(&response, sizeof(response));
  return m_lastIoResult;
}

int USB_HP_Controller::SendExtendedSetWndParamCommand(
    HPPKUSBExtendedSetWindowParameterResponse& response) {
  response = {};
  const LongCommand command = longCommand(kExtendedSetWindow);
  m_lastIoResult = WriteRequest(command.data(), kExtendedSetWindowSize);
  if (m_lastIoResult != 0) m_lastIoResult = ReadResponse(&response, sizeof(response));
  return m_lastIoResult;
}

int USB_HP_Controller::SendTimeoutCommand() {
  const LongCommand command = longCommand(kTimeout);
  m_lastIoResult = WriteRequest(command.data(), command.size());
  return m_lastIoResult;
}

int USB_HP_Controller::SendReadImageCommand(unsigned char* buffer, unsigned long size) {
  const ShortCommand command = shortCommand(kReadImage);
  const int written = WriteRequest(command.data(), command.size());
  if (written == 0) return 0;

  FlushFileBuffers(m_hDeviceRead);
  BOOL lastRead = 1;
  for (unsigned long received = 0; received != size;) {
    const unsigned long chunk = std::min(std::bit_floor(size - received), kLargestChunk);
    DWORD count = 0;
    lastRead =
        ReadFile(m_hDeviceRead, buffer + received, static_cast<DWORD>(chunk), &count, nullptr);
    // Neither a failed read nor one that brought nothing ends this: a slow device may still
    // deliver.
    received += count;
  }
  return lastRead != 0 ? written : static_cast<int>(GetLastError());
}
