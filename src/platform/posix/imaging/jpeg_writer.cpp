// The encoder keeps a few rows and a small output buffer; no copy of the page is made on its way.
#include "platform/posix/imaging/jpeg_writer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "platform/posix/imaging/jpeg_trap.h"

namespace tvrscn::imaging {
namespace {

using Gdiplus::REAL;

constexpr UINT kRowsAtOnce = 16;
constexpr int kColourChannels = 3;
constexpr int kTables = 2;  // luma and chroma

std::uint16_t wholeDpi(REAL dpi) {
  return static_cast<std::uint16_t>(std::lround(std::clamp(dpi, REAL{1}, REAL{65535})));
}

bool nowhereCoarser(const JQUANT_TBL& made, const JQUANT_TBL& given) {
  return std::equal(std::begin(made.quantval), std::end(made.quantval), std::begin(given.quantval),
                    [](UINT16 ours, UINT16 theirs) { return ours <= theirs; });
}

// Whether an encoder set to a quality keeps at least what the decoder's file holds.
bool keeps(const jpeg_compress_struct& encoder, const jpeg_decompress_struct& decoder) {
  for (int i = 0; i < decoder.num_components; ++i) {
    const int number = decoder.comp_info[i].quant_tbl_no;
    if (number < 0 || number >= NUM_QUANT_TBLS) continue;
    const JQUANT_TBL* const given = decoder.quant_tbl_ptrs[number];
    const JQUANT_TBL* const made = encoder.quant_tbl_ptrs[i == 0 ? 0 : kTables - 1];
    if (given != nullptr && made != nullptr && !nowhereCoarser(*made, *given)) return false;
  }
  return true;
}

}  // namespace

int qualityNotBelow(const jpeg_decompress_struct& decoder) {
  jpeg_compress_struct encoder{};
  JpegTrap trap;
  trap.install(encoder);
  int quality = kDefaultJpegQuality;
  int* const found = &quality;
  const bool worked = trap.run([&encoder, &decoder, found] {
    jpeg_create_compress(&encoder);
    for (; *found < kMaxJpegQuality; ++*found) {
      jpeg_set_quality(&encoder, *found, TRUE);
      if (keeps(encoder, decoder)) return;
    }
  });
  jpeg_destroy_compress(&encoder);
  return worked ? quality : kMaxJpegQuality;
}

struct JpegWriter::State {
  ~State() { jpeg_destroy_compress(&codec); }

  void configure(const JpegPicture& picture);

  jpeg_compress_struct codec{};
  JpegTrap trap;
};

void JpegWriter::State::configure(const JpegPicture& picture) {
  const bool grey = picture.format == Gdiplus::PixelFormat8bppIndexed;
  codec.image_width = picture.width;
  codec.image_height = picture.height;
  codec.input_components = grey ? 1 : kColourChannels;
  codec.in_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
  jpeg_set_defaults(&codec);
  jpeg_set_quality(&codec, picture.quality, TRUE);
  codec.density_unit = 1;
  codec.X_density = wholeDpi(picture.xDpi);
  codec.Y_density = wholeDpi(picture.yDpi);
  if (grey) return;
  codec.comp_info[0].h_samp_factor = picture.lumaAcross;
  codec.comp_info[0].v_samp_factor = picture.lumaDown;
}

JpegWriter::JpegWriter() : state_(std::make_unique<State>()) {}
JpegWriter::~JpegWriter() = default;

bool JpegWriter::start(std::FILE* file, const JpegPicture& picture) {
  State& state = *state_;
  state.trap.install(state.codec);
  return state.trap.run([&state, file, &picture] {
    jpeg_create_compress(&state.codec);
    jpeg_stdio_dest(&state.codec, file);
    state.configure(picture);
    jpeg_start_compress(&state.codec, TRUE);
  });
}

bool JpegWriter::write(const BYTE* first, std::size_t stride, UINT rows) {
  State& state = *state_;
  std::array<JSAMPROW, kRowsAtOnce> pointers{};
  for (UINT done = 0; done < rows;) {
    const UINT wanted = std::min(rows - done, kRowsAtOnce);
    // The codec's interface leaves out a const: it only reads these rows.
    for (UINT i = 0; i < wanted; ++i)
      pointers[i] = const_cast<BYTE*>(first + static_cast<std::size_t>(done + i) * stride);
    JSAMPARRAY const array = pointers.data();
    const bool written = state.trap.run([&state, array, wanted] {
      static_cast<void>(jpeg_write_scanlines(&state.codec, array, wanted));
    });
    if (!written) return false;
    done += wanted;
  }
  return true;
}

bool JpegWriter::finish() {
  State& state = *state_;
  return state.trap.run([&state] { jpeg_finish_compress(&state.codec); });
}

}  // namespace tvrscn::imaging
