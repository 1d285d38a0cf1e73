// The search for the endpoint on the system's own device setup and registry. The devices are
// made up below an enumerator of their own, so that no other device of the machine is in the way.
#include <array>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include <setupapi.h>

#include "tests/windows/test_keys.h"
#include "tvrscn/scan_client.h"
#include "virtual/virtual_scanner.h"

namespace tvrscn::test {
namespace {

constexpr int kFound = 0;
constexpr int kNotFound = 55;
constexpr wchar_t kNoPipe[] = LR"(\\.\pipe\tvrscn-test-there-is-no-such-pipe)";

constexpr TestDevice kComplete = {LR"(TVRSCNTEST\VID_0A7E&PID_0001\ONE)", L"0001", kNoPipe};
constexpr TestDevice kOther = {LR"(TVRSCNTEST\VID_0A7E&PID_0002\TWO)", L"0002", kNoPipe};
constexpr TestDevice kNoDriver = {LR"(TVRSCNTEST\VID_0A7E&PID_0003\THREE)", nullptr, nullptr};
constexpr TestDevice kNoEndpoint = {LR"(TVRSCNTEST\VID_0A7E&PID_0004\FOUR)", L"0004", nullptr};
constexpr TestDevice kLowerCase = {LR"(TVRSCNTEST\vid_0a7e&pid_0005\five)", L"0005", kNoPipe};

class EndpointSearch : public testing::Test {
 protected:
  int search(const std::string& hardwareId, bool open = false) {
    std::wstring enumerator = L"TVRSCNTEST";
    return client_.FindStatusEndPointFromPrinterPort(enumerator.data(), hardwareId, open);
  }

  // The ids of the made-up devices as the system lists them.
  static std::vector<std::wstring> listed() {
    std::vector<std::wstring> ids;
    HDEVINFO set =
        SetupDiGetClassDevsW(nullptr, L"TVRSCNTEST", nullptr, DIGCF_PRESENT | DIGCF_ALLCLASSES);
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof device;
    for (DWORD index = 0; SetupDiEnumDeviceInfo(set, index, &device) != 0; ++index) {
      std::array<wchar_t, MAX_PATH> id{};
      SetupDiGetDeviceInstanceIdW(set, &device, id.data(), MAX_PATH, nullptr);
      ids.emplace_back(id.data());
    }
    SetupDiDestroyDeviceInfoList(set);
    return ids;
  }

  CScanUSBClient client_{CONTROLLER_HP};
  TestKeys keys_;
};

TEST_F(EndpointSearch, DeviceIsFoundByAnyPartOfItsId) {
  keys_.add(kOther);
  keys_.add(kComplete);
  EXPECT_EQ(search("VID_0A7E&PID_0001"), kFound);
  EXPECT_EQ(search("PID_0002"), kFound);
  EXPECT_EQ(search("TVRSCNTEST\\VID_0A7E&PID_0001\\ONE"), kFound);
  EXPECT_EQ(search("\\ONE"), kFound);
}

TEST_F(EndpointSearch, DeviceThatIsNotThereIsNotFound) {
  keys_.add(kComplete);
  EXPECT_EQ(search("VID_0A7E&PID_0009"), kNotFound);
  EXPECT_EQ(search("TVRSCNTEST\\VID_0A7E&PID_0001\\ONE\\AND MORE"), kNotFound);
  EXPECT_EQ(search("VID_0A7E&PID_0009", true), USB_ERR_OPEN);
}

TEST_F(EndpointSearch, EmptyHardwareIdMatchesEveryDevice) {
  keys_.add(kComplete);
  EXPECT_EQ(search(""), kFound);
}

TEST_F(EndpointSearch, EndpointThatCannotBeOpenedIsFoundAndNotOpened) {
  keys_.add(kComplete);
  EXPECT_EQ(search("PID_0001"), kFound);
  EXPECT_EQ(search("PID_0001", true), USB_ERR_OPEN);
}

TEST_F(EndpointSearch, DeviceWithoutDriverAnswersTheSystemsError) {
  keys_.add(kNoDriver);
  EXPECT_EQ(search("PID_0003"), static_cast<int>(ERROR_INVALID_DATA));
  EXPECT_EQ(search("PID_0003", true), static_cast<int>(ERROR_INVALID_DATA));
}

// Registry calls leave the last error alone, so that the answer is one that stood there before.
TEST_F(EndpointSearch, MissingEndpointAnswersTheLastError) {
  keys_.add(kNoEndpoint);
  const int result = search("PID_0004");
  EXPECT_EQ(result, static_cast<int>(GetLastError()));
  EXPECT_NE(result, kNotFound);
  EXPECT_NE(search("PID_0004", true), USB_ERR_OPEN) << "the search ends before the open";
}

TEST_F(EndpointSearch, MissingDriverKeyAnswersTheLastError) {
  keys_.add(kComplete);
  keys_.removeDriver(kComplete.driver);
  const int result = search("PID_0001");
  EXPECT_EQ(result, static_cast<int>(GetLastError()));
  EXPECT_NE(result, kNotFound);
}

TEST_F(EndpointSearch, IdInLowerCaseIsMatchedInUpperCase) {
  keys_.add(kLowerCase);
  EXPECT_EQ(search("VID_0A7E&PID_0005"), kFound);
  EXPECT_EQ(search("vid_0a7e&pid_0005"), kNotFound);
}

// Which of the two comes first is the system's affair; the broken one shows which was taken.
TEST_F(EndpointSearch, FirstOfTwoMatchesInTheSystemsOrderIsTaken) {
  keys_.add(kComplete);
  keys_.add(kNoDriver);
  const std::vector<std::wstring> ids = listed();
  ASSERT_EQ(ids.size(), 2U);
  const bool completeIsFirst = ids[0].find(L"0001") != std::wstring::npos;
  EXPECT_EQ(search("VID_0A7E"), completeIsFirst ? kFound : static_cast<int>(ERROR_INVALID_DATA));
}

TEST_F(EndpointSearch, ReverseOfTwoMatchesIsTakenTheSameWay) {
  keys_.add({LR"(TVRSCNTEST\VID_0A7E&PID_0001\ONE)", nullptr, nullptr});
  keys_.add({LR"(TVRSCNTEST\VID_0A7E&PID_0003\THREE)", L"0003", kNoPipe});
  const std::vector<std::wstring> ids = listed();
  ASSERT_EQ(ids.size(), 2U);
  const bool completeIsFirst = ids[0].find(L"0003") != std::wstring::npos;
  EXPECT_EQ(search("VID_0A7E"), completeIsFirst ? kFound : static_cast<int>(ERROR_INVALID_DATA));
}

class OpenedEndpoint : public EndpointSearch {
 protected:
  void SetUp() override {
    scanner_ = virtual_device::startHpScanner({}, {});
    endpoint_ = scanner_->placement().socket.wstring();
    keys_.add({LR"(TVRSCNTEST\VID_0A7E&PID_0001\ONE)", L"0001", endpoint_.c_str()});
  }

  std::unique_ptr<virtual_device::RunningScanner> scanner_;
  std::wstring endpoint_;
};

TEST_F(OpenedEndpoint, PipeIsOpened) {
  EXPECT_EQ(search("PID_0001", true), kFound);
}

TEST_F(OpenedEndpoint, DeviceThatIsNoLongerFoundKeepsItsHandle) {
  EXPECT_EQ(search("PID_0001", true), kFound);
  EXPECT_EQ(search("PID_0009", true), kFound);
  EXPECT_EQ(search("PID_0009", false), kNotFound);
}

TEST_F(OpenedEndpoint, ClientUpperCasesTheHardwareIdItself) {
  client_.InitScanConfigInfo("scanner", "vid_0a7e&pid_1f48", L"label");
  EXPECT_EQ(search("NO SUCH DEVICE", true), kFound) << "a handle is open";
}

}  // namespace
}  // namespace tvrscn::test
