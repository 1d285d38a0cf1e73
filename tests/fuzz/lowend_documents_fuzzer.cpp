// The documents of a LowEnd device: one text as its capabilities, its status and its answer to a
// scan request. What may come out of it is a result or the JSON library's exception.
//
// The first byte of the input chooses the settings; the rest is the text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include <nlohmann/json.hpp>

#include "family_lowend/lowend_document.h"
#include "tvrscn/lowend_scan_data_source.h"

namespace {

using nlohmann::json;

void require(bool holds) {
  if (!holds) std::abort();
}

CLowEndUSBScanDataSource sourceFor(std::uint8_t choice) {
  const char* const modes[] = {"FullColor", "Grayscale", "BlackAndWhite", "Auto"};
  const char* const media[] = {"ISO_A4SEF", "ISO_A4LEF"};
  CLowEndUSBScanDataSource source;
  source.SetScaningPropertiesFromApp(
      modes[choice & 0x03U], (choice & 0x04U) != 0 ? "75x75" : "600x600", "OneSided", 210, 297,
      (choice & 0x08U) != 0 ? 1 : 0, 0, 0, "Off", 0, media[(choice >> 4U) & 0x01U]);
  return source;
}

// A request is whole whatever the device says of itself.
void checkRequest(CLowEndUSBScanDataSource& source, bool adfPaperLoaded) {
  const json request = json::parse(source.GetScanRequestJSON("", adfPaperLoaded));
  const bool custom = request.at("mediaSize") == 20;
  const bool compressed = request.at("fileFormat") == 1;
  require(request.size() == 10U + (compressed ? 1U : 0U) + (custom ? 4U : 0U));
  require(!custom || (request.at("customWidth").is_number_integer() &&
                      request.at("customHeight").is_number_integer()));
}

template <typename Action>
void allowLibraryExceptions(Action action) {
  try {
    action();
  } catch (const json::exception&) {
    // The device sent no document, or one with a value of another type.
    return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::uint8_t choice = data[0];
  std::string text;
  for (const std::uint8_t byte : std::span(data + 1, size - 1))
    text += static_cast<char>(byte);

  CLowEndUSBScanDataSource source = sourceFor(choice);
  source.SetDeviceSupportJSONResponse(text);
  checkRequest(source, (choice & 0x20U) != 0);
  allowLibraryExceptions([&] {
    bool flags[3] = {};
    source.ParseScannerStatus(text, flags[0], flags[1], flags[2]);
  });
  allowLibraryExceptions([&] {
    bool flags[4] = {};
    source.ParseADFStatus(text, flags[0], flags[1], flags[2], flags[3]);
  });
  allowLibraryExceptions([&] {
    std::string message;
    // A folder that is not there: the file itself would only cost time.
    const USBStatusErrors status =
        source.CheckScanningRequestStatus(text, L"no such folder", message);
    require(status == USB_SUCCESS || status == USB_ERR_GENERAL);
  });
  allowLibraryExceptions([&] {
    const json document = json::parse(text);
    require(tvrscn::compactText(document) == document.dump());
  });
  return 0;
}
