#include "tests/windows/test_keys.h"

#include <array>
#include <stdexcept>

#include <windows.h>

namespace tvrscn::test {
namespace {

constexpr wchar_t kEnumKey[] = LR"(SYSTEM\CurrentControlSet\Enum\)";
constexpr wchar_t kClassKey[] = LR"(SYSTEM\CurrentControlSet\Control\Class\)";

std::wstring driverPath(const wchar_t* driver) {
  return std::wstring(kClassKey) + kTestClass + L'\\' + driver;
}

void setText(const std::wstring& path, const wchar_t* name, const std::wstring& text) {
  const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  if (RegSetKeyValueW(HKEY_LOCAL_MACHINE, path.c_str(), name, REG_SZ, text.c_str(), size) !=
      ERROR_SUCCESS) {
    throw std::runtime_error("the registry cannot be written");
  }
}

}  // namespace

TestKeys::~TestKeys() {
  for (auto path = created_.rbegin(); path != created_.rend(); ++path)
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, path->c_str());
}

void TestKeys::create(const std::wstring& path) {
  HKEY key = nullptr;
  DWORD disposition = 0;
  if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                      KEY_SET_VALUE, nullptr, &key, &disposition) != ERROR_SUCCESS) {
    throw std::runtime_error("the registry cannot be written");
  }
  RegCloseKey(key);
  if (disposition == REG_CREATED_NEW_KEY) created_.push_back(path);
}

void TestKeys::add(const TestDevice& device) {
  const std::wstring path = kEnumKey + std::wstring(device.instanceId);
  for (std::size_t end = path.find(L'\\', std::size(kEnumKey)); end != std::wstring::npos;
       end = path.find(L'\\', end + 1)) {
    create(path.substr(0, end));
  }
  create(path);
  setText(path, L"ClassGUID", kTestClass);
  if (device.driver == nullptr) return;
  setText(path, L"Driver", std::wstring(kTestClass) + L'\\' + device.driver);
  create(std::wstring(kClassKey) + kTestClass);
  create(driverPath(device.driver));
  if (device.endpoint != nullptr) {
    setText(driverPath(device.driver), L"CreateFileName", device.endpoint);
  }
}

void TestKeys::removeDriver(const wchar_t* driver) {
  RegDeleteKeyW(HKEY_LOCAL_MACHINE, driverPath(driver).c_str());
}

bool hasKey(const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return false;
  }
  RegCloseKey(key);
  return true;
}

std::wstring keyValue(const std::wstring& path, const wchar_t* name) {
  std::array<wchar_t, MAX_PATH + 1> text{};
  DWORD size = MAX_PATH * sizeof(wchar_t);
  RegGetValueW(HKEY_LOCAL_MACHINE, path.c_str(), name, RRF_RT_REG_SZ, nullptr, text.data(), &size);
  return text.data();
}

}  // namespace tvrscn::test
