#include "virtual/common/raster.h"

namespace tvrscn::virtual_device {

Raster toGray(const Raster& color) {
  Raster gray(color.width, color.height, 1);
  const std::uint8_t* in = color.data.data();
  for (std::uint8_t& out : gray.data) {
    out = static_cast<std::uint8_t>((in[0] * 299 + in[1] * 587 + in[2] * 114 + 500) / 1000);
    in += 3;
  }
  return gray;
}

}  // namespace tvrscn::virtual_device
