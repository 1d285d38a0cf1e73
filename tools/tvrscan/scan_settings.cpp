#include "scan_settings.h"

#include <cmath>

namespace tvrscn::cli {
namespace {

constexpr int kLibraryDivisor = 4;
constexpr double kLevelsPerPercent = 2.55;

}  // namespace

TevraScanUIData jobSettings(const ScanSettings& settings) {
  const auto level = static_cast<int>(std::lround(settings.brightness * kLevelsPerPercent));
  TevraScanUIData data;
  data.mediaSize = settings.size.mediaName;
  data.pageWidth = settings.size.width;
  data.pageHeight = settings.size.height;
  data.sides = settings.sides;
  data.resolution = settings.resolution;
  data.colorMode = settings.colorMode;
  data.brightness = std::to_wstring(-level * kLibraryDivisor);
  data.contrast = std::to_wstring(settings.contrast * kLibraryDivisor);
  data.backgroundRemoval = std::wstring(settings.background.begin(), settings.background.end());
  return data;
}

std::vector<std::string> settingsWithoutEffect(const ScanSettings& settings) {
  std::vector<std::string> notes;
  const bool adjusted = settings.brightness != 0 || settings.contrast != 0;
  if (adjusted && settings.colorMode == "BlackAndWhite") {
    notes.emplace_back(
        "--brightness and --contrast have no effect with --mode bw: the page is already black and "
        "white when they are applied");
  }
  const std::string& resolution = settings.resolution;
  if (resolution == "72x72" || resolution == "200x100" || resolution == "200x400") {
    notes.push_back("devices of the HP family don't know " + resolution +
                    " dpi and scan with 300x300");
  }
  return notes;
}

}  // namespace tvrscn::cli
