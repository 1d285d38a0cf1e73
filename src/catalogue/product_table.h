// The built-in catalogue as records, for the lookup by model name and for programs of this project
// that list models. Nothing here leaves the library: drivers ask ScanBaseClient::GetProductData.
#ifndef TVRSCN_CATALOGUE_PRODUCT_TABLE_H
#define TVRSCN_CATALOGUE_PRODUCT_TABLE_H

#include <string>
#include <vector>

#include "tvrscn/product_data.h"

// Replaces the content of table by all rows, in the order of the search. Throws std::bad_alloc when
// memory runs out, with table as it was.
void BuildProductTable(std::vector<ProductData>& table);

namespace tvrscn {

// All rows, built at the first call and kept until the process ends. Any thread may ask.
const std::vector<ProductData>& productTable();

// The first row whose ModelName stands anywhere in key, by exact comparison (an empty one stands in
// every key); null if there is none.
const ProductData* findProduct(const std::vector<ProductData>& table, const std::wstring& key);

}  // namespace tvrscn

#endif  // TVRSCN_CATALOGUE_PRODUCT_TABLE_H
