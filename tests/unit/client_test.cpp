// The front door: which controller, what is forwarded, what is left alone.
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/lowend_test.h"
#include "tests/support/platform_test.h"
#include "tests/support/qz_test.h"
#include "tests/support/temporary_folder.h"
#include "tvrscn/scan_client.h"

namespace {

using tvrscn::test::HPDialogue;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::LowEndDialogue;
using tvrscn::test::PlatformTest;
using tvrscn::test::QZDialogue;
using tvrscn::test::TemporaryFolder;

// A client leaves its controller in being; here somebody takes it over.
struct OwnedClient {
  explicit OwnedClient(ControllerType type)
      : client(type), controller(ClientTestPeer::controller(client)) {}

  CScanUSBClient client;
  std::unique_ptr<BaseUSBController> controller;
};

class Client : public PlatformTest {
 protected:
  Client() { platform.devices.push_back({L"USB\\VID_0A7E&PID_1234&MI_00\\1"}); }
};

TEST_F(Client, TypeDecidesTheController) {
  enum Family { kNone, kHP, kLowEnd, kQZ };
  const struct {
    int type;
    Family family;
  } kCases[] = {{1, kQZ},   {2, kHP},   {5, kHP},   {6, kLowEnd}, {0, kNone},
                {3, kNone}, {4, kNone}, {7, kNone}, {-1, kNone}};
  for (const auto& row : kCases) {
    const OwnedClient owned(static_cast<ControllerType>(row.type));
    const BaseUSBController* controller = owned.controller.get();
    EXPECT_EQ(dynamic_cast<const USB_HP_Controller*>(controller) != nullptr, row.family == kHP)
        << row.type;
    EXPECT_EQ(dynamic_cast<const USB_LowEnd_Controller*>(controller) != nullptr,
              row.family == kLowEnd)
        << row.type;
    EXPECT_EQ(dynamic_cast<const USB_QZ_Controller*>(controller) != nullptr, row.family == kQZ)
        << row.type;
    EXPECT_EQ(controller == nullptr, row.family == kNone) << row.type;
  }
}

TEST_F(Client, ConstructionTouchesNoDevice) {
  const OwnedClient owned(CONTROLLER_HP);
  EXPECT_EQ(platform.calls({Kind::kSetup, Kind::kOpen, Kind::kDevice}), Lines{});
}

TEST_F(Client, MembersStartWithTheirValues) {
  OwnedClient owned(CONTROLLER_HP);
  EXPECT_FALSE(owned.client.m_bClientErrorShown);
  EXPECT_EQ(ClientTestPeer::state(owned.client), 0);
  EXPECT_EQ(ClientTestPeer::dictionary(owned.client), nullptr);
  EXPECT_EQ(owned.client.m_scanUIData.modelName, "");
}

TEST_F(Client, BaseOperationsDoNothing) {
  ScanBaseClient base;
  TevraScanUIData settings = tvrscn::test::settings();
  EXPECT_EQ(base.Scan(settings, platform.callback(), L"/nowhere", nullptr), 1);
  base.InitScanConfigInfo("name", "VID_0A7E", L"label");
  IPPMinMaxNormalStepData brightness{1, 2, 3, 4};
  IPPMinMaxNormalStepData contrast{5, 6, 7, 8};
  base.GetBrightnessContrastValue(brightness, contrast);
  EXPECT_EQ(brightness.Min + brightness.Max + brightness.Normal + brightness.Step, 10);
  EXPECT_EQ(contrast.Min + contrast.Max + contrast.Normal + contrast.Step, 26);
  base.InitExceptionStrings(nullptr);
  EXPECT_EQ(ClientTestPeer::dictionary(base), nullptr);
  base.SetUsingTevraUI(0);
  EXPECT_EQ(platform.calls(), Lines{});
  EXPECT_FALSE(base.m_bClientErrorShown);
}

TEST_F(Client, VersionIsNotTold) {
  const OwnedClient owned(CONTROLLER_HP);
  ScanBaseClient base;
  for (ScanBaseClient* client :
       {&base, static_cast<ScanBaseClient*>(const_cast<CScanUSBClient*>(&owned.client))}) {
    std::string version = "preset";
    short major = 11;
    short minor = 22;
    EXPECT_EQ(client->GetScanInterfaceVersion(version, major, minor), 0);
    EXPECT_EQ(version, "preset");
    EXPECT_EQ(major, 11);
    EXPECT_EQ(minor, 22);
  }
}

TEST_F(Client, CopiesShareTheDictionaryAndTakeTheRest) {
  ScanBaseClient original;
  original.m_bClientErrorShown = true;
  ClientTestPeer::state(original) = 42;
  original.m_scanUIData.modelName = "model";
  ClientTestPeer::dictionary(original) = std::make_shared<CErrorCodeDictionary>();
  ScanBaseClient copy(original);
  ScanBaseClient assigned;
  assigned = original;
  for (ScanBaseClient* client : {&copy, &assigned}) {
    EXPECT_TRUE(client->m_bClientErrorShown);
    EXPECT_EQ(ClientTestPeer::state(*client), 42);
    EXPECT_EQ(client->m_scanUIData.modelName, "model");
    EXPECT_EQ(ClientTestPeer::dictionary(*client), ClientTestPeer::dictionary(original));
  }
  EXPECT_EQ(ClientTestPeer::dictionary(original).use_count(), 3);
}

TEST_F(Client, InitExceptionStringsSharesOneDictionary) {
  OwnedClient owned(CONTROLLER_HP);
  owned.client.InitExceptionStrings(nullptr);
  const std::shared_ptr<CErrorCodeDictionary> first = ClientTestPeer::dictionary(owned.client);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(ControllerTestPeer::dictionary(*owned.controller), first);
  EXPECT_NE(first->m_strPaperJam, L"");
  owned.client.InitExceptionStrings(nullptr);
  const std::shared_ptr<CErrorCodeDictionary> second = ClientTestPeer::dictionary(owned.client);
  EXPECT_NE(second, first);
  EXPECT_EQ(ControllerTestPeer::dictionary(*owned.controller), second);
  EXPECT_EQ(first.use_count(), 1);
}

TEST_F(Client, SetUsingTevraUITakesAnyValueButZeroAsTrue) {
  OwnedClient owned(CONTROLLER_HP);
  const struct {
    int enabled;
    bool stored;
  } kCases[] = {{2, true}, {0, false}, {1, true}, {0, false}, {-1, true}, {256, true}};
  EXPECT_TRUE(ControllerTestPeer::usingTevraUI(*owned.controller));
  for (const auto& row : kCases) {
    owned.client.SetUsingTevraUI(row.enabled);
    EXPECT_EQ(ControllerTestPeer::usingTevraUI(*owned.controller), row.stored) << row.enabled;
  }
}

TEST_F(Client, SearchIsForwarded) {
  OwnedClient owned(CONTROLLER_HP);
  wchar_t enumerator[] = L"USB";
  EXPECT_EQ(owned.client.FindStatusEndPointFromPrinterPort(enumerator, "VID_0A7E", false), 0);
  EXPECT_EQ(owned.client.FindStatusEndPointFromPrinterPort(enumerator, "VID_NONE", false), 55);
  EXPECT_EQ(owned.client.FindStatusEndPointFromPrinterPort(enumerator, "VID_NONE", true), 15007);
  EXPECT_EQ(owned.client.FindStatusEndPointFromPrinterPort(enumerator, "VID_0A7E", true), 0);
}

TEST_F(Client, InitScanConfigInfoOpensTheDevice) {
  OwnedClient owned(CONTROLLER_HP);
  owned.client.InitScanConfigInfo("name", "vid_0a7e", L"label");
  EXPECT_EQ(ControllerTestPeer::hardwareId(*owned.controller), "VID_0A7E");
  EXPECT_EQ(platform.liveObjects("handle"), (Lines{"write", "read"}));
}

TEST_F(Client, RangesOfTheOtherFamiliesStayUntouched) {
  for (const ControllerType type : {CONTROLLER_HP, CONTROLLER_QZ}) {
    OwnedClient owned(type);
    IPPMinMaxNormalStepData brightness{1, 2, 3, 4};
    IPPMinMaxNormalStepData contrast{5, 6, 7, 8};
    owned.client.GetBrightnessContrastValue(brightness, contrast);
    EXPECT_EQ(brightness.Min, 1);
    EXPECT_EQ(brightness.Max, 2);
    EXPECT_EQ(brightness.Normal, 3);
    EXPECT_EQ(brightness.Step, 4);
    EXPECT_EQ(contrast.Min, 5);
    EXPECT_EQ(contrast.Max, 6);
    EXPECT_EQ(contrast.Normal, 7);
    EXPECT_EQ(contrast.Step, 8);
  }
  EXPECT_EQ(platform.calls({Kind::kDevice}), Lines{});
}

TEST_F(Client, RangesOfTheLowEndFamilyComeFromTheDevice) {
  OwnedClient owned(CONTROLLER_LOWEND);
  LowEndDialogue device;
  device.features(R"({"supportedContrastInfo":{"start":-3,"end":3,"userDefault":1}})");
  platform.plug(&device);
  owned.client.InitScanConfigInfo("name", "VID_0A7E", L"label");
  IPPMinMaxNormalStepData brightness{1, 2, 3, 4};
  IPPMinMaxNormalStepData contrast{5, 6, 7, 8};
  owned.client.GetBrightnessContrastValue(brightness, contrast);
  EXPECT_EQ(brightness.Min + brightness.Max + brightness.Normal + brightness.Step, 10);
  EXPECT_EQ(contrast.Min, -3);
  EXPECT_EQ(contrast.Max, 3);
  EXPECT_EQ(contrast.Normal, 1);
  EXPECT_EQ(contrast.Step, 8);
  EXPECT_EQ(device.problems(), Lines{});
}

TEST_F(Client, FailedLowEndJobSaysInTheClientWhetherTheUserWasTold) {
  OwnedClient owned(CONTROLLER_LOWEND);
  owned.client.InitExceptionStrings(nullptr);
  LowEndDialogue device;
  platform.plug(&device);
  owned.client.InitScanConfigInfo("name", "VID_0A7E", L"label");
  TevraScanUIData settings = tvrscn::test::settings();
  for (const bool dialogs : {true, false}) {
    owned.client.SetUsingTevraUI(static_cast<int>(dialogs));
    owned.client.m_bClientErrorShown = !dialogs;
    device.features().status(R"({"status":{"busy":true},"adfStatus":{}})");
    EXPECT_EQ(owned.client.Scan(settings, platform.callback(), L"/nowhere", nullptr), 1);
    EXPECT_EQ(owned.client.m_bClientErrorShown, dialogs);
  }
  EXPECT_EQ(platform.notifications(), (Lines{"1020", "1001", "1011"}));
  EXPECT_EQ(device.problems(), Lines{});
}

TEST_F(Client, ScanRunsTheJobAndNeverCallsTheDeviceCallback) {
  OwnedClient owned(CONTROLLER_HP);
  HPDialogue device;
  device.openFlatbed().position().page().close();
  platform.plug(&device);
  owned.client.InitScanConfigInfo("name", "VID_0A7E", L"label");
  const TemporaryFolder folder;
  TevraScanUIData settings = tvrscn::test::settings();
  bool called = false;
  TVR_FP_DEVCOMM_CALLBACK deviceCallback{[](void* context) { *static_cast<bool*>(context) = true; },
                                         &called};
  EXPECT_EQ(
      owned.client.Scan(settings, platform.callback(), folder.path().wstring(), &deviceCallback),
      0);
  EXPECT_FALSE(called);
  EXPECT_FALSE(owned.client.m_bClientErrorShown);
  EXPECT_EQ(folder.fileNames().size(), 1U);
  EXPECT_EQ(device.problems(), Lines{});
}

TEST_F(Client, ScanRunsAJobOfTheQZFamily) {
  OwnedClient owned(CONTROLLER_QZ);
  QZDialogue device;
  device.openFlatbed().flatbedPage().close();
  platform.plug(&device);
  owned.client.InitScanConfigInfo("name", "VID_0A7E", L"label");
  const TemporaryFolder folder;
  TevraScanUIData settings = tvrscn::test::settings();
  EXPECT_EQ(owned.client.Scan(settings, platform.callback(), folder.path().wstring(), nullptr), 0);
  EXPECT_EQ(folder.fileNames().size(), 1U);
  EXPECT_EQ(platform.notifications().size(), 3U);
  EXPECT_EQ(device.problems(), Lines{});
}

TEST_F(Client, ScanLeavesErrorShownAsItWas) {
  for (const ControllerType type : {CONTROLLER_HP, CONTROLLER_QZ}) {
    OwnedClient owned(type);
    owned.client.SetUsingTevraUI(0);
    TevraScanUIData settings = tvrscn::test::settings();
    for (const bool shown : {true, false}) {
      owned.client.m_bClientErrorShown = shown;
      EXPECT_EQ(owned.client.Scan(settings, platform.callback(), L"/nowhere", nullptr), 1);
      EXPECT_EQ(owned.client.m_bClientErrorShown, shown);
    }
  }
}

TEST_F(Client, RecordOfTwoNullFieldsIsRefused) {
  OwnedClient owned(CONTROLLER_HP);
  owned.client.InitScanConfigInfo("name", "VID_0A7E", L"label");
  platform.forgetCalls();
  TVR_FP_CALLBACK nobody{nullptr, nullptr};
  TevraScanUIData settings = tvrscn::test::settings();
  EXPECT_EQ(owned.client.Scan(settings, &nobody, L"/nowhere", nullptr), 1);
  EXPECT_EQ(platform.calls(), Lines{"Log Error from ScanviaUSBThreaded....Callback is not valid. "
                                    "Bailing out of scan...."});
}

TEST_F(Client, DestroyedClientLeavesItsControllerInBeing) {
  BaseUSBController* controller = nullptr;
  {
    CScanUSBClient client(CONTROLLER_HP);
    controller = ClientTestPeer::controller(client);
    client.InitScanConfigInfo("name", "VID_0A7E", L"label");
  }
  EXPECT_EQ(platform.count("CloseHandle"), 0);
  EXPECT_EQ(platform.count("FreeLibrary"), 0);
  EXPECT_EQ(platform.liveObjects("handle"), (Lines{"write", "read"}));
  delete controller;
}

TEST_F(Client, DumpWritesTheBytesAndNothingMore) {
  const TemporaryFolder folder;
  ScanBaseClient base;
  const OwnedClient owned(CONTROLLER_HP);
  auto& derived = const_cast<CScanUSBClient&>(owned.client);
  for (ScanBaseClient* client : {&base, static_cast<ScanBaseClient*>(&derived)}) {
    const std::wstring name = folder.path().wstring() + L"/dump \u00E4.txt";
    const std::filesystem::path file = tvrscn::test::toPath(name);
    const std::string text("line\n\0end", 9);
    client->Dump(text, name);
    EXPECT_EQ(tvrscn::test::readFile(file), tvrscn::test::Bytes(text.begin(), text.end()));
    client->Dump("x", name);
    EXPECT_EQ(tvrscn::test::readFile(file), tvrscn::test::Bytes{'x'});
    client->Dump("", name);
    EXPECT_EQ(tvrscn::test::readFile(file), tvrscn::test::Bytes{});
    client->Dump("lost", (folder.path() / "missing" / "file.txt").wstring());
    EXPECT_EQ(folder.fileNames(), Lines{file.filename().string()});
  }
}

using UnservedClientDeathTest = Client;

TEST_F(UnservedClientDeathTest, FirstForwardEndsTheProcessWithAMessage) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const int type : {3, 0, 7}) {
    CScanUSBClient client(static_cast<ControllerType>(type));
    TevraScanUIData settings = tvrscn::test::settings();
    IPPMinMaxNormalStepData range{};
    wchar_t enumerator[] = L"USB";
    EXPECT_EXIT(client.Scan(settings, nullptr, L"/", nullptr), ::testing::KilledBySignal(SIGABRT),
                "[a-z]+");
    EXPECT_EXIT(client.InitScanConfigInfo("", "", L""), ::testing::KilledBySignal(SIGABRT),
                "[a-z]+");
    EXPECT_EXIT(client.GetBrightnessContrastValue(range, range), ::testing::KilledBySignal(SIGABRT),
                "[a-z]+");
    EXPECT_EXIT(client.InitExceptionStrings(nullptr), ::testing::KilledBySignal(SIGABRT), "[a-z]+");
    EXPECT_EXIT(client.SetUsingTevraUI(1), ::testing::KilledBySignal(SIGABRT), "[a-z]+");
    EXPECT_EXIT(client.FindStatusEndPointFromPrinterPort(enumerator, "", false),
                ::testing::KilledBySignal(SIGABRT), "[a-z]+");
  }
}

}  // namespace
