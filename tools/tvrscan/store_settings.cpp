#include "store_settings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <iterator>

#include "words.h"

namespace tvrscn::cli {
namespace {

constexpr std::size_t kFieldCount = 12;
constexpr std::size_t kLongestLine = 511;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// A field is a word of a list, a number of a range, or a text that suits a test.
struct Field {
  const char* name;
  const char* allowed;  // behind "write "
  std::array<const char*, 7> words;
  int least;
  int most;
  bool (*suits)(std::string_view text);
};

// Any text but "Off" is on: a misspelt one would be on without a word.
bool isBackground(std::string_view text) {
  return text == "Off" || lowerCase(text) != "off";
}

// The search compares with ids in upper case.
bool isHardwareId(std::string_view text) {
  return upperCase(text) == text;
}

bool isAnything(std::string_view /*text*/) {
  return true;
}

constexpr Field wordField(const char* name, const char* allowed,
                          const std::array<const char*, 7>& words) {
  return {name, allowed, words, 0, 0, nullptr};
}
constexpr Field numberField(const char* name, const char* allowed, int least, int most) {
  return {name, allowed, {}, least, most, nullptr};
}
constexpr Field textField(const char* name, const char* allowed, bool (*suits)(std::string_view)) {
  return {name, allowed, {}, 0, 0, suits};
}

// clang-format off
constexpr Field kFields[kFieldCount] = {
    wordField("colour", "FullColor, Grayscale or BlackAndWhite",
              {"FullColor", "Grayscale", "BlackAndWhite"}),
    wordField("resolution", "75x75, 100x100, 150x150, 200x200, 300x300, 400x400 or 600x600",
              {"75x75", "100x100", "150x150", "200x200", "300x300", "400x400", "600x600"}),
    wordField("sides", "OneSided, TwoSided or SecondSideRotation",
              {"OneSided", "TwoSided", "SecondSideRotation"}),
    numberField("width", "whole millimetres from 1 to 2000", 1, 2000),
    numberField("height", "whole millimetres from 1 to 2000", 1, 2000),
    numberField("paper source", "0 for the flatbed or 1 for the feeder", 0, 1),
    numberField("brightness", "a whole number from -1020 (white) to 1020 (black)", -1020, 1020),
    numberField("contrast", "a whole number from -400 (flat grey) to 400 (hardest)", -400, 400),
    textField("background removal", "Off, or On", isBackground),
    numberField("page limit", "1 for one page, or 0 for all", 0, 9999),
    textField("hardware id", "it in upper case, as tvrscan devices does", isHardwareId),
    textField("media", "a name such as ISO_A4SEF", isAnything),
};
// clang-format on

std::string_view firstLine(std::string_view content) {
  std::string_view line = content.substr(0, content.find('\n'));
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

// Commas in succession are one separator. What stands behind the twelfth field is not looked at.
std::vector<std::string_view> fieldsOf(std::string_view line) {
  std::vector<std::string_view> fields;
  std::size_t at = line.find_first_not_of(',');
  while (at != std::string_view::npos && fields.size() < kFieldCount) {
    const std::size_t end = std::min(line.find(',', at), line.size());
    fields.push_back(line.substr(at, end - at));
    at = line.find_first_not_of(',', end);
  }
  return fields;
}

bool isNumber(std::string_view text, int least, int most) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end && number >= least && number <= most;
}

bool isGood(const Field& field, std::string_view text) {
  if (field.suits != nullptr) return field.suits(text);
  if (field.words[0] == nullptr) return isNumber(text, field.least, field.most);
  return std::any_of(field.words.begin(), field.words.end(),
                     [text](const char* word) { return word != nullptr && text == word; });
}

std::string nameOf(std::size_t index) {
  return "field " + std::to_string(index + 1) + " (" + kFields[index].name + ")";
}

// What is wrong with the line as a whole, so that its fields mean nothing.
std::string lineProblem(std::string_view content) {
  const std::string_view line = firstLine(content);
  if (content.starts_with(kByteOrderMark))
    return "there is a byte order mark in front of the line; save the file without one";
  if (line.find('\0') != std::string_view::npos)
    return "the line has a zero byte; save the file as plain text, not as UTF-16";
  if (line.empty()) return "the first line is empty; write the twelve fields there";
  if (line.size() > kLongestLine) {
    return "the line has " + std::to_string(line.size()) +
           " characters and is cut behind 511; shorten it";
  }
  if (line.starts_with(',') || line.find(",,") != std::string_view::npos)
    return "a field is empty, and those behind it would move up; write all twelve";
  return {};
}

}  // namespace

std::vector<std::string> settingsProblems(std::string_view content) {
  if (const std::string problem = lineProblem(content); !problem.empty()) return {problem};
  const std::vector<std::string_view> fields = fieldsOf(firstLine(content));
  std::vector<std::string> problems;
  for (std::size_t index = 0; index < fields.size(); ++index) {
    if (isGood(kFields[index], fields[index])) continue;
    problems.push_back(nameOf(index) + " is '" + printableText(fields[index]) + "'; write " +
                       kFields[index].allowed);
  }
  for (std::size_t index = fields.size(); index < kFieldCount; ++index)
    problems.push_back(nameOf(index) + " is missing; write " + kFields[index].allowed);
  return problems;
}

std::string settingsHardwareId(std::string_view content) {
  constexpr std::size_t kHardwareId = 10;
  const std::vector<std::string_view> fields = fieldsOf(firstLine(content));
  return fields.size() > kHardwareId ? std::string(fields[kHardwareId]) : std::string();
}

std::string settingsTemplate(const std::string& hardwareId) {
  return "FullColor,300x300,OneSided,210,297,0,0,0,Off,0," + hardwareId + ",ISO_A4SEF";
}

}  // namespace tvrscn::cli
