// A well-behaved QZ device for jobs on the fakes: it answers what it is asked, counts through the
// pages of a job, and keeps its place when the host's side goes wrong.
#ifndef TVRSCN_TESTS_SWEEP_QZ_JOB_DEVICE_H
#define TVRSCN_TESTS_SWEEP_QZ_JOB_DEVICE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <vector>

#include "tests/support/bytes.h"
#include "tests/support/fake_device.h"

namespace tvrscn::test {

struct QZJobShape {
  const char* name;
  const char* colorMode;
  const wchar_t* brightness;
  // Scanner states of the READ replies of each page, in hex digits: "223" is a page of three.
  // 'C' and 'J' are a job cancelled and a jam, each once. More than one page comes from the feeder.
  std::vector<std::string> pages;
  bool dialogs = false;  // and the user answers a jam with "retry"
};

class QZJobDevice : public FakeDevice {
 public:
  explicit QZJobDevice(const QZJobShape& shape) : shape_(shape) {}

  bool write(std::span<const std::uint8_t> request) override;
  ReadResult read(std::size_t most) override;

  // Requests that no host may send: another client's, or of another length than they say.
  const std::vector<std::string>& problems() const { return problems_; }
  bool reserved() const { return reserved_; }

 private:
  void answer(unsigned command, unsigned status, unsigned state, const Bytes& data);
  void answerRead();
  unsigned documentBit() const;
  void check(std::span<const std::uint8_t> request);

  const QZJobShape& shape_;
  std::size_t page_ = 0;
  std::size_t replyOfPage_ = 0;
  bool reserved_ = false;
  bool troubled_ = false;  // the jam or the cancel has come
  std::deque<Bytes> transfers_;
  std::vector<std::string> problems_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SWEEP_QZ_JOB_DEVICE_H
