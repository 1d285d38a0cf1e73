// Models of the catalogue as this program meets them: behind the USB ids of a device, and by the
// names that people give.
#ifndef TVRSCN_TOOLS_TVRSCAN_DEVICE_MODEL_H
#define TVRSCN_TOOLS_TVRSCAN_DEVICE_MODEL_H

#include <string>
#include <vector>

#include "tvrscn/product_data.h"

namespace tvrscn::cli {

struct Family;

// The model with the vendor and product id of an instance id or hardware id, in any case; null for
// ids that no model has. The records stay until the process ends.
const ProductData* modelOf(const std::string& instanceId);

// The name of that model, or an empty text.
std::string modelNameOf(const std::string& instanceId);

// The family of controllers that drives the device; null where its ids do not tell: no model has
// them, or one that does not scan over USB.
const Family* familyOf(const std::string& instanceId);

// Whether the device is of a model that does not scan over USB.
bool isNoUsbScanner(const std::string& instanceId);

// The ways in which a model scans, in the words of the command line: "usb", "nsp", "ipp".
std::vector<std::string> connectionsOf(const ProductData& product);
// The one that it starts with on the network.
std::string networkScanOf(const ProductData& product);

// The model that a word of the command line names: a full name, also with other text around it; in
// any case the full name or the short designation; or a text that stands in one name alone. Throws
// UsageProblem, with what comes near, when that is no model or more than one. option is what the
// word was given to.
const ProductData& namedModel(const std::string& option, const std::string& word);

// The families of the catalogue, each once, in its order: "MERIDIAN" and so on.
std::vector<std::string> catalogueFamilies();

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_DEVICE_MODEL_H
