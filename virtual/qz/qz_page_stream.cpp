#include "virtual/qz/qz_page_stream.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tvrscn::virtual_device {

QzPageStream::QzPageStream(Bytes page, const QzScannerOptions& options, bool twoBlocks,
                           std::mt19937_64& random)
    : page_(std::move(page)), options_(options), twoBlocks_(twoBlocks), random_(random) {
  cut();
}

bool QzPageStream::isInTheMiddle() const {
  return at_ <= middle() && middle() < at_ + length_;
}

std::size_t QzPageStream::blockEnd() const {
  return twoBlocks_ && at_ < middle() ? middle() : page_.size();
}

QzPageStream::Piece QzPageStream::next() {
  const auto begin = page_.begin() + static_cast<std::ptrdiff_t>(at_);
  Piece piece;
  piece.data.assign(begin, begin + static_cast<std::ptrdiff_t>(length_));
  const bool endsBlock = twoBlocks_ && length_ > 0 && at_ + length_ == middle();
  const bool hasAll = at_ == page_.size() || (at_ + length_ == page_.size() && !options_.emptyEnd);
  hasEnded_ = hasAll && piecesTaken_ + 1 >= static_cast<std::size_t>(options_.pageReplies);
  if (endsBlock) piece.state = kQzBlockEnd;
  if (hasEnded_) piece.state = kQzImageEnd;
  at_ += length_;
  ++piecesTaken_;
  cut();
  return piece;
}

void QzPageStream::cut() {
  length_ = at_ == page_.size() ? 0 : std::min(wantedLength(), leftInBlock());
}

std::size_t QzPageStream::wantedLength() {
  if (options_.pageReplies > 0) {
    const auto pieces = static_cast<std::size_t>(options_.pageReplies);
    const std::size_t end = page_.size() * std::min(piecesTaken_ + 1, pieces) / pieces;
    return std::min<std::size_t>(end - std::min(end, at_), kQzReadArgument);
  }
  const auto draw = [this](std::uint64_t limit) { return random_() % limit; };
  if (options_.emptyReplies > 0 &&
      draw(static_cast<std::uint64_t>(options_.emptyReplies) + 1) == 0) {
    return 0;
  }
  const auto least = static_cast<std::uint64_t>(options_.leastReply);
  const auto most = static_cast<std::uint64_t>(options_.mostReply);
  return static_cast<std::size_t>(least + draw(most - least + 1));
}

}  // namespace tvrscn::virtual_device
