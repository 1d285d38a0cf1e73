// Searches in the image stream, and the removal of the block markers in it.
#ifndef TVRSCN_FAMILY_LOWEND_LOWEND_FRAMING_H
#define TVRSCN_FAMILY_LOWEND_LOWEND_FRAMING_H

#include <cstddef>
#include <string_view>

namespace tvrscn {

// Position of the last occurrence, or npos. Quicker than rfind, which compares at each byte.
std::size_t findLast(std::string_view text, std::string_view word);

// Position of the first bytes of a JPEG file; of a TIFF file where there are none; or npos.
std::size_t findImageStart(std::string_view text);

struct Cleaned {
  std::size_t taken;  // bytes that are done with
  std::size_t kept;   // what they have become; it stands at the front
};

// Takes the block markers out of some bytes of a file, in place. What is not taken is at most 17
// bytes at the end that may belong to a marker, to be put in front of the bytes that follow. Takes
// everything when isEnd says that none follow; a marker that is cut short then goes with its start.
Cleaned removeBlockMarkers(char* bytes, std::size_t size, bool isEnd);

}  // namespace tvrscn

#endif  // TVRSCN_FAMILY_LOWEND_LOWEND_FRAMING_H
