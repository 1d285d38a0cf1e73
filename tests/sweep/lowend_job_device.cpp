#include "tests/sweep/lowend_job_device.h"

#include <algorithm>

#include "tests/support/lowend_test.h"

namespace tvrscn::test {

bool LowEndJobDevice::write(std::span<const std::uint8_t> request) {
  // A request cut short is none; the device goes on waiting and has nothing to say.
  transfers_.clear();
  if (request.size() < 10 || request[0] != 0x1B || request[1] != 0x4E) return true;
  if (request.size() != 10U + request[4] + 256U * request[5]) return true;
  switch (request[2]) {
    case 1:
      answer(1, shape_.verdict);
      startJob();
      break;
    case 3:
      answer(3, LowEndDialogue::kFeatures);
      break;
    case 4:
      answer(4, notReady_ > 0 ? R"({"status":{},"adfStatus":{}})" : LowEndDialogue::kReady);
      --notReady_;
      break;
    default:
      break;
  }
  return true;
}

ReadResult LowEndJobDevice::read(std::size_t most) {
  if (transfers_.empty()) return {};
  Bytes& transfer = transfers_.front();
  const auto end = transfer.begin() + static_cast<std::ptrdiff_t>(std::min(most, transfer.size()));
  ReadResult result{Bytes(transfer.begin(), end)};
  transfer.erase(transfer.begin(), end);
  if (transfer.empty()) transfers_.pop_front();
  return result;
}

void LowEndJobDevice::answer(unsigned operation, std::string_view document) {
  transfers_.push_back(lowEndHeader(operation, static_cast<std::uint32_t>(document.size())));
  transfers_.emplace_back(document.begin(), document.end());
}

void LowEndJobDevice::startJob() {
  for (const std::string& record : shape_.records)
    transfers_.push_back(lowEndPacket(record));
  transfers_.push_back(lowEndPacket("\r\n", 1));
}

}  // namespace tvrscn::test
