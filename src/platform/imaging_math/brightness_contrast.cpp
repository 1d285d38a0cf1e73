// The header has the mathematics.
#include "platform/imaging_math/brightness_contrast.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tvrscn::imaging {
namespace {

constexpr double kMidGrey = 127.5;
constexpr int kWhite = 255;

int withContrast(int level, int contrast) {
  if (contrast == kMaxContrast) return level > kMidGrey ? kWhite : 0;
  const double slope = contrast <= 0 ? (kMaxContrast + contrast) / double{kMaxContrast}
                                     : kMaxContrast / double(kMaxContrast - contrast);
  const double stretched = std::floor(kMidGrey + (level - kMidGrey) * slope + 0.5);
  return static_cast<int>(std::clamp(stretched, 0.0, double{kWhite}));
}

}  // namespace

bool isBrightnessContrast(int brightness, int contrast) {
  return brightness >= -kMaxBrightness && brightness <= kMaxBrightness &&
         contrast >= -kMaxContrast && contrast <= kMaxContrast;
}

std::array<BYTE, 256> brightnessContrastTable(int brightness, int contrast) {
  std::array<BYTE, 256> table{};
  for (std::size_t level = 0; level < table.size(); ++level) {
    const int shifted = withContrast(static_cast<int>(level), contrast) + brightness;
    table[level] = static_cast<BYTE>(std::clamp(shifted, 0, kWhite));
  }
  return table;
}

}  // namespace tvrscn::imaging
