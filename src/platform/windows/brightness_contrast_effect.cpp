// An effect of the system that cannot be applied counts as one that it does not have.
#include "platform/windows/brightness_contrast_effect.h"

#include "platform/imaging_math/brightness_contrast.h"
#include "platform/windows/indexed_page.h"

namespace tvrscn::imaging {

BrightnessContrastEffect::~BrightnessContrastEffect() {
  if (system_ != nullptr) Gdiplus::DllExports::GdipDeleteEffect(system_);
}

Gdiplus::GpStatus BrightnessContrastEffect::set(
    const Gdiplus::BrightnessContrastParams& parameters) {
  if (!isBrightnessContrast(parameters.brightnessLevel, parameters.contrastLevel))
    return Gdiplus::InvalidParameter;
  parameters_ = parameters;
  if (system_ == nullptr) return Gdiplus::Ok;
  return Gdiplus::DllExports::GdipSetEffectParameters(system_, &parameters_, sizeof parameters_);
}

Gdiplus::GpStatus BrightnessContrastEffect::applyTo(Gdiplus::GpBitmap* bitmap) {
  if (system_ != nullptr && !isIndexed(bitmap)) {
    const Gdiplus::GpStatus status =
        Gdiplus::DllExports::GdipBitmapApplyEffect(bitmap, system_, nullptr, 0, nullptr, nullptr);
    if (status == Gdiplus::Ok) return status;
  }
  return mapLevels(bitmap,
                   brightnessContrastTable(parameters_.brightnessLevel, parameters_.contrastLevel));
}

}  // namespace tvrscn::imaging
