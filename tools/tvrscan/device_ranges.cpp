#include "device_ranges.h"

#include <cstdint>
#include <limits>

namespace tvrscn::cli {
namespace {

// A record that no device fills like this: nothing lies between its ends.
constexpr IPPMinMaxNormalStepData kUntold = {std::numeric_limits<std::int32_t>::max(),
                                             std::numeric_limits<std::int32_t>::min(), 0, 0};

std::optional<IPPMinMaxNormalStepData> rangeOf(const IPPMinMaxNormalStepData& record) {
  if (record.Min > record.Normal || record.Normal > record.Max) return std::nullopt;
  return record;
}

}  // namespace

DeviceRanges askForRanges(CScanUSBClient& client) {
  IPPMinMaxNormalStepData brightness = kUntold;
  IPPMinMaxNormalStepData contrast = kUntold;
  client.GetBrightnessContrastValue(brightness, contrast);
  return {rangeOf(brightness), rangeOf(contrast)};
}

}  // namespace tvrscn::cli
