// The QZ scanner as a device of this system: where it registers, one job over its socket, and a
// second host that has to wait.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/support/images.h"
#include "tests/virtual/support/qz_host.h"
#include "tests/virtual/support/raw_host.h"
#include "virtual/virtual_qz_scanner.h"

namespace tvrscn::virtual_device {
namespace {

namespace qz = testing::qz;
using testing::Frame;
using testing::RawHost;
using testing::TestFolder;

// The length in front, four bytes with the low one first.
void write(RawHost& host, const Bytes& transfer) {
  Frame frame = {static_cast<std::uint8_t>(transfer.size() % 256),
                 static_cast<std::uint8_t>(transfer.size() / 256), 0, 0};
  frame.insert(frame.end(), transfer.begin(), transfer.end());
  host.write(frame);
}

TEST(RunningQzScanner, RegistersUnderItsOwnName) {
  const TestFolder folder;
  Placement placement = qzPlacement();
  placement.socket = folder / "qz.sock";
  placement.deviceFolder = folder.path();
  const std::unique_ptr<RunningScanner> scanner = startQzScanner({}, placement);
  EXPECT_EQ(testing::contentOf(folder / "virtual-qz.device"),
            "InstanceId=USB\\VID_0A7E&PID_1C5A&MI_02\\VIRTUALQZ01\n"
            "Driver={6BDD1FC6-810F-11D0-BEC7-08002BE2092F}\\virtual-qz\n"
            "CreateFileName=unix:" +
                (folder / "qz.sock").string() + "\n");
}

TEST(RunningQzScanner, ServesAJobInHeadersAndData) {
  const std::unique_ptr<RunningScanner> scanner = startQzScanner({}, qzPlacement());
  RawHost host(scanner->placement().socket);
  for (const Bytes& request : qz::upToBlockHeader(qz::flatbed())) {
    write(host, request);
    const Frame header = host.readFrame();
    ASSERT_EQ(header.size(), 8U);
    EXPECT_EQ(header[1], request[1]);
    EXPECT_EQ(header[2], 0);
    if (header[7] != 0) {
      EXPECT_EQ(host.readFrame().size(), header[7]);
    }
  }
  write(host, qz::kRead);
  const Frame header = host.readFrame();
  const Frame page = host.readFrame();
  ASSERT_EQ(header.size(), 8U);
  EXPECT_EQ(header[6] * 256U + header[7], page.size());
  EXPECT_EQ(testing::readJpegBytes(page).height, 150);
}

TEST(RunningQzScanner, ASecondHostWaitsAndFindsTheUnitFree) {
  const std::unique_ptr<RunningScanner> scanner = startQzScanner({}, qzPlacement());
  RawHost first(scanner->placement().socket);
  RawHost second(scanner->placement().socket);
  for (const Bytes& request : {qz::kWakeUp, qz::reserve()}) {
    write(first, request);
    EXPECT_EQ(first.readFrame().at(2), 0);
  }
  write(second, qz::kWakeUp);
  EXPECT_EQ(second.read(1, std::chrono::milliseconds(50)), Frame());
  first.hangUp();
  EXPECT_EQ(second.readFrame(), (Frame{0x00, 0xC3, 0, 0, 0, 0, 0, 0}));
  write(second, qz::reserve(qz::reservation("other", "host")));
  EXPECT_EQ(second.readFrame(), (Frame{0x02, 0x16, 0, 1, 0, 0, 0, 0}));
}

TEST(RunningQzScanner, StoppingEndsASilentDevice) {
  QzScannerOptions options;
  ASSERT_EQ(addQzFault(options, "stall@wake-up"), "");
  std::unique_ptr<RunningScanner> scanner = startQzScanner(options, qzPlacement());
  RawHost host(scanner->placement().socket);
  write(host, qz::kWakeUp);
  scanner->stop();
  scanner->wait();
  scanner.reset();
  EXPECT_TRUE(host.isHungUp());
}

TEST(RunningQzScanner, BadOptionsAreTold) {
  QzScannerOptions options;
  options.jpegQuality = 101;
  EXPECT_THROW(startQzScanner(options, qzPlacement()), std::runtime_error);
}

}  // namespace
}  // namespace tvrscn::virtual_device
