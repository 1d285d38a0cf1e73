// Lines are blended first and columns second: a page is made from top to bottom, and a source line
// is touched only by the few output lines near it.
#include "virtual/common/image_scaler.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace tvrscn::virtual_device {

ImageScaler::ImageScaler(const Raster& image, int width, int height)
    : image_(image), columns_(tapsFor(image.width, width)), lines_(tapsFor(image.height, height)) {}

std::vector<ImageScaler::Taps> ImageScaler::tapsFor(int sourceSize, int targetSize) {
  const double scale = static_cast<double>(sourceSize) / targetSize;
  // An output sample covers `scale` source samples; when enlarging, a source sample's width.
  const double reach = std::max(scale, 1.0) / 2;
  std::vector<Taps> result(static_cast<std::size_t>(targetSize));
  for (int target = 0; target < targetSize; ++target) {
    const double centre = (target + 0.5) * scale;
    const int first = std::max(0, static_cast<int>(std::floor(centre - reach)));
    const int last = std::min(sourceSize - 1, static_cast<int>(std::ceil(centre + reach)) - 1);
    Taps& taps = result[static_cast<std::size_t>(target)];
    taps.first = std::min(first, last);
    double sum = 0;
    for (int source = taps.first; source <= last; ++source) {
      const double covered = std::min(source + 1.0, centre + reach) -
                             std::max(static_cast<double>(source), centre - reach);
      taps.weights.push_back(static_cast<float>(std::max(covered, 0.0)));
      sum += std::max(covered, 0.0);
    }
    for (float& weight : taps.weights)
      weight /= static_cast<float>(sum);
  }
  return result;
}

void ImageScaler::render(int firstLine, Raster& band) const {
  std::vector<float> blended(image_.lineBytes());
  for (int y = 0; y < band.height; ++y) {
    const int line = firstLine + y;
    const Taps& lineTaps = lines_[static_cast<std::size_t>(line)];
    std::fill(blended.begin(), blended.end(), 0.0F);
    for (std::size_t tap = 0; tap < lineTaps.weights.size(); ++tap) {
      const std::uint8_t* source = image_.line(lineTaps.first + static_cast<int>(tap));
      const float weight = lineTaps.weights[tap];
      for (std::size_t i = 0; i < blended.size(); ++i) {
        blended[i] += weight * static_cast<float>(source[i]);
      }
    }
    std::uint8_t* out = band.line(y);
    for (const Taps& taps : columns_) {
      float sums[3] = {0.5F, 0.5F, 0.5F};
      const float* in = blended.data() + static_cast<std::size_t>(taps.first) * 3;
      for (const float weight : taps.weights) {
        for (float& sum : sums)
          sum += weight * *in++;
      }
      for (const float sum : sums)
        *out++ = static_cast<std::uint8_t>(std::min(sum, 255.0F));
    }
  }
}

}  // namespace tvrscn::virtual_device
