// The job's settings as typed values.
#include "tvrscn/scan_data_source.h"

#include <stdexcept>
#include <string_view>
#include <vector>

#include "usb/text.h"

namespace {

using tvrscn::narrow;
using tvrscn::toInt;

struct ResolutionRow {
  std::string_view text;
  short dotsPerInch;
};

// "72x72" and "1200x1200" are not here: the families that offer them resolve them on their own.
constexpr ResolutionRow kResolutions[] = {
    {"75x75", 75},    {"100x100", 100}, {"150x150", 150}, {"200x200", 200},
    {"300x300", 300}, {"400x400", 400}, {"600x600", 600},
};
constexpr short kDefaultResolution = 200;

constexpr int kFlatbed = 0;
constexpr int kNoPageLimit = 0;
constexpr std::int32_t kLongEdgeFirst = 0;
constexpr std::int32_t kShortEdgeFirst = 1;

// The interface's steps are four times as fine as those of the image.
constexpr std::int32_t kStepsPerImageStep = 4;

constexpr std::size_t kMostFields = 10;
constexpr std::size_t kNeededFields = 9;

}  // namespace

CUSBScanDataSource::CUSBScanDataSource()
    : m_nWidth(0),
      m_nHeight(0),
      m_nPageLimit(kNoPageLimit),
      m_nFeedEdge(kShortEdgeFirst),
      m_resolution("200x200"),
      m_sides("OneSided"),
      m_nContrast(0),
      m_nBrightness(0),
      m_colorMode("FullColor"),
      m_bNeedImageProcessing(false),
      m_nPaperSource(1) {}

CUSBScanDataSource::CUSBScanDataSource(const CUSBScanDataSource& other) = default;
CUSBScanDataSource& CUSBScanDataSource::operator=(const CUSBScanDataSource& other) = default;
CUSBScanDataSource::~CUSBScanDataSource() = default;

bool CUSBScanDataSource::setAppDataToScanCommand(const TevraScanUIData& settings) {
  const std::string background = narrow(settings.backgroundRemoval);
  const int contrast = toInt(narrow(settings.contrast));
  const int brightness = toInt(narrow(settings.brightness));
  SetScaningPropertiesFromApp(settings.colorMode, settings.resolution, settings.sides,
                              settings.pageWidth, settings.pageHeight, kFlatbed, brightness,
                              contrast, background, kNoPageLimit, settings.mediaSize);
  return true;
}

bool CUSBScanDataSource::setAppDataToScanCommand(const std::string& settings) {
  if (settings.empty()) return false;
  // A zero byte ends the line, as it ends every text that a driver hands in.
  const std::vector<std::string> fields = tvrscn::splitFields(settings.c_str(), kMostFields);
  if (fields.size() < kNeededFields) {
    throw std::logic_error(
        "a settings line needs nine fields: colour, resolution, sides, width, "
        "height, brightness, contrast, background, media name");
  }
  const int width = toInt(fields[3]);
  const int height = toInt(fields[4]);
  const int brightness = toInt(fields[5]);
  const int contrast = toInt(fields[6]);
  SetScaningPropertiesFromApp(fields[0], fields[1], fields[2], width, height, kFlatbed, brightness,
                              contrast, fields[7], kNoPageLimit, fields[8]);
  return true;
}

void CUSBScanDataSource::SetScaningPropertiesFromApp(std::string colorMode, std::string resolution,
                                                     std::string sides, int width, int height,
                                                     int paperSource, int brightness, int contrast,
                                                     std::string backgroundRemoval, int pageLimit,
                                                     std::string mediaSize) {
  m_colorMode = colorMode;
  m_resolution = resolution;
  m_sides = sides;
  m_nWidth = width;
  m_nHeight = height;
  m_nPaperSource = paperSource;
  m_nBrightness = brightness;
  m_nContrast = contrast;
  m_nPageLimit = pageLimit;
  m_backgroundRemoval = backgroundRemoval;
  m_mediaSize = mediaSize;
  if (mediaSize.find("LEF") != std::string::npos) m_nFeedEdge = kLongEdgeFirst;
}

short CUSBScanDataSource::GetAppResolution() {
  for (const ResolutionRow& row : kResolutions) {
    if (m_resolution == row.text) return row.dotsPerInch;
  }
  return kDefaultResolution;
}

void CUSBScanDataSource::SetBrightnessContrast() {
  if (m_nBrightness == 0 && m_nContrast == 0) return;
  m_bNeedImageProcessing = true;
  // The incoming brightness is a darkness; contrast keeps its direction.
  m_nBrightness = -(m_nBrightness / kStepsPerImageStep);
  m_nContrast = m_nContrast / kStepsPerImageStep;
}

int CUSBScanDataSource::getBrightness() {
  return m_nBrightness;
}
int CUSBScanDataSource::getContrast() {
  return m_nContrast;
}
std::string CUSBScanDataSource::getColorToScan() {
  return m_colorMode;
}
std::string CUSBScanDataSource::getHardwareId() {
  return m_hardwareId;
}
void CUSBScanDataSource::setHardwareId(const std::string& hardwareId) {
  m_hardwareId = hardwareId;
}
int CUSBScanDataSource::GetPaperSource() {
  return m_nPaperSource;
}
void CUSBScanDataSource::SetPaperSource(int paperSource) {
  m_nPaperSource = paperSource;
}
bool CUSBScanDataSource::isNeedImageProcessing() {
  return m_bNeedImageProcessing;
}
