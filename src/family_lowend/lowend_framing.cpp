// The device's block markers: 18 bytes that begin with "BLOCK" and end with "TES" and a line feed,
// anywhere between the bytes of an image and across the ends of packets.
#include "family_lowend/lowend_framing.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/files.h"
#include "tvrscn/lowend_controller.h"
#include "usb/text.h"

namespace {

constexpr std::size_t kMarkerSize = 18;
// A whole file is searched for the five letters, a single packet, which may be cut, for four.
constexpr std::string_view kFileMarker = "BLOCK";
constexpr std::string_view kPacketMarker = "BLOC";
constexpr std::string_view kMarkerEnd = "TES\n";
constexpr std::string_view kLineInfo = "LINFO";
// Behind less than this, the end of a marker in a packet is the rest of one begun before.
constexpr std::size_t kLongestRest = 19;

constexpr std::string_view kJpegStart = "\xFF\xD8\xFF\xE0";
constexpr std::string_view kTiffStart = "II";

constexpr wchar_t kWorkFile[] = L"temp.bin";
// Of a file at a time: enough to make a transfer cheap, small enough for the processor's cache.
constexpr std::size_t kWindow = 256U * 1024U;

// A name as the cleaning reaches it: by the low byte of each character, in whatever encoding the
// system reads that. One that holds a zero byte then would be another name, and is none here.
std::string narrowedName(const std::wstring& path) {
  std::string name = tvrscn::narrow(path);
  if (name.find('\0') != std::string::npos) name.clear();
  return name;
}

void eraseMarker(std::string& text, std::size_t position) {
  if (text.size() - position < kMarkerSize) {
    throw std::out_of_range("a block marker reaches beyond its packet");
  }
  text.erase(position, kMarkerSize);
}

// The rest of a marker up to its end, which is that of one begun in an earlier packet.
void eraseRest(std::string& text, std::size_t markerEnd) {
  text.erase(0, markerEnd + kMarkerEnd.size());
}

// A packet with the end of a marker and no start. One that comes too late to be the rest of an
// earlier marker changes nothing, and the caller comes back with the same text for ever; the
// volatile access keeps the compiler from taking that loop to end.
void eraseEndOnly(std::string& text, std::size_t markerEnd) {
  const std::size_t lineInfo = text.find(kLineInfo);
  if (lineInfo != std::string::npos) {
    eraseMarker(text, lineInfo);
  } else if (markerEnd < kLongestRest) {
    eraseRest(text, markerEnd);
  } else {
    [[maybe_unused]] const volatile bool unchanged = true;
  }
}

// Copies a file without its markers.
void cleanInto(std::ifstream& input, std::ofstream& output) {
  const auto window = std::make_unique_for_overwrite<char[]>(kWindow);
  const auto write = [&output](std::string_view bytes) {
    output.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  };
  tvrscn::BlockMarkerFilter filter;
  while (input.good()) {
    input.read(window.get(), static_cast<std::streamsize>(kWindow));
    std::string_view bytes(window.get(), static_cast<std::size_t>(input.gcount()));
    while (!bytes.empty())
      write(filter.next(bytes));
  }
  write(filter.finish());
}

// How many letters of the marker's word the bytes end with.
std::size_t lettersAtEnd(std::string_view bytes) {
  std::size_t letters = std::min(bytes.size(), kFileMarker.size() - 1);
  while (!bytes.ends_with(kFileMarker.substr(0, letters)))
    --letters;
  return letters;
}

}  // namespace

namespace tvrscn {

std::size_t findLast(std::string_view text, std::string_view word) {
  std::size_t last = std::string_view::npos;
  for (std::size_t at = text.find(word); at != std::string_view::npos;
       at = text.find(word, at + 1)) {
    last = at;
  }
  return last;
}

std::size_t findImageStart(std::string_view text) {
  const std::size_t jpeg = text.find(kJpegStart);
  return jpeg != std::string_view::npos ? jpeg : text.find(kTiffStart);
}

std::string_view BlockMarkerFilter::next(std::string_view& bytes) {
  while (!bytes.empty()) {
    std::string_view data;
    if (skip_ != 0) {
      const std::size_t skipped = std::min(skip_, bytes.size());
      bytes.remove_prefix(skipped);
      skip_ -= skipped;
    } else if (held_ == 0) {
      data = takePlain(bytes);
    } else if (bytes.front() == kFileMarker[held_]) {
      bytes.remove_prefix(1);
      if (++held_ == kFileMarker.size()) skipMarker();
    } else {
      data = finish();
    }
    if (!data.empty()) return data;
  }
  return {};
}

std::string_view BlockMarkerFilter::finish() {
  skip_ = 0;
  return kFileMarker.substr(0, std::exchange(held_, 0));
}

std::string_view BlockMarkerFilter::takePlain(std::string_view& bytes) {
  const std::size_t marker = bytes.find(kFileMarker);
  std::string_view data = bytes.substr(0, marker);
  if (marker != std::string_view::npos) {
    bytes.remove_prefix(marker + kFileMarker.size());
    skipMarker();
  } else {
    bytes = {};
    held_ = lettersAtEnd(data);
    data.remove_suffix(held_);
  }
  return data;
}

// Its word has been seen.
void BlockMarkerFilter::skipMarker() {
  held_ = 0;
  skip_ = kMarkerSize - kFileMarker.size();
}

std::string workFileName(const std::wstring& imageFolder) {
  return narrowedName(imageFolder + kPathSeparator + kWorkFile);
}

}  // namespace tvrscn

// Not the rule of the file pass: this one sees a packet without its neighbours.
std::string USB_LowEnd_Controller::RemoveBlockBytesFromUSBPackets(const std::string& packet) {
  std::string result = packet;
  for (;;) {
    const std::size_t start = result.find(kPacketMarker);
    const std::size_t end = result.find(kMarkerEnd);
    if (start == std::string::npos && end == std::string::npos) return result;
    if (start == std::string::npos) {
      eraseEndOnly(result, end);
    } else if (end == std::string::npos) {
      result.resize(start);
    } else if (start < end) {
      eraseMarker(result, start);
    } else {
      eraseRest(result, end);
      result.resize(std::min(result.size(), start));  // counted before the rest went
    }
  }
}

void USB_LowEnd_Controller::RemoveBlockToBytesWithNewline(const std::wstring& path) {
  const std::string workFile = tvrscn::workFileName(m_imageFolderPath);
  std::ifstream input(narrowedName(path), std::ios::binary);
  // A folder can be opened on some systems, but never read.
  if (input.is_open()) input.peek();
  if (!input.is_open() || input.bad()) {
    throw std::runtime_error(
        "Exception thrown from RemoveBlockToBytesWithNewline due to Input Image file to process is "
        "not available");
  }
  input.clear();  // an empty file is at its end by now
  std::ofstream output(workFile, std::ios::binary | std::ios::trunc);
  cleanInto(input, output);
  input.close();
  output.close();
  const std::wstring wideWorkFile = tvrscn::widen(workFile);
  CopyFileW(wideWorkFile.c_str(), path.c_str(), 0);
  DeleteFileW(wideWorkFile.c_str());
}
