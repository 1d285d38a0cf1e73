// The device folder, the system's USB tree, and the device-setup and registry calls on top of them.
#include <array>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/device_file.h"
#include "platform/device_setup.h"
#include "platform/modules.h"
#include "platform/posix/device_tree.h"
#include "platform/posix/system_error.h"
#include "platform/registry.h"
#include "tests/platform/posix_test_support.h"

namespace tvrscn::test {
namespace {

std::vector<std::wstring> idsOf(const std::vector<PresentDevice>& devices) {
  std::vector<std::wstring> ids;
  for (const PresentDevice& device : devices)
    ids.push_back(device.instanceId);
  return ids;
}

using Ids = std::vector<std::wstring>;

TEST(DeviceFolder, FilesCountInByteOrderOfTheirNames) {
  const ScratchFolder folder;
  for (const char* name : {"b", "a", "B", "10", "9", "\xC3\xA4"}) {
    writeFile(folder / (std::string(name) + ".device"), std::string("InstanceId=") + name + "\n");
  }
  EXPECT_EQ((Ids{L"10", L"9", L"B", L"a", L"b", L"\u00E4"}), idsOf(devicesOfFolder(folder.path())));
}

TEST(DeviceFolder, OnlyDeviceFilesCount) {
  const ScratchFolder folder;
  writeFile(folder / "a.device", "InstanceId=a\n");
  writeFile(folder / "b.device.tmp", "InstanceId=b\n");
  writeFile(folder / "c.txt", "InstanceId=c\n");
  writeFile(folder / ".d.device", "InstanceId=d\n");
  std::filesystem::create_directory(folder / "e.device");
  EXPECT_EQ(Ids{L"a"}, idsOf(devicesOfFolder(folder.path())));
}

TEST(DeviceFolder, MissingFolderHoldsNoDevice) {
  const ScratchFolder folder;
  EXPECT_TRUE(devicesOfFolder(folder / "none").empty());
}

TEST(DeviceFolder, AllKeysAreRead) {
  const ScratchFolder folder;
  writeFile(folder / "a.device",
            "InstanceId=USB\\VID_0A7E&PID_1234&MI_00\\1\nDriver={x}\\0001\n"
            "CreateFileName=unix:/run/\xC3\xBC=1\nEnumKey=absent\n");
  const auto devices = devicesOfFolder(folder.path());
  ASSERT_EQ(1U, devices.size());
  EXPECT_EQ(L"USB\\VID_0A7E&PID_1234&MI_00\\1", devices[0].instanceId);
  EXPECT_EQ(L"{x}\\0001", devices[0].driver);
  EXPECT_EQ(L"unix:/run/\u00FC=1", devices[0].createFileName);
  EXPECT_FALSE(devices[0].hasEnumKey);
}

struct DescriptionCase {
  const char* name;
  const char* text;
  bool device;
  bool driver;
  bool endpoint;
  bool enumKey;
};

const DescriptionCase kDescriptions[] = {
    // name                   text                                           device driver endpoint
    // enum
    {"id alone", "InstanceId=i", true, false, false, true},
    {"no id", "Driver=d\nCreateFileName=c\n", false, false, false, true},
    {"empty id", "InstanceId=\n", false, false, false, true},
    {"no driver", "InstanceId=i\nCreateFileName=c\n", true, false, true, true},
    {"no endpoint", "InstanceId=i\nDriver=d\n", true, true, false, true},
    {"carriage returns", "InstanceId=i\r\nDriver=d\r\n", true, true, false, true},
    {"unknown key", "Colour=red\nInstanceId=i\n", true, false, false, true},
    {"malformed lines", "\nDriver\n=d\nInstanceId=i\n", true, false, false, true},
    {"keys are exact", "instanceid=i\n", false, false, false, true},
    {"other enum word", "InstanceId=i\nEnumKey=present\n", true, false, false, true},
    {"enum key absent", "InstanceId=i\nEnumKey=absent\r\n", true, false, false, false},
    {"empty file", "", false, false, false, true},
};

TEST(DeviceFolder, DescriptionsMeanWhatTheySay) {
  for (const DescriptionCase& row : kDescriptions) {
    SCOPED_TRACE(row.name);
    const ScratchFolder folder;
    writeFile(folder / "x.device", row.text);
    const auto devices = devicesOfFolder(folder.path());
    ASSERT_EQ(row.device ? 1U : 0U, devices.size());
    if (!row.device) continue;
    EXPECT_EQ(L"i", devices[0].instanceId);
    EXPECT_EQ(row.driver, devices[0].driver.has_value());
    EXPECT_EQ(row.endpoint, devices[0].createFileName.has_value());
    EXPECT_EQ(row.enumKey, devices[0].hasEnumKey);
  }
}

TEST(DeviceFolder, VariableNamesIt) {
  const ScopedVariable variable("TVRSCN_DEVICE_PATH", "/some/where");
  EXPECT_EQ("/some/where", deviceFolder());
}

TEST(DeviceFolder, WithoutTheVariableItIsInTheRuntimeFolder) {
  const ScopedVariable unset("TVRSCN_DEVICE_PATH", std::nullopt);
  ScopedVariable runtime("XDG_RUNTIME_DIR", "/run/mine");
  EXPECT_EQ("/run/mine/tvrscn/devices", deviceFolder());
  runtime.set("relative");
  const std::string own = "/run/user/" + std::to_string(::geteuid()) + "/tvrscn/devices";
  EXPECT_EQ(own, deviceFolder());
  runtime.set(std::nullopt);
  EXPECT_EQ(own, deviceFolder());
}

// A made-up /sys/bus/usb/devices.
class UsbTree {
 public:
  void device(const std::string& name, const std::string& vendor, const std::string& product,
              const std::string& bus, const std::string& address) const {
    file(name, "idVendor", vendor);
    file(name, "idProduct", product);
    file(name, "busnum", bus);
    file(name, "devnum", address);
  }
  void file(const std::string& name, const std::string& attribute, const std::string& text) const {
    writeFile(folder_.path() / name / attribute, text + "\n");
  }
  std::vector<PresentDevice> devices() const { return devicesOfSystem(folder_.path()); }

 private:
  ScratchFolder folder_;
};

TEST(UsbTree, InterfaceOfADeviceWithASerialNumber) {
  const UsbTree tree;
  tree.device("3-1.4", "0a7e", "1f48", "3", "17");
  tree.file("3-1.4", "serial", "AB 12,\\\x01z");
  tree.file("3-1.4:1.0", "bInterfaceNumber", "00");
  const auto devices = tree.devices();
  ASSERT_EQ(1U, devices.size());
  EXPECT_EQ(L"USB\\VID_0A7E&PID_1F48&MI_00\\AB_12___z", devices[0].instanceId);
  EXPECT_EQ(L"{36fc9e60-c465-11cf-8056-444553540000}\\3-1.4:0", devices[0].driver);
  EXPECT_EQ(L"usb:3:17:0", devices[0].createFileName);
  EXPECT_TRUE(devices[0].hasEnumKey);
}

TEST(UsbTree, DeviceWithoutASerialNumberIsNamedByItsPort) {
  const UsbTree tree;
  tree.device("1-2", "0a7e", "1234", "1", "5");
  tree.file("1-2:1.11", "bInterfaceNumber", "0b");
  const auto devices = tree.devices();
  ASSERT_EQ(1U, devices.size());
  EXPECT_EQ(L"USB\\VID_0A7E&PID_1234&MI_0B\\1-2", devices[0].instanceId);
  EXPECT_EQ(L"usb:1:5:11", devices[0].createFileName);
}

TEST(UsbTree, InterfacesComeInBusOrder) {
  const UsbTree tree;
  const char* const names[] = {"10-1", "2-10", "2-2", "2-2.1"};
  for (const char* name : names) {
    tree.device(name, "0a7e", "0001", "1", "1");
    tree.file(std::string(name) + ":1.0", "bInterfaceNumber", "00");
  }
  tree.file("2-2:1.1", "bInterfaceNumber", "01");
  EXPECT_EQ((Ids{L"USB\\VID_0A7E&PID_0001&MI_00\\2-2", L"USB\\VID_0A7E&PID_0001&MI_01\\2-2",
                 L"USB\\VID_0A7E&PID_0001&MI_00\\2-2.1", L"USB\\VID_0A7E&PID_0001&MI_00\\2-10",
                 L"USB\\VID_0A7E&PID_0001&MI_00\\10-1"}),
            idsOf(tree.devices()));
}

TEST(UsbTree, WhatIsNoWholeInterfaceIsPassedOver) {
  const UsbTree tree;
  tree.device("usb1", "1d6b", "0002", "1", "1");
  tree.file("1-0:1.0", "bInterfaceNumber", "00");  // the bus itself has no device "1-0"
  tree.device("1-1", "0a7e", "0001", "1", "2");
  tree.file("1-1:1.0", "bInterfaceClass", "07");  // no number yet: it is just going away
  tree.file("1-1:x", "bInterfaceNumber", "00");
  tree.file("1-1:1.0.0", "bInterfaceNumber", "00");
  tree.file("1-1.:1.0", "bInterfaceNumber", "00");
  tree.file("99999999999-1:1.0", "bInterfaceNumber", "00");
  EXPECT_TRUE(tree.devices().empty());
}

TEST(UsbTree, MissingTreeHoldsNoDevice) {
  EXPECT_TRUE(devicesOfSystem("/nonexistent").empty());
}

class DeviceSetup : public testing::Test {
 protected:
  DeviceSetup() {
    writeFile(folder_ / "1.device",
              "InstanceId=USB\\VID_0A7E&PID_1234&MI_00\\1\nDriver={x}\\0001\n"
              "CreateFileName=unix:/one\n");
    writeFile(folder_ / "2.device", "InstanceId=Usb\\vid_0a7e&pid_1234&mi_00\\2\n");
    writeFile(folder_ / "3.device", "InstanceId=TESTBUS\\DEV\\3\nDriver={X}\\0001\n");
    writeFile(folder_ / "4.device",
              "InstanceId=TESTBUS\\DEV\\4\nDriver={x}\\0004\nCreateFileName=\nEnumKey=absent\n");
  }

  static SP_DEVINFO_DATA record() {
    SP_DEVINFO_DATA info = {};
    info.cbSize = sizeof(info);
    return info;
  }
  static Ids idsIn(HDEVINFO set) {
    Ids ids;
    SP_DEVINFO_DATA info = record();
    for (DWORD i = 0; SetupDiEnumDeviceInfo(set, i, &info) != 0; ++i) {
      std::array<wchar_t, 260> id = {};
      EXPECT_NE(0, SetupDiGetDeviceInstanceIdW(set, &info, id.data(), 260, nullptr));
      ids.emplace_back(id.data());
    }
    EXPECT_EQ(ERROR_NO_MORE_ITEMS, GetLastError());
    return ids;
  }
  static HDEVINFO setOf(const wchar_t* enumerator) {
    return SetupDiGetClassDevsW(nullptr, enumerator, nullptr, DIGCF_PRESENT | DIGCF_ALLCLASSES);
  }

  ScratchFolder folder_;
  ScopedVariable variable_{"TVRSCN_DEVICE_PATH", folder_.path().string()};
};

TEST_F(DeviceSetup, EnumeratorIsTheIdsFirstComponentInAnyCase) {
  const HDEVINFO set = setOf(L"testBus");
  EXPECT_EQ((Ids{L"TESTBUS\\DEV\\3", L"TESTBUS\\DEV\\4"}), idsIn(set));
  EXPECT_NE(0, SetupDiDestroyDeviceInfoList(set));
}

TEST_F(DeviceSetup, FolderDevicesComeAheadOfTheSystems) {
  const HDEVINFO set = setOf(L"USB");
  Ids ids = idsIn(set);
  ASSERT_GE(ids.size(), 2U);
  ids.resize(2);
  EXPECT_EQ((Ids{L"USB\\VID_0A7E&PID_1234&MI_00\\1", L"Usb\\vid_0a7e&pid_1234&mi_00\\2"}), ids);
  SetupDiDestroyDeviceInfoList(set);
}

TEST_F(DeviceSetup, PartOfAnEnumeratorsNameMatchesNothing) {
  const HDEVINFO set = setOf(L"TEST");
  EXPECT_TRUE(idsIn(set).empty());
  SetupDiDestroyDeviceInfoList(set);
}

TEST_F(DeviceSetup, NoEnumeratorMeansAllDevices) {
  const HDEVINFO set = setOf(nullptr);
  EXPECT_GE(idsIn(set).size(), 4U);
  SetupDiDestroyDeviceInfoList(set);
}

TEST_F(DeviceSetup, SetIsASnapshotAndTheNextOneIsFresh) {
  const HDEVINFO before = setOf(L"TESTBUS");
  writeFile(folder_ / "5.device", "InstanceId=TESTBUS\\DEV\\5\n");
  const HDEVINFO after = setOf(L"TESTBUS");
  EXPECT_EQ(2U, idsIn(before).size());
  EXPECT_EQ(3U, idsIn(after).size());
  SetupDiDestroyDeviceInfoList(before);
  SetupDiDestroyDeviceInfoList(after);
}

TEST_F(DeviceSetup, RecordOfAnotherSizeIsRefused) {
  const HDEVINFO set = setOf(L"TESTBUS");
  SP_DEVINFO_DATA info = record();
  info.cbSize = 28;
  EXPECT_EQ(0, SetupDiEnumDeviceInfo(set, 0, &info));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
  EXPECT_EQ(0, SetupDiEnumDeviceInfo(set, 0, nullptr));
  SetupDiDestroyDeviceInfoList(set);
}

TEST_F(DeviceSetup, RecordThatNamesNoDeviceIsRefused) {
  const HDEVINFO set = setOf(L"TESTBUS");
  std::array<wchar_t, 260> id = {};
  for (const DWORD place : {0U, 3U, 0xFFFFFFFFU}) {
    SP_DEVINFO_DATA info = record();
    info.DevInst = place;
    EXPECT_EQ(0, SetupDiGetDeviceInstanceIdW(set, &info, id.data(), 260, nullptr));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
  }
  SetupDiDestroyDeviceInfoList(set);
}

TEST_F(DeviceSetup, DestroyedOrUnknownSetIsInvalid) {
  const HDEVINFO destroyed = setOf(L"TESTBUS");
  EXPECT_NE(0, SetupDiDestroyDeviceInfoList(destroyed));
  int other = 0;
  for (const HDEVINFO set :
       {destroyed, HDEVINFO{&other}, HDEVINFO{nullptr}, INVALID_HANDLE_VALUE}) {
    SP_DEVINFO_DATA info = record();
    info.DevInst = 1;
    std::array<wchar_t, 8> id = {};
    std::array<BYTE, 8> data = {};
    SetLastError(0);
    EXPECT_EQ(0, SetupDiEnumDeviceInfo(set, 0, &info));
    EXPECT_EQ(0, SetupDiGetDeviceInstanceIdW(set, &info, id.data(), 8, nullptr));
    EXPECT_EQ(0, SetupDiGetDeviceRegistryPropertyW(set, &info, SPDRP_DRIVER, nullptr, data.data(),
                                                   8, nullptr));
    EXPECT_EQ(0, SetupDiEnumDeviceInterfaces(set, &info, nullptr, 0, nullptr));
    EXPECT_EQ(0, SetupDiDestroyDeviceInfoList(set));
    EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
  }
}

TEST_F(DeviceSetup, InstanceIdNeedsRoomForItsTerminator) {
  const HDEVINFO set = setOf(L"TESTBUS");
  SP_DEVINFO_DATA info = record();
  ASSERT_NE(0, SetupDiEnumDeviceInfo(set, 0, &info));
  std::array<wchar_t, 14> id = {L'u'};
  DWORD required = 0;
  EXPECT_EQ(0, SetupDiGetDeviceInstanceIdW(set, &info, id.data(), 13, &required));
  EXPECT_EQ(ERROR_INSUFFICIENT_BUFFER, GetLastError());
  EXPECT_EQ(14U, required);
  EXPECT_EQ(L'u', id[0]);
  EXPECT_NE(0, SetupDiGetDeviceInstanceIdW(set, &info, id.data(), 14, nullptr));
  EXPECT_STREQ(L"TESTBUS\\DEV\\3", id.data());
  SetupDiDestroyDeviceInfoList(set);
}

TEST_F(DeviceSetup, DriverKeyIsWideTextCountedInBytes) {
  const HDEVINFO set = setOf(L"TESTBUS");
  SP_DEVINFO_DATA info = record();
  ASSERT_NE(0, SetupDiEnumDeviceInfo(set, 0, &info));
  std::array<wchar_t, 9> text = {L'u'};
  auto* const buffer = reinterpret_cast<BYTE*>(text.data());
  DWORD type = 0;
  DWORD required = 0;
  EXPECT_EQ(
      0, SetupDiGetDeviceRegistryPropertyW(set, &info, SPDRP_DRIVER, &type, buffer, 35, &required));
  EXPECT_EQ(ERROR_INSUFFICIENT_BUFFER, GetLastError());
  EXPECT_EQ(36U, required);  // eight characters and the terminator, four bytes each
  EXPECT_EQ(L'u', text[0]);
  EXPECT_NE(
      0, SetupDiGetDeviceRegistryPropertyW(set, &info, SPDRP_DRIVER, &type, buffer, 36, nullptr));
  EXPECT_STREQ(L"{X}\\0001", text.data());
  EXPECT_EQ(1U, type);
  SetupDiDestroyDeviceInfoList(set);
}

TEST_F(DeviceSetup, PropertyThatCannotBeReadSetsALastError) {
  const HDEVINFO set = setOf(L"USB");
  SP_DEVINFO_DATA info = record();
  ASSERT_NE(0, SetupDiEnumDeviceInfo(set, 1, &info));  // the device without a driver
  std::array<BYTE, 520> data = {};
  SetLastError(0);
  EXPECT_EQ(0, SetupDiGetDeviceRegistryPropertyW(set, &info, SPDRP_DRIVER, nullptr, data.data(),
                                                 520, nullptr));
  EXPECT_EQ(ERROR_INVALID_DATA, GetLastError());
  SetLastError(0);
  EXPECT_EQ(0,
            SetupDiGetDeviceRegistryPropertyW(set, &info, 0, nullptr, data.data(), 520, nullptr));
  EXPECT_NE(0U, GetLastError());
  SetupDiDestroyDeviceInfoList(set);
}

TEST_F(DeviceSetup, SetThatIsNeverDestroyedIsNoLeak) {
  EXPECT_NE(INVALID_HANDLE_VALUE, setOf(L"USB"));
}

TEST_F(DeviceSetup, InterfaceCallsFindNothing) {
  const HDEVINFO set = setOf(L"USB");
  EXPECT_EQ(0, SetupDiEnumDeviceInterfaces(set, nullptr, nullptr, 0, nullptr));
  EXPECT_EQ(ERROR_NO_MORE_ITEMS, GetLastError());
  EXPECT_EQ(0, SetupDiGetDeviceInterfaceDetailW(set, nullptr, nullptr, 0, nullptr, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
  SetupDiDestroyDeviceInfoList(set);
}

// The registry, on the same devices. Each call must leave the last error as it was.
class Registry : public DeviceSetup {
 protected:
  void SetUp() override { SetLastError(4711); }
  void TearDown() override { EXPECT_EQ(4711U, GetLastError()); }

  static LSTATUS openKey(const std::wstring& name, HKEY& key) {
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), 0, KEY_READ, &key);
  }
  static HKEY classKey(const std::wstring& driver) {
    HKEY key = nullptr;
    EXPECT_EQ(0, openKey(L"SYSTEM\\CurrentControlSet\\Control\\Class\\" + driver, key));
    return key;
  }
  static LSTATUS openEnumKey(const std::wstring& instanceId) {
    HKEY key = nullptr;
    return openKey(L"SYSTEM\\CurrentControlSet\\Enum\\" + instanceId, key);
  }
  static LSTATUS query(HKEY key, std::array<wchar_t, 10>& text, DWORD& size) {
    return RegQueryValueExW(key, L"CreateFileName", nullptr, nullptr,
                            reinterpret_cast<BYTE*>(text.data()), &size);
  }
};

TEST_F(Registry, EnumKeyIsFoundByTheUpperCasedId) {
  EXPECT_EQ(0, openEnumKey(L"USB\\VID_0A7E&PID_1234&MI_00\\1"));
  EXPECT_EQ(0, openEnumKey(L"USB\\VID_0A7E&PID_1234&MI_00\\2"));
}

TEST_F(Registry, EnumKeyThatIsAbsentOrUnknownIsNotFound) {
  EXPECT_EQ(2, openEnumKey(L"TESTBUS\\DEV\\4"));
  EXPECT_EQ(2, openEnumKey(L"TESTBUS\\DEV\\44"));
  EXPECT_EQ(2, openEnumKey(L""));
}

TEST_F(Registry, KeysElsewhereAreNotFound) {
  HKEY key = nullptr;
  EXPECT_EQ(2, openKey(L"SOFTWARE\\Anything", key));
  EXPECT_EQ(2, openKey(L"SYSTEM\\CurrentControlSet\\Control\\Class\\{none}\\0000", key));
  EXPECT_EQ(nullptr, key);
}

TEST_F(Registry, WrongRootIsInvalid) {
  HKEY key = nullptr;
  EXPECT_EQ(6, RegOpenKeyExW(nullptr, L"SYSTEM", 0, KEY_READ, &key));
  EXPECT_EQ(87, RegOpenKeyExW(HKEY_LOCAL_MACHINE, nullptr, 0, KEY_READ, &key));
}

TEST_F(Registry, ClassKeyHoldsTheEndpoint) {
  std::array<wchar_t, 10> text = {};
  DWORD size = sizeof(text);
  DWORD type = 0;
  EXPECT_EQ(0, RegQueryValueExW(classKey(L"{x}\\0001"), L"CreateFileName", nullptr, &type,
                                reinterpret_cast<BYTE*>(text.data()), &size));
  EXPECT_STREQ(L"unix:/one", text.data());
  EXPECT_EQ(40U, size);
  EXPECT_EQ(1U, type);
}

TEST_F(Registry, FirstDeviceWithADriverKeyOwnsItsValues) {
  std::array<wchar_t, 10> text = {};
  DWORD size = sizeof(text);
  // The third device spells the same key and has no endpoint of its own.
  EXPECT_EQ(0, query(classKey(L"{X}\\0001"), text, size));
  EXPECT_STREQ(L"unix:/one", text.data());
}

TEST_F(Registry, ValueNeedsRoomForItsTerminator) {
  std::array<wchar_t, 10> text = {L'u'};
  const HKEY key = classKey(L"{x}\\0001");
  DWORD size = 39;
  EXPECT_EQ(static_cast<LSTATUS>(ERROR_MORE_DATA), query(key, text, size));
  EXPECT_EQ(40U, size);
  EXPECT_EQ(L'u', text[0]);
  size = 0;
  EXPECT_EQ(0, RegQueryValueExW(key, L"CreateFileName", nullptr, nullptr, nullptr, &size));
  EXPECT_EQ(40U, size);
  EXPECT_EQ(87, RegQueryValueExW(key, L"CreateFileName", nullptr, nullptr,
                                 reinterpret_cast<BYTE*>(text.data()), nullptr));
}

TEST_F(Registry, EmptyEndpointIsAValue) {
  std::array<wchar_t, 10> text = {L'u'};
  DWORD size = sizeof(text);
  EXPECT_EQ(0, query(classKey(L"{x}\\0004"), text, size));
  EXPECT_STREQ(L"", text.data());
}

TEST_F(Registry, MissingEndpointAndOtherValuesAreNotFound) {
  std::array<wchar_t, 10> text = {};
  DWORD size = sizeof(text);
  const HKEY key = classKey(L"{x}\\0001");
  writeFile(folder_ / "1.device", "InstanceId=USB\\X\\1\nDriver={x}\\0001\n");
  EXPECT_EQ(2, query(key, text, size));
  EXPECT_EQ(2, RegQueryValueExW(key, L"Other", nullptr, nullptr, nullptr, &size));
  EXPECT_EQ(2, RegQueryValueExW(key, nullptr, nullptr, nullptr, nullptr, &size));
}

TEST_F(Registry, ValueIsLookedUpAmongTheDevicesPresentNow) {
  std::array<wchar_t, 10> text = {};
  DWORD size = sizeof(text);
  const HKEY key = classKey(L"{x}\\0001");
  writeFile(folder_ / "1.device", "InstanceId=USB\\X\\1\nDriver={x}\\0001\nCreateFileName=/new\n");
  EXPECT_EQ(0, query(key, text, size));
  EXPECT_STREQ(L"/new", text.data());
  std::filesystem::remove(folder_ / "1.device");
  std::filesystem::remove(folder_ / "3.device");
  size = sizeof(text);
  EXPECT_EQ(2, query(key, text, size));
}

TEST_F(Registry, KeyOpenedAgainIsTheSameKey) {
  EXPECT_EQ(classKey(L"{x}\\0001"), classKey(L"{X}\\0001"));
  EXPECT_NE(classKey(L"{x}\\0001"), classKey(L"{x}\\0004"));
}

TEST_F(Registry, UnknownKeyIsInvalid) {
  DWORD size = 0;
  int other = 0;
  for (const HKEY key : {HKEY{nullptr}, HKEY_LOCAL_MACHINE, HKEY{&other}}) {
    EXPECT_EQ(6, RegQueryValueExW(key, L"CreateFileName", nullptr, nullptr, nullptr, &size));
  }
}

TEST(Modules, SystemFolderIsNamed) {
  std::array<wchar_t, 260> path = {};
  EXPECT_EQ(S_OK,
            SHGetFolderPathW(nullptr, CSIDL_SYSTEM | CSIDL_FLAG_CREATE, nullptr, 0, path.data()));
  EXPECT_STREQ(L"/usr/lib", path.data());
  EXPECT_NE(S_OK, SHGetFolderPathW(nullptr, 0x1A, nullptr, 0, path.data()));
  EXPECT_NE(S_OK, SHGetFolderPathW(nullptr, CSIDL_SYSTEM, nullptr, 0, nullptr));
}

TEST(Modules, DeviceSetupLoadsFromAnyFolder) {
  for (const wchar_t* path : {L"/usr/lib\\setupapi.dll", L"/usr/lib/setupapi.dll", L"setupapi.dll",
                              L"C:\\Windows\\SETUPAPI.DLL"}) {
    const HMODULE module = LoadLibraryW(path);
    EXPECT_NE(nullptr, module);
    EXPECT_NE(0, FreeLibrary(module));
  }
}

TEST(Modules, OtherModulesAreNotFound) {
  for (const wchar_t* path : {L"/usr/lib/other.dll", L"", L"mysetupapi.dll", L"setupapi.dll/"}) {
    SetLastError(0);
    EXPECT_EQ(nullptr, LoadLibraryW(path));
    EXPECT_EQ(kErrorModuleNotFound, GetLastError());
  }
  EXPECT_EQ(nullptr, LoadLibraryW(nullptr));
  EXPECT_EQ(0, FreeLibrary(nullptr));
}

TEST(Modules, TheSevenFunctionsResolve) {
  const HMODULE module = LoadLibraryW(L"setupapi.dll");
  for (const char* name :
       {"SetupDiGetClassDevsW", "SetupDiEnumDeviceInfo", "SetupDiGetDeviceInstanceIdW",
        "SetupDiDestroyDeviceInfoList", "SetupDiEnumDeviceInterfaces",
        "SetupDiGetDeviceInterfaceDetailW", "SetupDiGetDeviceRegistryPropertyW"}) {
    EXPECT_NE(nullptr, GetProcAddress(module, name)) << name;
  }
  EXPECT_EQ(reinterpret_cast<FARPROC>(&SetupDiDestroyDeviceInfoList),
            GetProcAddress(module, "SetupDiDestroyDeviceInfoList"));
}

TEST(Modules, OtherFunctionsAndModulesResolveNothing) {
  const HMODULE module = LoadLibraryW(L"setupapi.dll");
  SetLastError(0);
  EXPECT_EQ(nullptr, GetProcAddress(module, "SetupDiOther"));
  EXPECT_EQ(kErrorProcedureNotFound, GetLastError());
  EXPECT_EQ(nullptr, GetProcAddress(module, nullptr));
  EXPECT_EQ(nullptr, GetProcAddress(nullptr, "SetupDiEnumDeviceInfo"));
  EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
}

TEST(Modules, CarryNoStrings) {
  EXPECT_TRUE(moduleString(nullptr, 101).empty());
  EXPECT_TRUE(moduleString(LoadLibraryW(L"setupapi.dll"), 101).empty());
}

}  // namespace
}  // namespace tvrscn::test
