#include "json_output.h"

#include <nlohmann/json.hpp>

#include "device_model.h"
#include "system.h"
#include "wide_text.h"

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
               {"model", textOrNull(modelNameOf(device.instanceId))},
               {"hardware_id", device.hardwareId},
               {"instance_id", device.instanceId},
               {"endpoint", textOrNull(device.endpoint)},
               {"problem", textOrNull(device.problem)}});
}

std::string modelLine(const ProductData& product) {
  return line({{"event", "model"},
               {"name", utf8(product.ModelName)},
               {"short_name", utf8(product.ConditionalModelDesignation)},
               {"family", product.ControllerFamily},
               {"connections", connectionsOf(product)},
               {"network_scan", networkScanOf(product)},
               {"usb_vendor_id", utf8(product.USBVendorId)},
               {"usb_product_id", utf8(product.USBProductId)},
               {"usb_interface", product.USBEndPointHWID},
               {"object_id", utf8(product.SysObjectIds)},
               {"secure_object_id", textOrNull(utf8(product.SslSysObjectId))},
               {"rated_speed", product.RatedSpeed},
               {"colors", product.ColorModes},
               {"resolutions", product.Resolution},
               {"sides", product.ScanSides},
               {"media", product.PaperSupport},
               {"default_color", textOrNull(product.DefaultColorMode)},
               {"default_resolution", textOrNull(product.DefaultResolution)},
               {"default_sides", textOrNull(product.DefaultScanSide)},
               {"default_paper", textOrNull(product.DefaultPaperSupport)},
               {"small_picture", utf8(product.Mimic)},
               {"large_picture", utf8(product.PrinterMimic)},
               {"settings_page", utf8(product.TwainSettingURL)},
               {"mopria_page", utf8(product.MopriaSettingURL)}});
}

std::string alertLine(const AlertStatus& alert) {
  return line({{"event", "alert"},
               {"severity", alert.severity},
               {"keyword", alert.keyword},
               {"description", textOrNull(alert.description)}});
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
