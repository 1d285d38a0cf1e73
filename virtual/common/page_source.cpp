// Sources and the two things any page can be put through: being fed upside down, and the cleaning
// of its background.
#include "virtual/common/page_source.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "virtual/common/codec.h"
#include "virtual/common/image_scaler.h"
#include "virtual/common/test_sheet.h"

namespace tvrscn::virtual_device {
namespace {

// Paper is what is this bright in all channels; what is as bright as kWhiteFrom is white when the
// background is cleaned, and between the two the picture is lifted gradually, without an edge.
constexpr int kPaperFrom = 200;
constexpr int kWhiteFrom = 232;

void cleanBackground(Raster& band) {
  for (std::size_t i = 0; i + 2 < band.data.size(); i += 3) {
    std::uint8_t* pixel = band.data.data() + i;
    const int darkest = std::min({pixel[0], pixel[1], pixel[2]});
    if (darkest < kPaperFrom) continue;
    const int lift = std::min(darkest - kPaperFrom, kWhiteFrom - kPaperFrom);
    for (int channel = 0; channel < 3; ++channel) {
      const int rest = 255 - pixel[channel];
      pixel[channel] =
          static_cast<std::uint8_t>(pixel[channel] + rest * lift / (kWhiteFrom - kPaperFrom));
    }
  }
}

class ImagePage final : public Page {
 public:
  ImagePage(const Raster& image, const PageRequest& request)
      : scaler_(image, request.width, request.height), clean_(request.cleanBackground) {}

  void render(int firstLine, Raster& band) const override {
    scaler_.render(firstLine, band);
    if (clean_) cleanBackground(band);
  }

 private:
  ImageScaler scaler_;
  bool clean_;
};

class UpsideDownPage final : public Page {
 public:
  UpsideDownPage(std::unique_ptr<Page> page, int height)
      : page_(std::move(page)), height_(height) {}

  void render(int firstLine, Raster& band) const override {
    page_->render(height_ - firstLine - band.height, band);
    std::reverse(band.data.begin(), band.data.end());
    // The pixels are in order now, the channels within each are not.
    for (std::size_t i = 0; i + 2 < band.data.size(); i += 3) {
      std::swap(band.data[i], band.data[i + 2]);
    }
  }

 private:
  std::unique_ptr<Page> page_;
  int height_;
};

std::unique_ptr<Page> turned(std::unique_ptr<Page> page, const PageRequest& request) {
  if (!request.upsideDown) return page;
  return std::make_unique<UpsideDownPage>(std::move(page), request.height);
}

class ImageSource final : public PageSource {
 public:
  explicit ImageSource(const std::vector<std::filesystem::path>& files) {
    for (const std::filesystem::path& file : files)
      images_.push_back(decodeImageFile(file));
  }

  std::unique_ptr<Page> page(const PageRequest& request) const override {
    const std::size_t index = static_cast<std::size_t>(request.page - 1) % images_.size();
    return turned(std::make_unique<ImagePage>(images_[index], request), request);
  }

 private:
  std::vector<Raster> images_;
};

class TestSheetSource final : public PageSource {
 public:
  std::unique_ptr<Page> page(const PageRequest& request) const override {
    return turned(makeTestSheet(request), request);
  }
};

}  // namespace

std::unique_ptr<PageSource> makePageSource(const std::vector<std::filesystem::path>& files) {
  if (files.empty()) return std::make_unique<TestSheetSource>();
  return std::make_unique<ImageSource>(files);
}

}  // namespace tvrscn::virtual_device
