#include "words.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <utility>

namespace tvrscn::cli {
namespace {

struct Word {
  const char* word;     // in lower case
  const char* setting;  // as the job settings spell it
};

constexpr Word kModes[] = {
    {"color", "FullColor"},     {"gray", "Grayscale"},      {"bw", "BlackAndWhite"},
    {"auto", "Auto"},           {"colour", "FullColor"},    {"grey", "Grayscale"},
    {"fullcolor", "FullColor"}, {"grayscale", "Grayscale"}, {"blackandwhite", "BlackAndWhite"},
};

constexpr Word kSides[] = {
    {"one", "OneSided"},
    {"two", "TwoSided"},
    {"flip", "SecondSideRotation"},
    {"onesided", "OneSided"},
    {"twosided", "TwoSided"},
    {"secondsiderotation", "SecondSideRotation"},
};

constexpr Word kBackgrounds[] = {{"off", "Off"}, {"on", "On"}};

constexpr Word kResolutions[] = {
    {"72", "72x72"},       {"75", "75x75"},        {"100", "100x100"},     {"150", "150x150"},
    {"200", "200x200"},    {"300", "300x300"},     {"400", "400x400"},     {"600", "600x600"},
    {"1200", "1200x1200"}, {"200x100", "200x100"}, {"200x400", "200x400"},
};

std::optional<std::string> settingOf(std::span<const Word> table, std::string_view word) {
  const std::string lower = lowerCase(word);
  for (const Word& row : table) {
    if (lower == row.word) return row.setting;
  }
  return std::nullopt;
}

std::vector<std::string> wordsOf(std::span<const Word> table) {
  std::vector<std::string> words;
  for (const Word& row : table)
    words.emplace_back(row.word);
  return words;
}

// Insertions, removals and replacements of a letter that lead from one text to the other.
std::size_t editDistance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  for (std::size_t column = 0; column < row.size(); ++column)
    row[column] = column;
  std::size_t last = to.size();
  for (std::size_t line = 0; line < from.size(); ++line) {
    std::size_t diagonal = line;
    last = line + 1;
    for (std::size_t column = 0; column < to.size(); ++column) {
      const std::size_t replaced = diagonal + (from[line] == to[column] ? 0U : 1U);
      diagonal = row[column + 1];
      row[column] = last;
      last = std::min({replaced, diagonal + 1, last + 1});
    }
    row[to.size()] = last;
  }
  return last;
}

}  // namespace

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return lower;
}

std::string upperCase(std::string_view text) {
  std::string upper(text);
  for (char& letter : upper) {
    if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
  }
  return upper;
}

std::string printableText(std::string_view text) {
  constexpr std::size_t kLongest = 300;
  constexpr unsigned char kUpperControls = 0xC2;  // with 0x80 to 0x9F behind it, in UTF-8
  const auto byteAt = [&](std::size_t index) {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
  };
  const auto continues = [&](std::size_t index) { return (byteAt(index) & 0xC0) == 0x80; };
  std::string plain;
  std::size_t index = 0;
  for (; index < text.size() && (plain.size() < kLongest || continues(index)); ++index) {
    if (byteAt(index) == kUpperControls && continues(index + 1) && byteAt(index + 1) < 0xA0) {
      plain += ' ';
      ++index;
    } else {
      const bool control = byteAt(index) < 0x20 || byteAt(index) == 0x7F;
      plain += control ? ' ' : text[index];
    }
  }
  return index < text.size() ? plain + "..." : plain;
}

std::optional<std::string> parseMode(std::string_view word) {
  return settingOf(kModes, word);
}
std::optional<std::string> parseSides(std::string_view word) {
  return settingOf(kSides, word);
}
std::optional<std::string> parseBackground(std::string_view word) {
  return settingOf(kBackgrounds, word);
}

std::optional<std::string> parseResolution(std::string_view word) {
  std::string lower = lowerCase(word);
  if (lower.ends_with("dpi")) lower.resize(lower.size() - 3);
  for (const Word& row : kResolutions) {
    if (lower == row.word || lower == row.setting) return row.setting;
  }
  return std::nullopt;
}

std::vector<std::string> modeWords() {
  return wordsOf(kModes);
}
std::vector<std::string> sidesWords() {
  return wordsOf(kSides);
}
std::vector<std::string> backgroundWords() {
  return wordsOf(kBackgrounds);
}
std::vector<std::string> resolutionWords() {
  return wordsOf(kResolutions);
}

std::vector<std::string> nearestWords(std::string_view typed,
                                      const std::vector<std::string>& words) {
  const std::string lower = lowerCase(typed);
  std::vector<std::pair<std::size_t, std::string>> ranked;
  for (const std::string& word : words) {
    const std::size_t distance = editDistance(lower, lowerCase(word));
    // More than half of the letters wrong is no longer a slip of the finger.
    const bool near = distance * 2 <= std::max(lower.size(), word.size());
    if (near) ranked.emplace_back(distance, word);
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& left, const auto& right) { return left.first < right.first; });
  if (ranked.size() > 3) ranked.resize(3);
  std::vector<std::string> nearest;
  nearest.reserve(ranked.size());
  for (auto& [distance, word] : ranked)
    nearest.push_back(std::move(word));
  return nearest;
}

std::string suggestion(std::string_view typed, const std::vector<std::string>& words) {
  const std::vector<std::string> nearest = nearestWords(typed, words);
  if (nearest.empty()) return {};
  std::string text = "did you mean ";
  for (std::size_t index = 0; index < nearest.size(); ++index) {
    if (index > 0) text += index + 1 == nearest.size() ? " or " : ", ";
    text += nearest[index];
  }
  return text + "?";
}

}  // namespace tvrscn::cli
