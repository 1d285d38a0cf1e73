// The fake imaging calls. They keep no pixels: a bitmap is its size, format and resolution. The
// imaging types stay what the seam leaves them, so objects of ours are passed off as theirs; nobody
// looks inside.
#include "platform/imaging.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

#include "tests/support/fake_platform.h"
#include "tests/support/temporary_folder.h"

using tvrscn::test::Bytes;
using tvrscn::test::FakeObject;
using tvrscn::test::FakePlatform;
using tvrscn::test::hexNumber;
using tvrscn::test::Kind;
using tvrscn::test::Strip;
using tvrscn::test::toPath;

namespace {

std::string nameOf(const void* object) {
  return object == nullptr ? "null" : static_cast<const FakeObject*>(object)->name;
}

std::string dpiText(float x, float y) {
  std::ostringstream out;
  out << x << ' ' << y;
  return out.str();
}

// Records one call; true when it is to fail or when the object it is about is no live one.
bool begin(const char* function, const std::string& arguments, const void* pointer = nullptr,
           const char* type = nullptr) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kImaging, std::string(function) + arguments);
  const bool fail = platform.call(function).fail;
  return fail || (type != nullptr && platform.find(pointer, type) == nullptr);
}

Strip* imageOf(const void* image) {
  FakeObject* object = FakePlatform::current().find(image, "bitmap");
  return object == nullptr ? nullptr : &object->image;
}

template <typename T>
T* asImagingType(FakeObject& object) {
  return reinterpret_cast<T*>(&object);
}

bool isUnder(const char* function, void* image) {
  return !begin(function, " " + nameOf(image), image, "bitmap");
}

}  // namespace

namespace Gdiplus::DllExports {

GpStatus GdipCreateBitmapFromFile(const wchar_t* fileName, GpBitmap** bitmap) {
  FakePlatform& platform = FakePlatform::current();
  const bool fail = begin("GdipCreateBitmapFromFile", " " + platform.pathName(fileName));
  *bitmap = nullptr;
  if (!std::filesystem::exists(toPath(fileName))) return FileNotFound;
  const Bytes content = tvrscn::test::readFile(toPath(fileName));
  platform.decoded.push_back(content);
  if (fail) return GenericError;
  const std::optional<Strip> strip = platform.decode ? platform.decode(content) : Strip{};
  if (!strip) return UnknownImageFormat;
  FakeObject& object = platform.makeNumbered("bitmap");
  object.image = *strip;
  *bitmap = asImagingType<GpBitmap>(object);
  return Ok;
}

GpStatus GdipCreateBitmapFromScan0(INT width, INT height, INT stride, PixelFormat format,
                                   BYTE* scan0, GpBitmap** bitmap) {
  std::string text = " " + std::to_string(width) + "x" + std::to_string(height) + " stride " +
                     std::to_string(stride) + " " + hexNumber(static_cast<unsigned>(format));
  if (scan0 != nullptr) text += " memory";
  const bool fail = begin("GdipCreateBitmapFromScan0", text);
  *bitmap = nullptr;
  if (fail) return OutOfMemory;
  if (width <= 0 || height <= 0 || format == 0) return InvalidParameter;
  FakeObject& object = FakePlatform::current().makeNumbered("bitmap");
  object.image = {static_cast<UINT>(width), static_cast<UINT>(height), format, 96.0F, 96.0F};
  *bitmap = asImagingType<GpBitmap>(object);
  return Ok;
}

GpStatus GdipDisposeImage(GpImage* image) {
  if (begin("GdipDisposeImage", " " + nameOf(image), image, "bitmap")) return InvalidParameter;
  FakePlatform::current().find(image, "bitmap")->live = false;
  return Ok;
}

GpStatus GdipGetImagePixelFormat(GpImage* image, PixelFormat* format) {
  if (!isUnder("GdipGetImagePixelFormat", image)) return InvalidParameter;
  *format = imageOf(image)->format;
  return Ok;
}

GpStatus GdipGetImageWidth(GpImage* image, UINT* width) {
  if (!isUnder("GdipGetImageWidth", image)) return InvalidParameter;
  *width = imageOf(image)->width;
  return Ok;
}

GpStatus GdipGetImageHeight(GpImage* image, UINT* height) {
  if (!isUnder("GdipGetImageHeight", image)) return InvalidParameter;
  *height = imageOf(image)->height;
  return Ok;
}

GpStatus GdipGetImageHorizontalResolution(GpImage* image, REAL* dpi) {
  if (!isUnder("GdipGetImageHorizontalResolution", image)) return InvalidParameter;
  *dpi = imageOf(image)->xDpi;
  return Ok;
}

GpStatus GdipGetImageVerticalResolution(GpImage* image, REAL* dpi) {
  if (!isUnder("GdipGetImageVerticalResolution", image)) return InvalidParameter;
  *dpi = imageOf(image)->yDpi;
  return Ok;
}

GpStatus GdipBitmapSetResolution(GpBitmap* bitmap, REAL xDpi, REAL yDpi) {
  if (begin("GdipBitmapSetResolution", " " + nameOf(bitmap) + " " + dpiText(xDpi, yDpi), bitmap,
            "bitmap")) {
    return InvalidParameter;
  }
  imageOf(bitmap)->xDpi = xDpi;
  imageOf(bitmap)->yDpi = yDpi;
  return Ok;
}

GpStatus GdipGetImageGraphicsContext(GpImage* image, GpGraphics** graphics) {
  *graphics = nullptr;
  if (!isUnder("GdipGetImageGraphicsContext", image)) return InvalidParameter;
  *graphics = asImagingType<GpGraphics>(FakePlatform::current().makeNumbered("graphics"));
  return Ok;
}

GpStatus GdipDeleteGraphics(GpGraphics* graphics) {
  if (begin("GdipDeleteGraphics", " " + nameOf(graphics), graphics, "graphics")) {
    return InvalidParameter;
  }
  FakePlatform::current().find(graphics, "graphics")->live = false;
  return Ok;
}

GpStatus GdipDrawImageI(GpGraphics* graphics, GpImage* image, INT x, INT y) {
  const std::string text = " " + nameOf(graphics) + " " + nameOf(image) + " at " +
                           std::to_string(x) + "," + std::to_string(y);
  if (begin("GdipDrawImageI", text, graphics, "graphics")) return InvalidParameter;
  return imageOf(image) == nullptr ? InvalidParameter : Ok;
}

// Leaves a small file, so that a test can see which pages are on disk.
GpStatus GdipSaveImageToFile(GpImage* image, const wchar_t* fileName, const CLSID* encoder,
                             const EncoderParameters* parameters) {
  FakePlatform& platform = FakePlatform::current();
  std::string text = " " + nameOf(image) + " " + platform.pathName(fileName) + " " +
                     tvrscn::test::guidText(*encoder);
  if (parameters != nullptr) text += " parameters";
  if (begin("GdipSaveImageToFile", text, image, "bitmap")) return InvalidParameter;
  const Strip* page = imageOf(image);
  std::ofstream out(toPath(fileName), std::ios::binary);
  out << "page of " << page->width << 'x' << page->height << '\n';
  out.flush();
  return out ? Ok : Win32Error;
}

GpStatus GdipCreateEffect(GUID effectGuid, CGpEffect** effect) {
  *effect = nullptr;
  if (begin("GdipCreateEffect", " " + tvrscn::test::guidText(effectGuid))) return GenericError;
  *effect = asImagingType<CGpEffect>(FakePlatform::current().makeNumbered("effect"));
  return Ok;
}

GpStatus GdipSetEffectParameters(CGpEffect* effect, const void* parameters, UINT size) {
  std::string text = " " + nameOf(effect);
  BrightnessContrastParams values{};
  if (size == sizeof values) {
    std::memcpy(&values, parameters, sizeof values);
    text += " brightness " + std::to_string(values.brightnessLevel) + " contrast " +
            std::to_string(values.contrastLevel);
  }
  text += " size " + std::to_string(size);
  return begin("GdipSetEffectParameters", text, effect, "effect") ? InvalidParameter : Ok;
}

GpStatus GdipBitmapApplyEffect(GpBitmap* bitmap, CGpEffect* effect, RECT* region, BOOL useAuxData,
                               void** auxData, INT* auxDataSize) {
  std::string text = " " + nameOf(bitmap) + " " + nameOf(effect);
  if (region != nullptr) text += " region";
  if (useAuxData != 0) text += " auxiliary data";
  if (auxData != nullptr) *auxData = nullptr;
  if (auxDataSize != nullptr) *auxDataSize = 0;
  if (begin("GdipBitmapApplyEffect", text, bitmap, "bitmap")) return InvalidParameter;
  return FakePlatform::current().find(effect, "effect") == nullptr ? InvalidParameter : Ok;
}

GpStatus GdipDeleteEffect(CGpEffect* effect) {
  if (begin("GdipDeleteEffect", " " + nameOf(effect), effect, "effect")) return InvalidParameter;
  FakePlatform::current().find(effect, "effect")->live = false;
  return Ok;
}

}  // namespace Gdiplus::DllExports
