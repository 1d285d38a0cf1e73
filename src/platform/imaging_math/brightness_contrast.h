// Brightness and contrast as a table of 256 levels, the same for every channel.
//
//   contrast c, -100..100, about mid grey:   k(v) = 127.5 + (v - 127.5) * slope
//     slope = (100 + c) / 100   for c <= 0   (-100: everything is mid grey, 128)
//     slope = 100 / (100 - c)   for 0 < c < 100
//     c = 100: black below 128, white from 128 on
//   then brightness b, -255..255, a plain shift:   t(v) = k(v) + b
//
// Each of the two is rounded half up and cut to 0..255, so +255 is white all over and -255 black
// all over whatever the contrast, and 0 and 0 change nothing.
#ifndef TVRSCN_PLATFORM_IMAGING_MATH_BRIGHTNESS_CONTRAST_H
#define TVRSCN_PLATFORM_IMAGING_MATH_BRIGHTNESS_CONTRAST_H

#include <array>

#include "tvrscn/types.h"

namespace tvrscn::imaging {

constexpr int kMaxBrightness = 255;
constexpr int kMaxContrast = 100;

bool isBrightnessContrast(int brightness, int contrast);

// Both values have to be within their range.
std::array<BYTE, 256> brightnessContrastTable(int brightness, int contrast);

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_IMAGING_MATH_BRIGHTNESS_CONTRAST_H
