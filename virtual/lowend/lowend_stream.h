// The image stream of one job: image files in, packets out. It puts block markers among the image
// bytes, joins files by "NEWFILE", and cuts the whole into packets of random sizes.
//
// A host searches its markers in each packet's record alone, and takes no second marker within one.
// So the stream sees to it that
//   - the first bytes of a file, a job marker and the byte before "NEWFILE" are not torn apart;
//   - there is a packet border between the start of a file and the "NEWFILE" behind it;
//   - image bytes that happen to look like a job marker have a packet border within them;
//   - image bytes that happen to look like a block marker have a block marker within them.
// With that, a host gets every file back to the last byte.
#ifndef TVRSCN_VIRTUAL_LOWEND_LOWEND_STREAM_H
#define TVRSCN_VIRTUAL_LOWEND_LOWEND_STREAM_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "virtual/common/bytes.h"
#include "virtual/lowend/random_numbers.h"

namespace tvrscn::virtual_device {

// What begins every image file: FF D8 FF E0, or "II" and the version of TIFF.
inline constexpr std::size_t kImageStartSize = 4;

struct LowEndStreamShape {
  std::uint64_t seed = 1;
  int leastPacket = 1;  // bytes behind the header, where nothing above asks for another size
  int mostPacket = 8192;
  int blockDistance = 4096;  // 0: only the markers that image bytes need
  int controlPackets = 16;   // one to so many packets; 0 for none
  bool junk = false;         // transfers that are no packets among them
};

class LowEndStream {
 public:
  // Takes one transfer; says whether the host is still there.
  using Sink = std::function<bool(Bytes transfer)>;

  LowEndStream(const LowEndStreamShape& shape, Sink sink);

  // Each of these says whether the host is still there.

  // The image data that follow are those of a new file. REQUIRES: addData since the last one.
  [[nodiscard]] bool beginFile();
  // More of the file; its first piece holds kImageStartSize bytes at least.
  [[nodiscard]] bool addData(const Bytes& data);
  // Sends all there is.
  [[nodiscard]] bool flush();
  // Sends all there is, with the job's end mark behind it if wanted, and the last packet.
  [[nodiscard]] bool end(bool withJobDone);
  // The same without the last packet.
  [[nodiscard]] bool endSilently(bool withJobDone);
  // The stream of a job that was cancelled at the device, but for its last packet.
  [[nodiscard]] bool addCancellation();

 private:
  // Of the stream, from its very start.
  struct Span {
    std::size_t from;
    std::size_t to;
  };

  std::size_t position() const { return sent_ + pending_.size() - taken_; }
  void append(std::string_view text);
  void addWhole(std::string_view text);
  void addLeadingBytes();
  void addJobDone();
  std::string nextBlockMarker();
  std::vector<std::size_t> markerPlaces(const Bytes& data, std::size_t start);
  void protectBlockWords(const Bytes& data, std::vector<std::size_t>& places) const;
  void keepTail(const Bytes& data, std::size_t from);
  void appendData(const Bytes& data, const std::vector<std::size_t>& places);
  void protectJobWords(std::size_t from);

  bool isGoodPacket(std::size_t length) const;
  std::size_t chooseLength();
  bool sendPackets(std::size_t keep);
  bool sendPacket(std::size_t length, std::uint8_t status);
  bool sendStrays();
  bool sendControlPacket(std::uint8_t status);
  bool sendJunk();

  LowEndStreamShape shape_;
  RandomNumbers random_;
  Sink sink_;

  Bytes pending_;
  std::size_t taken_ = 0;    // of pending_, gone out already
  std::size_t sent_ = 0;     // bytes of the stream in front of pending_[taken_]
  std::vector<Span> whole_;  // no packet border within
  std::vector<Span> torn_;   // a packet border within, at least one
  bool hasSentPacket_ = false;

  bool inFile_ = false;
  bool atFileStart_ = false;
  std::size_t fileStart_ = 0;    // position of the file's first byte
  std::size_t runStart_ = 0;     // of the image bytes without a job marker among them
  std::size_t untilMarker_ = 0;  // image bytes
  std::size_t sinceMarker_ = 0;  // image bytes
  std::string tail_;             // the last image bytes behind the last block marker
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_LOWEND_LOWEND_STREAM_H
