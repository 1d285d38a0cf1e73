// A black-and-white TIFF file of one or more pages, made from its front to its end: each page can
// go out before the next one is scanned. Little-endian, one strip a page, black is 1.
#ifndef TVRSCN_VIRTUAL_COMMON_TIFF_WRITER_H
#define TVRSCN_VIRTUAL_COMMON_TIFF_WRITER_H

#include <cstdint>

#include "virtual/common/bytes.h"
#include "virtual/common/codec.h"

namespace tvrscn::virtual_device {

enum class TiffCompression : std::uint16_t { kNone = 1, kGroup4 = 4 };

class TiffWriter {
 public:
  // Of so many pages, at least one.
  TiffWriter(int pages, TiffCompression compression);

  // The bytes that the next page adds to the file. `lines` gives one channel of grey; what is
  // darker than mid grey is black. REQUIRES: shape.channels is 1, and a page is left.
  Bytes nextPage(const PictureShape& shape, const LineSource& lines);

 private:
  int pages_;
  TiffCompression compression_;
  int pagesDone_ = 0;
  std::uint32_t size_ = 0;  // of the file so far
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_TIFF_WRITER_H
