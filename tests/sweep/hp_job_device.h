// A well-behaved HP device for jobs on the fakes: it answers command by command, knows nothing of
// images, and keeps its place when the host's side goes wrong.
#ifndef TVRSCN_TESTS_SWEEP_HP_JOB_DEVICE_H
#define TVRSCN_TESTS_SWEEP_HP_JOB_DEVICE_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "tests/support/bytes.h"
#include "tests/support/fake_device.h"

namespace tvrscn::test {

struct HPJobShape {
  const char* name;
  bool feeder;
  int pages;  // sides that the device has to deliver
  const char* sides;
};

class HPJobDevice : public FakeDevice {
 public:
  explicit HPJobDevice(const HPJobShape& shape) : shape_(shape) {}

  bool write(std::span<const std::uint8_t> command) override;
  ReadResult read(std::size_t most) override;

  int aborts() const { return aborts_; }
  int releases() const { return releases_; }

 private:
  Bytes answerTo(std::uint8_t code);
  Bytes position();
  Bytes announcement();

  const HPJobShape& shape_;
  Bytes transfer_;  // what the device has to say and nobody has read yet
  std::size_t taken_ = 0;
  int pagesDone_ = 0;
  int blocksDone_ = 0;  // of the page in hand
  int aborts_ = 0;
  int releases_ = 0;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SWEEP_HP_JOB_DEVICE_H
