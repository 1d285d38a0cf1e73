// The codes stand as people print them, a letter a bit: they are looked up far less often than
// pixels are drawn.
#include "virtual/common/fax_encoder.h"

#include <iterator>
#include <span>
#include <utility>

namespace tvrscn::virtual_device {
namespace {

// clang-format off
// Runs of 0 to 63 white pixels.
constexpr std::string_view kWhiteRuns[] = {
    "00110101", "000111", "0111", "1000", "1011", "1100", "1110", "1111", "10011", "10100",
    "00111", "01000", "001000", "000011", "110100", "110101", "101010", "101011", "0100111",
    "0001100", "0001000", "0010111", "0000011", "0000100", "0101000", "0101011", "0010011",
    "0100100", "0011000", "00000010", "00000011", "00011010", "00011011", "00010010", "00010011",
    "00010100", "00010101", "00010110", "00010111", "00101000", "00101001", "00101010",
    "00101011", "00101100", "00101101", "00000100", "00000101", "00001010", "00001011",
    "01010010", "01010011", "01010100", "01010101", "00100100", "00100101", "01011000",
    "01011001", "01011010", "01011011", "01001010", "01001011", "00110010", "00110011",
    "00110100",
};
// Runs of 0 to 63 black pixels.
constexpr std::string_view kBlackRuns[] = {
    "0000110111", "010", "11", "10", "011", "0011", "0010", "00011", "000101", "000100",
    "0000100", "0000101", "0000111", "00000100", "00000111", "000011000", "0000010111",
    "0000011000", "0000001000", "00001100111", "00001101000", "00001101100", "00000110111",
    "00000101000", "00000010111", "00000011000", "000011001010", "000011001011", "000011001100",
    "000011001101", "000001101000", "000001101001", "000001101010", "000001101011",
    "000011010010", "000011010011", "000011010100", "000011010101", "000011010110",
    "000011010111", "000001101100", "000001101101", "000011011010", "000011011011",
    "000001010100", "000001010101", "000001010110", "000001010111", "000001100100",
    "000001100101", "000001010010", "000001010011", "000000100100", "000000110111",
    "000000111000", "000000100111", "000000101000", "000001011000", "000001011001",
    "000000101011", "000000101100", "000001011010", "000001100110", "000001100111",
};
// Before them: 64, 128 and so on up to 1728 white pixels more.
constexpr std::string_view kWhiteMakeUp[] = {
    "11011", "10010", "010111", "0110111", "00110110", "00110111", "01100100", "01100101",
    "01101000", "01100111", "011001100", "011001101", "011010010", "011010011", "011010100",
    "011010101", "011010110", "011010111", "011011000", "011011001", "011011010", "011011011",
    "010011000", "010011001", "010011010", "011000", "010011011",
};
// The same for black ones.
constexpr std::string_view kBlackMakeUp[] = {
    "0000001111", "000011001000", "000011001001", "000001011011", "000000110011", "000000110100",
    "000000110101", "0000001101100", "0000001101101", "0000001001010", "0000001001011",
    "0000001001100", "0000001001101", "0000001110010", "0000001110011", "0000001110100",
    "0000001110101", "0000001110110", "0000001110111", "0000001010010", "0000001010011",
    "0000001010100", "0000001010101", "0000001011010", "0000001011011", "0000001100100",
    "0000001100101",
};
// 1792, 1856 and so on up to 2560 pixels of either colour.
constexpr std::string_view kLongMakeUp[] = {
    "00000001000", "00000001100", "00000001101", "000000010010", "000000010011", "000000010100",
    "000000010101", "000000010110", "000000010111", "000000011100", "000000011101",
    "000000011110", "000000011111",
};
// The edge lies 3 pixels left of the one above it up to 3 pixels right of it.
constexpr std::string_view kVertical[] = {
    "0000010", "000010", "010", "1", "011", "000011", "0000011",
};
// clang-format on
constexpr std::string_view kPass = "0001";
constexpr std::string_view kHorizontal = "001";
constexpr std::string_view kEndOfBlock = "000000000001000000000001";

constexpr int kFarthest = 3;  // that an edge can be moved by one vertical code
constexpr int kRunUnit = 64;
constexpr int kFirstLong = 1792;
constexpr int kLongest = 2560;

// How often the width stands behind the edges, so that nobody looks beyond them.
constexpr std::size_t kEndEdges = 4;

// Where the colour changes, from white on; then the width, over and over.
std::vector<int> edgesOf(const std::uint8_t* black, int width) {
  std::vector<int> edges;
  bool isBlack = false;
  for (int x = 0; x < width; ++x) {
    if ((black[x] != 0) == isBlack) continue;
    isBlack = !isBlack;
    edges.push_back(x);
  }
  edges.insert(edges.end(), kEndEdges, width);
  return edges;
}

}  // namespace

FaxEncoder::FaxEncoder(int width) : width_(width), above_(kEndEdges, width) {}

void FaxEncoder::put(std::string_view code) {
  for (const char bit : code) {
    if (freeBits_ == 0) {
      bytes_.push_back(0);
      freeBits_ = 8;
    }
    --freeBits_;
    if (bit == '1') bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | (1U << freeBits_));
  }
}

void FaxEncoder::putRun(int length, bool isBlack) {
  const std::span<const std::string_view> makeUp = isBlack ? kBlackMakeUp : kWhiteMakeUp;
  const std::span<const std::string_view> runs = isBlack ? kBlackRuns : kWhiteRuns;
  for (; length > kLongest; length -= kLongest)
    put(std::end(kLongMakeUp)[-1]);
  const auto units = static_cast<std::size_t>(length / kRunUnit);
  if (length >= kFirstLong) {
    put(kLongMakeUp[units - kFirstLong / kRunUnit]);
  } else if (units > 0) {
    put(makeUp[units - 1]);
  }
  put(runs[static_cast<std::size_t>(length % kRunUnit)]);
}

// The first edge of the line above that lies right of `at` and turns to the other colour. `before`
// is the answer for the place before: what is more than one edge left of it lies behind us.
std::size_t FaxEncoder::edgeAbove(int at, bool isBlack, std::size_t before) const {
  std::size_t index = before;
  if ((index % 2 == 1) != isBlack) index = index == 0 ? 1 : index - 1;
  while (above_[index] <= at && above_[index] < width_)
    index += 2;
  return index;
}

void FaxEncoder::addLine(const std::uint8_t* black) {
  const std::vector<int> edges = edgesOf(black, width_);
  int at = -1;  // in front of the line
  std::size_t next = 0;
  std::size_t above = 0;
  while (at < width_) {
    const bool isBlack = next % 2 == 1;
    above = edgeAbove(at, isBlack, above);
    const int shift = edges[next] - above_[above];
    if (above_[above + 1] < edges[next]) {
      put(kPass);
      at = above_[above + 1];
    } else if (shift >= -kFarthest && shift <= kFarthest) {
      put(kVertical[shift + kFarthest]);
      at = edges[next++];
    } else {
      put(kHorizontal);
      putRun(edges[next] - (at < 0 ? 0 : at), isBlack);
      putRun(edges[next + 1] - edges[next], !isBlack);
      at = edges[next + 1];
      next += 2;
    }
  }
  above_ = edges;
}

Bytes FaxEncoder::finish() {
  put(kEndOfBlock);
  return std::move(bytes_);
}

}  // namespace tvrscn::virtual_device
