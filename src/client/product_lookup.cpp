// From a model name, as a device or a driver spells it, to what the catalogue knows of the model.
#include "catalogue/product_table.h"
#include "tvrscn/scan_client.h"
#include "usb/text.h"

void ScanBaseClient::GetProductData(std::string modelName, ProductData& result) {
  const ProductData* product =
      tvrscn::findProduct(tvrscn::productTable(), tvrscn::widen(modelName));
  if (product == nullptr) return;
  // Callers rely on these two alone, and on the rest staying as they left it.
  result.ControllerFamily = product->ControllerFamily;
  result.NSPScanSupport = product->NSPScanSupport;
}
