// Two passes for black and white: the paper has to be known before the first row is judged.
#include "platform/tevrautil/windows/page_pixels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cwchar>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/imaging.h"
#include "platform/imaging_math/adaptive_threshold.h"
#include "platform/imaging_math/brightness_contrast.h"
#include "platform/imaging_math/luma.h"
#include "platform/tevrautil/windows/jpeg_quality.h"
#include "platform/windows/indexed_page.h"
#include "platform/windows/locked_rows.h"

namespace tvrscn::imaging {
namespace {

namespace flat = Gdiplus::DllExports;

// Black strokes on white ring at the usual quality; from here on the eye no longer sees it.
constexpr int kBlackAndWhiteQuality = 90;
constexpr std::size_t kColourBytes = 3;

struct DisposeBitmap {
  void operator()(Gdiplus::GpBitmap* bitmap) const { flat::GdipDisposeImage(bitmap); }
};
using BitmapPtr = std::unique_ptr<Gdiplus::GpBitmap, DisposeBitmap>;

std::string utf8Of(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int needed =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(needed), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), needed, nullptr, nullptr);
  return bytes;
}

[[noreturn]] void throwNotWritten(const std::wstring& file) {
  throw std::runtime_error("The scanned page \"" + utf8Of(file) +
                           "\" could not be written after processing; it is kept as it came. Free "
                           "some space and check that its folder can be written, then scan again.");
}

// What is asked of a page once.
struct Page {
  BitmapPtr bitmap;
  UINT width = 0;
  UINT height = 0;
  Gdiplus::REAL xDpi = 0;
  Gdiplus::REAL yDpi = 0;

  [[nodiscard]] unsigned wholeDpi() const {
    return static_cast<unsigned>(std::lround(std::max(xDpi, yDpi)));
  }
};

// Without a bitmap when the file is no picture.
Page openPage(const std::wstring& path) {
  Page page;
  Gdiplus::GpBitmap* bitmap = nullptr;
  if (flat::GdipCreateBitmapFromFile(path.c_str(), &bitmap) != Gdiplus::Ok) return page;
  page.bitmap.reset(bitmap);
  flat::GdipGetImageWidth(bitmap, &page.width);
  flat::GdipGetImageHeight(bitmap, &page.height);
  flat::GdipGetImageHorizontalResolution(bitmap, &page.xDpi);
  flat::GdipGetImageVerticalResolution(bitmap, &page.yDpi);
  return page;
}

// The rows of a page as grey, from top to bottom. Rows that cannot be had are black.
class GreyRows {
 public:
  explicit GreyRows(const Page& page) : page_(page) {}

  void next(BYTE* grey) {
    const UINT first = row_ - row_ % kBandRows;
    if (row_ == first || band_ == nullptr) lockBand(first);
    if (band_->status() == Gdiplus::Ok) {
      const BYTE* pixel = band_->row(row_ - first);
      for (UINT x = 0; x < page_.width; ++x, pixel += kColourBytes)
        grey[x] = luma(pixel[0], pixel[1], pixel[2]);
    } else {
      std::fill_n(grey, page_.width, BYTE{0});
    }
    ++row_;
  }

 private:
  void lockBand(UINT first) {
    band_.reset();  // one band at a time
    band_ = std::make_unique<LockedRows>(page_.bitmap.get(), page_.width, first,
                                         std::min(kBandRows, page_.height - first),
                                         Gdiplus::PixelFormat24bppRGB, LockedRows::For::kReading);
  }

  const Page& page_;
  std::unique_ptr<LockedRows> band_;
  UINT row_ = 0;
};

bool saveJpeg(Gdiplus::GpBitmap* bitmap, const std::wstring& path, int quality) {
  CLSID encoder = {};
  if (findEncoder(L"image/jpeg", encoder) < 0) return false;
  auto value = static_cast<ULONG>(quality);
  Gdiplus::EncoderParameters parameters = {};
  parameters.Count = 1;
  parameters.Parameter[0].Guid = {
      0x1D5BE4B5, 0xFA4A, 0x452D, {0x9C, 0xDD, 0x5D, 0xB3, 0x51, 0x05, 0xE7, 0xEB}};
  parameters.Parameter[0].Type = Gdiplus::EncoderParameterValueTypeLong;
  parameters.Parameter[0].NumberOfValues = 1;
  parameters.Parameter[0].Value = &value;
  return flat::GdipSaveImageToFile(bitmap, path.c_str(), &encoder, &parameters) == Gdiplus::Ok;
}

// A new file beside the page, removed again unless it took the page's place.
class FileBeside {
 public:
  explicit FileBeside(const std::wstring& page) : page_(page) {
    const std::size_t separator = page.find_last_of(L"\\/");
    const std::wstring folder =
        separator == std::wstring::npos ? L"." : page.substr(0, separator + 1);
    wchar_t name[MAX_PATH] = {};
    if (GetTempFileNameW(folder.c_str(), L"pag", 0, name) != 0) name_ = name;
  }
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;
  ~FileBeside() {
    if (!name_.empty()) DeleteFileW(name_.c_str());
  }

  // Empty when there is none.
  [[nodiscard]] const std::wstring& name() const { return name_; }

  bool takePlace() {
    if (MoveFileExW(name_.c_str(), page_.c_str(), MOVEFILE_REPLACE_EXISTING) == 0) return false;
    name_.clear();
    return true;
  }

 private:
  const std::wstring& page_;
  std::wstring name_;
};

// Gives the pictures up before the replacement: the system keeps the file of a decoded one open.
void replacePage(const std::wstring& path, Page& page, BitmapPtr result, int quality) {
  FileBeside file(path);
  const bool saved = !file.name().empty() && saveJpeg(result.get(), file.name(), quality);
  result.reset();
  page.bitmap.reset();
  if (!saved || !file.takePlace()) throwNotWritten(path);
}

BitmapPtr newPage(const Page& like, Gdiplus::PixelFormat format) {
  Gdiplus::GpBitmap* bitmap = nullptr;
  if (gdip::GdipCreateBitmapFromScan0(static_cast<INT>(like.width), static_cast<INT>(like.height),
                                      0, format, nullptr, &bitmap) != Gdiplus::Ok) {
    return nullptr;
  }
  flat::GdipBitmapSetResolution(bitmap, like.xDpi, like.yDpi);
  return BitmapPtr(bitmap);
}

PaperLevel measurePaper(const Page& page) {
  PaperLevel paper(page.width, page.height, page.wholeDpi());
  GreyRows rows(page);
  std::vector<BYTE> row(page.width);
  for (UINT y = 0; y < page.height; ++y) {
    rows.next(row.data());
    paper.addRow(row.data());
  }
  paper.finish();
  return paper;
}

bool copyColour(const Page& page, Gdiplus::GpBitmap* result) {
  constexpr auto kFormat = Gdiplus::PixelFormat24bppRGB;
  for (UINT top = 0; top < page.height; top += kBandRows) {
    const UINT count = std::min(kBandRows, page.height - top);
    const LockedRows from(page.bitmap.get(), page.width, top, count, kFormat,
                          LockedRows::For::kReading);
    const LockedRows to(result, page.width, top, count, kFormat, LockedRows::For::kWriting);
    if (from.status() != Gdiplus::Ok || to.status() != Gdiplus::Ok) return false;
    for (UINT i = 0; i < count; ++i)
      std::copy_n(from.row(i), page.width * kColourBytes, to.row(i));
  }
  return true;
}

bool copyPixels(const Page& page, bool grey, Gdiplus::GpBitmap* result) {
  if (grey) return drawOnIndexed(result, page.bitmap.get(), 0, 0) == Gdiplus::Ok;
  return copyColour(page, result);
}

// False when the result's rows cannot be had.
bool fillBlackAndWhite(const Page& page, int brightness, Gdiplus::GpBitmap* result) {
  const PaperLevel paper = measurePaper(page);
  GreyRows rows(page);
  LocalMean surroundings(page.width, page.height, page.wholeDpi(),
                         [&rows](BYTE* row) { rows.next(row); });
  std::vector<float> means;
  std::vector<float> levels;
  std::vector<BYTE> line;
  for (UINT top = 0; top < page.height; top += kBandRows) {
    const UINT count = std::min(kBandRows, page.height - top);
    const LockedRows band(result, page.width, top, count, Gdiplus::PixelFormat8bppIndexed,
                          LockedRows::For::kWriting);
    if (band.status() != Gdiplus::Ok) return false;
    for (UINT i = 0; i < count; ++i) {
      const BYTE* const grey = surroundings.advance();
      surroundings.rowMeans(means);
      paper.rowLevels(top + i, levels);
      thresholdRow(grey, means, levels, brightness, line);
      std::copy(line.begin(), line.end(), band.row(i));
    }
  }
  return true;
}

}  // namespace

int findEncoder(const wchar_t* mimeType, CLSID& clsid) {
  UINT count = 0;
  UINT size = 0;
  if (flat::GdipGetImageEncodersSize(&count, &size) != Gdiplus::Ok || size == 0) return -1;
  // The texts that the records point at follow them in the same memory.
  const std::unique_ptr<Gdiplus::ImageCodecInfo[]> codecs(
      new Gdiplus::ImageCodecInfo[size / sizeof(Gdiplus::ImageCodecInfo) + 1]);
  if (flat::GdipGetImageEncoders(count, size, codecs.get()) != Gdiplus::Ok) return -1;
  for (UINT i = 0; i < count; ++i) {
    if (std::wcscmp(codecs[i].MimeType, mimeType) != 0) continue;
    clsid = codecs[i].Clsid;
    return static_cast<int>(i);
  }
  return -1;
}

void makeBlackAndWhite(const std::wstring& path, int brightness) {
  Page page = openPage(path);
  if (page.bitmap == nullptr) return;
  BitmapPtr result = newPage(page, Gdiplus::PixelFormat8bppIndexed);
  const int level = std::clamp(brightness, -kMaxBrightness, kMaxBrightness);
  if (result == nullptr || !fillBlackAndWhite(page, level, result.get())) throwNotWritten(path);
  replacePage(path, page, std::move(result), std::max(jpegQuality(path), kBlackAndWhiteQuality));
}

void applyBrightnessContrast(const std::wstring& path, int brightness, int contrast) {
  Page page = openPage(path);
  if (page.bitmap == nullptr) return;
  const bool grey = isIndexed(page.bitmap.get());
  BitmapPtr result =
      newPage(page, grey ? Gdiplus::PixelFormat8bppIndexed : Gdiplus::PixelFormat24bppRGB);
  const auto table =
      brightnessContrastTable(std::clamp(brightness, -kMaxBrightness, kMaxBrightness),
                              std::clamp(contrast, -kMaxContrast, kMaxContrast));
  if (result == nullptr || !copyPixels(page, grey, result.get()) ||
      mapLevels(result.get(), table) != Gdiplus::Ok) {
    throwNotWritten(path);
  }
  replacePage(path, page, std::move(result), jpegQuality(path));
}

}  // namespace tvrscn::imaging
