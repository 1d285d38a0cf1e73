// Bitmaps and drawing: what is made, what is refused, where pixels go and what they become.
#include <fstream>
#include <limits>
#include <string>

#include <unistd.h>

#include <gtest/gtest.h>

#include "imaging_test_support.h"

namespace tvrscn::test {
namespace {

using namespace Gdiplus;

constexpr INT kMax = std::numeric_limits<INT>::max();
constexpr INT kMin = std::numeric_limits<INT>::min();

struct CreateCase {
  const char* name;
  INT width, height;
  PixelFormat format;
  GpStatus status;
};

const CreateCase kCreateCases[] = {
    {"1 bit", 9, 2, PixelFormat1bppIndexed, Ok},
    {"8 bit", 9, 2, PixelFormat8bppIndexed, Ok},
    {"24 bit", 9, 2, PixelFormat24bppRGB, Ok},
    {"no width", 0, 2, PixelFormat24bppRGB, InvalidParameter},
    {"no height", 9, 0, PixelFormat24bppRGB, InvalidParameter},
    {"negative width", -1, 2, PixelFormat24bppRGB, InvalidParameter},
    {"negative height", 9, kMin, PixelFormat24bppRGB, InvalidParameter},
    {"no format", 9, 2, 0, InvalidParameter},
    {"32 bit", 9, 2, 0x22009, InvalidParameter},
    {"4 bit", 9, 2, 0x30402, InvalidParameter},
    {"side too long", 65536, 1, PixelFormat1bppIndexed, OutOfMemory},
    {"12 GB of colour", 65535, 65535, PixelFormat24bppRGB, OutOfMemory},
    {"everything too big", kMax, kMax, PixelFormat24bppRGB, OutOfMemory},
};

TEST(CreateBitmap, AnswersAsItsArgumentsDeserve) {
  for (const CreateCase& row : kCreateCases) {
    SCOPED_TRACE(row.name);
    const TestBitmap bitmap(row.width, row.height, row.format);
    EXPECT_EQ(bitmap.status(), row.status);
    EXPECT_EQ(bitmap.get() != nullptr, row.status == Ok);
  }
}

TEST(CreateBitmap, CallersMemoryIsRefused) {
  BYTE pixels[4] = {};
  auto* bitmap = static_cast<GpBitmap*>(nullptr);
  EXPECT_EQ(gdip::GdipCreateBitmapFromScan0(1, 1, 4, PixelFormat24bppRGB, pixels, &bitmap),
            InvalidParameter);
  EXPECT_EQ(bitmap, nullptr);
}

TEST(CreateBitmap, NewOneIsBlackAt96Dpi) {
  const TestBitmap bitmap(9, 2, PixelFormat1bppIndexed);
  EXPECT_EQ(bitmap.pixels(), (Bytes{0, 0, 0, 0}));
  REAL x = 0;
  REAL y = 0;
  EXPECT_EQ(gdip::GdipGetImageHorizontalResolution(bitmap.get(), &x), Ok);
  EXPECT_EQ(gdip::GdipGetImageVerticalResolution(bitmap.get(), &y), Ok);
  EXPECT_EQ(x, 96);
  EXPECT_EQ(y, 96);
}

// Megabytes that the process has in memory now.
std::size_t residentMegabytes() {
  std::ifstream statm("/proc/self/statm");
  std::size_t total = 0;
  std::size_t resident = 0;
  statm >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) >> 20;
}

TEST(CreateBitmap, LargeOneTakesNoMemoryBeforeItIsWritten) {
  const std::size_t before = residentMegabytes();
  const TestBitmap bitmap(26700, 26700, PixelFormat24bppRGB);  // 2039 MB
  ASSERT_EQ(bitmap.status(), Ok);
  EXPECT_EQ(bitmap.inside().row(26699)[0], 0);
  // An eighth of it is what the sanitizers note down for themselves.
  EXPECT_LT(residentMegabytes() - before, 300U);
}

TEST(BitmapQueries, TellSizeAndFormat) {
  const TestBitmap bitmap(9, 2, PixelFormat8bppIndexed);
  UINT width = 0;
  UINT height = 0;
  PixelFormat format = 0;
  EXPECT_EQ(gdip::GdipGetImageWidth(bitmap.get(), &width), Ok);
  EXPECT_EQ(gdip::GdipGetImageHeight(bitmap.get(), &height), Ok);
  EXPECT_EQ(gdip::GdipGetImagePixelFormat(bitmap.get(), &format), Ok);
  EXPECT_EQ(width, 9U);
  EXPECT_EQ(height, 2U);
  EXPECT_EQ(format, 0x30803);
}

TEST(SetResolution, OnlyPositiveValuesAreTaken) {
  const TestBitmap bitmap(1, 1, PixelFormat24bppRGB);
  EXPECT_EQ(gdip::GdipBitmapSetResolution(bitmap.get(), 300, 600), Ok);
  EXPECT_EQ(gdip::GdipBitmapSetResolution(bitmap.get(), 0, 200), InvalidParameter);
  EXPECT_EQ(gdip::GdipBitmapSetResolution(bitmap.get(), 200, -1), InvalidParameter);
  const REAL nothing = std::numeric_limits<REAL>::quiet_NaN();
  EXPECT_EQ(gdip::GdipBitmapSetResolution(bitmap.get(), nothing, 200), InvalidParameter);
  EXPECT_EQ(bitmap.inside().xDpi(), 300);
  EXPECT_EQ(bitmap.inside().yDpi(), 600);
}

TEST(FlatCalls, NullArgumentsAreRefused) {
  const TestBitmap bitmap(1, 1, PixelFormat24bppRGB);
  GpBitmap* const some = bitmap.get();
  // Any value that is not null: the failed call has to clear it, not to follow it.
  auto* graphics = reinterpret_cast<GpGraphics*>(some);
  GpBitmap* out = nullptr;
  UINT number = 0;
  PixelFormat format = 0;
  REAL dpi = 0;
  const CLSID encoder{};
  const struct {
    const char* name;
    GpStatus status;
  } calls[] = {
      {"file name", gdip::GdipCreateBitmapFromFile(nullptr, &out)},
      {"decoded bitmap", gdip::GdipCreateBitmapFromFile(L"x", nullptr)},
      {"new bitmap",
       gdip::GdipCreateBitmapFromScan0(1, 1, 0, PixelFormat24bppRGB, nullptr, nullptr)},
      {"dispose", gdip::GdipDisposeImage(nullptr)},
      {"format of none", gdip::GdipGetImagePixelFormat(nullptr, &format)},
      {"format to none", gdip::GdipGetImagePixelFormat(some, nullptr)},
      {"width of none", gdip::GdipGetImageWidth(nullptr, &number)},
      {"width to none", gdip::GdipGetImageWidth(some, nullptr)},
      {"height of none", gdip::GdipGetImageHeight(nullptr, &number)},
      {"height to none", gdip::GdipGetImageHeight(some, nullptr)},
      {"x dpi of none", gdip::GdipGetImageHorizontalResolution(nullptr, &dpi)},
      {"x dpi to none", gdip::GdipGetImageHorizontalResolution(some, nullptr)},
      {"y dpi of none", gdip::GdipGetImageVerticalResolution(nullptr, &dpi)},
      {"y dpi to none", gdip::GdipGetImageVerticalResolution(some, nullptr)},
      {"set dpi of none", gdip::GdipBitmapSetResolution(nullptr, 1, 1)},
      {"context of none", gdip::GdipGetImageGraphicsContext(nullptr, &graphics)},
      {"context to none", gdip::GdipGetImageGraphicsContext(some, nullptr)},
      {"delete graphics", gdip::GdipDeleteGraphics(nullptr)},
      {"draw on none", gdip::GdipDrawImageI(nullptr, some, 0, 0)},
      {"save none", gdip::GdipSaveImageToFile(nullptr, L"x", &encoder, nullptr)},
      {"save to none", gdip::GdipSaveImageToFile(some, nullptr, &encoder, nullptr)},
      {"save without id", gdip::GdipSaveImageToFile(some, L"x", nullptr, nullptr)},
  };
  for (const auto& call : calls)
    EXPECT_EQ(call.status, InvalidParameter) << call.name;
  EXPECT_EQ(graphics, nullptr) << "the failed call clears its result";
}

TEST(Graphics, DrawingNothingIsRefused) {
  const TestBitmap bitmap(1, 1, PixelFormat24bppRGB);
  GpGraphics* graphics = nullptr;
  ASSERT_EQ(gdip::GdipGetImageGraphicsContext(bitmap.get(), &graphics), Ok);
  EXPECT_EQ(gdip::GdipDrawImageI(graphics, nullptr, 0, 0), InvalidParameter);
  EXPECT_EQ(gdip::GdipDeleteGraphics(graphics), Ok);
}

TEST(Graphics, MayBeDeletedAfterItsBitmap) {
  GpBitmap* bitmap = nullptr;
  GpGraphics* graphics = nullptr;
  ASSERT_EQ(gdip::GdipCreateBitmapFromScan0(4, 4, 0, PixelFormat1bppIndexed, nullptr, &bitmap), Ok);
  ASSERT_EQ(gdip::GdipGetImageGraphicsContext(bitmap, &graphics), Ok);
  EXPECT_EQ(gdip::GdipDisposeImage(bitmap), Ok);
  EXPECT_EQ(gdip::GdipDeleteGraphics(graphics), Ok);
}

// A picture of two rows, 1 2 3 and 4 5 6, on a page of four columns and three rows.
struct ClipCase {
  const char* name;
  INT x, y;
  const char* page;
};

const ClipCase kClipCases[] = {
    {"at the corner", 0, 0,
     "1230"
     "4560"
     "0000"},
    {"inside", 1, 1,
     "0000"
     "0123"
     "0456"},
    {"over the right edge", 2, 0,
     "0012"
     "0045"
     "0000"},
    {"over the bottom", 0, 2,
     "0000"
     "0000"
     "1230"},
    {"over the left edge", -2, 0,
     "3000"
     "6000"
     "0000"},
    {"over the top", 0, -1,
     "4560"
     "0000"
     "0000"},
    {"over the top left", -2, -1,
     "6000"
     "0000"
     "0000"},
    {"just right of it", 4, 0,
     "0000"
     "0000"
     "0000"},
    {"just below it", 0, 3,
     "0000"
     "0000"
     "0000"},
    {"just left of it", -3, 0,
     "0000"
     "0000"
     "0000"},
    {"just above it", 0, -2,
     "0000"
     "0000"
     "0000"},
    {"as far as it goes", kMax, kMax,
     "0000"
     "0000"
     "0000"},
    {"as far back as it goes", kMin, kMin,
     "0000"
     "0000"
     "0000"},
};

TEST(Drawing, IsClippedToThePage) {
  for (const PixelFormat format : {PixelFormat8bppIndexed, PixelFormat24bppRGB}) {
    const unsigned channels = format == PixelFormat24bppRGB ? 3 : 1;
    for (const ClipCase& row : kClipCases) {
      SCOPED_TRACE(std::string(row.name) + ", channels: " + std::to_string(channels));
      TestBitmap picture(3, 2, format);
      Bytes numbers;
      for (const std::uint8_t number : Bytes{1, 2, 3, 4, 5, 6})
        numbers.insert(numbers.end(), channels, number);
      picture.setPixels(numbers);
      TestBitmap page(4, 3, format);
      EXPECT_EQ(page.draw(picture, row.x, row.y), Ok);
      Bytes expected;
      for (const char digit : std::string(row.page))
        expected.insert(expected.end(), channels, static_cast<std::uint8_t>(digit & 0x0F));
      EXPECT_EQ(page.pixels(), expected);
    }
  }
}

TEST(Drawing, ResolutionDoesNotScale) {
  TestBitmap picture(2, 1, PixelFormat8bppIndexed);
  picture.setPixels({7, 8});
  gdip::GdipBitmapSetResolution(picture.get(), 75, 75);
  TestBitmap page(4, 1, PixelFormat8bppIndexed);
  gdip::GdipBitmapSetResolution(page.get(), 600, 600);
  EXPECT_EQ(page.draw(picture, 1, 0), Ok);
  EXPECT_EQ(page.pixels(), (Bytes{0, 7, 8, 0}));
}

struct ConvertCase {
  const char* name;
  PixelFormat from;
  Bytes pixel;
  PixelFormat to;
  Bytes result;
};

// Luma by hand: blue 0.114 * 255 = 29.07, green 0.587 * 255 = 149.685, red 0.299 * 255 = 76.245;
// 10 green and 200 red and 100 blue: 11.4 + 5.87 + 59.8 = 77.07.
const ConvertCase kConvertCases[] = {
    {"blue to grey", PixelFormat24bppRGB, {255, 0, 0}, PixelFormat8bppIndexed, {29}},
    {"green to grey", PixelFormat24bppRGB, {0, 255, 0}, PixelFormat8bppIndexed, {150}},
    {"red to grey", PixelFormat24bppRGB, {0, 0, 255}, PixelFormat8bppIndexed, {76}},
    {"mixed to grey", PixelFormat24bppRGB, {100, 10, 200}, PixelFormat8bppIndexed, {77}},
    {"white to grey", PixelFormat24bppRGB, {255, 255, 255}, PixelFormat8bppIndexed, {255}},
    {"grey to colour", PixelFormat8bppIndexed, {77}, PixelFormat24bppRGB, {77, 77, 77}},
    {"grey 127 to black", PixelFormat8bppIndexed, {127}, PixelFormat1bppIndexed, {0x00}},
    {"grey 128 to white", PixelFormat8bppIndexed, {128}, PixelFormat1bppIndexed, {0x80}},
    {"colour 127 to black", PixelFormat24bppRGB, {127, 127, 127}, PixelFormat1bppIndexed, {0x00}},
    {"colour 128 to white", PixelFormat24bppRGB, {128, 128, 128}, PixelFormat1bppIndexed, {0x80}},
    {"green to white", PixelFormat24bppRGB, {0, 255, 0}, PixelFormat1bppIndexed, {0x80}},
    {"red to black", PixelFormat24bppRGB, {0, 0, 255}, PixelFormat1bppIndexed, {0x00}},
    {"1 bit white to grey", PixelFormat1bppIndexed, {0x80}, PixelFormat8bppIndexed, {255}},
    {"1 bit black to grey", PixelFormat1bppIndexed, {0x7F}, PixelFormat8bppIndexed, {0}},
    {"1 bit white to colour", PixelFormat1bppIndexed, {0x80}, PixelFormat24bppRGB, {255, 255, 255}},
    {"1 bit black to colour", PixelFormat1bppIndexed, {0x7F}, PixelFormat24bppRGB, {0, 0, 0}},
};

TEST(Drawing, ConvertsBetweenFormats) {
  for (const ConvertCase& row : kConvertCases) {
    SCOPED_TRACE(row.name);
    TestBitmap picture(1, 1, row.from);
    picture.setPixels(row.pixel);
    TestBitmap page(1, 1, row.to);
    EXPECT_EQ(page.draw(picture, 0, 0), Ok);
    EXPECT_EQ(page.pixels(), row.result);
  }
}

TEST(Drawing, GreyOntoOneBitLeavesNeighboursAlone) {
  // Eleven white pixels from column 3: bits 3 to 13 of 16.
  TestBitmap picture(11, 1, PixelFormat8bppIndexed);
  picture.setPixels(Bytes(11, 0xFF));
  TestBitmap page(16, 1, PixelFormat1bppIndexed);
  EXPECT_EQ(page.draw(picture, 3, 0), Ok);
  EXPECT_EQ(page.pixels(), (Bytes{0x1F, 0xFC}));
  picture.setPixels(Bytes(11, 0));
  page.setPixels({0xFF, 0xFF});
  EXPECT_EQ(page.draw(picture, 3, 0), Ok);
  EXPECT_EQ(page.pixels(), (Bytes{0xE0, 0x03}));
}

struct BitCase {
  const char* name;
  INT x;
  Bytes page;
};

// The picture is 1011 0011 101 (B3 A0, eleven wide), the page 16 wide and white.
const BitCase kBitCases[] = {
    {"whole bytes", 0, {0xB3, 0xBF}},    {"a byte further", 8, {0xFF, 0xB3}},
    {"shifted by 3", 3, {0xF6, 0x77}},   {"a byte cut off", -8, {0xBF, 0xFF}},
    {"three cut off", -3, {0x9D, 0xFF}},
};

TEST(Drawing, OneBitPicturesGoToAnyColumn) {
  for (const BitCase& row : kBitCases) {
    SCOPED_TRACE(row.name);
    TestBitmap picture(11, 1, PixelFormat1bppIndexed);
    picture.setPixels({0xB3, 0xA0});
    TestBitmap page(16, 1, PixelFormat1bppIndexed);
    page.setPixels({0xFF, 0xFF});
    EXPECT_EQ(page.draw(picture, row.x, 0), Ok);
    EXPECT_EQ(page.pixels(), row.page);
  }
}

struct SelfCase {
  const char* name;
  INT x, y;
  Bytes page;
};

const SelfCase kSelfCases[] = {
    {"in place", 0, 0, {1, 2, 3, 4, 5, 6, 7, 8, 9}},
    {"down", 0, 1, {1, 2, 3, 1, 2, 3, 4, 5, 6}},
    {"up", 0, -1, {4, 5, 6, 7, 8, 9, 7, 8, 9}},
    {"right", 1, 0, {1, 1, 2, 4, 4, 5, 7, 7, 8}},
    {"left", -1, 0, {2, 3, 3, 5, 6, 6, 8, 9, 9}},
    {"down right", 1, 1, {1, 2, 3, 4, 1, 2, 7, 4, 5}},
    {"wholly outside", 3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9}},
};

TEST(Drawing, BitmapOntoItselfReadsEachPixelBeforeItIsOverwritten) {
  for (const SelfCase& row : kSelfCases) {
    SCOPED_TRACE(row.name);
    TestBitmap page(3, 3, PixelFormat8bppIndexed);
    page.setPixels({1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_EQ(page.draw(page, row.x, row.y), Ok);
    EXPECT_EQ(page.pixels(), row.page);
  }
}

TEST(Drawing, OneBitBitmapOntoItself) {
  TestBitmap page(16, 1, PixelFormat1bppIndexed);
  page.setPixels({0xB3, 0xA5});
  EXPECT_EQ(page.draw(page, 3, 0), Ok);  // 101 10110 01110100
  EXPECT_EQ(page.pixels(), (Bytes{0xB6, 0x74}));
  page.setPixels({0xB3, 0xA5});
  EXPECT_EQ(page.draw(page, -3, 0), Ok);  // 10011101 00101 101
  EXPECT_EQ(page.pixels(), (Bytes{0x9D, 0x2D}));
}

}  // namespace
}  // namespace tvrscn::test
