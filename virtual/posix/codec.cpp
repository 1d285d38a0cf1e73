// Files are told apart by their first bytes, whatever their names say.
#include "virtual/common/codec.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "virtual/posix/image_readers.h"

namespace tvrscn::virtual_device {
namespace {

using std::string_view_literals::operator""sv;

struct Kind {
  std::string_view signature;
  Raster (*read)(const std::filesystem::path& file);
};

constexpr Kind kKinds[] = {
    {"\xFF\xD8\xFF"sv, readJpeg},
    {"\x89PNG\r\n\x1A\n"sv, readPng},
    {"II*\0"sv, readTiff},
    {"MM\0*"sv, readTiff},
};

constexpr std::uint32_t kMostPixelsPerSide = 65500;
constexpr std::uint64_t kMostPixels = 500'000'000;

std::string firstBytes(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::array<char, 8> bytes{};
  in.read(bytes.data(), bytes.size());
  if (in.gcount() == 0) throw ImageError("it cannot be read, or is empty");
  return {bytes.data(), static_cast<std::size_t>(in.gcount())};
}

Raster decode(const std::filesystem::path& file) {
  const std::string start = firstBytes(file);
  for (const Kind& kind : kKinds) {
    if (std::string_view(start).substr(0, kind.signature.size()) == kind.signature) {
      return kind.read(file);
    }
  }
  throw ImageError("it is none of JPEG, PNG and TIFF");
}

}  // namespace

Raster decodeImageFile(const std::filesystem::path& file) {
  try {
    return decode(file);
  } catch (const ImageError& error) {
    throw std::runtime_error("cannot use the page image " + file.string() + ": " + error.what() +
                             "; name a readable JPEG, PNG or TIFF file");
  }
}

Raster makeImage(std::uint32_t width, std::uint32_t height) {
  if (width == 0 || height == 0 || width > kMostPixelsPerSide || height > kMostPixelsPerSide ||
      std::uint64_t{width} * height > kMostPixels) {
    throw ImageError("its size of " + std::to_string(width) + " x " + std::to_string(height) +
                     " pixels is out of range");
  }
  return {static_cast<int>(width), static_cast<int>(height), 3};
}

}  // namespace tvrscn::virtual_device
