// A device that follows a script in the style of a dialogue: bytes that the host has to write, and
// bytes that it then gets. The order is strict; what differs becomes a problem that the test checks
// for, with offset and both sides as hex.
#ifndef TVRSCN_TESTS_SUPPORT_SCRIPTED_DEVICE_H
#define TVRSCN_TESTS_SUPPORT_SCRIPTED_DEVICE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/fake_device.h"

namespace tvrscn::test {

class ScriptedDevice : public FakeDevice {
 public:
  // The host's next write has to be these bytes.
  ScriptedDevice& expect(std::string_view hexBytes);
  ScriptedDevice& expect(Bytes data);
  // The host's next write has to be these bytes, and fails.
  ScriptedDevice& expectAndFail(std::string_view hexBytes);
  // One transfer of the device. Reads take it in pieces as they ask; none spans two transfers. An
  // empty one is a successful read of nothing.
  ScriptedDevice& answer(std::string_view hexBytes);
  ScriptedDevice& answer(Bytes data);
  // One read fails, with what bytes there are.
  ScriptedDevice& failRead(std::uint32_t error = 31, std::string_view hexBytes = "");

  bool write(std::span<const std::uint8_t> data) override;
  ReadResult read(std::size_t most) override;

  // What went otherwise than the script says, and what of the script was never reached.
  std::vector<std::string> problems() const;
  // Drops what is left of the script, and the problems.
  void forget();

 private:
  enum class Kind { kExpect, kExpectAndFail, kAnswer, kFailRead };
  struct Step {
    Kind kind;
    Bytes data;
    std::uint32_t error = 0;
    std::size_t taken = 0;
  };

  std::string position() const;

  std::deque<Step> steps_;
  std::size_t done_ = 0;
  std::vector<std::string> problems_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_SCRIPTED_DEVICE_H
