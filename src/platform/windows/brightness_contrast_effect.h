// Brightness and contrast: the system's effect where it has one, else our own.
#ifndef TVRSCN_PLATFORM_WINDOWS_BRIGHTNESS_CONTRAST_EFFECT_H
#define TVRSCN_PLATFORM_WINDOWS_BRIGHTNESS_CONTRAST_EFFECT_H

#include "platform/imaging.h"

namespace tvrscn::imaging {

class BrightnessContrastEffect {
 public:
  // Takes over the system's effect; null where it has none.
  explicit BrightnessContrastEffect(Gdiplus::CGpEffect* system) : system_(system) {}
  BrightnessContrastEffect(const BrightnessContrastEffect&) = delete;
  BrightnessContrastEffect& operator=(const BrightnessContrastEffect&) = delete;
  ~BrightnessContrastEffect();

  // InvalidParameter, and nothing is changed, when a value is out of range.
  Gdiplus::GpStatus set(const Gdiplus::BrightnessContrastParams& parameters);
  // Works on the whole bitmap, in place. The system is not asked for pages of 1 and 8 bits a pixel,
  // which would not stay what they are.
  Gdiplus::GpStatus applyTo(Gdiplus::GpBitmap* bitmap);

 private:
  Gdiplus::CGpEffect* system_;
  Gdiplus::BrightnessContrastParams parameters_ = {0, 0};
};

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_WINDOWS_BRIGHTNESS_CONTRAST_EFFECT_H
