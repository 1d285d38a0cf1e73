#include "virtual/qz/qz_records.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "virtual/qz/qz_protocol.h"

namespace tvrscn::virtual_device {
namespace {

// Texts of the inquiry data, each with zeros behind it.
struct Text {
  std::size_t at;
  std::string_view text;
};
constexpr Text kInquiryTexts[] = {
    {8, "Tevra"},
    {40, "Virtual QZ scanner"},
    {72, "1.0"},
};
constexpr std::size_t kInquirySize = 88;
constexpr std::uint8_t kScannerType = 6;

// In front of a mode page: its code, and how many bytes follow.
constexpr std::uint8_t kSubDeviceCode = 0x20;

constexpr std::size_t kFeederOptionsAt = 2;
constexpr std::size_t kDuplexOptionsAt = 5;
constexpr std::size_t kSizesAt = 8;
constexpr std::size_t kResolutionsAt = 28;

}  // namespace

Bytes qzInquiryData() {
  Bytes data(kInquirySize, 0);
  data[0] = kScannerType;
  for (const Text& row : kInquiryTexts) {
    std::copy(row.text.begin(), row.text.end(), data.begin() + static_cast<std::ptrdiff_t>(row.at));
  }
  return data;
}

Bytes qzSubDevicePage(const QzScannerOptions& options) {
  Bytes page(kQzSubDeviceSize, 0);
  page[0] = kSubDeviceCode;
  page[1] = kQzSubDeviceSize - 2;
  page[kFeederOptionsAt] = options.feederOptions;
  page[kDuplexOptionsAt] = options.duplexOptions;
  std::size_t at = kSizesAt;
  for (const int size : {options.flatbedLimits.maxWidth, options.flatbedLimits.maxLength,
                         options.feederLimits.maxWidth, options.feederLimits.maxLength}) {
    putBig32(page, at, static_cast<std::uint32_t>(size));
    at += sizeof(std::uint32_t);
  }
  at = kResolutionsAt;
  for (const int resolution : {options.resolutions.maxX, options.resolutions.maxY,
                               options.resolutions.minX, options.resolutions.minY}) {
    putBig16(page, at, static_cast<std::uint16_t>(resolution));
    at += sizeof(std::uint16_t);
  }
  return page;
}

// Tenths of a millimetre: the basic unit is 1, a millimetre, the divisor 10.
Bytes qzMeasurementUnit() {
  return {0x03, 0x06, 0x01, 0x00, 0x00, 0x0A, 0x00, 0x00};
}

}  // namespace tvrscn::virtual_device
