// The flat imaging calls. The core names them gdip::Gdip...; on Windows that name reaches the
// system's own GDI+, with what it leaves short put in its place by platform/windows.
//
// Every call answers a status and tolerates null objects with InvalidParameter.
#ifndef TVRSCN_PLATFORM_IMAGING_H
#define TVRSCN_PLATFORM_IMAGING_H

#include "tvrscn/types.h"

#if defined(_WIN32)
#include "platform/windows/gdiplus.h"
#else

struct RECT;  // a part of a bitmap; always null here

namespace Gdiplus {

enum GpStatus {
  Ok = 0,
  GenericError = 1,
  InvalidParameter = 2,
  OutOfMemory = 3,
  NotImplemented = 6,
  Win32Error = 7,
  FileNotFound = 10,
  UnknownImageFormat = 13,
};

using REAL = float;
using PixelFormat = INT;
// Empty, as in the system's own headers: the implementation derives its bitmap from GpBitmap and
// converts back with static_cast.
class GpImage {};
class GpBitmap : public GpImage {};
class GpGraphics;
class CGpEffect;
struct EncoderParameters;

constexpr PixelFormat PixelFormat1bppIndexed = 0x30101;
constexpr PixelFormat PixelFormat8bppIndexed = 0x30803;  // grey levels on Linux
constexpr PixelFormat PixelFormat24bppRGB = 0x21808;     // blue, green, red in memory

constexpr GUID BrightnessContrastEffectGuid = {
    0xD3A1DBE1, 0x8EC4, 0x4C17, {0x9F, 0x4C, 0xEA, 0x97, 0xAD, 0x1C, 0x34, 0x3D}};
struct BrightnessContrastParams {
  INT brightnessLevel;  // -255..255
  INT contrastLevel;    // -100..100
};

namespace DllExports {

GpStatus GdipCreateBitmapFromFile(const wchar_t* fileName, GpBitmap** bitmap);
GpStatus GdipCreateBitmapFromScan0(INT width, INT height, INT stride, PixelFormat format,
                                   BYTE* scan0, GpBitmap** bitmap);
GpStatus GdipDisposeImage(GpImage* image);
GpStatus GdipGetImagePixelFormat(GpImage* image, PixelFormat* format);
GpStatus GdipGetImageWidth(GpImage* image, UINT* width);
GpStatus GdipGetImageHeight(GpImage* image, UINT* height);
GpStatus GdipGetImageHorizontalResolution(GpImage* image, REAL* dpi);
GpStatus GdipGetImageVerticalResolution(GpImage* image, REAL* dpi);
GpStatus GdipBitmapSetResolution(GpBitmap* bitmap, REAL xDpi, REAL yDpi);
GpStatus GdipGetImageGraphicsContext(GpImage* image, GpGraphics** graphics);
GpStatus GdipDeleteGraphics(GpGraphics* graphics);
GpStatus GdipDrawImageI(GpGraphics* graphics, GpImage* image, INT x, INT y);
GpStatus GdipSaveImageToFile(GpImage* image, const wchar_t* fileName, const CLSID* encoder,
                             const EncoderParameters* parameters);
GpStatus GdipCreateEffect(GUID effectGuid, CGpEffect** effect);
GpStatus GdipSetEffectParameters(CGpEffect* effect, const void* parameters, UINT size);
GpStatus GdipBitmapApplyEffect(GpBitmap* bitmap, CGpEffect* effect, RECT* region, BOOL useAuxData,
                               void** auxData, INT* auxDataSize);
GpStatus GdipDeleteEffect(CGpEffect* effect);

}  // namespace DllExports
}  // namespace Gdiplus

namespace gdip = Gdiplus::DllExports;

#endif  // _WIN32

#endif  // TVRSCN_PLATFORM_IMAGING_H
