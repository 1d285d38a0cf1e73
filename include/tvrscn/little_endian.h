// Number fields of wire records that travel least significant byte first. Plain bytes in memory, as
// in big_endian.h.
#ifndef TVRSCN_LITTLE_ENDIAN_H
#define TVRSCN_LITTLE_ENDIAN_H

#include <cstdint>

struct LittleEndian32 {
  std::uint8_t bytes[4];

  std::uint32_t value() const {
    return std::uint32_t{bytes[0]} | (std::uint32_t{bytes[1]} << 8U) |
           (std::uint32_t{bytes[2]} << 16U) | (std::uint32_t{bytes[3]} << 24U);
  }
  void set(std::uint32_t number) {
    bytes[0] = static_cast<std::uint8_t>(number & 0xFFU);
    bytes[1] = static_cast<std::uint8_t>((number >> 8U) & 0xFFU);
    bytes[2] = static_cast<std::uint8_t>((number >> 16U) & 0xFFU);
    bytes[3] = static_cast<std::uint8_t>(number >> 24U);
  }
};

static_assert(sizeof(LittleEndian32) == 4 && alignof(LittleEndian32) == 1,
              "a wire field has no padding");

#endif  // TVRSCN_LITTLE_ENDIAN_H
