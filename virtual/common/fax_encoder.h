// Black-and-white lines into the two-dimensional fax code that TIFF files call Group 4 (T.6): each
// line is told by how its edges differ from those of the line above.
#ifndef TVRSCN_VIRTUAL_COMMON_FAX_ENCODER_H
#define TVRSCN_VIRTUAL_COMMON_FAX_ENCODER_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "virtual/common/bytes.h"

namespace tvrscn::virtual_device {

class FaxEncoder {
 public:
  explicit FaxEncoder(int width);

  // `black` has one byte a pixel, not 0 where it is black.
  void addLine(const std::uint8_t* black);
  // The whole code with its end mark. The encoder is of no more use then.
  Bytes finish();

 private:
  void put(std::string_view code);
  void putRun(int length, bool isBlack);
  std::size_t edgeAbove(int at, bool isBlack, std::size_t before) const;

  int width_;
  std::vector<int> above_;  // edges of the line before
  Bytes bytes_;
  int freeBits_ = 0;  // of the last byte
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_FAX_ENCODER_H
