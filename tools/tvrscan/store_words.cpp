#include <algorithm>
#include <charconv>
#include <iterator>

#include "store_words.h"
#include "words.h"

namespace tvrscn::cli {
namespace {

struct StoreCommand {
  const char* word;
  int code;
  const char* what;
};

constexpr StoreCommand kCommands[] = {
    {"scan", 0, "a whole scan, into files at the root of the current drive"},
    {"cancel", 1, "cancel: INITIALIZE, then RELEASE UNIT"},
    {"initialize", 7, "INITIALIZE"},
    {"inquiry", 18, "INQUIRY"},
    {"reserve", 22, "RESERVE UNIT"},
    {"release", 23, "RELEASE UNIT"},
    {"start", 27, "SCAN"},
    {"window", 36, "SET WINDOW, with the settings of the file"},
    {"read", 40, "READ"},
    {"mode-select", 85, "MODE SELECT, with the settings of the file"},
    {"mode-sense", 90, "MODE SENSE, for both mode pages"},
    {"ready", 193, "TEST UNIT READY"},
    {"block-header", 194, "READ BLOCK HEADER"},
    {"wake-up", 195, "wake-up"},
};

std::optional<int> numberOf(std::string_view word) {
  constexpr int kHexadecimal = 16;
  constexpr int kDecimal = 10;
  const bool isHex = word.starts_with("0x");
  if (isHex) word.remove_prefix(2);
  int number = 0;
  const char* const end = word.data() + word.size();
  const auto [stop, error] =
      std::from_chars(word.data(), end, number, isHex ? kHexadecimal : kDecimal);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

}  // namespace

std::optional<int> parseStoreCommand(std::string_view word) {
  const std::string lower = lowerCase(word);
  const std::optional<int> number = numberOf(lower);
  for (const StoreCommand& row : kCommands) {
    if (lower == row.word || number == row.code) return row.code;
  }
  return std::nullopt;
}

std::vector<std::string> storeCommandWords() {
  std::vector<std::string> words;
  std::transform(std::begin(kCommands), std::end(kCommands), std::back_inserter(words),
                 [](const StoreCommand& row) { return row.word; });
  return words;
}

std::string storeCommandHelp() {
  constexpr std::size_t kCodeColumn = 16;
  constexpr std::size_t kWhatColumn = 22;
  std::string text;
  for (const StoreCommand& row : kCommands) {
    std::string line = std::string("  ") + row.word;
    line.resize(kCodeColumn, ' ');
    line += std::to_string(row.code);
    line.resize(kWhatColumn, ' ');
    text += line + row.what + "\n";
  }
  return text;
}

}  // namespace tvrscn::cli
