// The imaging library of this system needs no start-up, so a wrapper holds nothing. The two jobs on
// a stored page read it row by row into a file beside it, which then takes its place: what goes
// wrong before that leaves the page as it was, and no whole page is ever in memory.
#include "tvrscn/tevrautil/gdi_wrapper.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cwchar>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "platform/imaging_math/adaptive_threshold.h"
#include "platform/imaging_math/brightness_contrast.h"
#include "platform/posix/imaging/jpeg_reader.h"
#include "platform/posix/imaging/jpeg_writer.h"
#include "platform/posix/imaging/output_file.h"
#include "platform/posix/utf8.h"
#include "platform/tevrautil/posix/tiff_pages.h"

namespace {

using tvrscn::pathFromWide;
using tvrscn::imaging::brightnessContrastTable;
using tvrscn::imaging::JpegPicture;
using tvrscn::imaging::JpegReader;
using tvrscn::imaging::JpegWriter;
using tvrscn::imaging::kMaxBrightness;
using tvrscn::imaging::kMaxContrast;
using tvrscn::imaging::LocalMean;
using tvrscn::imaging::OutputFile;
using tvrscn::imaging::PaperLevel;

// Black strokes on white ring at the usual quality; from here on the eye no longer sees it.
constexpr int kBlackAndWhiteQuality = 90;

struct Encoder {
  const wchar_t* mimeType;
  CLSID clsid;
};

constexpr CLSID encoderId(std::uint32_t first) {
  return {first, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
}

constexpr Encoder kEncoders[] = {
    {L"image/bmp", encoderId(0x557CF400)},
    {L"image/jpeg", encoderId(0x557CF401)},
    {L"image/tiff", encoderId(0x557CF405)},
    {L"image/png", encoderId(0x557CF406)},
};

[[noreturn]] void throwNotWritten(const std::string& file) {
  throw std::runtime_error("The scanned page \"" + file +
                           "\" could not be written after processing; it is kept as it came. Free "
                           "some space and check that its folder can be written, then scan again.");
}

// The sheet's rows from its top. Where the data end early the rest is black, as in a bitmap.
void readRow(JpegReader& reader, BYTE* row, std::size_t length) {
  if (reader.read(row, length, 1) == 0) std::fill_n(row, length, BYTE{0});
}

// The page that takes the place of the one at `file`, row by row.
class Replacement {
 public:
  Replacement(const std::string& file, const JpegPicture& picture) : file_(file) {
    if (!output_.openBeside(file) || !writer_.start(output_.get(), picture)) throwNotWritten(file);
  }
  void add(const std::vector<BYTE>& row) {
    if (!writer_.write(row.data(), row.size(), 1)) throwNotWritten(file_);
  }
  void finish() {
    if (!writer_.finish() || !output_.closeAndReplace()) throwNotWritten(file_);
  }

 private:
  const std::string& file_;
  OutputFile output_;
  JpegWriter writer_;
};

PaperLevel measurePaper(JpegReader& reader, unsigned dpi) {
  const JpegPicture& picture = reader.picture();
  PaperLevel paper(picture.width, picture.height, dpi);
  std::vector<BYTE> row(picture.width);
  for (UINT y = 0; y < picture.height; ++y) {
    readRow(reader, row.data(), row.size());
    paper.addRow(row.data());
  }
  paper.finish();
  return paper;
}

unsigned wholeDpi(const JpegPicture& picture) {
  return static_cast<unsigned>(std::lround(std::max(picture.xDpi, picture.yDpi)));
}

void writeBlackAndWhite(JpegReader& reader, const PaperLevel& paper, int brightness,
                        const std::string& file) {
  JpegPicture picture = reader.picture();
  picture.quality = std::max(reader.qualityToKeep(), kBlackAndWhiteQuality);
  LocalMean surroundings(picture.width, picture.height, wholeDpi(picture),
                         [&reader, &picture](BYTE* row) { readRow(reader, row, picture.width); });
  Replacement page(file, picture);
  std::vector<float> means;
  std::vector<float> levels;
  std::vector<BYTE> result;
  for (UINT y = 0; y < picture.height; ++y) {
    const BYTE* const row = surroundings.advance();
    surroundings.rowMeans(means);
    paper.rowLevels(y, levels);
    tvrscn::imaging::thresholdRow(row, means, levels, brightness, result);
    page.add(result);
  }
  page.finish();
}

}  // namespace

GdiWrapper::GdiWrapper() : m_token(0) {}

GdiWrapper::~GdiWrapper() = default;

int GdiWrapper::GetEncoderClsid(const wchar_t* mimeType, CLSID* clsid) {
  if (clsid == nullptr) return -1;
  *clsid = CLSID{};
  if (mimeType == nullptr) return -1;
  const auto* const found = std::find_if(
      std::begin(kEncoders), std::end(kEncoders),
      [mimeType](const Encoder& encoder) { return std::wcscmp(encoder.mimeType, mimeType) == 0; });
  if (found == std::end(kEncoders)) return -1;
  *clsid = found->clsid;
  return static_cast<int>(std::distance(std::begin(kEncoders), found));
}

void GdiWrapper::BlackandWhiteImageProcessing(std::wstring& path, int brightness,
                                              int /*contrast*/) {
  const std::string file = pathFromWide(path);
  // The paper has to be known before the first row is judged, so the page is decoded twice.
  JpegReader measured;
  if (measured.open(file, JpegReader::Colour::kGrey) != Gdiplus::Ok) return;
  const PaperLevel paper = measurePaper(measured, wholeDpi(measured.picture()));
  JpegReader reader;
  if (reader.open(file, JpegReader::Colour::kGrey) != Gdiplus::Ok) return;
  // A file that has changed in between would not fit the measure.
  if (reader.picture().width != measured.picture().width) return;
  if (reader.picture().height != measured.picture().height) return;
  writeBlackAndWhite(reader, paper, std::clamp(brightness, -kMaxBrightness, kMaxBrightness), file);
}

void GdiWrapper::BrightnessContrastApplyEffect(std::wstring path, int brightness, int contrast) {
  const std::string file = pathFromWide(path);
  JpegReader reader;
  if (reader.open(file, JpegReader::Colour::kAsStored) != Gdiplus::Ok) return;
  JpegPicture picture = reader.picture();
  picture.quality = reader.qualityToKeep();
  const auto table =
      brightnessContrastTable(std::clamp(brightness, -kMaxBrightness, kMaxBrightness),
                              std::clamp(contrast, -kMaxContrast, kMaxContrast));
  const bool grey = picture.format == Gdiplus::PixelFormat8bppIndexed;
  std::vector<BYTE> row(std::size_t{picture.width} * (grey ? 1 : 3));
  Replacement page(file, picture);
  for (UINT y = 0; y < picture.height; ++y) {
    readRow(reader, row.data(), row.size());
    std::transform(row.begin(), row.end(), row.begin(),
                   [&table](BYTE level) { return table[level]; });
    page.add(row);
  }
  page.finish();
}

std::uint32_t GdiWrapper::ConvertMultiPageTIFF2SinglePageTIFF(std::wstring source,
                                                              std::wstring prefix,
                                                              std::uint32_t firstNumber) {
  return tvrscn::imaging::splitTiffPages(pathFromWide(source), pathFromWide(prefix), firstNumber);
}
