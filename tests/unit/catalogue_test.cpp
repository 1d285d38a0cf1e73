// The built-in catalogue, counted: rows, families, the domain of each column, and what makes the
// search by name unambiguous.
#include "catalogue/product_table.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <new>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/allocation.h"
#include "tests/support/media_names.h"
#include "usb/text.h"

namespace {

using tvrscn::narrow;
using tvrscn::productTable;
using tvrscn::test::kMediaNames;
using tvrscn::test::RefusedAllocations;
using Names = std::vector<std::string>;

// How often each value stands in a column.
template <typename Column>
auto counted(Column column) {
  std::map<std::decay_t<std::invoke_result_t<Column, const ProductData&>>, int> counts;
  for (const ProductData& product : productTable())
    ++counts[std::invoke(column, product)];
  return counts;
}

std::map<std::string, int> countedTexts(std::wstring ProductData::*column) {
  return counted([column](const ProductData& product) { return narrow(product.*column); });
}

std::string joined(const Names& names) {
  std::string text;
  for (const std::string& name : names)
    text += (text.empty() ? "" : ", ") + name;
  return text;
}

std::map<std::string, int> countedLists(Names ProductData::*column) {
  return counted([column](const ProductData& product) { return joined(product.*column); });
}

bool contains(const Names& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

using Counts = std::map<std::string, int>;

TEST(Catalogue, HoldsNinetyRows) {
  EXPECT_EQ(productTable().size(), 90U);
}

TEST(Catalogue, IsBuiltOnce) {
  EXPECT_EQ(&productTable(), &productTable());
}

TEST(Catalogue, EachLineHasItsRowsAndFlags) {
  const auto line = [](const ProductData& p) {
    return std::tuple(p.ControllerFamily, p.USBScanSupport, p.NSPScanSupport, p.IPPScanSupport,
                      p.DefaultNetworkScan, p.USBEndPointHWID, p.DefaultColorMode,
                      p.DefaultPaperSupport);
  };
  const decltype(counted(line)) kExpected = {
      {{"MERIDIAN", false, true, false, 1, "MI_00", "FullColor", "Manual"}, 19},
      {{"LANTERN", false, true, false, 1, "MI_02", "Auto", "Auto"}, 20},
      {{"LANTERN", true, true, true, 4, "MI_02", "Auto", "Manual"}, 17},
      {{"HARBOR", false, true, false, 1, "MI_00", "FullColor", "Manual"}, 2},
      {{"AMBER", false, true, false, 1, "MI_00", "Auto", "Auto"}, 6},
      {{"AMBER", false, true, true, 4, "MI_00", "Auto", "Manual"}, 3},
      {{"LOWEND", true, false, true, 4, "MI_00", "FullColor", "Manual"}, 23},
  };
  EXPECT_EQ(counted(line), kExpected);
}

TEST(Catalogue, NetworkScanStartsWithIppWhereItIsOffered) {
  for (const ProductData& product : productTable())
    EXPECT_EQ(product.DefaultNetworkScan, product.IPPScanSupport ? 4 : 1) << product.ModelName;
}

TEST(Catalogue, EveryRatedSpeedIsInUseAndNoOther) {
  std::vector<std::int32_t> speeds;
  for (const auto& [speed, count] : counted(&ProductData::RatedSpeed))
    speeds.push_back(speed);
  EXPECT_EQ(speeds,
            (std::vector<std::int32_t>{20, 25, 26, 30, 32, 35, 36, 42, 45,  47,  50,  51,
                                       52, 55, 56, 65, 70, 75, 81, 90, 100, 110, 125, 136}));
}

TEST(Catalogue, DefaultsAreCounted) {
  EXPECT_EQ(counted(&ProductData::DefaultColorMode), (Counts{{"Auto", 46}, {"FullColor", 44}}));
  EXPECT_EQ(counted(&ProductData::DefaultResolution), (Counts{{"200x200", 87}, {"300x300", 3}}));
  EXPECT_EQ(counted(&ProductData::DefaultScanSide), (Counts{{"", 90}}));
  EXPECT_EQ(counted(&ProductData::DefaultPaperSupport), (Counts{{"Auto", 26}, {"Manual", 64}}));
}

TEST(Catalogue, DefaultsAreOffered) {
  for (const ProductData& product : productTable()) {
    EXPECT_TRUE(contains(product.ColorModes, product.DefaultColorMode)) << product.ModelName;
    EXPECT_TRUE(contains(product.Resolution, product.DefaultResolution)) << product.ModelName;
    // "Manual" is the way of choosing among the media, not one of them.
    EXPECT_EQ(contains(product.PaperSupport, "Auto"), product.DefaultPaperSupport == "Auto")
        << product.ModelName;
  }
}

TEST(Catalogue, FourListsOfColours) {
  EXPECT_EQ(countedLists(&ProductData::ColorModes),
            (Counts{{"Auto, BlackAndWhite, FullColor, Grayscale", 30},
                    {"BlackAndWhite, FullColor, Grayscale", 28},
                    {"Auto, FullColor, Grayscale", 16},
                    {"FullColor, Grayscale", 16}}));
}

TEST(Catalogue, FiveListsOfResolutions) {
  EXPECT_EQ(countedLists(&ProductData::Resolution),
            (Counts{{"200x200, 300x300, 400x400, 600x600, 1200x1200", 28},
                    {"75x75, 150x150, 200x200, 300x300, 400x400, 600x600", 23},
                    {"72x72, 100x100, 150x150, 200x200, 300x300, 400x400, 600x600", 20},
                    {"150x150, 200x200, 300x300, 400x400, 600x600", 17},
                    {"200x200, 300x300", 2}}));
  for (const ProductData& product : productTable()) {
    EXPECT_EQ(product.Resolution.front() == "75x75", product.ControllerFamily == "LOWEND");
    EXPECT_EQ(product.Resolution.size() == 2, product.ControllerFamily == "HARBOR");
  }
}

TEST(Catalogue, ThreeListsOfSides) {
  EXPECT_EQ(countedLists(&ProductData::ScanSides),
            (Counts{{"OneSided, TwoSided, SecondSideRotation", 67},
                    {"OneSided, TwoSided", 17},
                    {"OneSided", 6}}));
  for (const ProductData& product : productTable())
    EXPECT_EQ(product.ScanSides.size() < 3, product.ControllerFamily == "LOWEND");
}

TEST(Catalogue, SeventeenListsOfMedia) {
  const std::set<std::string> media(std::begin(kMediaNames), std::end(kMediaNames));
  ASSERT_EQ(media.size(), 47U);
  std::set<Names> lists;
  std::set<std::size_t> lengths;
  for (const ProductData& product : productTable()) {
    lists.insert(product.PaperSupport);
    lengths.insert(product.PaperSupport.size());
  }
  EXPECT_EQ(lists.size(), 17U);
  EXPECT_EQ(*lengths.begin(), 8U);
  EXPECT_EQ(*lengths.rbegin(), 30U);
  for (const Names& list : lists) {
    const std::set<std::string> names(list.begin(), list.end());
    EXPECT_EQ(names.size(), list.size()) << joined(list);
    EXPECT_TRUE(std::includes(media.begin(), media.end(), names.begin(), names.end()))
        << joined(list);
  }
}

TEST(Catalogue, SettingsPagesGoByFamily) {
  const std::map<std::string, std::string> kPages = {
      {"LANTERN", "http://{0}/web_srvc/twainScanning.php"},
      {"LOWEND", "http://{0}/properties/index.dhtml"},
      {"HARBOR", "http://{0}/properties/index.dhtml"},
      {"MERIDIAN", "http://{0}/apps/index.html#hashPortalkey/hashApps"},
      {"AMBER", "http://{0}/apps/index.html#hashPortalkey/hashApps"},
  };
  for (const ProductData& product : productTable())
    EXPECT_EQ(narrow(product.TwainSettingURL), kPages.at(product.ControllerFamily));
  EXPECT_EQ(countedTexts(&ProductData::TwainSettingURL),
            (Counts{{"http://{0}/web_srvc/twainScanning.php", 37},
                    {"http://{0}/properties/index.dhtml", 25},
                    {"http://{0}/apps/index.html#hashPortalkey/hashApps", 28}}));
  EXPECT_EQ(countedTexts(&ProductData::MopriaSettingURL),
            (Counts{{"https://{0}/protocols/mopria.php?from=protocolConfig", 90}}));
}

TEST(Catalogue, SecondObjectIdIsEmptyOrOneOfThree) {
  Counts ids = countedTexts(&ProductData::SslSysObjectId);
  EXPECT_EQ(ids.size(), 4U);
  EXPECT_EQ(ids[""], 27);
}

TEST(Catalogue, PicturesComeInThirtyFivePairsAndOneIsGeneral) {
  const auto pairs = counted(
      [](const ProductData& p) { return std::pair(narrow(p.Mimic), narrow(p.PrinterMimic)); });
  EXPECT_EQ(pairs.size(), 35U);
  Counts sharedBySeven;
  for (const auto& [pair, count] : pairs) {
    if (count == 7) ++sharedBySeven[pair.first];
    const std::string name = pair.first.substr(0, pair.first.find('_'));
    EXPECT_EQ(pair, std::pair(name + "_48x48.png", name + "_128x128.png"));
  }
  EXPECT_EQ(sharedBySeven, (Counts{{"General_48x48.png", 1}}));
  EXPECT_EQ(countedTexts(&ProductData::Mimic).size(), 35U);
  EXPECT_EQ(countedTexts(&ProductData::PrinterMimic).size(), 35U);
}

TEST(Catalogue, NineDesignationsOccurTwice) {
  std::map<int, int> occurrences;
  for (const auto& [designation, count] : countedTexts(&ProductData::ConditionalModelDesignation)) {
    ++occurrences[count];
    EXPECT_GE(designation.size(), 1U);
    EXPECT_LE(designation.size(), 5U) << designation;
    EXPECT_EQ(designation.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"),
              std::string::npos)
        << designation;
  }
  EXPECT_EQ(occurrences, (std::map<int, int>{{1, 72}, {2, 9}}));
}

bool isUsbNumber(const std::string& text) {
  return text.size() == 4 && text.find_first_not_of("0123456789ABCDEF") == std::string::npos;
}

TEST(Catalogue, UsbIdsAreFourDigitsAndTellModelsApart) {
  EXPECT_EQ(countedTexts(&ProductData::USBVendorId), (Counts{{"0A7E", 90}}));
  const Counts products = countedTexts(&ProductData::USBProductId);
  EXPECT_EQ(products.size(), 90U);
  for (const auto& [id, count] : products)
    EXPECT_TRUE(isUsbNumber(id)) << id;
}

TEST(Catalogue, SoftwareScannersAreModels) {
  std::map<std::string, std::string> families;
  for (const ProductData& product : productTable()) {
    if (product.USBScanSupport) {
      families[narrow(product.USBProductId)] = product.ControllerFamily;
    }
  }
  EXPECT_EQ(families.size(), 40U);
  EXPECT_EQ(families["1F48"], "LANTERN");  // HP
  EXPECT_EQ(families["1C5A"], "LANTERN");  // QZ
  EXPECT_EQ(families["1E4C"], "LOWEND");
}

TEST(Catalogue, ObjectIdsAreDottedDecimalAndTellModelsApart) {
  const Counts ids = countedTexts(&ProductData::SysObjectIds);
  EXPECT_EQ(ids.size(), 90U);
  for (const auto& [id, count] : ids) {
    EXPECT_EQ(id.find("1.3.6.1.4.1."), 0U) << id;
    EXPECT_EQ(id.find_first_not_of("0123456789."), std::string::npos) << id;
    EXPECT_EQ(id.find(".."), std::string::npos) << id;
    EXPECT_NE(id.back(), '.') << id;
  }
  for (const auto& [id, count] : countedTexts(&ProductData::SslSysObjectId))
    EXPECT_FALSE(ids.contains(id)) << id;
}

TEST(Catalogue, NoNameStandsInAnother) {
  for (const ProductData& inner : productTable()) {
    EXPECT_GE(inner.ModelName.size(), 8U);
    for (const ProductData& outer : productTable()) {
      EXPECT_EQ(outer.ModelName.find(inner.ModelName) != std::wstring::npos, &inner == &outer)
          << narrow(inner.ModelName) << " in " << narrow(outer.ModelName);
    }
  }
}

// One row, read through from its line in the source.
TEST(Catalogue, RowReadsAsItIsWritten) {
  const ProductData* alder = tvrscn::findProduct(productTable(), L"Tevra Alder 3020");
  ASSERT_NE(alder, nullptr);
  EXPECT_EQ(narrow(alder->SysObjectIds), "1.3.6.1.4.1.99999.1.1");
  EXPECT_EQ(narrow(alder->USBProductId), "1234");
  EXPECT_EQ(narrow(alder->ConditionalModelDesignation), "3020");
  EXPECT_EQ(narrow(alder->Mimic), "Alder_48x48.png");
  EXPECT_EQ(narrow(alder->PrinterMimic), "Alder_128x128.png");
  EXPECT_EQ(alder->RatedSpeed, 30);
  EXPECT_EQ(alder->ControllerFamily, "MERIDIAN");
  EXPECT_EQ(joined(alder->ColorModes), "FullColor, Grayscale");
  EXPECT_EQ(narrow(alder->SslSysObjectId), "");
}

TEST(BuildProductTable, ReplacesWhatWasThere) {
  std::vector<ProductData> table(3);
  BuildProductTable(table);
  ASSERT_EQ(table.size(), 90U);
  for (std::size_t row = 0; row < table.size(); ++row)
    EXPECT_EQ(table[row].ModelName, productTable()[row].ModelName);
}

TEST(BuildProductTable, OutOfMemoryLeavesTheTableAsItWas) {
  std::vector<ProductData> table(1);
  table.front().ModelName = L"kept";
  {
    const RefusedAllocations refused(90 * sizeof(ProductData), 90 * sizeof(ProductData));
    EXPECT_THROW(BuildProductTable(table), std::bad_alloc);
  }
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(narrow(table.front().ModelName), "kept");
}

}  // namespace
