// What comes back from a QZ device: the header of a reply, its data, and who gets them.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

#include "family_qz/qz_page_reception.h"
#include "family_qz/qz_transaction.h"
#include "platform/device_file.h"
#include "tvrscn/qz_controller.h"

namespace {

// How many bytes came, or nothing at all when the call failed.
DWORD readUpTo(HANDLE handle, void* data, std::uint32_t length) {
  DWORD received = 0;
  return ReadFile(handle, data, length, &received, nullptr) != 0 ? received : 0;
}

// A record out of a reply that may be shorter than it: zeros behind what came.
template <typename Record>
Record recordFrom(const char* buffer, std::size_t length) {
  Record record = {};
  std::memcpy(&record, buffer, std::min(sizeof(record), length));
  return record;
}

std::array<char, 7> senseText(const char* buffer) {
  constexpr std::size_t kFirstSenseByte = 4;
  std::array<unsigned char, 3> sense = {};
  std::memcpy(sense.data(), buffer + kFirstSenseByte, sense.size());
  std::array<char, 7> text = {};
  std::snprintf(text.data(), text.size(), "%02x%02x%02x", unsigned{sense[0]}, unsigned{sense[1]},
                unsigned{sense[2]});
  return text;
}

std::uint32_t blockSize(const char* buffer) {
  constexpr std::size_t kBlockSizeOffset = 4;
  BigEndian32 size = {};
  std::memcpy(&size, buffer + kBlockSizeOffset, sizeof(size));
  return size.value();
}

}  // namespace

int USB_QZ_Controller::ReadVendorHeader(void* handle, USBVendorPacketHeader* header) {
  std::array<unsigned char, sizeof(USBVendorPacketHeader)> bytes = {};
  if (readUpTo(handle, bytes.data(), bytes.size()) < bytes.size()) return USB_ERR_READ;
  std::memcpy(header, bytes.data(), bytes.size());
  m_ecpCommandId = header->bCommandId;
  if (header->bCommandId == USBVENDOR_RESERVE_UNIT) m_reservedClientID = header->bClientID;
  setOperationStatusCode(header);
  return 0;
}

void USB_QZ_Controller::keepModePage(const char* buffer, std::size_t length) {
  const std::uint8_t page = std::exchange(m_pendingModePage, std::uint8_t{0});
  if (m_scanDataSource == nullptr) return;
  if (page == kQZMeasurementUnitPage) {
    auto unit = recordFrom<USBVendorMeasurementUnit>(buffer, length);
    m_scanDataSource->SetMeasurementUnitData(&unit);
  }
  if (page == kQZSubDevicePage) {
    auto limits = recordFrom<USBVendorSubDevicePage>(buffer, length);
    m_scanDataSource->SetSubDevicesPageData(&limits);
  }
}

int USB_QZ_Controller::ReadVendorResponseData(void* handle, char* buffer,
                                              USBVendorPacketHeader* header) {
  const std::uint32_t length = header->dwDataLength.value();
  // Memory that could not be had counts as a failed read.
  if (buffer == nullptr) return USB_ERR_READ;
  // A reply is one transfer: it is not put together from several.
  if (length != 0 && readUpTo(handle, buffer, length) != length) return USB_ERR_READ;
  if (m_operationStatus == USBVENDOR_STATUS_CHECK_CONDITION) {
    setSenseInformation(header->bCommandId, senseText(buffer).data());
    return USB_ERR_READ;
  }
  switch (header->bCommandId) {
    case USBVENDOR_READ:
      QZTransaction::expectFollowUp(*this, *header);
      return QZPageReception(*this).onReply(*header, buffer);
    case USBVENDOR_MODE_SENSE:
      keepModePage(buffer, length);
      return 0;
    case USBVENDOR_READ_BLOCK_HEADER:
      if (header->bOperationStatus == USBVENDOR_STATUS_GOOD) m_blockSize = blockSize(buffer);
      return 0;
    default:
      return 0;
  }
}
