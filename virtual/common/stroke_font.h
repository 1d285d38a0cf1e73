// A small font of pen strokes, for the writing on test sheets. ASCII; any other character comes out
// as a box.
#ifndef TVRSCN_VIRTUAL_COMMON_STROKE_FONT_H
#define TVRSCN_VIRTUAL_COMMON_STROKE_FONT_H

#include <string_view>
#include <vector>

#include "virtual/common/drawing.h"

namespace tvrscn::virtual_device {

// Width of a line of text whose capital letters are that high.
double textWidth(std::string_view text, double capHeight);

// The strokes of one line of text; its baseline begins at start. One element per glyph, so that
// each can be drawn as a shape of its own.
std::vector<std::vector<Polyline>> textStrokes(std::string_view text, Point start,
                                               double capHeight);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_STROKE_FONT_H
