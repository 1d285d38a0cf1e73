// The HP scanner's own view of its wire: what it accepts and what it answers. All numbers on this
// wire are big-endian.
#ifndef TVRSCN_VIRTUAL_HP_HP_PROTOCOL_H
#define TVRSCN_VIRTUAL_HP_HP_PROTOCOL_H

#include <cstddef>
#include <cstdint>

namespace tvrscn::virtual_device {

inline constexpr std::uint8_t kHpLeadIn0 = 0x1B;
inline constexpr std::uint8_t kHpLeadIn1 = 0xA8;

enum class HpCode : std::uint8_t {
  kAbort = 0x06,
  kInquiry = 0x12,
  kExtendedInquiry = 0x13,
  kReserve = 0x16,
  kRelease = 0x17,
  kTimeout = 0x22,
  kWindow = 0x24,
  kExtendedWindow = 0x25,
  kRead = 0x28,
  kReadImage = 0x29,
  kPosition = 0x31,
};

enum HpStatus : std::uint8_t {
  kHpGood = 0x00,
  kHpCheckCondition = 0x02,
  kHpCancelled = 0x04,
  kHpBusy = 0x08,
  kHpInUse = 0x09,
};

enum HpMessage : std::uint16_t {
  kHpCommandError = 0x0002,
  kHpUnsupported = 0x0004,
  kHpNoDocument = 0x0010,
  kHpPaperJam = 0x0020,
  kHpCoverOpen = 0x0040,
  kHpWarmingUp = 0x0080,
  kHpInvalidArea = 0x0200,
};

enum HpBlock : std::uint8_t { kHpHeaderBlock = 0x70, kHpDataBlock = 0x80, kHpEndBlock = 0x81 };

// Every answer has its status at offset 1. Reserve and window answers hold a message at 4 when the
// flag at 3 says so; the object position has its message at 4 too, without a flag.
inline constexpr std::size_t kHpStatusAt = 1;
inline constexpr std::size_t kHpMessageFlagAt = 3;
inline constexpr std::size_t kHpMessageAt = 4;
inline constexpr std::uint8_t kHpMessageFlag = 0x20;

inline constexpr std::size_t kHpShortAnswerSize = 3;
inline constexpr std::size_t kHpInquirySize = 72;
inline constexpr std::size_t kHpInquirySourceAt = 53;
inline constexpr std::uint8_t kHpSourceFeeder = 2;
inline constexpr std::size_t kHpExtendedSize = 260;
inline constexpr std::size_t kHpReserveSize = 8;
inline constexpr std::size_t kHpWindowSize = 32;
inline constexpr std::size_t kHpWindowHeightAt = 8;
inline constexpr std::size_t kHpWindowWidthAt = 12;
inline constexpr std::size_t kHpPositionSize = 6;
inline constexpr std::size_t kHpReadSize = 20;
inline constexpr std::size_t kHpReadBlockTypeAt = 3;
inline constexpr std::size_t kHpReadBlockSizeAt = 4;
inline constexpr std::size_t kHpReadLinesAt = 8;
inline constexpr std::size_t kHpReadWidthAt = 10;

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_HP_HP_PROTOCOL_H
