// The scanner as a device of this system: its socket with raw frames, its registration, and its
// end.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/virtual/support/images.h"
#include "tests/virtual/support/raw_host.h"
#include "virtual/virtual_scanner.h"

namespace tvrscn::virtual_device {
namespace {

using std::chrono::steady_clock;
using ::testing::AllOf;
using testing::Frame;
using ::testing::HasSubstr;
using testing::RawHost;

constexpr std::chrono::seconds kPrompt{2};

const Frame kInquiry = {4, 0, 0, 0, 0x1B, 0xA8, 0x12, 0x00};
const Frame kReserve = {4, 0, 0, 0, 0x1B, 0xA8, 0x16, 0x00};
const Frame kPosition = {4, 0, 0, 0, 0x1B, 0xA8, 0x31, 0x00};
const Frame kRead = {4, 0, 0, 0, 0x1B, 0xA8, 0x28, 0x00};
const Frame kReadImage = {4, 0, 0, 0, 0x1B, 0xA8, 0x29, 0x00};
// 1 by 1 inch at 75 dpi in colour from the flatbed.
const Frame kWindow = {25,   0,    0,    0,    0x1B, 0xA8, 0x24, 0x13, 0x30, 0x00,
                       0x00, 0x04, 0xB0, 0x00, 0x00, 0x04, 0xB0, 0x00, 0x00, 0x00,
                       0x00, 0x00, 0x00, 0x05, 0x06, 0x01, 0x15, 0x40, 0x01};

std::unique_ptr<RunningScanner> startWith(const std::string& fault) {
  HpScannerOptions options;
  if (!fault.empty()) {
    EXPECT_EQ(addHpFault(options, fault), "");
  }
  return startHpScanner(options, Placement{});
}

// Stops the scanner and waits for it, by which the test fails instead of hanging.
void expectPromptStop(RunningScanner& scanner) {
  const steady_clock::time_point start = steady_clock::now();
  scanner.stop();
  scanner.wait();
  EXPECT_LT(steady_clock::now() - start, kPrompt);
}

TEST(RunningScanner, ServesOneHostAfterAnother) {
  const std::unique_ptr<RunningScanner> scanner = startWith("");
  for (int round = 0; round < 3; ++round) {
    RawHost host(scanner->placement().socket);
    ASSERT_TRUE(host.isConnected());
    host.write(kInquiry);
    EXPECT_EQ(host.read(4), (Frame{72, 0, 0, 0}));
    EXPECT_EQ(host.read(72), Frame(72, 0));
    host.write(kReserve);
    EXPECT_EQ(host.read(12), (Frame{8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  }
}

TEST(RunningScanner, ASecondHostWaitsForTheFirstToGo) {
  const std::unique_ptr<RunningScanner> scanner = startWith("");
  RawHost first(scanner->placement().socket);
  first.write(kReserve);
  first.readFrame();
  RawHost second(scanner->placement().socket);
  ASSERT_TRUE(second.isConnected());
  second.write(kInquiry);
  EXPECT_TRUE(second.read(1, std::chrono::milliseconds(100)).empty());
  first.hangUp();
  EXPECT_EQ(second.readFrame().size(), 72U);
}

TEST(RunningScanner, SendsEachBlockAsOneFrame) {
  const std::unique_ptr<RunningScanner> scanner = startWith("");
  RawHost host(scanner->placement().socket);
  host.write(kReserve);
  EXPECT_EQ(host.readFrame().size(), 8U);
  host.write(kWindow);
  EXPECT_EQ(host.readFrame().size(), 32U);
  host.write(kPosition);
  EXPECT_EQ(host.readFrame(), Frame(6, 0));
  host.write(kRead);
  const Frame announced = host.readFrame();
  ASSERT_EQ(announced.size(), 20U);
  EXPECT_EQ(announced[3], 0x70);
  host.write(kReadImage);
  const Frame block = host.readFrame();
  EXPECT_EQ(block.size(),
            announced[4] * 16777216U + announced[5] * 65536U + announced[6] * 256U + announced[7]);
  const testing::Picture strip = testing::readJpegBytes(block);
  EXPECT_EQ(strip.width, 75);
  EXPECT_EQ(strip.height, announced[8] * 256 + announced[9]);
}

TEST(RunningScanner, ACommandInPiecesIsOneTransfer) {
  const std::unique_ptr<RunningScanner> scanner = startWith("");
  RawHost host(scanner->placement().socket);
  for (const std::uint8_t byte : kReserve) {
    host.write({byte});
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  EXPECT_EQ(host.readFrame(), Frame(8, 0));
}

TEST(RunningScanner, AnEmptyTransferIsAnsweredAndAHugeOneEndsTheConnection) {
  const std::unique_ptr<RunningScanner> scanner = startWith("");
  RawHost host(scanner->placement().socket);
  host.write({0, 0, 0, 0});
  EXPECT_EQ(host.readFrame(), (Frame{0x00, 0x02, 0x02}));
  host.write({0xFF, 0xFF, 0xFF, 0x7F});
  EXPECT_TRUE(host.isHungUp());
  RawHost next(scanner->placement().socket);
  next.write(kInquiry);
  EXPECT_EQ(next.readFrame().size(), 72U);
}

TEST(RunningScanner, AFailedReadIsTheLengthOfAllOnes) {
  const std::unique_ptr<RunningScanner> scanner = startWith("failed-read@inquiry");
  RawHost host(scanner->placement().socket);
  host.write(kInquiry);
  EXPECT_EQ(host.read(4), (Frame{0xFF, 0xFF, 0xFF, 0xFF}));
  host.write(kInquiry);
  EXPECT_EQ(host.readFrame().size(), 72U);
}

TEST(RunningScanner, AnEmptyAnswerIsAFrameOfLengthZero) {
  const std::unique_ptr<RunningScanner> scanner = startWith("short@inquiry=0");
  RawHost host(scanner->placement().socket);
  host.write(kInquiry);
  EXPECT_EQ(host.read(4), (Frame{0, 0, 0, 0}));
}

TEST(RunningScanner, ADropLeavesAFrameUnfinished) {
  const std::unique_ptr<RunningScanner> scanner = startWith("drop=1");
  RawHost host(scanner->placement().socket);
  for (const Frame& command : {kReserve, kWindow, kPosition, kRead, kReadImage, kRead}) {
    host.write(command);
    ASSERT_FALSE(host.readFrame().empty());
  }
  host.write(kReadImage);
  const std::uint32_t length = host.readLength();
  const Frame part = host.read(length);
  EXPECT_EQ(part.size(), length / 2);
  EXPECT_TRUE(host.isHungUp());
  RawHost next(scanner->placement().socket);
  next.write(kInquiry);
  EXPECT_EQ(next.readFrame().size(), 72U);
}

TEST(RunningScanner, StoppingEndsAStall) {
  const std::unique_ptr<RunningScanner> scanner = startWith("stall@inquiry");
  RawHost host(scanner->placement().socket);
  host.write(kInquiry);
  EXPECT_TRUE(host.read(1, std::chrono::milliseconds(50)).empty());
  expectPromptStop(*scanner);
  EXPECT_TRUE(host.isHungUp());
}

TEST(RunningScanner, AStallEndsWhenTheHostGoes) {
  const std::unique_ptr<RunningScanner> scanner = startWith("stall@reserve");
  {
    RawHost host(scanner->placement().socket);
    host.write(kReserve);
    EXPECT_TRUE(host.read(1, std::chrono::milliseconds(50)).empty());
  }
  RawHost next(scanner->placement().socket);
  next.write(kInquiry);
  EXPECT_EQ(next.readFrame().size(), 72U);
}

TEST(RunningScanner, StoppingEndsASlowAnswer) {
  const std::unique_ptr<RunningScanner> scanner = startWith("slow=600000");
  RawHost host(scanner->placement().socket);
  host.write(kInquiry);
  EXPECT_TRUE(host.read(1, std::chrono::milliseconds(50)).empty());
  expectPromptStop(*scanner);
}

TEST(RunningScanner, ASlowAnswerComesLate) {
  const std::unique_ptr<RunningScanner> scanner = startWith("slow=120");
  RawHost host(scanner->placement().socket);
  const steady_clock::time_point start = steady_clock::now();
  host.write(kInquiry);
  EXPECT_EQ(host.readFrame().size(), 72U);
  EXPECT_GE(steady_clock::now() - start, std::chrono::milliseconds(120));
}

TEST(RunningScanner, StoppingEndsAnAnswerThatNobodyReads) {
  const std::unique_ptr<RunningScanner> scanner = startWith("");
  RawHost host(scanner->placement().socket);
  // Answers pile up until the socket is full, and then the host stops asking.
  Frame inquiries;
  for (int i = 0; i < 4000; ++i) {
    inquiries.insert(inquiries.end(), kInquiry.begin(), kInquiry.end());
  }
  host.write(inquiries);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  expectPromptStop(*scanner);
}

TEST(RunningScanner, WaitReturnsOnlyAfterStop) {
  const std::unique_ptr<RunningScanner> scanner = startWith("");
  std::future<void> waiting = std::async(std::launch::async, [&] { scanner->wait(); });
  EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  scanner->stop();
  scanner->stop();
  EXPECT_EQ(waiting.wait_for(kPrompt), std::future_status::ready);
}

TEST(RunningScanner, RegistersForAsLongAsItRuns) {
  const testing::TestFolder folder;
  Placement placement;
  placement.socket = folder / "hp.sock";
  placement.deviceFolder = folder / "some" / "devices";
  placement.name = "desk";
  placement.instanceId = "USB\\VID_0A7E&PID_0001&MI_00\\X1";
  std::unique_ptr<RunningScanner> scanner = startHpScanner({}, placement);
  const std::filesystem::path entry = placement.deviceFolder / "desk.device";
  EXPECT_EQ(testing::contentOf(entry),
            "InstanceId=USB\\VID_0A7E&PID_0001&MI_00\\X1\n"
            "Driver={6BDD1FC6-810F-11D0-BEC7-08002BE2092F}\\desk\n"
            "CreateFileName=unix:" +
                (folder / "hp.sock").string() + "\n");
  int files = 0;
  for ([[maybe_unused]] const auto& file :
       std::filesystem::directory_iterator(placement.deviceFolder)) {
    ++files;
  }
  EXPECT_EQ(files, 1) << "no draft stays behind";
  scanner.reset();
  EXPECT_FALSE(std::filesystem::exists(entry));
  EXPECT_FALSE(std::filesystem::exists(placement.socket));
  EXPECT_TRUE(std::filesystem::exists(placement.deviceFolder));
}

TEST(RunningScanner, IsOutOfTheDeviceTreeOnceStopped) {
  const std::unique_ptr<RunningScanner> scanner = startWith("");
  const std::filesystem::path entry =
      scanner->placement().deviceFolder / (scanner->placement().name + ".device");
  EXPECT_TRUE(std::filesystem::exists(entry));
  expectPromptStop(*scanner);
  EXPECT_FALSE(std::filesystem::exists(entry));
}

TEST(RunningScanner, ChoosesAPrivateFolderThatGoesWithIt) {
  std::unique_ptr<RunningScanner> scanner = startWith("");
  const Placement placement = scanner->placement();
  const std::filesystem::path folder = placement.socket.parent_path();
  EXPECT_TRUE(placement.socket.is_absolute());
  EXPECT_EQ(placement.deviceFolder.parent_path(), folder);
  EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms::owner_all);
  scanner.reset();
  EXPECT_FALSE(std::filesystem::exists(folder));
}

std::string startError(const HpScannerOptions& options, const Placement& placement) {
  try {
    startHpScanner(options, placement);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "no error";
}

TEST(RunningScanner, ReplacesAStaleSocketButNothingElse) {
  const testing::TestFolder folder;
  Placement placement;
  placement.socket = folder / "hp.sock";
  placement.deviceFolder = folder / "devices";
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, placement.socket.c_str(), sizeof address.sun_path - 1);
  const int stale = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(stale, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  close(stale);
  ASSERT_TRUE(std::filesystem::exists(placement.socket));
  {
    const std::unique_ptr<RunningScanner> scanner = startHpScanner({}, placement);
    RawHost host(placement.socket);
    EXPECT_TRUE(host.isConnected());
    EXPECT_THAT(startError({}, placement), HasSubstr("another program listens there"));
    RawHost second(placement.socket);
    EXPECT_TRUE(second.isConnected()) << "the first scanner still stands";
  }
  std::ofstream(placement.socket) << "mine";
  EXPECT_THAT(startError({}, placement), HasSubstr("something else is there"));
  EXPECT_EQ(testing::contentOf(placement.socket), "mine");
}

TEST(RunningScanner, ErrorsNameTheThingAndTheRemedy) {
  const testing::TestFolder folder;
  Placement placement;
  placement.socket = folder / std::string(120, 'x');
  EXPECT_THAT(startError({}, placement), AllOf(HasSubstr("xxx"), HasSubstr("too long")));
  placement = {};
  placement.socket = folder / "missing" / "hp.sock";
  EXPECT_THAT(startError({}, placement),
              AllOf(HasSubstr("missing/hp.sock"), HasSubstr("give a path")));
  placement = {};
  std::ofstream(folder / "file") << "x";
  placement.deviceFolder = folder / "file";
  EXPECT_THAT(startError({}, placement), HasSubstr("give a device folder"));
  placement = {};
  placement.name = "a/b";
  EXPECT_THAT(startError({}, placement), HasSubstr("plain file name"));
  placement = {};
  placement.instanceId = "USB\nDriver=x";
  EXPECT_THAT(startError({}, placement), HasSubstr("single lines"));
  HpScannerOptions options;
  options.pageFiles = {folder / "gone.png"};
  EXPECT_THAT(startError(options, {}),
              AllOf(HasSubstr("gone.png"), HasSubstr("JPEG, PNG or TIFF")));
}

}  // namespace
}  // namespace tvrscn::virtual_device
