// Jobs of several processes: one at a time, in turn. The others are this program once more, each
// with a scanner of its own.
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/e2e/e2e_support.h"
#include "tvrscn/tevrautil/named_mutex.h"

namespace tvrscn::test {
namespace {

using virtual_device::addQzFault;
using virtual_device::QzScannerOptions;
using Clock = std::chrono::steady_clock;
using Types = std::vector<NotificationType>;

bool isTaken() {
  return !XMutex(L"MutexUSB").WaitWithRetry(0, 1);
}

class QzTurns : public ScannerTest {
 protected:
  // Another process whose job runs when this returns.
  void startOther(const char* fault) {
    QzScannerOptions options;
    ASSERT_EQ(addQzFault(options, fault), "");
    virtual_device::Placement placement = virtual_device::qzPlacement();
    placement.instanceId = "USB\\" + qzDevice().hardwareId + "\\OTHER";
    placement.name = "other";
    placement.deviceFolder = folder_ / "devices";
    otherScanner_ = virtual_device::startQzScanner(options, placement);
    setVariable("TVRSCN_DEVICE_PATH", otherScanner_->placement().deviceFolder.string());
    fs::create_directories(otherPages_);
    other_ = std::make_unique<ChildProcess>(
        oneJobArguments(otherPages_, {CONTROLLER_QZ, placement.instanceId}));
    constexpr std::chrono::seconds kPatience{20};
    const auto deadline = Clock::now() + kPatience;
    while (!isTaken() && Clock::now() < deadline)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ASSERT_TRUE(isTaken()) << "the other process does not scan";
    QzScannerOptions own;
    startQz(own);
  }
  void TearDown() override {
    other_.reset();
    otherScanner_.reset();
    ScannerTest::TearDown();
  }

  const fs::path otherPages_ = folder_ / "other";
  std::unique_ptr<virtual_device::RunningScanner> otherScanner_;
  std::unique_ptr<ChildProcess> other_;
};

const Types kOnePage = {NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY, NOTIFY_JOB_COMPLETE};

TEST_F(QzTurns, SecondJobWaitsForTheFirst) {
  startOther("slow=60");
  EXPECT_TRUE(fs::is_empty(otherPages_)) << "the other job was too quick for this test";
  EXPECT_EQ(scan(smallJob()), 0);
  EXPECT_EQ(types(), kOnePage);
  EXPECT_FALSE(fs::is_empty(otherPages_)) << "this job did not wait";
  EXPECT_EQ(other_->wait(), 0);
  EXPECT_FALSE(isTaken());
}

TEST_F(QzTurns, JobWhoseHolderIsKilledGetsItsTurn) {
  startOther("stall@scan");
  std::thread killer([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    other_->kill();
  });
  EXPECT_EQ(scan(smallJob()), 0);
  killer.join();
  EXPECT_EQ(types(), kOnePage);
}

TEST_F(QzTurns, JobThatGetsNoTurnIsNotDoneAndSaysNothing) {
  startOther("stall@scan");
  const auto start = Clock::now();
  EXPECT_EQ(scan(smallJob()), 0);
  const auto waited = Clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(9900));
  EXPECT_LT(waited, std::chrono::milliseconds(15000));
  EXPECT_EQ(types(), Types{});
  EXPECT_TRUE(fs::is_empty(out_));
  EXPECT_TRUE(logLines().empty());
  EXPECT_TRUE(other_->isRunning());
}

}  // namespace
}  // namespace tvrscn::test
