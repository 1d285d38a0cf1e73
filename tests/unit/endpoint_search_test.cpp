// The way from a hardware id to two open handles, and every way off it.
#include <string>

#include <gtest/gtest.h>

#include "tests/support/platform_test.h"

namespace {

using Peer = ControllerTestPeer;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::PlatformTest;
using tvrscn::test::PresentDevice;

const std::wstring kId = L"USB\\VID_0A7E&PID_1234&MI_00\\6&2B1C3D4E&0&0000";
const std::string kHardwareId = "VID_0A7E&PID_1234&MI_00";
const std::string kNameBytes = std::to_string(260 * sizeof(wchar_t));

class EndpointSearch : public PlatformTest {
 protected:
  EndpointSearch() { platform.forgetCalls(); }

  PresentDevice& add(const std::wstring& id) {
    platform.devices.push_back({id});
    return platform.devices.back();
  }
  int find(const std::string& hardwareId, bool open) {
    wchar_t enumerator[] = L"USB";
    return controller.FindStatusEndPointFromPrinterPort(enumerator, hardwareId, open);
  }
  bool closed() {
    return Peer::deviceWrite(controller) == INVALID_HANDLE_VALUE &&
           Peer::deviceRead(controller) == INVALID_HANDLE_VALUE;
  }

  USB_HP_Controller controller;
};

TEST_F(EndpointSearch, OpensTheEndpointTwice) {
  add(kId);
  EXPECT_EQ(find(kHardwareId, true), 0);
  EXPECT_EQ(
      platform.calls(),
      (Lines{"SetupDiGetClassDevsW USB 0x6", "SetupDiEnumDeviceInfo 0",
             "SetupDiGetDeviceInstanceIdW 260",
             "RegOpenKeyExW SYSTEM\\CurrentControlSet\\Enum\\"
             "USB\\VID_0A7E&PID_1234&MI_00\\6&2B1C3D4E&0&0000 0x20019",
             "SetupDiGetDeviceRegistryPropertyW 9 " + kNameBytes,
             "RegOpenKeyExW SYSTEM\\CurrentControlSet\\Control\\Class\\{class guid}\\0001 0x20019",
             "RegQueryValueExW CreateFileName " + kNameBytes, "SetupDiDestroyDeviceInfoList",
             "CreateFileW fake:endpoint 0xC0000000 share 3 disposition 3 flags 0",
             "CreateFileW fake:endpoint 0xC0000000 share 3 disposition 3 flags 0"}));
  EXPECT_EQ(platform.liveObjects("handle"), (Lines{"write", "read"}));
  EXPECT_FALSE(closed());
  EXPECT_NE(Peer::deviceWrite(controller), Peer::deviceRead(controller));
}

TEST_F(EndpointSearch, ProbeFindsWithoutOpening) {
  add(kId);
  EXPECT_EQ(find(kHardwareId, false), 0);
  EXPECT_EQ(platform.count("CreateFileW"), 0);
  EXPECT_TRUE(closed());
  EXPECT_EQ(platform.liveObjects("device set"), Lines{});
}

TEST_F(EndpointSearch, ProbeWithoutMatchAnswers55) {
  add(L"USB\\VID_FFFF&PID_0001\\1");
  EXPECT_EQ(find(kHardwareId, false), 55);
  EXPECT_TRUE(closed());
  EXPECT_EQ(platform.liveObjects("device set"), Lines{});
}

TEST_F(EndpointSearch, NoMatchOnANewControllerCannotBeOpened) {
  add(L"USB\\VID_FFFF&PID_0001\\1");
  EXPECT_EQ(find(kHardwareId, true), 15007);
  EXPECT_EQ(platform.calls(), (Lines{"SetupDiGetClassDevsW USB 0x6", "SetupDiEnumDeviceInfo 0",
                                     "SetupDiGetDeviceInstanceIdW 260", "SetupDiEnumDeviceInfo 1",
                                     "SetupDiDestroyDeviceInfoList"}));
}

TEST_F(EndpointSearch, NoDeviceAtAll) {
  EXPECT_EQ(find(kHardwareId, true), 15007);
  EXPECT_EQ(find(kHardwareId, false), 55);
  EXPECT_EQ(platform.liveObjects("device set"), Lines{});
}

TEST_F(EndpointSearch, NoMatchOnAnOpenControllerReadsAsSuccess) {
  add(kId);
  ASSERT_EQ(find(kHardwareId, true), 0);
  const HANDLE write = Peer::deviceWrite(controller);
  EXPECT_EQ(find("VID_OTHER", true), 0);
  EXPECT_EQ(Peer::deviceWrite(controller), write);
  EXPECT_EQ(find("VID_OTHER", false), 55);
}

TEST_F(EndpointSearch, MatchIsASubstringOfTheUpperCasedId) {
  const struct {
    const char* hardwareId;
    int result;
  } kCases[] = {
      {"VID_0A7E&PID_1234&MI_00", 0},
      {"USB\\VID_0A7E", 0},
      {"6&2B1C3D4E&0&0000", 0},
      {"", 0},
      {"7E&PID_12", 0},
      {"vid_0a7e&pid_1234&mi_00", 55},
      {"VID_0A7E&PID_1234&MI_01", 55},
      {"USB\\VID_0A7E&PID_1234&MI_00\\6&2B1C3D4E&0&00000", 55},
  };
  add(L"usb\\vid_0a7e&pid_1234&mi_00\\6&2b1c3d4e&0&0000");
  for (const auto& row : kCases)
    EXPECT_EQ(find(row.hardwareId, false), row.result) << row.hardwareId;
}

TEST_F(EndpointSearch, IdIsComparedByTheLowBytesOfItsCharacters) {
  add(L"USB\\\u0156ID_0A7E\\1");  // low byte 'V'
  EXPECT_EQ(find("VID_0A7E", false), 0);
}

TEST_F(EndpointSearch, EarlierOfTwoMatchesIsTaken) {
  add(kId + L"1").createFileName = L"first";
  add(kId + L"2").createFileName = L"second";
  EXPECT_EQ(find(kHardwareId, true), 0);
  EXPECT_EQ(platform.calls({Kind::kOpen}).front(),
            "CreateFileW first 0xC0000000 share 3 disposition 3 flags 0");
}

TEST_F(EndpointSearch, MatchWithoutItsKeyIsSkipped) {
  add(kId + L"1").enumKeyOpens = false;
  PresentDevice& second = add(kId + L"2");
  second.driver = L"{guid}\\0002";
  second.createFileName = L"second";
  EXPECT_EQ(find(kHardwareId, true), 0);
  EXPECT_EQ(platform.calls({Kind::kOpen}).front(),
            "CreateFileW second 0xC0000000 share 3 disposition 3 flags 0");
}

TEST_F(EndpointSearch, OnlyMatchWithoutItsKeyIsNotFound) {
  add(kId).enumKeyOpens = false;
  EXPECT_EQ(find(kHardwareId, false), 55);
}

TEST_F(EndpointSearch, MissingServiceAnswersBeforeAnythingIsTouched) {
  const char* const kFunctions[] = {"SetupDiGetClassDevsW",
                                    "SetupDiEnumDeviceInfo",
                                    "SetupDiGetDeviceInstanceIdW",
                                    "SetupDiDestroyDeviceInfoList",
                                    "SetupDiEnumDeviceInterfaces",
                                    "SetupDiGetDeviceInterfaceDetailW",
                                    "SetupDiGetDeviceRegistryPropertyW"};
  for (const char* function : kFunctions) {
    SCOPED_TRACE(function);
    platform.missingFunctions = {function};
    USB_HP_Controller lacking;
    platform.forgetCalls();
    wchar_t enumerator[] = L"USB";
    EXPECT_EQ(lacking.FindStatusEndPointFromPrinterPort(enumerator, kHardwareId, true), 15008);
    EXPECT_EQ(lacking.FindStatusEndPointFromPrinterPort(enumerator, kHardwareId, false), 15008);
    EXPECT_EQ(platform.calls(), Lines{});
  }
}

TEST_F(EndpointSearch, MissingModuleAnswersBeforeAnythingIsTouched) {
  platform.failCall("LoadLibraryW");
  USB_HP_Controller lacking;
  platform.forgetCalls();
  wchar_t enumerator[] = L"USB";
  EXPECT_EQ(lacking.FindStatusEndPointFromPrinterPort(enumerator, kHardwareId, true), 15008);
  EXPECT_EQ(platform.calls(), Lines{});
}

TEST_F(EndpointSearch, FailedStepsAnswerTheLastError) {
  const struct {
    const char* function;
    int call;
    DWORD stale;  // last error before the search
    int result;
    bool setStays;
  } kCases[] = {
      {"SetupDiGetClassDevsW", 1, 0, 1722, false},
      {"SetupDiGetDeviceRegistryPropertyW", 1, 0, 1722, true},
      // The registry leaves the last error as it was, so that a stale one is answered.
      {"RegOpenKeyExW", 2, 5, 5, true},
      {"RegQueryValueExW", 1, 87, 87, true},
      {"RegOpenKeyExW", 2, 0, 0, true},
      {"RegQueryValueExW", 1, 0, 0, true},
  };
  add(kId);
  for (const auto& row : kCases) {
    SCOPED_TRACE(std::string(row.function) + " " + std::to_string(row.stale));
    const std::size_t setsBefore = platform.liveObjects("device set").size();
    platform.lastError = row.stale;
    platform.failCall(row.function, row.call, 1722);
    EXPECT_EQ(find(kHardwareId, true), row.result);
    EXPECT_TRUE(closed());
    EXPECT_EQ(platform.count("CreateFileW"), 0);
    EXPECT_EQ(platform.liveObjects("device set").size(), setsBefore + (row.setStays ? 1 : 0));
  }
}

TEST_F(EndpointSearch, InstanceIdThatCannotBeFetchedDoesNotEndTheSearch) {
  add(L"USB\\VID_FFFF&PID_0001\\1");
  add(kId);
  platform.failCall("SetupDiGetDeviceInstanceIdW", 1);
  EXPECT_EQ(find(kHardwareId, false), 0);
}

TEST_F(EndpointSearch, FirstOpenDecides) {
  add(kId);
  platform.failCall("CreateFileW", 1, 5);
  EXPECT_EQ(find(kHardwareId, true), 15007);
  EXPECT_EQ(Peer::deviceWrite(controller), INVALID_HANDLE_VALUE);
  EXPECT_NE(Peer::deviceRead(controller), INVALID_HANDLE_VALUE);
}

TEST_F(EndpointSearch, FailureOfTheSecondOpenGoesUnnoticed) {
  add(kId);
  platform.failCall("CreateFileW", 2, 5);
  EXPECT_EQ(find(kHardwareId, true), 0);
  EXPECT_NE(Peer::deviceWrite(controller), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Peer::deviceRead(controller), INVALID_HANDLE_VALUE);
}

TEST_F(EndpointSearch, SecondOpenOverwritesTheHandles) {
  add(kId);
  ASSERT_EQ(find(kHardwareId, true), 0);
  ASSERT_EQ(find(kHardwareId, true), 0);
  EXPECT_EQ(platform.count("CloseHandle"), 0);
  EXPECT_EQ(platform.liveObjects("handle"), (Lines{"write", "read", "write2", "read2"}));
  EXPECT_EQ(static_cast<tvrscn::test::FakeObject*>(Peer::deviceWrite(controller))->name, "write2");
}

TEST_F(EndpointSearch, DeviceKeyIsCutToItsBuffer) {
  const std::wstring root = L"SYSTEM\\CurrentControlSet\\Enum\\";
  const std::wstring id = kId + std::wstring(259 - kId.size(), L'9');
  add(id);
  EXPECT_EQ(find(kHardwareId, false), 55);
  const std::wstring cut = (root + id).substr(0, 259);
  EXPECT_EQ(platform.calls({Kind::kSetup}).at(3),
            "RegOpenKeyExW " + tvrscn::test::utf8(cut) + " 0x20019");
}

TEST_F(EndpointSearch, ClassKeyIsCutToItsBuffer) {
  platform.lastError = 1234;
  const std::wstring driver(250, L'd');
  add(kId).driver = driver;
  EXPECT_EQ(find(kHardwareId, true), 1234);
  const std::wstring whole = L"SYSTEM\\CurrentControlSet\\Control\\Class\\" + driver;
  EXPECT_EQ(platform.calls({Kind::kSetup}).back(),
            "RegOpenKeyExW " + tvrscn::test::utf8(whole.substr(0, 259)) + " 0x20019");
}

TEST_F(EndpointSearch, LongestNamesFitTheirBuffers) {
  PresentDevice& device = add(kId);
  device.createFileName = std::wstring(259, L'e');
  EXPECT_EQ(find(kHardwareId, true), 0);
  device.createFileName = std::wstring(260, L'e');
  platform.lastError = 77;
  EXPECT_EQ(find(kHardwareId, true), 77);
  device.driver = std::wstring(260, L'd');
  EXPECT_EQ(find(kHardwareId, true), 122);
}

TEST_F(EndpointSearch, NoLogLineIsWritten) {
  add(kId);
  find(kHardwareId, true);
  find("NOTHING", true);
  EXPECT_EQ(platform.logLines(), Lines{});
}

TEST_F(EndpointSearch, InitScanConfigInfoKeepsItsTextsAndOpens) {
  add(kId);
  controller.InitScanConfigInfo("the name", "vid_0a7e&pid_1234&mi_00", L"the label");
  EXPECT_EQ(Peer::deviceName(controller), "the name");
  EXPECT_EQ(Peer::hardwareId(controller), kHardwareId);
  EXPECT_EQ(Peer::deviceLabel(controller), L"the label");
  EXPECT_FALSE(closed());
  EXPECT_EQ(platform.calls({Kind::kSetup}).front(), "SetupDiGetClassDevsW USB 0x6");
}

TEST_F(EndpointSearch, InitScanConfigInfoTakesItsOwnFields) {
  add(kId);
  Peer::deviceName(controller) = "name";
  Peer::hardwareId(controller) = "usb\\vid_0a7e";
  Peer::deviceLabel(controller) = L"label";
  controller.InitScanConfigInfo(Peer::deviceName(controller), Peer::hardwareId(controller),
                                Peer::deviceLabel(controller));
  EXPECT_EQ(Peer::deviceName(controller), "name");
  EXPECT_EQ(Peer::hardwareId(controller), "USB\\VID_0A7E");
  EXPECT_EQ(Peer::deviceLabel(controller), L"label");
  EXPECT_FALSE(closed());
}

TEST_F(EndpointSearch, InitScanConfigInfoSwallowsFailure) {
  controller.InitScanConfigInfo("name", "nothing", L"label");
  EXPECT_TRUE(closed());
  EXPECT_EQ(Peer::hardwareId(controller), "NOTHING");
}

TEST_F(EndpointSearch, InitScanConfigInfoTakesBytesBeyondAscii) {
  controller.InitScanConfigInfo("", "\xE4\xFF\x80", L"");
  EXPECT_EQ(Peer::hardwareId(controller).size(), 3U);
}

}  // namespace
