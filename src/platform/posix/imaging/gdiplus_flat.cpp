// The flat calls themselves: they judge their arguments and turn what the parts below answer into a
// status. An exception of the standard library (no memory) does not leave them.
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "platform/imaging.h"
#include "platform/imaging_math/brightness_contrast.h"
#include "platform/posix/imaging/bitmap.h"
#include "platform/posix/imaging/jpeg_reader.h"
#include "platform/posix/imaging/jpeg_writer.h"
#include "platform/posix/imaging/output_file.h"
#include "platform/posix/imaging/pixel_rows.h"
#include "platform/posix/utf8.h"

namespace Gdiplus {

class CGpEffect {
 public:
  // False, and nothing is changed, when a value is out of range.
  [[nodiscard]] bool set(const BrightnessContrastParams& parameters) {
    if (!tvrscn::imaging::isBrightnessContrast(parameters.brightnessLevel,
                                               parameters.contrastLevel)) {
      return false;
    }
    parameters_ = parameters;
    return true;
  }
  [[nodiscard]] const BrightnessContrastParams& parameters() const { return parameters_; }

 private:
  BrightnessContrastParams parameters_{0, 0};
};

namespace {

using tvrscn::pathFromWide;
using tvrscn::imaging::Bitmap;
using tvrscn::imaging::brightnessContrastTable;
using tvrscn::imaging::JpegPicture;
using tvrscn::imaging::JpegReader;
using tvrscn::imaging::JpegWriter;
using tvrscn::imaging::OutputFile;
using tvrscn::imaging::rowCopy;

constexpr CLSID kJpegEncoder = {
    0x557CF401, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

bool sameId(const GUID& left, const GUID& right) {
  return left.Data1 == right.Data1 && left.Data2 == right.Data2 && left.Data3 == right.Data3 &&
         std::memcmp(left.Data4, right.Data4, sizeof left.Data4) == 0;
}

Bitmap& bitmapOf(GpImage& image) {
  return static_cast<Bitmap&>(image);
}

GpStatus decodeFile(const wchar_t* fileName, std::unique_ptr<Bitmap>& bitmap) {
  JpegReader reader;
  const GpStatus opened = reader.open(pathFromWide(fileName), JpegReader::Colour::kAsStored);
  if (opened != Ok) return opened;
  const JpegPicture& picture = reader.picture();
  const GpStatus created = Bitmap::create(picture.width, picture.height, picture.format, bitmap);
  if (created != Ok) return created;
  bitmap->setResolution(picture.xDpi, picture.yDpi);
  // Rows that the data did not reach are black.
  bitmap->setFilled(reader.read(bitmap->row(0), bitmap->stride(), picture.height));
  return Ok;
}

bool writePacked(JpegWriter& writer, const Bitmap& bitmap) {
  const auto expand = rowCopy(PixelFormat8bppIndexed, PixelFormat1bppIndexed);
  std::vector<BYTE> grey(bitmap.width());
  for (UINT y = 0; y < bitmap.height(); ++y) {
    expand(grey.data(), 0, bitmap.row(y), 0, grey.size());
    if (!writer.write(grey.data(), grey.size(), 1)) return false;
  }
  return true;
}

bool writeRows(JpegWriter& writer, const Bitmap& bitmap) {
  if (bitmap.format() == PixelFormat1bppIndexed) return writePacked(writer, bitmap);
  return writer.write(bitmap.row(0), bitmap.stride(), bitmap.height());
}

GpStatus encodeFile(Bitmap& bitmap, const wchar_t* fileName) {
  if (bitmap.width() > JpegWriter::kMaxSide || bitmap.height() > JpegWriter::kMaxSide)
    return InvalidParameter;
  JpegPicture picture;
  picture.width = bitmap.width();
  picture.height = bitmap.height();
  const bool colour = bitmap.format() == PixelFormat24bppRGB;
  picture.format = colour ? PixelFormat24bppRGB : PixelFormat8bppIndexed;
  picture.xDpi = bitmap.xDpi();
  picture.yDpi = bitmap.yDpi();

  OutputFile file;
  if (!file.open(pathFromWide(fileName))) return Win32Error;
  bitmap.complete();
  JpegWriter writer;
  const bool written =
      writer.start(file.get(), picture) && writeRows(writer, bitmap) && writer.finish();
  return written && file.close() ? Ok : Win32Error;
}

template <typename Call>
GpStatus withoutExceptions(Call call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return OutOfMemory;
  } catch (const std::exception&) {
    return GenericError;
  }
}

}  // namespace

namespace DllExports {

GpStatus GdipCreateBitmapFromFile(const wchar_t* fileName, GpBitmap** bitmap) {
  if (bitmap == nullptr) return InvalidParameter;
  *bitmap = nullptr;
  if (fileName == nullptr) return InvalidParameter;
  return withoutExceptions([fileName, bitmap] {
    std::unique_ptr<Bitmap> decoded;
    const GpStatus status = decodeFile(fileName, decoded);
    *bitmap = decoded.release();
    return status;
  });
}

GpStatus GdipCreateBitmapFromScan0(INT width, INT height, INT stride, PixelFormat format,
                                   BYTE* scan0, GpBitmap** bitmap) {
  if (bitmap == nullptr) return InvalidParameter;
  *bitmap = nullptr;
  if (width <= 0 || height <= 0 || stride != 0 || scan0 != nullptr) return InvalidParameter;
  std::unique_ptr<Bitmap> created;
  const GpStatus status =
      Bitmap::create(static_cast<UINT>(width), static_cast<UINT>(height), format, created);
  *bitmap = created.release();
  return status;
}

GpStatus GdipDisposeImage(GpImage* image) {
  if (image == nullptr) return InvalidParameter;
  delete &bitmapOf(*image);
  return Ok;
}

GpStatus GdipGetImagePixelFormat(GpImage* image, PixelFormat* format) {
  if (image == nullptr || format == nullptr) return InvalidParameter;
  *format = bitmapOf(*image).format();
  return Ok;
}

GpStatus GdipGetImageWidth(GpImage* image, UINT* width) {
  if (image == nullptr || width == nullptr) return InvalidParameter;
  *width = bitmapOf(*image).width();
  return Ok;
}

GpStatus GdipGetImageHeight(GpImage* image, UINT* height) {
  if (image == nullptr || height == nullptr) return InvalidParameter;
  *height = bitmapOf(*image).height();
  return Ok;
}

GpStatus GdipGetImageHorizontalResolution(GpImage* image, REAL* dpi) {
  if (image == nullptr || dpi == nullptr) return InvalidParameter;
  *dpi = bitmapOf(*image).xDpi();
  return Ok;
}

GpStatus GdipGetImageVerticalResolution(GpImage* image, REAL* dpi) {
  if (image == nullptr || dpi == nullptr) return InvalidParameter;
  *dpi = bitmapOf(*image).yDpi();
  return Ok;
}

GpStatus GdipBitmapSetResolution(GpBitmap* bitmap, REAL xDpi, REAL yDpi) {
  // Written so that a value that is no number is refused too.
  if (bitmap == nullptr || !(xDpi > 0) || !(yDpi > 0)) return InvalidParameter;
  bitmapOf(*bitmap).setResolution(xDpi, yDpi);
  return Ok;
}

GpStatus GdipGetImageGraphicsContext(GpImage* image, GpGraphics** graphics) {
  if (graphics == nullptr) return InvalidParameter;
  *graphics = nullptr;
  if (image == nullptr) return InvalidParameter;
  *graphics = new (std::nothrow) GpGraphics(bitmapOf(*image));
  return *graphics != nullptr ? Ok : OutOfMemory;
}

GpStatus GdipDeleteGraphics(GpGraphics* graphics) {
  if (graphics == nullptr) return InvalidParameter;
  delete graphics;
  return Ok;
}

GpStatus GdipDrawImageI(GpGraphics* graphics, GpImage* image, INT x, INT y) {
  if (graphics == nullptr || image == nullptr) return InvalidParameter;
  Bitmap& picture = bitmapOf(*image);
  picture.complete();
  graphics->target().draw(picture, x, y);
  return Ok;
}

GpStatus GdipSaveImageToFile(GpImage* image, const wchar_t* fileName, const CLSID* encoder,
                             const EncoderParameters* parameters) {
  if (image == nullptr || fileName == nullptr || encoder == nullptr) return InvalidParameter;
  if (!sameId(*encoder, kJpegEncoder)) return UnknownImageFormat;
  if (parameters != nullptr) return NotImplemented;
  return withoutExceptions([image, fileName] { return encodeFile(bitmapOf(*image), fileName); });
}

GpStatus GdipCreateEffect(GUID effectGuid, CGpEffect** effect) {
  if (effect == nullptr) return InvalidParameter;
  *effect = nullptr;
  if (!sameId(effectGuid, BrightnessContrastEffectGuid)) return InvalidParameter;
  *effect = new (std::nothrow) CGpEffect;
  return *effect != nullptr ? Ok : OutOfMemory;
}

GpStatus GdipSetEffectParameters(CGpEffect* effect, const void* parameters, UINT size) {
  BrightnessContrastParams values;
  if (effect == nullptr || parameters == nullptr || size != sizeof values) return InvalidParameter;
  std::memcpy(&values, parameters, sizeof values);
  return effect->set(values) ? Ok : InvalidParameter;
}

GpStatus GdipBitmapApplyEffect(GpBitmap* bitmap, CGpEffect* effect, RECT* region,
                               BOOL /*useAuxData*/, void** auxData, INT* auxDataSize) {
  if (bitmap == nullptr || effect == nullptr) return InvalidParameter;
  if (region != nullptr) return NotImplemented;
  // This effect has nothing to tell beside the picture.
  if (auxData != nullptr) *auxData = nullptr;
  if (auxDataSize != nullptr) *auxDataSize = 0;
  const BrightnessContrastParams& values = effect->parameters();
  bitmapOf(*bitmap).mapLevels(
      brightnessContrastTable(values.brightnessLevel, values.contrastLevel));
  return Ok;
}

GpStatus GdipDeleteEffect(CGpEffect* effect) {
  if (effect == nullptr) return InvalidParameter;
  delete effect;
  return Ok;
}

}  // namespace DllExports
}  // namespace Gdiplus
