// TIFF, any kind that libtiff can turn into plain colours; of a file with several pages the first.
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <tiffio.h>

#include "virtual/posix/image_readers.h"

namespace tvrscn::virtual_device {
namespace {

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
struct FreeOptions {
  void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

// Keeps what libtiff has to say from standard error. The handlers belong to one file, so that
// nobody else's use of libtiff in this process is touched.
[[gnu::format(printf, 4, 0)]] int keepError(TIFF* /*tiff*/, void* text, const char* /*module*/,
                                            const char* format, va_list arguments) {
  char line[256];
  std::vsnprintf(line, sizeof line, format, arguments);
  *static_cast<std::string*>(text) = line;
  return 1;
}

int dropWarning(TIFF* /*tiff*/, void* /*text*/, const char* /*module*/, const char* /*format*/,
                va_list /*arguments*/) {
  return 1;
}

// See-through pixels come with their colours already multiplied by their share.
std::uint8_t overWhite(std::uint32_t channel, std::uint32_t alpha) {
  const std::uint32_t sum = channel + 255 - alpha;
  return static_cast<std::uint8_t>(sum > 255 ? 255 : sum);
}

}  // namespace

Raster readTiff(const std::filesystem::path& file) {
  std::string trouble;
  const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
  if (!options) throw ImageError("there is no memory for it");
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepError, &trouble);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), dropWarning, nullptr);
  const std::unique_ptr<TIFF, CloseTiff> tiff(TIFFOpenExt(file.c_str(), "r", options.get()));
  if (!tiff) throw ImageError(trouble);

  std::uint32_t width = 0;
  std::uint32_t height = 0;
  TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height);
  Raster raster = makeImage(width, height);
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * height);
  constexpr int kStopOnError = 1;
  if (TIFFReadRGBAImageOriented(tiff.get(), width, height, pixels.data(), ORIENTATION_TOPLEFT,
                                kStopOnError) == 0) {
    throw ImageError(trouble.empty() ? "its pixels cannot be decoded" : trouble);
  }
  std::uint8_t* out = raster.data.data();
  for (const std::uint32_t pixel : pixels) {
    const std::uint32_t alpha = TIFFGetA(pixel);
    *out++ = overWhite(TIFFGetR(pixel), alpha);
    *out++ = overWhite(TIFFGetG(pixel), alpha);
    *out++ = overWhite(TIFFGetB(pixel), alpha);
  }
  return raster;
}

}  // namespace tvrscn::virtual_device
