// Every field is looked at; the first one that is wrong is named, with what it may be. A field that
// this scanner does not know is refused too.
#include "virtual/lowend/lowend_request.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace tvrscn::virtual_device {
namespace {

using Json = nlohmann::json;

constexpr int kPhotoFormat = 1;     // "fileFormat": JPEG
constexpr int kDocumentFormat = 0;  // TIFF
constexpr int kPhotoCompression = 1;
constexpr int kFeederSource = 0;
constexpr int kFlatbedSource = 7;
constexpr int kCustomSize = 20;
constexpr int kUpright = 0;

constexpr std::string_view kKnownKeys[] = {
    "name",       "resolution",  "fileFormat",   "imageComposition", "compression",
    "scanDuplex", "scanSource",  "mediaSize",    "orientation",      "offsetX",
    "offsetY",    "customWidth", "customHeight", "darkness",         "contrast",
};

// In thousandths of a millimetre.
struct Media {
  int code;
  int width;
  int height;
};

constexpr int kInch = 25400;
constexpr Media kMedia[] = {
    {0, 215900, 279400},   // 8.5 x 11 inches
    {1, 184150, 266700},   // 7.25 x 10.5 inches
    {2, 215900, 355600},   // 8.5 x 14 inches
    {3, 297000, 420000},   // A3
    {4, 210000, 297000},   // A4
    {5, 148000, 210000},   // A5
    {6, 257000, 364000},   // B4
    {7, 182000, 257000},   // B5
    {8, 279400, 431800},   // 11 x 17 inches
    {9, 304800, 482600},   // 12 x 19 inches
    {10, 139700, 215900},  // 5.5 x 8.5 inches
    {14, 210000, 297000},  // what it finds: the sheets of this scanner are A4
    {15, 210000, 297000},  // of mixed sizes
    {26, 105000, 148000},  // A6
};

int toPixels(int micrometres, int dotsPerInch) {
  const std::int64_t dots = std::int64_t{micrometres} * dotsPerInch;
  return static_cast<int>((dots + kInch / 2) / kInch);
}

std::string listOf(const std::vector<int>& numbers) {
  std::string list;
  for (const int number : numbers) {
    if (!list.empty()) list += ", ";
    list += std::to_string(number);
  }
  return list.empty() ? "nothing" : list;
}

// Reads field by field and keeps the first complaint.
class Reader {
 public:
  Reader(const Json& document, const LowEndScannerOptions& options)
      : document_(document), options_(options) {}

  std::string read(LowEndRequest& request) {
    checkKeys();
    checkName();
    request.dotsPerInch = oneOf("resolution", options_.resolutions);
    readMode(request);
    request.sides = static_cast<LowEndSides>(oneOf("scanDuplex", {0, 1, 2}));
    readSource(request);
    readSize(request);
    request.darkness = within("darkness", options_.darkness.start, options_.darkness.end);
    request.contrast = within("contrast", options_.contrast.start, options_.contrast.end);
    return std::move(wrong_);
  }

 private:
  void complain(const std::string& text) {
    if (wrong_.empty()) wrong_ = text;
  }
  static std::string quoted(const char* key) { return std::string("'") + key + "'"; }

  void checkKeys() {
    for (const auto& item : document_.items()) {
      if (std::find(std::begin(kKnownKeys), std::end(kKnownKeys), item.key()) !=
          std::end(kKnownKeys)) {
        continue;
      }
      complain("there is no field '" + item.key() + "'");
    }
  }

  void checkName() {
    const auto name = document_.find("name");
    if (name == document_.end()) return complain("'name' is missing");
    if (!name->is_string()) complain("'name' must be a text");
  }

  std::optional<int> integer(const char* key) {
    const auto field = document_.find(key);
    if (field == document_.end()) {
      complain(quoted(key) + " is missing");
      return std::nullopt;
    }
    if (!field->is_number_integer()) {
      complain(quoted(key) + " must be a whole number");
      return std::nullopt;
    }
    constexpr int kMost = std::numeric_limits<int>::max();
    // What is beyond all ranges stays so.
    if (field->is_number_unsigned()) {
      return static_cast<int>(std::min<std::uint64_t>(field->get<std::uint64_t>(), kMost));
    }
    return static_cast<int>(std::max<std::int64_t>(field->get<std::int64_t>(), -kMost));
  }

  int oneOf(const char* key, const std::vector<int>& allowed) {
    const std::optional<int> number = integer(key);
    if (!number) return 0;
    if (std::find(allowed.begin(), allowed.end(), *number) == allowed.end()) {
      complain(quoted(key) + " is " + std::to_string(*number) + "; allowed is " + listOf(allowed));
    }
    return *number;
  }

  int within(const char* key, int least, int most) {
    const std::optional<int> number = integer(key);
    if (!number) return 0;
    if (*number < least || *number > most) {
      complain(quoted(key) + " is " + std::to_string(*number) + "; allowed is " +
               std::to_string(least) + " to " + std::to_string(most));
    }
    return *number;
  }

  // A field that goes with a value of another one, and is not there otherwise.
  void absent(const char* key, const char* reason) {
    if (document_.contains(key)) complain(quoted(key) + " does not go with " + reason);
  }

  void readMode(LowEndRequest& request) {
    request.mode = static_cast<LowEndMode>(oneOf("imageComposition", {1, 2, 3}));
    if (request.mode == LowEndMode::kBlackWhite) {
      oneOf("fileFormat", {kDocumentFormat});
      absent("compression", "black and white");
    } else {
      oneOf("fileFormat", {kPhotoFormat});
      oneOf("compression", {kPhotoCompression});
    }
  }

  void readSource(LowEndRequest& request) {
    request.fromFeeder = oneOf("scanSource", {kFeederSource, kFlatbedSource}) == kFeederSource;
    if (!request.fromFeeder) return;
    if (!options_.feederInstalled) complain("'scanSource' is 0 and there is no feeder; give 7");
    if (!options_.feeder || options_.sheets == 0) complain("the feeder is empty");
  }

  void readSize(LowEndRequest& request) {
    std::vector<int> allowed = request.fromFeeder ? options_.feederMedia : options_.flatbedMedia;
    allowed.push_back(kCustomSize);
    const int code = oneOf("mediaSize", allowed);
    oneOf("orientation", {kUpright});
    if (code == kCustomSize) return readCustomSize(request);
    for (const char* key : {"offsetX", "offsetY", "customWidth", "customHeight"})
      absent(key, "a media code");
    const auto* media = std::find_if(std::begin(kMedia), std::end(kMedia),
                                     [&](const Media& row) { return row.code == code; });
    if (media == std::end(kMedia)) {
      return complain("'mediaSize' is " + std::to_string(code) + ", whose size is unknown");
    }
    request.width = toPixels(media->width, request.dotsPerInch);
    request.height = toPixels(media->height, request.dotsPerInch);
  }

  void readCustomSize(LowEndRequest& request) {
    const LowEndSizeLimits& limits =
        request.fromFeeder ? options_.feederLimits : options_.flatbedLimits;
    oneOf("offsetX", {0});
    oneOf("offsetY", {0});
    request.width = customSide("customWidth", limits.minWidth, limits.maxWidth, request);
    request.height = customSide("customHeight", limits.minHeight, limits.maxHeight, request);
  }

  // Hosts count in tenths of an inch and round the limits down to them, so the least size is taken
  // that way too; a dot more or less is their rounding.
  int customSide(const char* key, int least, int most, const LowEndRequest& request) {
    const std::int64_t tenths = std::int64_t{least} * 10 / options_.basicres;
    const std::int64_t leastDots = tenths * request.dotsPerInch / 10 - 1;
    const std::int64_t mostDots = std::int64_t{most} * request.dotsPerInch / options_.basicres + 1;
    return within(key, static_cast<int>(std::max<std::int64_t>(leastDots, 1)),
                  static_cast<int>(mostDots));
  }

  const Json& document_;
  const LowEndScannerOptions& options_;
  std::string wrong_;
};

}  // namespace

LowEndRequestReading readLowEndRequest(std::string_view text, const LowEndScannerOptions& options) {
  LowEndRequestReading reading;
  constexpr bool kThrows = false;
  const Json document = Json::parse(text, nullptr, kThrows);
  reading.isJson = !document.is_discarded();
  if (!reading.isJson) return reading;
  if (document.is_object()) {
    reading.wrong = Reader(document, options).read(reading.request);
  } else {
    reading.wrong = "the request must be an object";
  }
  return reading;
}

}  // namespace tvrscn::virtual_device
