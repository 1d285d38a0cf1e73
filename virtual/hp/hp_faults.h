// The misbehaviour of one HP scanner: which of its faults strikes now. Counts run down over the
// life of the device, not of a job. Used by the device's thread alone.
#ifndef TVRSCN_VIRTUAL_HP_HP_FAULTS_H
#define TVRSCN_VIRTUAL_HP_HP_FAULTS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "virtual/common/fault_list.h"
#include "virtual/virtual_scanner.h"

namespace tvrscn::virtual_device {

// What an answer says instead of "good".
struct HpRefusal {
  std::uint8_t status = 0;
  std::optional<std::uint16_t> message;
};

class HpFaults {
 public:
  explicit HpFaults(const std::vector<HpFault>& faults) : faults_(faults) {}

  // The status that this answer has to carry; uses up one count. `page` is the page that an object
  // position would offer and is looked at for that step only.
  std::optional<HpRefusal> takeRefusal(HpStep step, int page = 0);
  // The length to which this answer is cut; uses up one count.
  std::optional<std::size_t> takeCut(HpStep step);
  // Whether this transfer fails; uses up one count.
  bool takeFailedTransfer(HpStep step);

  bool stalls(HpStep step) const;
  bool losesEndBlock(int page) const;
  bool dropsWithin(int page) const;
  std::chrono::milliseconds delay() const;

 private:
  FaultList<HpFault> faults_;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_HP_HP_FAULTS_H
