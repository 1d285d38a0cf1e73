// Decodes a JPEG file from top to bottom, rows straight to where the caller wants them.
#ifndef TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_READER_H
#define TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_READER_H

#include <cstddef>
#include <memory>
#include <string>

#include "platform/posix/imaging/jpeg_picture.h"

namespace tvrscn::imaging {

class JpegReader {
 public:
  enum class Colour { kAsStored, kGrey };

  JpegReader();
  ~JpegReader();
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;

  // Reads the header of the file, whose name is in UTF-8. FileNotFound when there is none,
  // UnknownImageFormat when its header cannot be read or it is arithmetically coded. The file stays
  // open for as long as the reader lives; a reader opens one file.
  [[nodiscard]] Gdiplus::GpStatus open(const std::string& fileName, Colour colour);

  // Of the file that was opened; grey is 8bpp, everything else 24bpp. The quality in it is the
  // default one, whatever the file was made with.
  [[nodiscard]] const JpegPicture& picture() const;
  // The lowest quality, not below the default, whose tables are nowhere coarser than the file's.
  [[nodiscard]] int qualityToKeep() const;

  // Decodes the next rows to first, stride bytes apart, and returns how many it filled. Fewer than
  // asked for means that the data have ended; from then on it is 0. Damage within the data gives
  // damaged rows.
  UINT read(BYTE* first, std::size_t stride, UINT rows);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_POSIX_IMAGING_JPEG_READER_H
