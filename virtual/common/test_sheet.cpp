// Layout of the test sheet. Rulers, frame and corner marks follow the window's true edges in true
// millimetres; the rest is laid out for A4 and shrinks or grows with the window. Measures are in
// millimetres until they reach the drawing.
#include "virtual/common/test_sheet.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "virtual/common/drawing.h"
#include "virtual/common/stroke_font.h"

namespace tvrscn::virtual_device {
namespace {

constexpr Rgb kInk{24, 24, 28};
constexpr Rgb kFaintInk{96, 96, 104};
constexpr Rgb kMark{200, 30, 40};
constexpr Rgb kPaper{250, 245, 230};
constexpr Rgb kWhite{255, 255, 255};

constexpr double kMillimetresPerInch = 25.4;
// The layout's own box, and where it begins on a window, clear of the rulers.
constexpr double kLayoutLeft = 20;
constexpr double kLayoutTop = 21;
constexpr double kLayoutWidth = 174;
constexpr double kLayoutHeight = 246;
constexpr double kMarginLeft = 15;
constexpr double kMarginTop = 14;
constexpr double kMarginFar = 7;
constexpr double kLeastScale = 0.03;
constexpr double kLargestScale = 1.5;
constexpr double kPi = 3.14159265358979323846;

struct Patch {
  std::string_view name;
  Rgb color;
};

constexpr Patch kPatches[] = {
    {"red", {255, 0, 0}},      {"green", {0, 255, 0}},     {"blue", {0, 0, 255}},
    {"cyan", {0, 255, 255}},   {"magenta", {255, 0, 255}}, {"yellow", {255, 255, 0}},
    {"skin", {224, 172, 140}}, {"sky", {120, 170, 215}},   {"leaf", {80, 125, 60}},
};

constexpr std::string_view kParagraph[] = {
    "This sheet was drawn by the scanner itself, at the resolution of this scan. Lay a ruler on",
    "a print of it: ten millimetres here are ten millimetres there, and the frame of one pixel",
    "runs around the very edge of the page. If a side of the frame or one of the red corners is",
    "missing, something was cropped. If the big number is out of turn, pages were mixed up; if it",
    "stands on its head, the sheet was turned. All eleven greys should be told apart, and the",
    "six pure colours should be where their names are. 0123456789 (+-=/%) quick brown fox jumps!",
};

std::string oneDecimal(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  return text;
}

double scaleFor(double width, double height) {
  const double fitting = std::min((width - kMarginLeft - kMarginFar) / kLayoutWidth,
                                  (height - kMarginTop - kMarginFar) / kLayoutHeight);
  return std::clamp(fitting, kLeastScale, kLargestScale);
}

class SheetPainter {
 public:
  explicit SheetPainter(const PageRequest& request)
      : request_(request),
        perMillimetre_(request.dotsPerInch / kMillimetresPerInch),
        width_(request.width / perMillimetre_),
        height_(request.height / perMillimetre_),
        scale_(scaleFor(width_, height_)),
        drawing_(request.cleanBackground ? kWhite : kPaper) {}

  Drawing paint() {
    grayRamp();
    colorPatches();
    linePairs();
    star();
    rulers();
    edges();
    heading();
    paragraph();
    return std::move(drawing_);
  }

 private:
  // From here on: "window" functions take true millimetres, the others those of the A4 layout.
  Point atWindow(double x, double y) const { return {x * perMillimetre_, y * perMillimetre_}; }
  Point at(double x, double y) const {
    return atWindow(kMarginLeft + (x - kLayoutLeft) * scale_,
                    kMarginTop + (y - kLayoutTop) * scale_);
  }

  void windowBox(double left, double top, double right, double bottom, Rgb color) {
    drawing_.addRectangle(atWindow(left, top), atWindow(right, bottom), color);
  }
  void box(double left, double top, double right, double bottom, Rgb color) {
    drawing_.addRectangle(at(left, top), at(right, bottom), color);
  }

  void writeAt(Point start, std::string_view text, double capHeight, double penWidth, Rgb color) {
    for (std::vector<Polyline>& glyph : textStrokes(text, start, capHeight)) {
      drawing_.addStroke(std::move(glyph), penWidth, color);
    }
  }
  void write(double x, double y, std::string_view text, double capHeight, Rgb color = kInk,
             double weight = 0.11) {
    const double cap = capHeight * scale_ * perMillimetre_;
    writeAt(at(x, y), text, cap, cap * weight, color);
  }
  void writeCentred(double x, double y, std::string_view text, double capHeight) {
    write(x - textWidth(text, capHeight) / 2, y, text, capHeight, kFaintInk);
  }

  void rulers() {
    constexpr double kLabelHeight = 1.9;
    const double cap = kLabelHeight * perMillimetre_;
    for (int mark = 1; mark < static_cast<int>(std::max(width_, height_)); ++mark) {
      double length = 2;
      if (mark % 5 == 0) length = 3.2;
      if (mark % 10 == 0) length = 4.5;
      // A pixel at least, or coarse scans would lose the marks between two pixels.
      const double half = std::max(mark % 10 == 0 ? 0.1 : 0.06, 0.5 / perMillimetre_);
      if (mark < width_) windowBox(mark - half, 0, mark + half, length, kInk);
      if (mark < height_) windowBox(0, mark - half, length, mark + half, kInk);
      if (mark % 10 != 0) continue;
      const std::string label = std::to_string(mark);
      const double labelWidth = textWidth(label, cap) / perMillimetre_;
      if (mark + labelWidth < width_) {
        writeAt(atWindow(mark - labelWidth / 2, 7.3), label, cap, cap * 0.12, kInk);
      }
      if (mark + kLabelHeight < height_) {
        writeAt(atWindow(5.2, mark + kLabelHeight / 2), label, cap, cap * 0.12, kInk);
      }
    }
  }

  // A frame one pixel wide on the outermost pixels, and an angle in each corner.
  void edges() {
    const double pixel = 1 / perMillimetre_;
    windowBox(0, 0, width_, pixel, kInk);
    windowBox(0, height_ - pixel, width_, height_, kInk);
    windowBox(0, 0, pixel, height_, kInk);
    windowBox(width_ - pixel, 0, width_, height_, kInk);
    const double arm = std::min({9.0, width_ / 4, height_ / 4});
    constexpr double kThick = 0.8;
    for (const bool right : {false, true}) {
      for (const bool bottom : {false, true}) {
        const double x = right ? width_ - arm : 0;
        const double y = bottom ? height_ - arm : 0;
        const double sideX = right ? width_ - kThick : 0;
        const double sideY = bottom ? height_ - kThick : 0;
        windowBox(x, sideY, x + arm, sideY + kThick, kMark);
        windowBox(sideX, y, sideX + kThick, y + arm, kMark);
      }
    }
  }

  void heading() {
    const std::string number = std::to_string(request_.page);
    constexpr double kNumberHeight = 34;
    // Numbers of many digits get narrower room each.
    const double height =
        std::min(kNumberHeight, kNumberHeight * 52 / textWidth(number, kNumberHeight));
    write(20, 56, number, height, kInk, 0.13);
    constexpr double kLeft = 80;
    write(kLeft, 26, "Test sheet", 6.5, kInk, 0.13);
    write(kLeft, 35, sideText(), 3.4);
    write(kLeft, 42, oneDecimal(width_) + " x " + oneDecimal(height_) + " mm", 3.4);
    write(kLeft, 49,
          std::to_string(request_.width) + " x " + std::to_string(request_.height) + " pixels",
          3.4);
    write(kLeft, 56, modeText(), 3.4);
  }

  std::string sideText() const {
    return "Sheet " + std::to_string(request_.sheet) + (request_.backSide ? ", back" : ", front") +
           (request_.fromFeeder ? ", from the feeder" : ", on the flatbed");
  }

  std::string modeText() const {
    return std::to_string(request_.dotsPerInch) + " dpi, " + (request_.gray ? "grey" : "colour") +
           ", background " + (request_.cleanBackground ? "removed" : "as it is");
  }

  void grayRamp() {
    constexpr int kSteps = 11;
    constexpr double kLeft = 20;
    constexpr double kStepWidth = 15.5;
    constexpr double kRight = kLeft + kSteps * kStepWidth;
    constexpr double kRim = 0.15;  // keeps white steps apart from white paper
    box(kLeft - kRim, 66 - kRim, kRight + kRim, 85 + kRim, kFaintInk);
    box(kLeft, 78, kRight, 79, request_.cleanBackground ? kWhite : kPaper);
    for (int step = 0; step < kSteps; ++step) {
      const auto level = static_cast<std::uint8_t>((255 * step + 5) / (kSteps - 1));
      const double left = kLeft + step * kStepWidth;
      // Up to the ramp's end, under the steps to come: no seam of paper shows between two steps.
      box(left, 66, kRight, 78, {level, level, level});
      writeCentred(left + kStepWidth / 2, 88, std::to_string(100 - step * 10) + "%", 1.8);
    }
    drawing_.addGradient(at(kLeft, 79), at(kRight, 85), {0, 0, 0}, kWhite);
  }

  void colorPatches() {
    constexpr double kLeft = 20;
    constexpr double kPitch = 19;
    double left = kLeft;
    for (const Patch& patch : kPatches) {
      box(left, 94, left + kPitch - 1.5, 110, patch.color);
      writeCentred(left + (kPitch - 1.5) / 2, 114, patch.name, 1.8);
      left += kPitch;
    }
  }

  // Blocks of line pairs, upright and lying: in whole pixels first, then at fixed pitches.
  void linePairs() {
    constexpr double kLeft = 20;
    constexpr double kPitch = 24.4;
    double left = kLeft;
    for (const int pixels : {1, 2, 3}) {
      pairBlock(left, 2 * pixels / perMillimetre_, std::to_string(pixels) + " px");
      left += kPitch;
    }
    for (const int perMillimetre : {6, 4, 2, 1}) {
      pairBlock(left, 1.0 / perMillimetre, std::to_string(perMillimetre) + " lp/mm");
      left += kPitch;
    }
  }

  // `period` is in true millimetres: a line pair does not grow with the sheet.
  void pairBlock(double left, double period, const std::string& label) {
    constexpr double kSize = 19;
    constexpr double kTop = 120;
    const double size = kSize * scale_;
    // On a whole pixel, so that lines of whole pixels are sharp.
    const double x = std::floor(at(left, kTop).x) / perMillimetre_;
    const double upright = std::floor(at(left, kTop).y) / perMillimetre_;
    const double lying = std::floor(at(left, kTop + kSize + 2).y) / perMillimetre_;
    for (int line = 0; (line + 0.5) * period <= size; ++line) {
      const double from = line * period;
      const double to = from + period / 2;
      windowBox(x + from, upright, x + to, upright + size, kInk);
      windowBox(x, lying + from, x + size, lying + to, kInk);
    }
    writeCentred(left + kSize / 2, kTop + 2 * kSize + 6.5, label, 1.8);
  }

  // Wedges that meet in the middle, in circles that must come out round.
  void star() {
    constexpr double kX = 42;
    constexpr double kY = 192;
    constexpr double kRadius = 18;
    constexpr int kRays = 36;
    const double pen = perMillimetre_ * scale_;
    for (int ray = 0; ray < kRays; ++ray) {
      const double angle = 2 * kPi * ray / kRays;
      const Point inner = at(kX + 3 * std::cos(angle), kY + 3 * std::sin(angle));
      const Point outer = at(kX + kRadius * std::cos(angle), kY + kRadius * std::sin(angle));
      drawing_.addStroke({{inner, outer}}, 0.18 * pen, kInk);
    }
    for (const double radius : {3.0, kRadius, kRadius + 1.5}) {
      Polyline circle;
      for (int step = 0; step <= 120; ++step) {
        const double angle = 2 * kPi * step / 120;
        circle.push_back(at(kX + radius * std::cos(angle), kY + radius * std::sin(angle)));
      }
      drawing_.addStroke({std::move(circle)}, 0.25 * pen, kInk);
    }
    textSamples();
  }

  void textSamples() {
    constexpr double kPointsPerMillimetre = 72 / kMillimetresPerInch;
    constexpr double kCapShare = 0.7;  // of a type's size
    double y = 179;
    for (const int points : {16, 12, 10, 8, 6, 4}) {
      const double cap = points / kPointsPerMillimetre * kCapShare;
      write(72, y, oneDecimal(points * scale_) + " pt  Fine print must stay legible: 35.8 kg", cap);
      y += 3.2 + cap;
    }
  }

  void paragraph() {
    double y = 229;
    for (const std::string_view line : kParagraph) {
      write(20, y, line, 2.6);
      y += 6.4;
    }
  }

  const PageRequest& request_;
  double perMillimetre_;
  double width_;
  double height_;
  double scale_;
  Drawing drawing_;
};

class TestSheet final : public Page {
 public:
  explicit TestSheet(Drawing drawing) : drawing_(std::move(drawing)) {}
  void render(int firstLine, Raster& band) const override { drawing_.render(firstLine, band); }

 private:
  Drawing drawing_;
};

}  // namespace

std::unique_ptr<Page> makeTestSheet(const PageRequest& request) {
  return std::make_unique<TestSheet>(SheetPainter(request).paint());
}

}  // namespace tvrscn::virtual_device
