// The job's settings as the QZ device wants them: the window and what to use of feeder and duplex
// unit, both cut to what the device said it can do.
#include "tvrscn/qz_scan_data_source.h"

#include <algorithm>

namespace {

constexpr std::int32_t kFlatbed = 0;
constexpr std::int32_t kFeeder = 1;
constexpr std::int32_t kOnePage = 1;
constexpr std::int32_t kTenthsPerMillimetre = 10;

// Bits of bFeederOptions, as received and as sent.
constexpr unsigned kFeederFitted = 0x20;
constexpr unsigned kFeederUsable = 0x03;  // one of the two
constexpr unsigned kUseFeeder = 0x40;
constexpr unsigned kLimitPages = 0x10;
constexpr unsigned kFeederChoice = 0xC0;

// Bits of bDuplexOptions, as received and as sent.
constexpr unsigned kDuplexPossible = 0x30;  // one of the two
constexpr unsigned kTwoSided = 0x80;
constexpr unsigned kRotation = 0x0C;
constexpr unsigned kRotationShift = 2;

// Bits of bBackgroundFlags.
constexpr unsigned kBackgroundBits = 0x70;
constexpr unsigned kKeepBackground = 0x10;
constexpr unsigned kRemoveBackground = 0x40;

constexpr std::uint8_t kGreyMode = 0x20;
constexpr std::uint8_t kColourMode = 0x10;
constexpr std::uint8_t kBitsPerChannel = 8;
constexpr std::uint8_t kColourControl = 1;

constexpr std::uint8_t withBits(std::uint8_t flags, unsigned cleared, unsigned set) {
  return static_cast<std::uint8_t>((flags & ~cleared) | set);
}

// The device's numbers are unsigned on the wire and compared as signed ones.
std::int16_t signedValue(const BigEndian16& field) {
  return static_cast<std::int16_t>(field.value());
}
std::int32_t signedValue(const BigEndian32& field) {
  return static_cast<std::int32_t>(field.value());
}

std::uint32_t tenthsWithin(std::int32_t millimetres, const BigEndian32& limit) {
  // As unsigned numbers, since sizes beyond 32 bits wrap.
  const std::uint32_t tenths = static_cast<std::uint32_t>(millimetres) * kTenthsPerMillimetre;
  return static_cast<std::uint32_t>(
      std::min(static_cast<std::int32_t>(tenths), signedValue(limit)));
}

}  // namespace

CQZUSBScanDataSource::CQZUSBScanDataSource() : m_subDevicePage{}, m_measurementUnit{} {}
CQZUSBScanDataSource::CQZUSBScanDataSource(const CQZUSBScanDataSource& other) = default;
CQZUSBScanDataSource& CQZUSBScanDataSource::operator=(const CQZUSBScanDataSource& other) = default;
CQZUSBScanDataSource::~CQZUSBScanDataSource() = default;

void CQZUSBScanDataSource::FillSetWindowData(USBVendorSetWindowData* window) {
  if (window == nullptr) return;
  *window = {};
  SetResolutionToScan(window);
  SetScanSizeToScan(window);
  SetBrightnessContrast();
  SetBGRemoval(window);
  SetColorToScan(window);
}

void CQZUSBScanDataSource::FillModeSelectData(USBVendorSubDevicePage* page) {
  if (page == nullptr) return;
  page->bFeederOptions = withBits(page->bFeederOptions, kFeederChoice, 0);
  const unsigned feeder = m_subDevicePage.bFeederOptions;
  if (m_nPaperSource == kFeeder && (feeder & kFeederFitted) != 0 && (feeder & kFeederUsable) != 0) {
    page->bFeederOptions = withBits(page->bFeederOptions, 0, kUseFeeder);
    if (m_nPageLimit == kOnePage) {
      page->bFeederOptions = withBits(page->bFeederOptions, 0, kLimitPages);
      page->wPageCount.set(kOnePage);
    }
  }
  if (m_nPaperSource == kFlatbed) page->wPageCount.set(kOnePage);

  const bool duplexPossible = (m_subDevicePage.bDuplexOptions & kDuplexPossible) != 0;
  if (m_sides == "OneSided" || m_nPaperSource == kFlatbed || !duplexPossible) {
    page->bDuplexOptions = withBits(page->bDuplexOptions, kTwoSided, 0);
    return;
  }
  page->bDuplexOptions = withBits(page->bDuplexOptions, 0, kTwoSided);
  if (m_sides == "SecondSideRotation") {
    const auto rotation = static_cast<unsigned>(m_nFeedEdge) << kRotationShift;
    page->bDuplexOptions = withBits(page->bDuplexOptions, kRotation, rotation);
  }
}

void CQZUSBScanDataSource::SetSubDevicesPageData(USBVendorSubDevicePage* page) {
  m_subDevicePage = *page;
}
USBVendorSubDevicePage* CQZUSBScanDataSource::GetSubDevicesPageData() {
  return &m_subDevicePage;
}
void CQZUSBScanDataSource::SetMeasurementUnitData(USBVendorMeasurementUnit* unit) {
  m_measurementUnit = *unit;
}
USBVendorMeasurementUnit* CQZUSBScanDataSource::GetMeasurementUnitData() {
  return &m_measurementUnit;
}

void CQZUSBScanDataSource::SetResolutionToScan(USBVendorSetWindowData* window) {
  const USBVendorSubDevicePage& limits = m_subDevicePage;
  std::int16_t resolution = GetAppResolution();
  if (resolution < signedValue(limits.wMinXResolution) ||
      resolution > signedValue(limits.wMaxXResolution)) {
    resolution = signedValue(limits.wMinXResolution);
  } else if (resolution < signedValue(limits.wMinYResolution) ||
             resolution > signedValue(limits.wMaxYResolution)) {
    resolution = signedValue(limits.wMinYResolution);
  }
  window->wXResolution.set(static_cast<std::uint16_t>(resolution));
  window->wYResolution.set(static_cast<std::uint16_t>(resolution));
}

void CQZUSBScanDataSource::SetScanSizeToScan(USBVendorSetWindowData* window) {
  const USBVendorSubDevicePage& limits = m_subDevicePage;
  const bool flatbed = m_nPaperSource == kFlatbed;
  const std::uint32_t width =
      tenthsWithin(m_nWidth, flatbed ? limits.dwFlatbedMaxWidth : limits.dwFeederMaxWidth);
  const std::uint32_t length =
      tenthsWithin(m_nHeight, flatbed ? limits.dwFlatbedMaxLength : limits.dwFeederMaxLength);
  window->dwWindowWidth.set(width);
  window->dwScanWidth.set(width);
  window->dwWindowLength.set(length);
  window->dwScanLength.set(length);
}

void CQZUSBScanDataSource::SetBGRemoval(USBVendorSetWindowData* window) {
  const unsigned choice = m_backgroundRemoval == "Off" ? kKeepBackground : kRemoveBackground;
  window->bBackgroundFlags = withBits(window->bBackgroundFlags, kBackgroundBits, choice);
}

// Black-and-white goes out as colour: the page is made bitonal when it has arrived.
void CQZUSBScanDataSource::SetColorToScan(USBVendorSetWindowData* window) {
  window->bColorMode = m_colorMode == "Grayscale" ? kGreyMode : kColourMode;
  window->bBitDepth = kBitsPerChannel;
  window->bColorControl = kColourControl;
  if (m_colorMode == "BlackAndWhite") m_bNeedImageProcessing = true;
}
