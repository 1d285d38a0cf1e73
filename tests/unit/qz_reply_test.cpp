// What comes back from a QZ device: headers, data, and who gets them.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/qz_test.h"

namespace {

using tvrscn::test::Bytes;
using tvrscn::test::bytes;
using tvrscn::test::hex;
using tvrscn::test::Kind;
using tvrscn::test::kInitialize;
using tvrscn::test::kInquiry;
using tvrscn::test::kModeSense;
using tvrscn::test::kRead;
using tvrscn::test::kReadBlockHeader;
using tvrscn::test::kReserve;
using tvrscn::test::kTestUnitReady;
using tvrscn::test::Lines;
using tvrscn::test::QZDialogue;
using tvrscn::test::QZTest;
using tvrscn::test::ReadResult;

std::string spelled(std::string_view hexBytes) {
  return hex(bytes(hexBytes));
}

template <typename Record>
std::string bytesOf(const Record& record) {
  Bytes content(sizeof record);
  std::memcpy(content.data(), &record, sizeof record);
  return hex(content);
}

// --- Headers
// --------------------------------------------------------------------------------------

class QZReplyHeader : public QZTest {
 protected:
  QZReplyHeader() { std::memset(&header_, 0xCC, sizeof header_); }

  int readHeader() {
    return Peer::readHeader(controller, BasePeer::deviceRead(controller), header_);
  }

  USBVendorPacketHeader header_;
};

TEST_F(QZReplyHeader, IsOneReadOfEightBytes) {
  device.answer("EE C1 09 4D 12 34 56 78");
  EXPECT_EQ(readHeader(), 0);
  EXPECT_EQ(platform.calls(), Lines{"Read 8"});
  EXPECT_EQ(header_.bCommandId, 0xC1);
  EXPECT_EQ(header_.bOperationStatus, 9);
  EXPECT_EQ(header_.bScannerStatus, 0x4D);
  EXPECT_EQ(header_.dwDataLength.value(), 0x12345678U);
}

TEST_F(QZReplyHeader, CommandByteIsKept) {
  device.answer("00 5A 00*6").answer("00 FF 00*6");
  EXPECT_EQ(readHeader(), 0);
  EXPECT_EQ(BasePeer::getECPCommandId(controller), 0x5A);
  EXPECT_EQ(readHeader(), 0);
  EXPECT_EQ(BasePeer::getECPCommandId(controller), 0xFF);
}

TEST_F(QZReplyHeader, ReservationAloneBringsAClientId) {
  for (int command = 0; command <= 0xFF; ++command) {
    BasePeer::reservedClientID(controller) = 0x05;
    device.answer(Bytes{0x31, static_cast<std::uint8_t>(command), 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(readHeader(), 0);
    EXPECT_EQ(BasePeer::getReservedClientID(controller), command == 0x16 ? 0x31 : 0x05) << command;
  }
}

TEST_F(QZReplyHeader, ReservationWithAnyStatusBringsTheClientId) {
  for (const std::uint8_t status : bytes("02 08 09 18 21 22 23 24 FF")) {
    device.answer(Bytes{status, 0x16, status, 0, 0, 0, 0, 0});
    EXPECT_EQ(readHeader(), 0);
    EXPECT_EQ(BasePeer::getReservedClientID(controller), status);
  }
}

TEST_F(QZReplyHeader, FailedOrShortReadChangesNothing) {
  device.answer("05 16 23 4F 00*4");  // status 35: release
  EXPECT_EQ(readHeader(), 0);
  std::memset(&header_, 0xCC, sizeof header_);
  device.failRead(31, "06 C3 08 80 00*4").answer("07 C3 08 80 00 00 00").answer("");
  for (const char* read : {"failed", "seven bytes", "nothing"}) {
    EXPECT_EQ(readHeader(), 15002) << read;
    EXPECT_EQ(bytesOf(header_), spelled("CC*8")) << read;
    EXPECT_EQ(BasePeer::getReservedClientID(controller), 0x05) << read;
    EXPECT_EQ(BasePeer::getECPCommandId(controller), 0x16) << read;
    EXPECT_EQ(Peer::operationStatus(controller), 35) << read;
    EXPECT_EQ(Peer::documentPresent(controller), 1U) << read;
    EXPECT_TRUE(controller.getReleaseInfo()) << read;
  }
}

TEST_F(QZReplyHeader, CountBeyondTheHeaderIsNoShortRead) {
  device.answer("05 16 00 00 00 00 00 00");
  platform.claimRead(1, 9);
  EXPECT_EQ(readHeader(), 0);
  EXPECT_EQ(bytesOf(header_), "05 16 00 00 00 00 00 00");
}

// --- Data
// -----------------------------------------------------------------------------------------

// A request of TEST UNIT READY, whatever the reply says that it answers.
class QZReplyData : public QZTest {
 protected:
  QZReplyData() { prepareJob(); }

  int ask() {
    device.request(kTestUnitReady);
    return Peer::testUnitReady(controller);
  }
  int answered(unsigned command, unsigned status, unsigned scannerStatus, std::string_view data) {
    device.request(kTestUnitReady).reply(command, status, scannerStatus, data);
    return Peer::testUnitReady(controller);
  }
  std::string limits() { return bytesOf(*Peer::dataSource(controller)->GetSubDevicesPageData()); }
  std::string units() { return bytesOf(*Peer::dataSource(controller)->GetMeasurementUnitData()); }
  Lines reads() {
    Lines all = platform.calls({Kind::kDevice});
    std::erase_if(all, [](const std::string& call) { return !call.starts_with("Read "); });
    return all;
  }
};

TEST_F(QZReplyData, IsOneReadOfTheAnnouncedLength) {
  EXPECT_EQ(answered(kTestUnitReady, 0, 0, "01 02 03"), 0);
  EXPECT_EQ(reads(), (Lines{"Read 8", "Read 3"}));
}

TEST_F(QZReplyData, ReplyWithoutDataIssuesNoReadAndIsDispatched) {
  Peer::pendingModePage(controller) = 3;
  EXPECT_EQ(answered(kModeSense, 0, 0, ""), 0);
  EXPECT_EQ(reads(), Lines{"Read 8"});
  EXPECT_EQ(Peer::pendingModePage(controller), 0);
}

TEST_F(QZReplyData, IsNotPutTogetherFromSeveralReads) {
  device.request(kTestUnitReady).replyHeader(kTestUnitReady, 5).answer("01 02 03").answer("04 05");
  EXPECT_EQ(Peer::testUnitReady(controller), 15002);
  EXPECT_EQ(reads(), (Lines{"Read 8", "Read 5"}));
  device.forget();
}

TEST_F(QZReplyData, FailedReadAndEveryOtherCountAreAFailure) {
  const struct {
    const char* name;
    DWORD claimed;
  } kCases[] = {{"nothing", 0}, {"one less", 2}, {"one more", 4}, {"all there is", 0xFFFFFFFF}};
  for (const auto& row : kCases) {
    platform.claimRead(2, row.claimed);
    EXPECT_EQ(answered(kTestUnitReady, 0, 0, "01 02 03"), 15002) << row.name;
  }
  device.request(kTestUnitReady).replyHeader(kTestUnitReady, 3).failRead(31, "01 02 03");
  EXPECT_EQ(Peer::testUnitReady(controller), 15002);
}

TEST_F(QZReplyData, FailedReadReachesNobody) {
  Peer::pendingModePage(controller) = 0x20;
  device.request(kTestUnitReady).replyHeader(kModeSense, 56).answer("FF*55");
  EXPECT_EQ(Peer::testUnitReady(controller), 15002);
  EXPECT_EQ(limits(), spelled("00*56"));
  EXPECT_EQ(Peer::pendingModePage(controller), 0x20);
  device.request(kTestUnitReady).replyHeader(kRead, 3, {2, 0}).answer("FF*2");
  EXPECT_EQ(Peer::testUnitReady(controller), 15002);
  EXPECT_EQ(platform.notifications(), Lines{}) << "no sense has come";
}

// The header comes; of the data only three bytes, however many are asked for.
class LyingDevice : public tvrscn::test::FakeDevice {
 public:
  explicit LyingDevice(std::uint8_t lastLengthByte) : last_(lastLengthByte) {}
  bool write(std::span<const std::uint8_t> /*data*/) override { return true; }
  ReadResult read(std::size_t most) override {
    if (most == 8) return {{0xEE, 0x28, 0, 3, 0xFF, 0xFF, 0xFF, last_}};
    asked = most;
    resident = residentKilobytes();
    return {{1, 2, 3}};
  }
  static long residentKilobytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
      long kilobytes = 0;
      if (word == "VmRSS:" && status >> kilobytes) return kilobytes;
    }
    return -1;
  }

  std::size_t asked = 0;
  long resident = 0;

 private:
  std::uint8_t last_;
};

// Either the memory for it cannot be had, or it is there and costs nothing.
TEST_F(QZReplyData, LengthThatIsALieIsAFailedReadAndTakesNoMemory) {
  constexpr long kLittle = 64L * 1024;
  for (const std::uint8_t last : bytes("FF F8")) {
    LyingDevice liar(last);
    platform.plug(&liar);
    const long before = LyingDevice::residentKilobytes();
    ASSERT_GT(before, 0);
    EXPECT_EQ(Peer::testUnitReady(controller), 15002) << unsigned{last};
    EXPECT_TRUE(liar.asked == 0 || liar.asked == 0xFFFFFF00U + last) << liar.asked;
    EXPECT_LT(liar.resident, before + kLittle);
    EXPECT_EQ(Peer::imageBytes(controller), nullptr);
  }
  platform.plug(&device);
}

// --- Dispatch
// -------------------------------------------------------------------------------------

TEST_F(QZReplyData, CommandsOfNoDispatchReadTheirDataAndDoNothing) {
  for (unsigned command = 0; command <= 0xFF; ++command) {
    if (command == kRead || command == kModeSense || command == kReadBlockHeader) continue;
    Peer::pendingModePage(controller) = 3;
    Peer::blockSize(controller) = 77;
    platform.forgetCalls();
    EXPECT_EQ(answered(command, 0, 3, "FF*12"), 0) << command;
    EXPECT_EQ(Peer::pendingModePage(controller), 3) << command;
    EXPECT_EQ(Peer::blockSize(controller), 77U) << command;
    EXPECT_EQ(Peer::imageBytes(controller), nullptr) << command;
    EXPECT_EQ(platform.calls({Kind::kLog, Kind::kNotification, Kind::kDialog}), Lines{}) << command;
    BasePeer::reservedClientID(controller) = 0x05;
  }
  EXPECT_EQ(limits(), spelled("00*56"));
  EXPECT_EQ(units(), spelled("00*8"));
}

TEST_F(QZReplyData, InquiryDataAreReadAndDropped) {
  device.request(kInquiry).reply(kInquiry, 0, 0, "1F 80 EE*6 41*32 42*32 43*8");
  EXPECT_EQ(Peer::inquiry(controller), 0);
  EXPECT_EQ(reads(), (Lines{"Read 8", "Read 80"}));
  EXPECT_EQ(platform.calls({Kind::kLog}), Lines{});
}

TEST_F(QZReplyData, InquiryWithoutTerminatorsIsHarmless) {
  device.request(kInquiry).reply(kInquiry, 0, 0, "FF*5000");
  EXPECT_EQ(Peer::inquiry(controller), 0);
  device.request(kInquiry).reply(kInquiry, 0, 0, "FF");
  EXPECT_EQ(Peer::inquiry(controller), 0);
}

TEST_F(QZReplyData, ModeSensePageGoesWhereThePendingOneSays) {
  const struct {
    unsigned pending;
    const char* limits;
    const char* units;
  } kCases[] = {
      {0x20, "11*56", "00*8"},
      {0x03, "00*56", "11*8"},
      {0x00, "00*56", "00*8"},
      {0x21, "00*56", "00*8"},
  };
  for (const auto& row : kCases) {
    prepareJob();
    Peer::pendingModePage(controller) = static_cast<std::uint8_t>(row.pending);
    EXPECT_EQ(answered(kModeSense, 0, 0, "11*60"), 0);
    EXPECT_EQ(limits(), spelled(row.limits)) << row.pending;
    EXPECT_EQ(units(), spelled(row.units)) << row.pending;
    EXPECT_EQ(Peer::pendingModePage(controller), 0) << row.pending;
  }
}

TEST_F(QZReplyData, ModeSensePageIsStoredWithAnyStatusButCheckCondition) {
  for (const unsigned status : {8U, 9U, 24U, 33U, 34U, 35U, 36U, 255U}) {
    prepareJob();
    Peer::pendingModePage(controller) = 0x20;
    EXPECT_EQ(answered(kModeSense, status, 0, QZDialogue::kLimits), 0) << status;
    EXPECT_EQ(limits(), spelled(QZDialogue::kLimits)) << status;
    EXPECT_EQ(Peer::operationStatus(controller), status);
  }
}

TEST_F(QZReplyData, CheckConditionStoresNoPageAndLeavesItPending) {
  Peer::pendingModePage(controller) = 0x20;
  EXPECT_EQ(answered(kModeSense, 2, 0, QZDialogue::kLimits), 15002);
  EXPECT_EQ(limits(), spelled("00*56"));
  EXPECT_EQ(Peer::pendingModePage(controller), 0x20);
}

TEST_F(QZReplyData, ShortModePageIsReplacedWholeWithZerosBehindWhatCame) {
  const struct {
    const char* came;
    const char* limits;
    const char* units;
  } kCases[] = {
      {"22*55", "22*55 00", "22*8"},
      {"22*9", "22*9 00*47", "22*8"},
      {"22*7", "22*7 00*49", "22*7 00"},
      {"22", "22 00*55", "22 00*7"},
      {"", "00*56", "00*8"},
  };
  for (const auto& row : kCases) {
    for (const std::uint8_t page : bytes("20 03")) {
      Peer::pendingModePage(controller) = page;
      EXPECT_EQ(answered(kModeSense, 0, 0, "FF*56"), 0);
      Peer::pendingModePage(controller) = page;
      EXPECT_EQ(answered(kModeSense, 0, 0, row.came), 0);
    }
    EXPECT_EQ(limits(), spelled(row.limits)) << row.came;
    EXPECT_EQ(units(), spelled(row.units)) << row.came;
  }
}

TEST_F(QZReplyData, ModeSenseWithoutASourceIsDropped) {
  Peer::dataSource(controller).reset();
  Peer::pendingModePage(controller) = 0x20;
  EXPECT_EQ(answered(kModeSense, 0, 0, QZDialogue::kLimits), 0);
  EXPECT_EQ(Peer::pendingModePage(controller), 0);
}

TEST_F(QZReplyData, BlockHeaderBringsItsSize) {
  EXPECT_EQ(answered(kReadBlockHeader, 0, 0, "EE*4 01 23 45 67"), 0);
  EXPECT_EQ(Peer::blockSize(controller), 0x01234567U);
}

TEST_F(QZReplyData, BlockHeaderWithAStatusBringsNone) {
  Peer::blockSize(controller) = 77;
  for (const unsigned status : {8U, 9U, 24U, 33U, 34U, 35U, 36U, 255U}) {
    EXPECT_EQ(answered(kReadBlockHeader, status, 0, "EE*4 01 23 45 67"), 0) << status;
    EXPECT_EQ(Peer::blockSize(controller), 77U) << status;
  }
}

TEST_F(QZReplyData, ShortBlockHeaderIsZeroWhereNothingCame) {
  EXPECT_EQ(answered(kReadBlockHeader, 0, 0, "EE*4 01 23"), 0);
  EXPECT_EQ(Peer::blockSize(controller), 0x01230000U);
  EXPECT_EQ(answered(kReadBlockHeader, 0, 0, ""), 0);
  EXPECT_EQ(Peer::blockSize(controller), 0U);
}

TEST_F(QZReplyData, ReplyIsDispatchedByItsOwnCommandByte) {
  device.request(kInitialize, "00*4").reply(kReadBlockHeader, 0, 0, "EE*4 00 00 00 09");
  EXPECT_EQ(Peer::initialize(controller), 0);
  EXPECT_EQ(Peer::blockSize(controller), 9U);
  device.request(kInquiry).answer("31 16 00 00 00 00 00 00");
  EXPECT_EQ(Peer::inquiry(controller), 0);
  EXPECT_EQ(BasePeer::getReservedClientID(controller), 0x31);
}

TEST_F(QZReplyData, ReadReplyToAnotherRequestTakesTheImageRoad) {
  EXPECT_EQ(answered(kRead, 0, 4, "70 71"), 0);
  EXPECT_EQ(platform.logLines(),
            Lines{"Read: Device Status Error Good:Command is accepted correctly\r\n"});
  device.request(kTestUnitReady).reply(kRead, 0, 2, "70 71").readImage(3, "72");
  EXPECT_EQ(Peer::testUnitReady(controller), 0);
  EXPECT_EQ(folder.fileNames().size(), 1U);
}

// --- Sense
// ----------------------------------------------------------------------------------------

TEST_F(QZReplyData, SenseIsBytesFourToSixOfWhatCame) {
  const struct {
    const char* data;
    const char* dialog;
  } kCases[] = {
      {"EE*4 02 3A 00", "Dialog [Title] NoDocument 0x40000"},
      {"EE*4 02 3A 00 EE*20", "Dialog [Title] NoDocument 0x40000"},
      {"EE*4 02 3A", "Dialog [Title] NoDocument 0x40000"},   // and a zero
      {"EE*4 05", "Dialog [Title] InvalidRequest 0x40000"},  // and two
      {"EE*4", "Dialog [Title] GeneralError 0x40000"},       // "000000"
      {"EE", "Dialog [Title] GeneralError 0x40000"},
      {"", "Dialog [Title] GeneralError 0x40000"},
      {"EE*4 01 04 00", "Dialog [Title] CoverOpen 0x40000"},
      {"EE*4 04 1A 00", "Dialog [Title] DeviceError 0x40000"},
  };
  giveDictionary();
  for (const auto& row : kCases) {
    platform.forgetCalls();
    EXPECT_EQ(answered(kTestUnitReady, 2, 0, row.data), 15002) << row.data;
    EXPECT_EQ(platform.calls({Kind::kDialog, Kind::kNotification}),
              (Lines{row.dialog, "Notify 1002"}))
        << row.data;
  }
}

TEST_F(QZReplyData, ShortSenseHasItsOwnText) {
  answered(kTestUnitReady, 2, 0, "EE*4");
  EXPECT_STREQ(Peer::senseText(controller), "No Error");
  answered(kTestUnitReady, 2, 0, "EE*4 06");
  EXPECT_STREQ(Peer::senseText(controller), "Scan Job is cancelled at the device.");
}

TEST_F(QZReplyData, CheckConditionNeverTouchesTheImagePath) {
  for (const unsigned state : {2U, 3U, 5U}) {
    device.request(kTestUnitReady).reply(kRead, 2, state, "EE*4 03 00 00");
    EXPECT_EQ(Peer::testUnitReady(controller), 15002) << state;
    EXPECT_EQ(Peer::imageBytes(controller), nullptr) << state;
  }
  EXPECT_EQ(platform.logLines(), Lines{});
  EXPECT_EQ(folder.fileNames(), Lines{});
}

}  // namespace
