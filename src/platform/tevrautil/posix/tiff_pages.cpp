// A page's tags are set again one by one, its strips or tiles are carried over without being
// decoded. The file comes from a device: sizes and counts in it are judged before memory is taken
// for them.
#include "platform/tevrautil/posix/tiff_pages.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <type_traits>
#include <vector>

#include <tiffio.h>

namespace tvrscn::imaging {
namespace {

constexpr std::uint32_t kMaxSide = 65535;
constexpr std::uint32_t kMaxPieces = 65535;
constexpr std::uint16_t kMaxSamples = 64;
constexpr std::uint32_t kMaxPages = 65535;
constexpr int kMaxBadDirectories = 8;
constexpr tmsize_t kSmallAllocation = 1L << 20;
// A file whose pages share their bytes could ask for far more work than it has bytes.
constexpr std::uint64_t kMaxBytesPerByte = 4;
constexpr std::uint64_t kHeaderSize = 8;
constexpr std::uint64_t kDirectoryEntrySize = 12;

enum class PageResult { kWritten, kDamaged, kCannotWrite };

struct CloseTiff {
  void operator()(TIFF* file) const { TIFFClose(file); }
};
using TiffFile = std::unique_ptr<TIFF, CloseTiff>;

class Budget {
 public:
  explicit Budget(std::uint64_t fileSize)
      : fileSize_(fileSize), left_(fileSize * kMaxBytesPerByte) {}
  tmsize_t largestAllocation() const {
    return static_cast<tmsize_t>(fileSize_ * kMaxBytesPerByte) + kSmallAllocation;
  }
  // False for what cannot stand in the file, or is too much by now.
  bool spend(std::uint64_t bytes) {
    if (bytes > fileSize_ || bytes > left_) return false;
    left_ -= bytes;
    return true;
  }

 private:
  std::uint64_t fileSize_;
  std::uint64_t left_;
};

int keepSilent(TIFF* /*file*/, void* /*context*/, const char* /*module*/, const char* /*format*/,
               va_list /*arguments*/) {
  return 1;  // handled: the process-wide handlers, which print, are left out
}

TiffFile openTiff(const std::string& name, const char* mode, const Budget& budget) {
  TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
  if (options == nullptr) return nullptr;
  TIFFOpenOptionsSetErrorHandlerExtR(options, keepSilent, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options, keepSilent, nullptr);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, budget.largestAllocation());
  TiffFile file(TIFFOpenExt(name.c_str(), mode, options));
  TIFFOpenOptionsFree(options);
  return file;
}

constexpr std::uint32_t kShortTags[] = {
    TIFFTAG_BITSPERSAMPLE, TIFFTAG_SAMPLESPERPIXEL, TIFFTAG_PHOTOMETRIC,    TIFFTAG_PLANARCONFIG,
    TIFFTAG_FILLORDER,     TIFFTAG_ORIENTATION,     TIFFTAG_RESOLUTIONUNIT, TIFFTAG_SAMPLEFORMAT,
    TIFFTAG_THRESHHOLDING, TIFFTAG_MINSAMPLEVALUE,  TIFFTAG_MAXSAMPLEVALUE, TIFFTAG_INKSET,
};
constexpr std::uint32_t kFloatTags[] = {
    TIFFTAG_XRESOLUTION,
    TIFFTAG_YRESOLUTION,
    TIFFTAG_XPOSITION,
    TIFFTAG_YPOSITION,
};
constexpr std::uint32_t kTextTags[] = {
    TIFFTAG_DOCUMENTNAME, TIFFTAG_IMAGEDESCRIPTION, TIFFTAG_MAKE,
    TIFFTAG_MODEL,        TIFFTAG_PAGENAME,         TIFFTAG_SOFTWARE,
    TIFFTAG_DATETIME,     TIFFTAG_ARTIST,           TIFFTAG_HOSTCOMPUTER,
};

template <typename Value>
void copyTag(TIFF* in, TIFF* out, std::uint32_t tag) {
  Value value{};
  if (TIFFGetField(in, tag, &value) != 1) return;
  if constexpr (std::is_same_v<Value, float>) {
    TIFFSetField(out, tag, static_cast<double>(value));  // as a variable argument is passed
  } else {
    TIFFSetField(out, tag, value);
  }
}

void copyCodecTags(TIFF* in, TIFF* out, std::uint16_t compression) {
  switch (compression) {
    case COMPRESSION_CCITTFAX3:
      copyTag<std::uint32_t>(in, out, TIFFTAG_GROUP3OPTIONS);
      break;
    case COMPRESSION_CCITTFAX4:
      copyTag<std::uint32_t>(in, out, TIFFTAG_GROUP4OPTIONS);
      break;
    case COMPRESSION_LZW:
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_DEFLATE:
      copyTag<std::uint16_t>(in, out, TIFFTAG_PREDICTOR);
      break;
    case COMPRESSION_JPEG: {
      std::uint32_t length = 0;
      void* tables = nullptr;
      if (TIFFGetField(in, TIFFTAG_JPEGTABLES, &length, &tables) == 1)
        TIFFSetField(out, TIFFTAG_JPEGTABLES, length, tables);
      break;
    }
    default:
      break;
  }
}

void copyArrays(TIFF* in, TIFF* out) {
  std::uint16_t count = 0;
  std::uint16_t* extra = nullptr;
  if (TIFFGetField(in, TIFFTAG_EXTRASAMPLES, &count, &extra) == 1)
    TIFFSetField(out, TIFFTAG_EXTRASAMPLES, count, extra);
  std::uint16_t* red = nullptr;
  std::uint16_t* green = nullptr;
  std::uint16_t* blue = nullptr;
  if (TIFFGetField(in, TIFFTAG_COLORMAP, &red, &green, &blue) == 1)
    TIFFSetField(out, TIFFTAG_COLORMAP, red, green, blue);
  std::uint16_t across = 0;
  std::uint16_t down = 0;
  if (TIFFGetField(in, TIFFTAG_YCBCRSUBSAMPLING, &across, &down) == 1)
    TIFFSetField(out, TIFFTAG_YCBCRSUBSAMPLING, across, down);
  float* reference = nullptr;
  if (TIFFGetField(in, TIFFTAG_REFERENCEBLACKWHITE, &reference) == 1)
    TIFFSetField(out, TIFFTAG_REFERENCEBLACKWHITE, reference);
}

// What says how the page is laid out in strips or tiles.
struct Layout {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint16_t compression = COMPRESSION_NONE;
  bool tiled = false;
  std::uint32_t pieces = 0;
};

bool readLayout(TIFF* in, Layout& layout) {
  if (TIFFGetField(in, TIFFTAG_IMAGEWIDTH, &layout.width) != 1) return false;
  if (TIFFGetField(in, TIFFTAG_IMAGELENGTH, &layout.height) != 1) return false;
  if (layout.width == 0 || layout.width > kMaxSide) return false;
  if (layout.height == 0 || layout.height > kMaxSide) return false;
  std::uint16_t samples = 0;
  TIFFGetFieldDefaulted(in, TIFFTAG_SAMPLESPERPIXEL, &samples);
  if (samples > kMaxSamples) return false;
  TIFFGetFieldDefaulted(in, TIFFTAG_COMPRESSION, &layout.compression);
  // The old form of JPEG in TIFF points at places in the file that a copy would not have.
  if (layout.compression == COMPRESSION_OJPEG) return false;
  layout.tiled = TIFFIsTiled(in) != 0;
  layout.pieces = layout.tiled ? TIFFNumberOfTiles(in) : TIFFNumberOfStrips(in);
  return layout.pieces > 0 && layout.pieces <= kMaxPieces;
}

void copyTags(TIFF* in, TIFF* out, const Layout& layout) {
  TIFFSetField(out, TIFFTAG_IMAGEWIDTH, layout.width);
  TIFFSetField(out, TIFFTAG_IMAGELENGTH, layout.height);
  // The compression goes ahead of the rest: it makes its own tags known.
  TIFFSetField(out, TIFFTAG_COMPRESSION, layout.compression);
  for (const std::uint32_t tag : kShortTags)
    copyTag<std::uint16_t>(in, out, tag);
  if (layout.tiled) {
    copyTag<std::uint32_t>(in, out, TIFFTAG_TILEWIDTH);
    copyTag<std::uint32_t>(in, out, TIFFTAG_TILELENGTH);
  } else {
    std::uint32_t rows = layout.height;
    if (TIFFGetField(in, TIFFTAG_ROWSPERSTRIP, &rows) != 1 || rows > layout.height)
      rows = layout.height;
    TIFFSetField(out, TIFFTAG_ROWSPERSTRIP, rows);
  }
  for (const std::uint32_t tag : kFloatTags)
    copyTag<float>(in, out, tag);
  for (const std::uint32_t tag : kTextTags)
    copyTag<char*>(in, out, tag);
  copyArrays(in, out);
  copyCodecTags(in, out, layout.compression);
}

PageResult copyPieces(TIFF* in, TIFF* out, const Layout& layout, Budget& budget) {
  std::vector<unsigned char> piece;
  for (std::uint32_t i = 0; i < layout.pieces; ++i) {
    const std::uint64_t length = TIFFGetStrileByteCount(in, i);
    // Places inside the header stand for strips that the directory does not name.
    if (TIFFGetStrileOffset(in, i) < kHeaderSize || length == 0 || !budget.spend(length))
      return PageResult::kDamaged;
    piece.resize(length);
    const auto size = static_cast<tmsize_t>(length);
    const tmsize_t got = layout.tiled ? TIFFReadRawTile(in, i, piece.data(), size)
                                      : TIFFReadRawStrip(in, i, piece.data(), size);
    if (got != size) return PageResult::kDamaged;
    const tmsize_t put = layout.tiled ? TIFFWriteRawTile(out, i, piece.data(), size)
                                      : TIFFWriteRawStrip(out, i, piece.data(), size);
    if (put != size) return PageResult::kCannotWrite;
  }
  return PageResult::kWritten;
}

PageResult copyPage(TIFF* in, const std::string& name, Budget& budget) {
  Layout layout;
  if (!readLayout(in, layout)) return PageResult::kDamaged;
  PageResult result = PageResult::kCannotWrite;
  std::error_code error;
  if (std::filesystem::equivalent(TIFFFileName(in), name, error)) return result;
  TiffFile out = openTiff(name, TIFFIsBigEndian(in) != 0 ? "wb" : "wl", budget);
  if (!out) return result;
  copyTags(in, out.get(), layout);
  result = copyPieces(in, out.get(), layout, budget);
  if (result == PageResult::kWritten && TIFFWriteDirectory(out.get()) != 1)
    result = PageResult::kCannotWrite;
  out.reset();
  if (result != PageResult::kWritten) static_cast<void>(std::remove(name.c_str()));
  return result;
}

std::uint64_t directorySize(TIFF* in) {
  const thandle_t file = TIFFClientdata(in);
  std::uint8_t count[2] = {};
  TIFFGetSeekProc(in)(file, TIFFCurrentDirOffset(in), SEEK_SET);
  TIFFGetReadProc(in)(file, count, sizeof count);
  const bool big = TIFFIsBigEndian(in) != 0;
  const std::uint64_t entries = count[big ? 0 : 1] * std::uint64_t{256} + count[big ? 1 : 0];
  return entries * kDirectoryEntrySize;
}

}  // namespace

std::uint32_t splitTiffPages(const std::string& source, const std::string& prefix,
                             std::uint32_t firstNumber) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(source, error);
  if (error) return 0;
  Budget budget(size);
  // h: only the header is read now, so that a damaged first page does not hide the others; m: the
  // file is not mapped, since it may shrink while it is read.
  const TiffFile in = openTiff(source, "rhm", budget);
  if (!in) return 0;
  std::uint32_t written = 0;
  int badDirectories = 0;
  for (std::uint32_t page = 0; page < kMaxPages && badDirectories < kMaxBadDirectories; ++page) {
    if (TIFFReadDirectory(in.get()) != 1) {
      ++badDirectories;
    } else {
      if (!budget.spend(directorySize(in.get()))) break;
      const std::uint64_t number = std::uint64_t{firstNumber} + written;
      const PageResult result =
          copyPage(in.get(), prefix + std::to_string(number) + ".tif", budget);
      if (result == PageResult::kCannotWrite) break;
      if (result == PageResult::kWritten) ++written;
    }
    if (TIFFLastDirectory(in.get()) != 0) break;
  }
  return written;
}

}  // namespace tvrscn::imaging
