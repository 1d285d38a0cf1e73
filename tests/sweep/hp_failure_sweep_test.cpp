// Every single call of a job made to fail, or to come short, in turn: call k for every k until the
// job runs through untouched. Whatever happens, the job ends in one of its defined ways, says so,
// and leaves nothing behind.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/fake_platform.h"
#include "tests/support/platform_test.h"
#include "tests/support/test_peers.h"
#include "tests/sweep/hp_job_device.h"
#include "tvrscn/hp_controller.h"

namespace tvrscn::test {
namespace {

const HPJobShape kShapes[] = {
    {"Flatbed", false, 1, "OneSided"},
    {"FeederOfThreePages", true, 3, "OneSided"},
    {"TwoSided", true, 2, "TwoSided"},
};

// How call number k goes wrong.
enum class Trouble {
  kDeviceCallFails,
  kDeviceCallBringsNothing,
  kDeviceCallBringsPart,
  kAnyCallFails
};

struct Outcome {
  bool reached = false;        // call k was made
  std::optional<long> result;  // none when the host was left reading for ever
  std::vector<std::string> notifications;
  std::vector<std::string> log;
  std::vector<std::string> problems;
  std::vector<std::string> leftBehind;
  std::size_t mayStay = 0;  // what the failed call itself was to give back
  std::string lastWrite;    // the host's last command
  int aborts = 0;
  int releases = 0;
};

void arrange(FakePlatform& platform, Trouble trouble, int k) {
  switch (trouble) {
    case Trouble::kDeviceCallFails:
      platform.failDeviceCall(k);
      break;
    case Trouble::kDeviceCallBringsNothing:
      platform.shortDeviceCall(k, 0);
      break;
    case Trouble::kDeviceCallBringsPart:
      platform.shortDeviceCall(k, 1);
      break;
    case Trouble::kAnyCallFails:
      platform.failAnyCall(k);
      break;
  }
}

Outcome runJob(const HPJobShape& shape, Trouble trouble, int k) {
  FakePlatform platform;
  const TemporaryFolder pages;
  HPJobDevice device(shape);
  platform.plug(&device);
  platform.emptyReadLimit = 8;
  TevraScanUIData job = settings();
  job.sides = shape.sides;
  Outcome outcome;
  {
    USB_HP_Controller controller;
    const auto [writeHandle, readHandle] = platform.openDevice();
    ControllerTestPeer::deviceWrite(controller) = writeHandle;
    ControllerTestPeer::deviceRead(controller) = readHandle;
    ControllerTestPeer::usingTevraUI(controller) = false;
    const int before = trouble == Trouble::kAnyCallFails ? platform.callCount() : 0;
    arrange(platform, trouble, k);
    bool errorShown = false;
    try {
      outcome.result =
          controller.doScan(job, platform.callback(), pages.path().wstring(), errorShown);
    } catch (const DeviceExhausted&) {
      outcome.result.reset();
    }
    outcome.reached = trouble == Trouble::kAnyCallFails ? platform.callCount() - before >= k
                                                        : platform.deviceCallCount() >= k;
  }
  outcome.mayStay = trouble == Trouble::kAnyCallFails ? 1 : 0;
  outcome.notifications = platform.notifications();
  outcome.log = platform.logLines();
  outcome.problems = platform.problems();
  for (const char* type : {"bitmap", "graphics", "effect", "handle"}) {
    for (const std::string& name : platform.liveObjects(type))
      outcome.leftBehind.push_back(name);
  }
  for (const auto& file : std::filesystem::directory_iterator(platform.tempFolder())) {
    outcome.leftBehind.push_back(file.path().filename().string());
  }
  for (const std::string& call : platform.calls({Kind::kDevice})) {
    if (call.starts_with("Write")) outcome.lastWrite = call;
  }
  outcome.aborts = device.aborts();
  outcome.releases = device.releases();
  return outcome;
}

// One NOTIFY_TRANSFER_STARTED in front of the pages, pages in the middle, one end at the end.
void expectNotificationStream(const Outcome& outcome) {
  bool started = false;
  bool ended = false;
  for (const std::string& notification : outcome.notifications) {
    EXPECT_FALSE(ended) << "after the end came " << notification;
    if (notification.starts_with("1004")) {
      EXPECT_FALSE(started);
      started = true;
    } else if (notification.starts_with("1005")) {
      EXPECT_TRUE(started);
    } else if (notification.starts_with("1006")) {
      EXPECT_EQ(outcome.result, 0);
      ended = true;
    } else {
      // Without dialogs every failure is told the same way.
      EXPECT_TRUE(notification.starts_with("1011")) << notification;
      EXPECT_EQ(outcome.result, 1);
      ended = true;
    }
  }
  EXPECT_EQ(ended, outcome.result.has_value());
}

void expectDefinedEnd(const Outcome& outcome) {
  constexpr std::string_view kReadImage = "Write 1B A8 29 00";
  expectNotificationStream(outcome);
  EXPECT_EQ(outcome.problems, std::vector<std::string>{});
  if (outcome.result.has_value()) {
    EXPECT_TRUE(*outcome.result == 0 || *outcome.result == 1);
  } else {
    // The one place where nothing but data ends the wait.
    EXPECT_EQ(outcome.lastWrite, kReadImage);
  }
}

class HPFailureSweep : public ::testing::TestWithParam<std::tuple<std::size_t, Trouble>> {};

TEST_P(HPFailureSweep, EveryCallInTurnEndsTheJobInADefinedWay) {
  const HPJobShape& shape = kShapes[std::get<0>(GetParam())];
  const Trouble trouble = std::get<1>(GetParam());
  constexpr int kFarBeyondAnyJob = 5000;
  int k = 1;
  for (; k < kFarBeyondAnyJob; ++k) {
    SCOPED_TRACE("call " + std::to_string(k));
    const Outcome outcome = runJob(shape, trouble, k);
    expectDefinedEnd(outcome);
    EXPECT_LE(outcome.leftBehind.size(), outcome.mayStay);
    if (!outcome.reached) {
      EXPECT_EQ(outcome.result, 0);
      break;
    }
    if (HasFailure()) return;
  }
  // Each page alone has some dozens of device calls: the sweep has seen the whole job.
  EXPECT_GT(k, shape.pages * 40);
  EXPECT_LT(k, kFarBeyondAnyJob);
}

std::string caseName(const ::testing::TestParamInfo<std::tuple<std::size_t, Trouble>>& info) {
  const char* const names[] = {"DeviceCallFails", "DeviceCallBringsNothing", "DeviceCallBringsPart",
                               "AnyCallFails"};
  return std::string(kShapes[std::get<0>(info.param)].name) +
         names[static_cast<std::size_t>(std::get<1>(info.param))];
}

INSTANTIATE_TEST_SUITE_P(Shapes, HPFailureSweep,
                         ::testing::Combine(::testing::Values(0U, 1U, 2U),
                                            ::testing::Values(Trouble::kDeviceCallFails,
                                                              Trouble::kDeviceCallBringsNothing,
                                                              Trouble::kDeviceCallBringsPart,
                                                              Trouble::kAnyCallFails)),
                         caseName);

TEST(HPFailureSweep, AnUntouchedJobOfEachShapeDeliversItsPages) {
  for (const HPJobShape& shape : kShapes) {
    SCOPED_TRACE(shape.name);
    const Outcome outcome = runJob(shape, Trouble::kDeviceCallFails, 1'000'000);
    EXPECT_FALSE(outcome.reached);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.notifications.size(), static_cast<std::size_t>(shape.pages) + 2);
    EXPECT_EQ(outcome.aborts, 1);
    EXPECT_EQ(outcome.releases, 1);
  }
}

}  // namespace
}  // namespace tvrscn::test
