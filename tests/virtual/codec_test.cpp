// The encoder that takes a page band by band.
#include "virtual/common/codec.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace tvrscn::virtual_device {
namespace {

TEST(Codec, APageEncodedBandByBandIsTheWholePage) {
  for (const int channels : {1, 3}) {
    for (const int height : {1, kBandLines, kBandLines + 1, 3 * kBandLines - 1}) {
      Raster whole(33, height, channels);
      for (std::size_t i = 0; i < whole.data.size(); ++i)
        whole.data[i] = static_cast<std::uint8_t>(i * 7 % 256);
      std::vector<int> firstLines;
      const Bytes jpeg = encodeJpeg(
          {33, height, channels, 150},
          [&](int firstLine, Raster& band) {
            firstLines.push_back(firstLine);
            std::copy_n(whole.line(firstLine), band.data.size(), band.data.begin());
          },
          80);
      EXPECT_EQ(jpeg, encodeJpeg(whole, 80, 150));
      EXPECT_EQ(firstLines.size(),
                static_cast<std::size_t>((height + kBandLines - 1) / kBandLines));
    }
  }
}

TEST(Codec, APageThatIsTooTallIsRefused) {
  EXPECT_THROW(encodeJpeg(
                   {1, 65501, 1, 75}, [](int, Raster&) {}, 80),
               std::runtime_error);
}

}  // namespace
}  // namespace tvrscn::virtual_device
