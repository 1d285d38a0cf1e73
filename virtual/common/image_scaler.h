// Scales an image to a page, band by band: each output pixel is the average of the area that it
// covers when shrinking, and a linear blend of its neighbours when enlarging.
#ifndef TVRSCN_VIRTUAL_COMMON_IMAGE_SCALER_H
#define TVRSCN_VIRTUAL_COMMON_IMAGE_SCALER_H

#include <vector>

#include "virtual/common/raster.h"

namespace tvrscn::virtual_device {

class ImageScaler {
 public:
  // Keeps a reference to image, which has three channels and at least one pixel.
  ImageScaler(const Raster& image, int width, int height);

  void render(int firstLine, Raster& band) const;

 private:
  // The source samples from `first` on that make up one output sample, with weights that add up
  // to 1.
  struct Taps {
    int first = 0;
    std::vector<float> weights;
  };
  static std::vector<Taps> tapsFor(int sourceSize, int targetSize);

  const Raster& image_;
  std::vector<Taps> columns_;
  std::vector<Taps> lines_;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_IMAGE_SCALER_H
