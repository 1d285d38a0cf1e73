// A host that reads less than a transfer holds finds the rest at its next read, unless it writes
// first: that is a difference to the script and is told as one.
#include "tests/support/scripted_device.h"

#include <algorithm>
#include <utility>

namespace tvrscn::test {

ScriptedDevice& ScriptedDevice::expect(std::string_view hexBytes) {
  return expect(bytes(hexBytes));
}

ScriptedDevice& ScriptedDevice::expect(Bytes data) {
  steps_.push_back({Kind::kExpect, std::move(data)});
  return *this;
}

ScriptedDevice& ScriptedDevice::expectAndFail(std::string_view hexBytes) {
  steps_.push_back({Kind::kExpectAndFail, bytes(hexBytes)});
  return *this;
}

ScriptedDevice& ScriptedDevice::answer(std::string_view hexBytes) {
  return answer(bytes(hexBytes));
}

ScriptedDevice& ScriptedDevice::answer(Bytes data) {
  steps_.push_back({Kind::kAnswer, std::move(data)});
  return *this;
}

ScriptedDevice& ScriptedDevice::failRead(std::uint32_t error, std::string_view hexBytes) {
  steps_.push_back({Kind::kFailRead, bytes(hexBytes), error});
  return *this;
}

std::string ScriptedDevice::position() const {
  return "step " + std::to_string(done_ + 1) + ": ";
}

bool ScriptedDevice::write(std::span<const std::uint8_t> data) {
  const bool expected = !steps_.empty() && (steps_.front().kind == Kind::kExpect ||
                                            steps_.front().kind == Kind::kExpectAndFail);
  if (!expected) {
    problems_.push_back(position() + "unexpected write of " + hex(data));
    return true;
  }
  const Step step = std::move(steps_.front());
  steps_.pop_front();
  const std::string difference = describeMismatch(step.data, data);
  if (!difference.empty()) problems_.push_back(position() + "host bytes differ at " + difference);
  ++done_;
  return step.kind == Kind::kExpect;
}

ReadResult ScriptedDevice::read(std::size_t most) {
  const bool expected = !steps_.empty() && (steps_.front().kind == Kind::kAnswer ||
                                            steps_.front().kind == Kind::kFailRead);
  if (!expected) {
    problems_.push_back(position() + "unexpected read of " + std::to_string(most) + " bytes");
    return {};
  }
  Step& step = steps_.front();
  const std::size_t count = std::min(most, step.data.size() - step.taken);
  const auto begin = step.data.begin() + static_cast<std::ptrdiff_t>(step.taken);
  ReadResult result{Bytes(begin, begin + static_cast<std::ptrdiff_t>(count)),
                    step.kind == Kind::kAnswer, step.error};
  step.taken += count;
  if (step.taken == step.data.size() || step.kind == Kind::kFailRead) {
    steps_.pop_front();
    ++done_;
  }
  return result;
}

std::vector<std::string> ScriptedDevice::problems() const {
  std::vector<std::string> all = problems_;
  if (!steps_.empty()) {
    all.push_back(position() + std::to_string(steps_.size()) +
                  " steps were never reached, next: " + hex(steps_.front().data));
  }
  return all;
}

void ScriptedDevice::forget() {
  steps_.clear();
  problems_.clear();
}

}  // namespace tvrscn::test
