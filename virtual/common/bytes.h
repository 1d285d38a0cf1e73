// Bytes on the way to and from a host, and the big-endian numbers in them. The devices build and
// read them here on their own, apart from the code under test.
#ifndef TVRSCN_VIRTUAL_COMMON_BYTES_H
#define TVRSCN_VIRTUAL_COMMON_BYTES_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tvrscn::virtual_device {

using Bytes = std::vector<std::uint8_t>;

// REQUIRES: the number lies inside the bytes, for all four.
inline void putBig16(Bytes& bytes, std::size_t at, std::uint16_t value) {
  bytes.at(at) = static_cast<std::uint8_t>(value >> 8);
  bytes.at(at + 1) = static_cast<std::uint8_t>(value & 0xFF);
}

inline void putBig32(Bytes& bytes, std::size_t at, std::uint32_t value) {
  putBig16(bytes, at, static_cast<std::uint16_t>(value >> 16));
  putBig16(bytes, at + 2, static_cast<std::uint16_t>(value & 0xFFFF));
}

inline std::uint32_t getBig32(const Bytes& bytes, std::size_t at) {
  return (static_cast<std::uint32_t>(bytes.at(at)) << 24) |
         (static_cast<std::uint32_t>(bytes.at(at + 1)) << 16) |
         (static_cast<std::uint32_t>(bytes.at(at + 2)) << 8) | bytes.at(at + 3);
}

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_BYTES_H
