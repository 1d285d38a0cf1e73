// JPEG files in and out: formats, resolution, damage of every kind, and what saving leaves behind.
#include <algorithm>

#include <gtest/gtest.h>

#include "imaging_test_support.h"
#include "tests/support/temporary_folder.h"

namespace tvrscn::test {
namespace {

using namespace Gdiplus;

class JpegFile : public ::testing::Test {
 protected:
  std::filesystem::path store(const Bytes& bytes) {
    const auto file = folder_.path() / "strip.jpg";
    storeBytes(file, bytes);
    return file;
  }
  std::filesystem::path page() const { return folder_.path() / "page.jpg"; }

  TemporaryFolder folder_;
};

using JpegDecoding = JpegFile;
using JpegSaving = JpegFile;

void expectNear(const Bytes& pixels, const Bytes& expected, int tolerance) {
  ASSERT_EQ(pixels.size(), expected.size());
  for (std::size_t i = 0; i < pixels.size(); ++i)
    ASSERT_NEAR(pixels[i], expected[i], tolerance) << "byte " << i;
}

// A level of grey survives at quality 100: its only coefficient is divided by 1.
TEST_F(JpegDecoding, GreyIsEightBit) {
  const TestBitmap bitmap(
      store(makeJpeg({.width = 9, .height = 3, .channels = 1, .quality = 100}, 200)));
  ASSERT_EQ(bitmap.status(), Ok);
  EXPECT_EQ(bitmap.inside().format(), PixelFormat8bppIndexed);
  EXPECT_EQ(bitmap.inside().width(), 9U);
  EXPECT_EQ(bitmap.inside().height(), 3U);
  EXPECT_EQ(bitmap.pixels(), Bytes(27, 200));
}

TEST_F(JpegDecoding, ColourIsBlueGreenRed) {
  const auto orange = [](unsigned, unsigned, int channel) {
    return channel == 0 ? 250U : channel == 1 ? 120U : 10U;
  };
  const TestBitmap bitmap(store(makeJpeg({.width = 1, .height = 2, .quality = 100}, orange)));
  ASSERT_EQ(bitmap.status(), Ok);
  EXPECT_EQ(bitmap.inside().format(), PixelFormat24bppRGB);
  expectNear(bitmap.pixels(), {10, 120, 250, 10, 120, 250}, 2);
}

TEST_F(JpegDecoding, RowsAndColumnsKeepTheirPlace) {
  // Blocks of 8 pixels, so that each is flat: 10 20 / 30 40 times 5.
  const auto quarter = [](unsigned x, unsigned y, int) { return 50 * (1 + x / 8 + 2 * (y / 8)); };
  const TestBitmap bitmap(store(makeJpeg({.channels = 1, .quality = 100}, quarter)));
  ASSERT_EQ(bitmap.status(), Ok);
  EXPECT_EQ(bitmap.grey(7, 7), 50);
  EXPECT_EQ(bitmap.grey(8, 7), 100);
  EXPECT_EQ(bitmap.grey(7, 8), 150);
  EXPECT_EQ(bitmap.grey(8, 8), 200);
}

// Adobe's programs store ink inverted: 255 is none of it. Red times black: 200 * 128 / 255 = 100.4.
TEST_F(JpegDecoding, InkBecomesColour) {
  const auto ink = [](unsigned, unsigned, int channel) {
    const unsigned levels[] = {200, 100, 0, 128};
    return levels[channel];
  };
  const TestBitmap bitmap(
      store(makeJpeg({.width = 1, .height = 1, .channels = 4, .quality = 100}, ink)));
  ASSERT_EQ(bitmap.status(), Ok);
  EXPECT_EQ(bitmap.inside().format(), PixelFormat24bppRGB);
  expectNear(bitmap.pixels(), {0, 50, 100}, 2);
}

TEST_F(JpegDecoding, ProgressiveFileIsRead) {
  const TestBitmap bitmap(
      store(makeJpeg({.channels = 1, .quality = 100, .progressive = true}, 90)));
  ASSERT_EQ(bitmap.status(), Ok);
  EXPECT_EQ(bitmap.pixels(), Bytes(256, 90));
}

struct ResolutionCase {
  const char* name;
  bool jfif;
  int unit;
  unsigned x, y;
  REAL xDpi, yDpi;
};

const ResolutionCase kResolutionCases[] = {
    {"dots per inch", true, 1, 300, 600, 300, 600},
    {"dots per centimetre", true, 2, 118, 236, 299.72F, 599.44F},
    {"aspect ratio only", true, 0, 300, 300, 96, 96},
    {"zero density", true, 1, 0, 0, 96, 96},
    {"no such header", false, 1, 300, 300, 96, 96},
};

TEST_F(JpegDecoding, TakesResolutionFromTheFile) {
  for (const ResolutionCase& row : kResolutionCases) {
    SCOPED_TRACE(row.name);
    const TestBitmap bitmap(store(makeJpeg(
        {.densityUnit = row.unit, .xDensity = row.x, .yDensity = row.y, .jfif = row.jfif}, 100)));
    ASSERT_EQ(bitmap.status(), Ok);
    EXPECT_FLOAT_EQ(bitmap.inside().xDpi(), row.xDpi);
    EXPECT_FLOAT_EQ(bitmap.inside().yDpi(), row.yDpi);
  }
}

TEST_F(JpegDecoding, MissingFileIsNotFound) {
  EXPECT_EQ(TestBitmap(folder_.path() / "none.jpg").status(), FileNotFound);
  EXPECT_EQ(TestBitmap(folder_.path() / "none" / "none.jpg").status(), FileNotFound);
}

TEST_F(JpegDecoding, OtherContentIsUnknown) {
  EXPECT_EQ(TestBitmap(store({})).status(), UnknownImageFormat);
  EXPECT_EQ(TestBitmap(store(Bytes(5000, 'x'))).status(), UnknownImageFormat);
  EXPECT_EQ(TestBitmap(store({0xFF, 0xD8, 0xFF, 0xD9})).status(), UnknownImageFormat);
  EXPECT_EQ(TestBitmap(folder_.path()).status(), UnknownImageFormat);
  EXPECT_EQ(TestBitmap(store(makeJpeg({.arithmetic = true}, 90))).status(), UnknownImageFormat);
}

TEST_F(JpegDecoding, NameOutsideAsciiIsUtf8) {
  storeBytes(folder_.path() /
                 "Gr\xC3\xBC\xC3\x9F"
                 "e\xE2\x82\xAC.jpg",
             makeJpeg({}, 90));
  GpBitmap* bitmap = nullptr;
  const std::wstring name = folder_.path().wstring() + L"/Gr\u00FC\u00DFe\u20AC.jpg";
  EXPECT_EQ(gdip::GdipCreateBitmapFromFile(name.c_str(), &bitmap), Ok);
  EXPECT_EQ(gdip::GdipDisposeImage(bitmap), Ok);
}

// A picture with something in every block, so that its data are long.
unsigned busy(unsigned x, unsigned y, int channel) {
  return (x * 7 + y * 13 + static_cast<unsigned>(channel) * 50 + x * y) % 256;
}

TEST_F(JpegDecoding, FileCutAnywhereGivesWhatIsThere) {
  for (const bool progressive : {false, true}) {
    for (const int channels : {1, 3, 4}) {
      const JpegRecipe recipe{.width = 40,
                              .height = 40,
                              .channels = channels,
                              .progressive = progressive,
                              .restartInterval = progressive ? 0U : 2U};
      const Bytes whole = makeJpeg(recipe, busy);
      const std::size_t data = findMarker(whole, 0xDA);
      for (std::size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(testing::Message() << "channels " << channels << ", cut at " << length);
        const TestBitmap bitmap(store(prefix(whole, length)));
        const bool headerCut = length < data;
        ASSERT_EQ(bitmap.status(), headerCut ? UnknownImageFormat : bitmap.status());
        ASSERT_EQ(bitmap.get() != nullptr, bitmap.status() == Ok);
        if (length + 2 >= whole.size()) {
          ASSERT_EQ(bitmap.status(), Ok);
          ASSERT_EQ(bitmap.inside().height(), 40U);
        }
      }
    }
  }
}

TEST_F(JpegDecoding, LosingOnlyTheEndMarkerLosesNoPixel) {
  for (const unsigned side : {1U, 8U, 16U, 40U, 257U}) {
    SCOPED_TRACE(side);
    Bytes file = makeJpeg({.width = side, .height = side}, busy);
    const Bytes whole = TestBitmap(store(file)).pixels();
    file = prefix(file, file.size() - 2);
    EXPECT_EQ(TestBitmap(store(file)).pixels(), whole);
  }
}

TEST_F(JpegDecoding, RowsBehindTheCutAreBlack) {
  // 64 block rows that cost the same; half of the data is about half of the rows.
  Bytes file = makeJpeg({.width = 64, .height = 512, .channels = 1}, busy);
  const Bytes whole = TestBitmap(store(file)).pixels();
  const std::size_t data = findMarker(file, 0xDA);
  file = prefix(file, data + (file.size() - data) / 2);
  const TestBitmap bitmap(store(file));
  ASSERT_EQ(bitmap.status(), Ok);
  const Bytes pixels = bitmap.pixels();
  const std::size_t intact = 64 * 200;
  const std::size_t gone = 64 * 320;
  EXPECT_TRUE(std::equal(pixels.begin(), pixels.begin() + intact, whole.begin()));
  EXPECT_EQ(Bytes(pixels.begin() + gone, pixels.end()), Bytes(pixels.size() - gone, 0));
}

TEST_F(JpegDecoding, AnyByteWrongDoesNoHarm) {
  const Bytes whole = makeJpeg({.width = 24, .height = 24, .restartInterval = 1}, busy);
  for (std::size_t at = 2; at < whole.size(); ++at) {
    for (const std::uint8_t value : Bytes{0x00, 0x7F, 0xFF}) {
      Bytes file = whole;
      file[at] = value;
      const TestBitmap bitmap(store(file));
      ASSERT_EQ(bitmap.get() != nullptr, bitmap.status() == Ok) << "byte " << at;
    }
  }
}

// Sizes in a frame header stand five bytes behind its marker: height, then width, big-endian.
Bytes withSize(Bytes file, std::uint8_t frameMarker, unsigned width, unsigned height) {
  const std::size_t at = findMarker(file, frameMarker) + 5;
  file[at] = static_cast<std::uint8_t>(height >> 8);
  file[at + 1] = static_cast<std::uint8_t>(height);
  file[at + 2] = static_cast<std::uint8_t>(width >> 8);
  file[at + 3] = static_cast<std::uint8_t>(width);
  return file;
}

TEST_F(JpegDecoding, SmallFileThatClaimsAHugePageIsBounded) {
  const struct {
    const char* name;
    bool progressive;
    unsigned restartInterval, width, height;
    GpStatus status;
  } cases[] = {
      {"baseline, 12 GB", false, 0, 65500, 65500, OutOfMemory},
      {"baseline, 2 GB", false, 0, 65500, 10000, Ok},
      {"with restarts, 2 GB", false, 1, 65500, 10000, Ok},
      {"progressive, 12 GB", true, 0, 65500, 65500, OutOfMemory},
      {"progressive, 2 GB", true, 0, 65500, 10000, OutOfMemory},
      {"sides beyond the format", false, 0, 65535, 65535, InvalidParameter},
      {"no width", false, 0, 0, 100, UnknownImageFormat},
      {"no height", false, 0, 100, 0, UnknownImageFormat},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    const JpegRecipe recipe{.progressive = row.progressive, .restartInterval = row.restartInterval};
    const std::uint8_t frame = row.progressive ? 0xC2 : 0xC0;
    const TestBitmap bitmap(store(withSize(makeJpeg(recipe, busy), frame, row.width, row.height)));
    EXPECT_EQ(bitmap.status(), row.status);
    if (bitmap.status() != Ok) continue;
    EXPECT_EQ(bitmap.inside().row(row.height - 1)[0], 0)
        << "rows that are not in the file stay black";
  }
}

TEST_F(JpegDecoding, EndlessScansAreGivenUp) {
  Bytes file = makeJpeg({.channels = 1, .progressive = true}, busy);
  // The last scan, from its marker to the end marker, once more and again.
  std::size_t scan = 0;
  for (std::size_t i = 0; i + 1 < file.size(); ++i)
    if (file[i] == 0xFF && file[i + 1] == 0xDA) scan = i;
  const Bytes last(file.begin() + static_cast<long>(scan), file.end() - 2);
  file = prefix(file, file.size() - 2);
  for (int i = 0; i < 2000; ++i)
    file.insert(file.end(), last.begin(), last.end());
  EXPECT_EQ(TestBitmap(store(file)).status(), OutOfMemory);
}

// The published luminance table at quality 75: half of each value, rounded up.
const std::vector<unsigned> kLumaAt75 = {
    8,  6,  5,  8,  12, 20, 26, 31,  //
    6,  6,  7,  10, 13, 29, 30, 28,  //
    7,  7,  8,  12, 20, 29, 35, 28,  //
    7,  9,  11, 15, 26, 44, 40, 31,  //
    9,  11, 19, 28, 34, 55, 52, 39,  //
    12, 18, 28, 32, 41, 52, 57, 46,  //
    25, 32, 39, 44, 52, 61, 60, 51,  //
    36, 46, 48, 49, 56, 50, 52, 50,
};

struct SaveCase {
  const char* name;
  PixelFormat format;
  int components, luma;
};

const SaveCase kSaveCases[] = {
    {"1 bit", PixelFormat1bppIndexed, 1, 1},
    {"8 bit", PixelFormat8bppIndexed, 1, 1},
    {"24 bit", PixelFormat24bppRGB, 3, 2},
};

TEST_F(JpegSaving, WritesQuality75AndTheResolution) {
  for (const SaveCase& row : kSaveCases) {
    SCOPED_TRACE(row.name);
    const TestBitmap bitmap(33, 17, row.format);
    gdip::GdipBitmapSetResolution(bitmap.get(), 299.72F, 600.4F);
    ASSERT_EQ(bitmap.save(page()), Ok);
    const JpegFacts facts = jpegFacts(loadBytes(page()));
    ASSERT_TRUE(facts.valid);
    EXPECT_EQ(facts.width, 33U);
    EXPECT_EQ(facts.height, 17U);
    EXPECT_EQ(facts.components, row.components);
    EXPECT_EQ(facts.lumaAcross, row.luma);
    EXPECT_EQ(facts.lumaDown, row.luma);
    EXPECT_EQ(facts.densityUnit, 1);
    EXPECT_EQ(facts.xDensity, 300U);
    EXPECT_EQ(facts.yDensity, 600U);
    EXPECT_EQ(facts.lumaTable, kLumaAt75);
  }
}

TEST_F(JpegSaving, PixelsComeBack) {
  TestBitmap bitmap(16, 16, PixelFormat24bppRGB);
  Bytes orange;
  for (int i = 0; i < 256; ++i)
    orange.insert(orange.end(), {10, 120, 250});
  bitmap.setPixels(orange);
  ASSERT_EQ(bitmap.save(page()), Ok);
  expectNear(TestBitmap(page()).pixels(), orange, 5);
}

TEST_F(JpegSaving, OneBitPageComesBackBlackAndWhite) {
  TestBitmap bitmap(16, 8, PixelFormat1bppIndexed);
  Bytes halves;
  for (int i = 0; i < 8; ++i)
    halves.insert(halves.end(), {0x00, 0xFF});
  bitmap.setPixels(halves);
  ASSERT_EQ(bitmap.save(page()), Ok);
  const TestBitmap back(page());
  ASSERT_EQ(back.inside().format(), PixelFormat8bppIndexed);
  for (UINT x = 0; x < 16; ++x)
    EXPECT_NEAR(back.grey(x, 3), x < 8 ? 0 : 255, 4) << x;
}

// Memory of a bitmap that went before must not show. A strip of one white column and row is drawn
// at 8, 8; what it does not cover is black.
TEST_F(JpegSaving, RowsThatNothingWasDrawnOnAreBlack) {
  for (const auto format : {PixelFormat8bppIndexed, PixelFormat24bppRGB, PixelFormat1bppIndexed}) {
    for (const INT width : {8, 24}) {
      {
        TestBitmap(24, 64, format)
            .setPixels(Bytes(TestBitmap(24, 64, format).pixels().size(), 0xFF));
      }
      TestBitmap strip(width, 8, PixelFormat8bppIndexed);
      strip.setPixels(Bytes(static_cast<std::size_t>(width) * 8, 0xFF));
      TestBitmap drawn(24, 64, format);
      ASSERT_EQ(drawn.draw(strip, 0, 8), Ok);
      ASSERT_EQ(drawn.save(page()), Ok);
      TestBitmap back(24, 64, PixelFormat8bppIndexed);
      ASSERT_EQ(back.draw(TestBitmap(page()), 0, 0), Ok);
      for (UINT y = 0; y < 64; ++y) {
        const bool covered = y >= 8 && y < 16;
        ASSERT_NEAR(back.grey(0, y), covered ? 255 : 0, 30) << y;
        ASSERT_NEAR(back.grey(23, y), covered && width == 24 ? 255 : 0, 30) << y;
      }
    }
  }
}

TEST_F(JpegSaving, SmallestAndOddResolutionsAreKeptInRange) {
  const TestBitmap bitmap(1, 1, PixelFormat8bppIndexed);
  gdip::GdipBitmapSetResolution(bitmap.get(), 0.1F, 1e9F);
  ASSERT_EQ(bitmap.save(page()), Ok);
  EXPECT_EQ(jpegFacts(loadBytes(page())).xDensity, 1U);
  EXPECT_EQ(jpegFacts(loadBytes(page())).yDensity, 65535U);
}

TEST_F(JpegSaving, FailureLeavesNoFile) {
  TestBitmap bitmap(200, 200, PixelFormat8bppIndexed);
  Bytes noise(40000);
  for (std::size_t i = 0; i < noise.size(); ++i)
    noise[i] = static_cast<std::uint8_t>(i * i / 7);
  bitmap.setPixels(noise);
  for (const unsigned long limit : {0UL, 100UL, 5000UL}) {
    const FileSizeLimit full(limit);
    EXPECT_EQ(bitmap.save(page()), Win32Error) << limit;
    EXPECT_FALSE(std::filesystem::exists(page())) << limit;
  }
  EXPECT_EQ(bitmap.save(folder_.path() / "none" / "page.jpg"), Win32Error);
  EXPECT_EQ(bitmap.save(folder_.path()), Win32Error);
  EXPECT_TRUE(std::filesystem::is_directory(folder_.path()));
}

TEST_F(JpegSaving, FullDeviceFailsAndStays) {
  const TestBitmap bitmap(64, 64, PixelFormat24bppRGB);
  EXPECT_EQ(bitmap.save("/dev/full"), Win32Error);
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST_F(JpegSaving, PageLongerThanTheFormatTakesIsRefused) {
  const TestBitmap bitmap(1, 65501, PixelFormat1bppIndexed);
  EXPECT_EQ(bitmap.save(page()), InvalidParameter);
  EXPECT_FALSE(std::filesystem::exists(page()));
  EXPECT_EQ(TestBitmap(1, 65500, PixelFormat1bppIndexed).save(page()), Ok);
}

TEST_F(JpegSaving, OtherEncodersAreUnknown) {
  constexpr CLSID kTiff = {
      0x557CF405, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
  const TestBitmap bitmap(1, 1, PixelFormat24bppRGB);
  EXPECT_EQ(gdip::GdipSaveImageToFile(bitmap.get(), page().wstring().c_str(), &kTiff, nullptr),
            UnknownImageFormat);
  EXPECT_FALSE(std::filesystem::exists(page()));
}

}  // namespace
}  // namespace tvrscn::test
