// The QZ scanner's own view of its wire. A header of eight bytes stands in front of every request
// and every reply; all numbers are big-endian.
//
//   0   1              client id: the reservation's, 0 before there is one
//   1   1              command; a reply repeats it
//   2   1              operation status, 0 in requests
//   3   1              scanner state in the low four bits, flags above them; 0 in requests
//   4   4              length of what follows the header
#ifndef TVRSCN_VIRTUAL_QZ_QZ_PROTOCOL_H
#define TVRSCN_VIRTUAL_QZ_QZ_PROTOCOL_H

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "virtual/common/bytes.h"
#include "virtual/virtual_qz_scanner.h"

namespace tvrscn::virtual_device {

inline constexpr std::size_t kQzHeaderSize = 8;
inline constexpr std::size_t kQzClientAt = 0;
inline constexpr std::size_t kQzCommandAt = 1;
inline constexpr std::size_t kQzStatusAt = 2;
inline constexpr std::size_t kQzStateAt = 3;
inline constexpr std::size_t kQzLengthAt = 4;

enum QzStatus : std::uint8_t {
  kQzGood = 0,
  kQzCheckCondition = 2,
  kQzBusy = 8,
  kQzReservationConflict = 24,
};

enum QzState : std::uint8_t {
  kQzIdle = 0,
  kQzReady = 1,
  kQzTransferring = 2,
  kQzImageEnd = 3,
  kQzErrorReserved = 4,
  kQzBlockEnd = 5,
};
inline constexpr std::uint8_t kQzStateBits = 0x0F;
inline constexpr std::uint8_t kQzFlagBits = 0xF0;
inline constexpr std::uint8_t kQzDocumentPresent = 0x40;

// Sense codes: the three sense bytes, the first one on top.
inline constexpr std::uint32_t kQzNotReady = 0x010400;
inline constexpr std::uint32_t kQzCoverOpen = 0x018000;
inline constexpr std::uint32_t kQzNoDocument = 0x023A00;
inline constexpr std::uint32_t kQzPaperJam = 0x025300;
inline constexpr std::uint32_t kQzScanning = 0x040000;
inline constexpr std::uint32_t kQzWrongLength = 0x041A00;
inline constexpr std::uint32_t kQzWrongCommand = 0x042000;
inline constexpr std::uint32_t kQzWrongField = 0x042400;
inline constexpr std::uint32_t kQzWrongParameter = 0x042600;
inline constexpr std::uint32_t kQzNoMoreData = 0x050000;
inline constexpr std::uint32_t kQzCancelled = 0x060000;
inline constexpr std::size_t kQzSenseSize = 8;
inline constexpr std::size_t kQzSenseAt = 4;

struct QzCommandForm {
  QzStep step;
  std::uint8_t code;
  std::size_t payload;  // bytes behind the request's header
  bool needsClient = true;
};

inline constexpr std::size_t kQzReservationSize = 272;
inline constexpr std::size_t kQzSubDeviceSize = 56;
inline constexpr std::size_t kQzWindowSize = 48;
inline constexpr std::size_t kQzArgumentSize = 4;

inline constexpr QzCommandForm kQzCommandForms[] = {
    {QzStep::kWakeUp, 0xC3, 0, false},
    {QzStep::kReserve, 0x16, kQzReservationSize, false},
    {QzStep::kReady, 0xC1, 0},
    {QzStep::kInitialize, 0x07, kQzArgumentSize},
    {QzStep::kInquiry, 0x12, 0},
    {QzStep::kModeSense, 0x5A, kQzArgumentSize},
    {QzStep::kModeSelect, 0x55, kQzSubDeviceSize},
    {QzStep::kWindow, 0x24, kQzWindowSize},
    {QzStep::kScan, 0x1B, 0},
    {QzStep::kBlockHeader, 0xC2, 0},
    {QzStep::kRead, 0x28, kQzArgumentSize},
    {QzStep::kRelease, 0x17, 0},
};
inline constexpr std::size_t kQzStepCount = std::size(kQzCommandForms);

// Arguments of initialize, mode sense and read, as one number.
inline constexpr std::uint32_t kQzCancelArgument = 0x80000000;
inline constexpr std::uint32_t kQzSubDeviceArgument = 0x20000000;
inline constexpr std::uint32_t kQzMeasurementArgument = 0x03000000;
inline constexpr std::uint32_t kQzReadArgument = 262144;

struct QzReply {
  std::uint8_t client = 0;
  std::uint8_t command = 0;
  std::uint8_t status = kQzGood;
  std::uint8_t scannerStatus = 0;
  Bytes data;
};

inline Bytes makeQzHeader(const QzReply& reply, std::uint32_t length) {
  Bytes header = {reply.client, reply.command, reply.status, reply.scannerStatus, 0, 0, 0, 0};
  putBig32(header, kQzLengthAt, length);
  return header;
}

// Check condition, and what goes with it.
inline void refuseQz(QzReply& reply, std::uint32_t sense) {
  reply.status = kQzCheckCondition;
  reply.data.assign(kQzSenseSize, 0);
  // The three bytes, and the zero behind them.
  putBig32(reply.data, kQzSenseAt, sense << 8);
}

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_QZ_QZ_PROTOCOL_H
