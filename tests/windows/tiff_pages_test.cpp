// Pages out of TIFF files on Windows. The files are put together by hand, coded data too; the
// system's decoder shows that a page's picture is the one meant.
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"
#include "tests/windows/test_bitmap.h"
#include "tvrscn/tevrautil/gdi_wrapper.h"

namespace tvrscn::test {
namespace {

constexpr unsigned kShort = 3;
constexpr unsigned kLong = 4;
constexpr unsigned kRational = 5;

constexpr unsigned kWidth = 256;
constexpr unsigned kHeight = 257;
constexpr unsigned kBits = 258;
constexpr unsigned kCompression = 259;
constexpr unsigned kPhotometric = 262;
constexpr unsigned kStripOffset = 273;
constexpr unsigned kSamples = 277;
constexpr unsigned kStripLength = 279;
constexpr unsigned kXResolution = 282;
constexpr unsigned kYResolution = 283;
constexpr unsigned kUnit = 296;
constexpr unsigned kColours = 320;

constexpr unsigned kInch = 2;
constexpr unsigned kCentimetre = 3;

struct PageKind {
  const char* name;
  unsigned width, bits, samples, photometric, compression, unit;
  Bytes strip;                   // two rows
  std::array<Bytes, 2> corners;  // blue, green, red at the upper left and the lower right
};

const Bytes kWhite = {255, 255, 255};
const Bytes kBlack = {0, 0, 0};
const Bytes kDark = {10, 10, 10};
const Bytes kLight = {210, 210, 210};
const Bytes k123 = {3, 2, 1};  // red is 1
const Bytes k456 = {6, 5, 4};

// A white row of eight pixels and a black one. A white run of 8 is 10011, one of 0 is 00110101, a
// black run of 8 is 000101.
const Bytes kRuns = {0x98, 0x35, 0x14};  // 10011 000 / 00110101 000101 00
// 000000000001 10011 000000000001 00110101 000101
const Bytes kGroup3 = {0x00, 0x19, 0x80, 0x09, 0xA8, 0xA0};
// 1 / 001 00110101 000101 / 000000000001 000000000001
const Bytes kGroup4 = {0x93, 0x51, 0x40, 0x04, 0x00, 0x40};
// Codes of nine bits between 256 and 257: 0, 255; 10, 20, 200, 210.
const Bytes kLzwBits = {0x80, 0x00, 0x1F, 0xF0, 0x10};
const Bytes kLzwGrey = {0x80, 0x02, 0x82, 0x8C, 0x86, 0x94, 0x04};
const Bytes kColour = {1, 2, 3, 0, 0, 0, 0, 0, 0, 4, 5, 6};
const Bytes kPacked = {2, 1, 2, 3, 0xFB, 0, 2, 4, 5, 6};  // 3 bytes, 6 times 0, 3 bytes

const PageKind kPageKinds[] = {
    {"1 bit, 0 is white", 8, 1, 1, 0, 1, kInch, {0x00, 0xFF}, {kWhite, kBlack}},
    {"1 bit, 0 is black", 8, 1, 1, 1, 1, kCentimetre, {0xFF, 0x00}, {kWhite, kBlack}},
    {"1 bit run lengths", 8, 1, 1, 0, 2, kInch, kRuns, {kWhite, kBlack}},
    {"1 bit group 3", 8, 1, 1, 0, 3, kInch, kGroup3, {kWhite, kBlack}},
    {"1 bit group 4", 8, 1, 1, 0, 4, kCentimetre, kGroup4, {kWhite, kBlack}},
    {"1 bit LZW", 8, 1, 1, 0, 5, kInch, kLzwBits, {kWhite, kBlack}},
    {"8 bit", 2, 8, 1, 1, 1, kInch, {10, 20, 200, 210}, {kDark, kLight}},
    {"8 bit, 0 is white", 2, 8, 1, 0, 1, kInch, {245, 20, 200, 45}, {kDark, kLight}},
    {"8 bit LZW", 2, 8, 1, 1, 5, kCentimetre, kLzwGrey, {kDark, kLight}},
    {"8 bit palette", 2, 8, 1, 3, 1, kInch, {1, 0, 0, 2}, {k123, k456}},
    {"24 bit", 2, 8, 3, 2, 1, kCentimetre, kColour, {k123, k456}},
    {"24 bit, bytes packed", 2, 8, 3, 2, 32773, kInch, kPacked, {k123, k456}},
};

class TiffFile {
 public:
  explicit TiffFile(std::string_view mark) : big_(mark == "MM"), next_(4) {
    bytes_.assign(mark.begin(), mark.end());
    add(2, 42);
    add(4, 0);
  }
  const Bytes& bytes() const { return bytes_; }

  void addPage(const PageKind& kind) {
    const std::size_t strip = append(kind.strip);
    const std::size_t resolution = bytes_.size();
    for (const unsigned part : {600U, 5U, 118U, 1U})
      add(4, part);
    const std::size_t colours = bytes_.size();
    if (kind.photometric == 3) addColours();
    put(next_, static_cast<unsigned>(bytes_.size()));
    add(2, kind.photometric == 3 ? 12 : 11);
    addEntry(kWidth, kShort, 1, kind.width);
    addEntry(kHeight, kShort, 1, 2);
    addEntry(kBits, kShort, 1, kind.bits);
    addEntry(kCompression, kShort, 1, kind.compression);
    addEntry(kPhotometric, kShort, 1, kind.photometric);
    addEntry(kStripOffset, kLong, 1, strip);
    addEntry(kSamples, kShort, 1, kind.samples);
    addEntry(kStripLength, kLong, 1, kind.strip.size());
    addEntry(kXResolution, kRational, 1, resolution);
    addEntry(kYResolution, kRational, 1, resolution + 8);
    addEntry(kUnit, kShort, 1, kind.unit);
    if (kind.photometric == 3) addEntry(kColours, kShort, 768, colours);
    next_ = bytes_.size();
    add(4, 0);
  }

 private:
  std::size_t append(const Bytes& data) {
    const std::size_t at = bytes_.size();
    bytes_.insert(bytes_.end(), data.begin(), data.end());
    bytes_.resize(bytes_.size() + data.size() % 2);
    return at;
  }
  void add(unsigned size, unsigned value) {
    for (unsigned i = 0; i < size; ++i)
      bytes_.push_back(static_cast<std::uint8_t>(value >> 8 * (big_ ? size - 1 - i : i)));
  }
  void put(std::size_t at, unsigned value) {
    for (unsigned i = 0; i < 4; ++i)
      bytes_[at + i] = static_cast<std::uint8_t>(value >> 8 * (big_ ? 3 - i : i));
  }
  void addEntry(unsigned tag, unsigned type, unsigned count, std::size_t value) {
    add(2, tag);
    add(2, type);
    add(4, count);
    const bool inShort = type == kShort && count == 1;
    add(inShort ? 2 : 4, static_cast<unsigned>(value));
    if (inShort) add(2, 0);
  }
  // Colour 1 is 1, 2, 3 and colour 2 is 4, 5, 6 of red, green and blue; the others are black.
  void addColours() {
    for (const unsigned part : {0U, 1U, 2U}) {
      for (unsigned i = 0; i < 256; ++i)
        add(2, i == 1 ? (part + 1) * 257 : i == 2 ? (part + 4) * 257 : 0);
    }
  }

  bool big_;
  std::size_t next_;  // where the place of the next directory goes
  Bytes bytes_;
};

// The numbers in the first directory of a file.
class TiffFacts {
 public:
  explicit TiffFacts(const std::filesystem::path& name) : bytes_(readFile(name)) {}

  std::string mark() const { return std::string(bytes_.begin(), bytes_.begin() + 2); }
  bool hasOnePage() const { return number(directory() + 2 + 12 * entries(), 4) == 0; }
  // The first number of a tag; of a fraction the upper one, or with index 1 the lower one.
  std::size_t value(unsigned tag, std::size_t index = 0) const {
    for (std::size_t i = 0; i < entries(); ++i) {
      const std::size_t entry = directory() + 2 + 12 * i;
      if (number(entry, 2) != tag) continue;
      const std::size_t type = number(entry + 2, 2);
      if (type == kRational) return number(number(entry + 8, 4) + 4 * index, 4);
      return number(entry + 8, type == kShort ? 2 : 4);
    }
    ADD_FAILURE() << "no tag " << tag;
    return 0;
  }
  Bytes strip() const {
    const auto first = bytes_.begin() + static_cast<std::ptrdiff_t>(value(kStripOffset));
    return Bytes(first, first + static_cast<std::ptrdiff_t>(value(kStripLength)));
  }

 private:
  std::size_t directory() const { return number(4, 4); }
  std::size_t entries() const { return number(directory(), 2); }
  std::size_t number(std::size_t at, unsigned size) const {
    std::size_t value = 0;
    for (unsigned i = 0; i < size; ++i)
      value |= std::size_t{bytes_.at(at + i)} << 8 * (bytes_[0] == 'M' ? size - 1 - i : i);
    return value;
  }

  Bytes bytes_;
};

class TiffPages : public testing::Test {
 protected:
  std::filesystem::path page(unsigned number) const {
    return folder_.path() / ("page" + std::to_string(number) + ".tif");
  }
  std::uint32_t split(const Bytes& file, std::uint32_t first) {
    const auto source = folder_.path() / "job.tif";
    writeFile(source, std::string_view(reinterpret_cast<const char*>(file.data()), file.size()));
    return wrapper_.ConvertMultiPageTIFF2SinglePageTIFF(source.wstring(),
                                                        (folder_.path() / "page").wstring(), first);
  }
  void removePages() const {
    for (const std::string& name : folder_.fileNames())
      std::filesystem::remove(folder_.path() / name);
  }
  void expectPage(const PageKind& kind, std::string_view mark, unsigned number) const {
    const TiffFacts facts(page(number));
    EXPECT_EQ(mark, facts.mark());
    EXPECT_TRUE(facts.hasOnePage());
    EXPECT_EQ(kind.width, facts.value(kWidth));
    EXPECT_EQ(2U, facts.value(kHeight));
    EXPECT_EQ(kind.bits, facts.value(kBits));
    EXPECT_EQ(kind.samples, facts.value(kSamples));
    EXPECT_EQ(kind.photometric, facts.value(kPhotometric));
    EXPECT_EQ(kind.compression, facts.value(kCompression));
    EXPECT_EQ(kind.unit, facts.value(kUnit));
    EXPECT_EQ(600U, facts.value(kXResolution));
    EXPECT_EQ(5U, facts.value(kXResolution, 1));
    EXPECT_EQ(118U, facts.value(kYResolution));
    EXPECT_EQ(1U, facts.value(kYResolution, 1));
    EXPECT_EQ(kind.strip, facts.strip());
    const TestBitmap picture(page(number));
    EXPECT_EQ(kind.corners[0], picture.colour(0, 0));
    EXPECT_EQ(kind.corners[1], picture.colour(kind.width - 1, 1));
  }

  GdiWrapper wrapper_;
  TemporaryFolder folder_;
};

Bytes fileOf(std::string_view mark, const std::vector<PageKind>& kinds) {
  TiffFile file(mark);
  for (const PageKind& kind : kinds)
    file.addPage(kind);
  return file.bytes();
}

Bytes fileOfAllKinds(std::string_view mark) {
  return fileOf(mark, {std::begin(kPageKinds), std::end(kPageKinds)});
}

TEST_F(TiffPages, EveryKindKeepsItsPictureAndItsForm) {
  for (const char* const mark : {"II", "MM"}) {
    EXPECT_EQ(std::size(kPageKinds), split(fileOfAllKinds(mark), 7));
    unsigned number = 7;
    for (const PageKind& kind : kPageKinds) {
      SCOPED_TRACE(std::string(kind.name) + ", " + mark);
      expectPage(kind, mark, number++);
    }
    removePages();
  }
}

TEST_F(TiffPages, NumbersGoBeyond32Bits) {
  EXPECT_EQ(2U, split(fileOf("II", {kPageKinds[0], kPageKinds[6]}), 4294967295U));
  EXPECT_EQ((std::vector<std::string>{"job.tif", "page4294967295.tif", "page4294967296.tif"}),
            folder_.fileNames());
}

// The data of a page stand in front of its directory, so each directory that is whole is a page.
TEST_F(TiffPages, FileCutAnywhereGivesThePagesThatAreWhole) {
  const Bytes one = fileOf("MM", {kPageKinds[4]});
  const Bytes two = fileOf("MM", {kPageKinds[4], kPageKinds[6]});
  for (std::size_t length = 0; length < two.size(); ++length) {
    const std::uint32_t pages =
        split(Bytes(two.begin(), two.begin() + static_cast<int>(length)), 1);
    // The last four bytes of a directory only tell of a next one.
    EXPECT_EQ(length < one.size() - 4 ? 0U : length < two.size() - 4 ? 1U : 2U, pages) << length;
    EXPECT_EQ(pages + 1, folder_.fileNames().size());
    removePages();
  }
}

TEST_F(TiffPages, RandomDamageDoesNoHarm) {
  const Bytes whole = fileOfAllKinds("II");
  std::mt19937 random(21);  // the same damage every time
  for (int round = 0; round < 200; ++round) {
    Bytes file = whole;
    for (auto changes = random() % 8 + 1; changes > 0; --changes)
      file[random() % file.size()] = static_cast<std::uint8_t>(random());
    const std::uint32_t pages = split(file, 1);
    EXPECT_EQ(pages + 1, folder_.fileNames().size()) << "round " << round;
    removePages();
  }
}

TEST_F(TiffPages, WhatIsNoTiffGivesNoPages) {
  for (const std::string_view text : {"", "II", "no TIFF file", "II*\0\0\0\0\0"})
    EXPECT_EQ(0U, split(Bytes(text.begin(), text.end()), 0));
  const auto none = (folder_.path() / "none.tif").wstring();
  EXPECT_EQ(0U, wrapper_.ConvertMultiPageTIFF2SinglePageTIFF(none, none, 0));
  EXPECT_EQ(0U, wrapper_.ConvertMultiPageTIFF2SinglePageTIFF(folder_.path().wstring(), none, 0));
  EXPECT_EQ(std::vector<std::string>{"job.tif"}, folder_.fileNames());
}

TEST_F(TiffPages, NamesMayHaveAnyCharacters) {
  const auto folder = folder_.path() / L"Ordner \u00E4\u4E2D";
  std::filesystem::create_directory(folder);
  const Bytes file = fileOf("II", {kPageKinds[4]});
  const auto source = folder / L"\u017C.tif";
  writeFile(source, std::string_view(reinterpret_cast<const char*>(file.data()), file.size()));
  EXPECT_EQ(1U, wrapper_.ConvertMultiPageTIFF2SinglePageTIFF(
                    source.wstring(), (folder / L"\u00DCbung_").wstring(), 5));
  EXPECT_TRUE(std::filesystem::exists(folder / L"\u00DCbung_5.tif"));
}

TEST_F(TiffPages, PageThatCannotBeWrittenIsTheEnd) {
  std::filesystem::create_directory(page(2));
  EXPECT_EQ(1U, split(fileOf("II", {kPageKinds[4], kPageKinds[0], kPageKinds[6]}), 1));
  EXPECT_EQ((std::vector<std::string>{"job.tif", "page1.tif", "page2.tif"}), folder_.fileNames());
  const auto source = (folder_.path() / "job.tif").wstring();
  const auto nowhere = (folder_.path() / "none" / "page").wstring();
  EXPECT_EQ(0U, wrapper_.ConvertMultiPageTIFF2SinglePageTIFF(source, nowhere, 1));
}

// Names are the same in capitals and in small letters here.
TEST_F(TiffPages, SourceIsNotWrittenOver) {
  const Bytes file = fileOf("II", {kPageKinds[4]});
  split(file, 5);
  const auto prefix = (folder_.path() / "PAGE").wstring();
  EXPECT_EQ(0U, wrapper_.ConvertMultiPageTIFF2SinglePageTIFF(page(5).wstring(), prefix, 5));
  EXPECT_EQ(kPageKinds[4].strip, TiffFacts(page(5)).strip());
}

}  // namespace
}  // namespace tvrscn::test
