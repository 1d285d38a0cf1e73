#include "tests/sweep/hp_job_device.h"

#include <algorithm>

namespace tvrscn::test {
namespace {

// Header, data and end block of every page, each of 300 bytes: read as 256, 32, 8 and 4.
const Bytes kBlockTypes = bytes("70 80 81");
constexpr std::size_t kBlockSize = 300;

}  // namespace

bool HPJobDevice::write(std::span<const std::uint8_t> command) {
  // A command cut short is none; the device goes on waiting and has nothing to say.
  transfer_.clear();
  taken_ = 0;
  if (command.size() < 4 || command[0] != 0x1B || command[1] != 0xA8) return true;
  if (command[2] == 0x24 && command.size() != 25) return true;
  transfer_ = answerTo(command[2]);
  return true;
}

ReadResult HPJobDevice::read(std::size_t most) {
  const std::size_t length = std::min(most, transfer_.size() - taken_);
  const auto from = transfer_.begin() + static_cast<std::ptrdiff_t>(taken_);
  taken_ += length;
  return {Bytes(from, from + static_cast<std::ptrdiff_t>(length))};
}

Bytes HPJobDevice::answerTo(std::uint8_t code) {
  switch (code) {
    case 0x12:
      return shape_.feeder ? bytes("00*53 02 00*18") : bytes("00*72");
    case 0x16:
      return bytes("00*8");
    case 0x24:
      return bytes("00 00 00 00 00 01 00 00 00 00 00 18 00 00 00 10 00*16");
    case 0x31:
      return position();
    case 0x28:
      return announcement();
    case 0x29:
      return Bytes(kBlockSize, 0xAA);
    case 0x06:
      ++aborts_;
      return bytes("00 00 00");
    case 0x17:
      ++releases_;
      return bytes("00 00 00");
    default:
      return bytes("00 02 00");
  }
}

Bytes HPJobDevice::position() {
  if (pagesDone_ == shape_.pages) return bytes("00 02 00 00 00 10");
  blocksDone_ = 0;
  return bytes("00 00 00 00 00 00");
}

Bytes HPJobDevice::announcement() {
  if (blocksDone_ == static_cast<int>(kBlockTypes.size())) return bytes("00 04 00 00 00*16");
  Bytes answer = bytes("00 00 00 00 00 00 01 2C 00 08 00 10 00*8");
  answer[3] = kBlockTypes[static_cast<std::size_t>(blocksDone_)];
  ++blocksDone_;
  if (blocksDone_ == static_cast<int>(kBlockTypes.size())) ++pagesDone_;
  return answer;
}

}  // namespace tvrscn::test
