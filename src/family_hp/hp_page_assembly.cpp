// The making of one page. The decoder takes files, hence the temporary one; it is rewritten in
// place, so that disk use stays at one strip.
#include "family_hp/hp_page_assembly.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "platform/device_file.h"
#include "platform/files.h"
#include "tvrscn/scan_client.h"
#include "usb/log_writer.h"
#include "usb/text.h"

namespace {

constexpr const char* kBlackAndWhite = "BlackAndWhite";

// The longest folder for temporary files, terminator included.
constexpr DWORD kTempPathCapacity = 261;
constexpr wchar_t kStripFilePrefix[] = L"aster_";

// Overwrites the file and cuts off what is left of a longer strip. Emptying it first would come to
// the same content, but file systems hurry a file to disk that is emptied and filled again, and
// that, once for each strip, would cost more than all the decoding.
void writeStripFile(const std::wstring& path, const unsigned char* bytes, unsigned long size) {
  const std::filesystem::path name = tvrscn::systemPath(path);
  std::fstream file(name, std::ios::binary | std::ios::in | std::ios::out);
  if (!file.is_open()) file.open(name, std::ios::binary | std::ios::out | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
  file.flush();
  file.close();
  std::error_code ignored;
  if (std::filesystem::file_size(name, ignored) > size && !ignored) {
    std::filesystem::resize_file(name, size, ignored);
  }
}

CLSID encoderOf(GdiWrapper& imaging, const std::wstring& mimeType) {
  CLSID encoder = {};
  imaging.GetEncoderClsid(mimeType.c_str(), &encoder);
  return encoder;
}

}  // namespace

void BitmapOwner::reset() {
  if (bitmap_ != nullptr) gdip::GdipDisposeImage(bitmap_);
  bitmap_ = nullptr;
}

void GraphicsOwner::reset() {
  if (graphics_ != nullptr) gdip::GdipDeleteGraphics(graphics_);
  graphics_ = nullptr;
}

BrightnessContrastEffect::BrightnessContrastEffect(int brightness, int contrast) {
  const Gdiplus::BrightnessContrastParams parameters = {brightness, contrast};
  gdip::GdipCreateEffect(Gdiplus::BrightnessContrastEffectGuid, &effect_);
  gdip::GdipSetEffectParameters(effect_, &parameters, sizeof(parameters));
}

BrightnessContrastEffect::~BrightnessContrastEffect() {
  // No auxiliary data was ever asked for, so there is none to release.
  if (effect_ != nullptr) gdip::GdipDeleteEffect(effect_);
}

void BrightnessContrastEffect::applyTo(Gdiplus::GpBitmap* bitmap) {
  gdip::GdipBitmapApplyEffect(bitmap, effect_, nullptr, 0, nullptr, nullptr);
}

HPPageAssembly::HPPageAssembly(USB_HP_Controller& controller, std::uint16_t width,
                               std::uint16_t height, std::int16_t fileNumber)
    : controller_(controller),
      width_(width),
      height_(height),
      fileNumber_(fileNumber),
      blackAndWhite_(controller.m_scanDataSource->getColorToScan() == kBlackAndWhite),
      encoder_(encoderOf(imaging_, controller.m_defaultImageMimeType)),
      brightness_(controller.m_scanDataSource->getBrightness()),
      contrast_(controller.m_scanDataSource->getContrast()),
      effect_(brightness_, contrast_) {}

void HPPageAssembly::run(const Blocks& blocks) {
  if (!createStripFile()) return;
  for (std::size_t i = 0; i < blocks.size(); ++i)
    drawStrip(blocks[i], i == 0);
  applyEffect();
  const std::wstring path = pagePath();
  savePage(path);
  notifyPage(path);
  page_.reset();
  graphics_.reset();
  DeleteFileW(stripFile_.c_str());  // an exception on the way leaves the file where it is
}

bool HPPageAssembly::createStripFile() {
  wchar_t folder[kTempPathCapacity + 1] = {};
  // A length of 0 is a failure too, and wraps.
  if (GetTempPathW(kTempPathCapacity, folder) - 1U > kTempPathCapacity - 1U) {
    tvrscn::writeLog(L"Received Error code : %lu", {GetLastError()});
    return false;
  }
  wchar_t file[kTempPathCapacity + 1] = {};
  GetTempFileNameW(folder, kStripFilePrefix, 0, file);
  stripFile_ = file;
  return true;
}

void HPPageAssembly::drawStrip(const Blocks::value_type& block, bool isFirst) {
  writeStripFile(stripFile_, block.first.get(), block.second);
  BitmapOwner strip;
  gdip::GdipCreateBitmapFromFile(stripFile_.c_str(), strip.out());
  if (isFirst) createPage(strip);
  gdip::GdipDrawImageI(graphics_.get(), strip.get(), 0, y_);
  // The strip's own height counts, not the one that was announced for its block.
  UINT height = 0;
  gdip::GdipGetImageHeight(strip.get(), &height);
  y_ = static_cast<std::uint16_t>(y_ + height);
}

void HPPageAssembly::createPage(const BitmapOwner& firstStrip) {
  Gdiplus::PixelFormat format = Gdiplus::PixelFormat1bppIndexed;
  if (!blackAndWhite_) {
    format = 0;
    gdip::GdipGetImagePixelFormat(firstStrip.get(), &format);
  }
  gdip::GdipCreateBitmapFromScan0(width_, height_, 0, format, nullptr, page_.out());
  Gdiplus::REAL horizontal = 0;
  Gdiplus::REAL vertical = 0;
  gdip::GdipGetImageHorizontalResolution(firstStrip.get(), &horizontal);
  gdip::GdipGetImageVerticalResolution(firstStrip.get(), &vertical);
  gdip::GdipBitmapSetResolution(page_.get(), horizontal, vertical);
  gdip::GdipGetImageGraphicsContext(page_.get(), graphics_.out());
}

void HPPageAssembly::applyEffect() {
  if (brightness_ == 0 && contrast_ == 0) return;
  effect_.applyTo(page_.get());
  // Lands wholly outside the page and changes nothing; kept because the sequence of imaging calls
  // on a page is relied upon.
  gdip::GdipDrawImageI(graphics_.get(), page_.get(), width_, height_);
}

std::wstring HPPageAssembly::pagePath() const {
  return controller_.m_imageFolderPath + tvrscn::kPathSeparator + L"Image_" +
         std::to_wstring(fileNumber_) + tvrscn::widen(controller_.m_defaultImageExtension);
}

void HPPageAssembly::savePage(const std::wstring& path) {
  gdip::GdipSaveImageToFile(page_.get(), path.c_str(), &encoder_, nullptr);
}

void HPPageAssembly::notifyPage(const std::wstring& path) {
  if (!controller_.m_bImageNotified) {
    ScanBaseClient::SendNotification(controller_.m_pCallback, NOTIFY_TRANSFER_STARTED,
                                     TVR_NOTIF_PRIORITY_NORMAL, "");
    controller_.m_bImageNotified = true;
  }
  ScanBaseClient::SendNotification(controller_.m_pCallback, NOTIFY_IMAGE_READY,
                                   TVR_NOTIF_PRIORITY_NORMAL, tvrscn::narrow(path));
}

void USB_HP_Controller::prepareFinalImage(
    std::vector<std::pair<std::shared_ptr<unsigned char>, unsigned long>>& blocks,
    unsigned short width, unsigned short height, short fileNumber) {
  if (blocks.empty()) return;
  try {
    HPPageAssembly(*this, width, height, fileNumber).run(blocks);
  } catch (const std::exception& error) {
    tvrscn::writeLog(L"Error: Writing image data to temp path is failed %S", {error.what()});
    ErrorHandler(USB_ERR_WRITE, static_cast<int>(m_bUsingTevraUI));
  }
}
