#include "virtual/lowend/lowend_documents.h"

#include <nlohmann/json.hpp>

namespace tvrscn::virtual_device {
namespace {

using Json = nlohmann::json;

constexpr int kAccepted = 204;
constexpr int kRefused = 400;

Json rangeOf(const LowEndRange& range) {
  return {{"start", range.start}, {"end", range.end}, {"userDefault", range.userDefault}};
}

// A text that is no UTF-8 goes out with replacement characters rather than not at all.
std::string textOf(const Json& document) {
  return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string capabilityDocument(const LowEndScannerOptions& options) {
  const LowEndSizeLimits& feeder = options.feederLimits;
  const LowEndSizeLimits& flatbed = options.flatbedLimits;
  return textOf({
      {"basicres", options.basicres},
      {"maxAdfHeight", feeder.maxHeight},
      {"maxAdfWidth", feeder.maxWidth},
      {"minAdfHeight", feeder.minHeight},
      {"minAdfWidth", feeder.minWidth},
      {"maxFbHeight", flatbed.maxHeight},
      {"maxFbWidth", flatbed.maxWidth},
      {"minFbHeight", flatbed.minHeight},
      {"minFbWidth", flatbed.minWidth},
      {"supportedContrastInfo", rangeOf(options.contrast)},
      {"supportedDarknessInfo", rangeOf(options.darkness)},
      {"supportedMediaSizes", {{"adf", options.feederMedia}, {"flatbed", options.flatbedMedia}}},
  });
}

std::string statusDocument(const LowEndState& state, bool withFeederSection) {
  Json document = {{"status",
                    {{"busy", state.busy},
                     {"flatbedCoverOpen", state.flatbedCoverOpen},
                     {"ready", state.ready}}}};
  if (withFeederSection) {
    document["adfStatus"] = {{"adfCoverOpen", state.feederCoverOpen},
                             {"adfPaperLoaded", state.paperLoaded},
                             {"installed", state.feederInstalled},
                             {"jamPresent", state.paperJam}};
  }
  return textOf(document);
}

std::string acceptance() {
  return textOf({{"result", "Starting scan"}, {"status", kAccepted}});
}

std::string refusal(const std::string& message) {
  return textOf({{"error", {{"message", message}}},
                 {"result", "Scan request refused"},
                 {"status", kRefused}});
}

}  // namespace tvrscn::virtual_device
