// Records of the QZ wire. Numbers are big-endian; every record is plain bytes of a fixed length.
// Bytes named reserved... go out as zeros and are not read.
#ifndef TVRSCN_QZ_WIRE_H
#define TVRSCN_QZ_WIRE_H

#include <cstddef>
#include <cstdint>

#include "tvrscn/big_endian.h"

// What a request asks for; a reply repeats it.
enum USBVendorCommand : std::uint8_t {
  USBVENDOR_INITIALIZE = 0x07,
  USBVENDOR_INQUIRY = 0x12,
  USBVENDOR_RESERVE_UNIT = 0x16,
  USBVENDOR_RELEASE_UNIT = 0x17,
  USBVENDOR_SCAN = 0x1B,
  USBVENDOR_SET_WINDOW = 0x24,
  USBVENDOR_READ = 0x28,
  USBVENDOR_MODE_SELECT = 0x55,
  USBVENDOR_MODE_SENSE = 0x5A,
  USBVENDOR_TEST_UNIT_READY = 0xC1,
  USBVENDOR_READ_BLOCK_HEADER = 0xC2,
  USBVENDOR_WAKEUP = 0xC3,
};

// Values of bOperationStatus. Those of the others that the device may send are texts alone.
enum USBVendorOperationStatus : std::uint8_t {
  USBVENDOR_STATUS_GOOD = 0,
  USBVENDOR_STATUS_CHECK_CONDITION = 2,  // sense data follow
  USBVENDOR_STATUS_BUSY = 8,
  USBVENDOR_STATUS_SCANNING = 9,
  USBVENDOR_STATUS_RESERVATION_CONFLICT = 24,
  USBVENDOR_STATUS_AUTHENTICATION_ERROR = 33,
  USBVENDOR_STATUS_FUNCTION_DISABLED = 34,
  USBVENDOR_STATUS_PROHIBITED_TIME = 35,
  USBVENDOR_STATUS_IMAGING_ERROR = 36,
};

// The low four bits of bScannerStatus.
enum USBVendorScannerState : std::uint8_t {
  USBVENDOR_STATE_IDLE = 0,
  USBVENDOR_STATE_READY = 1,
  USBVENDOR_STATE_TRANSFERRING = 2,
  USBVENDOR_STATE_IMAGE_END = 3,
  USBVENDOR_STATE_ERROR_RESERVED = 4,
  USBVENDOR_STATE_BLOCK_END = 5,
};
constexpr std::uint8_t kQZStateMask = 0x0F;
// Bit of bScannerStatus: a document lies in the feeder.
constexpr std::uint8_t kQZDocumentPresent = 0x40;

// Pages of MODE SENSE.
constexpr std::uint8_t kQZMeasurementUnitPage = 0x03;
constexpr std::uint8_t kQZSubDevicePage = 0x20;

// Bytes that every READ asks for.
constexpr std::uint32_t kQZTransferLength = 0x00040000;

// In front of every request and every reply.
struct USBVendorPacketHeader {
  std::uint8_t bClientID;  // the reservation's, which the device assigns; 0 before
  std::uint8_t bCommandId;
  std::uint8_t bOperationStatus;  // 0 in a request
  std::uint8_t bScannerStatus;    // 0 in a request
  BigEndian32 dwDataLength;       // bytes behind the header
};
static_assert(sizeof(USBVendorPacketHeader) == 8, "length on the wire");
static_assert(alignof(USBVendorPacketHeader) == 1, "a wire record has no padding");
static_assert(offsetof(USBVendorPacketHeader, bCommandId) == 1, "offset on the wire");
static_assert(offsetof(USBVendorPacketHeader, bOperationStatus) == 2, "offset on the wire");
static_assert(offsetof(USBVendorPacketHeader, bScannerStatus) == 3, "offset on the wire");
static_assert(offsetof(USBVendorPacketHeader, dwDataLength) == 4, "offset on the wire");

// Room for one text of a reservation, its terminating zero included.
constexpr std::size_t kQZNameSize = 34;

// Who reserves the unit. Texts are UTF-8, filled up with zeros.
struct USBVendorReservation {
  std::uint8_t reserved0[4];
  char csCharacterSet[kQZNameSize];  // "UTF-8"
  char csComputerName[kQZNameSize];
  char csUserName[kQZNameSize];
  std::uint8_t reserved106[166];
};
static_assert(sizeof(USBVendorReservation) == 272, "length on the wire");
static_assert(offsetof(USBVendorReservation, csCharacterSet) == 4, "offset on the wire");
static_assert(offsetof(USBVendorReservation, csComputerName) == 38, "offset on the wire");
static_assert(offsetof(USBVendorReservation, csUserName) == 72, "offset on the wire");
static_assert(offsetof(USBVendorReservation, reserved106) == 106, "offset on the wire");

// Payload of SET WINDOW.
struct USBVendorSetWindowData {
  std::uint8_t reserved0[2];
  BigEndian16 wXResolution;  // dots per inch
  BigEndian16 wYResolution;
  std::uint8_t reserved6[10];
  BigEndian32 dwWindowWidth;   // tenths of a millimetre
  BigEndian32 dwWindowLength;  // tenths of a millimetre
  std::uint8_t reserved24[2];
  std::uint8_t bColorMode;  // 0x20 grey, 0x10 colour
  std::uint8_t bBitDepth;
  std::uint8_t bBackgroundFlags;  // 0x10 kept, 0x40 removed
  std::uint8_t bColorControl;
  std::uint8_t reserved30[10];
  BigEndian32 dwScanWidth;
  BigEndian32 dwScanLength;
};
static_assert(sizeof(USBVendorSetWindowData) == 48, "length on the wire");
static_assert(offsetof(USBVendorSetWindowData, wXResolution) == 2, "offset on the wire");
static_assert(offsetof(USBVendorSetWindowData, wYResolution) == 4, "offset on the wire");
static_assert(offsetof(USBVendorSetWindowData, dwWindowWidth) == 16, "offset on the wire");
static_assert(offsetof(USBVendorSetWindowData, dwWindowLength) == 20, "offset on the wire");
static_assert(offsetof(USBVendorSetWindowData, bColorMode) == 26, "offset on the wire");
static_assert(offsetof(USBVendorSetWindowData, bBitDepth) == 27, "offset on the wire");
static_assert(offsetof(USBVendorSetWindowData, bBackgroundFlags) == 28, "offset on the wire");
static_assert(offsetof(USBVendorSetWindowData, bColorControl) == 29, "offset on the wire");
static_assert(offsetof(USBVendorSetWindowData, dwScanWidth) == 40, "offset on the wire");
static_assert(offsetof(USBVendorSetWindowData, dwScanLength) == 44, "offset on the wire");

// What the device can do (in the reply to MODE SENSE) and what a job wants of it (in MODE SELECT).
struct USBVendorSubDevicePage {
  std::uint8_t reserved0[2];
  std::uint8_t bFeederOptions;
  BigEndian16 wPageCount;
  std::uint8_t bDuplexOptions;
  std::uint8_t reserved6[2];
  BigEndian32 dwFlatbedMaxWidth;  // tenths of a millimetre, as the three below
  BigEndian32 dwFlatbedMaxLength;
  BigEndian32 dwFeederMaxWidth;
  BigEndian32 dwFeederMaxLength;
  std::uint8_t reserved24[4];
  BigEndian16 wMaxXResolution;  // dots per inch, as the three below
  BigEndian16 wMaxYResolution;
  BigEndian16 wMinXResolution;
  BigEndian16 wMinYResolution;
  std::uint8_t reserved36[20];
};
static_assert(sizeof(USBVendorSubDevicePage) == 56, "length on the wire");
static_assert(offsetof(USBVendorSubDevicePage, bFeederOptions) == 2, "offset on the wire");
static_assert(offsetof(USBVendorSubDevicePage, wPageCount) == 3, "offset on the wire");
static_assert(offsetof(USBVendorSubDevicePage, bDuplexOptions) == 5, "offset on the wire");
static_assert(offsetof(USBVendorSubDevicePage, dwFlatbedMaxWidth) == 8, "offset on the wire");
static_assert(offsetof(USBVendorSubDevicePage, dwFlatbedMaxLength) == 12, "offset on the wire");
static_assert(offsetof(USBVendorSubDevicePage, dwFeederMaxWidth) == 16, "offset on the wire");
static_assert(offsetof(USBVendorSubDevicePage, dwFeederMaxLength) == 20, "offset on the wire");
static_assert(offsetof(USBVendorSubDevicePage, wMaxXResolution) == 28, "offset on the wire");
static_assert(offsetof(USBVendorSubDevicePage, wMaxYResolution) == 30, "offset on the wire");
static_assert(offsetof(USBVendorSubDevicePage, wMinXResolution) == 32, "offset on the wire");
static_assert(offsetof(USBVendorSubDevicePage, wMinYResolution) == 34, "offset on the wire");

// In the reply to MODE SENSE; kept whole, its bytes are not read.
struct USBVendorMeasurementUnit {
  std::uint8_t bytes[8];
};
static_assert(sizeof(USBVendorMeasurementUnit) == 8, "length on the wire");

#endif  // TVRSCN_QZ_WIRE_H
