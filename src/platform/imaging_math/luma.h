// Where colour becomes grey, and grey black or white.
#ifndef TVRSCN_PLATFORM_IMAGING_MATH_LUMA_H
#define TVRSCN_PLATFORM_IMAGING_MATH_LUMA_H

#include "tvrscn/types.h"

namespace tvrscn::imaging {

// Grey from here on counts as white where only black and white are left.
constexpr unsigned kWhiteFrom = 128;

// Brightness of a colour, 0.299 red + 0.587 green + 0.114 blue, rounded.
constexpr BYTE luma(unsigned blue, unsigned green, unsigned red) {
  return static_cast<BYTE>((19595 * red + 38470 * green + 7471 * blue + 32768) >> 16);
}

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_IMAGING_MATH_LUMA_H
