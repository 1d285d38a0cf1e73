// Media codes, sizes within the device's limits, and values within its ranges.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <iterator>
#include <limits>

#include <nlohmann/json.hpp>

#include "client/fatal_fault.h"
#include "family_lowend/lowend_document.h"
#include "family_lowend/lowend_media.h"
#include "tvrscn/lowend_scan_data_source.h"

namespace {

using nlohmann::json;
using tvrscn::kCustomMedia;
using tvrscn::kScanSourceFeeder;
using tvrscn::member;
using tvrscn::toInt32;
using tvrscn::truncateToInt32;

struct MediaRow {
  int code;
  const char* name;
};
// Names say how the sheet lies: a size fed long edge first is in no row.
constexpr MediaRow kMedia[] = {
    {0, "NA_8.5x11SEF"}, {1, "NA_7.25x10.5SEF"}, {2, "NA_8.5x14SEF"},   {3, "ISO_A3SEF"},
    {4, "ISO_A4SEF"},    {5, "ISO_A5SEF"},       {6, "JIS_B4SEF"},      {7, "JIS_B5SEF"},
    {8, "NA_11x17SEF"},  {9, "NA_12x19SEF"},     {10, "NA_5.5x8.5SEF"}, {14, "Auto"},
    {15, "Mixed"},       {26, "ISO_A6SEF"},
};

// Limits of a custom size.

struct LimitKeys {
  const char* maxHeight;
  const char* maxWidth;
  const char* minWidth;
  const char* minHeight;
};
constexpr LimitKeys kFeederKeys = {"maxAdfHeight", "maxAdfWidth", "minAdfWidth", "minAdfHeight"};
constexpr LimitKeys kFlatbedKeys = {"maxFbHeight", "maxFbWidth", "minFbWidth", "minFbHeight"};

struct Range {
  double minimum = 0;
  double maximum = 0;
};
// In inches.
struct Limits {
  Range height;
  Range width;
};

// A document without the unit makes a limit infinite, or no number at all: it then bounds
// everything, or compares with nothing.
static_assert(std::numeric_limits<double>::is_iec559, "a division by zero has a result");

// Inches, rounded down to a tenth. Each step has the precision that the device is known to expect.
double limitInInches(int limit, int unitsPerInch) {
  const auto inches =
      static_cast<float>(static_cast<double>(limit) / static_cast<double>(unitsPerInch));
  return static_cast<double>(std::floor(inches * 10.0F) / 10.0F);
}

// All four or none: with one missing each is zero.
Limits readLimits(const json& document, int scanSource) {
  const LimitKeys& keys = scanSource == kScanSourceFeeder ? kFeederKeys : kFlatbedKeys;
  const json* unit = member(document, "basicres");
  const int unitsPerInch = unit == nullptr ? 0 : toInt32(*unit);
  const json* limits[] = {member(document, keys.maxHeight), member(document, keys.maxWidth),
                          member(document, keys.minWidth), member(document, keys.minHeight)};
  const bool complete = std::count(std::begin(limits), std::end(limits), nullptr) == 0;
  double inches[std::size(limits)];
  std::transform(std::begin(limits), std::end(limits), std::begin(inches), [&](const json* limit) {
    return limitInInches(complete ? toInt32(*limit) : 0, unitsPerInch);
  });
  const auto [maxHeight, maxWidth, minWidth, minHeight] = inches;
  return {{minHeight, maxHeight}, {minWidth, maxWidth}};
}

int dots(int resolution, double inches) {
  return truncateToInt32(std::round(resolution * inches));
}

// The size in dots, within the range; dots stay as they are when the range is none.
void fit(double size, const Range& range, int resolution, int& sizeDots) {
  if (size >= range.minimum && size <= range.maximum) {
    sizeDots = dots(resolution, size);
  } else if (size < range.minimum) {
    sizeDots = dots(resolution, range.minimum);
  } else if (size > range.maximum) {
    sizeDots = dots(resolution, range.maximum);
  }
}

// At 75 dpi a line at the edge of the range counts one dot more, on the feeder, or one less.
int nudged(int widthDots, double width, const Range& range, int resolution, int scanSource) {
  constexpr int kNudgedResolution = 75;
  if (resolution != kNudgedResolution) return widthDots;
  double result = widthDots;
  if (width <= range.minimum && scanSource == kScanSourceFeeder) result += 1;
  if (width >= range.maximum) result -= 1;
  return truncateToInt32(result);
}

// A range that reaches further from its normal value has no step for a percentage. Asking for one
// is a mistake of the caller that ends the process, here and in a defined state.
std::int64_t requireStep(std::int64_t step) {
  if (step == 0) {
    tvrscn::endAtFault(
        "CalculateMatchingValue takes ranges of at most 100 on each side of the normal value");
  }
  return step;
}

}  // namespace

void CLowEndUSBScanDataSource::GetMediaSizeString(const int& code, std::string& name) {
  name.clear();
  for (const MediaRow& row : kMedia) {
    if (row.code == code) name = row.name;
  }
}

void CLowEndUSBScanDataSource::GetMediaSize(const int& scanSource, unsigned short& mediaSize,
                                            unsigned short& orientation) {
  std::map<std::string, int> adfSizes;
  std::map<std::string, int> flatbedSizes;
  GetSupportedMediaSizesFromJSON(adfSizes, flatbedSizes);
  const std::map<std::string, int>& sizes =
      scanSource == kScanSourceFeeder ? adfSizes : flatbedSizes;
  const auto found = sizes.find(m_mediaSize);
  mediaSize = found == sizes.end() ? kCustomMedia : static_cast<unsigned short>(found->second);
  orientation = 0;
}

bool CLowEndUSBScanDataSource::CheckCustomSizeValidity(const double& height, const double& width,
                                                       const int& resolution, const int& scanSource,
                                                       int& heightDots, int& widthDots) {
  // Whole inches, for want of anything better.
  heightDots = truncateToInt32(std::trunc(height) * resolution);
  widthDots = truncateToInt32(std::trunc(width) * resolution);
  if (m_deviceSupportJSON.empty()) return false;
  try {
    const Limits limits = readLimits(json::parse(m_deviceSupportJSON), scanSource);
    fit(height, limits.height, resolution, heightDots);
    fit(width, limits.width, resolution, widthDots);
    widthDots = nudged(widthDots, width, limits.width, resolution, scanSource);
  } catch (const std::exception&) {
    return false;
  }
  return true;
}

int CLowEndUSBScanDataSource::CalculateMatchingValue(const int& value, const int& minimum,
                                                     const int& maximum, const int& normal,
                                                     const int& /*unused*/) {
  if (value == 0) return normal;
  // Wide: ranges of the whole int, and the quotient of its least value, fit.
  const std::int64_t end = maximum == normal ? minimum : maximum;
  const std::int64_t span = end - normal;
  if (span == 0) return normal;
  const std::int64_t step = requireStep(100 / span);
  const std::int64_t result = value / step + normal;
  if (result < minimum) return minimum;
  if (result > maximum) return maximum;
  return static_cast<int>(result);
}
