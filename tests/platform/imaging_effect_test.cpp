// The brightness and contrast effect. The levels are worked out from the formula by hand.
#include <gtest/gtest.h>

#include "imaging_test_support.h"

namespace tvrscn::test {
namespace {

using namespace Gdiplus;

class EffectOwner {
 public:
  EffectOwner() { gdip::GdipCreateEffect(BrightnessContrastEffectGuid, &effect_); }
  EffectOwner(const EffectOwner&) = delete;
  EffectOwner& operator=(const EffectOwner&) = delete;
  ~EffectOwner() { gdip::GdipDeleteEffect(effect_); }

  CGpEffect* get() const { return effect_; }
  GpStatus set(INT brightness, INT contrast) {
    const BrightnessContrastParams parameters{brightness, contrast};
    return gdip::GdipSetEffectParameters(effect_, &parameters, sizeof parameters);
  }
  GpStatus apply(const TestBitmap& bitmap) {
    return gdip::GdipBitmapApplyEffect(bitmap.get(), effect_, nullptr, 0, nullptr, nullptr);
  }

 private:
  CGpEffect* effect_ = nullptr;
};

struct LevelCase {
  const char* name;
  INT brightness, contrast;
  Bytes levels;  // of 0, 60, 127, 128, 200 and 255
};

// contrast -50: 127.5 + (v - 127.5) / 2; 50: 127.5 + (v - 127.5) * 2
const LevelCase kLevelCases[] = {
    {"none", 0, 0, {0, 60, 127, 128, 200, 255}},
    {"brighter", 50, 0, {50, 110, 177, 178, 250, 255}},
    {"darker", -50, 0, {0, 10, 77, 78, 150, 205}},
    {"all white", 255, 0, {255, 255, 255, 255, 255, 255}},
    {"all black", -255, 0, {0, 0, 0, 0, 0, 0}},
    {"half contrast", 0, -50, {64, 94, 127, 128, 164, 191}},
    {"flat grey", 0, -100, {128, 128, 128, 128, 128, 128}},
    {"double contrast", 0, 50, {0, 0, 127, 129, 255, 255}},
    {"hard", 0, 100, {0, 0, 0, 255, 255, 255}},
    {"contrast first", 20, 50, {20, 20, 147, 149, 255, 255}},
    {"white whatever", 255, 100, {255, 255, 255, 255, 255, 255}},
    {"black whatever", -255, -100, {0, 0, 0, 0, 0, 0}},
};

TEST(BrightnessContrast, MapsLevels) {
  for (const LevelCase& row : kLevelCases) {
    SCOPED_TRACE(row.name);
    EffectOwner effect;
    ASSERT_EQ(effect.set(row.brightness, row.contrast), Ok);
    for (const PixelFormat format : {PixelFormat8bppIndexed, PixelFormat24bppRGB}) {
      TestBitmap bitmap(format == PixelFormat8bppIndexed ? 6 : 2, 1, format);
      bitmap.setPixels({0, 60, 127, 128, 200, 255});
      EXPECT_EQ(effect.apply(bitmap), Ok);
      EXPECT_EQ(bitmap.pixels(), row.levels);
    }
  }
}

struct BitLevelCase {
  const char* name;
  INT brightness, contrast;
  std::uint8_t result;  // of 0xA5
};

const BitLevelCase kBitLevelCases[] = {
    {"none", 0, 0, 0xA5},
    {"not enough", 127, 0, 0xA5},
    {"black goes white", 128, 0, 0xFF},
    {"white goes black", -128, 0, 0x00},
    {"flat grey", 0, -100, 0xFF},
    {"hard", 0, 100, 0xA5},
};

TEST(BrightnessContrast, OneBitPageStaysBlackAndWhite) {
  for (const BitLevelCase& row : kBitLevelCases) {
    SCOPED_TRACE(row.name);
    EffectOwner effect;
    ASSERT_EQ(effect.set(row.brightness, row.contrast), Ok);
    TestBitmap bitmap(8, 1, PixelFormat1bppIndexed);
    bitmap.setPixels({0xA5});
    EXPECT_EQ(effect.apply(bitmap), Ok);
    EXPECT_EQ(bitmap.pixels(), Bytes{row.result});
  }
}

TEST(BrightnessContrast, ValuesOutOfRangeChangeNothing) {
  EffectOwner effect;
  ASSERT_EQ(effect.set(10, 0), Ok);
  EXPECT_EQ(effect.set(256, 0), InvalidParameter);
  EXPECT_EQ(effect.set(-256, 0), InvalidParameter);
  EXPECT_EQ(effect.set(0, 101), InvalidParameter);
  EXPECT_EQ(effect.set(0, -101), InvalidParameter);
  TestBitmap bitmap(1, 1, PixelFormat8bppIndexed);
  bitmap.setPixels({100});
  EXPECT_EQ(effect.apply(bitmap), Ok);
  EXPECT_EQ(bitmap.pixels(), Bytes{110});
}

TEST(BrightnessContrast, WrongArgumentsAreRefused) {
  EffectOwner effect;
  const BrightnessContrastParams parameters{10, 0};
  EXPECT_EQ(gdip::GdipSetEffectParameters(effect.get(), &parameters, 4), InvalidParameter);
  EXPECT_EQ(gdip::GdipSetEffectParameters(effect.get(), nullptr, 8), InvalidParameter);
  EXPECT_EQ(gdip::GdipSetEffectParameters(nullptr, &parameters, 8), InvalidParameter);
  EXPECT_EQ(gdip::GdipDeleteEffect(nullptr), InvalidParameter);
  const TestBitmap bitmap(1, 1, PixelFormat8bppIndexed);
  EXPECT_EQ(gdip::GdipBitmapApplyEffect(nullptr, effect.get(), nullptr, 0, nullptr, nullptr),
            InvalidParameter);
  EXPECT_EQ(gdip::GdipBitmapApplyEffect(bitmap.get(), nullptr, nullptr, 0, nullptr, nullptr),
            InvalidParameter);
}

TEST(BrightnessContrast, OtherEffectsAreNotMade) {
  EXPECT_EQ(gdip::GdipCreateEffect(BrightnessContrastEffectGuid, nullptr), InvalidParameter);
  EffectOwner kept;
  CGpEffect* effect = kept.get();
  EXPECT_EQ(gdip::GdipCreateEffect(GUID{}, &effect), InvalidParameter);
  EXPECT_EQ(effect, nullptr);
}

}  // namespace
}  // namespace tvrscn::test
