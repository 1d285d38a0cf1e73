// Sets of present devices. A set that its user never destroys stays in the table, where the end of
// the process finds it; a record names its device by DevInst, the place in the set counted from 1.
#include "platform/device_setup.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/device_file.h"
#include "platform/posix/ascii.h"
#include "platform/posix/device_tree.h"

namespace tvrscn {
namespace {

constexpr DWORD kTextType = 1;  // wide text with a terminator

using DeviceSet = std::vector<PresentDevice>;

struct SetTable {
  std::mutex mutex;
  std::unordered_map<HDEVINFO, std::shared_ptr<const DeviceSet>> sets;
};

SetTable& setTable() {
  static SetTable& table = *new SetTable;
  return table;
}

std::shared_ptr<const DeviceSet> findSet(HDEVINFO set) {
  SetTable& table = setTable();
  const std::lock_guard lock(table.mutex);
  const auto found = table.sets.find(set);
  return found == table.sets.end() ? nullptr : found->second;
}

BOOL fail(DWORD error) {
  SetLastError(error);
  return 0;
}

// The device that a record stands for; null, with a last error, when it stands for none.
std::shared_ptr<const PresentDevice> findDevice(HDEVINFO set, const SP_DEVINFO_DATA* info) {
  const auto devices = findSet(set);
  if (devices == nullptr) {
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
  }
  const bool usable = info != nullptr && info->cbSize == sizeof(SP_DEVINFO_DATA) &&
                      info->DevInst >= 1 && info->DevInst <= devices->size();
  if (!usable) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  return {devices, &(*devices)[info->DevInst - 1]};
}

std::wstring_view enumeratorOf(const PresentDevice& device) {
  const std::wstring_view id = device.instanceId;
  return id.substr(0, id.find(L'\\'));
}

}  // namespace
}  // namespace tvrscn

HDEVINFO SetupDiGetClassDevsW(const GUID* /*classGuid*/, const wchar_t* enumerator, HWND /*parent*/,
                              DWORD /*flags*/) {
  auto set = std::make_shared<tvrscn::DeviceSet>();
  for (tvrscn::PresentDevice& device : tvrscn::presentDevices()) {
    if (enumerator == nullptr ||
        tvrscn::equalsIgnoringCase(tvrscn::enumeratorOf(device), enumerator)) {
      set->push_back(std::move(device));
    }
  }
  const HDEVINFO handle = set.get();
  tvrscn::SetTable& table = tvrscn::setTable();
  const std::lock_guard lock(table.mutex);
  table.sets.emplace(handle, std::move(set));
  return handle;
}

BOOL SetupDiEnumDeviceInfo(HDEVINFO set, DWORD index, SP_DEVINFO_DATA* info) {
  const auto devices = tvrscn::findSet(set);
  if (devices == nullptr) return tvrscn::fail(ERROR_INVALID_HANDLE);
  if (info == nullptr || info->cbSize != sizeof(SP_DEVINFO_DATA)) {
    return tvrscn::fail(ERROR_INVALID_PARAMETER);
  }
  if (index >= devices->size()) return tvrscn::fail(ERROR_NO_MORE_ITEMS);
  info->ClassGuid = {};
  info->DevInst = index + 1;
  info->Reserved = 0;
  return 1;
}

BOOL SetupDiGetDeviceInstanceIdW(HDEVINFO set, SP_DEVINFO_DATA* info, wchar_t* instanceId,
                                 DWORD characters, DWORD* required) {
  const auto device = tvrscn::findDevice(set, info);
  if (device == nullptr) return 0;
  const std::size_t length = device->instanceId.size() + 1;
  if (required != nullptr) *required = static_cast<DWORD>(length);
  if (instanceId == nullptr || characters < length) return tvrscn::fail(ERROR_INSUFFICIENT_BUFFER);
  std::memcpy(instanceId, device->instanceId.c_str(), length * sizeof(wchar_t));
  return 1;
}

BOOL SetupDiGetDeviceRegistryPropertyW(HDEVINFO set, SP_DEVINFO_DATA* info, DWORD property,
                                       DWORD* type, BYTE* buffer, DWORD size, DWORD* required) {
  const auto device = tvrscn::findDevice(set, info);
  if (device == nullptr) return 0;
  if (property != SPDRP_DRIVER || !device->driver) return tvrscn::fail(ERROR_INVALID_DATA);
  const std::size_t length = (device->driver->size() + 1) * sizeof(wchar_t);
  if (type != nullptr) *type = tvrscn::kTextType;
  if (required != nullptr) *required = static_cast<DWORD>(length);
  if (buffer == nullptr || size < length) return tvrscn::fail(ERROR_INSUFFICIENT_BUFFER);
  std::memcpy(buffer, device->driver->c_str(), length);
  return 1;
}

BOOL SetupDiDestroyDeviceInfoList(HDEVINFO set) {
  tvrscn::SetTable& table = tvrscn::setTable();
  const std::lock_guard lock(table.mutex);
  return table.sets.erase(set) != 0 ? 1 : tvrscn::fail(ERROR_INVALID_HANDLE);
}

BOOL SetupDiEnumDeviceInterfaces(HDEVINFO set, SP_DEVINFO_DATA* /*info*/,
                                 const GUID* /*interfaceClass*/, DWORD /*index*/,
                                 SP_DEVICE_INTERFACE_DATA* /*data*/) {
  return tvrscn::fail(tvrscn::findSet(set) != nullptr ? ERROR_NO_MORE_ITEMS : ERROR_INVALID_HANDLE);
}

BOOL SetupDiGetDeviceInterfaceDetailW(HDEVINFO set, SP_DEVICE_INTERFACE_DATA* /*data*/,
                                      SP_DEVICE_INTERFACE_DETAIL_DATA_W* /*detail*/, DWORD /*size*/,
                                      DWORD* /*required*/, SP_DEVINFO_DATA* /*info*/) {
  return tvrscn::fail(tvrscn::findSet(set) != nullptr ? ERROR_INVALID_PARAMETER
                                                      : ERROR_INVALID_HANDLE);
}
