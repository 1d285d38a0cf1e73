// Page sizes: the media names that the devices know, the names that people use for them, and free
// sizes. Millimetres are whole, as the settings of a job want them.
#ifndef TVRSCN_TOOLS_TVRSCAN_MEDIA_SIZES_H
#define TVRSCN_TOOLS_TVRSCAN_MEDIA_SIZES_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvrscn::cli {

struct MediaSize {
  const char* name;     // as the devices spell it
  std::int32_t width;   // across the scanner; of LEF media, which are fed long edge first, the
  std::int32_t height;  // width is the longer side
  const char* aliases;  // what people say, in lower case, divided by blanks
};

extern const std::array<MediaSize, 47> kMediaSizes;

// The longest side of a free size.
constexpr int kLongestSide = 2000;

// A size as a job takes it.
struct PageSize {
  std::string mediaName;
  std::int32_t width = 0;
  std::int32_t height = 0;
};

// A media name or alias in any case, or WIDTHxHEIGHT with "mm", "cm", "in" or "inch" behind it. A
// free size that one of the media has takes its name, any other the name "Custom".
std::optional<PageSize> parsePageSize(std::string_view text);

// All names and aliases, for suggestions and help.
std::vector<std::string> pageSizeWords();

// The aliases with their sizes, a line each.
std::string pageSizeHelp();

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_MEDIA_SIZES_H
