// Each HP command on its own: bytes out, transfers, bytes in, results.
#include <array>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/platform_test.h"

namespace {

using Peer = ControllerTestPeer;
using tvrscn::test::Bytes;
using tvrscn::test::bytes;
using tvrscn::test::DeviceExhausted;
using tvrscn::test::hex;
using tvrscn::test::HPTest;
using tvrscn::test::Kind;
using tvrscn::test::Lines;

template <typename Record>
Bytes contentOf(const Record& record) {
  Bytes content(sizeof record);
  std::memcpy(content.data(), &record, sizeof record);
  return content;
}

// One command with an answer, called with a record full of old bytes.
struct Command {
  const char* name;
  const char* request;
  std::size_t answerLength;
  bool keepsIoResult;
  int (*send)(USB_HP_Controller& controller, Bytes& record);
};

template <typename Record, int (*kSend)(USB_HP_Controller&, Record&)>
int sendInto(USB_HP_Controller& controller, Bytes& record) {
  Record response;
  std::memset(static_cast<void*>(&response), 0xCC, sizeof response);
  const int result = kSend(controller, response);
  record = contentOf(response);
  return result;
}

const Command kCommands[] = {
    {"inquiry", "1B A8 12 00", 72, false, sendInto<HPPKUSBInquiryResponse, Peer::inquiry>},
    {"extended inquiry", "1B A8 13 FB 00*251", 260, true,
     sendInto<HPPKUSBExtendedInquiryResponse, Peer::extendedInquiry>},
    {"reserve unit", "1B A8 16 00", 8, false,
     sendInto<HPPKUSBReserveUnitResponse, Peer::reserveUnit>},
    {"release unit", "1B A8 17 00", 3, false, sendInto<HPPKUSBResponse, Peer::releaseUnit>},
    {"abort", "1B A8 06 00", 3, false, sendInto<HPPKUSBResponse, Peer::abort>},
    {"set window", "1B A8 24 13 00 00*8 05 05 00*4 05 06 01 15 00 00", 32, false,
     sendInto<HPPKUSBSetWindowParameterResponse, Peer::setWindow>},
    {"extended set window", "1B A8 25 FB 00*245", 260, true,
     sendInto<HPPKUSBExtendedSetWindowParameterResponse, Peer::extendedSetWindow>},
    {"object position", "1B A8 31 00", 6, false,
     sendInto<HPPKUSBObjectPosition, Peer::objectPosition>},
    {"read", "1B A8 28 00", 20, false, sendInto<HPPKUSBReadResponse, Peer::read>},
};

Bytes countingBytes(std::size_t length) {
  Bytes content(length);
  for (std::size_t i = 0; i < length; ++i)
    content[i] = static_cast<std::uint8_t>(i + 1);
  return content;
}

class HPCommand : public HPTest, public ::testing::WithParamInterface<Command> {};

TEST_P(HPCommand, ExchangeIsFlushWriteFlushRead) {
  const Command& command = GetParam();
  const Bytes answer = countingBytes(command.answerLength);
  device.expect(command.request).answer(answer);
  Bytes record;
  EXPECT_NE(command.send(controller, record), 0);
  EXPECT_EQ(hex(record), hex(answer));
  EXPECT_EQ(platform.calls(),
            (Lines{"Flush write", "Write " + hex(bytes(command.request)), "Flush read",
                   "Read " + std::to_string(command.answerLength)}));
}

TEST_P(HPCommand, ShortAnswerLeavesTheRestZero) {
  const Command& command = GetParam();
  device.expect(command.request).answer("0A 0B");
  Bytes record;
  EXPECT_NE(command.send(controller, record), 0);
  Bytes expected(command.answerLength);
  expected[0] = 0x0A;
  expected[1] = 0x0B;
  EXPECT_EQ(hex(record), hex(expected));
  EXPECT_EQ(platform.count("ReadFile"), 1);
}

TEST_P(HPCommand, FailedWriteSkipsTheReadAndZeroesTheRecord) {
  const Command& command = GetParam();
  device.expectAndFail(command.request);
  Bytes record;
  EXPECT_EQ(command.send(controller, record), 0);
  EXPECT_EQ(hex(record), hex(Bytes(command.answerLength)));
  EXPECT_EQ(platform.calls(), (Lines{"Flush write", "Write " + hex(bytes(command.request))}));
}

TEST_P(HPCommand, FailedReadKeepsWhatCame) {
  const Command& command = GetParam();
  device.expect(command.request).failRead(31, "0A 0B 0C");
  Bytes record;
  EXPECT_EQ(command.send(controller, record), 0);
  Bytes expected(command.answerLength);
  expected[0] = 0x0A;
  expected[1] = 0x0B;
  expected[2] = 0x0C;
  EXPECT_EQ(hex(record), hex(expected));
}

TEST_P(HPCommand, ShortWriteGoesUnnoticed) {
  const Command& command = GetParam();
  platform.shortDeviceCall(2, 1);
  device.expect("1B").answer(countingBytes(command.answerLength));
  Bytes record;
  EXPECT_NE(command.send(controller, record), 0);
}

TEST_P(HPCommand, FailedFlushesGoUnnoticed) {
  const Command& command = GetParam();
  platform.failEveryCall("FlushFileBuffers");
  device.expect(command.request).answer(countingBytes(command.answerLength));
  Bytes record;
  EXPECT_NE(command.send(controller, record), 0);
}

TEST_P(HPCommand, IoResultIsKeptByTheThreeThatKeepIt) {
  const Command& command = GetParam();
  constexpr int kOld = 0x5A5A;
  Bytes record;
  device.expect(command.request).answer(countingBytes(command.answerLength));
  Peer::lastIoResult(controller) = kOld;
  const int good = command.send(controller, record);
  EXPECT_EQ(Peer::lastIoResult(controller), command.keepsIoResult ? good : kOld);
  device.expectAndFail(command.request);
  Peer::lastIoResult(controller) = kOld;
  command.send(controller, record);
  EXPECT_EQ(Peer::lastIoResult(controller), command.keepsIoResult ? 0 : kOld);
  device.expect(command.request).failRead();
  Peer::lastIoResult(controller) = kOld;
  command.send(controller, record);
  EXPECT_EQ(Peer::lastIoResult(controller), command.keepsIoResult ? 0 : kOld);
}

std::string commandName(const ::testing::TestParamInfo<Command>& info) {
  std::string name = info.param.name;
  for (char& character : name) {
    if (character == ' ') character = '_';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(Each, HPCommand, ::testing::ValuesIn(kCommands), commandName);

using HPCommands = HPTest;

TEST_F(HPCommands, ShortInquiryReadsAsTheFlatbed) {
  device.expect("1B A8 12 00").answer("02*10");
  HPPKUSBInquiryResponse response;
  EXPECT_NE(Peer::inquiry(controller, response), 0);
  EXPECT_EQ(response.statusCode, 2);
  EXPECT_EQ(response.documentSource, 0);
}

TEST_F(HPCommands, NumbersAreBigEndian) {
  device.expect("1B A8 28 00").answer("EE 00 EE 81 01 02 03 04 05 06 07 08 EE*8");
  HPPKUSBReadResponse response;
  EXPECT_NE(Peer::read(controller, response), 0);
  EXPECT_EQ(response.blockType, 0x81);
  EXPECT_EQ(response.blockSize.value(), 0x01020304U);
  EXPECT_EQ(response.verticalSize.value(), 0x0506);
  EXPECT_EQ(response.horizontalSize.value(), 0x0708);
}

TEST_F(HPCommands, SetWindowIsFilledFromTheSettingsSource) {
  auto source = std::make_shared<CHPUSBScanDataSource>();
  source->setAppDataToScanCommand(settings_);
  Peer::dataSource(controller) = source;
  device.window();
  HPPKUSBSetWindowParameterResponse response;
  EXPECT_NE(Peer::setWindow(controller, response), 0);
  EXPECT_EQ(response.imageHeight.value(), 3507U);
  EXPECT_EQ(response.imageWidth.value(), 2480U);
}

TEST_F(HPCommands, TimeoutReadsNothingBack) {
  device.expect("1B A8 22 FB 00*251");
  const int result = Peer::timeout(controller);
  EXPECT_NE(result, 0);
  EXPECT_EQ(Peer::lastIoResult(controller), result);
  EXPECT_EQ(platform.calls(), (Lines{"Flush write", "Write " + hex(bytes("1B A8 22 FB 00*251"))}));
}

TEST_F(HPCommands, FailedTimeoutIsTold) {
  device.expectAndFail("1B A8 22 FB 00*251");
  Peer::lastIoResult(controller) = 7;
  EXPECT_EQ(Peer::timeout(controller), 0);
  EXPECT_EQ(Peer::lastIoResult(controller), 0);
}

TEST_F(HPCommands, WriteRequestIsOneFlushedTransfer) {
  device.expect("01 02 03").expectAndFail("04");
  const Bytes first = bytes("01 02 03");
  const Bytes second = bytes("04");
  EXPECT_NE(Peer::writeRequest(controller, first.data(), first.size()), 0);
  EXPECT_EQ(Peer::writeRequest(controller, second.data(), second.size()), 0);
  EXPECT_EQ(platform.calls(), (Lines{"Flush write", "Write 01 02 03", "Flush write", "Write 04"}));
}

TEST_F(HPCommands, ReadResponseIsOneFlushedTransfer) {
  device.answer("01 02").failRead();
  std::array<std::uint8_t, 4> buffer{};
  EXPECT_NE(Peer::readResponse(controller, buffer.data(), buffer.size()), 0);
  EXPECT_EQ(hex(buffer), "01 02 00 00");
  EXPECT_EQ(Peer::readResponse(controller, buffer.data(), buffer.size()), 0);
  EXPECT_EQ(platform.calls(), (Lines{"Flush read", "Read 4", "Flush read", "Read 4"}));
}

TEST_F(HPCommands, ControllerStartsWithItsTexts) {
  EXPECT_EQ(Peer::imageExtension(controller), ".JPG");
  EXPECT_EQ(Peer::imageMimeType(controller), L"image/jpeg");
  EXPECT_EQ(Peer::imageFolder(controller), L"");
  EXPECT_EQ(Peer::dataSource(controller), nullptr);
  EXPECT_FALSE(Peer::imageNotified(controller));
  EXPECT_TRUE(Peer::usingTevraUI(controller));
}

// --- Block data
// --------------------------------------------------------------------------------------

class HPReadImage : public HPTest {
 protected:
  // Reads a block that the device sends as one transfer, and compares it.
  void expectRead(std::size_t size, const Lines& reads) {
    platform.forgetCalls();
    const Bytes content = countingBytes(size);
    device.expect("1B A8 29 00");
    if (size > 0) device.answer(content);
    Bytes buffer(size + 1, 0xCC);
    EXPECT_NE(Peer::readImage(controller, buffer.data(), size), 0);
    EXPECT_EQ(buffer.back(), 0xCC);
    buffer.pop_back();
    EXPECT_TRUE(buffer == content);
    Lines calls = {"Flush write", "Write 1B A8 29 00", "Flush read"};
    calls.insert(calls.end(), reads.begin(), reads.end());
    EXPECT_EQ(platform.calls(), calls) << size;
  }
};

TEST_F(HPReadImage, ChunksArePowersOfTwoUpTo4096) {
  expectRead(0, {});
  expectRead(1, {"Read 1"});
  expectRead(2, {"Read 2"});
  expectRead(3, {"Read 2", "Read 1"});
  expectRead(4095, {"Read 2048", "Read 1024", "Read 512", "Read 256", "Read 128", "Read 64",
                    "Read 32", "Read 16", "Read 8", "Read 4", "Read 2", "Read 1"});
  expectRead(4096, {"Read 4096"});
  expectRead(4097, {"Read 4096", "Read 1"});
  expectRead(5000, {"Read 4096", "Read 512", "Read 256", "Read 128", "Read 8"});
  expectRead(8192, {"Read 4096", "Read 4096"});
  expectRead(12000, {"Read 4096", "Read 4096", "Read 2048", "Read 1024", "Read 512", "Read 128",
                     "Read 64", "Read 32"});
}

TEST_F(HPReadImage, EachSizeUpTo300IsReadInFallingPowersOfTwo) {
  for (unsigned size = 1; size <= 300; ++size) {
    Lines reads;
    for (unsigned bit = 256; bit > 0; bit /= 2) {
      if ((size & bit) != 0) reads.push_back("Read " + std::to_string(bit));
    }
    expectRead(size, reads);
  }
}

TEST_F(HPReadImage, ShortChunkIsReadOnFromWhereItStopped) {
  device.expect("1B A8 29 00").answer("01*100").answer("02*28").answer("").answer("03*72");
  Bytes buffer(200);
  EXPECT_NE(Peer::readImage(controller, buffer.data(), 200), 0);
  EXPECT_EQ(hex(buffer), hex(bytes("01*100 02*28 03*72")));
  EXPECT_EQ(platform.calls(), (Lines{"Flush write", "Write 1B A8 29 00", "Flush read",
                                     "Read 128",  // brings 100
                                     "Read 64",   // brings 28 of 100
                                     "Read 64",   // brings nothing of 72
                                     "Read 64", "Read 8"}));
}

TEST_F(HPReadImage, FailedWriteReadsNothing) {
  device.expectAndFail("1B A8 29 00");
  Bytes buffer(10, 0xCC);
  EXPECT_EQ(Peer::readImage(controller, buffer.data(), 10), 0);
  EXPECT_EQ(platform.calls(), (Lines{"Flush write", "Write 1B A8 29 00"}));
  EXPECT_EQ(hex(buffer), hex(bytes("CC*10")));
}

TEST_F(HPReadImage, FailedChunkInTheMiddleIsReadAgain) {
  device.expect("1B A8 29 00").failRead(99).answer("01 02 03");
  Bytes buffer(3);
  EXPECT_NE(Peer::readImage(controller, buffer.data(), 3), 0);
  EXPECT_EQ(hex(buffer), "01 02 03");
  EXPECT_EQ(platform.calls({Kind::kDevice}), (Lines{"Flush write", "Write 1B A8 29 00",
                                                    "Flush read", "Read 2", "Read 2", "Read 1"}));
}

TEST_F(HPReadImage, BytesOfAFailedChunkCount) {
  device.expect("1B A8 29 00").failRead(99, "01").answer("02 03");
  Bytes buffer(3);
  EXPECT_NE(Peer::readImage(controller, buffer.data(), 3), 0);
  EXPECT_EQ(hex(buffer), "01 02 03");
}

TEST_F(HPReadImage, FailureOfTheLastChunkAnswersTheLastError) {
  device.expect("1B A8 29 00").answer("01 02").failRead(1234, "03");
  Bytes buffer(3);
  EXPECT_EQ(Peer::readImage(controller, buffer.data(), 3), 1234);
  EXPECT_EQ(hex(buffer), "01 02 03");
}

TEST_F(HPReadImage, NothingButDataEndsTheLoop) {
  device.expect("1B A8 29 00").answer("01");
  platform.failEveryCall("ReadFile");
  Bytes buffer(3);
  EXPECT_THROW(Peer::readImage(controller, buffer.data(), 3), DeviceExhausted);
  EXPECT_EQ(platform.count("ReadFile"), platform.emptyReadLimit);
  device.forget();
}

}  // namespace
