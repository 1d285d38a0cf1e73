// The scan request and the judgement of the device's answer to it.
#include "tvrscn/lowend_scan_data_source.h"

#include <cmath>
#include <fstream>
#include <string_view>

#include <nlohmann/json.hpp>

#include "family_lowend/lowend_document.h"
#include "family_lowend/lowend_media.h"
#include "platform/files.h"

namespace {

using nlohmann::json;
using tvrscn::kCustomMedia;
using tvrscn::kScanSourceFeeder;
using tvrscn::kScanSourceFlatbed;

// Colour: what is asked for, and the file that it makes.

struct ColorRow {
  std::string_view mode;
  int fileFormat;
  int imageComposition;
  const wchar_t* extension;
};
constexpr ColorRow kColors[] = {
    {"FullColor", 1, 3, L".JPG"},
    {"Grayscale", 1, 2, L".JPG"},
};
// Of any other text; its pages are not compressed.
constexpr ColorRow kBlackAndWhite = {"", 0, 1, L".TIF"};
constexpr int kJpegFormat = 1;
constexpr int kJpegCompression = 1;

const ColorRow& colorRow(std::string_view mode) {
  for (const ColorRow& row : kColors) {
    if (row.mode == mode) return row;
  }
  return kBlackAndWhite;
}

struct SidesRow {
  std::string_view sides;
  int code;
};
constexpr SidesRow kSides[] = {{"OneSided", 0}, {"TwoSided", 2}};
constexpr int kOtherSides = 1;

int sidesCode(std::string_view sides) {
  for (const SidesRow& row : kSides) {
    if (row.sides == sides) return row.code;
  }
  return kOtherSides;
}

constexpr int kPaperSourceFeeder = 1;

// Inches to one decimal. Each step has the precision that the device's limits are compared in.
double tenthsOfAnInch(int millimetres) {
  constexpr double kMillimetresPerInch = 25.4;
  const auto inches = static_cast<float>(static_cast<double>(millimetres) / kMillimetresPerInch);
  return static_cast<double>(std::round(inches * 10.0F) / 10.0F);
}

// The answer.

constexpr int kAccepted = 204;
constexpr int kRefused = 400;
constexpr std::string_view kAcceptance = "Starting scan";
constexpr const wchar_t* kErrorFile = L"ScanRequestError.txt";

// The device's own words for a refusal; null where it has none.
const json* deviceWords(const json& answer) {
  const json* error = tvrscn::member(answer, "error");
  return error == nullptr ? nullptr : tvrscn::member(*error, "message");
}

// Both keys stand in the document afterwards as far as they were asked for: a missing one as null,
// which the error file then shows.
bool hasVerdict(json& answer) {
  return answer["result"].is_string() && answer["status"].is_number();
}

}  // namespace

CLowEndUSBScanDataSource::CLowEndUSBScanDataSource() = default;
CLowEndUSBScanDataSource::CLowEndUSBScanDataSource(const CLowEndUSBScanDataSource& other) = default;
CLowEndUSBScanDataSource& CLowEndUSBScanDataSource::operator=(
    const CLowEndUSBScanDataSource& other) = default;
CLowEndUSBScanDataSource::~CLowEndUSBScanDataSource() = default;

std::string CLowEndUSBScanDataSource::GetScanRequestJSON(std::string name, bool adfPaperLoaded) {
  const int resolution = GetAppResolution();
  const ColorRow& color = colorRow(m_colorMode);
  json request;
  request["name"] = name;
  request["resolution"] = resolution;
  request["fileFormat"] = color.fileFormat;
  request["imageComposition"] = color.imageComposition;
  if (color.fileFormat == kJpegFormat) request["compression"] = kJpegCompression;
  request["scanDuplex"] = sidesCode(m_sides);

  const bool fromFeeder = m_nPaperSource == kPaperSourceFeeder || adfPaperLoaded;
  const int scanSource = fromFeeder ? kScanSourceFeeder : kScanSourceFlatbed;
  unsigned short mediaSize = 0;
  unsigned short orientation = 0;
  GetMediaSize(scanSource, mediaSize, orientation);
  request["scanSource"] = scanSource;
  request["mediaSize"] = mediaSize;
  request["orientation"] = orientation;

  if (mediaSize == kCustomMedia) {
    int heightDots = 0;
    int widthDots = 0;
    CheckCustomSizeValidity(tenthsOfAnInch(m_nHeight), tenthsOfAnInch(m_nWidth), resolution,
                            scanSource, heightDots, widthDots);
    request["offsetX"] = 0;
    request["offsetY"] = 0;
    request["customWidth"] = widthDots;
    request["customHeight"] = heightDots;
  }
  request["darkness"] = m_nBrightness;  // the device's word for it
  request["contrast"] = m_nContrast;
  return request.dump();
}

USBStatusErrors CLowEndUSBScanDataSource::CheckScanningRequestStatus(const std::string& response,
                                                                     const std::wstring& folder,
                                                                     std::string& message) {
  json answer = json::parse(response);
  // Asking a null document for a key would make an object of it; this throws instead.
  static_cast<void>(answer.get_ref<json::object_t&>());
  const bool judged = hasVerdict(answer);
  const json* words = deviceWords(answer);
  if (judged) {
    const int status = tvrscn::toInt32(answer["status"]);
    const bool starting =
        answer["result"].get_ref<const std::string&>().find(kAcceptance) != std::string::npos;
    if (status == kAccepted && starting) return USB_SUCCESS;
    if (status != kRefused) words = nullptr;
  } else if (words == nullptr) {
    return USB_ERR_GENERAL;
  }
  if (words != nullptr) message = words->get<std::string>();
  DumpDebugDataToFile(folder + tvrscn::kPathSeparator + kErrorFile, tvrscn::compactText(answer));
  return USB_ERR_GENERAL;
}

std::wstring CLowEndUSBScanDataSource::GetImageFileFormat() {
  return colorRow(m_colorMode).extension;
}

void CLowEndUSBScanDataSource::SetDeviceSupportJSONResponse(const std::string& document) {
  m_deviceSupportJSON = document;
}

bool CLowEndUSBScanDataSource::DumpDebugDataToFile(const std::wstring& path,
                                                   const std::string& text) {
  std::ofstream file(tvrscn::systemPath(path), std::ios::binary | std::ios::trunc);
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  return true;
}
