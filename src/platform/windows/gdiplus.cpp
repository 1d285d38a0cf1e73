// The flat calls that the system leaves short. A drawing context here is no more than its target:
// the system's own is made for one draw and deleted after it, so that none can point at a bitmap
// that is gone.
#include "platform/windows/gdiplus.h"

#include <cstring>
#include <new>

#include "platform/windows/brightness_contrast_effect.h"
#include "platform/windows/indexed_page.h"

namespace gdip {
namespace {

namespace flat = Gdiplus::DllExports;
using tvrscn::imaging::BrightnessContrastEffect;

constexpr GUID kBrightnessContrast = {
    0xD3A1DBE1, 0x8EC4, 0x4C17, {0x9F, 0x4C, 0xEA, 0x97, 0xAD, 0x1C, 0x34, 0x3D}};

struct DrawingContext {
  GpImage* target;  // not owned
};

// Callers know both objects only by pointers to types of the system that nobody looks into.
DrawingContext* ours(GpGraphics* graphics) {
  return reinterpret_cast<DrawingContext*>(graphics);
}
BrightnessContrastEffect* ours(CGpEffect* effect) {
  return reinterpret_cast<BrightnessContrastEffect*>(effect);
}

GpStatus drawBySystem(GpImage* target, GpImage* image, INT x, INT y) {
  GpGraphics* graphics = nullptr;
  const GpStatus created = flat::GdipGetImageGraphicsContext(target, &graphics);
  if (created != Gdiplus::Ok) return created;
  const GpStatus drawn = flat::GdipDrawImageI(graphics, image, x, y);
  flat::GdipDeleteGraphics(graphics);
  return drawn;
}

}  // namespace

GpStatus GdipCreateBitmapFromScan0(INT width, INT height, INT stride, PixelFormat format,
                                   BYTE* scan0, GpBitmap** bitmap) {
  const GpStatus status =
      flat::GdipCreateBitmapFromScan0(width, height, stride, format, scan0, bitmap);
  if (status != Gdiplus::Ok || !tvrscn::imaging::isIndexed(*bitmap)) return status;
  return tvrscn::imaging::setGreyPalette(*bitmap, format);
}

GpStatus GdipGetImageGraphicsContext(GpImage* image, GpGraphics** graphics) {
  if (graphics == nullptr) return Gdiplus::InvalidParameter;
  *graphics = nullptr;
  if (image == nullptr) return Gdiplus::InvalidParameter;
  *graphics = reinterpret_cast<GpGraphics*>(new (std::nothrow) DrawingContext{image});
  return *graphics != nullptr ? Gdiplus::Ok : Gdiplus::OutOfMemory;
}

GpStatus GdipDeleteGraphics(GpGraphics* graphics) {
  if (graphics == nullptr) return Gdiplus::InvalidParameter;
  delete ours(graphics);
  return Gdiplus::Ok;
}

GpStatus GdipDrawImageI(GpGraphics* graphics, GpImage* image, INT x, INT y) {
  if (graphics == nullptr || image == nullptr) return Gdiplus::InvalidParameter;
  GpImage* const target = ours(graphics)->target;
  if (!tvrscn::imaging::isIndexed(target)) return drawBySystem(target, image, x, y);
  return tvrscn::imaging::drawOnIndexed(static_cast<GpBitmap*>(target),
                                        static_cast<GpBitmap*>(image), x, y);
}

GpStatus GdipCreateEffect(GUID effectGuid, CGpEffect** effect) {
  if (effect == nullptr) return Gdiplus::InvalidParameter;
  *effect = nullptr;
  if (!IsEqualGUID(effectGuid, kBrightnessContrast)) return Gdiplus::InvalidParameter;
  CGpEffect* own = nullptr;
  if (flat::GdipCreateEffect(effectGuid, &own) != Gdiplus::Ok) own = nullptr;
  auto* const created = new (std::nothrow) BrightnessContrastEffect(own);
  if (created == nullptr && own != nullptr) flat::GdipDeleteEffect(own);
  *effect = reinterpret_cast<CGpEffect*>(created);
  return created != nullptr ? Gdiplus::Ok : Gdiplus::OutOfMemory;
}

GpStatus GdipSetEffectParameters(CGpEffect* effect, const void* parameters, UINT size) {
  Gdiplus::BrightnessContrastParams values = {};
  if (effect == nullptr || parameters == nullptr || size != sizeof values)
    return Gdiplus::InvalidParameter;
  std::memcpy(&values, parameters, sizeof values);
  return ours(effect)->set(values);
}

GpStatus GdipBitmapApplyEffect(GpBitmap* bitmap, CGpEffect* effect, RECT* region,
                               BOOL /*useAuxData*/, void** auxData, INT* auxDataSize) {
  if (bitmap == nullptr || effect == nullptr) return Gdiplus::InvalidParameter;
  if (region != nullptr) return Gdiplus::NotImplemented;
  // This effect has nothing to tell beside the picture.
  if (auxData != nullptr) *auxData = nullptr;
  if (auxDataSize != nullptr) *auxDataSize = 0;
  return ours(effect)->applyTo(bitmap);
}

GpStatus GdipDeleteEffect(CGpEffect* effect) {
  if (effect == nullptr) return Gdiplus::InvalidParameter;
  delete ours(effect);
  return Gdiplus::Ok;
}

}  // namespace gdip

#if !defined(_MSC_VER)
// MinGW-w64 declares the ids of the effects and defines none.
namespace Gdiplus {
const GUID BrightnessContrastEffectGuid = gdip::kBrightnessContrast;
}
#endif
