// Image files of people in, JPEG strips and pages for hosts out. One implementation per system.
#ifndef TVRSCN_VIRTUAL_COMMON_CODEC_H
#define TVRSCN_VIRTUAL_COMMON_CODEC_H

#include <filesystem>
#include <functional>

#include "virtual/common/bytes.h"
#include "virtual/common/raster.h"

namespace tvrscn::virtual_device {

// The picture of a JPEG, PNG or TIFF file (its first page) in three channels, see-through parts
// over white. Throws std::runtime_error, naming the file and what to do, when it is none of these
// or is damaged.
Raster decodeImageFile(const std::filesystem::path& file);

// A complete JPEG stream of a raster of one or three channels, with that resolution in its JFIF
// header. Throws std::runtime_error when the encoder refuses.
Bytes encodeJpeg(const Raster& raster, int quality, int dotsPerInch);

struct PictureShape {
  int width = 0;   // pixels
  int height = 0;  // pixels
  int channels = 3;
  int dotsPerInch = 0;
};

// Fills the band with the lines of a picture from firstLine on.
using LineSource = std::function<void(int firstLine, Raster& band)>;

// Lines in a band, but for the last one.
inline constexpr int kBandLines = 64;

// The same of a picture that never stands in memory as a whole: its lines are asked for band by
// band, from the top.
Bytes encodeJpeg(const PictureShape& shape, const LineSource& lines, int quality);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_CODEC_H
