// The system's imaging component. It is what stands behind GDI+, which cannot write a JPEG of one
// channel by itself; grey scanners send just that.
#include "virtual/common/codec.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

#include <wincodec.h>

#include "virtual/windows/com.h"
#include "virtual/windows/system_text.h"

namespace tvrscn::virtual_device {
namespace {

constexpr std::uint32_t kMostPixelsPerSide = 65500;
constexpr std::uint64_t kMostPixels = 500'000'000;

class ImageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

void check(HRESULT result, const char* what) {
  if (FAILED(result)) throw ImageError(what);
}

class ImagingFactory {
 public:
  ImagingFactory() {
    check(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                           IID_IWICImagingFactory, address(factory_)),
          "the system's imaging component is missing");
  }
  IWICImagingFactory* operator->() const { return factory_.get(); }

 private:
  static void** address(ComPtr<IWICImagingFactory>& factory) {
    return reinterpret_cast<void**>(factory.out());  // as the call takes any interface
  }

  ComSession session_;
  ComPtr<IWICImagingFactory> factory_;
};

bool isKnownContainer(const GUID& format) {
  return format == GUID_ContainerFormatJpeg || format == GUID_ContainerFormatPng ||
         format == GUID_ContainerFormatTiff;
}

void checkSize(UINT width, UINT height) {
  if (width == 0 || height == 0 || width > kMostPixelsPerSide || height > kMostPixelsPerSide ||
      std::uint64_t{width} * height > kMostPixels) {
    throw ImageError("its size of " + std::to_string(width) + " x " + std::to_string(height) +
                     " pixels is out of range");
  }
}

std::uint8_t overWhite(std::uint8_t level, std::uint8_t alpha) {
  return static_cast<std::uint8_t>((level * alpha + 255 * (255 - alpha) + 127) / 255);
}

// Four bytes a pixel, blue first, see-through last.
Raster flattened(const std::vector<std::uint8_t>& pixels, UINT width, UINT height) {
  Raster raster(static_cast<int>(width), static_cast<int>(height), 3);
  const std::uint8_t* in = pixels.data();
  for (auto out = raster.data.begin(); out != raster.data.end(); in += 4) {
    for (const int channel : {2, 1, 0})
      *out++ = overWhite(in[channel], in[3]);
  }
  return raster;
}

Raster readPicture(IWICBitmapSource* source) {
  UINT width = 0;
  UINT height = 0;
  check(source->GetSize(&width, &height), "it has no size");
  checkSize(width, height);
  const UINT stride = width * 4;
  std::vector<std::uint8_t> pixels(std::size_t{stride} * height);
  // Line by line: one call for all takes no more than 4 GB.
  for (UINT y = 0; y < height; ++y) {
    const WICRect line = {0, static_cast<INT>(y), static_cast<INT>(width), 1};
    check(source->CopyPixels(&line, stride, stride, pixels.data() + std::size_t{stride} * y),
          "it is damaged");
  }
  return flattened(pixels, width, height);
}

Raster decode(const std::filesystem::path& file) {
  const ImagingFactory factory;
  ComPtr<IWICBitmapDecoder> decoder;
  check(factory->CreateDecoderFromFilename(file.c_str(), nullptr, GENERIC_READ,
                                           WICDecodeMetadataCacheOnDemand, decoder.out()),
        "it cannot be read, or is none of JPEG, PNG and TIFF");
  GUID container = {};
  decoder->GetContainerFormat(&container);
  if (!isKnownContainer(container)) throw ImageError("it is none of JPEG, PNG and TIFF");
  ComPtr<IWICBitmapFrameDecode> frame;
  check(decoder->GetFrame(0, frame.out()), "it is damaged");
  WICPixelFormatGUID format = {};
  frame->GetPixelFormat(&format);
  if (format == GUID_WICPixelFormat32bppCMYK) {
    throw ImageError("it is in printing colours (CMYK); save it in RGB");
  }
  ComPtr<IWICFormatConverter> converter;
  check(factory->CreateFormatConverter(converter.out()), "the system has no pixel converter");
  check(converter->Initialize(frame.get(), GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone,
                              nullptr, 0.0, WICBitmapPaletteTypeCustom),
        "its kind of pixels is unknown");
  return readPicture(converter.get());
}

void setQuality(IPropertyBag2* options, int quality) {
  wchar_t name[] = L"ImageQuality";
  PROPBAG2 option = {};
  option.pstrName = static_cast<wchar_t*>(name);
  VARIANT value = {};
  value.vt = VT_R4;
  value.fltVal = static_cast<float>(quality) / 100.0F;
  check(options->Write(1, &option, &value), "the quality cannot be set");
}

// What the encoder takes: grey, or blue, green and red.
std::vector<std::uint8_t> encoderPixels(const Raster& raster) {
  std::vector<std::uint8_t> pixels = raster.data;
  if (raster.channels == 1) return pixels;
  for (std::size_t i = 0; i + 2 < pixels.size(); i += 3)
    std::swap(pixels[i], pixels[i + 2]);
  return pixels;
}

void beginFrame(IWICBitmapFrameEncode* frame, const PictureShape& shape) {
  check(frame->SetSize(static_cast<UINT>(shape.width), static_cast<UINT>(shape.height)),
        "the size is refused");
  check(frame->SetResolution(shape.dotsPerInch, shape.dotsPerInch), "the resolution is refused");
  const GUID& wanted =
      shape.channels == 1 ? GUID_WICPixelFormat8bppGray : GUID_WICPixelFormat24bppBGR;
  WICPixelFormatGUID format = wanted;
  check(frame->SetPixelFormat(&format), "the kind of pixels is refused");
  if (format != wanted) throw ImageError("the kind of pixels is refused");
}

void writeLines(IWICBitmapFrameEncode* frame, const Raster& band) {
  std::vector<std::uint8_t> pixels = encoderPixels(band);
  check(frame->WritePixels(static_cast<UINT>(band.height), static_cast<UINT>(band.lineBytes()),
                           static_cast<UINT>(pixels.size()), pixels.data()),
        "the pixels are refused");
}

void writeFrame(IWICBitmapEncoder* encoder, const PictureShape& shape, const LineSource& lines,
                int quality, int bandLines) {
  ComPtr<IWICBitmapFrameEncode> frame;
  ComPtr<IPropertyBag2> options;
  check(encoder->CreateNewFrame(frame.out(), options.out()), "there is no frame");
  setQuality(options.get(), quality);
  check(frame->Initialize(options.get()), "the frame cannot be begun");
  beginFrame(frame.get(), shape);
  for (int y = 0; y < shape.height; y += bandLines) {
    Raster band(shape.width, std::min(bandLines, shape.height - y), shape.channels);
    lines(y, band);
    writeLines(frame.get(), band);
  }
  check(frame->Commit(), "the frame cannot be ended");
}

Bytes contentOf(IStream* stream) {
  constexpr LARGE_INTEGER kStart = {};
  STATSTG status = {};
  check(stream->Stat(&status, STATFLAG_NONAME), "the stream has no size");
  check(stream->Seek(kStart, STREAM_SEEK_SET, nullptr), "the stream cannot be read");
  Bytes bytes(static_cast<std::size_t>(status.cbSize.QuadPart));
  ULONG count = 0;
  check(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &count),
        "the stream cannot be read");
  bytes.resize(count);
  return bytes;
}

Bytes encode(const PictureShape& shape, const LineSource& lines, int quality, int bandLines) {
  const ImagingFactory factory;
  ComPtr<IStream> stream;
  check(CreateStreamOnHGlobal(nullptr, 1, stream.out()), "there is no memory");
  ComPtr<IWICBitmapEncoder> encoder;
  check(factory->CreateEncoder(GUID_ContainerFormatJpeg, nullptr, encoder.out()),
        "the system has no JPEG encoder");
  check(encoder->Initialize(stream.get(), WICBitmapEncoderNoCache), "the encoder does not start");
  writeFrame(encoder.get(), shape, lines, quality, bandLines);
  check(encoder->Commit(), "the stream cannot be ended");
  return contentOf(stream.get());
}

Bytes encodeOrRefuse(const PictureShape& shape, const LineSource& lines, int quality,
                     int bandLines) {
  try {
    return encode(shape, lines, quality, bandLines);
  } catch (const ImageError& error) {
    throw std::runtime_error(std::string("the page cannot be encoded: ") + error.what());
  }
}

}  // namespace

Raster decodeImageFile(const std::filesystem::path& file) {
  try {
    return decode(file);
  } catch (const ImageError& error) {
    throw std::runtime_error("cannot use the page image " + narrow(file.wstring()) + ": " +
                             error.what() + "; name a readable JPEG, PNG or TIFF file");
  }
}

Bytes encodeJpeg(const Raster& raster, int quality, int dotsPerInch) {
  const PictureShape shape = {raster.width, raster.height, raster.channels, dotsPerInch};
  const LineSource whole = [&](int /*firstLine*/, Raster& band) { band.data = raster.data; };
  return encodeOrRefuse(shape, whole, quality, raster.height);
}

Bytes encodeJpeg(const PictureShape& shape, const LineSource& lines, int quality) {
  return encodeOrRefuse(shape, lines, quality, kBandLines);
}

}  // namespace tvrscn::virtual_device
