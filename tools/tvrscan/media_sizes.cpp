#include "media_sizes.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "words.h"

namespace tvrscn::cli {

// Inches are rounded to the nearest millimetre. "Auto" and "Mixed" leave the size to the device; A4
// is the window for those devices that want one all the same.
const std::array<MediaSize, 47> kMediaSizes = {{
    {"Auto", 210, 297, "auto"},
    {"Mixed", 210, 297, "mixed"},
    {"NA_8.5x11LEF", 279, 216, "letter-lef 8.5x11-lef"},
    {"NA_8.5x11SEF", 216, 279, "letter 8.5x11"},
    {"NA_8.5x14SEF", 216, 356, "legal 8.5x14"},
    {"NA_5.5x8.5LEF", 216, 140, "statement-lef 5.5x8.5-lef"},
    {"NA_5.5x8.5SEF", 140, 216, "statement invoice 5.5x8.5"},
    {"NA_8.5x13SEF", 216, 330, "folio 8.5x13"},
    {"NA_8.5x13.4SEF", 216, 340, "oficio 8.5x13.4"},
    {"NA_11x17SEF", 279, 432, "ledger tabloid 11x17"},
    {"ISO_A5LEF", 210, 148, "a5-lef"},
    {"ISO_A5SEF", 148, 210, "a5"},
    {"ISO_A4LEF", 297, 210, "a4-lef"},
    {"ISO_A4SEF", 210, 297, "a4"},
    {"ISO_A3SEF", 297, 420, "a3"},
    {"ISO_B5SEF", 176, 250, "b5 iso-b5"},
    {"ISO_B5LEF", 250, 176, "b5-lef iso-b5-lef"},
    {"ISO_B4SEF", 250, 353, "b4 iso-b4"},
    {"JIS_B6SEF", 128, 182, "jisb6 jis-b6"},
    {"JIS_B6LEF", 182, 128, "jisb6-lef jis-b6-lef"},
    {"JIS_B5LEF", 257, 182, "jisb5-lef jis-b5-lef"},
    {"JIS_B5SEF", 182, 257, "jisb5 jis-b5"},
    {"JIS_B4SEF", 257, 364, "jisb4 jis-b4"},
    {"NA_7.25x10.5LEF", 267, 184, "executive-lef 7.25x10.5-lef"},
    {"NA_7.25x10.5SEF", 184, 267, "executive 7.25x10.5"},
    {"NA_5.5x7LEF", 178, 140, "5.5x7-lef"},
    {"NA_5.5x7SEF", 140, 178, "5.5x7"},
    {"NA_5x7SEF", 127, 178, "5x7"},
    {"NA_6x9SEF", 152, 229, "6x9"},
    {"ISO_A6SEF", 105, 148, "a6"},
    {"ISO_C6_ENVELOPE_C6", 114, 162, "c6"},
    {"ISO_C5_ENVELOPE_C5", 162, 229, "c5"},
    {"NA-3.875X7.5-ENVELOPE-MONARCH", 98, 191, "monarch"},
    {"NA-NUMBER-10-ENVELOPE", 105, 241, "number10 com10"},
    {"ISO-DESIGNATED-LONG-ENVELOPE-DL", 110, 220, "dl"},
    {"NA_8x10LEF", 254, 203, "8x10-lef"},
    {"NA_8x10SEF", 203, 254, "8x10"},
    {"NA_215x315SEF", 215, 315, "215x315"},
    {"NA_9x11SEF", 229, 279, "9x11"},
    {"NA_11x15SEF", 279, 381, "11x15"},
    {"NA_3.5x5.5SEF", 89, 140, "3.5x5.5"},
    {"NA_4x6LEF", 152, 102, "4x6-lef"},
    {"NA_4x6SEF", 102, 152, "4x6"},
    {"NA_4.25x5.5SEF", 108, 140, "4.25x5.5"},
    {"NA_216x343SEF", 216, 343, "216x343"},
    {"CN_270x390SEF", 270, 390, "270x390 8k"},
    {"CN_195x270LEF", 270, 195, "195x270-lef 16k-lef"},
}};

namespace {

constexpr double kMillimetresPerInch = 25.4;

bool hasAlias(const MediaSize& size, const std::string& word) {
  std::istringstream aliases(size.aliases);
  for (std::string alias; aliases >> alias;) {
    if (alias == word) return true;
  }
  return false;
}

// Millimetres in one of the unit at the end of text, which is cut off; 0 without a unit.
double takeUnit(std::string& text) {
  struct Unit {
    const char* name;
    double millimetres;
  };
  static constexpr Unit kUnits[] = {
      {"mm", 1.0}, {"cm", 10.0}, {"inch", kMillimetresPerInch}, {"in", kMillimetresPerInch}};
  for (const Unit& unit : kUnits) {
    if (!text.ends_with(unit.name)) continue;
    text.resize(text.size() - std::string_view(unit.name).size());
    return unit.millimetres;
  }
  return 0;
}

// A positive decimal number without sign, exponent or blanks.
std::optional<double> parseDecimal(const std::string& text) {
  if (text.empty() || text.size() > 9) return std::nullopt;
  if (text.find_first_not_of("0123456789.") != std::string::npos) return std::nullopt;
  if (std::count(text.begin(), text.end(), '.') > 1 || text == ".") return std::nullopt;
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  double value = 0;
  stream >> value;
  return stream.fail() ? std::nullopt : std::optional<double>(value);
}

std::optional<PageSize> parseFreeSize(std::string text) {
  const double unit = takeUnit(text);
  const std::size_t cross = text.find('x');
  if (unit <= 0 || cross == std::string::npos) return std::nullopt;
  const std::optional<double> width = parseDecimal(text.substr(0, cross));
  const std::optional<double> height = parseDecimal(text.substr(cross + 1));
  if (!width || !height) return std::nullopt;
  const double wide = std::round(*width * unit);
  const double high = std::round(*height * unit);
  if (wide < 1 || high < 1 || wide > kLongestSide || high > kLongestSide) return std::nullopt;
  PageSize size{"Custom", static_cast<std::int32_t>(wide), static_cast<std::int32_t>(high)};
  for (const MediaSize& media : kMediaSizes) {
    const bool leftToDevice = &media == &kMediaSizes[0] || &media == &kMediaSizes[1];
    if (!leftToDevice && media.width == size.width && media.height == size.height) {
      size.mediaName = media.name;
      break;
    }
  }
  return size;
}

}  // namespace

std::optional<PageSize> parsePageSize(std::string_view text) {
  const std::string word = lowerCase(text);
  for (const MediaSize& media : kMediaSizes) {
    if (lowerCase(media.name) == word || hasAlias(media, word)) {
      return PageSize{media.name, media.width, media.height};
    }
  }
  return parseFreeSize(word);
}

std::vector<std::string> pageSizeWords() {
  std::vector<std::string> words;
  for (const MediaSize& media : kMediaSizes) {
    std::istringstream aliases(media.aliases);
    for (std::string alias; aliases >> alias;)
      words.push_back(alias);
    words.emplace_back(media.name);
  }
  return words;
}

std::string pageSizeHelp() {
  std::string text;
  for (const MediaSize& media : kMediaSizes) {
    std::string line = "  ";
    line += media.aliases;
    if (line.size() < 32) line.resize(32, ' ');
    line += ' ' + std::to_string(media.width) + " x " + std::to_string(media.height) + " mm";
    if (line.size() < 48) line.resize(48, ' ');
    text += line + media.name + "\n";
  }
  return text;
}

}  // namespace tvrscn::cli
