// The system's decoder reads a page, its encoder writes it again, with the compression that the
// page had where the encoder knows it.
#include "platform/tevrautil/windows/tiff_pages.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "platform/imaging.h"
#include "platform/tevrautil/windows/page_pixels.h"

namespace tvrscn::imaging {
namespace {

namespace flat = Gdiplus::DllExports;

constexpr UINT kMaxPages = 65535;
constexpr UINT kMaxBadPages = 8;
constexpr PROPID kCompressionTag = 0x0103;

constexpr GUID kTiffFormat = {
    0xB96B3CB1, 0x0728, 0x11D3, {0x9D, 0x7B, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
constexpr GUID kPages = {
    0x7462DC86, 0x6180, 0x4C7E, {0x8E, 0x3F, 0xEE, 0x73, 0x33, 0xA7, 0xA4, 0x83}};
constexpr GUID kCompressionParameter = {
    0xE09D739D, 0xCCD4, 0x44EE, {0x8E, 0xBA, 0x3F, 0xBF, 0x8B, 0xE4, 0xFC, 0x58}};

struct CompressionRow {
  std::uint16_t tag;  // as the file has it
  ULONG encoder;
};

constexpr CompressionRow kCompressions[] = {
    {1, Gdiplus::EncoderValueCompressionNone},   {2, Gdiplus::EncoderValueCompressionRle},
    {3, Gdiplus::EncoderValueCompressionCCITT3}, {4, Gdiplus::EncoderValueCompressionCCITT4},
    {5, Gdiplus::EncoderValueCompressionLZW},
};

struct DisposeImage {
  void operator()(Gdiplus::GpBitmap* image) const { flat::GdipDisposeImage(image); }
};
using ImagePtr = std::unique_ptr<Gdiplus::GpBitmap, DisposeImage>;

ImagePtr openTiff(const std::wstring& source) {
  Gdiplus::GpBitmap* bitmap = nullptr;
  if (flat::GdipCreateBitmapFromFile(source.c_str(), &bitmap) != Gdiplus::Ok) return nullptr;
  ImagePtr image(bitmap);
  GUID format = {};
  if (flat::GdipGetImageRawFormat(bitmap, &format) != Gdiplus::Ok) return nullptr;
  if (!IsEqualGUID(format, kTiffFormat)) return nullptr;
  return image;
}

// LZW, which every reader knows, for a compression that the encoder does not.
ULONG compressionOf(Gdiplus::GpBitmap* page) {
  constexpr ULONG kFallback = Gdiplus::EncoderValueCompressionLZW;
  UINT size = 0;
  if (flat::GdipGetPropertyItemSize(page, kCompressionTag, &size) != Gdiplus::Ok) return kFallback;
  if (size < sizeof(Gdiplus::PropertyItem)) return kFallback;
  // The value follows its record in the same memory.
  const std::unique_ptr<Gdiplus::PropertyItem[]> item(
      new Gdiplus::PropertyItem[size / sizeof(Gdiplus::PropertyItem) + 1]);
  if (flat::GdipGetPropertyItem(page, kCompressionTag, size, item.get()) != Gdiplus::Ok)
    return kFallback;
  if (item[0].length < 2 || item[0].value == nullptr) return kFallback;
  const auto* const bytes = static_cast<const BYTE*>(item[0].value);
  const auto tag = static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8U);
  for (const CompressionRow& row : kCompressions) {
    if (row.tag == tag) return row.encoder;
  }
  return kFallback;
}

bool savePage(Gdiplus::GpBitmap* page, const std::wstring& name, const CLSID& encoder) {
  ULONG compression = compressionOf(page);
  Gdiplus::EncoderParameters parameters = {};
  parameters.Count = 1;
  parameters.Parameter[0].Guid = kCompressionParameter;
  parameters.Parameter[0].Type = Gdiplus::EncoderParameterValueTypeLong;
  parameters.Parameter[0].NumberOfValues = 1;
  parameters.Parameter[0].Value = &compression;
  if (flat::GdipSaveImageToFile(page, name.c_str(), &encoder, &parameters) == Gdiplus::Ok)
    return true;
  DeleteFileW(name.c_str());
  return false;
}

}  // namespace

std::uint32_t splitTiffPages(const std::wstring& source, const std::wstring& prefix,
                             std::uint32_t firstNumber) {
  CLSID encoder = {};
  const ImagePtr image = openTiff(source);
  if (image == nullptr || findEncoder(L"image/tiff", encoder) < 0) return 0;
  UINT pages = 0;
  if (flat::GdipImageGetFrameCount(image.get(), &kPages, &pages) != Gdiplus::Ok) return 0;
  std::uint32_t written = 0;
  UINT bad = 0;
  for (UINT page = 0; page < std::min(pages, kMaxPages) && bad < kMaxBadPages; ++page) {
    const std::uint64_t number = std::uint64_t{firstNumber} + written;
    const std::wstring name = prefix + std::to_wstring(number) + L".tif";
    const bool had = flat::GdipImageSelectActiveFrame(image.get(), &kPages, page) == Gdiplus::Ok &&
                     savePage(image.get(), name, encoder);
    if (had) {
      ++written;
    } else {
      ++bad;
    }
  }
  return written;
}

}  // namespace tvrscn::imaging
