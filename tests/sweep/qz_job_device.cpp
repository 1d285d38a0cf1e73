#include "tests/sweep/qz_job_device.h"

#include <algorithm>

#include "tests/support/qz_test.h"

namespace tvrscn::test {

bool QZJobDevice::write(std::span<const std::uint8_t> request) {
  // A request cut short is none; the device goes on waiting and has nothing to say.
  transfers_.clear();
  if (request.size() < 8 || request.size() < 8U + 256U * request[6] + request[7]) return true;
  check(request);
  const unsigned command = request[1];
  switch (command) {
    case kReserve:
      reserved_ = true;
      answer(command, 0, 1, {});
      break;
    case kRelease:
      reserved_ = false;
      answer(command, 0, 0, {});
      break;
    case kTestUnitReady:
      answer(command, 0, 1 | documentBit(), {});
      break;
    case kModeSense:
      answer(command, 0, 1, bytes(request[8] == 0x20 ? QZDialogue::kLimits : QZDialogue::kUnits));
      break;
    case kReadBlockHeader:
      answer(command, 0, 2, bytes("00*4 00 04 00 00"));
      break;
    case kRead:
      answerRead();
      break;
    default:
      answer(command, 0, 1, {});
  }
  return true;
}

ReadResult QZJobDevice::read(std::size_t most) {
  if (transfers_.empty()) return {};
  Bytes& transfer = transfers_.front();
  const auto end = transfer.begin() + static_cast<std::ptrdiff_t>(std::min(most, transfer.size()));
  ReadResult result{Bytes(transfer.begin(), end)};
  transfer.erase(transfer.begin(), end);
  if (transfer.empty()) transfers_.pop_front();
  return result;
}

void QZJobDevice::check(std::span<const std::uint8_t> request) {
  const bool withoutClient = request[1] == kWakeup || request[1] == kReserve;
  if (request[0] != (withoutClient ? 0 : kQZClient)) {
    problems_.push_back("another client's request: " + hex(request));
  }
  const std::size_t announced = 8U + 256U * request[6] + request[7];
  if (request.size() != announced || request[2] != 0 || request[3] != 0) {
    problems_.push_back("no request: " + hex(request));
  }
}

// The bit says that there are pages that nobody has read yet.
unsigned QZJobDevice::documentBit() const {
  const bool feeder = shape_.pages.size() > 1;
  return feeder && page_ < shape_.pages.size() ? 0x40 : 0;
}

void QZJobDevice::answer(unsigned command, unsigned status, unsigned state, const Bytes& data) {
  transfers_.push_back(
      qzHeader(kQZClient, command, status, state, static_cast<std::uint32_t>(data.size())));
  if (!data.empty()) transfers_.push_back(data);
}

void QZJobDevice::answerRead() {
  const std::string& states = shape_.pages.at(std::min(page_, shape_.pages.size() - 1));
  const char state = states.at(std::min(replyOfPage_, states.size() - 1));
  if (state == 'C' || state == 'J') {
    if (!troubled_) {
      troubled_ = true;
      answer(kRead, 2, 4, bytes(state == 'C' ? "00*4 06 00 00" : "00*4 02 53 00"));
      return;
    }
    ++replyOfPage_;
    answerRead();
    return;
  }
  const auto content = static_cast<std::uint8_t>(16 * page_ + replyOfPage_);
  answer(kRead, 0, static_cast<unsigned>(state - '0') | documentBit(), Bytes(20, content));
  ++replyOfPage_;
  if (replyOfPage_ < states.size()) return;
  ++page_;
  replyOfPage_ = 0;
}

}  // namespace tvrscn::test
