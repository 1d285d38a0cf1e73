// The brightness and contrast effect.
#include <gtest/gtest.h>

#include "imaging_test_support.h"
#include "tests/support/effect_cases.h"

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
