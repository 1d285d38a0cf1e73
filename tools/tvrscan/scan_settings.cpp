#include "scan_settings.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

namespace tvrscn::cli {
namespace {

constexpr int kLibraryDivisor = 4;
constexpr double kLevelsPerPercent = 2.55;

// All but brightness and contrast, which is the same for every family.
TevraScanUIData pageSettings(const ScanSettings& settings) {
  TevraScanUIData data;
  data.mediaSize = settings.size.mediaName;
  data.pageWidth = settings.size.width;
  data.pageHeight = settings.size.height;
  data.sides = settings.sides;
  data.resolution = settings.resolution;
  data.colorMode = settings.colorMode;
  data.backgroundRemoval = std::wstring(settings.background.begin(), settings.background.end());
  return data;
}

// From normal towards one of the ends of the range, which may be as far apart as numbers go.
int valueInRange(int percent, const std::optional<IPPMinMaxNormalStepData>& range) {
  if (!range) return 0;
  const double normal = range->Normal;
  const double end = percent < 0 ? range->Min : range->Max;
  return static_cast<int>(std::lround(normal + (end - normal) * std::abs(percent) / 100));
}

// The resolution note of a family that scans with another one instead.
void noteResolution(const ScanSettings& settings, std::initializer_list<std::string_view> unknown,
                    const std::string& title, const std::string& instead,
                    std::vector<std::string>& notes) {
  if (std::find(unknown.begin(), unknown.end(), settings.resolution) == unknown.end()) return;
  notes.push_back("devices of the " + title + " family don't know " + settings.resolution +
                  " dpi and scan with " + instead);
}

}  // namespace

TevraScanUIData hpJobSettings(const ScanSettings& settings, const DeviceRanges& /*ranges*/) {
  const auto level = static_cast<int>(std::lround(settings.brightness * kLevelsPerPercent));
  TevraScanUIData data = pageSettings(settings);
  data.brightness = std::to_wstring(-level * kLibraryDivisor);
  data.contrast = std::to_wstring(settings.contrast * kLibraryDivisor);
  return data;
}

TevraScanUIData lowEndJobSettings(const ScanSettings& settings, const DeviceRanges& ranges) {
  TevraScanUIData data = pageSettings(settings);
  data.brightness = std::to_wstring(valueInRange(-settings.brightness, ranges.brightness));
  data.contrast = std::to_wstring(valueInRange(settings.contrast, ranges.contrast));
  return data;
}

TevraScanUIData qzJobSettings(const ScanSettings& settings, const DeviceRanges& ranges) {
  return hpJobSettings(settings, ranges);
}

std::vector<std::string> hpSettingsWithoutEffect(const ScanSettings& settings) {
  std::vector<std::string> notes;
  const bool adjusted = settings.brightness != 0 || settings.contrast != 0;
  if (adjusted && settings.colorMode == "BlackAndWhite") {
    notes.emplace_back(
        "--brightness and --contrast have no effect with --mode bw: the page is already black and "
        "white when they are applied");
  }
  noteResolution(settings, {"72x72", "200x100", "200x400"}, "HP", "300x300", notes);
  return notes;
}

std::vector<std::string> lowEndSettingsWithoutEffect(const ScanSettings& settings) {
  std::vector<std::string> notes;
  if (settings.background != "Off") {
    notes.emplace_back(
        "--background has no effect: devices of the LowEnd family keep the tone of the paper");
  }
  if (settings.colorMode == "Auto") {
    notes.emplace_back(
        "devices of the LowEnd family don't choose the mode themselves: with --mode auto they scan "
        "in black and white");
  }
  noteResolution(settings, {"72x72", "1200x1200", "200x100", "200x400"}, "LowEnd", "200x200",
                 notes);
  return notes;
}

std::vector<std::string> qzSettingsWithoutEffect(const ScanSettings& settings) {
  std::vector<std::string> notes;
  if (settings.brightness != 0 || settings.contrast != 0) {
    notes.emplace_back(
        "--brightness and --contrast are in full effect on the first page alone; every further "
        "page of the job gets a quarter of the one before");
  }
  if (settings.contrast != 0 && settings.colorMode == "BlackAndWhite")
    notes.emplace_back("--contrast has no effect with --mode bw");
  if (settings.colorMode == "Auto") {
    notes.emplace_back(
        "devices of the QZ family don't choose the mode themselves: with --mode auto they scan in "
        "colour");
  }
  noteResolution(settings, {"72x72", "1200x1200", "200x100", "200x400"}, "QZ", "200x200", notes);
  return notes;
}

std::vector<std::string> settingsWithoutRange(const ScanSettings& settings,
                                              const DeviceRanges& ranges) {
  std::vector<std::string> notes;
  const auto note = [&](const char* option, int percent, bool told) {
    if (percent == 0 || told) return;
    notes.push_back(std::string(option) +
                    " has no effect: the device does not tell in which range it can be set");
  };
  note("--brightness", settings.brightness, ranges.brightness.has_value());
  note("--contrast", settings.contrast, ranges.contrast.has_value());
  return notes;
}

}  // namespace tvrscn::cli
