// One image file after the other, as they are written.
#ifndef TVRSCN_FAMILY_LOWEND_LOWEND_IMAGE_WRITER_H
#define TVRSCN_FAMILY_LOWEND_LOWEND_IMAGE_WRITER_H

#include <cstddef>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "family_lowend/lowend_framing.h"

// The block markers of a file go when it is whole, and through a work file: written, read, written
// and copied back, an image would pass the disk three times. Since the bytes come by here anyway,
// they lose their markers on the way, wherever the cleaning behind it would be sure to come to
// the same file. Elsewhere they are written as they came, and isCleaned says so.
//
// Failing writes are not told: they show as files that are short or missing.
class LowEndImageWriter {
 public:
  // imageFolder is that of the work file.
  explicit LowEndImageWriter(const std::wstring& imageFolder);
  ~LowEndImageWriter();
  LowEndImageWriter(const LowEndImageWriter&) = delete;
  LowEndImageWriter& operator=(const LowEndImageWriter&) = delete;

  // Empties the file or makes it.
  void open(const std::wstring& path);
  void write(std::string_view bytes);
  // An image begins: bytes are written again although some before could not be.
  void forgetFailure();
  void close();
  // Whether the last file has lost its markers already.
  bool isCleaned() const { return cleans_; }

 private:
  void put(std::string_view bytes);
  void writeBlock();

  const bool workFileCanBeMade_;
  std::ofstream output_;
  bool cleans_ = false;
  tvrscn::BlockMarkerFilter markers_;
  const std::unique_ptr<char[]> block_;  // of what is next to be written
  std::size_t held_ = 0;                 // bytes of it
};

#endif  // TVRSCN_FAMILY_LOWEND_LOWEND_IMAGE_WRITER_H
