// What the QZ wire does when memory runs out.
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/allocation.h"
#include "tests/support/qz_test.h"

namespace {

using tvrscn::test::Kind;
using tvrscn::test::kRead;
using tvrscn::test::kTestUnitReady;
using tvrscn::test::Lines;
using tvrscn::test::QZTest;
using tvrscn::test::RefusedAllocations;

class QZMemory : public QZTest {
 protected:
  QZMemory() { prepareJob(); }
};

TEST_F(QZMemory, PacketThatCannotBeHadIsToldOnTheConsoleAndNotSent) {
  // Header, payload and one byte.
  const struct {
    std::size_t packet;
    int (*send)(USB_QZ_Controller&);
  } kCases[] = {{9, Peer::testUnitReady}, {13, Peer::read}, {65, Peer::modeSelect}};
  for (const auto& row : kCases) {
    platform.forgetCalls();
    testing::internal::CaptureStdout();
    int result = 0;
    {
      const RefusedAllocations refused(row.packet, row.packet);
      result = row.send(controller);
      EXPECT_EQ(RefusedAllocations::count(), 1) << row.packet;
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "writeRequest: Failed to malloc packet.\n");
    EXPECT_EQ(result, 15001) << row.packet;
    EXPECT_EQ(platform.calls({Kind::kDevice}), (Lines{"Flush write", "Flush read"}));
  }
}

TEST_F(QZMemory, ReplyThatCannotBeHeldIsAFailedRead) {
  for (const std::uint32_t length :
       {0x00100000U, 0x7FFFFFFFU, 0xFFFFFFF7U, 0xFFFFFFF8U, 0xFFFFFFFFU}) {
    platform.forgetCalls();
    device.request(kTestUnitReady).replyHeader(kRead, length, {0, 3});
    const RefusedAllocations refused(1U << 20U, SIZE_MAX);
    EXPECT_EQ(Peer::testUnitReady(controller), 15002) << length;
    EXPECT_EQ(RefusedAllocations::count(), 1) << length;
    EXPECT_EQ(platform.calls({Kind::kDevice}),
              (Lines{"Flush write", "Flush read", "Write 05 C1 00 00 00 00 00 00", "Read 8"}));
  }
}

TEST_F(QZMemory, ReplyThatCannotBeHeldFailsTheChainAboveIt) {
  device.readImage(2, "70").readRequest().replyHeader(kRead, 0x00100000U, {0, 3});
  const RefusedAllocations refused(1U << 20U, SIZE_MAX);
  EXPECT_EQ(Peer::read(controller), 15002);
  EXPECT_EQ(Peer::imageSize(controller), 1U);
}

}  // namespace
