// PNG through libpng's simplified interface, which brings every kind of PNG to plain colours and
// lays see-through pixels over a background.
#include <cstdint>
#include <cstring>
#include <string>

#include <png.h>

#include "virtual/posix/image_readers.h"

namespace tvrscn::virtual_device {
namespace {

class PngImage {
 public:
  PngImage() {
    std::memset(&image_, 0, sizeof image_);
    image_.version = PNG_IMAGE_VERSION;
  }
  PngImage(const PngImage&) = delete;
  PngImage& operator=(const PngImage&) = delete;
  ~PngImage() { png_image_free(&image_); }

  png_image* get() { return &image_; }

 private:
  png_image image_;
};

}  // namespace

Raster readPng(const std::filesystem::path& file) {
  PngImage png;
  png_image* image = png.get();
  if (png_image_begin_read_from_file(image, file.c_str()) == 0) throw ImageError(image->message);
  image->format = PNG_FORMAT_RGB;
  Raster raster = makeImage(image->width, image->height);
  const png_color white = {255, 255, 255};
  const auto stride = static_cast<png_int_32>(raster.lineBytes());
  if (png_image_finish_read(image, &white, raster.data.data(), stride, nullptr) == 0) {
    throw ImageError(image->message);
  }
  return raster;
}

}  // namespace tvrscn::virtual_device
