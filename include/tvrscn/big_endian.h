// Number fields of wire records that travel most significant byte first. They are plain bytes in
// memory, so a record made of them has no padding, no alignment and the device's byte order.
#ifndef TVRSCN_BIG_ENDIAN_H
#define TVRSCN_BIG_ENDIAN_H

#include <cstdint>

struct BigEndian16 {
  std::uint8_t bytes[2];

  std::uint16_t value() const {
    return static_cast<std::uint16_t>((std::uint32_t{bytes[0]} << 8U) | bytes[1]);
  }
  void set(std::uint16_t number) {
    bytes[0] = static_cast<std::uint8_t>(number >> 8U);
    bytes[1] = static_cast<std::uint8_t>(number & 0xFFU);
  }
};

struct BigEndian32 {
  std::uint8_t bytes[4];

  std::uint32_t value() const {
    return (std::uint32_t{bytes[0]} << 24U) | (std::uint32_t{bytes[1]} << 16U) |
           (std::uint32_t{bytes[2]} << 8U) | bytes[3];
  }
  void set(std::uint32_t number) {
    bytes[0] = static_cast<std::uint8_t>(number >> 24U);
    bytes[1] = static_cast<std::uint8_t>((number >> 16U) & 0xFFU);
    bytes[2] = static_cast<std::uint8_t>((number >> 8U) & 0xFFU);
    bytes[3] = static_cast<std::uint8_t>(number & 0xFFU);
  }
};

static_assert(sizeof(BigEndian16) == 2 && alignof(BigEndian16) == 1, "a wire field has no padding");
static_assert(sizeof(BigEndian32) == 4 && alignof(BigEndian32) == 1, "a wire field has no padding");

#endif  // TVRSCN_BIG_ENDIAN_H
