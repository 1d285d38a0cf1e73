// From the job's settings to the bytes of the set window request.
#include "tvrscn/hp_scan_data_source.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace {

struct CodeRow {
  std::string_view text;
  std::uint8_t code;
};

constexpr CodeRow kResolutionCodes[] = {
    {"75x75", 0x00},   {"100x100", 0x0A}, {"150x150", 0x02}, {"200x200", 0x09},
    {"300x300", 0x05}, {"400x400", 0x0E}, {"600x600", 0x07}, {"1200x1200", 0x08},
};

// Colour and black-and-white ask for the same picture; the difference is made in page assembly.
constexpr CodeRow kColorCodes[] = {
    {"Grayscale", 0x03},
    {"BlackAndWhite", 0x05},
    {"Auto", 0x05},
};

constexpr CodeRow kFeederSides[] = {
    {"TwoSided", 0x11},
    {"SecondSideRotation", 0x10},
};
constexpr std::uint8_t kFeederOneSided = 0x20;
constexpr std::uint8_t kFlatbedSource[2] = {0x40, 0x01};

constexpr std::string_view kBackgroundOff = "Off";
constexpr std::uint8_t kBackgroundKept = 0x01;
constexpr std::uint8_t kBackgroundRemoved = 0x09;

constexpr std::uint8_t kFilled3 = 0x13;
constexpr std::uint8_t kFilled4 = 0x30;
constexpr std::uint8_t kFilled20 = 0x06;
constexpr std::uint8_t kFilled22 = 0x15;

using CodeTable = std::span<const CodeRow>;

// Leaves the field as it is when the text has no row.
void setCode(std::uint8_t& field, CodeTable table, std::string_view text) {
  for (const CodeRow& row : table) {
    if (row.text == text) field = row.code;
  }
}

// Millimetres to 1/1200 inch. Negative sizes go out as the low 32 bits of their result.
std::uint32_t toWindowUnits(std::int32_t millimetres) {
  constexpr std::int64_t kUnitsPerInch = 1200;
  constexpr double kMillimetresPerInch = 25.4;
  const double units = static_cast<double>(millimetres * kUnitsPerInch) / kMillimetresPerInch;
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(units));
}

}  // namespace

CHPUSBScanDataSource::CHPUSBScanDataSource() = default;
CHPUSBScanDataSource::CHPUSBScanDataSource(const CHPUSBScanDataSource& other) = default;
CHPUSBScanDataSource& CHPUSBScanDataSource::operator=(const CHPUSBScanDataSource& other) = default;
CHPUSBScanDataSource::~CHPUSBScanDataSource() = default;

void CHPUSBScanDataSource::FillSetWindowData(HPPKUSBSetWindowParameterRequest& request) {
  request.fixed3 = kFilled3;
  request.fixed4 = kFilled4;
  request.windowWidth.set(toWindowUnits(m_nWidth));
  request.windowHeight.set(toWindowUnits(m_nHeight));
  setCode(request.resolutionCodeX, kResolutionCodes, m_resolution);
  setCode(request.resolutionCodeY, kResolutionCodes, m_resolution);
  request.fixed20 = kFilled20;
  setCode(request.colorCode, kColorCodes, m_colorMode);
  request.fixed22 = kFilled22;
  SetBrightnessContrast();
  request.backgroundCode =
      m_backgroundRemoval == kBackgroundOff ? kBackgroundKept : kBackgroundRemoved;
  if (m_nPaperSource == 0) {
    std::copy(std::begin(kFlatbedSource), std::end(kFlatbedSource), request.sourceCode);
    return;
  }
  std::fill(std::begin(request.reserved15), std::end(request.reserved15), std::uint8_t{0});
  request.sourceCode[0] = kFeederOneSided;
  setCode(request.sourceCode[0], kFeederSides, m_sides);
  request.sourceCode[1] = 0x00;
}
