// The LowEnd scanner's own view of its wire. A header of ten bytes stands in front of everything;
// its number is little-endian.
//
//   0   1B 4E          fixed
//   2   1              operation code
//   3   1              zero
//   4   4              length of what follows the header
//   8   1              80 in requests, the verdict in answers, 1 in the last packet of a job
//   9   1              zero
#ifndef TVRSCN_VIRTUAL_LOWEND_LOWEND_PROTOCOL_H
#define TVRSCN_VIRTUAL_LOWEND_LOWEND_PROTOCOL_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "virtual/common/bytes.h"

namespace tvrscn::virtual_device {

inline constexpr std::uint8_t kLowEndLeadIn0 = 0x1B;
inline constexpr std::uint8_t kLowEndLeadIn1 = 0x4E;
inline constexpr std::size_t kLowEndCodeAt = 2;
inline constexpr std::size_t kLowEndHeaderSize = 10;
inline constexpr std::size_t kLowEndMostRequest = 65535;
inline constexpr std::uint8_t kLowEndRequestMark = 0x80;

enum LowEndCode : std::uint8_t {
  kLowEndStart = 1,
  kLowEndImage = 2,
  kLowEndCapabilities = 3,
  kLowEndStatus = 4,
  kLowEndAbort = 15,
};

// Low four bits of the status byte in answers.
enum LowEndVerdict : std::uint8_t { kLowEndGood = 0, kLowEndBadRequest = 1 };

// Status byte of image packets.
inline constexpr std::uint8_t kLowEndMorePackets = 0;
inline constexpr std::uint8_t kLowEndFinalPacket = 1;

// A packet with so much behind its header carries no image data.
inline constexpr std::size_t kLowEndControlSize = 2;

// A header and what follows it, as one transfer.
inline Bytes makeLowEndTransfer(std::uint8_t code, std::uint8_t status,
                                std::span<const std::uint8_t> payload) {
  Bytes bytes = {kLowEndLeadIn0, kLowEndLeadIn1, code, 0};
  for (unsigned shift = 0; shift < 32; shift += 8) {
    bytes.push_back(static_cast<std::uint8_t>((payload.size() >> shift) & 0xFF));
  }
  bytes.push_back(status);
  bytes.push_back(0);
  bytes.insert(bytes.end(), payload.begin(), payload.end());
  return bytes;
}

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_LOWEND_LOWEND_PROTOCOL_H
