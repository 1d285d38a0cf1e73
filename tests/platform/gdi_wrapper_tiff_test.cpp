// Single pages out of TIFF files of both byte orders, several depths and compressions, whole and
// damaged.
#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <tiffio.h>

#include "tiff_pages_fixture.h"
#include "tvrscn/tevrautil/gdi_wrapper.h"

namespace tvrscn::test {
namespace {

struct CloseTiff {
  void operator()(TIFF* file) const { TIFFClose(file); }
};
using TiffFile = std::unique_ptr<TIFF, CloseTiff>;

struct PageKind {
  const char* name;
  std::uint16_t bits, samples, photometric, compression;
  std::uint32_t rowsPerStrip;  // or the side of a tile
  bool tiled;
};

const PageKind kPageKinds[] = {
    {"1 bit uncompressed", 1, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_NONE, 8, false},
    {"1 bit group 3", 1, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_CCITTFAX3, 50, false},
    {"1 bit group 4", 1, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_CCITTFAX4, 50, false},
    {"1 bit, 0 is black", 1, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_CCITTFAX4, 16, false},
    {"1 bit run lengths", 1, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_CCITTRLE, 16, false},
    {"1 bit LZW", 1, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_LZW, 50, false},
    {"8 bit, 0 is white", 8, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_PACKBITS, 16, false},
    {"8 bit palette", 8, 1, PHOTOMETRIC_PALETTE, COMPRESSION_LZW, 16, false},
    {"8 bit uncompressed", 8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_NONE, 16, false},
    {"8 bit LZW", 8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_LZW, 16, false},
    {"24 bit uncompressed", 8, 3, PHOTOMETRIC_RGB, COMPRESSION_NONE, 7, false},
    {"24 bit LZW", 8, 3, PHOTOMETRIC_RGB, COMPRESSION_LZW, 50, false},
    {"24 bit JPEG", 8, 3, PHOTOMETRIC_YCBCR, COMPRESSION_JPEG, 16, false},
    {"8 bit JPEG", 8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_JPEG, 16, false},
    {"24 bit deflated", 8, 3, PHOTOMETRIC_RGB, COMPRESSION_ADOBE_DEFLATE, 16, false},
    {"24 bit in tiles", 8, 3, PHOTOMETRIC_RGB, COMPRESSION_LZW, 16, true},
};
constexpr const char* kFax = "1 bit group 4";
constexpr std::uint32_t kPageWidth = 37;
constexpr std::uint32_t kPageHeight = 50;

std::uint8_t content(std::size_t byte, std::uint32_t row, unsigned page) {
  return static_cast<std::uint8_t>(byte * 3 + row * 5 + page * 40);
}

const PageKind& kindOf(const std::string& name) {
  for (const PageKind& kind : kPageKinds)
    if (kind.name == name) return kind;
  throw std::invalid_argument("no kind of page: " + name);
}

void writeTiles(TIFF* file, unsigned page) {
  std::vector<std::uint8_t> tile(static_cast<std::size_t>(TIFFTileSize(file)));
  for (std::uint32_t i = 0; i < TIFFNumberOfTiles(file); ++i) {
    for (std::size_t at = 0; at < tile.size(); ++at)
      tile[at] = content(at, i, page);
    TIFFWriteEncodedTile(file, i, tile.data(), static_cast<tmsize_t>(tile.size()));
  }
}

void writeRows(TIFF* file, unsigned page) {
  std::vector<std::uint8_t> row(static_cast<std::size_t>(TIFFScanlineSize(file)));
  for (std::uint32_t y = 0; y < kPageHeight; ++y) {
    for (std::size_t at = 0; at < row.size(); ++at)
      row[at] = content(at, y, page);
    TIFFWriteScanline(file, row.data(), y);
  }
}

void setPalette(TIFF* file) {
  std::vector<std::uint16_t> red(256);
  for (std::size_t i = 0; i < red.size(); ++i)
    red[i] = static_cast<std::uint16_t>(i * 257);
  const std::vector<std::uint16_t> green(red.rbegin(), red.rend());
  TIFFSetField(file, TIFFTAG_COLORMAP, red.data(), green.data(), red.data());
}

void addPage(TIFF* file, const PageKind& kind, unsigned page) {
  TIFFSetField(file, TIFFTAG_IMAGEWIDTH, kPageWidth);
  TIFFSetField(file, TIFFTAG_IMAGELENGTH, kPageHeight);
  TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, kind.bits);
  TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, kind.samples);
  TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(file, TIFFTAG_COMPRESSION, kind.compression);
  TIFFSetField(file, TIFFTAG_PHOTOMETRIC, kind.photometric);
  if (kind.compression == COMPRESSION_JPEG)
    TIFFSetField(file, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  if (kind.tiled) {
    TIFFSetField(file, TIFFTAG_TILEWIDTH, kind.rowsPerStrip);
    TIFFSetField(file, TIFFTAG_TILELENGTH, kind.rowsPerStrip);
  } else {
    TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, kind.rowsPerStrip);
  }
  TIFFSetField(file, TIFFTAG_XRESOLUTION, 200.0 + page);
  TIFFSetField(file, TIFFTAG_YRESOLUTION, 300.5);
  TIFFSetField(file, TIFFTAG_RESOLUTIONUNIT, page % 2 == 0 ? RESUNIT_INCH : RESUNIT_CENTIMETER);
  if (kind.photometric == PHOTOMETRIC_PALETTE) setPalette(file);
  kind.tiled ? writeTiles(file, page) : writeRows(file, page);
  TIFFWriteDirectory(file);
}

void makeTiff(const std::filesystem::path& name, const char* mode,
              const std::vector<std::string>& kinds) {
  const TiffFile file(TIFFOpen(name.c_str(), mode));
  ASSERT_TRUE(file);
  unsigned number = 0;
  for (const std::string& kind : kinds)
    addPage(file.get(), kindOf(kind), number++);
}

template <typename Value>
Value tagOf(TIFF* file, int tag) {
  Value value{};
  TIFFGetFieldDefaulted(file, static_cast<std::uint32_t>(tag), &value);
  return value;
}

Bytes decodedRows(TIFF* file) {
  if (tagOf<std::uint16_t>(file, TIFFTAG_COMPRESSION) == COMPRESSION_JPEG)
    TIFFSetField(file, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  Bytes all;
  if (TIFFIsTiled(file) != 0) {
    Bytes tile(static_cast<std::size_t>(TIFFTileSize(file)));
    for (std::uint32_t i = 0; i < TIFFNumberOfTiles(file); ++i) {
      EXPECT_GT(TIFFReadEncodedTile(file, i, tile.data(), static_cast<tmsize_t>(tile.size())), 0);
      all.insert(all.end(), tile.begin(), tile.end());
    }
    return all;
  }
  Bytes row(static_cast<std::size_t>(TIFFScanlineSize(file)));
  for (std::uint32_t y = 0; y < kPageHeight; ++y) {
    EXPECT_EQ(TIFFReadScanline(file, row.data(), y), 1);
    all.insert(all.end(), row.begin(), row.end());
  }
  return all;
}

// Damaged files are opened on purpose.
class QuietCodec {
 public:
  QuietCodec() : before_(TIFFSetWarningHandler(nullptr)) {}
  QuietCodec(const QuietCodec&) = delete;
  QuietCodec& operator=(const QuietCodec&) = delete;
  ~QuietCodec() { TIFFSetWarningHandler(before_); }

 private:
  TIFFErrorHandler before_;
};

using Palette = std::vector<std::uint16_t>;

// Red, then green, then blue; empty when the page has none.
Palette paletteOf(TIFF* file) {
  std::uint16_t* part[3] = {};
  Palette all;
  if (TIFFGetField(file, TIFFTAG_COLORMAP, &part[0], &part[1], &part[2]) != 1) return all;
  for (const std::uint16_t* const each : part)
    all.insert(all.end(), each, each + 256);
  return all;
}

std::uint32_t splitWithWrapper(const std::wstring& source, const std::wstring& prefix,
                               std::uint32_t firstNumber) {
  GdiWrapper wrapper;
  return wrapper.ConvertMultiPageTIFF2SinglePageTIFF(source, prefix, firstNumber);
}

}  // namespace

void TiffPages::removePages() const {
  for (const std::string& name : folder_.fileNames())
    if (name != "job.tif") std::filesystem::remove(folder_.path() / name);
}

void TiffPages::expectSamePage(unsigned number, unsigned fileNumber) const {
  const QuietCodec quiet;
  const TiffFile in(TIFFOpen(source().c_str(), "r"));
  const TiffFile out(TIFFOpen(pageFile(fileNumber).c_str(), "r"));
  ASSERT_TRUE(in && out);
  ASSERT_EQ(TIFFSetDirectory(in.get(), static_cast<tdir_t>(number)), 1);
  EXPECT_EQ(TIFFNumberOfDirectories(out.get()), 1U);
  EXPECT_EQ(TIFFIsBigEndian(out.get()), TIFFIsBigEndian(in.get()));
  for (const int tag : {TIFFTAG_IMAGEWIDTH, TIFFTAG_IMAGELENGTH})
    EXPECT_EQ(tagOf<std::uint32_t>(out.get(), tag), tagOf<std::uint32_t>(in.get(), tag)) << tag;
  for (const int tag : {TIFFTAG_BITSPERSAMPLE, TIFFTAG_SAMPLESPERPIXEL, TIFFTAG_COMPRESSION,
                        TIFFTAG_PHOTOMETRIC, TIFFTAG_RESOLUTIONUNIT, TIFFTAG_FILLORDER})
    EXPECT_EQ(tagOf<std::uint16_t>(out.get(), tag), tagOf<std::uint16_t>(in.get(), tag)) << tag;
  for (const int tag : {TIFFTAG_XRESOLUTION, TIFFTAG_YRESOLUTION})
    EXPECT_EQ(tagOf<float>(out.get(), tag), tagOf<float>(in.get(), tag)) << tag;
  EXPECT_EQ(paletteOf(out.get()), paletteOf(in.get()));
  EXPECT_EQ(decodedRows(out.get()), decodedRows(in.get()));
}

void TiffPages::expectHarmless(std::uint32_t pages) const {
  const std::vector<std::string> names = folder_.fileNames();
  ASSERT_EQ(names.size(), pages + std::size_t{1});
  std::uintmax_t all = 0;
  for (const std::string& name : names)
    all += std::filesystem::file_size(folder_.path() / name);
  // What pages may share, once more with their directories, and the source itself.
  EXPECT_LE(all, 9 * std::filesystem::file_size(source()));
}

namespace {

// The library on this system.
INSTANTIATE_TEST_SUITE_P(Wrapper, TiffPages,
                         ::testing::Values(TiffSplitter{"wrapper", splitWithWrapper}));

TEST_P(TiffPages, EveryKindKeepsItsPixelsAndTags) {
  for (const char* mode : {"wl", "wb"}) {
    for (const PageKind& kind : kPageKinds) {
      SCOPED_TRACE(std::string(kind.name) + ", " + mode);
      makeTiff(source(), mode, {kind.name});
      ASSERT_EQ(split(1), 1U);
      expectSamePage(0, 1);
    }
  }
}

TEST_P(TiffPages, ManyPagesAreNumberedOnFromTheFirst) {
  for (const char* mode : {"wl", "wb"}) {
    SCOPED_TRACE(mode);
    makeTiff(source(), mode, {kFax, "8 bit uncompressed", "24 bit uncompressed", "24 bit JPEG"});
    ASSERT_EQ(split(7), 4U);
    for (unsigned page = 0; page < 4; ++page)
      expectSamePage(page, 7 + page);
    EXPECT_EQ(folder_.fileNames(),
              (std::vector<std::string>{"Image_10.tif", "Image_7.tif", "Image_8.tif", "Image_9.tif",
                                        "job.tif"}));
  }
}

TEST_P(TiffPages, NumbersGoBeyond32Bits) {
  makeTiff(source(), "wl", {kFax, kFax});
  ASSERT_EQ(split(4294967295U), 2U);
  EXPECT_TRUE(std::filesystem::exists(folder_.path() / "Image_4294967295.tif"));
  EXPECT_TRUE(std::filesystem::exists(folder_.path() / "Image_4294967296.tif"));
}

TEST_P(TiffPages, ReversedBitOrderIsKept) {
  {
    const TiffFile file(TIFFOpen(source().c_str(), "wl"));
    TIFFSetField(file.get(), TIFFTAG_FILLORDER, FILLORDER_LSB2MSB);
    addPage(file.get(), kindOf(kFax), 0);
  }
  ASSERT_EQ(split(1), 1U);
  expectSamePage(0, 1);
}

TEST_P(TiffPages, OtherFilesGiveNoPages) {
  EXPECT_EQ(split(1), 0U) << "no file";
  for (const Bytes& bytes : {Bytes{}, Bytes(1000, 'x'), Bytes{'I', 'I', 42, 0},
                             Bytes{'M', 'M', 0, 42, 0, 0, 0, 0}, makeJpeg({}, 100)}) {
    EXPECT_EQ(splitBytes(bytes), 0U);
  }
  EXPECT_EQ(folder_.fileNames(), std::vector<std::string>{"job.tif"});
}

// Offset of the directory of a page in a little-endian file.
std::uint32_t read32(const Bytes& file, std::size_t at) {
  return static_cast<std::uint32_t>(file[at] | file[at + 1] << 8 | file[at + 2] << 16 |
                                    file[at + 3] << 24);
}

std::size_t directoryOf(const Bytes& file, unsigned page) {
  std::size_t at = read32(file, 4);
  for (; page > 0; --page)
    at = read32(file, at + 2 + 12 * (file[at] | std::size_t{file[at + 1]} << 8));
  return at;
}

// Value field of a tag in a directory.
std::size_t valueOf(const Bytes& file, std::size_t directory, unsigned tag) {
  const std::size_t entries = file[directory] | std::size_t{file[directory + 1]} << 8;
  for (std::size_t i = 0; i < entries; ++i) {
    const std::size_t entry = directory + 2 + 12 * i;
    if ((file[entry] | unsigned{file[entry + 1]} << 8) == tag) return entry + 8;
  }
  ADD_FAILURE() << "no tag " << tag;
  return directory;
}

void put32(Bytes& file, std::size_t at, std::uint32_t value) {
  for (unsigned i = 0; i < 4; ++i)
    file[at + i] = static_cast<std::uint8_t>(value >> 8 * i);
}

struct DamageCase {
  const char* name;
  unsigned tag;
  std::uint32_t value;
};

const DamageCase kDamageCases[] = {
    {"no width", TIFFTAG_IMAGEWIDTH, 0},
    {"no height", TIFFTAG_IMAGELENGTH, 0},
    {"old form of JPEG", TIFFTAG_COMPRESSION, COMPRESSION_OJPEG},
    {"very high", TIFFTAG_IMAGELENGTH, 0xFFFFFFFF},
    {"many samples", TIFFTAG_SAMPLESPERPIXEL, 65535},
    {"many strips", TIFFTAG_ROWSPERSTRIP, 1},
    {"no rows in a strip", TIFFTAG_ROWSPERSTRIP, 0},
    {"data in the header", TIFFTAG_STRIPOFFSETS, 4},
    {"data behind the end", TIFFTAG_STRIPOFFSETS, 0x7FFFFFFF},
    {"more data than the file", TIFFTAG_STRIPBYTECOUNTS, 0x7FFFFFFF},
};

TEST_P(TiffPages, DamagedPageIsLeftOutAndTakesNoNumber) {
  for (const DamageCase& row : kDamageCases) {
    SCOPED_TRACE(row.name);
    makeTiff(source(), "wl", {kFax, kFax, kFax});
    Bytes file = loadBytes(source());
    const std::size_t at = valueOf(file, directoryOf(file, 1), row.tag);
    // The value and, for the tags of 32 bits, all of it; the type becomes LONG.
    file[at - 6] = 4;
    put32(file, at, row.value);
    EXPECT_EQ(splitBytes(file), 2U);
    EXPECT_TRUE(std::filesystem::exists(pageFile(2)));
    EXPECT_FALSE(std::filesystem::exists(pageFile(3)));
    removePages();
  }
}

TEST_P(TiffPages, DirectoryThatLeadsBackEnds) {
  makeTiff(source(), "wl", {kFax, kFax});
  Bytes file = loadBytes(source());
  const std::size_t last = directoryOf(file, 1);
  const std::size_t next = last + 2 + 12 * (file[last] | std::size_t{file[last + 1]} << 8);
  std::copy_n(file.begin() + 4, 4, file.begin() + static_cast<long>(next));
  EXPECT_EQ(splitBytes(file), 2U);
}

TEST_P(TiffPages, FileCutAnywhereGivesThePagesThatAreWhole) {
  makeTiff(source(), "wl", {kFax, "24 bit LZW", "24 bit JPEG"});
  const Bytes whole = loadBytes(source());
  std::uint32_t before = 0;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const std::uint32_t pages = splitBytes(prefix(whole, length));
    ASSERT_GE(pages, before) << "cut at " << length;
    ASSERT_LE(pages, 3U);
    before = pages;
    removePages();
  }
  EXPECT_GE(before, 2U);
}

TEST_P(TiffPages, AnyByteWrongDoesNoHarm) {
  for (const char* const name : {kFax, "24 bit JPEG"}) {
    makeTiff(source(), "wl", {name, name});
    const Bytes whole = loadBytes(source());
    for (std::size_t at = 0; at < whole.size(); ++at) {
      for (const std::uint8_t value : Bytes{0x00, 0xFF}) {
        Bytes file = whole;
        file[at] = value;
        ASSERT_LE(splitBytes(file), 10U) << "byte " << at;
        removePages();
      }
    }
  }
}

// A page of seven strips, the second of which is missing in one way or another.
TEST_P(TiffPages, PageWithoutOneOfItsStripsIsLeftOut) {
  makeTiff(source(), "wl", {"1 bit uncompressed", kFax});
  const Bytes whole = loadBytes(source());
  const std::size_t offsets = valueOf(whole, directoryOf(whole, 0), TIFFTAG_STRIPOFFSETS);
  const std::size_t counts = valueOf(whole, directoryOf(whole, 0), TIFFTAG_STRIPBYTECOUNTS);
  const std::size_t countSize = whole[counts - 6] == TIFF_SHORT ? 2 : 4;
  std::vector<Bytes> damaged(4, whole);
  put32(damaged[0], read32(whole, offsets) + 4, 0x7FFFFFFF);
  put32(damaged[1], read32(whole, offsets) + 4, 0);
  std::fill_n(damaged[2].begin() + static_cast<long>(read32(whole, counts) + countSize), countSize,
              0);
  put32(damaged[3], offsets - 4, 6);  // one entry less
  for (const Bytes& file : damaged) {
    EXPECT_EQ(splitBytes(file), 1U);
    expectSamePage(1, 1);
    removePages();
  }
}

TEST_P(TiffPages, OnlyStripMayLeaveItsLengthUnsaid) {
  for (const char* const kind : {"24 bit LZW", kFax}) {
    makeTiff(source(), "wl", {kind});
    Bytes file = loadBytes(source());
    const std::size_t count = valueOf(file, directoryOf(file, 0), TIFFTAG_STRIPBYTECOUNTS);
    put32(file, count, 0);
    EXPECT_EQ(splitBytes(file), 1U);
    expectSamePage(0, 1);
    put32(file, count - 8, 0xFFF0 | TIFF_LONG << 16);  // another tag: none at all
    EXPECT_EQ(splitBytes(file), 1U);
    expectSamePage(0, 1);
  }
}

TEST_P(TiffPages, DirectoryWithoutEntriesIsNoPage) {
  makeTiff(source(), "wl", {kFax});
  Bytes file = loadBytes(source());
  const std::size_t directory = directoryOf(file, 0);
  put32(file, directory + 2 + 12 * std::size_t{file[directory]},
        static_cast<std::uint32_t>(file.size()));
  file.resize(file.size() + 6);
  EXPECT_EQ(splitBytes(file), 1U);
  put32(file, 4, static_cast<std::uint32_t>(file.size() - 6));
  EXPECT_EQ(splitBytes(file), 0U);
}

TEST_P(TiffPages, NextDirectoryBehindTheEndEnds) {
  makeTiff(source(), "wl", {kFax});
  Bytes file = loadBytes(source());
  const std::size_t directory = directoryOf(file, 0);
  put32(file, directory + 2 + 12 * std::size_t{file[directory]}, 0xFFFFFFF0);
  EXPECT_EQ(splitBytes(file), 1U);
}

// Directories of many entries, each twelve bytes behind the one before: all but a few entries are
// the same bytes. The entries are of no known tag but for those of a small page at the end.
Bytes overlappingDirectories(std::uint32_t entries, std::uint32_t number) {
  constexpr std::uint32_t kStart = 10;  // the only pixel's byte is in front
  Bytes file = {'I', 'I', 42, 0, kStart, 0, 0, 0, 0x80, 0};
  const auto add32 = [&file](std::uint32_t value) {
    file.resize(file.size() + 4);
    put32(file, file.size() - 4, value);
  };
  file.push_back(static_cast<std::uint8_t>(entries));
  file.push_back(static_cast<std::uint8_t>(entries >> 8));
  const std::uint32_t tags[] = {TIFFTAG_IMAGEWIDTH,  TIFFTAG_IMAGELENGTH,     TIFFTAG_COMPRESSION,
                                TIFFTAG_PHOTOMETRIC, TIFFTAG_STRIPBYTECOUNTS, TIFFTAG_STRIPOFFSETS};
  const std::uint32_t fillers = entries - static_cast<std::uint32_t>(std::size(tags));
  for (std::uint32_t i = 0; i < fillers; ++i) {
    add32(65000 | TIFF_LONG << 16);
    add32(1);
    add32(entries << 16);
  }
  for (const std::uint32_t tag : tags) {
    add32(tag | TIFF_SHORT << 16);
    add32(1);
    add32(tag == TIFFTAG_STRIPOFFSETS ? entries << 16 | 8 : entries << 16 | 1);
  }
  // The bytes behind directory k, which tell the next one, begin the last entry of that.
  for (std::uint32_t k = 1; k <= number; ++k) {
    add32(k < number ? kStart + 12 * k : 0);
    add32(1);
    add32(entries << 16);
  }
  return file;
}

TEST_P(TiffPages, DirectoryOfMoreThan4096EntriesIsNone) {
  EXPECT_EQ(splitBytes(overlappingDirectories(65535, 1)), 0U);
  EXPECT_EQ(splitBytes(overlappingDirectories(4097, 1)), 0U);
  EXPECT_EQ(splitBytes(overlappingDirectories(4096, 1)), 1U);
  const TiffFile page(TIFFOpen(pageFile(1).c_str(), "r"));
  ASSERT_TRUE(page);
  EXPECT_EQ(tagOf<std::uint32_t>(page.get(), TIFFTAG_IMAGEWIDTH), 1U);
}

TEST_P(TiffPages, DirectoriesThatShareTheirBytesComeToAnEnd) {
  const std::uint32_t pages = splitBytes(overlappingDirectories(4096, 500));
  EXPECT_GE(pages, 1U);
  EXPECT_LE(pages, 4U);
  expectHarmless(pages);
}

TEST_P(TiffPages, RandomDamageDoesNoHarm) {
  makeTiff(source(), "wl", {kFax, "8 bit palette"});
  const Bytes little = loadBytes(source());
  makeTiff(source(), "wb", {"1 bit uncompressed", "24 bit in tiles"});
  const Bytes big = loadBytes(source());
  std::mt19937 random(20);  // the same damage every time
  for (int round = 0; round < 3000; ++round) {
    Bytes file = round % 2 == 0 ? little : big;
    for (auto changes = random() % 8 + 1; changes > 0; --changes)
      file[random() % file.size()] = static_cast<std::uint8_t>(random());
    if (random() % 4 == 0) file.resize(random() % file.size());
    ASSERT_NO_FATAL_FAILURE(expectHarmless(splitBytes(file))) << "round " << round;
    removePages();
  }
}

TEST_P(TiffPages, NamesMayHaveAnyCharacters) {
  makeTiff(source(), "wl", {kFax});
  const std::filesystem::path folder = folder_.path() / "Ordner \xC3\xA4\xE4\xB8\xAD";
  std::filesystem::create_directory(folder);
  std::filesystem::copy(source(), folder / "\xC5\xBC.tif");
  const std::wstring name = folder_.path().wstring() + L"/Ordner \u00E4\u4E2D/";
  EXPECT_EQ(GetParam().split(name + L"\u017C.tif", name + L"\u00DCbung_", 5), 1U);
  const TiffFile page(TIFFOpen((folder / "\xC3\x9C"
                                         "bung_5.tif")
                                   .c_str(),
                               "r"));
  EXPECT_TRUE(page);
}

TEST_P(TiffPages, PageWhosePlaceIsTakenIsTheEnd) {
  makeTiff(source(), "wl", {kFax, kFax, kFax});
  std::filesystem::create_directory(pageFile(2));
  EXPECT_EQ(split(1), 1U);
  EXPECT_EQ(folder_.fileNames(),
            (std::vector<std::string>{"Image_1.tif", "Image_2.tif", "job.tif"}));
}

TEST_P(TiffPages, SourceIsNotWrittenOver) {
  makeTiff(source(), "wl", {kFax});
  std::filesystem::rename(source(), pageFile(1));
  const Bytes before = loadBytes(pageFile(1));
  EXPECT_EQ(GetParam().split(pageFile(1).wstring(), (folder_.path() / "Image_").wstring(), 1), 0U);
  EXPECT_EQ(loadBytes(pageFile(1)), before);
}

TEST_P(TiffPages, FullDiskLeavesNoHalfPage) {
  makeTiff(source(), "wl", {kFax, "24 bit uncompressed", kFax});
  const FileSizeLimit full(3000);
  EXPECT_EQ(split(1), 1U);
  EXPECT_TRUE(std::filesystem::exists(pageFile(1)));
  EXPECT_FALSE(std::filesystem::exists(pageFile(2)));
}

TEST_P(TiffPages, FolderThatIsMissingGivesNoPages) {
  makeTiff(source(), "wl", {kFax});
  EXPECT_EQ(GetParam().split(source().wstring(), (folder_.path() / "none" / "Image_").wstring(), 1),
            0U);
}

TEST_P(TiffPages, DamageIsNotToldOnStandardError) {
  makeTiff(source(), "wl", {kFax});
  const Bytes file = loadBytes(source());
  testing::internal::CaptureStderr();
  splitBytes(prefix(file, file.size() - 20));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace tvrscn::test
