// What the controllers of all families share, seen through an HP controller.
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/platform_test.h"

namespace {

using Peer = ControllerTestPeer;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::PlatformTest;

using BaseController = PlatformTest;

TEST_F(BaseController, ConstructionLoadsTheDeviceSetupService) {
  const USB_HP_Controller controller;
  EXPECT_EQ(
      platform.calls({Kind::kModule}),
      (Lines{"SHGetFolderPathW 0x8025", "SHGetFolderPathW 0x8025",
             "LoadLibraryW /system32/setupapi.dll", "GetProcAddress SetupDiGetClassDevsW",
             "GetProcAddress SetupDiEnumDeviceInfo", "GetProcAddress SetupDiGetDeviceInstanceIdW",
             "GetProcAddress SetupDiDestroyDeviceInfoList",
             "GetProcAddress SetupDiEnumDeviceInterfaces",
             "GetProcAddress SetupDiGetDeviceInterfaceDetailW",
             "GetProcAddress SetupDiGetDeviceRegistryPropertyW"}));
}

TEST_F(BaseController, MembersStartWithTheirValues) {
  USB_HP_Controller controller;
  EXPECT_EQ(Peer::mutex(controller), nullptr);
  EXPECT_EQ(Peer::getReservedClientID(controller), 0);
  EXPECT_EQ(Peer::getECPCommandId(controller), 0);
  EXPECT_FALSE(Peer::getRetryCommand(controller));
  EXPECT_FALSE(controller.getReleaseInfo());
  EXPECT_FALSE(controller.getJobCancelled());
  EXPECT_FALSE(Peer::imageNotified(controller));
  EXPECT_EQ(Peer::deviceWrite(controller), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Peer::deviceRead(controller), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Peer::callback(controller), nullptr);
  EXPECT_TRUE(Peer::usingTevraUI(controller));
  EXPECT_EQ(Peer::dictionary(controller), nullptr);
  EXPECT_FALSE(Peer::errorShown(controller));
  EXPECT_EQ(Peer::deviceLabel(controller), L"");
  EXPECT_EQ(Peer::hardwareId(controller), "");
  EXPECT_EQ(Peer::deviceName(controller), "");
  EXPECT_NE(Peer::setupApi(controller), nullptr);
  EXPECT_TRUE(Peer::allFunctionsResolved(controller));
}

TEST_F(BaseController, ServicePathIsCutToItsBuffer) {
  platform.systemFolder = L"/" + std::wstring(254, L'f');
  const USB_HP_Controller controller;
  EXPECT_EQ(platform.calls({Kind::kModule}).at(2),
            "LoadLibraryW /" + std::string(254, 'f') + "/set");  // 259 characters
}

TEST_F(BaseController, UnknownSystemFolderIsNoError) {
  platform.failEveryCall("SHGetFolderPathW");
  const USB_HP_Controller controller;
  EXPECT_EQ(platform.calls({Kind::kModule}).at(2), "LoadLibraryW /setupapi.dll");
}

TEST_F(BaseController, MissingServiceIsNoErrorYet) {
  platform.failCall("LoadLibraryW", 1, 126);
  {
    USB_HP_Controller controller;
    EXPECT_EQ(Peer::setupApi(controller), nullptr);
    EXPECT_EQ(platform.count("GetProcAddress"), 0);
  }
  EXPECT_EQ(platform.count("FreeLibrary"), 0);
}

TEST_F(BaseController, DestructionWithoutDeviceClosesNoHandle) {
  { const USB_HP_Controller controller; }
  EXPECT_EQ(platform.calls({Kind::kOpen}), Lines{});
  EXPECT_EQ(platform.calls({Kind::kModule}).back(), "FreeLibrary");
  EXPECT_EQ(platform.liveObjects(), Lines{});
}

TEST_F(BaseController, DestructionGivesEverythingBackInOrder) {
  {
    USB_HP_Controller controller;
    const auto [write, read] = platform.openDevice();
    Peer::deviceWrite(controller) = write;
    Peer::deviceRead(controller) = read;
    controller.GetMutexPtr();
    platform.forgetCalls();
  }
  EXPECT_EQ(platform.calls(), (Lines{"Close write", "Close read", "FreeLibrary", "~XMutex"}));
  EXPECT_EQ(platform.liveObjects(), Lines{});
}

TEST_F(BaseController, DestructionClosesTheOneHandleThatIsOpen) {
  {
    USB_HP_Controller controller;
    Peer::deviceRead(controller) = platform.openDevice().second;
    platform.forgetCalls();
  }
  EXPECT_EQ(platform.calls(), (Lines{"Close read", "FreeLibrary"}));
}

TEST_F(BaseController, MutexIsMadeOnceOnDemand) {
  USB_HP_Controller controller;
  XMutex* const mutex = controller.GetMutexPtr();
  EXPECT_NE(mutex, nullptr);
  EXPECT_EQ(controller.GetMutexPtr(), mutex);
  EXPECT_EQ(Peer::mutex(controller), mutex);
  EXPECT_EQ(platform.calls({Kind::kMutex}), Lines{"XMutex MutexUSB"});
}

TEST_F(BaseController, ConvertsTextByTheSystemsCodePage) {
  USB_HP_Controller controller;
  platform.forgetCalls();
  EXPECT_EQ(controller.ConvertStringToWstring("ab\xE4"), L"ab\xF7E4");
  EXPECT_EQ(platform.calls(), (Lines{"MultiByteToWideChar page 0 flags 0 from -1 to 0",
                                     "MultiByteToWideChar page 0 flags 0 from -1 to 4"}));
}

TEST_F(BaseController, ConvertedTextEndsAtAZeroByte) {
  USB_HP_Controller controller;
  EXPECT_EQ(controller.ConvertStringToWstring(""), L"");
  EXPECT_EQ(controller.ConvertStringToWstring(std::string("ab\0cd", 5)), L"ab");
}

TEST_F(BaseController, FailedConversionGivesEmptyText) {
  USB_HP_Controller controller;
  platform.failEveryCall("MultiByteToWideChar");
  EXPECT_EQ(controller.ConvertStringToWstring("abc"), L"");
}

TEST_F(BaseController, FlagsAreKeptOneByOne) {
  USB_HP_Controller controller;
  controller.setJobCancelled(true);
  EXPECT_TRUE(controller.getJobCancelled());
  EXPECT_FALSE(controller.getReleaseInfo());
  EXPECT_FALSE(Peer::getRetryCommand(controller));
  controller.setReleaseInfo(true);
  controller.setJobCancelled(false);
  EXPECT_FALSE(controller.getJobCancelled());
  EXPECT_TRUE(controller.getReleaseInfo());
  controller.setRetryCommand(true);
  controller.setReleaseInfo(false);
  EXPECT_TRUE(Peer::getRetryCommand(controller));
  EXPECT_FALSE(controller.getReleaseInfo());
  Peer::reservedClientID(controller) = 0x12;
  Peer::ecpCommandId(controller) = 0x34;
  EXPECT_EQ(Peer::getReservedClientID(controller), 0x12);
  EXPECT_EQ(Peer::getECPCommandId(controller), 0x34);
}

TEST_F(BaseController, SharesTheDictionary) {
  USB_HP_Controller controller;
  auto dictionary = std::make_shared<CErrorCodeDictionary>();
  controller.InitExceptionStrings(dictionary);
  EXPECT_EQ(Peer::dictionary(controller), dictionary);
  EXPECT_EQ(dictionary.use_count(), 2);
}

TEST_F(BaseController, VendorAndProductIdAreCutOutOfTheHardwareId) {
  const struct {
    const char* text;
    const char* vid;
    const char* pid;
  } kCases[] = {
      {"USB\\VID_0A7E&PID_1234&MI_00", "x0A7E", "x1234"},
      {"usb\\vid_0a7e&pid_12ab&mi_00", "x0A7E", "x12AB"},
      {"", "", ""},
      {"PID", "", ""},
      {"PID_", "", ""},
      {"PID_1", "", ""},
      {"PID_12", "", ""},
      {"PID_123", "", "x123"},
      {"PID_1234", "", "x1234"},
      {"PID_12345", "", "x1234"},
      {"VID_12", "", ""},
      {"VID_123", "x123", ""},
      {"VID_1&PID_2", "x1&PI", ""},
      {"no id at all", "", ""},
      {"VID_0001 VID_0002", "x0001", ""},
  };
  USB_HP_Controller controller;
  for (const auto& row : kCases) {
    EXPECT_EQ(Peer::getVid(controller, row.text), row.vid) << row.text;
    EXPECT_EQ(Peer::getPid(controller, row.text), row.pid) << row.text;
  }
}

}  // namespace
