// Registry keys of made-up devices and drivers, gone with their owner.
#ifndef TVRSCN_TESTS_WINDOWS_TEST_KEYS_H
#define TVRSCN_TESTS_WINDOWS_TEST_KEYS_H

#include <string>
#include <vector>

namespace tvrscn::test {

// Class below which the made-up drivers have their keys.
constexpr const wchar_t* kTestClass = L"{D1B2A0C4-55D7-4C2E-9E0F-3D5A6E3B7C10}";

// What stands in the registry of a device. Null: it is not there.
struct TestDevice {
  const wchar_t* instanceId;
  const wchar_t* driver;    // name of the driver's key below kTestClass
  const wchar_t* endpoint;  // in the driver's key, which there is without it too
};

class TestKeys {
 public:
  TestKeys() = default;
  TestKeys(const TestKeys&) = delete;
  TestKeys& operator=(const TestKeys&) = delete;
  ~TestKeys();

  void add(const TestDevice& device);
  // Takes the key of a driver away.
  void removeDriver(const wchar_t* driver);

 private:
  void create(const std::wstring& path);

  std::vector<std::wstring> created_;
};

bool hasKey(const std::wstring& path);
std::wstring keyValue(const std::wstring& path, const wchar_t* name);

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_WINDOWS_TEST_KEYS_H
