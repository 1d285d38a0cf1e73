// Encodes rows from top to bottom straight into a file.
#ifndef TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_WRITER_H
#define TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_WRITER_H

#include <cstddef>
#include <cstdio>
#include <memory>

#include "platform/posix/imaging/jpeg_picture.h"

struct jpeg_decompress_struct;

namespace tvrscn::imaging {

// The lowest quality, from the default up, whose tables are nowhere coarser than those that the
// file in decoder was made with.
int qualityNotBelow(const jpeg_decompress_struct& decoder);

class JpegWriter {
 public:
  JpegWriter();
  ~JpegWriter();
  JpegWriter(const JpegWriter&) = delete;
  JpegWriter& operator=(const JpegWriter&) = delete;

  // The largest side that the format takes.
  static constexpr UINT kMaxSide = 65500;

  // Begins a baseline JPEG with the resolution rounded to whole dots per inch. The file stays the
  // caller's and has to outlive the writer. False, now or below, when the codec or the file fails.
  [[nodiscard]] bool start(std::FILE* file, const JpegPicture& picture);
  // The next rows in the picture's format, stride bytes apart.
  [[nodiscard]] bool write(const BYTE* first, std::size_t stride, UINT rows);
  // Has to be called after the last row.
  [[nodiscard]] bool finish();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_WRITER_H
