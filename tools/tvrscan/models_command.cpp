#include <algorithm>
#include <string>
#include <vector>

#include "catalogue/product_table.h"
#include "commands.h"
#include "console.h"
#include "device_model.h"
#include "json_output.h"
#include "table.h"
#include "wide_text.h"
#include "words.h"

namespace tvrscn::cli {
namespace {

using Names = std::vector<std::string>;

bool holds(const std::wstring& text, const std::string& lowerCasePart) {
  return lowerCase(utf8(text)).find(lowerCasePart) != std::string::npos;
}

// An empty name is no condition.
bool offers(const Names& names, const std::string& name) {
  return name.empty() || std::find(names.begin(), names.end(), name) != names.end();
}

bool fits(const ProductData& product, const ModelsOptions& options) {
  const std::string text = lowerCase(options.text);
  return (holds(product.ModelName, text) || holds(product.ConditionalModelDesignation, text) ||
          holds(product.USBProductId, text)) &&
         (options.family.empty() || options.family == product.ControllerFamily) &&
         offers(connectionsOf(product), options.connection) &&
         offers(product.ColorModes, options.colorMode) &&
         offers(product.Resolution, options.resolution) &&
         offers(product.ScanSides, options.sides) &&
         offers(product.PaperSupport, options.mediaName);
}

std::string listOf(const Names& names) {
  std::string text;
  for (const std::string& name : names)
    text += (text.empty() ? "" : ", ") + name;
  return text;
}

// "VID_0A7E&PID_1F48", as hardware ids have it.
std::string usbIdsOf(const ProductData& product) {
  return "VID_" + utf8(product.USBVendorId) + "&PID_" + utf8(product.USBProductId);
}

std::string orNone(const std::string& text) {
  return text.empty() ? "none" : text;
}

// A text for each field, in words.
std::vector<TableRow> wholeModel(const ProductData& product) {
  return {{"model", utf8(product.ModelName)},
          {"short name", utf8(product.ConditionalModelDesignation)},
          {"family", product.ControllerFamily},
          {"scans over", listOf(connectionsOf(product))},
          {"network scan", networkScanOf(product)},
          {"hardware id", usbIdsOf(product) + "&" + product.USBEndPointHWID},
          {"object id", utf8(product.SysObjectIds)},
          {"secure object id", orNone(utf8(product.SslSysObjectId))},
          {"rated speed", std::to_string(product.RatedSpeed)},
          {"colours", listOf(product.ColorModes)},
          {"resolutions", listOf(product.Resolution)},
          {"sides", listOf(product.ScanSides)},
          {"media", listOf(product.PaperSupport)},
          {"starts with colour", orNone(product.DefaultColorMode)},
          {"starts with resolution", orNone(product.DefaultResolution)},
          {"starts with sides", orNone(product.DefaultScanSide)},
          {"starts with paper", orNone(product.DefaultPaperSupport)},
          {"small picture", utf8(product.Mimic)},
          {"large picture", utf8(product.PrinterMimic)},
          {"settings page", utf8(product.TwainSettingURL)},
          {"Mopria page", utf8(product.MopriaSettingURL)}};
}

void listModels(Console& console, const ModelsOptions& options) {
  std::vector<TableRow> rows = {{"MODEL", "SHORT", "FAMILY", "USB IDS", "SCANS OVER"}};
  bool any = false;
  for (const ProductData& product : productTable()) {
    if (!fits(product, options)) continue;
    any = true;
    if (options.json) {
      console.data(modelLine(product));
    } else {
      rows.push_back({utf8(product.ModelName), utf8(product.ConditionalModelDesignation),
                      product.ControllerFamily, usbIdsOf(product), listOf(connectionsOf(product))});
    }
  }
  if (!any) {
    console.note("no model is like that");
  } else if (!options.json) {
    printTable(console, rows);
  }
}

}  // namespace

int runModels(const ModelsOptions& options) {
  Console console(false);
  if (!options.name) {
    listModels(console, options);
  } else if (const ProductData& product = namedModel("models", *options.name); options.json) {
    console.data(modelLine(product));
  } else {
    printTable(console, wholeModel(product));
  }
  return static_cast<int>(ExitCode::kDone);
}

}  // namespace tvrscn::cli
