// The misbehaviour of one LowEnd scanner: which of its faults strikes now.
#ifndef TVRSCN_VIRTUAL_LOWEND_LOWEND_FAULTS_H
#define TVRSCN_VIRTUAL_LOWEND_LOWEND_FAULTS_H

#include "virtual/common/fault_list.h"
#include "virtual/virtual_lowend_scanner.h"

namespace tvrscn::virtual_device {

using LowEndFaults = FaultList<LowEndFault>;

// Values of LowEndFault::Kind::kCoverOpen.
inline constexpr std::uint32_t kFeederCover = 0;
inline constexpr std::uint32_t kFlatbedCover = 1;

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_LOWEND_LOWEND_FAULTS_H
