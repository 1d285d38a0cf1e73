#include "device_list.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "platform/device_file.h"
#include "platform/device_setup.h"
#include "platform/registry.h"
#include "wide_text.h"

namespace tvrscn::cli {
namespace {

constexpr std::size_t kTextLength = 260;
using WideText = std::array<wchar_t, kTextLength>;

// The text in a buffer that the system filled, whether or not it left a terminator there.
std::wstring textIn(const std::array<BYTE, kTextLength * sizeof(wchar_t)>& bytes) {
  WideText text = {};
  std::memcpy(text.data(), bytes.data(), bytes.size());
  text.back() = L'\0';
  return text.data();
}

// Follows the driver key to the name of the endpoint, as the library does.
void readEndpoint(HDEVINFO set, SP_DEVINFO_DATA& info, const std::wstring& instanceId,
                  Device& device) {
  HKEY key = nullptr;
  const std::wstring enumKey = L"SYSTEM\\CurrentControlSet\\Enum\\" + instanceId;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, enumKey.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    device.problem = "its key cannot be opened";
    return;
  }
  std::array<BYTE, kTextLength * sizeof(wchar_t)> bytes = {};
  if (SetupDiGetDeviceRegistryPropertyW(set, &info, SPDRP_DRIVER, nullptr, bytes.data(),
                                        static_cast<DWORD>(bytes.size()), nullptr) == 0) {
    device.problem = "it has no driver";
    return;
  }
  const std::wstring classKey = L"SYSTEM\\CurrentControlSet\\Control\\Class\\" + textIn(bytes);
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, classKey.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    device.problem = "its driver key cannot be opened";
    return;
  }
  bytes.fill(0);
  auto size = static_cast<DWORD>(bytes.size());
  if (RegQueryValueExW(key, L"CreateFileName", nullptr, nullptr, bytes.data(), &size) !=
      ERROR_SUCCESS) {
    device.problem = "its driver names no endpoint";
    return;
  }
  device.endpoint = utf8(textIn(bytes));
}

}  // namespace

std::string hardwareIdOf(const std::string& instanceId) {
  const std::size_t first = instanceId.find('\\');
  if (first == std::string::npos) return instanceId;
  const std::size_t second = instanceId.find('\\', first + 1);
  return instanceId.substr(first + 1, second == std::string::npos ? second : second - first - 1);
}

std::vector<Device> presentDevices() {
  std::vector<Device> devices;
  HDEVINFO set = SetupDiGetClassDevsW(nullptr, L"USB", nullptr, DIGCF_PRESENT | DIGCF_ALLCLASSES);
  if (set == INVALID_HANDLE_VALUE) return devices;
  SP_DEVINFO_DATA info = {};
  info.cbSize = sizeof(info);
  for (DWORD index = 0; SetupDiEnumDeviceInfo(set, index, &info) != 0; ++index) {
    WideText id = {};
    if (SetupDiGetDeviceInstanceIdW(set, &info, id.data(), kTextLength - 1, nullptr) == 0) continue;
    Device device;
    device.instanceId = utf8(id.data());
    device.hardwareId = hardwareIdOf(device.instanceId);
    readEndpoint(set, info, id.data(), device);
    devices.push_back(device);
  }
  SetupDiDestroyDeviceInfoList(set);
  return devices;
}

}  // namespace tvrscn::cli
