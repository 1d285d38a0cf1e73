// Black and white out of grey, for sheets that are yellowed, photographed or unevenly lit.
//
// Two measures stand for what surrounds a pixel v:
//   mean   the average of the square window around it, 1/4 inch wide; at the edges of the sheet, of
//          the part that lies on it
//   paper  the level of the bare sheet nearby: for each tile of 1/8 inch the level below which 90 %
//   of
//          its pixels lie, of that the largest within 1/2 inch, and between the centres of the
//          tiles linear interpolation
// The pixel is black when v < T, white otherwise, where
//   T0 = max(0.85 * mean, 0.50 * paper)
// The first term finds print wherever it stands out from its neighbourhood by 15 %, in whatever
// light; the second keeps the inside of areas black that are larger than the window. Brightness b
// moves T:
//   T = T0 * (255 - b) / 255            for b >= 0   (255: everything white)
//   T = T0 + (256 - T0) * -b / 255      for b < 0    (-255: everything black)
// Contrast has no part in it: the result knows no levels between.
#ifndef TVRSCN_PLATFORM_IMAGING_MATH_ADAPTIVE_THRESHOLD_H
#define TVRSCN_PLATFORM_IMAGING_MATH_ADAPTIVE_THRESHOLD_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "tvrscn/types.h"

namespace tvrscn::imaging {

// The paper level over a sheet. Takes the rows of a first pass from top to bottom and keeps one
// byte for each tile.
class PaperLevel {
 public:
  PaperLevel(std::size_t width, std::size_t height, unsigned dpi);

  void addRow(const BYTE* grey);
  // After the last row.
  void finish();
  // The level at each pixel of a row.
  void rowLevels(std::size_t y, std::vector<float>& levels) const;

 private:
  void closeTileRow();

  std::size_t width_;
  std::size_t tile_;  // pixels of a tile's side
  std::size_t across_;
  std::size_t down_;
  std::size_t rowsAdded_ = 0;
  std::vector<std::array<std::uint32_t, 256>> histograms_;  // of the tile row in work
  std::vector<BYTE> levels_;                                // down_ rows of across_
};

// The average around each pixel. Keeps the rows of one window.
class LocalMean {
 public:
  // Fetches the next row of the sheet.
  using NextRow = std::function<void(BYTE* grey)>;

  LocalMean(std::size_t width, std::size_t height, unsigned dpi, NextRow nextRow);

  // Moves on to the next row, from the first; returns its pixels, valid until the next call.
  const BYTE* advance();
  // The averages of that row.
  void rowMeans(std::vector<float>& means) const;

 private:
  [[nodiscard]] BYTE* slot(std::size_t y);

  std::size_t width_;
  std::size_t height_;
  std::size_t radius_;
  NextRow nextRow_;
  std::vector<BYTE> ring_;              // as many rows as the window is high
  std::vector<std::uint32_t> columns_;  // sum of each column within the window
  std::size_t fetched_ = 0;             // rows
  std::size_t current_ = 0;             // row after the one that advance() gave out
};

// Makes one row black (0) and white (255).
void thresholdRow(const BYTE* grey, const std::vector<float>& means,
                  const std::vector<float>& paper, int brightness, std::vector<BYTE>& result);

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_IMAGING_MATH_ADAPTIVE_THRESHOLD_H
