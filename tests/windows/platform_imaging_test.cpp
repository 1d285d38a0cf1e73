// The flat imaging calls as the core sees them on Windows, and the jobs on stored pages. Levels and
// bits are worked out by hand.
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/imaging.h"
#include "tests/support/effect_cases.h"
#include "tests/support/temporary_folder.h"
#include "tests/windows/test_bitmap.h"
#include "tvrscn/tevrautil/gdi_wrapper.h"

namespace tvrscn::test {
namespace {

using namespace Gdiplus;

class Canvas {
 public:
  explicit Canvas(const TestBitmap& target) {
    gdip::GdipGetImageGraphicsContext(target.get(), &graphics_);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;
  ~Canvas() { gdip::GdipDeleteGraphics(graphics_); }

  GpStatus draw(const TestBitmap& picture, INT x, INT y) {
    return gdip::GdipDrawImageI(graphics_, picture.get(), x, y);
  }
  GpGraphics* get() const { return graphics_; }

 private:
  GpGraphics* graphics_ = nullptr;
};

class Imaging : public testing::Test {
 protected:
  std::filesystem::path save(const TestBitmap& bitmap, const char* name) {
    CLSID encoder = {};
    EXPECT_GE(wrapper_.GetEncoderClsid(L"image/jpeg", &encoder), 0);
    auto path = folder_.path() / name;
    EXPECT_EQ(Ok, gdip::GdipSaveImageToFile(bitmap.get(), path.c_str(), &encoder, nullptr));
    return path;
  }

  GdiWrapper wrapper_;
  TemporaryFolder folder_;
};

// luma = 0.299 red + 0.587 green + 0.114 blue: pure green is 150, pure red 76, pure blue 29.
TEST_F(Imaging, OneBitPageIsBlackAndWhiteByBrightness) {
  const TestBitmap picture(8, 1, PixelFormat24bppRGB);
  picture.setRow(0, {127, 127, 127, 128, 128, 128, 0, 255, 0, 0, 0,   255,
                     255, 0,   0,   255, 255, 255, 0, 0,   0, 0, 255, 255});
  const TestBitmap page(24, 2, PixelFormat1bppIndexed);
  Canvas canvas(page);
  EXPECT_EQ(Ok, canvas.draw(picture, 4, 1));
  EXPECT_EQ(PixelFormat1bppIndexed, page.format());
  EXPECT_EQ((Bytes{0x00, 0x00, 0x00}), page.stored(0, 3));
  // 0110 0101 from the fifth bit on
  EXPECT_EQ((Bytes{0x06, 0x50, 0x00}), page.stored(1, 3));
}

TEST_F(Imaging, DrawingOnAOneBitPageIsClippedAndLeavesTheRestAlone) {
  const TestBitmap white(8, 2, PixelFormat24bppRGB);
  white.fill(255);
  const TestBitmap page(8, 2, PixelFormat1bppIndexed);
  Canvas canvas(page);
  EXPECT_EQ(Ok, canvas.draw(white, -5, -1));
  EXPECT_EQ(Ok, canvas.draw(white, 6, 1));
  EXPECT_EQ(Ok, canvas.draw(white, 8, 2));
  EXPECT_EQ(Ok, canvas.draw(page, 8, 2));
  EXPECT_EQ(Bytes{0xE0}, page.stored(0, 1));
  EXPECT_EQ(Bytes{0x03}, page.stored(1, 1));
}

TEST_F(Imaging, OneBitPageIsSavedLegibly) {
  const TestBitmap white(8, 16, PixelFormat24bppRGB);
  white.fill(255);
  const TestBitmap page(16, 16, PixelFormat1bppIndexed);
  gdip::GdipBitmapSetResolution(page.get(), 300, 300);
  Canvas(page).draw(white, 8, 0);
  const TestBitmap saved(save(page, "bits.jpg"));
  EXPECT_EQ(16U, saved.width());
  EXPECT_EQ(300.0F, saved.dpi());
  EXPECT_EQ((Bytes{0, 0, 0}), saved.colour(3, 8));
  EXPECT_EQ((Bytes{255, 255, 255}), saved.colour(12, 8));
}

TEST_F(Imaging, GreyPageTakesTheBrightnessOfWhatIsDrawn) {
  const TestBitmap picture(4, 1, PixelFormat24bppRGB);
  picture.setRow(0, {10, 10, 10, 0, 255, 0, 0, 0, 255, 200, 200, 200});
  const TestBitmap page(4, 1, PixelFormat8bppIndexed);
  EXPECT_EQ(Ok, Canvas(page).draw(picture, 0, 0));
  EXPECT_EQ((Bytes{10, 150, 76, 200}), page.stored(0, 4));
  EXPECT_EQ((Bytes{150, 150, 150}), page.colour(1, 0));
}

TEST_F(Imaging, GreyPageIsSavedAsItIs) {
  const TestBitmap grey(16, 300, PixelFormat24bppRGB);
  grey.fill(100);
  const TestBitmap page(16, 300, PixelFormat8bppIndexed);
  Canvas(page).draw(grey, 0, 0);
  const TestBitmap saved(save(page, "grey.jpg"));
  EXPECT_EQ(300U, saved.height());
  EXPECT_EQ((Bytes{100, 100, 100}), saved.colour(8, 8));
  EXPECT_EQ((Bytes{100, 100, 100}), saved.colour(8, 299));
}

TEST_F(Imaging, ColourPageIsDrawnPixelForPixel) {
  const TestBitmap picture(2, 2, PixelFormat24bppRGB);
  picture.setRow(0, {1, 2, 3, 250, 251, 252});
  picture.setRow(1, {40, 50, 60, 70, 80, 90});
  const TestBitmap page(4, 4, PixelFormat24bppRGB);
  gdip::GdipBitmapSetResolution(picture.get(), 300, 300);
  gdip::GdipBitmapSetResolution(page.get(), 300, 300);
  EXPECT_EQ(Ok, Canvas(page).draw(picture, 1, 2));
  EXPECT_EQ((Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), page.stored(1, 12));
  EXPECT_EQ((Bytes{0, 0, 0, 1, 2, 3, 250, 251, 252, 0, 0, 0}), page.stored(2, 12));
  EXPECT_EQ((Bytes{0, 0, 0, 40, 50, 60, 70, 80, 90, 0, 0, 0}), page.stored(3, 12));
}

TEST_F(Imaging, ContextMayBeDeletedAfterItsPage) {
  for (const PixelFormat format : {PixelFormat1bppIndexed, PixelFormat24bppRGB}) {
    TestBitmap page(8, 8, format);
    const Canvas canvas(page);
    page.dispose();
  }
}

TEST_F(Imaging, NullObjectsAreRefused) {
  GpGraphics* graphics = nullptr;
  EXPECT_EQ(InvalidParameter, gdip::GdipGetImageGraphicsContext(nullptr, &graphics));
  EXPECT_EQ(InvalidParameter, gdip::GdipDrawImageI(nullptr, nullptr, 0, 0));
  EXPECT_EQ(InvalidParameter, gdip::GdipDeleteGraphics(nullptr));
  EXPECT_EQ(InvalidParameter, gdip::GdipDeleteEffect(nullptr));
  EXPECT_EQ(InvalidParameter,
            gdip::GdipBitmapApplyEffect(nullptr, nullptr, nullptr, 0, nullptr, nullptr));
}

GpStatus applyEffect(const TestBitmap& bitmap, INT brightness, INT contrast) {
  CGpEffect* effect = nullptr;
  gdip::GdipCreateEffect(BrightnessContrastEffectGuid, &effect);
  const BrightnessContrastParams parameters{brightness, contrast};
  gdip::GdipSetEffectParameters(effect, &parameters, sizeof parameters);
  const GpStatus status =
      gdip::GdipBitmapApplyEffect(bitmap.get(), effect, nullptr, 0, nullptr, nullptr);
  gdip::GdipDeleteEffect(effect);
  return status;
}

TEST_F(Imaging, EffectMapsLevels) {
  const Bytes levels = {0, 60, 127, 128, 200, 255};
  for (const LevelCase& row : kLevelCases) {
    SCOPED_TRACE(row.name);
    const TestBitmap grey(6, 1, PixelFormat8bppIndexed);
    grey.setRow(0, levels);
    EXPECT_EQ(Ok, applyEffect(grey, row.brightness, row.contrast));
    EXPECT_EQ(row.levels, grey.stored(0, 6));
    const TestBitmap colour(2, 1, PixelFormat24bppRGB);
    colour.setRow(0, levels);
    EXPECT_EQ(Ok, applyEffect(colour, row.brightness, row.contrast));
    EXPECT_EQ(row.levels, colour.stored(0, 6));
  }
}

TEST_F(Imaging, EffectKeepsAOneBitPageBlackAndWhite) {
  for (const BitLevelCase& row : kBitLevelCases) {
    SCOPED_TRACE(row.name);
    const TestBitmap bits(8, 1, PixelFormat1bppIndexed);
    bits.setRow(0, {0xA5});
    EXPECT_EQ(Ok, applyEffect(bits, row.brightness, row.contrast));
    EXPECT_EQ(Bytes{row.result}, bits.stored(0, 1));
  }
}

TEST_F(Imaging, EffectRefusesValuesOutOfRange) {
  CGpEffect* effect = nullptr;
  ASSERT_EQ(Ok, gdip::GdipCreateEffect(BrightnessContrastEffectGuid, &effect));
  for (const BrightnessContrastParams values :
       {BrightnessContrastParams{256, 0}, {-256, 0}, {0, 101}, {0, -101}}) {
    EXPECT_EQ(InvalidParameter, gdip::GdipSetEffectParameters(effect, &values, sizeof values));
  }
  gdip::GdipDeleteEffect(effect);
}

// The quantisation of the first luma step tells the quality: 8 of 16 is quality 75.
TEST_F(Imaging, PagesAreSavedWithTheUsualQuality) {
  const TestBitmap page(16, 16, PixelFormat24bppRGB);
  const Bytes file = readFile(save(page, "page.jpg"));
  const Bytes table = {0xFF, 0xDB};
  const auto found = std::search(file.begin(), file.end(), table.begin(), table.end());
  ASSERT_GT(std::distance(found, file.end()), 8);
  EXPECT_EQ(8, found[5]);
  EXPECT_EQ(6, found[6]);  // 11 of quality 50, halved and rounded up
}

TEST_F(Imaging, WrappersNest) {
  { const GdiWrapper inner; }
  const TestBitmap page(8, 8, PixelFormat24bppRGB);
  EXPECT_NE(nullptr, page.get());
}

TEST_F(Imaging, UnknownEncoderHasNoClassId) {
  CLSID clsid = {1, 2, 3, {4}};
  EXPECT_EQ(-1, wrapper_.GetEncoderClsid(L"image/none", &clsid));
  EXPECT_EQ(0U, clsid.Data1);
  EXPECT_EQ(-1, wrapper_.GetEncoderClsid(nullptr, &clsid));
  EXPECT_GE(wrapper_.GetEncoderClsid(L"image/tiff", &clsid), 0);
  EXPECT_EQ(0x557CF405U, clsid.Data1);
}

// --- jobs on a stored page

TEST_F(Imaging, StoredPageGetsBrighterInPlace) {
  const TestBitmap grey(32, 48, PixelFormat24bppRGB);
  grey.fill(100);
  gdip::GdipBitmapSetResolution(grey.get(), 200, 200);
  const auto path = save(grey, "page.jpg");
  wrapper_.BrightnessContrastApplyEffect(path.wstring(), 50, 0);
  const TestBitmap result(path);
  EXPECT_EQ((Bytes{150, 150, 150}), result.colour(16, 24));
  EXPECT_EQ(32U, result.width());
  EXPECT_EQ(48U, result.height());
  EXPECT_EQ(200.0F, result.dpi());
  EXPECT_EQ(std::vector<std::string>{"page.jpg"}, folder_.fileNames());
}

TEST_F(Imaging, StoredPageBecomesBlackAndWhiteInPlace) {
  const TestBitmap sheet(64, 64, PixelFormat24bppRGB);
  sheet.fill(180);  // dull paper
  const TestBitmap stroke(4, 64, PixelFormat24bppRGB);
  stroke.fill(60);
  Canvas(sheet).draw(stroke, 30, 0);
  auto path = save(sheet, "page.jpg").wstring();
  wrapper_.BlackandWhiteImageProcessing(path, 0, 0);
  const TestBitmap result{std::filesystem::path(path)};
  EXPECT_GT(result.colour(4, 32)[0], 245);
  EXPECT_LT(result.colour(31, 32)[0], 10);
  EXPECT_EQ(std::vector<std::string>{"page.jpg"}, folder_.fileNames());
}

TEST_F(Imaging, FileThatIsNoPictureStaysAsItIs) {
  const auto path = folder_.path() / "page.jpg";
  writeFile(path, "no picture");
  std::wstring name = path.wstring();
  wrapper_.BlackandWhiteImageProcessing(name, 0, 0);
  wrapper_.BrightnessContrastApplyEffect(name, 10, 0);
  EXPECT_EQ(10U, readFile(path).size());
}

TEST_F(Imaging, PageThatCannotBeReplacedIsReported) {
  const TestBitmap grey(16, 16, PixelFormat24bppRGB);
  const auto path = save(grey, "page.jpg");
  const Bytes before = readFile(path);
  const HANDLE held =
      CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, held);
  EXPECT_THROW(wrapper_.BrightnessContrastApplyEffect(path.wstring(), 50, 0), std::runtime_error);
  CloseHandle(held);
  EXPECT_EQ(before, readFile(path));
  EXPECT_EQ(std::vector<std::string>{"page.jpg"}, folder_.fileNames());
}

TEST_F(Imaging, JpegFileIsNoTiff) {
  const TestBitmap grey(16, 16, PixelFormat24bppRGB);
  const auto jpeg = save(grey, "page.jpg").wstring();
  const auto prefix = (folder_.path() / "out").wstring();
  EXPECT_EQ(0U, wrapper_.ConvertMultiPageTIFF2SinglePageTIFF(jpeg, prefix, 0));
  EXPECT_EQ(std::vector<std::string>{"page.jpg"}, folder_.fileNames());
}

}  // namespace
}  // namespace tvrscn::test
