// The virtual scanner as a device of this system: its pipe, its hosts, its place in the registry.
#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tests/e2e/system.h"
#include "tests/windows/raw_host.h"
#include "tests/windows/roles.h"
#include "tests/windows/test_keys.h"
#include "virtual/virtual_scanner.h"
#include "virtual/windows/system_text.h"

namespace tvrscn::test {

int inquire(const std::string& pipe) {
  const RawHost host(virtual_device::wide(pipe));
  return host.ask(kInquiry) == std::size_t{72} ? 0 : 1;
}

namespace {

using namespace std::chrono_literals;
using virtual_device::addHpFault;
using virtual_device::HpScannerOptions;
using virtual_device::Placement;
using virtual_device::RunningScanner;
using virtual_device::startHpScanner;
using Clock = std::chrono::steady_clock;

constexpr wchar_t kDeviceKey[] =
    LR"(SYSTEM\CurrentControlSet\Enum\USB\VID_0A7E&PID_1F48&MI_00\VIRTUALHP01)";
constexpr wchar_t kDeviceParent[] = LR"(SYSTEM\CurrentControlSet\Enum\USB\VID_0A7E&PID_1F48&MI_00)";
constexpr wchar_t kClassKey[] = LR"(SYSTEM\CurrentControlSet\Control\Class\)";

std::unique_ptr<RunningScanner> startWith(const char* fault) {
  HpScannerOptions options;
  EXPECT_EQ(addHpFault(options, fault), "");
  return startHpScanner(options, {});
}

std::string startError(const Placement& placement) {
  try {
    startHpScanner({}, placement);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "it has started";
}

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class VirtualDevice : public testing::Test {
 protected:
  RawHost connect() const { return RawHost(scanner_->placement().socket); }

  std::unique_ptr<RunningScanner> scanner_ = startHpScanner({}, {});
};

TEST_F(VirtualDevice, IsRegisteredForAsLongAsItRuns) {
  const std::wstring driver = keyValue(kDeviceKey, L"Driver");
  ASSERT_FALSE(driver.empty());
  EXPECT_EQ(driver.find(keyValue(kDeviceKey, L"ClassGUID") + L'\\'), 0U);
  EXPECT_EQ(keyValue(kClassKey + driver, L"CreateFileName"),
            scanner_->placement().socket.wstring());
  scanner_.reset();
  EXPECT_FALSE(hasKey(kDeviceKey));
  EXPECT_FALSE(hasKey(kDeviceParent)) << "a device without instances";
  EXPECT_FALSE(hasKey(kClassKey + driver));
}

TEST_F(VirtualDevice, RegistrationEndsWithTheServing) {
  scanner_->stop();
  scanner_->wait();
  EXPECT_FALSE(hasKey(kDeviceKey));
  EXPECT_FALSE(connect().isConnected());
}

TEST_F(VirtualDevice, AnswersComeAsTransfersOfTheirOwn) {
  const RawHost host = connect();
  ASSERT_TRUE(host.isConnected());
  EXPECT_EQ(host.ask(kInquiry), 72U);
  EXPECT_EQ(host.ask(kReserve), 8U);
  EXPECT_EQ(host.ask(kRelease), 3U);
}

TEST_F(VirtualDevice, TransferIsReadInChunksAndNeverTogetherWithTheNext) {
  const RawHost host = connect();
  ASSERT_TRUE(host.write(kInquiry));
  ASSERT_TRUE(host.write(kReserve));
  EXPECT_EQ(host.read(64)->size(), 64U);
  EXPECT_EQ(host.read(64)->size(), 8U) << "of the first answer";
  EXPECT_EQ(host.read(64)->size(), 8U) << "the second answer";
}

TEST_F(VirtualDevice, EmptyAnswerIsAReadOfNothing) {
  scanner_.reset();
  scanner_ = startWith("short@reserve=0");
  const RawHost host = connect();
  EXPECT_EQ(host.ask(kReserve), 0U);
  EXPECT_EQ(host.ask(kInquiry), 72U);
}

TEST_F(VirtualDevice, NextHostComesWhenTheLastHasGone) {
  for (int i = 0; i < 10; ++i) {
    const RawHost host = connect();
    ASSERT_EQ(host.ask(kInquiry), 72U) << "host " << i;
  }
}

TEST_F(VirtualDevice, HostThatClosesOneHandleIsGone) {
  RawHost half = connect();
  ASSERT_EQ(half.ask(kInquiry), 72U);
  half.closeReplies();
  ChildProcess other({kInquireArgument, virtual_device::narrow(scanner_->placement().socket)});
  EXPECT_EQ(other.wait(), 0);
}

TEST_F(VirtualDevice, HandlesOfOneProcessShareIt) {
  const RawHost first = connect();
  const RawHost second = connect();
  EXPECT_EQ(second.ask(kInquiry), 72U);
  EXPECT_EQ(first.ask(kInquiry), 72U);
  EXPECT_EQ(second.ask(kReserve), 8U);
}

TEST_F(VirtualDevice, HostOfAnotherProcessWaitsForTheFirstToGo) {
  auto first = std::make_unique<RawHost>(scanner_->placement().socket);
  ASSERT_EQ(first->ask(kInquiry), 72U);
  ChildProcess second({kInquireArgument, virtual_device::narrow(scanner_->placement().socket)});
  std::this_thread::sleep_for(1500ms);
  EXPECT_TRUE(second.isRunning());
  EXPECT_EQ(first->ask(kInquiry), 72U);
  first.reset();
  EXPECT_EQ(second.wait(), 0);
}

TEST_F(VirtualDevice, FailedTransferEndsTheLinkAndTheNextHostIsServed) {
  scanner_.reset();
  scanner_ = startWith("failed-read@reserve");
  {
    const RawHost host = connect();
    EXPECT_EQ(host.ask(kInquiry), 72U);
    ASSERT_TRUE(host.write(kReserve));
    EXPECT_FALSE(host.read(8).has_value());
    EXPECT_FALSE(host.read(8).has_value());
    EXPECT_FALSE(host.write(kInquiry));
  }
  EXPECT_EQ(connect().ask(kReserve), 8U);
}

TEST_F(VirtualDevice, StopEndsAStalledAnswer) {
  scanner_.reset();
  scanner_ = startWith("stall@inquiry");
  const RawHost host = connect();
  ASSERT_TRUE(host.write(kInquiry));
  std::thread stopper([this] {
    std::this_thread::sleep_for(100ms);
    scanner_->stop();
  });
  EXPECT_FALSE(host.read(72).has_value());
  stopper.join();
  scanner_->wait();
}

TEST_F(VirtualDevice, StopEndsATransferThatNobodyReads) {
  const RawHost host = connect();
  ASSERT_TRUE(host.write(kInquiry));
  std::this_thread::sleep_for(100ms);
  const auto start = Clock::now();
  scanner_.reset();
  EXPECT_LT(Clock::now() - start, 2s);
}

TEST_F(VirtualDevice, TransferThatIsNoiseEndsItsHost) {
  const RawHost host = connect();
  host.write(std::string(3U << 20, '\x1B'));
  EXPECT_FALSE(host.ask(kInquiry).has_value());
  EXPECT_EQ(connect().ask(kInquiry), 72U);
}

TEST_F(VirtualDevice, ErrorsNameTheThingAndTheRemedy) {
  Placement placement;
  placement.socket = scanner_->placement().socket;
  placement.instanceId = R"(USB\OTHER\ONE)";
  EXPECT_PRED2(holds, startError(placement), "another program listens there; give another name");
  EXPECT_FALSE(hasKey(LR"(SYSTEM\CurrentControlSet\Enum\USB\OTHER)"));
  EXPECT_PRED2(holds, startError({}), "another virtual device is registered as");
  EXPECT_EQ(connect().ask(kInquiry), 72U) << "the first still stands";
  placement = {};
  placement.instanceId = "VIRTUALHP01";
  EXPECT_PRED2(holds, startError(placement), "give three parts");
  placement.instanceId = R"(USB\REAL\ONE)";
  TestKeys keys;
  keys.add({LR"(USB\REAL\ONE)", nullptr, nullptr});
  EXPECT_PRED2(holds, startError(placement), "that of a real device");
}

TEST(VirtualDevicePlace, PathThatIsNoPipesBecomesItsName) {
  Placement placement;
  placement.socket = LR"(C:\some\folder/endpoint)";
  const auto scanner = startHpScanner({}, placement);
  EXPECT_EQ(scanner->placement().socket.wstring(), LR"(\\.\pipe\C--some-folder-endpoint)");
  EXPECT_EQ(RawHost(scanner->placement().socket).ask(kInquiry), 72U);
}

// What a program left that was killed names a pipe that is gone.
TEST(VirtualDevicePlace, LeftRegistrationIsTakenOver) {
  TestKeys keys;
  keys.add({LR"(USB\VID_0A7E&PID_1F48&MI_00\VIRTUALHP01)", nullptr, nullptr});
  ASSERT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kDeviceKey, L"TvrscnVirtualDevice", REG_SZ, L"1",
                            2 * sizeof(wchar_t)),
            ERROR_SUCCESS);
  const auto scanner = startHpScanner({}, {});
  EXPECT_EQ(RawHost(scanner->placement().socket).ask(kInquiry), 72U);
}

}  // namespace
}  // namespace tvrscn::test
