// A well-behaved LowEnd device for jobs on the fakes: it answers what it is asked, pushes the
// packets of a job once it has accepted one, and keeps its place when the host's side goes wrong.
#ifndef TVRSCN_TESTS_SWEEP_LOWEND_JOB_DEVICE_H
#define TVRSCN_TESTS_SWEEP_LOWEND_JOB_DEVICE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/bytes.h"
#include "tests/support/fake_device.h"

namespace tvrscn::test {

struct LowEndJobShape {
  const char* name;
  const char* colorMode;
  int notReady;                      // statuses before the device says that it is ready
  std::string verdict;               // the answer to the start request
  std::vector<std::string> records;  // payloads of the image packets
  std::vector<std::string> pages;    // of the TIFF, if it is one
};

class LowEndJobDevice : public FakeDevice {
 public:
  explicit LowEndJobDevice(const LowEndJobShape& shape)
      : shape_(shape), notReady_(shape.notReady) {}

  bool write(std::span<const std::uint8_t> request) override;
  ReadResult read(std::size_t most) override;

 private:
  void answer(unsigned operation, std::string_view document);
  void startJob();

  const LowEndJobShape& shape_;
  int notReady_;
  std::deque<Bytes> transfers_;  // what the device has to say and nobody has read yet
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SWEEP_LOWEND_JOB_DEVICE_H
