// What happens when memory runs out at the places that have an answer to it.
#include <csignal>
#include <cstdint>
#include <memory>
#include <span>

#include <gtest/gtest.h>

#include "tests/support/allocation.h"
#include "tests/support/platform_test.h"
#include "tvrscn/scan_client.h"

namespace {

using tvrscn::test::HPTest;
using tvrscn::test::Lines;
using tvrscn::test::PlatformTest;
using tvrscn::test::RefusedAllocations;

class BlockMemory : public HPTest {
 protected:
  // A flatbed job in which no block of a megabyte and more can be had.
  long scanWithoutBigBlocks() {
    const RefusedAllocations refused(1U << 20U, SIZE_MAX);
    const long result = scan();
    EXPECT_EQ(RefusedAllocations::count(), 1);
    return result;
  }
};

TEST_F(BlockMemory, BlockThatCannotBeHeldEndsThePage) {
  for (const std::uint32_t size : {0x00100000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    platform.forgetCalls();
    device.openFlatbed().position().block(0x70, "01").announce(0, 0x80, size, 8, 16).close();
    EXPECT_EQ(scanWithoutBigBlocks(), 1) << size;
    EXPECT_EQ(platform.notifications(), Lines{"1011"});
    EXPECT_EQ(device.problems(), Lines{});
  }
}

TEST_F(BlockMemory, PagesBeforeStayValid) {
  device.openFeeder().position().page();
  device.position().announce(0, 0x70, 0xFFFFFFFFU, 8, 16);
  device.close();
  EXPECT_EQ(scanWithoutBigBlocks(), 0);
  EXPECT_EQ(folder.fileNames().size(), 1U);
}

using ControllerMemoryDeathTest = PlatformTest;

TEST_F(ControllerMemoryDeathTest, ClientWithoutControllerIsBuiltAndUnserved) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  std::unique_ptr<CScanUSBClient> client;
  {
    const RefusedAllocations refused(sizeof(USB_HP_Controller), sizeof(USB_HP_Controller));
    client = std::make_unique<CScanUSBClient>(CONTROLLER_HP);
    EXPECT_EQ(RefusedAllocations::count(), 1);
  }
  EXPECT_EQ(ClientTestPeer::controller(*client), nullptr);
  EXPECT_EXIT(client->SetUsingTevraUI(1), ::testing::KilledBySignal(SIGABRT), "[a-z]+");
}

TEST_F(PlatformTest, MutexThatCannotBeHadIsNull) {
  USB_HP_Controller controller;
  {
    const RefusedAllocations refused(sizeof(XMutex), sizeof(XMutex));
    EXPECT_EQ(controller.GetMutexPtr(), nullptr);
  }
  EXPECT_NE(controller.GetMutexPtr(), nullptr);
}

}  // namespace
