// The one record of the LowEnd wire: the header in front of every request, every answer and every
// image packet. What follows it is a JSON document or image data.
#ifndef TVRSCN_LOWEND_WIRE_H
#define TVRSCN_LOWEND_WIRE_H

#include <cstddef>
#include <cstdint>

#include "tvrscn/little_endian.h"

enum LowEndUSBOperationCode : std::uint8_t {
  LowEndOpStartScan = 1,          // out: the scan request; in: the device's verdict
  LowEndOpImageData = 2,          // pushed by the device during a job, never requested
  LowEndOpSupportedFeatures = 3,  // in: the capability document
  LowEndOpDeviceStatus = 4,       // in: the status document
  LowEndOpAbortScan = 15,
};

// First bytes of every header: escape and the letter N.
constexpr std::uint8_t kLowEndEscapeByte = 0x1B;
constexpr std::uint8_t kLowEndLeadByte = 0x4E;
// statusByte of every request.
constexpr std::uint8_t kLowEndRequestStatus = 0x80;
// statusByte of the last image packet of a job.
constexpr std::uint8_t kLowEndLastPacket = 1;

// 10 bytes, the same in both directions; the member initialisers are a request without payload.
struct LowEnd_USB_Response {
  std::uint8_t escapeByte = kLowEndEscapeByte;  // read on image packets only
  std::uint8_t leadByte = kLowEndLeadByte;      // read on image packets only
  std::uint8_t operationCode = 0;               // a LowEndUSBOperationCode; an answer repeats it
  std::uint8_t reservedByte = 0;
  LittleEndian32 payloadLength = {};  // bytes that follow the header
  // Verdict on a start-scan request in the low four bits; kLowEndLastPacket on image packets.
  std::uint8_t statusByte = kLowEndRequestStatus;
  std::uint8_t reservedByte2 = 0;
};
static_assert(sizeof(LowEnd_USB_Response) == 10, "length on the wire");
static_assert(alignof(LowEnd_USB_Response) == 1, "a wire record has no padding");
static_assert(offsetof(LowEnd_USB_Response, escapeByte) == 0, "offset on the wire");
static_assert(offsetof(LowEnd_USB_Response, leadByte) == 1, "offset on the wire");
static_assert(offsetof(LowEnd_USB_Response, operationCode) == 2, "offset on the wire");
static_assert(offsetof(LowEnd_USB_Response, reservedByte) == 3, "offset on the wire");
static_assert(offsetof(LowEnd_USB_Response, payloadLength) == 4, "offset on the wire");
static_assert(offsetof(LowEnd_USB_Response, statusByte) == 8, "offset on the wire");
static_assert(offsetof(LowEnd_USB_Response, reservedByte2) == 9, "offset on the wire");

#endif  // TVRSCN_LOWEND_WIRE_H
