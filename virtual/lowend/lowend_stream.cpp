#include "virtual/lowend/lowend_stream.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <utility>

#include "virtual/lowend/lowend_protocol.h"

namespace tvrscn::virtual_device {
namespace {

constexpr std::string_view kBlockWord = "BLOCK";
// A line feed before the marker: no letter that could be one of its own.
constexpr std::string_view kFileBorder = "\nNEWFILE";
constexpr std::string_view kJobDone = "JOBDONE";
constexpr std::string_view kJobCancel = "JOBCANCEL";
constexpr std::string_view kJpegStart = "\xFF\xD8\xFF\xE0";
// What a host looks for in a record, wherever it stands.
constexpr std::string_view kJobWords[] = {"NEWFILE", kJobDone, kJobCancel, kJpegStart};
constexpr std::size_t kLongestWord = 9;

// Always held back, so that what is found later to belong together has not gone out in part.
constexpr std::size_t kHeldBack = 64;
constexpr std::size_t kMostStrayBytes = 12;
constexpr std::size_t kMostJunk = 64;
constexpr unsigned kMarkerNumbers = 100000;

std::string_view viewOf(const Bytes& bytes, std::size_t from) {
  return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()).substr(from);
}

}  // namespace

LowEndStream::LowEndStream(const LowEndStreamShape& shape, Sink sink)
    : shape_(shape), random_(shape.seed), sink_(std::move(sink)) {}

void LowEndStream::append(std::string_view text) {
  pending_.insert(pending_.end(), text.begin(), text.end());
}

void LowEndStream::addWhole(std::string_view text) {
  whole_.push_back({position(), position() + text.size()});
  append(text);
}

bool LowEndStream::beginFile() {
  if (inFile_) {
    // From the last byte of the file's start to the first one of the border, both included.
    torn_.push_back({fileStart_ + kImageStartSize - 1, position() + 1});
    addWhole(kFileBorder);
  }
  inFile_ = true;
  atFileStart_ = true;
  tail_.clear();
  addLeadingBytes();
  return sendPackets(kHeldBack);
}

// Hosts drop what stands before the start of a file. It must not look like one: no letters but
// those of a block marker.
void LowEndStream::addLeadingBytes() {
  append(std::string(random_.below(kMostStrayBytes + 1), '\0'));
  if (shape_.blockDistance > 0 && random_.below(4) == 0) append(nextBlockMarker());
}

// Exactly 18 bytes: what came since the last one, as people like to read it.
std::string LowEndStream::nextBlockMarker() {
  char text[32];
  const auto count = static_cast<unsigned>(sinceMarker_ % kMarkerNumbers);
  std::snprintf(text, sizeof text, "BLOCK %05u BYTES\n", count);
  sinceMarker_ = 0;
  return text;
}

bool LowEndStream::addData(const Bytes& data) {
  const std::size_t start = atFileStart_ ? kImageStartSize : 0;
  if (atFileStart_) {
    fileStart_ = position();
    runStart_ = position();
    whole_.push_back({position(), position() + kImageStartSize});
    untilMarker_ = random_.below(2 * static_cast<std::size_t>(shape_.blockDistance) + 1);
    atFileStart_ = false;
  }
  const std::size_t from = position();
  appendData(data, markerPlaces(data, start));
  protectJobWords(from);
  return sendPackets(kHeldBack);
}

// In front of which bytes of data a block marker goes, in order; the same place may come twice.
std::vector<std::size_t> LowEndStream::markerPlaces(const Bytes& data, std::size_t start) {
  std::vector<std::size_t> places;
  if (shape_.blockDistance > 0) {
    std::size_t at = start + untilMarker_;
    for (; at <= data.size();
         at += random_.below(2 * static_cast<std::size_t>(shape_.blockDistance) + 1)) {
      places.push_back(at);
    }
    untilMarker_ = at - data.size();
  }
  protectBlockWords(data, places);
  return places;
}

// The first letters of such a word may stand in the data before.
void LowEndStream::protectBlockWords(const Bytes& data, std::vector<std::size_t>& places) const {
  std::string text = tail_;
  text += viewOf(data, 0);
  const std::size_t before = tail_.size();
  for (std::size_t word = text.find(kBlockWord); word != std::string::npos;
       word = text.find(kBlockWord, word + kBlockWord.size())) {
    const std::size_t first = std::max(word + 1, before) - before;
    const std::size_t last = word + kBlockWord.size() - 1 - before;
    const auto next = std::lower_bound(places.begin(), places.end(), first);
    if (next == places.end() || *next > last) places.insert(next, first);
  }
}

void LowEndStream::keepTail(const Bytes& data, std::size_t from) {
  tail_ += viewOf(data, from);
  constexpr std::size_t kMost = kBlockWord.size() - 1;
  if (tail_.size() > kMost) tail_.erase(0, tail_.size() - kMost);
}

void LowEndStream::appendData(const Bytes& data, const std::vector<std::size_t>& places) {
  std::size_t done = 0;
  for (const std::size_t place : places) {
    append(viewOf(data, done).substr(0, place - done));
    sinceMarker_ += place - done;
    append(nextBlockMarker());
    done = place;
    tail_.clear();
  }
  append(viewOf(data, done));
  sinceMarker_ += data.size() - done;
  keepTail(data, done);
}

// Looks at the bytes of the stream from `from` on, and at those in front of them in which a word
// may have begun.
void LowEndStream::protectJobWords(std::size_t from) {
  const std::size_t earliest = std::max(runStart_, sent_);
  const std::size_t first = std::max(earliest, from - std::min(from, kLongestWord - 1));
  const std::string_view text = viewOf(pending_, taken_ + (first - sent_));
  for (const std::string_view word : kJobWords) {
    for (std::size_t at = text.find(word); at != std::string_view::npos;
         at = text.find(word, at + 1)) {
      const std::size_t place = first + at;
      if (place == fileStart_) continue;  // the one that a host is to find
      torn_.push_back({place, place + word.size()});
    }
  }
}

bool LowEndStream::isGoodPacket(std::size_t length) const {
  if (length == kLowEndControlSize) return false;
  const std::size_t end = sent_ + length;
  const bool tears = std::any_of(whole_.begin(), whole_.end(), [&](const Span& span) {
    return span.from < end && end < span.to;
  });
  const bool passesOver = std::any_of(torn_.begin(), torn_.end(), [&](const Span& span) {
    return span.from >= sent_ && span.to <= end;
  });
  return !tears && !passesOver;
}

// The nearest good length to a random one, shorter ones first.
std::size_t LowEndStream::chooseLength() {
  const std::size_t available = pending_.size() - taken_;
  std::size_t wanted = random_.between(static_cast<std::size_t>(shape_.leastPacket),
                                       static_cast<std::size_t>(shape_.mostPacket));
  wanted = std::min(wanted, available);
  for (const Span& span : torn_) {
    if (span.from >= sent_) wanted = std::min(wanted, span.to - 1 - sent_);
  }
  for (std::size_t length = wanted; length > 0; --length) {
    if (isGoodPacket(length)) return length;
  }
  for (std::size_t length = wanted + 1; length < available; ++length) {
    if (isGoodPacket(length)) return length;
  }
  return available;
}

bool LowEndStream::sendPackets(std::size_t keep) {
  const std::size_t most = keep == 0 ? 0 : keep + static_cast<std::size_t>(shape_.mostPacket);
  while (pending_.size() - taken_ > most) {
    if (!sendStrays() || !sendPacket(chooseLength(), kLowEndMorePackets)) return false;
  }
  pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(taken_));
  taken_ = 0;
  return true;
}

bool LowEndStream::sendPacket(std::size_t length, std::uint8_t status) {
  const std::span<const std::uint8_t> payload(pending_.data() + taken_, length);
  Bytes transfer = makeLowEndTransfer(kLowEndImage, status, payload);
  taken_ += length;
  sent_ += length;
  const auto isOver = [&](const Span& span) { return span.to <= sent_; };
  whole_.erase(std::remove_if(whole_.begin(), whole_.end(), isOver), whole_.end());
  torn_.erase(std::remove_if(torn_.begin(), torn_.end(), isOver), torn_.end());
  hasSentPacket_ = true;
  return sink_(std::move(transfer));
}

bool LowEndStream::sendStrays() {
  if (shape_.junk && (!hasSentPacket_ || random_.below(4) == 0) && !sendJunk()) return false;
  const auto oneTo = static_cast<std::size_t>(shape_.controlPackets);
  if (oneTo == 0 || !hasSentPacket_ || random_.below(oneTo + 1) != 0) return true;
  return sendControlPacket(kLowEndMorePackets);
}

bool LowEndStream::sendControlPacket(std::uint8_t status) {
  return sink_(makeLowEndTransfer(kLowEndImage, status, Bytes(kLowEndControlSize, 0)));
}

// Either noise, or a header that is none of an image packet.
bool LowEndStream::sendJunk() {
  if (random_.below(2) == 0) return sink_(makeLowEndTransfer(kLowEndStatus, kLowEndGood, {}));
  Bytes noise(random_.between(1, kMostJunk));
  for (std::uint8_t& byte : noise)
    byte = static_cast<std::uint8_t>(random_.below(256));
  if (noise[0] == kLowEndLeadIn0) noise[0] = 0;
  return sink_(std::move(noise));
}

bool LowEndStream::flush() {
  return sendPackets(0);
}

// What stands behind the mark in its packet is dropped by hosts, and nothing may follow it.
void LowEndStream::addJobDone() {
  std::string text(kJobDone);
  text.append(random_.below(kMostStrayBytes + 1), '\0');
  addWhole(text);
}

bool LowEndStream::endSilently(bool withJobDone) {
  if (withJobDone) addJobDone();
  return flush();
}

// The last packet has the last image bytes, nothing, or two bytes that are none.
bool LowEndStream::end(bool withJobDone) {
  if (withJobDone) addJobDone();
  const std::size_t kind = random_.below(3);
  if (kind == 1 && !flush()) return false;
  if (kind == 2) return flush() && sendControlPacket(kLowEndFinalPacket);
  while (taken_ < pending_.size()) {
    const std::size_t length = chooseLength();
    const bool isLast = length == pending_.size() - taken_;
    const std::uint8_t status = isLast ? kLowEndFinalPacket : kLowEndMorePackets;
    if (!sendStrays() || !sendPacket(length, status)) return false;
    if (isLast) return true;
  }
  return sendPacket(0, kLowEndFinalPacket);
}

bool LowEndStream::addCancellation() {
  append(kJobCancel);
  whole_.push_back({sent_, position()});
  return flush();
}

}  // namespace tvrscn::virtual_device
