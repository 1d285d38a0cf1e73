#include "device_model.h"

#include <algorithm>
#include <string_view>

#include "catalogue/product_table.h"
#include "command_line.h"
#include "device_list.h"
#include "families.h"
#include "wide_text.h"
#include "words.h"

namespace tvrscn::cli {
namespace {

// Which family drives a model, by the interface where models have more than one scanner. The first
// row that fits is taken.
constexpr struct {
  std::string_view controllerFamily;
  std::string_view usbInterface;  // empty: any
  std::string_view family;
} kDrivenBy[] = {
    {"LOWEND", "", "lowend"},
    {"LANTERN", "&MI_02", "qz"},
    {"LANTERN", "", "hp"},
};

// The four digits behind a label, or an empty text.
std::string digitsBehind(const std::string& hardwareId, std::string_view label) {
  constexpr std::size_t kDigits = 4;
  const std::size_t at = hardwareId.find(label);
  if (at == std::string::npos) return {};
  return hardwareId.substr(at + label.size(), kDigits);
}

using Models = std::vector<const ProductData*>;

template <typename Test>
Models modelsThat(Test test) {
  Models models;
  for (const ProductData& product : productTable()) {
    if (test(product)) models.push_back(&product);
  }
  return models;
}

Models modelsCalled(const std::string& word) {
  // As the library takes the name that a device gives.
  if (const ProductData* product = findProduct(productTable(), widened(word))) return {product};
  const std::string wanted = lowerCase(word);
  Models models = modelsThat([&](const ProductData& product) {
    return lowerCase(utf8(product.ModelName)) == wanted ||
           lowerCase(utf8(product.ConditionalModelDesignation)) == wanted;
  });
  if (!models.empty() || wanted.empty()) return models;
  return modelsThat([&](const ProductData& product) {
    return lowerCase(utf8(product.ModelName)).find(wanted) != std::string::npos;
  });
}

std::string nearestModel(const std::string& word) {
  std::vector<std::string> names;
  for (const ProductData& product : productTable())
    names.push_back(utf8(product.ModelName));
  return suggestion(word, names);
}

}  // namespace

const ProductData* modelOf(const std::string& instanceId) {
  const std::string hardwareId = hardwareIdOf(upperCase(instanceId));
  const std::string vendor = digitsBehind(hardwareId, "VID_");
  const std::string productId = digitsBehind(hardwareId, "PID_");
  const Models models = modelsThat([&](const ProductData& product) {
    return utf8(product.USBVendorId) == vendor && utf8(product.USBProductId) == productId;
  });
  return models.empty() ? nullptr : models.front();
}

std::string modelNameOf(const std::string& instanceId) {
  const ProductData* const product = modelOf(instanceId);
  return product == nullptr ? std::string() : utf8(product->ModelName);
}

const Family* familyOf(const std::string& instanceId) {
  const ProductData* const product = modelOf(instanceId);
  if (product == nullptr || !product->USBScanSupport) return nullptr;
  const std::string hardwareId = hardwareIdOf(upperCase(instanceId));
  for (const auto& row : kDrivenBy) {
    if (product->ControllerFamily == row.controllerFamily &&
        hardwareId.find(row.usbInterface) != std::string::npos) {
      return findFamily(row.family);
    }
  }
  return nullptr;
}

bool isNoUsbScanner(const std::string& instanceId) {
  return modelOf(instanceId) != nullptr && familyOf(instanceId) == nullptr;
}

std::vector<std::string> connectionsOf(const ProductData& product) {
  std::vector<std::string> words;
  if (product.USBScanSupport) words.emplace_back("usb");
  if (product.NSPScanSupport) words.emplace_back("nsp");
  if (product.IPPScanSupport) words.emplace_back("ipp");
  return words;
}

std::string networkScanOf(const ProductData& product) {
  constexpr int kIpp = 4;
  return product.DefaultNetworkScan == kIpp ? "ipp" : "nsp";
}

const ProductData& namedModel(const std::string& option, const std::string& word) {
  const Models models = modelsCalled(word);
  if (models.size() == 1) return *models.front();
  std::string problem = option + ": ";
  if (models.empty()) {
    const std::string guess = nearestModel(word);
    problem += "no model is called '" + word + "'; ";
    problem += guess.empty() ? "'tvrscan models' lists them" : guess;
  } else {
    problem += "'" + word + "' fits more than one model: ";
    for (const ProductData* model : models)
      problem += (model == models.front() ? "" : ", ") + utf8(model->ModelName);
  }
  throw UsageProblem{ExitCode::kUsage, problem};
}

std::vector<std::string> catalogueFamilies() {
  std::vector<std::string> families;
  for (const ProductData& product : productTable()) {
    const std::string& family = product.ControllerFamily;
    if (std::find(families.begin(), families.end(), family) == families.end())
      families.push_back(family);
  }
  return families;
}

}  // namespace tvrscn::cli
