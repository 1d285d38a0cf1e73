// Records of the HP wire. Numbers are big-endian; every record is plain bytes of a fixed length, so
// that a reply is copied into it whole. Bytes named unread... are received and ignored.
#ifndef TVRSCN_HP_WIRE_H
#define TVRSCN_HP_WIRE_H

#include <cstddef>
#include <cstdint>

#include "tvrscn/big_endian.h"

// The status byte of every answer. An answer that never came reads as all zero, and so as good.
enum HPPKUSBStatusCode : std::uint8_t {
  HPPKUSB_STATUS_GOOD = 0,
  HPPKUSB_STATUS_CHECK_CONDITION = 2,  // the message word says what
  HPPKUSB_STATUS_NO_MEMORY = 4,        // in the answer to RESERVE UNIT
  HPPKUSB_STATUS_CANCELLED = 4,        // elsewhere: the device ended the job
  HPPKUSB_STATUS_BUSY = 8,
  HPPKUSB_STATUS_IN_USE = 9,         // another user has the scanner
  HPPKUSB_STATUS_NO_RESOURCE = 255,  // in the answer to RESERVE UNIT
};

// The word that details a check condition. Single bits, yet compared as whole words.
enum HPPKUSBMessageData : std::uint16_t {
  HPPKUSB_MESSAGE_NO_ERROR = 0x0001,
  HPPKUSB_MESSAGE_COMMAND_ERROR = 0x0002,
  HPPKUSB_MESSAGE_SAVING_NOT_SUPPORTED = 0x0004,
  HPPKUSB_MESSAGE_POWER_ON_RESET = 0x0008,
  HPPKUSB_MESSAGE_NO_DOCUMENT = 0x0010,
  HPPKUSB_MESSAGE_DOCUMENT_JAM = 0x0020,
  HPPKUSB_MESSAGE_COVER_OPEN = 0x0040,
  HPPKUSB_MESSAGE_WARMUP = 0x0080,
  HPPKUSB_MESSAGE_LOCKING_ERROR = 0x0100,
  HPPKUSB_MESSAGE_INVALID_AREA = 0x0200,
  HPPKUSB_MESSAGE_RESOURCE_BUSY = 0x0400,
  HPPKUSB_MESSAGE_INVALID_KEY = 0x0800,
  HPPKUSB_MESSAGE_BANKNOTE = 0x1000,
  HPPKUSB_MESSAGE_INSUFFICIENT_QUOTA = 0x2000,
};

// Value of messageFlag when messageData is meaningful.
constexpr std::uint8_t kHPMessagePresent = 0x20;
// Value of documentSource when the job reads from the automatic document feeder.
constexpr std::uint8_t kHPDocumentSourceFeeder = 2;

// Kinds of image block.
enum HPPKUSBBlockType : std::uint8_t {
  HPPKUSB_BLOCK_JPEG_HEADER = 0x70,  // first block of a page
  HPPKUSB_BLOCK_DATA = 0x80,
  HPPKUSB_BLOCK_END = 0x81,  // last block of a page, with data of its own
};

// Asks for a window. 25 bytes; the member initialisers are the template that goes out when no
// settings are at hand.
struct HPPKUSBSetWindowParameterRequest {
  std::uint8_t leadIn[2] = {0x1B, 0xA8};
  std::uint8_t command = 0x24;
  std::uint8_t fixed3 = 0x13;
  std::uint8_t fixed4 = 0x00;     // 0x30 once filled
  BigEndian32 windowWidth = {};   // 1/1200 inch
  BigEndian32 windowHeight = {};  // 1/1200 inch
  std::uint8_t resolutionCodeX = 0x05;
  std::uint8_t resolutionCodeY = 0x05;
  std::uint8_t reserved15[4] = {};
  std::uint8_t colorCode = 0x05;
  std::uint8_t fixed20 = 0x06;
  std::uint8_t backgroundCode = 0x01;
  std::uint8_t fixed22 = 0x15;
  std::uint8_t sourceCode[2] = {0x00, 0x00};
};
static_assert(sizeof(HPPKUSBSetWindowParameterRequest) == 25, "length on the wire");
static_assert(offsetof(HPPKUSBSetWindowParameterRequest, windowWidth) == 5, "offset on the wire");
static_assert(offsetof(HPPKUSBSetWindowParameterRequest, windowHeight) == 9, "offset on the wire");
static_assert(offsetof(HPPKUSBSetWindowParameterRequest, resolutionCodeX) == 13,
              "offset on the wire");
static_assert(offsetof(HPPKUSBSetWindowParameterRequest, colorCode) == 19, "offset on the wire");
static_assert(offsetof(HPPKUSBSetWindowParameterRequest, backgroundCode) == 21,
              "offset on the wire");
static_assert(offsetof(HPPKUSBSetWindowParameterRequest, sourceCode) == 23, "offset on the wire");

// Answer to release and abort.
struct HPPKUSBResponse {
  std::uint8_t unread0;
  std::uint8_t statusCode;
  std::uint8_t unread2;
};
static_assert(sizeof(HPPKUSBResponse) == 3, "length on the wire");
static_assert(offsetof(HPPKUSBResponse, statusCode) == 1, "offset on the wire");

struct HPPKUSBInquiryResponse {
  std::uint8_t unread0;
  std::uint8_t statusCode;
  std::uint8_t unread2[51];
  std::uint8_t documentSource;  // kHPDocumentSourceFeeder, anything else is the flatbed
  std::uint8_t unread54[18];
};
static_assert(sizeof(HPPKUSBInquiryResponse) == 72, "length on the wire");
static_assert(offsetof(HPPKUSBInquiryResponse, statusCode) == 1, "offset on the wire");
static_assert(offsetof(HPPKUSBInquiryResponse, documentSource) == 53, "offset on the wire");

struct HPPKUSBReserveUnitResponse {
  std::uint8_t unread0;
  std::uint8_t statusCode;
  std::uint8_t unread2;
  std::uint8_t messageFlag;  // kHPMessagePresent when messageData is meaningful
  BigEndian16 messageData;   // HPPKUSBMessageData
  std::uint8_t unread6[2];
};
static_assert(sizeof(HPPKUSBReserveUnitResponse) == 8, "length on the wire");
static_assert(offsetof(HPPKUSBReserveUnitResponse, messageFlag) == 3, "offset on the wire");
static_assert(offsetof(HPPKUSBReserveUnitResponse, messageData) == 4, "offset on the wire");

struct HPPKUSBSetWindowParameterResponse {
  std::uint8_t unread0;
  std::uint8_t statusCode;
  std::uint8_t unread2;
  std::uint8_t messageFlag;
  BigEndian16 messageData;  // HPPKUSBMessageData
  std::uint8_t unread6[2];
  BigEndian32 imageHeight;  // logged only
  BigEndian32 imageWidth;   // logged only
  std::uint8_t unread16[16];
};
static_assert(sizeof(HPPKUSBSetWindowParameterResponse) == 32, "length on the wire");
static_assert(offsetof(HPPKUSBSetWindowParameterResponse, messageData) == 4, "offset on the wire");
static_assert(offsetof(HPPKUSBSetWindowParameterResponse, imageHeight) == 8, "offset on the wire");
static_assert(offsetof(HPPKUSBSetWindowParameterResponse, imageWidth) == 12, "offset on the wire");

// Answer to the object position command, a response in spite of its name.
struct HPPKUSBObjectPosition {
  std::uint8_t unread0;
  std::uint8_t statusCode;
  std::uint8_t unread2[2];  // no flag here: a check condition always comes with its message
  BigEndian16 messageData;
};
static_assert(sizeof(HPPKUSBObjectPosition) == 6, "length on the wire");
static_assert(offsetof(HPPKUSBObjectPosition, messageData) == 4, "offset on the wire");

// Announces one block of image data.
struct HPPKUSBReadResponse {
  std::uint8_t unread0;
  std::uint8_t statusCode;
  std::uint8_t unread2;
  std::uint8_t blockType;      // HPPKUSBBlockType; any value can come
  BigEndian32 blockSize;       // bytes
  BigEndian16 verticalSize;    // lines in this block
  BigEndian16 horizontalSize;  // pixels per line
  std::uint8_t unread12[8];
};
static_assert(sizeof(HPPKUSBReadResponse) == 20, "length on the wire");
static_assert(offsetof(HPPKUSBReadResponse, blockType) == 3, "offset on the wire");
static_assert(offsetof(HPPKUSBReadResponse, blockSize) == 4, "offset on the wire");
static_assert(offsetof(HPPKUSBReadResponse, verticalSize) == 8, "offset on the wire");
static_assert(offsetof(HPPKUSBReadResponse, horizontalSize) == 10, "offset on the wire");

// Handed to the caller whole and uninterpreted.
struct HPPKUSBExtendedInquiryResponse {
  std::uint8_t bytes[260];
};
static_assert(sizeof(HPPKUSBExtendedInquiryResponse) == 260, "length on the wire");

// Handed to the caller whole and uninterpreted.
struct HPPKUSBExtendedSetWindowParameterResponse {
  std::uint8_t bytes[260];
};
static_assert(sizeof(HPPKUSBExtendedSetWindowParameterResponse) == 260, "length on the wire");

#endif  // TVRSCN_HP_WIRE_H
