// Strips come from a device and are not to be trusted. Three things bound what a small file can ask
// for: decoding stops where the data end instead of making up rows, a file in many scans gets a
// limited memory, and the number of its scans is limited too.
#include "platform/posix/imaging/jpeg_reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <vector>

#include <jerror.h>

#include "platform/posix/imaging/jpeg_trap.h"
#include "platform/posix/imaging/jpeg_writer.h"
#include "platform/posix/imaging/pixel_rows.h"

namespace tvrscn::imaging {
namespace {

using Gdiplus::GpStatus;
using Gdiplus::REAL;

constexpr long kMaxCoefficientBytes = 1L << 30;  // A3 at 600 dpi, full colour, takes 0.4 of it
constexpr int kMaxScans = 100;
constexpr UINT kRowsAtOnce = 16;
constexpr UINT kBlockRows = 8;
// Pixels of which the codes may still lie in the decoder's bit buffer when it sees the end marker
// of a file that was damaged before: 64 bits, at most 32 blocks of 8 rows.
constexpr UINT kRowsInBitBuffer = 32 * kBlockRows;
constexpr std::size_t kInkBytes = 4;
constexpr REAL kCentimetresPerInch = 2.54F;

// A dot density of the file in dots per inch; 0 where the file does not tell one.
REAL dpiOf(const jpeg_decompress_struct& codec, unsigned density) {
  constexpr int kPerInch = 1;
  constexpr int kPerCentimetre = 2;
  if (!codec.saw_JFIF_marker) return 0;
  if (codec.density_unit == kPerInch) return static_cast<REAL>(density);
  if (codec.density_unit == kPerCentimetre) return static_cast<REAL>(density) * kCentimetresPerInch;
  return 0;
}

void limitScans(j_common_ptr common) {
  // The codec's own way from the common part to the decoder whose part it is.
  const auto* codec = reinterpret_cast<const jpeg_decompress_struct*>(common);
  if (codec->input_scan_number <= kMaxScans) return;
  common->err->msg_code = JERR_NO_BACKING_STORE;
  common->err->error_exit(common);
}

// Ink of 255 is none where Adobe's marker stands, and full coverage elsewhere.
void inkToColour(BYTE* target, const BYTE* source, std::size_t count, bool inverted, bool grey) {
  const unsigned flip = inverted ? 0 : 255;
  for (std::size_t i = 0; i < count; ++i, source += kInkBytes) {
    const auto mix = [flip, source](std::size_t ink) {
      return (((source[ink] ^ flip) * (source[3] ^ flip)) + 127) / 255;
    };
    const unsigned blue = mix(2);
    const unsigned green = mix(1);
    const unsigned red = mix(0);
    if (grey) {
      *target++ = luma(blue, green, red);
      continue;
    }
    *target++ = static_cast<BYTE>(blue);
    *target++ = static_cast<BYTE>(green);
    *target++ = static_cast<BYTE>(red);
  }
}

}  // namespace

struct JpegReader::State {
  ~State() {
    jpeg_destroy_decompress(&codec);
    if (file != nullptr) static_cast<void>(std::fclose(file));
  }

  [[nodiscard]] GpStatus readHeader();
  void chooseOutput(Colour colour);
  void describe();
  [[nodiscard]] bool readSome(BYTE* first, std::size_t stride, UINT rows, UINT& done);
  [[nodiscard]] bool readInk(BYTE* target, UINT& done);
  void limitRows();

  jpeg_decompress_struct codec{};
  JpegTrap trap;
  std::FILE* file = nullptr;
  JpegPicture picture;
  std::vector<BYTE> inkRow;  // one row of cyan, magenta, yellow and black, when the file has them
  UINT rowLimit = 0;
  bool failed = false;
};

GpStatus JpegReader::State::readHeader() {
  trap.install(codec);
  const bool read = trap.run([this] {
    jpeg_create_decompress(&codec);
    codec.mem->max_memory_to_use = kMaxCoefficientBytes;
    jpeg_stdio_src(&codec, file);
    jpeg_read_header(&codec, TRUE);
  });
  if (!read) return trap.status();
  return codec.arith_code ? Gdiplus::UnknownImageFormat : Gdiplus::Ok;
}

void JpegReader::State::chooseOutput(Colour colour) {
  const bool ink = codec.jpeg_color_space == JCS_CMYK || codec.jpeg_color_space == JCS_YCCK;
  const bool grey = colour == Colour::kGrey || codec.jpeg_color_space == JCS_GRAYSCALE;
  picture.format = grey ? Gdiplus::PixelFormat8bppIndexed : Gdiplus::PixelFormat24bppRGB;
  if (ink) {
    codec.out_color_space = JCS_CMYK;
    inkRow.resize(codec.image_width * kInkBytes);
    return;
  }
  codec.out_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
}

void JpegReader::State::describe() {
  picture.width = codec.image_width;
  picture.height = codec.image_height;
  const REAL xDpi = dpiOf(codec, codec.X_density);
  const REAL yDpi = dpiOf(codec, codec.Y_density);
  if (xDpi > 0 && yDpi > 0) {
    picture.xDpi = xDpi;
    picture.yDpi = yDpi;
  }
  const jpeg_component_info& first = codec.comp_info[0];
  const auto usual = [](int factor) { return factor == 1 || factor == 2; };
  const bool plain = codec.jpeg_color_space == JCS_YCbCr && usual(first.h_samp_factor) &&
                     usual(first.v_samp_factor) &&
                     std::all_of(codec.comp_info + 1, codec.comp_info + codec.num_components,
                                 [](const jpeg_component_info& chroma) {
                                   return chroma.h_samp_factor == 1 && chroma.v_samp_factor == 1;
                                 });
  picture.lumaAcross = plain ? first.h_samp_factor : 1;
  picture.lumaDown = plain ? first.v_samp_factor : 1;
}

bool JpegReader::State::readSome(BYTE* first, std::size_t stride, UINT rows, UINT& done) {
  std::array<JSAMPROW, kRowsAtOnce> pointers{};
  const UINT wanted = std::min(rows, kRowsAtOnce);
  for (UINT i = 0; i < wanted; ++i)
    pointers[i] = first + i * stride;
  JSAMPARRAY const array = pointers.data();
  UINT* const filled = &done;
  return trap.run(
      [this, array, wanted, filled] { *filled = jpeg_read_scanlines(&codec, array, wanted); });
}

bool JpegReader::State::readInk(BYTE* target, UINT& done) {
  if (!readSome(inkRow.data(), inkRow.size(), 1, done)) return false;
  const bool grey = picture.format == Gdiplus::PixelFormat8bppIndexed;
  inkToColour(target, inkRow.data(), picture.width, codec.saw_Adobe_marker, grey);
  return true;
}

// A file that ends early still has rows in the decoder: those of the block row in work, and of the
// one before it, which waits for its lower neighbour.
void JpegReader::State::limitRows() {
  if (!trap.dataMissing()) return;
  const UINT blockRow = static_cast<UINT>(codec.max_v_samp_factor) * kBlockRows;
  if (trap.dataEnded()) {
    rowLimit = std::min(rowLimit, codec.output_scanline + 2 * blockRow);
    return;
  }
  if (trap.stoppedForGood())
    rowLimit = std::min(rowLimit, codec.output_scanline + kRowsInBitBuffer + 2 * blockRow);
}

JpegReader::JpegReader() : state_(std::make_unique<State>()) {}
JpegReader::~JpegReader() = default;

const JpegPicture& JpegReader::picture() const {
  return state_->picture;
}

int JpegReader::qualityToKeep() const {
  return qualityNotBelow(state_->codec);
}

GpStatus JpegReader::open(const std::string& fileName, Colour colour) {
  State& state = *state_;
  state.file = std::fopen(fileName.c_str(), "rbe");
  if (state.file == nullptr) {
    return errno == ENOENT || errno == ENOTDIR ? Gdiplus::FileNotFound : Gdiplus::Win32Error;
  }
  const GpStatus header = state.readHeader();
  if (header != Gdiplus::Ok) return header;
  state.chooseOutput(colour);
  state.describe();

  jpeg_progress_mgr progress{};
  progress.progress_monitor = limitScans;
  const bool started = state.trap.run([&state, &progress] {
    state.codec.progress = &progress;
    jpeg_start_decompress(&state.codec);
  });
  state.codec.progress = nullptr;
  if (!started) return state.trap.status();
  // A file in several scans has been read to its end by now; what it lacks shows in its pixels.
  state.trap.forgetDataEnd();
  state.rowLimit = state.picture.height;
  return Gdiplus::Ok;
}

UINT JpegReader::read(BYTE* first, std::size_t stride, UINT rows) {
  State& state = *state_;
  UINT filled = 0;
  while (filled < rows && !state.failed) {
    const UINT left = state.rowLimit - std::min(state.rowLimit, state.codec.output_scanline);
    const UINT wanted = std::min(rows - filled, left);
    if (wanted == 0) break;
    BYTE* const target = first + filled * stride;
    UINT done = 0;
    const bool read = state.inkRow.empty() ? state.readSome(target, stride, wanted, done)
                                           : state.readInk(target, done);
    state.failed = !read || done == 0;
    filled += done;
    state.limitRows();
  }
  return filled;
}

}  // namespace tvrscn::imaging
