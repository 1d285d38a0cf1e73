// LowEnd jobs whose device announces more than memory can hold: on the caller's thread the failed
// allocation goes to the caller, on the worker it is the end of the job.
#include <cstdint>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/allocation.h"
#include "tests/support/lowend_test.h"

namespace {

using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::lowEndHeader;
using tvrscn::test::LowEndTest;
using tvrscn::test::RefusedAllocations;

// The sizes that a header can announce and that are refused here.
constexpr std::uint32_t kTooMuch[] = {0x00100000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU};

class LowEndMemory : public LowEndTest {
 protected:
  void expectCallersException() {
    {
      const RefusedAllocations refused(1U << 20U, SIZE_MAX);
      EXPECT_THROW(scan(), std::bad_alloc);
      EXPECT_EQ(RefusedAllocations::count(), 1);
    }
    EXPECT_EQ(platform.calls({Kind::kLog, Kind::kNotification, Kind::kDialog}), Lines{});
    EXPECT_TRUE(platform.threads.empty());
  }
};

TEST_F(LowEndMemory, DocumentThatCannotBeHeldThrowsToTheCaller) {
  for (const std::uint32_t size : kTooMuch) {
    SCOPED_TRACE(size);
    device.request(3).answer(lowEndHeader(3, size));
    expectCallersException();
    device.features().request(4).answer(lowEndHeader(4, size));
    expectCallersException();
    device.features().status().startRequest().answer(lowEndHeader(1, size));
    expectCallersException();
  }
}

TEST_F(LowEndMemory, QueryThatCannotBeHeldThrowsToTheCaller) {
  IPPMinMaxNormalStepData range = {1, 2, 3, 4};
  device.request(3).answer(lowEndHeader(3, 0xFFFFFFFFU));
  const RefusedAllocations refused(1U << 20U, SIZE_MAX);
  EXPECT_THROW(controller.GetUSBBrightnessContrastValue(range, range), std::bad_alloc);
  EXPECT_EQ(range.Min + range.Max + range.Normal + range.Step, 10);
}

TEST_F(LowEndMemory, PacketThatCannotBeHeldEndsTheJob) {
  for (const std::uint32_t size : kTooMuch) {
    SCOPED_TRACE(size);
    device.open();
    EXPECT_EQ(scan(), 0);
    platform.forgetCalls();
    device.packet("\xFF\xD8\xFF\xE0").answer(lowEndHeader(2, size));
    {
      const RefusedAllocations refused(1U << 20U, SIZE_MAX);
      EXPECT_EQ(runWorker(), 15007U);
    }
    EXPECT_EQ(platform.calls({Kind::kLog, Kind::kNotification, Kind::kOpen}),
              (Lines{"Log std::bad_alloc", "Notify 1011",
                     "Log Sending FAILURE Notification to DS ...\n", "Close thread"}));
    EXPECT_EQ(folder.fileNames(), Lines{});
    EXPECT_EQ(Peer::threadArgs(controller), nullptr);
  }
}

}  // namespace
