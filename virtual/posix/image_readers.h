// The readers behind decodeImageFile. Each gets a file with the signature of its kind and throws
// ImageError with a clause about what is wrong with it.
#ifndef TVRSCN_VIRTUAL_POSIX_IMAGE_READERS_H
#define TVRSCN_VIRTUAL_POSIX_IMAGE_READERS_H

#include <cstdint>
#include <filesystem>
#include <stdexcept>

#include "virtual/common/raster.h"

namespace tvrscn::virtual_device {

class ImageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

Raster readJpeg(const std::filesystem::path& file);
Raster readPng(const std::filesystem::path& file);
Raster readTiff(const std::filesystem::path& file);

// A raster of three channels for an image of that size; throws ImageError for sizes that no scanned
// sheet has.
Raster makeImage(std::uint32_t width, std::uint32_t height);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_POSIX_IMAGE_READERS_H
