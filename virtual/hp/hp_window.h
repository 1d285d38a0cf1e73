// The set window request as the scanner understands it.
#ifndef TVRSCN_VIRTUAL_HP_HP_WINDOW_H
#define TVRSCN_VIRTUAL_HP_HP_WINDOW_H

#include <cstddef>
#include <cstdint>

#include "virtual/common/bytes.h"

namespace tvrscn::virtual_device {

inline constexpr std::size_t kHpWindowRequestSize = 25;

enum class HpSource {
  kFlatbed,
  kFeederOneSide,
  kFeederTwoSides,
  kFeederTwoSidesTurned,  // the back comes out rotated by 180 degrees
};

struct HpWindow {
  int width = 0;   // pixels
  int height = 0;  // pixels
  int dotsPerInch = 0;
  bool gray = false;
  bool cleanBackground = false;
  HpSource source = HpSource::kFlatbed;
};

// Reads a request of kHpWindowRequestSize bytes. Returns 0, or the message word that says what is
// wrong with it.
std::uint16_t readHpWindow(const Bytes& request, HpWindow& window);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_HP_HP_WINDOW_H
