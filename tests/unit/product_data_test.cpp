// The record of a model, how list texts are cut, and the lookup by name.
#include "tvrscn/product_data.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "catalogue/product_table.h"
#include "tests/support/allocation.h"
#include "tvrscn/scan_client.h"

struct ProductDataTestPeer {
  static void setLists(ProductData& p, const std::string& colors, const std::string& resolutions,
                       const std::string& sides, const std::string& paper) {
    p.SetCapabilityLists(colors, resolutions, sides, paper);
  }
  static void setDefaults(ProductData& p, const std::string& color, const std::string& resolution,
                          const std::string& side, const std::string& paper) {
    p.SetDefaultValues(color, resolution, side, paper);
  }
};

namespace {

using tvrscn::findProduct;
using tvrscn::productTable;
using tvrscn::test::RefusedAllocations;
using Names = std::vector<std::string>;

// Each value another one, so that a swapped pair shows.
ProductData filledProduct() {
  ProductData product(L"model", L"object", L"product", L"vendor", L"designation", 77, "color",
                      "resolution", "side", "paper", L"mimic", L"printer", L"twain", 2, 0, -1,
                      L"secure", L"mopria", 9, "family", "interface");
  ProductDataTestPeer::setDefaults(product, "c", "r", "s", "p");
  return product;
}

void expectWideTextsAreFilled(const ProductData& p) {
  EXPECT_EQ(p.ModelName, L"model");
  EXPECT_EQ(p.SysObjectIds, L"object");
  EXPECT_EQ(p.USBProductId, L"product");
  EXPECT_EQ(p.USBVendorId, L"vendor");
  EXPECT_EQ(p.ConditionalModelDesignation, L"designation");
  EXPECT_EQ(p.Mimic, L"mimic");
  EXPECT_EQ(p.PrinterMimic, L"printer");
  EXPECT_EQ(p.TwainSettingURL, L"twain");
  EXPECT_EQ(p.MopriaSettingURL, L"mopria");
  EXPECT_EQ(p.SslSysObjectId, L"secure");
}

// All of filledProduct but the two fields that a lookup sets.
void expectRestIsFilled(const ProductData& p) {
  expectWideTextsAreFilled(p);
  EXPECT_EQ(p.DefaultColorMode, "c");
  EXPECT_EQ(p.DefaultResolution, "r");
  EXPECT_EQ(p.DefaultScanSide, "s");
  EXPECT_EQ(p.DefaultPaperSupport, "p");
  EXPECT_EQ(p.RatedSpeed, 77);
  EXPECT_EQ(p.DefaultNetworkScan, 9);
  EXPECT_TRUE(p.USBScanSupport);
  EXPECT_TRUE(p.IPPScanSupport);
  EXPECT_EQ(p.USBEndPointHWID, "interface");
  EXPECT_EQ(p.ColorModes, Names{"color"});
  EXPECT_EQ(p.Resolution, Names{"resolution"});
  EXPECT_EQ(p.ScanSides, Names{"side"});
  EXPECT_EQ(p.PaperSupport, Names{"paper"});
}

void expectFilled(const ProductData& p) {
  expectRestIsFilled(p);
  EXPECT_EQ(p.ControllerFamily, "family");
  EXPECT_FALSE(p.NSPScanSupport);
}

TEST(ProductRecord, ConstructorPutsEachValueIntoItsField) {
  expectFilled(filledProduct());
}

TEST(ProductRecord, FlagIsAnyValueButZero) {
  const struct { int usb, nsp, ipp; } kCases[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {256, 2, -1}};
  for (const auto& row : kCases) {
    const ProductData product(L"", L"", L"", L"", L"", 0, "", "", "", "", L"", L"", L"", row.usb,
                              row.nsp, row.ipp, L"", L"", 0, "", "");
    EXPECT_EQ(product.USBScanSupport, row.usb != 0);
    EXPECT_EQ(product.NSPScanSupport, row.nsp != 0);
    EXPECT_EQ(product.IPPScanSupport, row.ipp != 0);
  }
}

TEST(ProductRecord, DefaultIsEmpty) {
  const ProductData product;
  for (const std::wstring* text :
       {&product.ModelName, &product.SysObjectIds, &product.USBProductId, &product.USBVendorId,
        &product.ConditionalModelDesignation, &product.Mimic, &product.PrinterMimic,
        &product.TwainSettingURL, &product.MopriaSettingURL, &product.SslSysObjectId})
    EXPECT_TRUE(text->empty());
  for (const std::string* text :
       {&product.DefaultColorMode, &product.DefaultResolution, &product.DefaultScanSide,
        &product.DefaultPaperSupport, &product.ControllerFamily, &product.USBEndPointHWID})
    EXPECT_TRUE(text->empty());
  for (const Names* list :
       {&product.ColorModes, &product.Resolution, &product.ScanSides, &product.PaperSupport})
    EXPECT_TRUE(list->empty());
  EXPECT_EQ(product.RatedSpeed, 0);
  EXPECT_EQ(product.DefaultNetworkScan, 0);
  EXPECT_FALSE(product.USBScanSupport || product.IPPScanSupport || product.NSPScanSupport);
}

TEST(ProductRecord, CopyHoldsTheSameAndIsItsOwn) {
  ProductData original = filledProduct();
  const ProductData copy(original);
  ProductData assigned;
  assigned = original;
  ProductDataTestPeer::setLists(original, "x", "x", "x", "x");
  ProductDataTestPeer::setDefaults(original, "x", "x", "x", "x");
  original.ModelName = L"x";
  expectFilled(copy);
  expectFilled(assigned);
}

TEST(CapabilityLists, AreCutAtCommasAndTrimmedOfSpacesAlone) {
  const struct {
    const char* text;
    Names pieces;
  } kCases[] = {
      {"A, B ,C", {"A", "B", "C"}},
      {"", {}},
      {" ", {""}},
      {"   ,  ", {"", ""}},
      {"A,", {"A"}},
      {",A", {"", "A"}},
      {"A,,B", {"A", "", "B"}},
      {",", {""}},
      {",,", {"", ""}},
      {"  two words  ,B", {"two words", "B"}},
      {"\tA\t, \nB", {"\tA\t", "\nB"}},
      {"200x200, 300x300", {"200x200", "300x300"}},
  };
  for (const auto& row : kCases) {
    ProductData product = filledProduct();
    ProductDataTestPeer::setLists(product, row.text, "R", row.text, "P");
    EXPECT_EQ(product.ColorModes, row.pieces) << '"' << row.text << '"';
    EXPECT_EQ(product.Resolution, Names{"R"});
    EXPECT_EQ(product.ScanSides, row.pieces) << '"' << row.text << '"';
    EXPECT_EQ(product.PaperSupport, Names{"P"});
    ProductDataTestPeer::setLists(product, "C", row.text, "S", row.text);
    EXPECT_EQ(product.ColorModes, Names{"C"});
    EXPECT_EQ(product.Resolution, row.pieces) << '"' << row.text << '"';
    EXPECT_EQ(product.ScanSides, Names{"S"});
    EXPECT_EQ(product.PaperSupport, row.pieces) << '"' << row.text << '"';
  }
}

TEST(DefaultValues, AreTrimmedOfSpacesAlone) {
  ProductData product;
  ProductDataTestPeer::setDefaults(product, "  Auto", "200x200  ", "   ", " \tone two\t ");
  EXPECT_EQ(product.DefaultColorMode, "Auto");
  EXPECT_EQ(product.DefaultResolution, "200x200");
  EXPECT_EQ(product.DefaultScanSide, "");
  EXPECT_EQ(product.DefaultPaperSupport, "\tone two\t");
}

// The result of a lookup into a record whose every field is filled.
ProductData lookUp(const std::string& name) {
  ProductData result = filledProduct();
  ScanBaseClient().GetProductData(name, result);
  return result;
}

TEST(GetProductData, FullNameMatches) {
  const ProductData lowEnd = lookUp("Tevra Birch 120 MFP");
  EXPECT_EQ(lowEnd.ControllerFamily, "LOWEND");
  EXPECT_FALSE(lowEnd.NSPScanSupport);
  const ProductData lantern = lookUp("Tevra Poplar B42");
  EXPECT_EQ(lantern.ControllerFamily, "LANTERN");
  EXPECT_TRUE(lantern.NSPScanSupport);
}

TEST(GetProductData, EveryModelIsFoundByItsName) {
  for (const ProductData& product : productTable()) {
    const ProductData found = lookUp({product.ModelName.begin(), product.ModelName.end()});
    EXPECT_EQ(found.ControllerFamily, product.ControllerFamily);
    EXPECT_EQ(found.NSPScanSupport, product.NSPScanSupport);
  }
}

TEST(GetProductData, NameMatchesWithTextAroundIt) {
  for (const char* key : {"Tevra Alder 3020 (copy 1)", "USB Tevra Alder 3020", "[Tevra Alder 3020]",
                          "Tevra Alder Tevra Alder 30200"}) {
    EXPECT_EQ(lookUp(key).ControllerFamily, "MERIDIAN") << key;
    EXPECT_TRUE(lookUp(key).NSPScanSupport) << key;
  }
}

TEST(GetProductData, WithoutAMatchTheResultStaysAsItWas) {
  for (const char* key :
       {"", "Tevra", "Tevra Alder 302", "tevra alder 3020", "TEVRA ALDER 3020", "Alder 3020",
        "Tevra  Alder 3020", "Tevra Birch 120", "Tevr\xE4 Alder 3020"})
    expectFilled(lookUp(key));
}

TEST(GetProductData, CopiesTwoFieldsAndNothingElse) {
  for (const char* key : {"Tevra Birch 120 MFP", "Tevra Alder 3020"})
    expectRestIsFilled(lookUp(key));
}

TEST(GetProductData, BytesAreNoCodePage) {
  EXPECT_EQ(lookUp("\xC3\xA4\xFF Tevra Alder 3020 \x80").ControllerFamily, "MERIDIAN");
  EXPECT_EQ(lookUp(std::string("\0Tevra Alder 3020\0", 18)).ControllerFamily, "MERIDIAN");
  expectFilled(lookUp(std::string("Tevra Alder\0 3020", 17)));
}

TEST(GetProductData, LaterLookupsBuildNothing) {
  ASSERT_EQ(productTable().size(), 90U);
  ProductData result;
  const RefusedAllocations refused(1024, SIZE_MAX);
  ScanBaseClient().GetProductData("Tevra Tamarisk 825 MFP", result);
  EXPECT_EQ(RefusedAllocations::count(), 0);
  EXPECT_EQ(result.ControllerFamily, "LOWEND");
}

TEST(GetProductData, ServesSeveralThreads) {
  std::vector<ProductData> results(8);
  std::vector<std::thread> threads;
  threads.reserve(results.size());
  for (ProductData& result : results)
    threads.emplace_back([&result] { ScanBaseClient().GetProductData("Tevra Quay 260", result); });
  for (std::thread& thread : threads)
    thread.join();
  for (const ProductData& result : results)
    EXPECT_EQ(result.ControllerFamily, "HARBOR");
}

std::vector<ProductData> tableOf(const std::vector<std::wstring>& names) {
  std::vector<ProductData> table(names.size());
  for (std::size_t row = 0; row < names.size(); ++row)
    table[row].ModelName = names[row];
  return table;
}

TEST(FindProduct, FirstMatchingRowWins) {
  const std::vector<ProductData> table = tableOf({L"Alder 3", L"Alder", L"Alder 30"});
  EXPECT_EQ(findProduct(table, L"Alder 30"), &table[0]);
  EXPECT_EQ(findProduct(table, L"Alder 40"), &table[1]);
  EXPECT_EQ(findProduct(table, L"Alde"), nullptr);
}

TEST(FindProduct, RowWithoutANameMatchesEveryKey) {
  const std::vector<ProductData> table = tableOf({L"Alder", L"", L"Birch"});
  EXPECT_EQ(findProduct(table, L""), &table[1]);
  EXPECT_EQ(findProduct(table, L"Birch"), &table[1]);
  EXPECT_EQ(findProduct(table, L"Alder"), &table[0]);
}

TEST(FindProduct, EmptyTableHasNone) {
  EXPECT_EQ(findProduct({}, L"Alder"), nullptr);
}

}  // namespace
