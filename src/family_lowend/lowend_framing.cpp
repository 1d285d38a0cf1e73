// The device's block markers: 18 bytes that begin with "BLOCK" and end with "TES" and a line feed,
// anywhere between the bytes of an image and across the ends of packets.
#include "family_lowend/lowend_framing.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

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

// Copies what is left of input without its markers.
void cleanInto(std::ifstream& input, std::ofstream& output) {
  const auto window = std::make_unique_for_overwrite<char[]>(kWindow);
  std::size_t held = 0;
  for (bool isEnd = false; !isEnd;) {
    input.read(window.get() + held, static_cast<std::streamsize>(kWindow - held));
    isEnd = !input.good();
    const std::size_t size = held + static_cast<std::size_t>(input.gcount());
    const tvrscn::Cleaned part = tvrscn::removeBlockMarkers(window.get(), size, isEnd);
    output.write(window.get(), static_cast<std::streamsize>(part.kept));
    held = size - part.taken;
    std::memmove(window.get(), window.get() + part.taken, held);
  }
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

Cleaned removeBlockMarkers(char* bytes, std::size_t size, bool isEnd) {
  const std::string_view text(bytes, size);
  std::size_t taken = 0;
  std::size_t kept = 0;
  const auto keepUpTo = [&](std::size_t position) {
    if (kept != taken) std::memmove(bytes + kept, bytes + taken, position - taken);
    kept += position - taken;
    taken = position;
  };
  for (;;) {
    const std::size_t marker = text.find(kFileMarker, taken);
    if (marker == std::string_view::npos) break;
    keepUpTo(marker);
    if (size - marker < kMarkerSize) {
      if (isEnd) taken = size;
      return {taken, kept};
    }
    taken += kMarkerSize;
  }
  // A letter less than the word may be the start of a marker.
  const std::size_t open = isEnd ? 0 : std::min(size - taken, kFileMarker.size() - 1);
  keepUpTo(size - open);
  return {taken, kept};
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
  const std::string workFile = narrowedName(m_imageFolderPath + tvrscn::kPathSeparator + kWorkFile);
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
