// Whole streams of packets through the worker and through a second implementation that is slow and
// obvious: the same records, files, notifications and result. TVRSCN_SEED chooses other streams.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/lowend_test.h"

namespace {

using tvrscn::test::Lines;
using tvrscn::test::LowEndTest;

constexpr int kStreams = 3000;
constexpr std::uint64_t kDefaultSeed = 20240611;

const std::string kJpeg = "\xFF\xD8\xFF\xE0";
const std::string kMarker = "BLOCK012345678TES\n";

using Transfers = std::vector<std::string>;
using Files = std::map<std::string, std::string>;

// --- The obvious worker --------------------------------------------------------------------------

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

bool standsAt(const std::string& text, std::size_t at, const std::string& word) {
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (at + i >= text.size() || text[at + i] != word[i]) return false;
  }
  return true;
}

std::size_t firstOf(const std::string& text, const std::string& word, std::size_t from = 0) {
  for (std::size_t i = from; i < text.size(); ++i) {
    if (standsAt(text, i, word)) return i;
  }
  return kNone;
}

std::size_t lastOf(const std::string& text, const std::string& word) {
  std::size_t last = kNone;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (standsAt(text, i, word)) last = i;
  }
  return last;
}

std::string withoutMarkers(const std::string& file) {
  std::string result;
  std::size_t i = 0;
  while (i < file.size()) {
    if (standsAt(file, i, "BLOCK")) {
      i += 18;
    } else {
      result += file[i];
      ++i;
    }
  }
  return result;
}

struct Outcome {
  unsigned result = 0;
  Lines records;
  Files files;
  Lines notifications;
};

class ObviousWorker {
 public:
  ObviousWorker(const Transfers& transfers, bool tiff, std::vector<std::string> pages, int number,
                std::string folder)
      : transfers_(transfers.begin(), transfers.end()),
        extension_(tiff ? ".TIF" : ".JPG"),
        pages_(std::move(pages)),
        number_(number),
        folder_(std::move(folder)) {}

  Outcome run() {
    retrieve();
    if (tooMuch_ || cancelled_) {
      out_.notifications = {"1011"};
      out_.result = tooMuch_ ? 15007 : 15015;
      return out_;
    }
    write();
    out_.notifications.emplace_back("1006");
    out_.result = 15009;
    return out_;
  }

 private:
  std::string read(std::size_t most) {
    std::string& next = transfers_.front();
    std::string got = next.substr(0, most);
    next = next.substr(got.size());
    if (next.empty()) transfers_.pop_front();
    return got;
  }

  static std::size_t byteAt(const std::string& text, std::size_t i) {
    return static_cast<unsigned char>(text[i]);
  }

  void retrieve() {
    bool last = false;
    while (!last && !tooMuch_) {
      const std::string start = read(512);
      if (start.size() < 10 || start[0] != 0x1B || start[1] != 0x4E || start[2] != 2) continue;
      last = start[8] == 1;
      const std::size_t length = byteAt(start, 4) + byteAt(start, 5) * 256 +
                                 byteAt(start, 6) * 65536 + byteAt(start, 7) * 16777216;
      if (start.size() == 12 || length == 2) continue;
      takeRecord(start.substr(10), length);
    }
  }

  void takeRecord(std::string record, std::size_t length) {
    if (out_.records.empty() && firstOf(record, "JOBCANCEL") != kNone) cancelled_ = true;
    tooMuch_ = record.size() > length;
    if (tooMuch_) return;
    while (record.size() < length)
      record += read(length - record.size());
    const std::size_t done = lastOf(record, "JOBDONE");
    if (done != kNone) record = record.substr(0, done);
    if (!record.empty()) out_.records.push_back(record);
  }

  void startImage(const std::string& text) {
    std::size_t start = firstOf(text, kJpeg);
    if (start == kNone) start = firstOf(text, "II");
    waiting_ = start == kNone;
    if (!waiting_) file_ += text.substr(start);
  }

  std::string numbered(const std::string& name, const std::string& extension) const {
    return name + std::to_string(number_) + extension;
  }

  void report(const std::string& name, const std::string& content) {
    out_.files[name] = withoutMarkers(content);
    if (number_ == first_) out_.notifications.emplace_back("1004");
    out_.notifications.push_back("1005 " + folder_ + "/" + name);
    ++number_;
  }

  void write() {
    first_ = number_;
    std::string name = numbered(extension_ == ".TIF" ? "tempImage_" : "Image_", extension_);
    bool split = false;
    for (const std::string& record : out_.records) {
      const std::size_t next = waiting_ ? kNone : firstOf(record, "NEWFILE");
      if (waiting_) {
        startImage(record);
      } else if (next == kNone) {
        file_ += record;
      } else {
        if (next > 1) file_ += record.substr(0, next - 1);
        report(name, file_);
        file_.clear();
        split = true;
        name = numbered("Image_", extension_);
        startImage(record.substr(next));
      }
    }
    if (extension_ == ".JPG" || split) {
      report(name, file_);
    } else if (pages_.empty()) {
      report(name, withoutMarkers(file_));
    } else {
      for (const std::string& page : pages_)
        report(numbered("Image_", ".tif"), page);
    }
  }

  std::deque<std::string> transfers_;
  const std::string extension_;
  const std::vector<std::string> pages_;
  int number_;
  int first_ = 0;
  const std::string folder_;
  bool cancelled_ = false;
  bool tooMuch_ = false;
  bool waiting_ = true;
  std::string file_;
  Outcome out_;
};

// --- Streams -------------------------------------------------------------------------------------

class Dice {
 public:
  explicit Dice(std::uint64_t seed) : state_(seed) {}
  std::size_t below(std::size_t limit) {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return static_cast<std::size_t>((mixed ^ (mixed >> 31U)) % limit);
  }
  bool once(std::size_t in) { return below(in) == 0; }

 private:
  std::uint64_t state_;
};

std::string packet(const std::string& payload, std::size_t announced, int status) {
  std::string text = {0x1B, 0x4E, 2, 0};
  for (unsigned shift = 0; shift < 32; shift += 8)
    text += static_cast<char>((announced >> shift) & 0xFFU);
  text += static_cast<char>(status);
  text += '\0';
  return text + payload;
}

std::string packet(const std::string& payload, int status = 0) {
  return packet(payload, payload.size(), status);
}

std::string noise(Dice& dice, std::size_t length) {
  std::string text;
  while (text.size() < length)
    text += static_cast<char>(dice.below(256));
  return text;
}

// Words of the device, whole and in part, among bytes that are like them.
std::string piece(Dice& dice) {
  const std::string words[] = {kJpeg, "II", "NEWFILE", "JOBDONE", "BLOCK", "TES\n", "LINFO"};
  switch (dice.below(8)) {
    case 0:
      return noise(dice, dice.below(40));
    case 1:
    case 2:
      return kMarker;
    case 3:
      return "." + words[2] + (dice.once(3) ? "x" : "") + (dice.once(3) ? "" : kJpeg);
    case 4:
      return std::string(dice.below(700), static_cast<char>('A' + dice.below(12)));
    case 5:
      return words[dice.below(7)];
    default: {
      const std::string& word = words[dice.below(7)];
      return word.substr(0, dice.below(word.size()));
    }
  }
}

std::string content(Dice& dice) {
  std::string text = dice.once(8) ? "" : "xx" + kJpeg;
  if (dice.once(40)) text.insert(0, "JOBCANCEL");
  for (std::size_t pieces = dice.below(40); pieces > 0; --pieces)
    text += piece(dice);
  return text;
}

// One packet in the transfers that a bus may make of it. No first transfer may have twelve bytes,
// which would make it a packet of another kind and the rest of it no packet at all.
void send(Dice& dice, const std::string& bytes, Transfers& transfers) {
  std::size_t first = dice.once(3) ? 10 + dice.below(bytes.size() - 9) : bytes.size();
  if (first == 12) first = bytes.size();
  transfers.push_back(bytes.substr(0, first));
  for (std::size_t at = first; at < bytes.size();) {
    const std::size_t size = 1 + dice.below(bytes.size() - at);
    if (dice.once(4)) transfers.emplace_back();
    transfers.push_back(bytes.substr(at, size));
    at += size;
  }
}

std::size_t packetSize(Dice& dice) {
  switch (dice.below(5)) {
    case 0:
      return dice.below(4);
    case 1:
      return 498 + dice.below(10);
    case 2:
      return dice.below(1500);
    default:
      return dice.below(60);
  }
}

void sendJunk(Dice& dice, Transfers& transfers) {
  const std::string junk[] = {"",
                              std::string("\x1B\x4E\x02"),
                              packet("ab"),
                              packet("abcdef", 2, 0),
                              packet("ab", 77, 0),
                              noise(dice, 300),
                              "\x1B\x4E\x04" + noise(dice, 30)};
  transfers.push_back(junk[dice.below(7)]);
}

Transfers makeStream(Dice& dice) {
  const std::string text = content(dice);
  Transfers transfers;
  for (std::size_t at = 0; at < text.size();) {
    if (dice.once(6)) sendJunk(dice, transfers);
    const std::size_t size = packetSize(dice);
    send(dice, packet(text.substr(at, size)), transfers);
    at += size;
  }
  if (dice.once(100)) transfers.push_back(packet("more than it says", 16, 0));
  send(dice, packet(dice.once(2) ? "" : "tailJOBDONE", 1), transfers);
  return transfers;
}

// --- The comparison ------------------------------------------------------------------------------

class Differential : public LowEndTest {
 protected:
  // Runs both on the same stream. What the worker leaves of it is not looked at.
  void compare(const Transfers& transfers, bool tiff, const std::vector<std::string>& pages,
               int number) {
    forgetLastJob();
    settings_.colorMode = tiff ? "BlackAndWhite" : "FullColor";
    platform.tiffPages = pages;
    Peer::fileCount(controller) = number;
    for (const std::string& transfer : transfers)
      device.answer(tvrscn::test::Bytes(transfer.begin(), transfer.end()));
    const Outcome expected =
        ObviousWorker(transfers, tiff, pages, number, folder.path().string()).run();
    EXPECT_EQ(work(), expected.result);
    EXPECT_EQ(platform.notifications(), expected.notifications);
    EXPECT_TRUE(files() == expected.files);
    Lines records;
    for (const ScannedRecord& record : Peer::records(controller))
      records.push_back(record.bytes);
    EXPECT_TRUE(records == expected.records);
    device.forget();
  }

 private:
  void forgetLastJob() {
    for (const std::string& name : folder.fileNames())
      std::filesystem::remove(folder.path() / name);
    platform.forgetCalls();
    BasePeer::imageNotified(controller) = false;
  }
  Files files() const {
    Files found;
    for (const std::string& name : folder.fileNames()) {
      const auto bytes = tvrscn::test::readFile(folder.path() / name);
      found[name] = {bytes.begin(), bytes.end()};
    }
    return found;
  }
};

std::uint64_t chosenSeed() {
  const char* chosen = std::getenv("TVRSCN_SEED");
  return chosen != nullptr ? std::strtoull(chosen, nullptr, 10) : kDefaultSeed;
}

TEST_F(Differential, RandomStreams) {
  const std::uint64_t seed = chosenSeed();
  std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
  for (std::uint64_t i = 0; i < kStreams && !HasFailure(); ++i) {
    SCOPED_TRACE("stream " + std::to_string(i) + " of seed " + std::to_string(seed));
    Dice dice(seed + i * 1000003U);
    const bool tiff = dice.once(3);
    std::vector<std::string> pages;
    for (std::size_t count = dice.below(4); count > 0; --count)
      pages.push_back(content(dice));
    const int number = 1 + static_cast<int>(dice.below(200));
    compare(makeStream(dice), tiff, pages, number);
  }
}

// Every marker of the stream, torn at every position, by the end of a packet and by the end of the
// first read within one.
TEST_F(Differential, WordsTornAtEveryPosition) {
  const std::string text = "xII" + kJpeg + "a" + kMarker + kMarker + "bb.NEWFILEx" + kJpeg +
                           "cBLO" + kMarker + "CK" + "0123456789abcdef" + "dJOBDONEe";
  for (std::size_t at = 0; at <= text.size() && !HasFailure(); ++at) {
    SCOPED_TRACE(at);
    compare({packet(text.substr(0, at)), packet(text.substr(at)), packet("", 1)}, false, {}, 1);
    const std::string padded = std::string(502 - at, 'x') + text;
    compare({packet(kJpeg), packet(padded), packet("", 1)}, false, {}, 1);
    compare({packet(kJpeg), packet(text + std::string(600, 'y')), packet(padded, 1)}, true, {}, 1);
  }
}

TEST_F(Differential, WordsTornTwice) {
  const std::string text = kJpeg + kMarker + "a.NEWFILE" + kJpeg + kMarker;
  for (std::size_t first = 0; first <= text.size(); first += 1) {
    for (std::size_t second = first; second <= text.size() && !HasFailure(); second += 3) {
      SCOPED_TRACE(std::to_string(first) + ", " + std::to_string(second));
      compare({packet(text.substr(0, first)), packet(text.substr(first, second - first)),
               packet(text.substr(second)), packet("", 1)},
              false, {}, 1);
    }
  }
}

}  // namespace
