// Pixels of a page or a band of it: 8 bits a channel, lines without padding, top line first.
#ifndef TVRSCN_VIRTUAL_COMMON_RASTER_H
#define TVRSCN_VIRTUAL_COMMON_RASTER_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tvrscn::virtual_device {

struct Rgb {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
};

struct Raster {
  Raster() = default;
  // REQUIRES: width and height at least 0; channels 1 (grey) or 3 (red, green, blue).
  Raster(int widthInPixels, int heightInPixels, int channelCount)
      : width(widthInPixels), height(heightInPixels), channels(channelCount) {
    data.resize(lineBytes() * static_cast<std::size_t>(height));
  }

  std::size_t lineBytes() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels);
  }
  std::uint8_t* line(int y) { return data.data() + lineBytes() * static_cast<std::size_t>(y); }
  const std::uint8_t* line(int y) const {
    return data.data() + lineBytes() * static_cast<std::size_t>(y);
  }

  int width = 0;
  int height = 0;
  int channels = 3;
  std::vector<std::uint8_t> data;
};

// The brightness of a raster of three channels, as the eye weighs them.
Raster toGray(const Raster& color);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_RASTER_H
