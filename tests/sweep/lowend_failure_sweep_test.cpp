// Every single call of a LowEnd job made to fail, or to come short, in turn, on the caller's thread
// and on the worker: call k for every k until the job runs through untouched. Whatever happens, the
// job ends in one of its defined ways, says so, and leaves nothing behind.
#include <algorithm>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/lowend_test.h"
#include "tests/sweep/lowend_job_device.h"

namespace tvrscn::test {
namespace {

const std::string kJpegStart = "\xFF\xD8\xFF\xE0";
const std::string kBlockMarker = "BLOCK 00000001TES\n";
const std::string kAccepted(LowEndDialogue::kAccepted);

const LowEndJobShape kShapes[] = {
    {"OneFile", "Grayscale", 0, kAccepted, {kJpegStart + "page"}, {}},
    // Records that take two reads each, cut at markers of both kinds.
    {"ThreeFiles",
     "FullColor",
     2,
     kAccepted,
     {kJpegStart + std::string(600, 'a') + kBlockMarker,
      std::string(300, 'b') + "\nNEWFILE" + kJpegStart + std::string(300, 'c'),
      kBlockMarker + "\nNEWFILE", kJpegStart + std::string(700, 'd') + "JOBDONE"},
     {}},
    {"TiffOfTwoPages", "BlackAndWhite", 0, kAccepted, {"II*", "pages"}, {"II1", "II2"}},
    {"TiffThatCannotBeSplit", "BlackAndWhite", 0, kAccepted, {"II*"}, {}},
    {"Cancelled", "Grayscale", 0, kAccepted, {"JOBCANCEL"}, {}},
    {"Refused", "Grayscale", 0, R"({"status":400,"result":"no"})", {}, {}},
    {"NeverReady", "Grayscale", 100, kAccepted, {}, {}},
};

// How call number k goes wrong.
struct Trouble {
  const char* name;
  bool ofAnyFunction;  // k counts all calls; otherwise those of the device alone
  void (*arrange)(FakePlatform& platform, int k);
};

const Trouble kTroubles[] = {
    {"DeviceCallFails", false, [](FakePlatform& p, int k) { p.failDeviceCall(k); }},
    {"DeviceCallFailsSilently", false, [](FakePlatform& p, int k) { p.failDeviceCall(k, 0); }},
    {"DeviceCallBringsNothing", false, [](FakePlatform& p, int k) { p.shortDeviceCall(k, 0); }},
    {"DeviceCallBringsAByte", false, [](FakePlatform& p, int k) { p.shortDeviceCall(k, 1); }},
    {"DeviceCallBringsPart", false, [](FakePlatform& p, int k) { p.shortDeviceCall(k, 9); }},
    {"AnyCallFails", true, [](FakePlatform& p, int k) { p.failAnyCall(k); }},
};

// How the caller's thread and the worker came to their ends.
enum class End { kNotRun, kReturned, kThrew, kLeftReading };

struct Outcome {
  bool reached = false;  // call k was made
  End job = End::kNotRun;
  long result = -1;
  bool workerStarted = false;
  End worker = End::kNotRun;
  unsigned workerResult = 0;
  Lines notifications;
  Lines missingFiles;  // told as ready and not there
  Lines problems;
  Lines leftBehind;
  std::string lastDeviceCall;
};

// One job on a platform, a device and a controller of its own.
class JobRun {
 public:
  explicit JobRun(const LowEndJobShape& shape) : device_(shape), settings_(settings()) {
    platform_.plug(&device_);
    platform_.emptyReadLimit = 8;
    platform_.tiffPages = shape.pages;
    settings_.colorMode = shape.colorMode;
    platform_.onNotification = [this](const ScanNotification& notification) {
      const std::filesystem::path file(notification.text);
      if (notification.type == NOTIFY_IMAGE_READY && !std::filesystem::exists(file)) {
        outcome_.missingFiles.push_back(file.string());
      }
    };
  }

  // The controller's own end belongs to the job: it closes the device.
  Outcome go(const Trouble& trouble, int k) {
    int before = 0;
    {
      USB_LowEnd_Controller controller;
      const auto [writeHandle, readHandle] = platform_.openDevice();
      ControllerTestPeer::deviceWrite(controller) = writeHandle;
      ControllerTestPeer::deviceRead(controller) = readHandle;
      before = calls(trouble);
      trouble.arrange(platform_, k);
      runBothSides(controller);
    }
    outcome_.reached = calls(trouble) - before >= k;
    lookAround();
    return outcome_;
  }

 private:
  template <typename Action>
  static End endOf(Action action) {
    try {
      action();
    } catch (const DeviceExhausted&) {
      return End::kLeftReading;
    } catch (const std::exception&) {
      return End::kThrew;
    }
    return End::kReturned;
  }

  int calls(const Trouble& trouble) const {
    return trouble.ofAnyFunction ? platform_.callCount() : platform_.deviceCallCount();
  }

  void runBothSides(USB_LowEnd_Controller& controller) {
    bool errorShown = false;
    outcome_.job = endOf([&] {
      outcome_.result =
          controller.doScan(settings_, platform_.callback(), folder_.path().wstring(), errorShown);
    });
    outcome_.workerStarted = !platform_.threads.empty();
    if (!outcome_.workerStarted) return;
    outcome_.worker = endOf([&] { outcome_.workerResult = platform_.threads.front()(); });
  }

  void lookAround() {
    outcome_.notifications = platform_.notifications();
    outcome_.problems = platform_.problems();
    outcome_.leftBehind = platform_.liveObjects("handle");
    for (const std::string& file : folder_.fileNames()) {
      if (file == "temp.bin") outcome_.leftBehind.push_back(file);
    }
    const Lines deviceCalls = platform_.calls({Kind::kDevice});
    if (!deviceCalls.empty()) outcome_.lastDeviceCall = deviceCalls.back();
  }

  FakePlatform platform_;
  const TemporaryFolder folder_;
  LowEndJobDevice device_;
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

// Files, if there are any, behind one NOTIFY_TRANSFER_STARTED, and the end behind them.
void expectFilesAndEnd(const Outcome& outcome, const std::string& end) {
  Lines heard = types(outcome.notifications);
  ASSERT_FALSE(heard.empty());
  EXPECT_EQ(heard.back(), end);
  heard.pop_back();
  if (heard.empty()) return;
  EXPECT_GE(heard.size(), 2U);
  EXPECT_EQ(heard.front(), "1004");
  EXPECT_EQ(std::count(heard.begin() + 1, heard.end(), "1005"),
            static_cast<std::ptrdiff_t>(heard.size() - 1));
}

void expectEndOfTheWorker(const Outcome& outcome) {
  ASSERT_NE(outcome.worker, End::kThrew);
  if (outcome.worker == End::kLeftReading) {
    // The worker was still in its first phase, in which it says nothing.
    EXPECT_EQ(outcome.notifications, Lines{});
    EXPECT_TRUE(outcome.lastDeviceCall.starts_with("Read ")) << outcome.lastDeviceCall;
    return;
  }
  switch (outcome.workerResult) {
    case 15009:
      expectFilesAndEnd(outcome, "1006");
      EXPECT_GE(outcome.notifications.size(), 3U);
      break;
    case 15015:
      EXPECT_EQ(outcome.notifications, Lines{"1011"});
      break;
    case 15007:
      expectFilesAndEnd(outcome, "1011");
      break;
    default:
      ADD_FAILURE() << outcome.workerResult;
  }
}

void expectEndWithoutWorker(const Outcome& outcome) {
  switch (outcome.job) {
    case End::kThrew:
      // A document that is none goes to the caller and to nobody else.
      EXPECT_EQ(outcome.notifications, Lines{});
      break;
    case End::kLeftReading:
      EXPECT_EQ(outcome.notifications, Lines{});
      EXPECT_TRUE(outcome.lastDeviceCall.starts_with("Read ")) << outcome.lastDeviceCall;
      break;
    case End::kReturned:
      // Without texts every report is a 1011, and a refusal has two; a worker that could not be
      // started is told by 1021.
      if (outcome.result == 0) {
        EXPECT_EQ(outcome.notifications, Lines{"1021"});
      } else {
        EXPECT_EQ(outcome.result, 1);
        EXPECT_TRUE(outcome.notifications == Lines{"1011"} ||
                    outcome.notifications == (Lines{"1011", "1011"}));
      }
      break;
    case End::kNotRun:
      ADD_FAILURE();
  }
}

void expectDefinedEnd(const Outcome& outcome, const Trouble& trouble) {
  EXPECT_EQ(outcome.problems, Lines{});
  EXPECT_EQ(outcome.missingFiles, Lines{});
  if (outcome.workerStarted) {
    EXPECT_EQ(outcome.job, End::kReturned);
    EXPECT_EQ(outcome.result, 0);
    expectEndOfTheWorker(outcome);
  } else {
    expectEndWithoutWorker(outcome);
  }
  // What the failed call itself was to give back, and the thread that is still running.
  const std::size_t mayStay =
      (trouble.ofAnyFunction ? 1U : 0U) + (outcome.worker == End::kLeftReading ? 1U : 0U);
  EXPECT_LE(outcome.leftBehind.size(), mayStay);
}

void expectSameEnd(const Outcome& outcome, const Outcome& untouched) {
  EXPECT_EQ(outcome.job, untouched.job);
  EXPECT_EQ(outcome.result, untouched.result);
  EXPECT_EQ(outcome.worker, untouched.worker);
  EXPECT_EQ(outcome.workerResult, untouched.workerResult);
  EXPECT_EQ(types(outcome.notifications), types(untouched.notifications));
  EXPECT_EQ(outcome.leftBehind, Lines{});
}

constexpr int kFarBeyondAnyJob = 5000;

class LowEndFailureSweep : public ::testing::TestWithParam<std::tuple<std::size_t, std::size_t>> {};

TEST_P(LowEndFailureSweep, EveryCallInTurnEndsTheJobInADefinedWay) {
  const LowEndJobShape& shape = kShapes[std::get<0>(GetParam())];
  const Trouble& trouble = kTroubles[std::get<1>(GetParam())];
  const Outcome untouched = JobRun(shape).go(trouble, kFarBeyondAnyJob);
  int k = 1;
  for (; k < kFarBeyondAnyJob; ++k) {
    SCOPED_TRACE("call " + std::to_string(k));
    const Outcome outcome = JobRun(shape).go(trouble, k);
    expectDefinedEnd(outcome, trouble);
    if (!outcome.reached) {
      expectSameEnd(outcome, untouched);
      break;
    }
    if (HasFailure()) return;
  }
  // Even a refused job has its three exchanges: the sweep has seen the whole of it.
  EXPECT_GT(k, 18);
  EXPECT_LT(k, kFarBeyondAnyJob);
}

std::string caseName(const ::testing::TestParamInfo<std::tuple<std::size_t, std::size_t>>& info) {
  return std::string(kShapes[std::get<0>(info.param)].name) +
         kTroubles[std::get<1>(info.param)].name;
}

INSTANTIATE_TEST_SUITE_P(Shapes, LowEndFailureSweep,
                         ::testing::Combine(::testing::Range<std::size_t>(0, std::size(kShapes)),
                                            ::testing::Range<std::size_t>(0, std::size(kTroubles))),
                         caseName);

TEST(LowEndFailureSweep, AnUntouchedJobOfEachShapeHasItsEnd) {
  const struct {
    long result;
    unsigned workerResult;
    Lines told;
  } kEnds[] = {
      {0, 15009, {"1004", "1005", "1006"}},
      {0, 15009, {"1004", "1005", "1005", "1005", "1006"}},
      {0, 15009, {"1004", "1005", "1005", "1006"}},
      {0, 15009, {"1004", "1005", "1006"}},
      {0, 15015, {"1011"}},
      {1, 0, {"1011", "1011"}},
      {1, 0, {"1011"}},
  };
  ASSERT_EQ(std::size(kEnds), std::size(kShapes));
  for (std::size_t i = 0; i < std::size(kShapes); ++i) {
    SCOPED_TRACE(kShapes[i].name);
    const Outcome outcome = JobRun(kShapes[i]).go(kTroubles[0], kFarBeyondAnyJob);
    EXPECT_FALSE(outcome.reached);
    EXPECT_EQ(outcome.result, kEnds[i].result);
    EXPECT_EQ(outcome.workerResult, kEnds[i].workerResult);
    EXPECT_EQ(types(outcome.notifications), kEnds[i].told);
    EXPECT_EQ(outcome.leftBehind, Lines{});
  }
}

TEST(LowEndFailureSweep, NoFlushMattersToAJob) {
  for (const LowEndJobShape& shape : kShapes) {
    SCOPED_TRACE(shape.name);
    const Outcome untouched = JobRun(shape).go(kTroubles[0], kFarBeyondAnyJob);
    const Trouble noFlush = {"NoFlush", false,
                             [](FakePlatform& p, int) { p.failEveryCall("FlushFileBuffers"); }};
    expectSameEnd(JobRun(shape).go(noFlush, 1), untouched);
  }
}

}  // namespace
}  // namespace tvrscn::test
