// A page's directory is written anew with the values that it had, and its strips or tiles are
// carried over without being decoded. The system's encoder is not asked: it turns grey into a
// palette and centimetres into inches, decodes what it has no compression for, and Wine's leaves
// every page uncompressed.
//
// The file comes from a device: no count or place in it is believed before it is held against the
// file's size, and what is read and written together stays below a multiple of that size, though
// pages may claim each other's bytes.
#include "platform/tevrautil/windows/tiff_pages.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/files.h"

namespace tvrscn::imaging {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kMaxSide = 65535;
constexpr std::uint32_t kMaxPieces = 65535;
constexpr std::uint32_t kMaxSamples = 64;
constexpr std::size_t kMaxEntries = 4096;
constexpr std::uint32_t kMaxPages = 65535;
constexpr std::uint64_t kMaxBytesPerByte = 4;
constexpr std::uint64_t kMaxOffset = 0xFFFFFFFF;
constexpr std::size_t kChunk = std::size_t{64} << 10;

constexpr std::size_t kHeaderSize = 8;
constexpr std::uint16_t kVersion = 42;
constexpr std::size_t kCountSize = 2;  // number of entries, in front of them
constexpr std::size_t kEntrySize = 12;
constexpr std::size_t kNextSize = 4;  // place of the next directory, behind them
constexpr std::size_t kInlineSize = 4;

constexpr std::uint16_t kTypeByte = 1;
constexpr std::uint16_t kTypeShort = 3;
constexpr std::uint16_t kTypeLong = 4;
constexpr std::array<std::uint8_t, 14> kTypeSizes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};

constexpr std::uint16_t kWidth = 256;
constexpr std::uint16_t kLength = 257;
constexpr std::uint16_t kBitsPerSample = 258;
constexpr std::uint16_t kCompression = 259;
constexpr std::uint16_t kStripOffsets = 273;
constexpr std::uint16_t kSamplesPerPixel = 277;
constexpr std::uint16_t kRowsPerStrip = 278;
constexpr std::uint16_t kStripByteCounts = 279;
constexpr std::uint16_t kPlanarConfiguration = 284;
constexpr std::uint16_t kTileWidth = 322;
constexpr std::uint16_t kTileLength = 323;
constexpr std::uint16_t kTileOffsets = 324;
constexpr std::uint16_t kTileByteCounts = 325;

constexpr std::uint32_t kUncompressed = 1;
constexpr std::uint32_t kPlanesApart = 2;
// The old form of JPEG in TIFF points at places in the file that a copy would not have.
constexpr std::uint32_t kOldJpeg = 6;

struct TagRow {
  std::uint16_t tag;
  bool needed;  // without its value, where the page names it, the pixels would come out wrong
};

// What goes into a page's file: not the tags that tell of other pages, and none of unknown meaning,
// which might point into the old file.
constexpr TagRow kTags[] = {
    {kWidth, true},
    {kLength, true},
    {kBitsPerSample, true},
    {kCompression, true},
    {262, true},   // photometric interpretation
    {263, false},  // thresholding
    {266, true},   // fill order
    {269, false},  // document name
    {270, false},  // image description
    {271, false},  // make
    {272, false},  // model
    {kStripOffsets, true},
    {274, false},  // orientation
    {kSamplesPerPixel, true},
    {kRowsPerStrip, true},
    {kStripByteCounts, true},
    {280, false},  // min sample value
    {281, false},  // max sample value
    {282, false},  // x resolution
    {283, false},  // y resolution
    {kPlanarConfiguration, true},
    {285, false},  // page name
    {286, false},  // x position
    {287, false},  // y position
    {292, true},   // options of group 3
    {293, true},   // options of group 4
    {296, false},  // resolution unit
    {305, false},  // software
    {306, false},  // date and time
    {315, false},  // artist
    {316, false},  // host computer
    {317, true},   // predictor
    {320, true},   // colour map
    {kTileWidth, true},
    {kTileLength, true},
    {kTileOffsets, true},
    {kTileByteCounts, true},
    {332, false},  // ink set
    {338, true},   // extra samples
    {339, true},   // sample format
    {347, true},   // JPEG tables
    {530, true},   // subsampling of YCbCr
    {532, false},  // reference black and white
};

const TagRow* findTag(std::uint16_t tag) {
  const auto* const row = std::find_if(std::begin(kTags), std::end(kTags),
                                       [tag](const TagRow& each) { return each.tag == tag; });
  return row == std::end(kTags) ? nullptr : row;
}

// The byte order of a file, which its pages keep.
class Order {
 public:
  explicit Order(bool big = false) : big_(big) {}
  bool big() const { return big_; }
  std::uint16_t get16(const std::uint8_t* at) const {
    return static_cast<std::uint16_t>(big_ ? at[0] << 8 | at[1] : at[1] << 8 | at[0]);
  }
  std::uint32_t get32(const std::uint8_t* at) const {
    const std::uint32_t first = get16(at);
    const std::uint32_t second = get16(at + 2);
    return big_ ? first << 16 | second : second << 16 | first;
  }
  void add16(Bytes& out, std::uint32_t value) const { add(out, value, 2); }
  void add32(Bytes& out, std::uint32_t value) const { add(out, value, 4); }

 private:
  void add(Bytes& out, std::uint32_t value, unsigned size) const {
    for (unsigned i = 0; i < size; ++i)
      out.push_back(static_cast<std::uint8_t>(value >> 8 * (big_ ? size - 1 - i : i)));
  }

  bool big_;
};

class Source {
 public:
  explicit Source(const std::filesystem::path& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error) return;
    file_.open(path, std::ios::binary);
    if (file_.is_open()) size_ = size;
  }
  std::uint64_t size() const { return size_; }
  bool read(std::uint64_t offset, std::uint8_t* data, std::size_t length) {
    if (offset > size_ || length > size_ - offset) return false;
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(offset));
    file_.read(reinterpret_cast<char*>(data), static_cast<std::streamsize>(length));
    return file_.good();
  }

 private:
  std::ifstream file_;
  std::uint64_t size_ = 0;
};

struct Entry {
  std::uint16_t type = 0;
  std::uint32_t count = 0;
  Bytes value;  // in the order of the file

  // Elements of other types than the unsigned ones read as 0.
  std::uint32_t at(std::size_t index, const Order& order) const {
    if (index >= count) return 0;
    if (type == kTypeByte) return value[index];
    if (type == kTypeShort) return order.get16(&value[index * 2]);
    return type == kTypeLong ? order.get32(&value[index * 4]) : 0;
  }
};
using Page = std::map<std::uint16_t, Entry>;  // by tag, as a directory has to be

std::size_t sizeBehindDirectory(const Entry& entry) {
  const std::size_t size = entry.value.size();
  return size > kInlineSize ? size + size % 2 : 0;  // values begin at even places
}

// A directory and the values behind it; what follows is the page's data.
std::uint64_t sizeInFront(const Page& page) {
  std::uint64_t size = kHeaderSize + kCountSize + kEntrySize * page.size() + kNextSize;
  for (const auto& [tag, entry] : page)
    size += sizeBehindDirectory(entry);
  return size;
}

Bytes encodeFront(const Page& page, const Order& order) {
  Bytes out(2, order.big() ? 'M' : 'I');
  order.add16(out, kVersion);
  order.add32(out, kHeaderSize);
  order.add16(out, static_cast<std::uint32_t>(page.size()));
  Bytes behind;
  const std::size_t behindAt = kHeaderSize + kCountSize + kEntrySize * page.size() + kNextSize;
  for (const auto& [tag, entry] : page) {
    order.add16(out, tag);
    order.add16(out, entry.type);
    order.add32(out, entry.count);
    const bool isInline = entry.value.size() <= kInlineSize;
    if (!isInline) order.add32(out, static_cast<std::uint32_t>(behindAt + behind.size()));
    Bytes& place = isInline ? out : behind;
    const std::size_t size = isInline ? kInlineSize : sizeBehindDirectory(entry);
    place.insert(place.end(), entry.value.begin(), entry.value.end());
    place.resize(place.size() + size - entry.value.size());
  }
  order.add32(out, 0);  // no next page
  out.insert(out.end(), behind.begin(), behind.end());
  return out;
}

std::uint32_t scalar(const Page& page, std::uint16_t tag, std::uint32_t unsaid,
                     const Order& order) {
  const auto found = page.find(tag);
  return found == page.end() ? unsaid : found->second.at(0, order);
}

// How the page is cut into strips or tiles.
struct Layout {
  bool tiled = false;
  std::uint64_t pieces = 0;
  std::uint64_t bytes = 0;  // of the whole page when its data are not compressed
};

std::uint64_t divideUp(std::uint64_t value, std::uint64_t by) {
  return (value + by - 1) / by;
}

bool readLayout(const Page& page, const Order& order, Layout& layout) {
  const std::uint64_t width = scalar(page, kWidth, 0, order);
  const std::uint64_t length = scalar(page, kLength, 0, order);
  if (width == 0 || width > kMaxSide || length == 0 || length > kMaxSide) return false;
  if (scalar(page, kCompression, kUncompressed, order) == kOldJpeg) return false;
  layout.tiled = page.count(kTileWidth) > 0;
  const std::uint64_t across = layout.tiled ? scalar(page, kTileWidth, 0, order) : width;
  const std::uint64_t down = layout.tiled ? scalar(page, kTileLength, 0, order)
                                          : scalar(page, kRowsPerStrip, kMaxSide, order);
  if (across == 0 || down == 0) return false;
  const std::uint64_t samples = scalar(page, kSamplesPerPixel, 1, order);
  const bool apart = scalar(page, kPlanarConfiguration, 1, order) == kPlanesApart;
  layout.pieces = divideUp(width, across) * divideUp(length, down) * (apart ? samples : 1);
  const std::uint64_t bits = scalar(page, kBitsPerSample, 1, order);
  if (samples > kMaxSamples || bits > kMaxSide) return false;
  layout.bytes = divideUp(width * samples * bits, 8) * length;
  return layout.pieces > 0 && layout.pieces <= kMaxPieces;
}

struct Piece {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
};

enum class PageResult { kWritten, kDamaged, kCannotWrite };

class Splitter {
 public:
  explicit Splitter(const std::filesystem::path& source)
      : path_(source), source_(path_), budget_(source_.size() * kMaxBytesPerByte) {}

  std::uint32_t split(const std::wstring& prefix, std::uint32_t firstNumber);

 private:
  bool readHeader(std::uint32_t& directory);
  bool readDirectory(std::uint32_t offset, Page& page, std::uint32_t& next, bool& whole);
  bool readValue(const std::uint8_t* record, Entry& entry);
  bool findPieces(const Page& page, const Layout& layout, std::vector<Piece>& pieces);
  void setPieces(Page& page, const Layout& layout, const std::vector<Piece>& pieces) const;
  PageResult copyPage(Page& page, const std::filesystem::path& name);
  PageResult writePage(const Page& page, const std::vector<Piece>& pieces, std::ofstream& out);
  bool spend(std::uint64_t bytes);

  std::filesystem::path path_;
  Source source_;
  Order order_;
  std::uint64_t budget_;
};

bool Splitter::spend(std::uint64_t bytes) {
  if (bytes > budget_) return false;
  budget_ -= bytes;
  return true;
}

bool Splitter::readHeader(std::uint32_t& directory) {
  std::array<std::uint8_t, kHeaderSize> header = {};
  if (!source_.read(0, header.data(), header.size())) return false;
  if (header[0] != header[1] || (header[0] != 'I' && header[0] != 'M')) return false;
  order_ = Order(header[0] == 'M');
  directory = order_.get32(&header[4]);
  return order_.get16(&header[2]) == kVersion;
}

bool Splitter::readValue(const std::uint8_t* record, Entry& entry) {
  entry.type = order_.get16(record + 2);
  entry.count = order_.get32(record + 4);
  if (entry.type >= kTypeSizes.size() || entry.count == 0) return false;
  const std::uint64_t size = std::uint64_t{kTypeSizes[entry.type]} * entry.count;
  if (size == 0 || size > source_.size()) return false;
  const std::uint8_t* const inside = record + kEntrySize - kInlineSize;
  if (size <= kInlineSize) {
    entry.value.assign(inside, inside + size);
    return true;
  }
  if (!spend(size)) return false;
  entry.value.resize(size);
  return source_.read(order_.get32(inside), entry.value.data(), size);
}

// False when there is no directory; `whole` tells whether the page's values could be had.
bool Splitter::readDirectory(std::uint32_t offset, Page& page, std::uint32_t& next, bool& whole) {
  std::array<std::uint8_t, kNextSize> bytes = {};
  if (!source_.read(offset, bytes.data(), kCountSize)) return false;
  const std::size_t entries = order_.get16(bytes.data());
  if (entries > kMaxEntries) return false;
  Bytes records(entries * kEntrySize);
  const std::uint64_t start = std::uint64_t{offset} + kCountSize;
  if (!spend(kCountSize + records.size()) || !source_.read(start, records.data(), records.size()))
    return false;
  const bool more = source_.read(start + records.size(), bytes.data(), bytes.size());
  next = more ? order_.get32(bytes.data()) : 0;
  whole = true;
  for (std::size_t at = 0; at < records.size(); at += kEntrySize) {
    const std::uint16_t tag = order_.get16(&records[at]);
    const TagRow* const row = findTag(tag);
    if (row == nullptr || page.count(tag) > 0) continue;
    Entry entry;
    if (readValue(&records[at], entry))
      page.emplace(tag, std::move(entry));
    else if (row->needed)
      whole = false;
  }
  return true;
}

// The only piece of a page may leave its length unsaid.
bool Splitter::findPieces(const Page& page, const Layout& layout, std::vector<Piece>& pieces) {
  const auto offsets = page.find(layout.tiled ? kTileOffsets : kStripOffsets);
  const auto counts = page.find(layout.tiled ? kTileByteCounts : kStripByteCounts);
  if (offsets == page.end() || offsets->second.count < layout.pieces) return false;
  const bool compressed = scalar(page, kCompression, kUncompressed, order_) != kUncompressed;
  for (std::size_t i = 0; i < layout.pieces; ++i) {
    Piece piece{offsets->second.at(i, order_), 0};
    if (piece.offset < kHeaderSize || piece.offset > source_.size()) return false;
    const std::uint64_t left = source_.size() - piece.offset;
    if (counts != page.end()) piece.length = counts->second.at(i, order_);
    if (piece.length == 0 && layout.pieces == 1) piece.length = compressed ? left : layout.bytes;
    if (piece.length == 0 || piece.length > left || !spend(piece.length)) return false;
    pieces.push_back(piece);
  }
  return true;
}

// Tells the page where its pieces will stand in its own file.
void Splitter::setPieces(Page& page, const Layout& layout, const std::vector<Piece>& pieces) const {
  for (const std::uint16_t tag : {kStripOffsets, kStripByteCounts, kTileOffsets, kTileByteCounts})
    page.erase(tag);
  Entry& offsets = page[layout.tiled ? kTileOffsets : kStripOffsets];
  Entry& counts = page[layout.tiled ? kTileByteCounts : kStripByteCounts];
  offsets.type = counts.type = kTypeLong;
  offsets.count = counts.count = static_cast<std::uint32_t>(pieces.size());
  for (const Piece& piece : pieces)
    order_.add32(counts.value, static_cast<std::uint32_t>(piece.length));
  offsets.value = counts.value;  // of the size that it will have
  std::uint64_t at = sizeInFront(page);
  offsets.value.clear();
  for (const Piece& piece : pieces) {
    order_.add32(offsets.value, static_cast<std::uint32_t>(at));
    at += piece.length;
  }
}

PageResult Splitter::writePage(const Page& page, const std::vector<Piece>& pieces,
                               std::ofstream& out) {
  const auto write = [&out](const Bytes& bytes, std::size_t length) {
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(length));
    return out.good();
  };
  const Bytes front = encodeFront(page, order_);
  if (!write(front, front.size())) return PageResult::kCannotWrite;
  Bytes chunk(kChunk);
  for (const Piece& piece : pieces) {
    for (std::uint64_t done = 0; done < piece.length;) {
      const auto length =
          static_cast<std::size_t>(std::min<std::uint64_t>(kChunk, piece.length - done));
      if (!source_.read(piece.offset + done, chunk.data(), length)) return PageResult::kDamaged;
      if (!write(chunk, length)) return PageResult::kCannotWrite;
      done += length;
    }
  }
  out.close();
  return out.fail() ? PageResult::kCannotWrite : PageResult::kWritten;
}

PageResult Splitter::copyPage(Page& page, const std::filesystem::path& name) {
  Layout layout;
  std::vector<Piece> pieces;
  if (!readLayout(page, order_, layout) || !findPieces(page, layout, pieces))
    return PageResult::kDamaged;
  setPieces(page, layout, pieces);
  std::uint64_t size = sizeInFront(page);
  for (const Piece& piece : pieces)
    size += piece.length;
  if (size > kMaxOffset) return PageResult::kDamaged;
  std::error_code error;
  if (std::filesystem::equivalent(path_, name, error)) return PageResult::kCannotWrite;
  std::ofstream out(name, std::ios::binary);
  if (!out.is_open()) return PageResult::kCannotWrite;
  const PageResult result = writePage(page, pieces, out);
  if (result != PageResult::kWritten) {
    out.close();
    std::filesystem::remove(name, error);
  }
  return result;
}

std::uint32_t Splitter::split(const std::wstring& prefix, std::uint32_t firstNumber) {
  std::uint32_t directory = 0;
  if (!readHeader(directory)) return 0;
  std::set<std::uint32_t> seen;
  std::uint32_t written = 0;
  while (directory != 0 && seen.size() < kMaxPages && seen.insert(directory).second) {
    Page page;
    bool whole = false;
    if (!readDirectory(directory, page, directory, whole)) break;
    PageResult result = PageResult::kDamaged;
    const std::uint64_t number = std::uint64_t{firstNumber} + written;
    if (whole) result = copyPage(page, systemPath(prefix + std::to_wstring(number) + L".tif"));
    if (result == PageResult::kCannotWrite) break;
    if (result == PageResult::kWritten) ++written;
  }
  return written;
}

}  // namespace

std::uint32_t splitTiffPages(const std::wstring& source, const std::wstring& prefix,
                             std::uint32_t firstNumber) {
  return Splitter(systemPath(source)).split(prefix, firstNumber);
}

}  // namespace tvrscn::imaging
