// The capability and status documents, in which the device describes itself.
#include <exception>
#include <initializer_list>
#include <string_view>

#include <nlohmann/json.hpp>

#include "family_lowend/lowend_document.h"
#include "tvrscn/lowend_scan_data_source.h"

namespace {

using nlohmann::json;

// A word that a key may contain, and where its value goes.
struct Flag {
  std::string_view word;
  bool* value;
};

// Sets the flags that a section of a status document names; each key goes to the first flag whose
// word it contains. False without such a section.
bool readFlags(const std::string& document, const char* section,
               std::initializer_list<Flag> flags) {
  const json root = json::parse(document);
  const json* found = tvrscn::member(root, section);
  if (found == nullptr) return false;
  // The keys of anything but an object are indices, or nothing: none holds a word.
  if (!found->is_object()) return true;
  for (const auto& [key, value] : found->items()) {
    for (const Flag& flag : flags) {
      if (key.find(flag.word) == std::string::npos) continue;
      *flag.value = value.get<bool>();
      break;
    }
  }
  return true;
}

}  // namespace

bool CLowEndUSBScanDataSource::ParseScannerStatus(const std::string& document, bool& busy,
                                                  bool& ready, bool& flatbedCoverOpen) {
  return readFlags(document, "status",
                   {{"busy", &busy}, {"flatbedCoverOpen", &flatbedCoverOpen}, {"ready", &ready}});
}

bool CLowEndUSBScanDataSource::ParseADFStatus(const std::string& document, bool& jamPresent,
                                              bool& installed, bool& adfCoverOpen,
                                              bool& adfPaperLoaded) {
  return readFlags(document, "adfStatus",
                   {{"installed", &installed},
                    {"jamPresent", &jamPresent},
                    {"adfCoverOpen", &adfCoverOpen},
                    {"adfPaperLoaded", &adfPaperLoaded}});
}

void CLowEndUSBScanDataSource::GetSupportedMediaSizesFromJSON(
    std::map<std::string, int>& adfSizes, std::map<std::string, int>& flatbedSizes) {
  if (m_deviceSupportJSON.empty()) return;
  const auto addMedia = [this](const json& element, std::map<std::string, int>& sizes) {
    const int code = tvrscn::toInt32(element);
    std::string name;
    GetMediaSizeString(code, name);
    if (!name.empty()) sizes.insert({name, code});
  };
  const auto addList = [&addMedia](const json& lists, const char* key,
                                   std::map<std::string, int>& sizes) {
    const json* list = tvrscn::member(lists, key);
    if (list == nullptr) return;
    if (!list->is_array()) return addMedia(*list, sizes);
    for (const json& element : *list)
      addMedia(element, sizes);
  };
  try {
    const json root = json::parse(m_deviceSupportJSON);
    adfSizes.clear();
    flatbedSizes.clear();
    const json* lists = tvrscn::member(root, "supportedMediaSizes");
    if (lists == nullptr) return;
    addList(*lists, "adf", adfSizes);
    addList(*lists, "flatbed", flatbedSizes);
  } catch (const std::exception&) {
    // What was read up to here is what the device offers; other media go out as a custom size.
    return;
  }
}
