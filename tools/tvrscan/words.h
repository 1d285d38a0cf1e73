// The words that people give on the command line, and the texts of the job settings they stand for.
#ifndef TVRSCN_TOOLS_TVRSCAN_WORDS_H
#define TVRSCN_TOOLS_TVRSCAN_WORDS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvrscn::cli {

// ASCII letters only; anything else stays.
std::string lowerCase(std::string_view text);
std::string upperCase(std::string_view text);

// Each gives the settings' text for a word in any case, or nothing.
std::optional<std::string> parseMode(std::string_view word);   // "gray" -> "Grayscale"
std::optional<std::string> parseSides(std::string_view word);  // "flip" -> "SecondSideRotation"
std::optional<std::string> parseBackground(std::string_view word);  // "off" -> "Off"
std::optional<std::string> parseResolution(std::string_view word);  // "300" -> "300x300"

std::vector<std::string> modeWords();
std::vector<std::string> sidesWords();
std::vector<std::string> backgroundWords();
std::vector<std::string> resolutionWords();

// Text of a device as one line that no terminal obeys: control characters become blanks, and what
// is very long is cut.
std::string printableText(std::string_view text);

// Up to three of the words that come nearest to what was typed, nearest first; none when nothing is
// near.
std::vector<std::string> nearestWords(std::string_view typed,
                                      const std::vector<std::string>& words);

// "did you mean a4, a5 or a6?", or an empty text.
std::string suggestion(std::string_view typed, const std::vector<std::string>& words);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_WORDS_H
