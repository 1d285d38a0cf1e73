// The LowEnd scanner as a device of this system: where it registers, and one job over its socket.
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/support/images.h"
#include "tests/virtual/support/lowend_host.h"
#include "tests/virtual/support/raw_host.h"
#include "virtual/virtual_lowend_scanner.h"

namespace tvrscn::virtual_device {
namespace {

using testing::Frame;
using testing::RawHost;
using testing::TestFolder;
using testing::TransferBytes;

// The length in front, four bytes with the low one first.
Frame framed(const TransferBytes& transfer) {
  Frame frame = {static_cast<std::uint8_t>(transfer.size() % 256),
                 static_cast<std::uint8_t>(transfer.size() / 256), 0, 0};
  frame.insert(frame.end(), transfer.begin(), transfer.end());
  return frame;
}

TEST(RunningLowEndScanner, RegistersUnderItsOwnName) {
  const TestFolder folder;
  Placement placement = lowEndPlacement();
  placement.socket = folder / "le.sock";
  placement.deviceFolder = folder.path();
  const std::unique_ptr<RunningScanner> scanner = startLowEndScanner({}, placement);
  EXPECT_EQ(testing::contentOf(folder / "virtual-lowend.device"),
            "InstanceId=USB\\VID_0A7E&PID_1E4C&MI_00\\VIRTUALLE01\n"
            "Driver={6BDD1FC6-810F-11D0-BEC7-08002BE2092F}\\virtual-lowend\n"
            "CreateFileName=unix:" +
                (folder / "le.sock").string() + "\n");
}

TEST(RunningLowEndScanner, ServesAJobAndTheNextHost) {
  const std::unique_ptr<RunningScanner> scanner = startLowEndScanner({}, lowEndPlacement());
  for (int round = 0; round < 2; ++round) {
    RawHost host(scanner->placement().socket);
    ASSERT_TRUE(host.isConnected());
    host.write(framed(testing::kStatusRequest));
    EXPECT_EQ(testing::documentOf(host.readFrame())[0], '{');
    host.write(framed(testing::startRequest(testing::colorFields())));
    EXPECT_EQ(testing::documentOf(host.readFrame()),
              "{\"result\":\"Starting scan\",\"status\":204}");
    std::vector<TransferBytes> transfers;
    do {
      transfers.push_back(host.readFrame());
      ASSERT_GE(transfers.back().size(), 10U);
    } while (transfers.back()[8] == 0);
    const std::vector<TransferBytes> files = testing::StreamModel(transfers).files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(testing::readJpegBytes(files[0]).height, 150);
  }
}

TEST(RunningLowEndScanner, StoppingEndsASilentDevice) {
  LowEndScannerOptions options;
  ASSERT_EQ(addLowEndFault(options, "stall@status"), "");
  std::unique_ptr<RunningScanner> scanner = startLowEndScanner(options, lowEndPlacement());
  RawHost host(scanner->placement().socket);
  host.write(framed(testing::kCapabilityRequest));
  EXPECT_FALSE(host.readFrame().empty());
  host.write(framed(testing::kStatusRequest));
  scanner->stop();
  scanner->wait();
  scanner.reset();
  EXPECT_TRUE(host.isHungUp());
}

TEST(RunningLowEndScanner, BadOptionsAreTold) {
  LowEndScannerOptions options;
  options.jpegQuality = 101;
  EXPECT_THROW(startLowEndScanner(options, lowEndPlacement()), std::runtime_error);
}

}  // namespace
}  // namespace tvrscn::virtual_device
