// QZ jobs that memory runs out on: each place has its own answer to it.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/allocation.h"
#include "tests/support/qz_test.h"
#include "tvrscn/scan_client.h"
#include "tvrscn/tevrautil/gdi_wrapper.h"

namespace {

using tvrscn::test::Kind;
using tvrscn::test::kRead;
using tvrscn::test::Lines;
using tvrscn::test::QZDialogue;
using tvrscn::test::QZTest;
using tvrscn::test::RefusedAllocations;

// Lengths that a header can announce and that are refused here.
constexpr std::uint32_t kTooMuch[] = {0x00100000U, 0x7FFFFFFFU, 0xFFFFFFF8U, 0xFFFFFFFFU};

class QZJobMemory : public QZTest {
 protected:
  QZJobMemory() { hideDialogs(); }

  void expectFailedJob(const Lines& notifications) {
    {
      const RefusedAllocations refused(1U << 20U, SIZE_MAX);
      EXPECT_EQ(scan(), 1);
      EXPECT_EQ(RefusedAllocations::count(), 1);
    }
    EXPECT_EQ(platform.notifications(), notifications);
    EXPECT_EQ(device.problems(), Lines{});
    device.forget();
    platform.forgetCalls();
  }
};

TEST_F(QZJobMemory, ImageThatCannotBeHeldIsAFailedReadAndKeepsWhatCame) {
  for (const std::uint32_t length : kTooMuch) {
    SCOPED_TRACE(length);
    device.openFlatbed().setUp().readRequest().replyHeader(kRead, length, {0, 3});
    expectFailedJob({"1011"});
    EXPECT_EQ(Peer::imageBytes(controller), nullptr);
  }
  device.openFlatbed().setUp().readImage(2, "01 02").readRequest();
  device.replyHeader(kRead, 0xFFFFFFFFU, {0, 2});
  expectFailedJob({"1011"});
  EXPECT_EQ(Peer::imageSize(controller), 2U);
}

// Without imaging the READ has a result of its own, and the page stays without number and word.
class QZImagingMemory : public QZJobMemory {
 protected:
  // From the making of the path on, nothing of the wrapper's size can be had.
  void refuseTheWrapper() {
    platform.onCall("MultiByteToWideChar", 2,
                    [this] { refused_.emplace(sizeof(GdiWrapper), sizeof(GdiWrapper)); });
  }
  void allowAll() {
    EXPECT_EQ(RefusedAllocations::count(), 1);
    refused_.reset();
  }

  std::optional<RefusedAllocations> refused_;
};

TEST_F(QZImagingMemory, WrapperThatCannotBeMadeIsTheResultOfTheRead) {
  CQZUSBScanDataSource& source = prepareJob();
  DataSourceTestPeer::needImageProcessing(source) = true;
  refuseTheWrapper();
  device.readImage(3, "01");
  EXPECT_EQ(Peer::read(controller), 1018);
  allowAll();
  EXPECT_EQ(platform.calls({Kind::kImaging, Kind::kNotification, Kind::kLog}), Lines{});
  EXPECT_EQ(folder.fileNames().size(), 1U);
  EXPECT_EQ(Peer::imageBytes(controller), nullptr);
  // The number is used again.
  device.readImage(3, "02");
  EXPECT_EQ(Peer::read(controller), 0);
  EXPECT_EQ(folder.fileNames().size(), 1U);
  EXPECT_EQ(platform.notifications().size(), 2U);
}

TEST_F(QZImagingMemory, WrapperThatCannotBeMadeFailsTheChainAndTheJob) {
  settings_.contrast = L"100";
  refuseTheWrapper();
  device.openFlatbed().setUp().readImage(2, "01").readImage(3, "02");
  EXPECT_EQ(scan(), 1);
  allowAll();
  EXPECT_EQ(platform.notifications(), Lines{"1011"});
}

TEST_F(QZJobMemory, MutexThatCannotBeMadeIsAJobThatDidNothing) {
  {
    const RefusedAllocations refused(sizeof(XMutex), sizeof(XMutex));
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(RefusedAllocations::count(), 1);
  }
  EXPECT_EQ(platform.calls(), Lines{});
  EXPECT_EQ(controller.GetUSBScanDataSource(), nullptr);
  device.openFlatbed().flatbedPage().close();
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(platform.notifications().size(), 3U);
}

TEST_F(QZJobMemory, ControllerThatCannotBeMadeLeavesTheClientWithoutOne) {
  const RefusedAllocations refused(sizeof(USB_QZ_Controller), sizeof(USB_QZ_Controller));
  CScanUSBClient client(CONTROLLER_QZ);
  EXPECT_EQ(RefusedAllocations::count(), 1);
  EXPECT_EQ(ClientTestPeer::controller(client), nullptr);
}

}  // namespace
