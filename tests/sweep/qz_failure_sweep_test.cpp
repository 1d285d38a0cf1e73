// Every single call of a QZ job made to fail, or to come short, in turn: call k for every k until
// the job runs through untouched. Whatever happens, the job ends in one of its defined ways, says
// so, asks the device for nothing that it may not ask, and leaves nothing behind.
#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/qz_test.h"
#include "tests/sweep/qz_job_device.h"

namespace tvrscn::test {
namespace {

const QZJobShape kShapes[] = {
    {"Flatbed", "FullColor", L"0", {"3"}},
    {"FeederOfThreePages", "Grayscale", L"40", {"223", "3", "23"}},
    {"BlackAndWhite", "BlackAndWhite", L"0", {"23", "3"}},
    {"BlockEnd", "FullColor", L"0", {"25", "3"}},
    {"NoImage", "FullColor", L"0", {"24"}},
    {"Cancelled", "FullColor", L"0", {"3", "2C"}},
    {"JamAndRetry", "FullColor", L"0", {"3", "2J3"}, true},
};

// How call number k goes wrong.
struct Trouble {
  const char* name;
  bool ofAnyFunction;  // k counts all calls; otherwise those of the device alone
  void (*arrange)(FakePlatform& platform, int k);
};

const Trouble kTroubles[] = {
    {"DeviceCallFails", false, [](FakePlatform& p, int k) { p.failDeviceCall(k); }},
    {"DeviceCallBringsNothing", false, [](FakePlatform& p, int k) { p.shortDeviceCall(k, 0); }},
    {"DeviceCallBringsAByte", false, [](FakePlatform& p, int k) { p.shortDeviceCall(k, 1); }},
    {"DeviceCallBringsPart", false, [](FakePlatform& p, int k) { p.shortDeviceCall(k, 7); }},
    {"AnyCallFails", true, [](FakePlatform& p, int k) { p.failAnyCall(k); }},
};

struct Outcome {
  bool reached = false;  // call k was made
  long result = -1;
  Lines notifications;
  Lines missingFiles;  // told as ready and not there
  Lines problems;
  Lines leftBehind;
  bool deviceUsed = false;
  bool mutexTaken = true;
  bool reserved = false;
};

class JobRun {
 public:
  explicit JobRun(const QZJobShape& shape) : shape_(shape), device_(shape), settings_(settings()) {
    platform_.plug(&device_);
    settings_.colorMode = shape.colorMode;
    settings_.brightness = shape.brightness;
    platform_.dialogAnswers = {4};
    platform_.onNotification = [this](const ScanNotification& notification) {
      const std::filesystem::path file(notification.text);
      if (notification.type == NOTIFY_IMAGE_READY && !std::filesystem::exists(file))
        outcome_.missingFiles.push_back(file.string());
    };
  }

  // The controller's own end belongs to the job: it closes the device.
  Outcome go(const Trouble& trouble, int k) {
    int before = 0;
    {
      USB_QZ_Controller controller;
      const auto [writeHandle, readHandle] = platform_.openDevice();
      ControllerTestPeer::deviceWrite(controller) = writeHandle;
      ControllerTestPeer::deviceRead(controller) = readHandle;
      ControllerTestPeer::usingTevraUI(controller) = shape_.dialogs;
      auto dictionary = namedDictionary();
      controller.InitExceptionStrings(dictionary);
      before = calls(trouble);
      trouble.arrange(platform_, k);
      bool errorShown = false;
      outcome_.result =
          controller.doScan(settings_, platform_.callback(), folder_.path().wstring(), errorShown);
    }
    outcome_.reached = calls(trouble) - before >= k;
    lookAround();
    return outcome_;
  }

 private:
  int calls(const Trouble& trouble) const {
    return trouble.ofAnyFunction ? platform_.callCount() : platform_.deviceCallCount();
  }

  void lookAround() {
    outcome_.notifications = platform_.notifications();
    outcome_.problems = platform_.problems();
    outcome_.problems.insert(outcome_.problems.end(), device_.problems().begin(),
                             device_.problems().end());
    outcome_.leftBehind = platform_.liveObjects("handle");
    outcome_.deviceUsed = platform_.deviceCallCount() > 0;
    outcome_.reserved = device_.reserved();
    const Lines mutex = platform_.calls({Kind::kMutex});
    outcome_.mutexTaken = !mutex.empty() && mutex.back() == "~XMutex held";
  }

  const QZJobShape& shape_;
  FakePlatform platform_;
  const TemporaryFolder folder_;
  QZJobDevice device_;
  TevraScanUIData settings_;
  Outcome outcome_;
};

// Types of the notifications, without their texts.
Lines types(const Lines& notifications) {
  Lines all;
  for (const std::string& notification : notifications)
    all.push_back(notification.substr(0, 4));
  return all;
}

// Pages behind one NOTIFY_TRANSFER_STARTED; what is not of the pages comes back.
Lines withoutPages(const Lines& notifications) {
  Lines rest;
  bool started = false;
  for (const std::string& type : types(notifications)) {
    if (type == "1004") {
      EXPECT_FALSE(started);
      started = true;
    } else if (type == "1005") {
      EXPECT_TRUE(started);
    } else {
      rest.push_back(type);
    }
  }
  return rest;
}

void expectDefinedEnd(const Outcome& outcome, const QZJobShape& shape) {
  EXPECT_EQ(outcome.problems, Lines{});
  const Lines end = withoutPages(outcome.notifications);
  if (!outcome.deviceUsed) {
    // The mutex could not be had.
    EXPECT_FALSE(outcome.mutexTaken);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.notifications, Lines{});
    return;
  }
  EXPECT_TRUE(outcome.mutexTaken);
  if (outcome.result == 0) {
    ASSERT_FALSE(end.empty());
    EXPECT_EQ(outcome.notifications.back(), "1006");
    EXPECT_EQ(std::count(end.begin(), end.end(), "1006"), 1);
    EXPECT_FALSE(outcome.reserved);
    return;
  }
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(std::count(end.begin(), end.end(), "1006"), 0);
  if (shape.dialogs) {
    // A jam whose sense bytes do not come is told nobody.
    EXPECT_LE(end.size(), 2U);
  } else {
    EXPECT_TRUE(end == Lines{"1011"} || end == (Lines{"1002", "1011"}));
  }
}

void expectSameEnd(const Outcome& outcome, const Outcome& untouched) {
  EXPECT_EQ(outcome.result, untouched.result);
  EXPECT_EQ(types(outcome.notifications), types(untouched.notifications));
  EXPECT_EQ(outcome.reserved, untouched.reserved);
  EXPECT_EQ(outcome.missingFiles, Lines{});
  EXPECT_EQ(outcome.leftBehind, Lines{});
}

constexpr int kFarBeyondAnyJob = 5000;

class QZFailureSweep : public ::testing::TestWithParam<std::tuple<std::size_t, std::size_t>> {};

TEST_P(QZFailureSweep, EveryCallInTurnEndsTheJobInADefinedWay) {
  const QZJobShape& shape = kShapes[std::get<0>(GetParam())];
  const Trouble& trouble = kTroubles[std::get<1>(GetParam())];
  const Outcome untouched = JobRun(shape).go(trouble, kFarBeyondAnyJob);
  int k = 1;
  for (; k < kFarBeyondAnyJob; ++k) {
    SCOPED_TRACE("call " + std::to_string(k));
    const Outcome outcome = JobRun(shape).go(trouble, k);
    expectDefinedEnd(outcome, shape);
    // What the failed call itself was to bring: a path, or a handle closed.
    const std::size_t mayMiss = trouble.ofAnyFunction ? 1 : 0;
    EXPECT_LE(outcome.leftBehind.size(), mayMiss);
    EXPECT_LE(outcome.missingFiles.size(), mayMiss);
    if (!outcome.reached) {
      expectSameEnd(outcome, untouched);
      break;
    }
    if (HasFailure()) return;
  }
  // Fourteen exchanges of at least six calls: the sweep has seen the whole of the job.
  EXPECT_GT(k, 84);
  EXPECT_LT(k, kFarBeyondAnyJob);
}

std::string caseName(const ::testing::TestParamInfo<std::tuple<std::size_t, std::size_t>>& info) {
  return std::string(kShapes[std::get<0>(info.param)].name) +
         kTroubles[std::get<1>(info.param)].name;
}

INSTANTIATE_TEST_SUITE_P(Shapes, QZFailureSweep,
                         ::testing::Combine(::testing::Range<std::size_t>(0, std::size(kShapes)),
                                            ::testing::Range<std::size_t>(0, std::size(kTroubles))),
                         caseName);

TEST(QZFailureSweep, AnUntouchedJobOfEachShapeHasItsEnd) {
  const struct {
    long result;
    Lines told;
  } kEnds[] = {
      {0, {"1004", "1005", "1006"}},
      {0, {"1004", "1005", "1005", "1005", "1006"}},
      {0, {"1004", "1005", "1005", "1006"}},
      {0, {"1004", "1005", "1006"}},
      {0, {"1006"}},
      {1, {"1004", "1005", "1002", "1011"}},
      {0, {"1004", "1005", "1002", "1005", "1006"}},
  };
  ASSERT_EQ(std::size(kEnds), std::size(kShapes));
  for (std::size_t i = 0; i < std::size(kShapes); ++i) {
    SCOPED_TRACE(kShapes[i].name);
    const Outcome outcome = JobRun(kShapes[i]).go(kTroubles[0], kFarBeyondAnyJob);
    EXPECT_FALSE(outcome.reached);
    EXPECT_EQ(outcome.result, kEnds[i].result);
    EXPECT_EQ(types(outcome.notifications), kEnds[i].told);
    EXPECT_FALSE(outcome.reserved);
    EXPECT_EQ(outcome.leftBehind, Lines{});
  }
}

TEST(QZFailureSweep, NoFlushMattersToAJob) {
  for (const QZJobShape& shape : kShapes) {
    SCOPED_TRACE(shape.name);
    const Outcome untouched = JobRun(shape).go(kTroubles[0], kFarBeyondAnyJob);
    const Trouble noFlush = {"NoFlush", false,
                             [](FakePlatform& p, int) { p.failEveryCall("FlushFileBuffers"); }};
    expectSameEnd(JobRun(shape).go(noFlush, 1), untouched);
  }
}

}  // namespace
}  // namespace tvrscn::test
