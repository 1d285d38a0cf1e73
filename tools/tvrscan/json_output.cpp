#include "json_output.h"

#include <nlohmann/json.hpp>

#include "system.h"

namespace tvrscn::cli {
namespace {

// File names need not be text; what is none is shown as replacement characters.
std::string line(const nlohmann::ordered_json& object) {
  return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

nlohmann::ordered_json textOrNull(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(text);
}

nlohmann::ordered_json pageObject(const StoredPage& page) {
  return {{"number", page.number}, {"file", textOf(page.file)}, {"bytes", page.bytes}};
}

}  // namespace

std::string deviceLine(const Device& device, const std::string& family) {
  return line({{"event", "device"},
               {"family", textOrNull(family)},
               {"hardware_id", device.hardwareId},
               {"instance_id", device.instanceId},
               {"endpoint", textOrNull(device.endpoint)},
               {"problem", textOrNull(device.problem)}});
}

std::string pageLine(const StoredPage& page) {
  nlohmann::ordered_json object = {{"event", "page"}};
  object.update(pageObject(page));
  return line(object);
}

std::string rangeLine(const std::string& name, const std::string& larger,
                      const IPPMinMaxNormalStepData& range) {
  return line({{"event", "range"},
               {"setting", name},
               {"min", range.Min},
               {"max", range.Max},
               {"normal", range.Normal},
               {"larger", larger}});
}

std::string endLine(const Outcome& outcome, const std::vector<StoredPage>& pages) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const StoredPage& page : pages)
    list.push_back(pageObject(page));
  nlohmann::ordered_json notes = outcome.notes;
  if (notes.is_null()) notes = nlohmann::ordered_json::array();
  return line({{"event", "end"},
               {"status", exitCodeRow(outcome.code).name},
               {"exit_code", static_cast<int>(outcome.code)},
               {"pages", list},
               {"cause", textOrNull(outcome.what)},
               {"remedy", textOrNull(outcome.remedy)},
               {"device_status", textOrNull(outcome.deviceSaid)},
               {"notes", notes}});
}

}  // namespace tvrscn::cli
