// Names of page files: a text with one running number in it.
#ifndef TVRSCN_TOOLS_TVRSCAN_NAME_PATTERN_H
#define TVRSCN_TOOLS_TVRSCAN_NAME_PATTERN_H

#include <optional>
#include <string>
#include <string_view>

namespace tvrscn::cli {

// "page-%03d": exactly one %d or %0<width>d; %% is a percent sign. The extension is added to each
// name; one that the pattern has (.jpg, .jpeg, .tif, .tiff, any case) gives way to it.
class NamePattern {
 public:
  // The pattern of the library's own names, "Image_%d".
  NamePattern();

  // Nothing, with the reason in problem, for a text that is no pattern, or whose names would not be
  // plain file names on every system.
  static std::optional<NamePattern> parse(std::string_view text, std::string& problem);

  std::string fileName(int number, std::string_view extension) const;

  // The number in a name of this pattern with the extension of a page, .jpg or .tif (letters in any
  // case), or 0.
  int numberOf(std::string_view fileName) const;

 private:
  std::string prefix_;
  std::string suffix_;  // without the extension
  int width_ = 0;       // filled up with zeros
};

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_NAME_PATTERN_H
