// The registry as far as a device search reads it: a view on the present devices, taken at the time
// of each call. Callers never close a key, so a key is interned: one object per name, however often
// it is opened. Of devices with the same driver key the first one owns the key's values.
//
// No function here touches the last error.
#include "platform/registry.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/device_file.h"
#include "platform/posix/ascii.h"
#include "platform/posix/device_tree.h"

namespace tvrscn {
namespace {

constexpr std::wstring_view kEnumRoot = L"SYSTEM\\CurrentControlSet\\Enum\\";
constexpr std::wstring_view kClassRoot = L"SYSTEM\\CurrentControlSet\\Control\\Class\\";
constexpr std::wstring_view kEndpointValue = L"CreateFileName";
constexpr DWORD kTextType = 1;  // wide text with a terminator

struct RegistryKey {
  bool ofClass;       // else of the enumeration
  std::wstring name;  // behind the root: a driver key or an instance id
};

struct KeyTable {
  std::mutex mutex;
  std::vector<std::unique_ptr<RegistryKey>> keys;
};

KeyTable& keyTable() {
  static KeyTable& table = *new KeyTable;
  return table;
}

HKEY internKey(bool ofClass, std::wstring_view name) {
  KeyTable& table = keyTable();
  const std::lock_guard lock(table.mutex);
  for (const auto& key : table.keys) {
    if (key->ofClass == ofClass && equalsIgnoringCase(key->name, name)) return key.get();
  }
  table.keys.push_back(std::make_unique<RegistryKey>(RegistryKey{ofClass, std::wstring(name)}));
  return table.keys.back().get();
}

// Keys live for ever, so the pointer stays good.
const RegistryKey* findKey(HKEY handle) {
  KeyTable& table = keyTable();
  const std::lock_guard lock(table.mutex);
  for (const auto& key : table.keys) {
    if (key.get() == handle) return key.get();
  }
  return nullptr;
}

bool enumKeyExists(std::wstring_view instanceId) {
  const std::vector<PresentDevice> devices = presentDevices();
  return std::any_of(devices.begin(), devices.end(), [instanceId](const PresentDevice& device) {
    return device.hasEnumKey && equalsIgnoringCase(device.instanceId, instanceId);
  });
}

std::optional<PresentDevice> deviceOfDriver(std::wstring_view driver) {
  for (const PresentDevice& device : presentDevices()) {
    if (device.driver && equalsIgnoringCase(*device.driver, driver)) return device;
  }
  return std::nullopt;
}

LSTATUS status(DWORD error) {
  return static_cast<LSTATUS>(error);
}

}  // namespace
}  // namespace tvrscn

LSTATUS RegOpenKeyExW(HKEY key, const wchar_t* subKey, DWORD /*options*/, REGSAM /*access*/,
                      HKEY* result) {
  using namespace tvrscn;
  if (key != HKEY_LOCAL_MACHINE) return status(ERROR_INVALID_HANDLE);
  if (subKey == nullptr || result == nullptr) return status(ERROR_INVALID_PARAMETER);
  const std::wstring_view path = subKey;
  if (startsWithIgnoringCase(path, kEnumRoot)) {
    const std::wstring_view instanceId = path.substr(kEnumRoot.size());
    if (!enumKeyExists(instanceId)) return status(ERROR_FILE_NOT_FOUND);
    *result = internKey(false, instanceId);
    return ERROR_SUCCESS;
  }
  if (startsWithIgnoringCase(path, kClassRoot)) {
    const std::wstring_view driver = path.substr(kClassRoot.size());
    if (!deviceOfDriver(driver)) return status(ERROR_FILE_NOT_FOUND);
    *result = internKey(true, driver);
    return ERROR_SUCCESS;
  }
  return status(ERROR_FILE_NOT_FOUND);
}

LSTATUS RegQueryValueExW(HKEY key, const wchar_t* valueName, DWORD* /*reserved*/, DWORD* type,
                         BYTE* data, DWORD* size) {
  using namespace tvrscn;
  const RegistryKey* const known = findKey(key);
  if (known == nullptr) return status(ERROR_INVALID_HANDLE);
  if (data != nullptr && size == nullptr) return status(ERROR_INVALID_PARAMETER);
  const bool hasValue =
      known->ofClass && valueName != nullptr && equalsIgnoringCase(valueName, kEndpointValue);
  if (!hasValue) return status(ERROR_FILE_NOT_FOUND);
  const std::optional<PresentDevice> device = deviceOfDriver(known->name);
  if (!device || !device->createFileName) return status(ERROR_FILE_NOT_FOUND);

  if (type != nullptr) *type = kTextType;
  if (size == nullptr) return ERROR_SUCCESS;
  const std::size_t length = (device->createFileName->size() + 1) * sizeof(wchar_t);
  const std::size_t room = *size;
  *size = static_cast<DWORD>(length);
  if (data == nullptr) return ERROR_SUCCESS;
  if (room < length) return status(ERROR_MORE_DATA);
  std::memcpy(data, device->createFileName->c_str(), length);
  return ERROR_SUCCESS;
}
