// The imaging jobs of the utility library on stored JPEG pages.
#include "tvrscn/tevrautil/gdi_wrapper.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "imaging_test_support.h"
#include "tests/support/temporary_folder.h"

namespace tvrscn::test {
namespace {

TEST(EncoderClsid, KnowsTheUsualTypes) {
  const struct {
    const wchar_t* type;
    std::uint32_t first;
  } cases[] = {
      {L"image/jpeg", 0x557CF401},
      {L"image/tiff", 0x557CF405},
      {L"image/png", 0x557CF406},
      {L"image/bmp", 0x557CF400},
  };
  GdiWrapper wrapper;
  for (const auto& row : cases) {
    CLSID id{};
    EXPECT_GE(wrapper.GetEncoderClsid(row.type, &id), 0);
    EXPECT_EQ(id.Data1, row.first);
    EXPECT_EQ(id.Data2, 0x1A04);
    EXPECT_EQ(id.Data3, 0x11D3);
    const std::uint8_t rest[] = {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E};
    EXPECT_TRUE(std::equal(std::begin(rest), std::end(rest), id.Data4));
  }
}

TEST(EncoderClsid, UnknownTypeClearsTheId) {
  GdiWrapper wrapper;
  for (const wchar_t* type :
       {L"image/webp", L"IMAGE/JPEG", L"", static_cast<const wchar_t*>(nullptr)}) {
    CLSID id{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    EXPECT_EQ(wrapper.GetEncoderClsid(type, &id), -1);
    EXPECT_EQ(id.Data1, 0U);
    EXPECT_EQ(id.Data4[7], 0);
  }
  EXPECT_EQ(wrapper.GetEncoderClsid(L"image/jpeg", nullptr), -1);
}

class StoredPage : public ::testing::Test {
 protected:
  void store(const Bytes& bytes) { storeBytes(file_, bytes); }
  std::wstring path() const { return file_.wstring(); }

  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_.path() / "Image_1.jpg";
};

using BlackAndWhitePage = StoredPage;
using BrightnessPage = StoredPage;

// A sheet at 200 dpi that looks photographed: yellow, the left edge in the shade at half the light,
// with a little noise. On it strokes of 4 pixels, as of print, and a solid bar of 100 pixels'
// height.
constexpr unsigned kWidth = 600;
constexpr unsigned kHeight = 500;

bool isInk(unsigned x, unsigned y) {
  if (x < 20 || x >= 580 || y < 20 || y >= 480) return false;
  if (y < 120) return x % 24 < 4 || y % 30 < 4;
  return y >= 200 && y < 300;
}

// Edges belong to neither: the JPEG blurs them.
bool isEdge(unsigned x, unsigned y) {
  const bool ink = isInk(x, y);
  for (unsigned dy = 0; dy <= 2; ++dy)
    for (unsigned dx = 0; dx <= 2; ++dx)
      if (isInk(x + dx - 1, y + dy - 1) != ink) return true;
  return false;
}

unsigned sheet(unsigned x, unsigned y, int channel) {
  const double light = 0.5 + 0.5 * x / kWidth - 0.1 * y / kHeight;
  const double paper[] = {245, 225, 170};
  const double ink[] = {60, 55, 65};
  const double noise = static_cast<double>((x * 7919 + y * 104729 + x * y * 31) % 11) - 5;
  const double level = (isInk(x, y) ? ink : paper)[channel] * light + noise;
  return static_cast<unsigned>(std::clamp(level, 0.0, 255.0));
}

struct Legibility {
  double inkBlack = 0;
  double paperWhite = 0;
};

Legibility legibility(const TestBitmap& page) {
  unsigned counts[2] = {};
  unsigned right[2] = {};
  for (unsigned y = 1; y + 1 < kHeight; ++y) {
    for (unsigned x = 1; x + 1 < kWidth; ++x) {
      if (isEdge(x, y)) continue;
      const bool ink = isInk(x, y);
      const BYTE level = page.grey(x, y);
      ++counts[ink];
      right[ink] += (ink ? level < 40 : level > 215) ? 1U : 0U;
    }
  }
  return {double(right[1]) / counts[1], double(right[0]) / counts[0]};
}

TEST_F(BlackAndWhitePage, YellowedSheetInUnevenLightIsLegible) {
  store(makeJpeg(
      {.width = kWidth, .height = kHeight, .quality = 85, .xDensity = 200, .yDensity = 200},
      sheet));
  GdiWrapper wrapper;
  std::wstring name = path();
  wrapper.BlackandWhiteImageProcessing(name, 0, 0);
  const TestBitmap page(file_);
  ASSERT_EQ(page.status(), Gdiplus::Ok);
  const Legibility result = legibility(page);
  EXPECT_GE(result.inkBlack, 0.99);
  EXPECT_GE(result.paperWhite, 0.99);
}

TEST_F(BlackAndWhitePage, SizeResolutionAndNameStay) {
  store(makeJpeg({.width = 101, .height = 67, .quality = 97, .xDensity = 200, .yDensity = 100},
                 sheet));
  GdiWrapper wrapper;
  std::wstring name = path();
  wrapper.BlackandWhiteImageProcessing(name, 0, 0);
  EXPECT_EQ(name, path());
  const JpegFacts facts = jpegFacts(loadBytes(file_));
  EXPECT_EQ(facts.width, 101U);
  EXPECT_EQ(facts.height, 67U);
  EXPECT_EQ(facts.xDensity, 200U);
  EXPECT_EQ(facts.yDensity, 100U);
  EXPECT_EQ(facts.components, 1);
  // Quality 97 divides the published table by 16.67; 16 becomes 1.
  EXPECT_EQ(facts.lumaTable[0], 1U);
  EXPECT_EQ(folder_.fileNames(), std::vector<std::string>{"Image_1.jpg"});
}

TEST_F(BlackAndWhitePage, BrightnessMovesTheThreshold) {
  const struct {
    const char* name;
    int brightness;
    int level;
  } cases[] = {
      {"all white", 255, 255},        {"white as usual", 0, 255},    {"all black", -255, 0},
      {"beyond is white", 1000, 255}, {"beyond is black", -1000, 0},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    store(makeJpeg({.width = 64, .height = 64}, 180));
    GdiWrapper wrapper;
    std::wstring name = path();
    wrapper.BlackandWhiteImageProcessing(name, row.brightness, 0);
    EXPECT_EQ(TestBitmap(file_).pixels(), Bytes(64 * 64, static_cast<std::uint8_t>(row.level)));
  }
}

// A mark of 75 % of the paper is found by the local term (below 85 %); 50 brighter moves the limit
// to 0.85 * 205 / 255 = 68 % of the paper, and it is gone.
TEST_F(BlackAndWhitePage, PositiveBrightnessDropsFaintMarks) {
  const auto faint = [](unsigned x, unsigned, int) { return x >= 30 && x < 34 ? 150U : 200U; };
  for (const int brightness : {0, 50}) {
    store(makeJpeg({.width = 64, .height = 64, .channels = 1, .quality = 100}, faint));
    GdiWrapper wrapper;
    std::wstring name = path();
    wrapper.BlackandWhiteImageProcessing(name, brightness, 0);
    EXPECT_NEAR(TestBitmap(file_).grey(31, 32), brightness == 0 ? 0 : 255, 30) << brightness;
  }
}

TEST_F(BlackAndWhitePage, SmallestPagesWork) {
  for (const unsigned width : {1U, 2U, 37U}) {
    for (const unsigned height : {1U, 37U}) {
      store(makeJpeg({.width = width, .height = height, .xDensity = 65535, .yDensity = 1}, 200));
      GdiWrapper wrapper;
      std::wstring name = path();
      wrapper.BlackandWhiteImageProcessing(name, 0, 0);
      EXPECT_EQ(TestBitmap(file_).pixels(), Bytes(width * height, 255));
    }
  }
}

TEST_F(BrightnessPage, LevelsMoveByTheEffectsTable) {
  store(makeJpeg({.channels = 1, .quality = 100}, 100));
  GdiWrapper wrapper;
  wrapper.BrightnessContrastApplyEffect(path(), 50, 0);
  EXPECT_EQ(TestBitmap(file_).pixels(), Bytes(256, 150));
  wrapper.BrightnessContrastApplyEffect(path(), 0, 50);  // 127.5 + 22.5 * 2 = 172.5
  EXPECT_EQ(TestBitmap(file_).pixels(), Bytes(256, 173));
  wrapper.BrightnessContrastApplyEffect(path(), 5000, 5000);
  EXPECT_EQ(TestBitmap(file_).pixels(), Bytes(256, 255));
}

struct QualityCase {
  const char* name;
  int quality;
  bool fullChroma;
  unsigned first;  // of the published table (16) at the quality that is kept
};

const QualityCase kQualityCases[] = {
    {"low is raised to 75", 30, false, 8},
    {"75 stays", 75, false, 8},
    {"90 stays", 90, true, 3},
    {"100 stays", 100, true, 1},
};

TEST_F(BrightnessPage, QualityAndSamplingAreKept) {
  for (const QualityCase& row : kQualityCases) {
    SCOPED_TRACE(row.name);
    store(makeJpeg({.quality = row.quality,
                    .densityUnit = 2,
                    .xDensity = 118,
                    .yDensity = 118,
                    .fullChroma = row.fullChroma},
                   100));
    GdiWrapper wrapper;
    wrapper.BrightnessContrastApplyEffect(path(), 10, 0);
    const JpegFacts facts = jpegFacts(loadBytes(file_));
    EXPECT_EQ(facts.lumaTable[0], row.first);
    EXPECT_EQ(facts.lumaAcross, row.fullChroma ? 1 : 2);
    EXPECT_EQ(facts.xDensity, 300U);
    EXPECT_EQ(facts.components, 3);
  }
}

TEST_F(StoredPage, UnreadablePictureStaysAsItWas) {
  GdiWrapper wrapper;
  std::wstring missing = (folder_.path() / "none.jpg").wstring();
  EXPECT_NO_THROW(wrapper.BlackandWhiteImageProcessing(missing, 0, 0));
  EXPECT_NO_THROW(wrapper.BrightnessContrastApplyEffect(missing, 1, 1));
  const Bytes text(100, 'x');
  store(text);
  std::wstring name = path();
  EXPECT_NO_THROW(wrapper.BlackandWhiteImageProcessing(name, 0, 0));
  EXPECT_NO_THROW(wrapper.BrightnessContrastApplyEffect(name, 1, 1));
  EXPECT_EQ(loadBytes(file_), text);
  EXPECT_EQ(folder_.fileNames(), std::vector<std::string>{"Image_1.jpg"});
}

template <typename Job>
std::string messageOf(Job job) {
  try {
    job();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return {};
}

TEST_F(StoredPage, FailedWriteKeepsThePageAndSaysSo) {
  const Bytes before = makeJpeg({.width = kWidth, .height = kHeight}, sheet);
  store(before);
  GdiWrapper wrapper;
  std::wstring name = path();
  std::string messages[2];
  {
    const FileSizeLimit full(2000);
    messages[0] = messageOf([&] { wrapper.BlackandWhiteImageProcessing(name, 0, 0); });
    messages[1] = messageOf([&] { wrapper.BrightnessContrastApplyEffect(name, 1, 1); });
  }
  for (const std::string& message : messages)
    EXPECT_NE(message.find(file_.string()), std::string::npos) << message;
  EXPECT_EQ(loadBytes(file_), before);
  EXPECT_EQ(folder_.fileNames(), std::vector<std::string>{"Image_1.jpg"});
}

TEST_F(StoredPage, CutPageIsProcessedAsFarAsItGoes) {
  Bytes file = makeJpeg({.width = 64, .height = 512, .channels = 1}, 200);
  file = prefix(file, file.size() - (file.size() - findMarker(file, 0xDA)) / 2);
  store(file);
  GdiWrapper wrapper;
  std::wstring name = path();
  wrapper.BrightnessContrastApplyEffect(name, 20, 0);
  wrapper.BlackandWhiteImageProcessing(name, 0, 0);
  const JpegFacts facts = jpegFacts(loadBytes(file_));
  EXPECT_EQ(facts.height, 512U);
  EXPECT_EQ(TestBitmap(file_).grey(32, 8), 255);
}

TEST_F(StoredPage, AccessRightsAndLinksStay) {
  namespace fs = std::filesystem;
  store(makeJpeg({.channels = 1, .quality = 100}, 100));
  fs::permissions(file_, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  const auto before = fs::status(file_).permissions();
  const fs::path link = folder_.path() / "link.jpg";
  fs::create_symlink("Image_1.jpg", link);
  GdiWrapper wrapper;
  wrapper.BrightnessContrastApplyEffect(link.wstring(), 10, 0);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(fs::status(file_).permissions(), before);
  EXPECT_EQ(TestBitmap(file_).grey(0, 0), 110);
}

}  // namespace
}  // namespace tvrscn::test
