// From the rows as they are written down to records, and the search in them.
#include "catalogue/product_table.h"

#include <algorithm>
#include <span>
#include <utility>

#include "catalogue/product_rows.h"

namespace {

using tvrscn::ProductLine;
using tvrscn::ProductRow;
using tvrscn::ProductSeries;

constexpr wchar_t kVendorId[] = L"0A7E";
constexpr wchar_t kEnterprise[] = L"1.3.6.1.4.1.99999.";
constexpr wchar_t kMopriaSettings[] = L"https://{0}/protocols/mopria.php?from=protocolConfig";

// No model makes a choice of sides for the user.
constexpr char kDefaultSides[] = "";

ProductData recordOf(const ProductRow& row) {
  const ProductSeries& series = row.series;
  const ProductLine& line = series.line;
  const std::wstring picture = series.picture;
  return {row.model,
          kEnterprise + std::wstring(row.objectId),
          row.usbProductId,
          kVendorId,
          row.designation,
          row.ratedSpeed,
          series.colors,
          line.resolutions,
          series.sides,
          series.paper,
          picture + L"_48x48.png",
          picture + L"_128x128.png",
          line.settingsPage,
          static_cast<int>(line.connections.usb),
          static_cast<int>(line.connections.nsp),
          static_cast<int>(line.connections.ipp),
          line.secureObjectId,
          kMopriaSettings,
          line.connections.defaultNetworkScan,
          line.controllerFamily,
          line.usbInterface};
}

}  // namespace

void BuildProductTable(std::vector<ProductData>& table) {
  const std::span<const ProductRow> rows = tvrscn::productRows();
  std::vector<ProductData> records;
  records.reserve(rows.size());
  for (const ProductRow& row : rows) {
    const tvrscn::ProductDefaults& defaults = row.series.line.defaults;
    records.push_back(recordOf(row));
    records.back().SetDefaultValues(defaults.color, defaults.resolution, kDefaultSides,
                                    defaults.paper);
  }
  table = std::move(records);
}

namespace tvrscn {

const std::vector<ProductData>& productTable() {
  static const std::vector<ProductData> table = [] {
    std::vector<ProductData> built;
    BuildProductTable(built);
    return built;
  }();
  return table;
}

const ProductData* findProduct(const std::vector<ProductData>& table, const std::wstring& key) {
  const auto found = std::find_if(table.begin(), table.end(), [&](const ProductData& product) {
    return key.find(product.ModelName) != std::wstring::npos;
  });
  return found == table.end() ? nullptr : &*found;
}

}  // namespace tvrscn
