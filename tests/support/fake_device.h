// The device's side of the fake device files: whatever plays it sees each write and is asked for
// each read.
#ifndef TVRSCN_TESTS_SUPPORT_FAKE_DEVICE_H
#define TVRSCN_TESTS_SUPPORT_FAKE_DEVICE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "tests/support/bytes.h"

namespace tvrscn::test {

// What one read brings. A failed read may still bring bytes.
struct ReadResult {
  Bytes bytes;
  bool ok = true;
  std::uint32_t error = 31;  // the thread's last error when not ok
};

class FakeDevice {
 public:
  FakeDevice() = default;
  FakeDevice(const FakeDevice&) = delete;
  FakeDevice& operator=(const FakeDevice&) = delete;
  virtual ~FakeDevice() = default;

  // False makes the WriteFile fail.
  virtual bool write(std::span<const std::uint8_t> data) = 0;
  // At most `most` bytes; what is beyond is cut off and lost.
  virtual ReadResult read(std::size_t most) = 0;
};

// Leaves ReadFile or WriteFile when the host would go on for ever: read loops that nothing but data
// ends are a device's privilege, so a test needs a way out. Not a std::exception, so that no
// handler for those takes it for a failure of its own.
struct DeviceExhausted {
  std::string reason;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_FAKE_DEVICE_H
