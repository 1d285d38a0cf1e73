// The making of one page: strips decoded one by one through a temporary file, drawn one below the
// other, saved as one JPEG.
#ifndef TVRSCN_FAMILY_HP_HP_PAGE_ASSEMBLY_H
#define TVRSCN_FAMILY_HP_HP_PAGE_ASSEMBLY_H

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/imaging.h"
#include "tvrscn/hp_controller.h"
#include "tvrscn/tevrautil/gdi_wrapper.h"

// A bitmap that is disposed of with its owner; null when it could not be made.
class BitmapOwner {
 public:
  BitmapOwner() = default;
  BitmapOwner(const BitmapOwner&) = delete;
  BitmapOwner& operator=(const BitmapOwner&) = delete;
  ~BitmapOwner() { reset(); }

  void reset();
  Gdiplus::GpBitmap** out() { return &bitmap_; }
  Gdiplus::GpBitmap* get() const { return bitmap_; }

 private:
  Gdiplus::GpBitmap* bitmap_ = nullptr;
};

// A drawing context that is deleted with its owner.
class GraphicsOwner {
 public:
  GraphicsOwner() = default;
  GraphicsOwner(const GraphicsOwner&) = delete;
  GraphicsOwner& operator=(const GraphicsOwner&) = delete;
  ~GraphicsOwner() { reset(); }

  void reset();
  Gdiplus::GpGraphics** out() { return &graphics_; }
  Gdiplus::GpGraphics* get() const { return graphics_; }

 private:
  Gdiplus::GpGraphics* graphics_ = nullptr;
};

// The brightness and contrast effect with its parameters set.
class BrightnessContrastEffect {
 public:
  BrightnessContrastEffect(int brightness, int contrast);
  BrightnessContrastEffect(const BrightnessContrastEffect&) = delete;
  BrightnessContrastEffect& operator=(const BrightnessContrastEffect&) = delete;
  ~BrightnessContrastEffect();

  // Works on the whole bitmap, in place.
  void applyTo(Gdiplus::GpBitmap* bitmap);

 private:
  Gdiplus::CGpEffect* effect_ = nullptr;
};

// Lives for one page, on the thread of the job. No imaging status is looked at: a strip that cannot
// be decoded draws nothing, a page that cannot be saved is told all the same.
class HPPageAssembly {
 public:
  using Blocks = std::vector<std::pair<std::shared_ptr<unsigned char>, unsigned long>>;

  HPPageAssembly(USB_HP_Controller& controller, std::uint16_t width, std::uint16_t height,
                 std::int16_t fileNumber);

  void run(const Blocks& blocks);

 private:
  bool createStripFile();
  void drawStrip(const Blocks::value_type& block, bool isFirst);
  void createPage(const BitmapOwner& firstStrip);
  void applyEffect();
  void savePage(const std::wstring& path);
  void notifyPage(const std::wstring& path);
  std::wstring pagePath() const;

  USB_HP_Controller& controller_;
  const std::uint16_t width_;   // pixels
  const std::uint16_t height_;  // lines
  const std::int16_t fileNumber_;
  const bool blackAndWhite_;
  GdiWrapper imaging_;  // outlives everything below
  const CLSID encoder_;
  const int brightness_;
  const int contrast_;
  BrightnessContrastEffect effect_;
  std::wstring stripFile_;  // one for all strips, rewritten for each
  BitmapOwner page_;
  GraphicsOwner graphics_;
  std::uint16_t y_ = 0;  // where the next strip goes
};

#endif  // TVRSCN_FAMILY_HP_HP_PAGE_ASSEMBLY_H
