// Single pages out of TIFF files of both byte orders, several depths and compressions, whole and
// damaged.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <tiffio.h>

#include "imaging_test_support.h"
#include "tests/support/temporary_folder.h"
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
    {"8 bit uncompressed", 8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_NONE, 16, false},
    {"8 bit LZW", 8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_LZW, 16, false},
    {"24 bit uncompressed", 8, 3, PHOTOMETRIC_RGB, COMPRESSION_NONE, 7, false},
    {"24 bit LZW", 8, 3, PHOTOMETRIC_RGB, COMPRESSION_LZW, 50, false},
    {"24 bit JPEG", 8, 3, PHOTOMETRIC_YCBCR, COMPRESSION_JPEG, 16, false},
    {"8 bit JPEG", 8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_JPEG, 16, false},
    {"24 bit in tiles", 8, 3, PHOTOMETRIC_RGB, COMPRESSION_LZW, 16, true},
};
constexpr std::uint32_t kPageWidth = 37;
constexpr std::uint32_t kPageHeight = 50;

std::uint8_t content(std::size_t byte, std::uint32_t row, unsigned page) {
  return static_cast<std::uint8_t>(byte * 3 + row * 5 + page * 40);
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
  kind.tiled ? writeTiles(file, page) : writeRows(file, page);
  TIFFWriteDirectory(file);
}

void makeTiff(const std::filesystem::path& name, const char* mode,
              const std::vector<const PageKind*>& pages) {
  const TiffFile file(TIFFOpen(name.c_str(), mode));
  ASSERT_TRUE(file);
  unsigned number = 0;
  for (const PageKind* const kind : pages)
    addPage(file.get(), *kind, number++);
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

class TiffPages : public ::testing::Test {
 protected:
  std::filesystem::path source() const { return folder_.path() / "job.tif"; }
  std::filesystem::path pageFile(unsigned number) const {
    return folder_.path() / ("Image_" + std::to_string(number) + ".tif");
  }
  std::uint32_t split(std::uint32_t first) {
    GdiWrapper wrapper;
    return wrapper.ConvertMultiPageTIFF2SinglePageTIFF(
        source().wstring(), (folder_.path() / "Image_").wstring(), first);
  }
  void removePages() {
    for (const std::string& name : folder_.fileNames())
      if (name != "job.tif") std::filesystem::remove(folder_.path() / name);
  }
  // Page `number` of the source against the only page of its file.
  void expectSamePage(unsigned number, unsigned fileNumber) {
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
    EXPECT_EQ(decodedRows(out.get()), decodedRows(in.get()));
  }

  TemporaryFolder folder_;
};

TEST_F(TiffPages, EveryKindKeepsItsPixelsAndTags) {
  for (const char* mode : {"wl", "wb"}) {
    for (const PageKind& kind : kPageKinds) {
      SCOPED_TRACE(std::string(kind.name) + ", " + mode);
      makeTiff(source(), mode, {&kind});
      ASSERT_EQ(split(1), 1U);
      expectSamePage(0, 1);
    }
  }
}

TEST_F(TiffPages, ManyPagesAreNumberedOnFromTheFirst) {
  for (const char* mode : {"wl", "wb"}) {
    SCOPED_TRACE(mode);
    makeTiff(source(), mode, {&kPageKinds[2], &kPageKinds[4], &kPageKinds[6], &kPageKinds[8]});
    ASSERT_EQ(split(7), 4U);
    for (unsigned page = 0; page < 4; ++page)
      expectSamePage(page, 7 + page);
    EXPECT_EQ(folder_.fileNames(),
              (std::vector<std::string>{"Image_10.tif", "Image_7.tif", "Image_8.tif", "Image_9.tif",
                                        "job.tif"}));
  }
}

TEST_F(TiffPages, NumbersGoBeyond32Bits) {
  makeTiff(source(), "wl", {&kPageKinds[2], &kPageKinds[2]});
  ASSERT_EQ(split(4294967295U), 2U);
  EXPECT_TRUE(std::filesystem::exists(folder_.path() / "Image_4294967295.tif"));
  EXPECT_TRUE(std::filesystem::exists(folder_.path() / "Image_4294967296.tif"));
}

TEST_F(TiffPages, ReversedBitOrderIsKept) {
  {
    const TiffFile file(TIFFOpen(source().c_str(), "wl"));
    TIFFSetField(file.get(), TIFFTAG_FILLORDER, FILLORDER_LSB2MSB);
    addPage(file.get(), kPageKinds[2], 0);
  }
  ASSERT_EQ(split(1), 1U);
  expectSamePage(0, 1);
}

TEST_F(TiffPages, OtherFilesGiveNoPages) {
  EXPECT_EQ(split(1), 0U) << "no file";
  for (const Bytes& bytes : {Bytes{}, Bytes(1000, 'x'), Bytes{'I', 'I', 42, 0},
                             Bytes{'M', 'M', 0, 42, 0, 0, 0, 0}, makeJpeg({}, 100)}) {
    storeBytes(source(), bytes);
    EXPECT_EQ(split(1), 0U);
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

struct DamageCase {
  const char* name;
  unsigned tag;
  std::uint32_t value;
};

const DamageCase kDamageCases[] = {
    {"no width", TIFFTAG_IMAGEWIDTH, 0},
    {"no height", TIFFTAG_IMAGELENGTH, 0},
    {"very high", TIFFTAG_IMAGELENGTH, 0xFFFFFFFF},
    {"data behind the end", TIFFTAG_STRIPOFFSETS, 0x7FFFFFFF},
    {"more data than the file", TIFFTAG_STRIPBYTECOUNTS, 0x7FFFFFFF},
};

TEST_F(TiffPages, DamagedPageIsLeftOutAndTakesNoNumber) {
  for (const DamageCase& row : kDamageCases) {
    SCOPED_TRACE(row.name);
    makeTiff(source(), "wl", {&kPageKinds[2], &kPageKinds[2], &kPageKinds[2]});
    Bytes file = loadBytes(source());
    const std::size_t at = valueOf(file, directoryOf(file, 1), row.tag);
    // The value and, for the tags of 32 bits, all of it; the type becomes LONG.
    file[at - 6] = 4;
    for (unsigned i = 0; i < 4; ++i)
      file[at + i] = static_cast<std::uint8_t>(row.value >> 8 * i);
    storeBytes(source(), file);
    EXPECT_EQ(split(1), 2U);
    EXPECT_TRUE(std::filesystem::exists(pageFile(2)));
    EXPECT_FALSE(std::filesystem::exists(pageFile(3)));
    removePages();
  }
}

TEST_F(TiffPages, DirectoryThatLeadsBackEnds) {
  makeTiff(source(), "wl", {&kPageKinds[2], &kPageKinds[2]});
  Bytes file = loadBytes(source());
  const std::size_t last = directoryOf(file, 1);
  const std::size_t next = last + 2 + 12 * (file[last] | std::size_t{file[last + 1]} << 8);
  std::copy_n(file.begin() + 4, 4, file.begin() + static_cast<long>(next));
  storeBytes(source(), file);
  EXPECT_EQ(split(1), 2U);
}

TEST_F(TiffPages, FileCutAnywhereGivesThePagesThatAreWhole) {
  makeTiff(source(), "wl", {&kPageKinds[2], &kPageKinds[7], &kPageKinds[8]});
  const Bytes whole = loadBytes(source());
  std::uint32_t before = 0;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    storeBytes(source(), prefix(whole, length));
    const std::uint32_t pages = split(1);
    ASSERT_GE(pages, before) << "cut at " << length;
    ASSERT_LE(pages, 3U);
    before = pages;
    removePages();
  }
  EXPECT_GE(before, 2U);
}

TEST_F(TiffPages, AnyByteWrongDoesNoHarm) {
  for (const PageKind& kind : {kPageKinds[2], kPageKinds[8]}) {
    makeTiff(source(), "wl", {&kind, &kind});
    const Bytes whole = loadBytes(source());
    for (std::size_t at = 0; at < whole.size(); ++at) {
      for (const std::uint8_t value : Bytes{0x00, 0xFF}) {
        Bytes file = whole;
        file[at] = value;
        storeBytes(source(), file);
        ASSERT_LE(split(1), 10U) << "byte " << at;
        removePages();
      }
    }
  }
}

TEST_F(TiffPages, FullDiskLeavesNoHalfPage) {
  const PageKind large{"large", 8, 3, PHOTOMETRIC_RGB, COMPRESSION_NONE, 50, false};
  makeTiff(source(), "wl", {&kPageKinds[2], &large, &kPageKinds[2]});
  const FileSizeLimit full(3000);
  EXPECT_EQ(split(1), 1U);
  EXPECT_TRUE(std::filesystem::exists(pageFile(1)));
  EXPECT_FALSE(std::filesystem::exists(pageFile(2)));
}

TEST_F(TiffPages, FolderThatIsMissingGivesNoPages) {
  makeTiff(source(), "wl", {&kPageKinds[2]});
  GdiWrapper wrapper;
  EXPECT_EQ(wrapper.ConvertMultiPageTIFF2SinglePageTIFF(
                source().wstring(), (folder_.path() / "none" / "Image_").wstring(), 1),
            0U);
}

TEST_F(TiffPages, DamageIsNotToldOnStandardError) {
  makeTiff(source(), "wl", {&kPageKinds[2]});
  Bytes file = loadBytes(source());
  file = prefix(file, file.size() - 20);
  storeBytes(source(), file);
  testing::internal::CaptureStderr();
  split(1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace tvrscn::test
