// Models behind USB ids and behind the names that people give, and the family that follows.
#include "device_model.h"

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "command_line.h"
#include "device_choice.h"
#include "families.h"

namespace tvrscn::cli {
namespace {

using Names = std::vector<std::string>;

constexpr const char* kHolly = "USB\\VID_0A7E&PID_1E4C&MI_00\\1";
constexpr const char* kPoplar = "USB\\VID_0A7E&PID_1C5A&MI_02\\1";
constexpr const char* kWalnut = "USB\\VID_0A7E&PID_1F48&MI_00\\1";
constexpr const char* kAlder = "USB\\VID_0A7E&PID_1234&MI_00\\1";  // scans over the network alone
constexpr const char* kMouse = "USB\\VID_1D6B&PID_1E4C\\1";

Device device(const std::string& instanceId, const char* endpoint = "unix:/there") {
  return {instanceId, hardwareIdOf(instanceId), endpoint, ""};
}

std::string familyWord(const Family* family) {
  return family == nullptr ? "" : family->word;
}

TEST(DeviceModel, FamilyFollowsFromModelAndInterface) {
  const struct {
    const char* instanceId;
    const char* model;
    const char* family;
    bool noUsbScanner;
  } cases[] = {
      {kHolly, "Tevra Holly 520 MFP", "lowend", false},
      {"USB\\VID_0A7E&PID_1E4C&MI_02\\1", "Tevra Holly 520 MFP", "lowend", false},
      {kPoplar, "Tevra Poplar B42", "qz", false},
      {"usb\\vid_0a7e&pid_1c5a&mi_02\\1", "Tevra Poplar B42", "qz", false},
      {kWalnut, "Tevra Walnut 2060", "hp", false},
      {"USB\\VID_0A7E&PID_1F48\\1", "Tevra Walnut 2060", "hp", false},
      {"VID_0A7E&PID_1F48&MI_02", "Tevra Walnut 2060", "qz", false},
      // What stands behind the hardware id is a serial number.
      {"USB\\VID_0A7E&PID_1F48&MI_00\\1&MI_02", "Tevra Walnut 2060", "hp", false},
      {kAlder, "Tevra Alder 3020", "", true},
      {"USB\\VID_0A7E&PID_1B10&MI_02\\1", "Tevra Aspen 3035", "", true},
      {"USB\\VID_0A7E&PID_1D10&MI_00\\1", "Tevra Quay 200", "", true},
      {kMouse, "", "", false},
      {"USB\\VID_0A7E&PID_9999\\PID_1F48", "", "", false},
      {"USB\\VID_0A7E&PID_1F4", "", "", false},
      {"USB\\PID_1F48\\1", "", "", false},
      {"VID_", "", "", false},
      {"", "", "", false},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(modelNameOf(row.instanceId), row.model) << row.instanceId;
    EXPECT_EQ(modelOf(row.instanceId) == nullptr, *row.model == '\0') << row.instanceId;
    EXPECT_EQ(familyWord(familyOf(row.instanceId)), row.family) << row.instanceId;
    EXPECT_EQ(isNoUsbScanner(row.instanceId), row.noUsbScanner) << row.instanceId;
  }
}

TEST(DeviceModel, ConnectionsAreThoseOfTheLine) {
  EXPECT_EQ(connectionsOf(*modelOf(kHolly)), (Names{"usb", "ipp"}));
  EXPECT_EQ(connectionsOf(*modelOf(kPoplar)), (Names{"usb", "nsp", "ipp"}));
  EXPECT_EQ(connectionsOf(*modelOf(kAlder)), Names{"nsp"});
  EXPECT_EQ(networkScanOf(*modelOf(kHolly)), "ipp");
  EXPECT_EQ(networkScanOf(*modelOf(kAlder)), "nsp");
}

TEST(DeviceModel, CatalogueFamiliesStandOnce) {
  EXPECT_EQ(catalogueFamilies(), (Names{"MERIDIAN", "LANTERN", "HARBOR", "AMBER", "LOWEND"}));
}

TEST(NamedModel, IsFoundByEachOfItsNames) {
  const struct {
    const char* word;
    const wchar_t* model;
  } cases[] = {
      {"Tevra Walnut 2060", L"Tevra Walnut 2060"},
      {"A Tevra Walnut 2060 in the hall", L"Tevra Walnut 2060"},
      {"tevra walnut 2060", L"Tevra Walnut 2060"},
      {"b42", L"Tevra Poplar B42"},
      {"holly 520", L"Tevra Holly 520 MFP"},
      // A short name comes before a text in longer names.
      {"50", L"Tevra Rowan 50"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(namedModel("models", row.word).ModelName, row.model) << row.word;
}

TEST(NamedModel, AnyOtherWordIsRefusedWithAHint) {
  const struct {
    const char* word;
    const char* problem;
  } cases[] = {
      {"P100", "models: 'P100' fits more than one model: Tevra Linden P100, Tevra Elm P100"},
      {"Tevra Walnat 2060", "models: no model is called 'Tevra Walnat 2060'; did you mean Tevra W"},
      {"toaster", "models: no model is called 'toaster'; 'tvrscan models' lists them"},
      {"", "models: no model is called ''"},
      {"Tevra W\xC3\xA4lnut", "models: no model is called 'Tevra W\xC3\xA4lnut'"},
  };
  for (const auto& row : cases) {
    try {
      namedModel("models", row.word);
      ADD_FAILURE() << row.word;
    } catch (const UsageProblem& problem) {
      EXPECT_EQ(problem.code, ExitCode::kUsage);
      EXPECT_EQ(problem.text.find(row.problem), 0U) << problem.text;
    }
  }
}

TEST(ChooseOnly, TakesTheOnlyScannerAmongOtherDevices) {
  Device chosen;
  EXPECT_FALSE(chooseOnly({device(kMouse), device(kHolly), device(kAlder)}, chosen));
  EXPECT_EQ(chosen.instanceId, kHolly);
  // One that cannot be opened does not count.
  EXPECT_FALSE(chooseOnly({device(kMouse), device(kHolly, "")}, chosen));
  EXPECT_EQ(chosen.instanceId, kMouse);
}

TEST(ChooseOnly, NamesTheScannersAloneWhenThereAreSeveral) {
  Device chosen;
  const auto outcome = chooseOnly({device(kMouse), device(kHolly), device(kPoplar)}, chosen);
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->what,
            "there is more than one device: VID_0A7E&PID_1E4C&MI_00, VID_0A7E&PID_1C5A&MI_02");
}

TEST(WithoutUsbScan, RefusesModelsOfTheNetwork) {
  const auto outcome = withoutUsbScan(device(kAlder));
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->code, ExitCode::kNotSupported);
  EXPECT_EQ(outcome->what, "the model Tevra Alder 3020 does not scan over USB");
  EXPECT_FALSE(withoutUsbScan(device(kHolly)));
  EXPECT_FALSE(withoutUsbScan(device(kMouse)));
}

struct Settled {
  std::string hardwareId;
  std::string family;
  bool fromDevice;
  friend bool operator==(const Settled&, const Settled&) = default;
  friend void PrintTo(const Settled& settled, std::ostream* out) {
    *out << settled.hardwareId << " " << settled.family << " " << settled.fromDevice;
  }
};

Settled settled(DeviceOptions options, const std::vector<Device>& devices) {
  settleFamily(options, devices);
  return {options.hardwareId, familyWord(options.family), options.familyFromDevice};
}

TEST(SettleFamily, TheOnlyScannerIsTakenWithItsFamily) {
  EXPECT_EQ(settled({}, {device(kMouse), device(kHolly)}),
            (Settled{"USB\\VID_0A7E&PID_1E4C&MI_00\\1", "lowend", true}));
  EXPECT_EQ(settled({}, {device(kPoplar)}),
            (Settled{"USB\\VID_0A7E&PID_1C5A&MI_02\\1", "qz", true}));
}

TEST(SettleFamily, ADeviceOfNoModelIsTakenForHp) {
  EXPECT_EQ(settled({}, {device(kMouse)}), (Settled{"USB\\VID_1D6B&PID_1E4C\\1", "hp", true}));
}

TEST(SettleFamily, NothingIsSettledWhereNothingIsClear) {
  EXPECT_EQ(settled({}, {}), (Settled{"", "hp", true}));
  EXPECT_EQ(settled({}, {device(kHolly), device(kPoplar)}), (Settled{"", "hp", true}));
}

TEST(SettleFamily, ANamedDeviceBringsItsFamily) {
  DeviceOptions options;
  options.hardwareId = "PID_1C5A";
  EXPECT_EQ(settled(options, {device(kHolly), device(kPoplar)}), (Settled{"PID_1C5A", "qz", true}));
  // Also before it is connected.
  options.hardwareId = "VID_0A7E&PID_1E4C";
  EXPECT_EQ(settled(options, {}), (Settled{"VID_0A7E&PID_1E4C", "lowend", true}));
}

TEST(SettleFamily, ANamedFamilyStays) {
  DeviceOptions options;
  options.family = findFamily("hp");
  EXPECT_EQ(settled(options, {device(kHolly)}), (Settled{"", "hp", false}));
}

}  // namespace
}  // namespace tvrscn::cli
