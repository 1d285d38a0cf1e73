// The misbehaviour of one QZ scanner: which of its faults strikes now. A fault may wait for so many
// replies at its step to pass.
#ifndef TVRSCN_VIRTUAL_QZ_QZ_FAULTS_H
#define TVRSCN_VIRTUAL_QZ_QZ_FAULTS_H

#include <array>
#include <chrono>
#include <cstddef>
#include <vector>

#include "virtual/common/fault_list.h"
#include "virtual/qz/qz_protocol.h"
#include "virtual/virtual_qz_scanner.h"

namespace tvrscn::virtual_device {

class QzFaults {
 public:
  using Kind = QzFault::Kind;

  explicit QzFaults(const std::vector<QzFault>& faults) : list_(faults) {}

  // One more request at this step, in the life of the device.
  void count(QzStep step) { ++requests_.at(static_cast<std::size_t>(step)); }

  const QzFault* take(Kind kind, QzStep step) {
    const int requests = requests_.at(static_cast<std::size_t>(step));
    return list_.takeIf([&](const QzFault& fault) {
      return fault.kind == kind && fault.step == step && fault.after < requests;
    });
  }
  const QzFault* takeOnPage(Kind kind, int page) {
    return list_.takeIf(
        [&](const QzFault& fault) { return fault.kind == kind && fault.page == page; });
  }
  std::chrono::milliseconds delay() const { return list_.sumOf(Kind::kSlow); }

 private:
  FaultList<QzFault> list_;
  std::array<int, kQzStepCount> requests_{};
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_QZ_QZ_FAULTS_H
