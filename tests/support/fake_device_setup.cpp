// The fake device tree: device setup and the registry over FakePlatform::devices.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "platform/device_file.h"
#include "platform/device_setup.h"
#include "platform/registry.h"
#include "tests/support/fake_platform.h"

using tvrscn::test::FakeObject;
using tvrscn::test::FakePlatform;
using tvrscn::test::hexNumber;
using tvrscn::test::Kind;
using tvrscn::test::PresentDevice;
using tvrscn::test::utf8;

namespace {

constexpr std::wstring_view kEnumRoot = L"SYSTEM\\CurrentControlSet\\Enum\\";
constexpr std::wstring_view kClassRoot = L"SYSTEM\\CurrentControlSet\\Control\\Class\\";

std::wstring upperCase(std::wstring text) {
  for (wchar_t& character : text) {
    if (character >= L'a' && character <= L'z') {
      character = static_cast<wchar_t>(character - L'a' + L'A');
    }
  }
  return text;
}

PresentDevice* deviceOf(FakePlatform& platform, HDEVINFO set, const SP_DEVINFO_DATA* info) {
  if (platform.find(set, "device set") == nullptr) return nullptr;
  if (info == nullptr || info->cbSize != 32 || info->DevInst >= platform.devices.size()) {
    platform.problem("a device record that no enumeration filled");
    return nullptr;
  }
  return &platform.devices[info->DevInst];
}

// Wide text with its terminator, as bytes; false when it does not fit.
bool giveText(const std::wstring& text, BYTE* buffer, DWORD& size) {
  const std::size_t needed = (text.size() + 1) * sizeof(wchar_t);
  const bool fits = buffer != nullptr && needed <= size;
  if (fits) std::memcpy(buffer, text.c_str(), needed);
  size = static_cast<DWORD>(needed);
  return fits;
}

}  // namespace

HDEVINFO SetupDiGetClassDevsW(const GUID* classGuid, const wchar_t* enumerator, HWND parent,
                              DWORD flags) {
  FakePlatform& platform = FakePlatform::current();
  std::string text = "SetupDiGetClassDevsW " +
                     (enumerator == nullptr ? std::string("null") : utf8(enumerator)) + " " +
                     hexNumber(flags);
  if (classGuid != nullptr) text += " class";
  if (parent != nullptr) text += " parent";
  platform.record(Kind::kSetup, text);
  const auto outcome = platform.call("SetupDiGetClassDevsW");
  if (outcome.fail) {
    platform.lastError = outcome.error;
    return INVALID_HANDLE_VALUE;
  }
  return &platform.makeNumbered("device set");
}

BOOL SetupDiEnumDeviceInfo(HDEVINFO set, DWORD index, SP_DEVINFO_DATA* info) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kSetup, "SetupDiEnumDeviceInfo " + std::to_string(index));
  const auto outcome = platform.call("SetupDiEnumDeviceInfo");
  if (platform.find(set, "device set") == nullptr || info == nullptr || info->cbSize != 32) {
    platform.problem("SetupDiEnumDeviceInfo without a set or a record of size 32");
    return 0;
  }
  if (outcome.fail || index >= platform.devices.size()) {
    platform.lastError = outcome.fail ? outcome.error : ERROR_NO_MORE_ITEMS;
    return 0;
  }
  info->DevInst = index;
  return 1;
}

BOOL SetupDiGetDeviceInstanceIdW(HDEVINFO set, SP_DEVINFO_DATA* info, wchar_t* instanceId,
                                 DWORD characters, DWORD* required) {
  FakePlatform& platform = FakePlatform::current();
  std::string text = "SetupDiGetDeviceInstanceIdW " + std::to_string(characters);
  if (required != nullptr) text += " required";
  platform.record(Kind::kSetup, text);
  const auto outcome = platform.call("SetupDiGetDeviceInstanceIdW");
  const PresentDevice* device = deviceOf(platform, set, info);
  if (outcome.fail || device == nullptr || device->instanceId.size() >= characters) {
    platform.lastError = outcome.fail ? outcome.error : ERROR_INSUFFICIENT_BUFFER;
    return 0;
  }
  std::copy_n(device->instanceId.c_str(), device->instanceId.size() + 1, instanceId);
  return 1;
}

BOOL SetupDiGetDeviceRegistryPropertyW(HDEVINFO set, SP_DEVINFO_DATA* info, DWORD property,
                                       DWORD* type, BYTE* buffer, DWORD size, DWORD* required) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kSetup, "SetupDiGetDeviceRegistryPropertyW " + std::to_string(property) +
                                    " " + std::to_string(size));
  const auto outcome = platform.call("SetupDiGetDeviceRegistryPropertyW");
  const PresentDevice* device = deviceOf(platform, set, info);
  if (outcome.fail || device == nullptr || !device->driver) {
    platform.lastError = outcome.fail ? outcome.error : ERROR_INVALID_DATA;
    return 0;
  }
  DWORD length = size;
  const bool fits = giveText(*device->driver, buffer, length);
  if (required != nullptr) *required = length;
  if (type != nullptr) *type = 1;
  if (!fits) platform.lastError = ERROR_INSUFFICIENT_BUFFER;
  return fits ? 1 : 0;
}

BOOL SetupDiDestroyDeviceInfoList(HDEVINFO set) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kSetup, "SetupDiDestroyDeviceInfoList");
  const auto outcome = platform.call("SetupDiDestroyDeviceInfoList");
  FakeObject* object = platform.find(set, "device set");
  if (outcome.fail || object == nullptr) {
    platform.lastError = outcome.error;
    return 0;
  }
  object->live = false;
  return 1;
}

BOOL SetupDiEnumDeviceInterfaces(HDEVINFO, SP_DEVINFO_DATA*, const GUID*, DWORD,
                                 SP_DEVICE_INTERFACE_DATA*) {
  FakePlatform::current().problem("SetupDiEnumDeviceInterfaces is never called");
  return 0;
}

BOOL SetupDiGetDeviceInterfaceDetailW(HDEVINFO, SP_DEVICE_INTERFACE_DATA*,
                                      SP_DEVICE_INTERFACE_DETAIL_DATA_W*, DWORD, DWORD*,
                                      SP_DEVINFO_DATA*) {
  FakePlatform::current().problem("SetupDiGetDeviceInterfaceDetailW is never called");
  return 0;
}

LSTATUS RegOpenKeyExW(HKEY key, const wchar_t* subKey, DWORD options, REGSAM access, HKEY* result) {
  FakePlatform& platform = FakePlatform::current();
  std::string text = "RegOpenKeyExW " + utf8(subKey) + " " + hexNumber(access);
  if (key != HKEY_LOCAL_MACHINE) text += " other root";
  if (options != 0) text += " options";
  platform.record(Kind::kSetup, text);
  const auto outcome = platform.call("RegOpenKeyExW");
  if (outcome.fail) return static_cast<LSTATUS>(outcome.error);
  const std::wstring name = upperCase(subKey);
  for (const PresentDevice& device : platform.devices) {
    const bool enumKey =
        device.enumKeyOpens && name == upperCase(std::wstring(kEnumRoot) + device.instanceId);
    const bool classKey = device.classKeyOpens && device.driver &&
                          name == upperCase(std::wstring(kClassRoot) + *device.driver);
    if (!enumKey && !classKey) continue;
    FakeObject& object = platform.makeNumbered(classKey ? "class key" : "enum key");
    object.device = &device;
    *result = &object;
    return ERROR_SUCCESS;
  }
  return static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
}

LSTATUS RegQueryValueExW(HKEY key, const wchar_t* valueName, DWORD*, DWORD* type, BYTE* data,
                         DWORD* size) {
  FakePlatform& platform = FakePlatform::current();
  platform.record(Kind::kSetup, "RegQueryValueExW " + utf8(valueName) + " " +
                                    (size == nullptr ? "null" : std::to_string(*size)));
  const auto outcome = platform.call("RegQueryValueExW");
  if (outcome.fail) return static_cast<LSTATUS>(outcome.error);
  const FakeObject* object = platform.find(key, "class key");
  const bool known = object != nullptr && object->device->createFileName && size != nullptr &&
                     std::wstring_view(valueName) == L"CreateFileName";
  if (!known) return static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
  if (type != nullptr) *type = 1;
  return giveText(*object->device->createFileName, data, *size)
             ? ERROR_SUCCESS
             : static_cast<LSTATUS>(ERROR_MORE_DATA);
}
