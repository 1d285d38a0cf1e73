// One transaction of the QZ wire: packets out, flushes, replies in; and how READs follow one
// another.
#include <algorithm>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/qz_test.h"
#include "tests/support/small_stack.h"

namespace {

using tvrscn::test::Bytes;
using tvrscn::test::bytes;
using tvrscn::test::hex;
using tvrscn::test::Kind;
using tvrscn::test::kRead;
using tvrscn::test::kReadBlockHeader;
using tvrscn::test::kTestUnitReady;
using tvrscn::test::Lines;
using tvrscn::test::qzHeader;
using tvrscn::test::QZTest;
using tvrscn::test::ReadResult;
using tvrscn::test::runOnStack;

class QZTransport : public QZTest {
 protected:
  QZTransport() { prepareJob(); }

  int communicate(std::string_view header, char* payload, int length) {
    Bytes request = bytes(header);
    return Peer::communicate(controller, BasePeer::deviceWrite(controller),
                             reinterpret_cast<char*>(request.data()), payload, length);
  }
  Lines transfers() { return platform.calls({Kind::kDevice}); }
};

// --- One transaction
// ------------------------------------------------------------------------------

TEST_F(QZTransport, ExchangeIsFlushedOnBothSides) {
  device.expect("05 C1 00*6").answer("EE C1 00 00 00 00 00 02").answer("01 02");
  EXPECT_EQ(communicate("05 C1 00*6", nullptr, 0), 0);
  EXPECT_EQ(transfers(), (Lines{"Flush write", "Flush read", "Write 05 C1 00 00 00 00 00 00",
                                "Read 8", "Read 2", "Flush read", "Flush write"}));
}

TEST_F(QZTransport, RequestsGoOutOnTheHandleGiven) {
  const auto [other, unused] = platform.openDevice();
  device.expect("05 C1 00*6").answer("EE C1 00*6");
  Bytes request = bytes("05 C1 00*6");
  EXPECT_EQ(
      Peer::communicate(controller, other, reinterpret_cast<char*>(request.data()), nullptr, 0), 0);
  EXPECT_EQ(transfers(), (Lines{"Flush write2", "Flush read", "Write 05 C1 00 00 00 00 00 00",
                                "Read 8", "Flush read", "Flush write"}));
}

TEST_F(QZTransport, PayloadGoesOutBehindTheHeaderInOneTransfer) {
  Bytes payload = bytes("0A 0B 0C");
  device.expect("05 07 00 00 00 00 00 03 0A 0B 0C").answer("EE 07 00*6");
  EXPECT_EQ(communicate("05 07 00 00 00 00 00 03", reinterpret_cast<char*>(payload.data()), 3), 0);
}

TEST_F(QZTransport, NullPayloadGoesOutAsZeros) {
  device.expect("05 07 00 00 00 00 00 03 00 00 00").answer("EE 07 00*6");
  EXPECT_EQ(communicate("05 07 00 00 00 00 00 03", nullptr, 3), 0);
}

TEST_F(QZTransport, PayloadOfNoLengthIsNotSent) {
  Bytes payload = bytes("0A 0B 0C");
  device.expect("05 C1 00*6").answer("EE C1 00*6");
  EXPECT_EQ(communicate("05 C1 00*6", reinterpret_cast<char*>(payload.data()), 0), 0);
}

TEST_F(QZTransport, FailedWriteIsToldOnTheConsoleAndReadsNothing) {
  device.expectAndFail("05 C1 00*6");
  testing::internal::CaptureStdout();
  EXPECT_EQ(communicate("05 C1 00*6", nullptr, 0), 15005);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "writeRequest: Failed to write data to the printer\n");
  EXPECT_EQ(transfers(), (Lines{"Flush write", "Flush read", "Write 05 C1 00 00 00 00 00 00"}));
  EXPECT_EQ(platform.logLines(), Lines{});
}

TEST_F(QZTransport, ShortWriteIsNoFailure) {
  platform.shortDeviceCall(3, 5);
  device.expect("05 C1 00 00 00").answer("EE C1 00*6");
  EXPECT_EQ(communicate("05 C1 00*6", nullptr, 0), 0);
}

TEST_F(QZTransport, FailedFlushesAreNotLookedAt) {
  platform.failEveryCall("FlushFileBuffers");
  device.expect("05 C1 00*6").answer("EE C1 00*6");
  EXPECT_EQ(communicate("05 C1 00*6", nullptr, 0), 0);
}

TEST_F(QZTransport, FailedReadEndsWithoutAFlush) {
  device.expect("05 C1 00*6").failRead();
  EXPECT_EQ(communicate("05 C1 00*6", nullptr, 0), 15002);
  device.expect("05 C1 00*6").answer("EE C1 00 00 00 00 00 02").failRead();
  EXPECT_EQ(communicate("05 C1 00*6", nullptr, 0), 15002);
  EXPECT_EQ(transfers(), (Lines{"Flush write", "Flush read", "Write 05 C1 00 00 00 00 00 00",
                                "Read 8", "Flush write", "Flush read",
                                "Write 05 C1 00 00 00 00 00 00", "Read 8", "Read 2"}));
}

TEST_F(QZTransport, CheckConditionEndsWithoutAFlush) {
  device.expect("05 C1 00*6").answer("EE C1 02 00*5");
  EXPECT_EQ(communicate("05 C1 00*6", nullptr, 0), 15002);
  EXPECT_EQ(transfers(),
            (Lines{"Flush write", "Flush read", "Write 05 C1 00 00 00 00 00 00", "Read 8"}));
}

TEST_F(QZTransport, OtherStatusIsNoFailureOfTheTransaction) {
  device.expect("05 C1 00*6").answer("EE C1 18 00*5");
  EXPECT_EQ(communicate("05 C1 00*6", nullptr, 0), 0);
  EXPECT_EQ(Peer::operationStatus(controller), 24);
}

TEST_F(QZTransport, NegativeLengthIsRefusedBeforeAnythingIsSent) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(communicate("05 C1 00*6", nullptr, -1), 15001);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "writeRequest: Failed to malloc packet.\n");
  EXPECT_EQ(transfers(), (Lines{"Flush write", "Flush read"}));
}

// --- Chunks
// ---------------------------------------------------------------------------------------

class QZChunks : public QZTransport {
 protected:
  // Byte i of the payload is i modulo 251, so that no chunk looks like another.
  static std::uint8_t payloadByte(std::size_t i) { return static_cast<std::uint8_t>(i % 251); }

  // Sends `length` bytes; the device gets chunks of these sizes.
  void expectChunks(int length, const std::vector<std::size_t>& chunks) {
    const auto size = static_cast<std::size_t>(length);
    Bytes payload(size);
    for (std::size_t i = 0; i < size; ++i)
      payload[i] = payloadByte(i);
    const Bytes header = qzHeader(5, 0x55, 0, 0, static_cast<std::uint32_t>(length));
    std::size_t sent = 0;
    for (const std::size_t chunk : chunks) {
      Bytes packet = header;
      for (std::size_t i = 0; i < chunk; ++i)
        packet.push_back(payloadByte(sent + i));
      sent += chunk;
      device.expect(std::move(packet));
    }
    device.answer("EE 55 00*6");
    testing::internal::CaptureStdout();
    EXPECT_EQ(communicate(hex(header), reinterpret_cast<char*>(payload.data()), length), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              length > 4096 ? "writeRequest: we need to packetize the data.\n" : "");
    EXPECT_EQ(device.problems(), Lines{}) << length;
    device.forget();
  }
};

TEST_F(QZChunks, UpTo4096BytesAreOnePacket) {
  expectChunks(1, {1});
  expectChunks(272, {272});
  expectChunks(4095, {4095});
  expectChunks(4096, {4096});
}

TEST_F(QZChunks, From4097To8192BytesTheRestIsNotSent) {
  expectChunks(4097, {4096});
  expectChunks(6000, {4096});
  expectChunks(8191, {4096});
  expectChunks(8192, {4096});
}

TEST_F(QZChunks, BeyondThatTheLast4096BytesAreNotSent) {
  expectChunks(8193, {4096, 1});
  expectChunks(12287, {4096, 4095});
  expectChunks(12288, {4096, 4096});
  expectChunks(12289, {4096, 4096, 1});
}

// The count of what remains is a signed number of 16 bits.
TEST_F(QZChunks, RemainderWrapsAt16Bits) {
  // 36863 - 4096 = 32767; - 4096 = 28671 = 6 x 4096 + 4095.
  expectChunks(36863, {4096, 4096, 4096, 4096, 4096, 4096, 4096, 4095});
  // 36864 - 4096 = 32768 is -32768; - 4096 = -36864 is 28672 = 7 x 4096.
  expectChunks(36864, {4096, 4096, 4096, 4096, 4096, 4096, 4096, 4096});
  // 40960 - 4096 = 36864 is -28672; - 4096 = -32768 is negative.
  expectChunks(40960, {4096});
  // 69632 - 4096 = 65536 is 0; - 4096 is negative.
  expectChunks(69632, {4096});
  // 73733 - 4096 = 69637 is 4101; - 4096 = 5.
  expectChunks(73733, {4096, 5});
}

TEST_F(QZChunks, FailedWriteEndsTheChunks) {
  platform.failCall("WriteFile", 2);
  Bytes payload(20000);
  const Bytes header = qzHeader(5, 0x55, 0, 0, 20000);
  Bytes first = header;
  first.resize(8 + 4096);
  device.expect(first);
  testing::internal::CaptureStdout();
  EXPECT_EQ(communicate(hex(header), reinterpret_cast<char*>(payload.data()), 20000), 15005);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "writeRequest: we need to packetize the data.\n"
            "writeRequest: Failed to write data to the printer\n");
  EXPECT_EQ(platform.count("WriteFile"), 2);
  EXPECT_EQ(platform.count("ReadFile"), 0);
}

// --- The chain of READs: the order of transactions that nest
// --------------------------------------

class QZChain : public QZTransport {
 protected:
  const std::string kReadWrite = "Write 05 28 00 00 00 00 00 04 00 04 00 00";

  // The transfers of a READ up to its reply of one byte.
  void started(Lines& lines, bool withData = true) const {
    lines.insert(lines.end(), {"Flush write", "Flush read", kReadWrite, "Read 8"});
    if (withData) lines.emplace_back("Read 1");
  }
  static void ended(Lines& lines, int transactions = 1) {
    for (int i = 0; i < transactions; ++i)
      lines.insert(lines.end(), {"Flush read", "Flush write"});
  }
};

TEST_F(QZChain, OneReply) {
  device.readImage(3, "70");
  EXPECT_EQ(Peer::read(controller), 0);
  EXPECT_EQ(transfers(),
            (Lines{"Flush write", "Flush read", "Write 05 28 00 00 00 00 00 04 00 04 00 00",
                   "Read 8", "Read 1", "Flush read", "Flush write"}));
}

TEST_F(QZChain, TwoReplies) {
  device.readImage(2, "70").readImage(3, "71");
  EXPECT_EQ(Peer::read(controller), 0);
  EXPECT_EQ(transfers(),
            (Lines{"Flush write", "Flush read", "Write 05 28 00 00 00 00 00 04 00 04 00 00",
                   "Read 8", "Read 1",  //
                   "Flush write", "Flush read", "Write 05 28 00 00 00 00 00 04 00 04 00 00",
                   "Read 8", "Read 1", "Flush read", "Flush write",  //
                   "Flush read", "Flush write"}));
}

TEST_F(QZChain, ThreeReplies) {
  device.readImage(2, "70").readImage(2, "71").readImage(3, "72");
  EXPECT_EQ(Peer::read(controller), 0);
  Lines expected;
  started(expected);
  started(expected);
  started(expected);
  ended(expected, 3);
  EXPECT_EQ(transfers(), expected);
  EXPECT_EQ(platform.notifications().size(), 2U) << "1004 and 1005";
}

TEST_F(QZChain, PageIsAnnouncedBeforeTheTransactionsEnd) {
  Lines atNotification;
  platform.onNotification = [&](const ScanNotification&) { atNotification = transfers(); };
  device.readImage(2, "70").readImage(3, "71");
  EXPECT_EQ(Peer::read(controller), 0);
  Lines expected;
  started(expected);
  started(expected);
  EXPECT_EQ(atNotification, expected);
}

TEST_F(QZChain, BlockEndAsksForTheHeaderWithinTheLastRead) {
  device.readImage(2, "70").readImage(5, "71").readBlockHeader();
  EXPECT_EQ(Peer::read(controller), 0);
  Lines expected;
  started(expected);
  started(expected);
  expected.insert(expected.end(), {"Flush write", "Flush read", "Write 05 C2 00 00 00 00 00 00",
                                   "Read 8", "Read 8", "Flush read", "Flush write"});
  ended(expected, 2);
  EXPECT_EQ(transfers(), expected);
  EXPECT_EQ(Peer::imageSize(controller), 2U);
}

TEST_F(QZChain, FailedBlockHeaderIsNoFailureOfTheRead) {
  device.readImage(5, "70").request(kReadBlockHeader).failRead();
  EXPECT_EQ(Peer::read(controller), 0);
  Lines expected;
  started(expected);
  expected.insert(expected.end(),
                  {"Flush write", "Flush read", "Write 05 C2 00 00 00 00 00 00", "Read 8"});
  ended(expected);
  EXPECT_EQ(transfers(), expected);
}

TEST_F(QZChain, StatusOfABlockHeaderFailsTheReadsAroundIt) {
  device.readImage(5, "70").readBlockHeader({9, 0});
  EXPECT_EQ(Peer::read(controller), 0) << "the innermost READ does not look at it";
  EXPECT_EQ(Peer::operationStatus(controller), 9);
  platform.forgetCalls();
  device.readImage(2, "70").readImage(5, "71").readBlockHeader({9, 0});
  EXPECT_EQ(Peer::read(controller), 15002);
  Lines expected;
  started(expected);
  started(expected);
  expected.insert(expected.end(), {"Flush write", "Flush read", "Write 05 C2 00 00 00 00 00 00",
                                   "Read 8", "Read 8"});
  ended(expected, 2);  // the block header's and the inner READ's, and not the outer one's
  EXPECT_EQ(transfers(), expected);
}

TEST_F(QZChain, FailureDeepInTheChainFailsEveryLevelWithoutAFlush) {
  device.readImage(2, "70").readImage(2, "71").readRequest().failRead();
  EXPECT_EQ(Peer::read(controller), 15002);
  Lines expected;
  started(expected);
  started(expected);
  started(expected, false);
  EXPECT_EQ(transfers(), expected);
  EXPECT_EQ(Peer::imageSize(controller), 2U) << "the bytes stay";
}

TEST_F(QZChain, FailedWriteDeepInTheChainIsAFailedReadAbove) {
  device.readImage(2, "70").expectAndFail("05 28 00 00 00 00 00 04 00 04 00 00");
  testing::internal::CaptureStdout();
  EXPECT_EQ(Peer::read(controller), 15002);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "writeRequest: Failed to write data to the printer\n");
}

TEST_F(QZChain, StatusDeepInTheChainFailsTheLevelsAboveIt) {
  device.readImage(2, "70").readImage(2, "71").readImage(3, "72", 36);
  EXPECT_EQ(Peer::read(controller), 15002);
  Lines expected;
  started(expected);
  started(expected);
  started(expected);
  ended(expected, 1);  // the transaction of the reply itself went well
  EXPECT_EQ(transfers(), expected);
  EXPECT_EQ(platform.logLines(),
            Lines{"Read: Operation Error Scan imaging Error: Scanning could not complete.\r\n"});
  EXPECT_TRUE(controller.getReleaseInfo());
}

TEST_F(QZChain, StatusOfTheFirstReplyIsTheCallersToSee) {
  device.readImage(3, "72", 36);
  EXPECT_EQ(Peer::read(controller), 0);
  EXPECT_EQ(Peer::operationStatus(controller), 36);
}

TEST_F(QZChain, SenseDeepInTheChainIsToldOnce) {
  device.readImage(2, "70").readImage(2, "71").readRequest().checkCondition(kRead, "03 00 00");
  EXPECT_EQ(Peer::read(controller), 15002);
  EXPECT_EQ(platform.notifications(), Lines{"1002"});
}

TEST_F(QZChain, OtherStateEndsTheChainWithoutFailure) {
  device.readImage(2, "70").readImage(4, "71");
  EXPECT_EQ(Peer::read(controller), 0);
  EXPECT_EQ(Peer::imageSize(controller), 1U);
}

TEST_F(QZChain, FailedProcessingIsAFailedReadAboveButNotOfTheFirstReply) {
  Peer::dataSource(controller)
      ->SetScaningPropertiesFromApp("BlackAndWhite", "200x200", "OneSided", 10, 10, 0, 4, 4, "Off",
                                    0, "A4");
  Peer::dataSource(controller)->SetBrightnessContrast();
  platform.onCall("BlackandWhiteImageProcessing", 1, [] { throw std::runtime_error("jpeg"); });
  device.readImage(3, "70");
  EXPECT_EQ(Peer::read(controller), 1);
  platform.onCall("BlackandWhiteImageProcessing", 1, [] { throw std::runtime_error("jpeg"); });
  device.readImage(2, "70").readImage(3, "71");
  EXPECT_EQ(Peer::read(controller), 15002);
  EXPECT_EQ(platform.notifications(), Lines{});
}

// --- Callbacks that use a controller
// --------------------------------------------------------------

// A controller of the same fake system, on handles of its own.
class OtherController {
 public:
  explicit OtherController(tvrscn::test::FakePlatform& platform) {
    const auto [write, read] = platform.openDevice();
    ControllerTestPeer::deviceWrite(controller) = write;
    ControllerTestPeer::deviceRead(controller) = read;
    ControllerTestPeer::callback(controller) = platform.callback();
    ControllerTestPeer::reservedClientID(controller) = 5;
  }

  USB_QZ_Controller controller;
};

TEST_F(QZChain, CallbackMayUseTheSameController) {
  int calls = 0;
  int inner = -1;
  platform.onNotification = [&](const ScanNotification& notification) {
    if (notification.type != NOTIFY_IMAGE_READY || ++calls > 1) return;
    device.readImage(2, "72").readImage(3, "73");
    inner = Peer::read(controller);
  };
  device.readImage(2, "70").readImage(3, "71");
  EXPECT_EQ(Peer::read(controller), 0);
  EXPECT_EQ(inner, 0);
  Lines expected;
  started(expected);
  started(expected);
  started(expected);
  started(expected);
  ended(expected, 4);
  EXPECT_EQ(transfers(), expected);
  EXPECT_EQ(calls, 2);
}

TEST_F(QZChain, CallbackMayUseAnotherController) {
  OtherController other(platform);
  platform.forgetCalls();
  int inner = -1;
  int back = -1;
  Lines page;
  platform.onNotification = [&](const ScanNotification& notification) {
    if (notification.type != NOTIFY_IMAGE_READY) return;
    page.emplace_back("page");
    if (page.size() == 1) {
      device.readImage(2, "72").readImage(3, "73");
      inner = Peer::read(other.controller);
    } else if (page.size() == 2) {
      // And out of that one's callback, the first again.
      device.readImage(2, "74").readImage(3, "75");
      back = Peer::read(controller);
    }
  };
  device.readImage(2, "70").readImage(3, "71");
  EXPECT_EQ(Peer::read(controller), 0);
  EXPECT_EQ(inner, 0);
  EXPECT_EQ(back, 0);
  EXPECT_EQ(page.size(), 3U);
  EXPECT_EQ(platform.count("WriteFile"), 6);
  EXPECT_EQ(platform.count("FlushFileBuffers"), 24);
}

struct Stop {};

TEST_F(QZChain, ControllerWorksAfterACallbackThatThrew) {
  platform.onNotification = [](const ScanNotification&) { throw Stop(); };
  device.readImage(2, "70").readImage(3, "71");
  EXPECT_THROW(Peer::read(controller), Stop);
  platform.onNotification = nullptr;
  platform.forgetCalls();
  device.readImage(2, "72").readImage(3, "73").testUnitReady();
  EXPECT_EQ(Peer::read(controller), 0);
  EXPECT_EQ(Peer::testUnitReady(controller), 0);
  Lines expected;
  started(expected);
  started(expected);
  ended(expected, 2);
  const Lines all = transfers();
  EXPECT_EQ(Lines(all.begin(), all.begin() + static_cast<long>(expected.size())), expected);
}

TEST_F(QZChain, DataMayBeDispatchedOutsideATransaction) {
  USBVendorPacketHeader header = {};
  header.bCommandId = kRead;
  header.bScannerStatus = 2;
  header.dwDataLength.set(1);
  char buffer[9] = {};
  device.answer("70");
  device.readImage(3, "71");
  EXPECT_EQ(Peer::responseData(controller, BasePeer::deviceRead(controller), buffer, header), 0);
  Lines expected = {"Read 1"};
  started(expected);
  ended(expected);
  EXPECT_EQ(transfers(), expected);
}

// --- Depth
// ----------------------------------------------------------------------------------------

// Where the stack stands.
std::uintptr_t stackPosition() {
  return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

// A device with something more to say each time it is asked.
class EndlessDevice : public tvrscn::test::FakeDevice {
 public:
  // As many replies of this state, with this many bytes each, then one of state 3.
  EndlessDevice(int replies, std::size_t dataLength, std::uint8_t state)
      : left_(replies), data_(dataLength, 0x70), state_(state) {}

  bool write(std::span<const std::uint8_t> /*data*/) override {
    const std::uint8_t state = left_-- > 0 ? state_ : std::uint8_t{3};
    transfers_.push_back(qzHeader(0xEE, kRead, 0, state, static_cast<std::uint32_t>(data_.size())));
    if (!data_.empty()) transfers_.push_back(data_);
    return true;
  }
  ReadResult read(std::size_t most) override {
    constexpr std::size_t kHeader = 8;
    if (most == kHeader && ++headers_ > 2) notePosition();
    ReadResult result{transfers_.front()};
    transfers_.pop_front();
    return result;
  }
  // Bytes of stack between the deepest and the highest of all reads of headers but the first two.
  std::uintptr_t stackUsed() const { return highest_ - lowest_; }
  bool isDone() const { return left_ < 0; }

 private:
  void notePosition() {
    const std::uintptr_t position = stackPosition();
    lowest_ = std::min(lowest_, position);
    highest_ = std::max(highest_, position);
  }

  int left_;
  Bytes data_;
  std::uint8_t state_;
  int headers_ = 0;
  std::deque<Bytes> transfers_;
  std::uintptr_t lowest_ = UINTPTR_MAX;
  std::uintptr_t highest_ = 0;
};

class QZDepth : public QZTransport {
 protected:
  QZDepth() {
    platform.deviceCallLimit = 10'000'000;
    platform.setRecording(false);
  }

  // The result of a READ on a thread with 256 KiB of stack.
  int readOnSmallStack(EndlessDevice& endless) {
    constexpr std::size_t kStack = std::size_t{256} * 1024;
    platform.plug(&endless);
    int result = -1;
    runOnStack(kStack, [&] { result = Peer::read(controller); });
    platform.plug(&device);
    EXPECT_TRUE(endless.isDone());
    return result;
  }
};

TEST_F(QZDepth, FourThousandRepliesTakeNoStack) {
  EndlessDevice endless(3999, 16, 2);
  EXPECT_EQ(readOnSmallStack(endless), 0);
  EXPECT_EQ(endless.stackUsed(), 0U);
  ASSERT_EQ(folder.fileNames().size(), 1U);
  EXPECT_EQ(std::filesystem::file_size(folder.path() / folder.fileNames()[0]), 64000U);
  // Before and behind each of 4,000 transactions.
  EXPECT_EQ(platform.count("FlushFileBuffers"), 16000);
}

TEST_F(QZDepth, TwoHundredThousandEmptyRepliesTakeNoStack) {
  EndlessDevice endless(199'999, 0, 2);
  EXPECT_EQ(readOnSmallStack(endless), 0);
  EXPECT_EQ(endless.stackUsed(), 0U);
  EXPECT_EQ(platform.count("FlushFileBuffers"), 800'000);
}

// A device that answers READ BLOCK HEADER as if it were a READ, too.
TEST_F(QZDepth, TwentyThousandBlockEndsTakeNoStack) {
  EndlessDevice endless(19'999, 0, 5);
  EXPECT_EQ(readOnSmallStack(endless), 0);
  EXPECT_EQ(endless.stackUsed(), 0U);
  EXPECT_EQ(platform.count("FlushFileBuffers"), 80'000);
}

TEST_F(QZDepth, FailureBehindManyRepliesFailsTheFirst) {
  EndlessDevice endless(1999, 1, 2);
  platform.shortRead(3999, 7);  // the header of the 2,000th reply
  platform.plug(&endless);
  EXPECT_EQ(Peer::read(controller), 15002);
  platform.plug(&device);
  EXPECT_EQ(platform.count("FlushFileBuffers"), 4000) << "none behind the failure";
  EXPECT_EQ(Peer::imageSize(controller), 1999U);
}

}  // namespace
