// Glyphs are written on a grid with the baseline at 0, capitals 7 high, small letters 5, and tails
// down to -2. A glyph is a list of strokes, separated by ';'. A stroke is a list of stations,
// separated by blanks: a point "x,y", or a piece of an ellipse "@x,y,rx,ry,from,to" around x,y,
// with angles in degrees, counter-clockwise from the right.
#include "virtual/common/stroke_font.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <string>

namespace tvrscn::virtual_device {
namespace {

struct GlyphSource {
  char character;
  double width;
  std::string_view strokes;
};

// clang-format off
constexpr GlyphSource kGlyphs[] = {
    {' ', 2.0, ""},
    {'A', 5.2, "0,0 2.6,7 5.2,0;0.9,2.4 4.3,2.4"},
    {'B', 4.6, "0,0 0,7 2.5,7 @2.5,5.3,1.7,1.7,90,-90 0,3.6;2.5,3.6 @2.7,1.8,1.9,1.8,90,-90 0,0"},
    {'C', 4.7, "@2.8,3.5,2.8,3.5,48,312"},
    {'D', 5.0, "0,0 0,7 1.9,7 @1.9,3.5,3.1,3.5,90,-90 0,0"},
    {'E', 4.1, "4.1,7 0,7 0,0 4.1,0;0,3.6 3.5,3.6"},
    {'F', 4.0, "4,7 0,7 0,0;0,3.6 3.3,3.6"},
    {'G', 5.4, "@2.8,3.5,2.8,3.5,48,348 5.4,3.3 3.2,3.3"},
    {'H', 5.0, "0,0 0,7;5,0 5,7;0,3.6 5,3.6"},
    {'I', 0.4, "0.2,0 0.2,7"},
    {'J', 3.4, "3.4,7 3.4,1.8 @1.7,1.8,1.7,1.8,0,-170"},
    {'K', 4.7, "0,0 0,7;4.4,7 0,2.6;1.6,4.2 4.7,0"},
    {'L', 3.8, "0,7 0,0 3.8,0"},
    {'M', 6.0, "0,0 0,7 3,2.2 6,7 6,0"},
    {'N', 5.0, "0,0 0,7 5,0 5,7"},
    {'O', 5.6, "@2.8,3.5,2.8,3.5,0,360"},
    {'P', 4.4, "0,0 0,7 2.5,7 @2.5,5.1,1.9,1.9,90,-90 0,3.2"},
    {'Q', 5.6, "@2.8,3.5,2.8,3.5,0,360;3.5,1.8 5.6,-0.5"},
    {'R', 4.7, "0,0 0,7 2.5,7 @2.5,5.1,1.9,1.9,90,-90 0,3.2;2.4,3.2 4.7,0"},
    {'S', 4.6, "@2.3,5.3,2.1,1.7,25,270 @2.3,1.8,2.3,1.8,90,-155"},
    {'T', 5.0, "0,7 5,7;2.5,7 2.5,0"},
    {'U', 4.8, "0,7 0,2.4 @2.4,2.4,2.4,2.4,180,360 4.8,7"},
    {'V', 5.2, "0,7 2.6,0 5.2,7"},
    {'W', 7.2, "0,7 1.7,0 3.6,6 5.5,0 7.2,7"},
    {'X', 4.8, "0,0 4.8,7;0,7 4.8,0"},
    {'Y', 5.0, "0,7 2.5,3.4 5,7;2.5,3.4 2.5,0"},
    {'Z', 4.7, "0,7 4.7,7 0,0 4.7,0"},
    {'a', 4.2, "@2.1,2.5,2.1,2.5,0,360;4.2,5 4.2,0"},
    {'b', 4.2, "0,7 0,0;@2.1,2.5,2.1,2.5,0,360"},
    {'c', 3.7, "@2.1,2.5,2.1,2.5,48,312"},
    {'d', 4.2, "4.2,7 4.2,0;@2.1,2.5,2.1,2.5,0,360"},
    {'e', 4.2, "0.1,2.7 4.2,2.7 @2.1,2.5,2.1,2.5,5,315"},
    {'f', 2.8, "0.9,0 0.9,5.4 @2.5,5.4,1.6,1.6,180,80;0,4.6 2.5,4.6"},
    {'g', 4.2, "@2.1,2.5,2.1,2.5,0,360;4.2,5 4.2,-0.2 @2.1,-0.2,2.1,1.8,0,-155"},
    {'h', 4.0, "0,7 0,0;0,3 @2,3,2,2,180,0 4,0"},
    {'i', 0.4, "0.2,5 0.2,0;0.2,6.8"},
    {'j', 1.6, "1.4,5 1.4,-0.6 @0,-0.6,1.4,1.4,0,-100;1.4,6.8"},
    {'k', 3.9, "0,7 0,0;3.6,5 0,1.9;1.3,3 3.9,0"},
    {'l', 0.4, "0.2,7 0.2,0"},
    {'m', 6.4, "0,5 0,0;0,3.3 @1.6,3.3,1.6,1.7,180,0 3.2,0;3.2,3.3 @4.8,3.3,1.6,1.7,180,0 6.4,0"},
    {'n', 4.0, "0,5 0,0;0,3 @2,3,2,2,180,0 4,0"},
    {'o', 4.4, "@2.2,2.5,2.2,2.5,0,360"},
    {'p', 4.2, "0,5 0,-2;@2.1,2.5,2.1,2.5,0,360"},
    {'q', 4.2, "4.2,5 4.2,-2;@2.1,2.5,2.1,2.5,0,360"},
    {'r', 2.6, "0,5 0,0;0,2.8 @2,2.8,2,2.2,180,70"},
    {'s', 3.5, "@1.75,3.75,1.55,1.25,25,270 @1.75,1.25,1.75,1.25,90,-155"},
    {'t', 2.6, "1,6.6 1,1.4 @2.4,1.4,1.4,1.4,180,280;0,5 2.5,5"},
    {'u', 4.0, "0,5 0,2 @2,2,2,2,180,360;4,5 4,0"},
    {'v', 4.0, "0,5 2,0 4,5"},
    {'w', 6.0, "0,5 1.4,0 3,4.4 4.6,0 6,5"},
    {'x', 3.8, "0,0 3.8,5;0,5 3.8,0"},
    {'y', 4.2, "0,5 2.1,0;4.2,5 1.26,-2"},
    {'z', 3.7, "0,5 3.7,5 0,0 3.7,0"},
    {'0', 4.4, "@2.2,3.5,2.2,3.5,0,360"},
    {'1', 4.4, "0.8,5.5 2.5,7 2.5,0"},
    {'2', 4.4, "@2.2,4.9,2.1,2.1,165,-30 0,0 4.4,0"},
    {'3', 4.4, "@2.1,5.3,1.9,1.7,150,-90 @2.1,1.8,2.3,1.8,90,-152"},
    {'4', 4.4, "3.3,0 3.3,7 0,2.1 4.4,2.1"},
    {'5', 4.4, "3.9,7 0.6,7 0.3,3.7 @2.1,2.25,2.3,2.25,140,-152"},
    {'6', 4.4, "@2.2,2.2,2.1,2.2,0,360;@4,2.2,3.9,4.8,95,180"},
    {'7', 4.4, "0,7 4.4,7 1.5,0"},
    {'8', 4.4, "@2.2,5.35,1.8,1.65,0,360;@2.2,1.85,2.2,1.85,0,360"},
    {'9', 4.4, "@2.2,4.8,2.1,2.2,0,360;@0.4,4.8,3.9,4.8,-85,0"},
    {'.', 0.6, "0.3,0.1"},
    {',', 0.8, "0.5,0.2 0.1,-1.2"},
    {':', 0.6, "0.3,0.2;0.3,4.2"},
    {';', 0.8, "0.5,0.2 0.1,-1.2;0.5,4.2"},
    {'!', 0.6, "0.3,7 0.3,2;0.3,0.1"},
    {'?', 3.6, "@1.8,5.3,1.7,1.7,170,-60 1.8,3 1.8,2;1.8,0.1"},
    {'-', 2.8, "0.2,2.7 2.6,2.7"},
    {'+', 4.0, "0,2.9 4,2.9;2,4.9 2,0.9"},
    {'=', 4.0, "0,3.7 4,3.7;0,2 4,2"},
    {'/', 3.0, "0,-0.6 3,7.3"},
    {'(', 1.6, "@3.4,3,3.2,5.6,130,230"},
    {')', 1.6, "@-1.8,3,3.2,5.6,50,-50"},
    {'%', 5.6, "0.6,0 5,7;@1.2,5.7,1.2,1.3,0,360;@4.4,1.3,1.2,1.3,0,360"},
    {'\'', 0.4, "0.2,7 0.2,5.2"},
    {'"', 1.6, "0.2,7 0.2,5.2;1.4,7 1.4,5.2"},
};
// clang-format on

constexpr GlyphSource kUnknown = {'\0', 4.0, "0,0 0,7 4,7 4,0 0,0"};

constexpr double kCapHeight = 7;
constexpr double kGap = 1.5;           // between two glyphs
constexpr double kDegreesPerStep = 7;  // of an ellipse
constexpr double kPi = 3.14159265358979323846;

struct Glyph {
  double width = 0;
  std::vector<Polyline> strokes;
};

// The piece of text up to the separator; text goes on behind it.
std::string_view nextPiece(std::string_view& text, char separator) {
  const std::size_t end = text.find(separator);
  const std::string_view piece = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return piece;
}

std::vector<double> numbersOf(std::string_view list) {
  std::vector<double> numbers;
  while (!list.empty()) {
    const std::string_view piece = nextPiece(list, ',');
    double number = 0;
    std::from_chars(piece.data(), piece.data() + piece.size(), number);
    numbers.push_back(number);
  }
  return numbers;
}

void addArc(Polyline& line, const std::vector<double>& arc) {
  const double from = arc.at(4);
  const double turn = arc.at(5) - from;
  const int steps = static_cast<int>(std::ceil(std::abs(turn) / kDegreesPerStep));
  for (int step = 0; step <= steps; ++step) {
    const double angle = (from + turn * step / steps) * kPi / 180;
    line.push_back(
        {arc.at(0) + arc.at(2) * std::cos(angle), arc.at(1) + arc.at(3) * std::sin(angle)});
  }
}

Glyph readGlyph(const GlyphSource& source) {
  Glyph glyph;
  glyph.width = source.width;
  std::string_view strokes = source.strokes;
  while (!strokes.empty()) {
    std::string_view stations = nextPiece(strokes, ';');
    Polyline line;
    while (!stations.empty()) {
      std::string_view station = nextPiece(stations, ' ');
      if (station.front() == '@') {
        addArc(line, numbersOf(station.substr(1)));
      } else {
        const std::vector<double> point = numbersOf(station);
        line.push_back({point.at(0), point.at(1)});
      }
    }
    glyph.strokes.push_back(std::move(line));
  }
  return glyph;
}

using GlyphTable = std::array<Glyph, 128>;

GlyphTable readGlyphs() {
  GlyphTable table;
  table.fill(readGlyph(kUnknown));
  for (const GlyphSource& source : kGlyphs) {
    table.at(static_cast<std::size_t>(source.character)) = readGlyph(source);
  }
  return table;
}

const Glyph& glyphFor(char character) {
  static const GlyphTable table = readGlyphs();
  const auto code = static_cast<unsigned char>(character);
  return table.at(code < table.size() ? code : 0);
}

}  // namespace

double textWidth(std::string_view text, double capHeight) {
  double width = 0;
  for (const char character : text)
    width += glyphFor(character).width + kGap;
  return (text.empty() ? 0 : width - kGap) * capHeight / kCapHeight;
}

std::vector<std::vector<Polyline>> textStrokes(std::string_view text, Point start,
                                               double capHeight) {
  const double scale = capHeight / kCapHeight;
  std::vector<std::vector<Polyline>> result;
  double x = start.x;
  for (const char character : text) {
    const Glyph& glyph = glyphFor(character);
    std::vector<Polyline> strokes = glyph.strokes;
    for (Polyline& line : strokes) {
      for (Point& point : line)
        point = {x + point.x * scale, start.y - point.y * scale};
    }
    if (!strokes.empty()) result.push_back(std::move(strokes));
    x += (glyph.width + kGap) * scale;
  }
  return result;
}

}  // namespace tvrscn::virtual_device
