// The JPEG stream of a page on its way to a host, cut into the data of READ replies.
#ifndef TVRSCN_VIRTUAL_QZ_QZ_PAGE_STREAM_H
#define TVRSCN_VIRTUAL_QZ_QZ_PAGE_STREAM_H

#include <cstddef>
#include <random>

#include "virtual/common/bytes.h"
#include "virtual/qz/qz_protocol.h"
#include "virtual/virtual_qz_scanner.h"

namespace tvrscn::virtual_device {

class QzPageStream {
 public:
  // One reply.
  struct Piece {
    Bytes data;
    QzState state = kQzTransferring;
  };

  // The options say how the page is cut. It comes in two blocks, half of it each, or in one.
  // REQUIRES: random outlives the stream; a page has at least two bytes.
  QzPageStream(Bytes page, const QzScannerOptions& options, bool twoBlocks,
               std::mt19937_64& random);

  // Whether the next piece has the byte in the middle of the page.
  bool isInTheMiddle() const;
  // Bytes that are still to come of the running block.
  std::size_t leftInBlock() const { return blockEnd() - at_; }
  // REQUIRES: the page has not ended.
  Piece next();
  bool hasEnded() const { return hasEnded_; }

 private:
  std::size_t middle() const { return page_.size() / 2; }
  std::size_t blockEnd() const;
  // Decides on the next piece.
  void cut();
  std::size_t wantedLength();

  Bytes page_;
  const QzScannerOptions& options_;
  bool twoBlocks_;
  std::mt19937_64& random_;
  std::size_t at_ = 0;      // where the next piece begins
  std::size_t length_ = 0;  // of the next piece
  std::size_t piecesTaken_ = 0;
  bool hasEnded_ = false;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_QZ_QZ_PAGE_STREAM_H
