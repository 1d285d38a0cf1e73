// Searches in the image stream, and the removal of the block markers in it.
#ifndef TVRSCN_FAMILY_LOWEND_LOWEND_FRAMING_H
#define TVRSCN_FAMILY_LOWEND_LOWEND_FRAMING_H

#include <cstddef>
#include <string>
#include <string_view>

namespace tvrscn {

// Position of the last occurrence, or npos. Quicker than rfind, which compares at each byte.
std::size_t findLast(std::string_view text, std::string_view word);

// Position of the first bytes of a JPEG file; of a TIFF file where there are none; or npos.
std::size_t findImageStart(std::string_view text);

// Takes the block markers out of the bytes of one file, in whatever pieces these come.
class BlockMarkerFilter {
 public:
  // The image data at the front of bytes, up to the next marker; bytes loses it and whatever has
  // been looked at. Empty only when bytes has become empty. Letters that may begin a marker are
  // kept back until it is known whether they do.
  std::string_view next(std::string_view& bytes);

  // What was kept back, once the file has ended. The next bytes are those of another file.
  std::string_view finish();

 private:
  std::string_view takePlain(std::string_view& bytes);
  void skipMarker();

  std::size_t held_ = 0;  // letters of the marker's word that the last bytes ended with
  std::size_t skip_ = 0;  // bytes of a marker that are still to come
};

// The file that a cleaning goes through, in the folder of the images, as the cleaning reaches it:
// by the low byte of each character.
std::string workFileName(const std::wstring& imageFolder);

}  // namespace tvrscn

#endif  // TVRSCN_FAMILY_LOWEND_LOWEND_FRAMING_H
