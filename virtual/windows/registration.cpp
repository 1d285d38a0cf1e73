#include "virtual/windows/registration.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "virtual/windows/pipe_channel.h"
#include "virtual/windows/system_text.h"

namespace tvrscn::virtual_device {
namespace {

constexpr wchar_t kEnumKey[] = LR"(SYSTEM\CurrentControlSet\Enum\)";
constexpr wchar_t kClassKey[] = LR"(SYSTEM\CurrentControlSet\Control\Class\)";
// Imaging devices. The driver's key below it is named after the device, which makes it its own.
constexpr wchar_t kImagingClass[] = L"{6BDD1FC6-810F-11D0-BEC7-08002BE2092F}";
constexpr wchar_t kEndpointValue[] = L"CreateFileName";
// Tells a software device's key from that of a real one, which is never touched.
constexpr wchar_t kMarkValue[] = L"TvrscnVirtualDevice";

constexpr int kDeviceDepth = 3;  // enumerator, device, instance
constexpr int kDriverDepth = 2;  // class, driver
constexpr std::size_t kLongestId = 180;

[[noreturn]] void fail(const std::wstring& path, LSTATUS error) {
  throw std::runtime_error(
      "cannot register the virtual device: the registry key "
      "HKEY_LOCAL_MACHINE\\" +
      narrow(path) + " cannot be written: " + reason(static_cast<DWORD>(error)) +
      "; run this program as administrator, on an account that may write "
      "there");
}

class OpenKey {
 public:
  OpenKey() = default;
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;
  ~OpenKey() {
    if (key_ != nullptr) RegCloseKey(key_);
  }
  HKEY get() const { return key_; }
  HKEY* out() { return &key_; }

 private:
  HKEY key_ = nullptr;
};

std::wstring parentOf(const std::wstring& path) {
  return path.substr(0, path.rfind(L'\\'));
}

bool isEmptyKey(const std::wstring& path) {
  OpenKey key;
  DWORD keys = 0;
  DWORD values = 0;
  return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.out()) == ERROR_SUCCESS &&
         RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                          nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
         keys == 0 && values == 0;
}

bool hasKey(const std::wstring& path) {
  OpenKey key;
  return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.out()) == ERROR_SUCCESS;
}

std::wstring valueOf(const std::wstring& path, const wchar_t* name) {
  wchar_t text[MAX_PATH + 1] = {};
  DWORD size = MAX_PATH * sizeof(wchar_t);
  RegGetValueW(HKEY_LOCAL_MACHINE, path.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size);
  return text;
}

std::wstring devicePath(const std::string& instanceId) {
  return kEnumKey + wide(instanceId);
}

std::wstring driverName(const std::string& instanceId) {
  std::wstring name = wide(instanceId);
  std::replace(name.begin(), name.end(), L'\\', L'#');
  return std::wstring(kImagingClass) + L'\\' + name;
}

bool hasThreeParts(const std::string& id) {
  const std::size_t first = id.find('\\');
  const std::size_t second = id.find('\\', first + 1);
  return first != std::string::npos && second != std::string::npos && first > 0 &&
         second > first + 1 && second + 1 < id.size() &&
         id.find('\\', second + 1) == std::string::npos;
}

const std::string& checked(const std::string& instanceId) {
  if (instanceId.size() > kLongestId || !hasThreeParts(instanceId) ||
      instanceId.find_first_of(std::string("\r\n\0", 3)) != std::string::npos) {
    throw std::runtime_error("'" + instanceId +
                             "' cannot be a device's instance id; give three parts of one short "
                             R"(line, such as USB\VID_0A7E&PID_1F48\NAME)");
  }
  const std::wstring device = devicePath(instanceId);
  if (!hasKey(device)) return instanceId;
  if (valueOf(device, kMarkValue).empty()) {
    throw std::runtime_error("the instance id " + instanceId +
                             " is that of a real device; give another one");
  }
  if (pipeExists(valueOf(kClassKey + driverName(instanceId), kEndpointValue))) {
    throw std::runtime_error("another virtual device is registered as " + instanceId +
                             "; end it or give another instance id");
  }
  return instanceId;
}

}  // namespace

OwnedKey::OwnedKey(std::wstring path, int depth) : path_(std::move(path)), depth_(depth) {
  OpenKey key;
  const LSTATUS error =
      RegCreateKeyExW(HKEY_LOCAL_MACHINE, path_.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                      KEY_SET_VALUE, nullptr, key.out(), nullptr);
  if (error != ERROR_SUCCESS) fail(path_, error);
}

OwnedKey::~OwnedKey() {
  RegDeleteKeyW(HKEY_LOCAL_MACHINE, path_.c_str());
  std::wstring parent = parentOf(path_);
  for (int level = 1; level < depth_ && isEmptyKey(parent); ++level) {
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, parent.c_str());
    parent = parentOf(parent);
  }
}

void OwnedKey::set(const wchar_t* name, const std::wstring& text) const {
  const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  const LSTATUS error =
      RegSetKeyValueW(HKEY_LOCAL_MACHINE, path_.c_str(), name, REG_SZ, text.c_str(), size);
  if (error != ERROR_SUCCESS) fail(path_, error);
}

// The driver's key comes first: a search that sees the device finds the rest.
Registration::Registration(const std::string& instanceId, const std::wstring& pipe)
    : driver_(kClassKey + driverName(checked(instanceId)), kDriverDepth),
      device_(devicePath(instanceId), kDeviceDepth) {
  driver_.set(kEndpointValue, pipe);
  device_.set(kMarkValue, L"1");
  device_.set(L"ClassGUID", kImagingClass);
  device_.set(L"Driver", driverName(instanceId));
}

}  // namespace tvrscn::virtual_device
