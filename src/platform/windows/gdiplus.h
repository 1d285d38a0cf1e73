// The system's own flat imaging calls under the name gdip, with what it leaves short put in its
// place: drawing on pages of 1 and 8 bits a pixel, and brightness and contrast where the system
// has no such effect. Included through platform/imaging.h.
//
// Drawing contexts and effects that these calls hand out are objects of this library: only gdip
// calls may be given them. Bitmaps are the system's.
#ifndef TVRSCN_PLATFORM_WINDOWS_GDIPLUS_H
#define TVRSCN_PLATFORM_WINDOWS_GDIPLUS_H

#include <algorithm>

#include "tvrscn/types.h"

// COM's names, which the imaging headers expect and WIN32_LEAN_AND_MEAN leaves out.
#include <objidl.h>

// The imaging headers of the Windows SDK rely on the macros that NOMINMAX takes away.
namespace Gdiplus {
using std::max;
using std::min;
}  // namespace Gdiplus

// Effects came with version 1.1.
#ifndef GDIPVER
#define GDIPVER 0x0110
#endif
#include <gdiplus.h>

// Macros there, so that they could not be named with their namespace.
#undef PixelFormat1bppIndexed
#undef PixelFormat8bppIndexed
#undef PixelFormat24bppRGB

namespace Gdiplus {

constexpr PixelFormat PixelFormat1bppIndexed = 0x30101;
constexpr PixelFormat PixelFormat8bppIndexed = 0x30803;
constexpr PixelFormat PixelFormat24bppRGB = 0x21808;

}  // namespace Gdiplus

namespace gdip {

using Gdiplus::CGpEffect;
using Gdiplus::EncoderParameters;
using Gdiplus::GpBitmap;
using Gdiplus::GpGraphics;
using Gdiplus::GpImage;
using Gdiplus::GpStatus;
using Gdiplus::PixelFormat;

using Gdiplus::DllExports::GdipBitmapSetResolution;
using Gdiplus::DllExports::GdipCreateBitmapFromFile;
using Gdiplus::DllExports::GdipDisposeImage;
using Gdiplus::DllExports::GdipGetImageHeight;
using Gdiplus::DllExports::GdipGetImageHorizontalResolution;
using Gdiplus::DllExports::GdipGetImagePixelFormat;
using Gdiplus::DllExports::GdipGetImageVerticalResolution;
using Gdiplus::DllExports::GdipGetImageWidth;
using Gdiplus::DllExports::GdipSaveImageToFile;

// A page of 8 bits a pixel has the 256 levels of grey as its palette, one of 1 bit black and white.
GpStatus GdipCreateBitmapFromScan0(INT width, INT height, INT stride, PixelFormat format,
                                   BYTE* scan0, GpBitmap** bitmap);
// A context may be deleted after its image, as long as nothing is drawn any more.
GpStatus GdipGetImageGraphicsContext(GpImage* image, GpGraphics** graphics);
GpStatus GdipDeleteGraphics(GpGraphics* graphics);
GpStatus GdipDrawImageI(GpGraphics* graphics, GpImage* image, INT x, INT y);
GpStatus GdipCreateEffect(GUID effectGuid, CGpEffect** effect);
GpStatus GdipSetEffectParameters(CGpEffect* effect, const void* parameters, UINT size);
GpStatus GdipBitmapApplyEffect(GpBitmap* bitmap, CGpEffect* effect, RECT* region, BOOL useAuxData,
                               void** auxData, INT* auxDataSize);
GpStatus GdipDeleteEffect(CGpEffect* effect);

}  // namespace gdip

#endif  // TVRSCN_PLATFORM_WINDOWS_GDIPLUS_H
