#include "name_pattern.h"

#include <algorithm>
#include <cstddef>

#include "words.h"

namespace tvrscn::cli {
namespace {

constexpr std::size_t kLongestName = 200;
constexpr std::size_t kMostDigits = 9;
constexpr std::size_t kExtensionLength = 4;

bool isDigit(char letter) {
  return letter >= '0' && letter <= '9';
}

// What cannot stand in a file name on one of the systems.
bool isForbidden(char letter) {
  return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F ||
         std::string_view("/\\:*?\"<>|").find(letter) != std::string_view::npos;
}

void dropExtension(std::string& text) {
  for (const char* extension : {".jpg", ".jpeg", ".tif", ".tiff"}) {
    if (lowerCase(text).ends_with(extension)) {
      text.resize(text.size() - std::string_view(extension).size());
      return;
    }
  }
}

// Reads what stands behind a percent sign: "d", "0<width>d". Returns the letters taken, 0 for
// anything else.
std::size_t takeConversion(std::string_view text, int& width) {
  if (text.starts_with("d")) {
    width = 0;
    return 1;
  }
  const bool padded = text.size() >= 3 && text[0] == '0' && text[1] >= '1' && text[1] <= '9';
  if (!padded || text[2] != 'd') return 0;
  width = text[1] - '0';
  return 3;
}

}  // namespace

NamePattern::NamePattern() : prefix_("Image_") {}

std::optional<NamePattern> NamePattern::parse(std::string_view text, std::string& problem) {
  NamePattern pattern;
  std::string part;
  bool numbered = false;
  for (std::size_t index = 0; index < text.size(); ++index) {
    if (text[index] != '%') {
      part += text[index];
      continue;
    }
    std::string_view rest = text.substr(index + 1);
    if (rest.starts_with("%")) {
      part += '%';
      ++index;
      continue;
    }
    const std::size_t taken = takeConversion(rest, pattern.width_);
    if (taken == 0 || numbered) {
      problem = numbered ? "it has more than one number; write %% for a percent sign"
                         : "the number is written %d or %03d; write %% for a percent sign";
      return std::nullopt;
    }
    numbered = true;
    pattern.prefix_.swap(part);
    part.clear();
    index += taken;
  }
  dropExtension(part);
  pattern.suffix_ = part;
  const std::string whole = pattern.prefix_ + pattern.suffix_;
  if (!numbered) {
    problem = "it has no number; write for instance 'page-%03d'";
  } else if (std::any_of(whole.begin(), whole.end(), isForbidden)) {
    problem =
        "a file name cannot hold / \\ : * ? \" < > | or control characters; --out names the folder";
  } else if (pattern.prefix_.starts_with(".")) {
    problem = "a name that begins with a dot is hidden";
  } else if (whole.size() + kExtensionLength > kLongestName) {
    problem = "it is longer than " + std::to_string(kLongestName) + " letters";
  } else {
    return pattern;
  }
  return std::nullopt;
}

std::string NamePattern::fileName(int number, std::string_view extension) const {
  std::string digits = std::to_string(number);
  const auto width = static_cast<std::size_t>(width_);
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  std::string name = prefix_ + digits + suffix_;
  return name.append(extension);
}

int NamePattern::numberOf(std::string_view fileName) const {
  std::string name = lowerCase(fileName);
  if (!name.ends_with(".jpg") && !name.ends_with(".tif")) return 0;
  name.resize(name.size() - kExtensionLength);
  const std::string prefix = lowerCase(prefix_);
  const std::string suffix = lowerCase(suffix_);
  if (name.size() <= prefix.size() + suffix.size()) return 0;
  if (!name.starts_with(prefix) || !name.ends_with(suffix)) return 0;
  const std::string digits =
      name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
  if (digits.size() > kMostDigits || !std::all_of(digits.begin(), digits.end(), isDigit)) return 0;
  return std::stoi(digits);
}

}  // namespace tvrscn::cli
