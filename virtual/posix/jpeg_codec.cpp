// JPEG in both directions. libjpeg reports an error by a call that must not return; it jumps back
// out of the library, over none of our own frames that hold objects with destructors.
#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include <jpeglib.h>
// Its message codes; it needs jpeglib.h before it.
#include <jerror.h>

#include "virtual/common/codec.h"
#include "virtual/posix/image_readers.h"

namespace tvrscn::virtual_device {
namespace {

struct ErrorTrap {
  jpeg_error_mgr manager;  // first, so that libjpeg's pointer to it is one to the trap
  std::jmp_buf back;
  std::array<char, JMSG_LENGTH_MAX> text;
  bool endsEarly;
};

void jumpBack(j_common_ptr codec) {
  auto* trap = static_cast<ErrorTrap*>(codec->client_data);
  trap->manager.format_message(codec, trap->text.data());
  std::longjmp(trap->back, 1);  // NOLINT(cert-err52-cpp): the library's way out
}

// Most damage is small enough to read over, as other programs do; a file that ends early is not.
void noteMessage(j_common_ptr codec, int /*level*/) {
  if (codec->err->msg_code == JWRN_JPEG_EOF) {
    static_cast<ErrorTrap*>(codec->client_data)->endsEarly = true;
  }
}

void setTrap(ErrorTrap& trap) {
  jpeg_std_error(&trap.manager);
  trap.manager.error_exit = jumpBack;
  trap.manager.emit_message = noteMessage;
  trap.text[0] = '\0';
  trap.endsEarly = false;
}

class Decoder {
 public:
  explicit Decoder(std::FILE* file) : file_(file) {
    setTrap(trap_);
    codec_.err = &trap_.manager;
    codec_.client_data = &trap_;
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() { jpeg_destroy_decompress(&codec_); }

  bool readHeader() {
    if (setjmp(trap_.back) != 0) return false;  // NOLINT(cert-err52-cpp): the library's way out
    jpeg_create_decompress(&codec_);
    jpeg_stdio_src(&codec_, file_);
    jpeg_read_header(&codec_, TRUE);
    return true;
  }

  bool readLines(Raster& raster) {
    if (setjmp(trap_.back) != 0) return false;  // NOLINT(cert-err52-cpp): the library's way out
    codec_.out_color_space = JCS_RGB;
    jpeg_start_decompress(&codec_);
    while (codec_.output_scanline < codec_.output_height) {
      JSAMPROW line = raster.line(static_cast<int>(codec_.output_scanline));
      jpeg_read_scanlines(&codec_, &line, 1);
    }
    jpeg_finish_decompress(&codec_);
    return true;
  }

  const jpeg_decompress_struct& codec() const { return codec_; }
  bool endsEarly() const { return trap_.endsEarly; }
  std::string text() const { return trap_.text.data(); }

 private:
  std::FILE* file_;
  ErrorTrap trap_{};
  jpeg_decompress_struct codec_{};
};

class Encoder {
 public:
  Encoder() {
    setTrap(trap_);
    codec_.err = &trap_.manager;
    codec_.client_data = &trap_;
  }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;
  ~Encoder() {
    jpeg_destroy_compress(&codec_);
    std::free(buffer_);
  }

  bool begin(const PictureShape& shape, int quality) {
    if (setjmp(trap_.back) != 0) return false;  // NOLINT(cert-err52-cpp): the library's way out
    jpeg_create_compress(&codec_);
    jpeg_mem_dest(&codec_, &buffer_, &size_);
    codec_.image_width = static_cast<JDIMENSION>(shape.width);
    codec_.image_height = static_cast<JDIMENSION>(shape.height);
    codec_.input_components = shape.channels;
    codec_.in_color_space = shape.channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&codec_);
    jpeg_set_quality(&codec_, quality, TRUE);
    codec_.density_unit = 1;  // dots per inch
    codec_.X_density = static_cast<UINT16>(shape.dotsPerInch);
    codec_.Y_density = static_cast<UINT16>(shape.dotsPerInch);
    jpeg_start_compress(&codec_, TRUE);
    return true;
  }

  bool write(const Raster& band) {
    if (setjmp(trap_.back) != 0) return false;  // NOLINT(cert-err52-cpp): the library's way out
    for (int y = 0; y < band.height; ++y) {
      // The encoder reads lines through a pointer to non-const and leaves them alone.
      auto* line = const_cast<JSAMPROW>(band.line(y));
      jpeg_write_scanlines(&codec_, &line, 1);
    }
    return true;
  }

  bool finish() {
    if (setjmp(trap_.back) != 0) return false;  // NOLINT(cert-err52-cpp): the library's way out
    jpeg_finish_compress(&codec_);
    return true;
  }

  Bytes bytes() const { return {buffer_, buffer_ + size_}; }
  std::string text() const { return trap_.text.data(); }

 private:
  ErrorTrap trap_{};
  jpeg_compress_struct codec_{};
  unsigned char* buffer_ = nullptr;
  unsigned long size_ = 0;
};

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

[[noreturn]] void refuse(const Encoder& encoder) {
  throw std::runtime_error("the page cannot be encoded: " + encoder.text());
}

}  // namespace

Raster readJpeg(const std::filesystem::path& file) {
  const std::unique_ptr<std::FILE, CloseFile> in(std::fopen(file.c_str(), "rb"));
  if (!in) throw ImageError("it cannot be opened");
  Decoder decoder(in.get());
  if (!decoder.readHeader()) throw ImageError(decoder.text());
  const J_COLOR_SPACE space = decoder.codec().jpeg_color_space;
  if (space == JCS_CMYK || space == JCS_YCCK) {
    throw ImageError("it is a JPEG in printing colours (CMYK); save it in RGB");
  }
  Raster raster = makeImage(decoder.codec().image_width, decoder.codec().image_height);
  if (!decoder.readLines(raster)) throw ImageError(decoder.text());
  if (decoder.endsEarly()) throw ImageError("it ends in the middle of the picture");
  return raster;
}

Bytes encodeJpeg(const Raster& raster, int quality, int dotsPerInch) {
  const PictureShape shape = {raster.width, raster.height, raster.channels, dotsPerInch};
  Encoder encoder;
  if (!encoder.begin(shape, quality) || !encoder.write(raster) || !encoder.finish()) {
    refuse(encoder);
  }
  return encoder.bytes();
}

Bytes encodeJpeg(const PictureShape& shape, const LineSource& lines, int quality) {
  Encoder encoder;
  bool isGood = encoder.begin(shape, quality);
  for (int y = 0; isGood && y < shape.height; y += kBandLines) {
    Raster band(shape.width, std::min(kBandLines, shape.height - y), shape.channels);
    lines(y, band);
    isGood = encoder.write(band);
  }
  if (!isGood || !encoder.finish()) refuse(encoder);
  return encoder.bytes();
}

}  // namespace tvrscn::virtual_device
