// Each LowEnd operation on its own: bytes out, transfers, bytes in, results.
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "family_lowend/lowend_commands.h"
#include "tests/support/lowend_test.h"

namespace {

using tvrscn::test::Bytes;
using tvrscn::test::bytes;
using tvrscn::test::DeviceExhausted;
using tvrscn::test::hex;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::LowEndTest;

Bytes contentOf(const LowEnd_USB_Response& record) {
  Bytes content(sizeof record);
  std::memcpy(content.data(), &record, sizeof record);
  return content;
}

class LowEndCommand : public LowEndTest {
 protected:
  LowEndCommand() { std::memset(static_cast<void*>(&response_), 0xCC, sizeof response_); }

  // Operation 4 into `payload_` and `response_`, which hold old bytes.
  int ask() { return Peer::exchange(controller, LowEndOpDeviceStatus, response_, payload_); }

  std::string responseBytes() const { return hex(contentOf(response_)); }

  std::string payload_ = "old";
  LowEnd_USB_Response response_;
};

constexpr const char* kStatusRequest = "1B 4E 04 00 00 00 00 00 80 00";

// --- One exchange
// --------------------------------------------------------------------------------

TEST_F(LowEndCommand, ExchangeIsFlushWriteFlushReadFlushRead) {
  device.expect(kStatusRequest).answer("1B 4E 04 00 02 00 00 00 00 00").answer("7B 7D");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "{}");
  EXPECT_EQ(responseBytes(), "1B 4E 04 00 02 00 00 00 00 00");
  EXPECT_EQ(platform.calls(), (Lines{"Flush write", "Write 1B 4E 04 00 00 00 00 00 80 00",
                                     "Flush read", "Read 10", "Flush read", "Read 2"}));
}

TEST_F(LowEndCommand, AnswerWithoutPayloadLeavesItEmpty) {
  device.expect(kStatusRequest).answer("1B 4E 04 00 00 00 00 00 00 00");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "");
  EXPECT_EQ(platform.count("ReadFile"), 1);
}

TEST_F(LowEndCommand, PayloadInThreeReadsIsPutTogetherInOrder) {
  device.expect(kStatusRequest).answer("1B 4E 04 00 07 00 00 00 00 00");
  device.answer("61 62 63").answer("64 65 66").answer("67");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "abcdefg");
  EXPECT_EQ(platform.calls(),
            (Lines{"Flush write", "Write 1B 4E 04 00 00 00 00 00 80 00", "Flush read", "Read 10",
                   "Flush read", "Read 7", "Flush read", "Read 4", "Flush read", "Read 1"}));
}

TEST_F(LowEndCommand, ReadsThatBringNothingOrFailDoNotEndThePayload) {
  device.expect(kStatusRequest).answer("1B 4E 04 00 04 00 00 00 00 00");
  device.answer("").answer("61").failRead().failRead(31, "62").answer("").answer("63 64");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "abcd");
  EXPECT_EQ(platform.calls({Kind::kSleep, Kind::kLog, Kind::kNotification}), Lines{});
  EXPECT_EQ(platform.count("ReadFile"), 7);
}

TEST_F(LowEndCommand, DeviceThatAnnouncesMoreThanItSendsIsReadForEver) {
  platform.emptyReadLimit = 5;
  device.expect(kStatusRequest).answer("1B 4E 04 00 04 00 00 00 00 00").answer("61");
  for (int i = 0; i < 5; ++i)
    device.answer("");
  EXPECT_THROW(ask(), DeviceExhausted);
  const Lines calls = platform.calls();
  ASSERT_EQ(calls.size(), 16U);
  EXPECT_EQ(Lines(calls.begin() + 4, calls.begin() + 8),
            (Lines{"Flush read", "Read 4", "Flush read", "Read 3"}));
  EXPECT_EQ(calls.back(), "Read 3");
}

TEST_F(LowEndCommand, LengthOfThePayloadIsLittleEndian) {
  const Bytes document(300, 'x');
  device.expect(kStatusRequest).answer("1B 4E 04 00 2C 01 00 00 00 00").answer(document);
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, std::string(300, 'x'));
  EXPECT_EQ(platform.calls({Kind::kDevice}).back(), "Read 300");
}

TEST_F(LowEndCommand, LengthOfThePayloadHasFourBytes) {
  const struct {
    const char* header;
    const char* read;
  } kCases[] = {{"1B 4E 04 00 00 01 00 00 00 00", "Read 256"},
                {"1B 4E 04 00 00 00 01 00 00 00", "Read 65536"},
                {"1B 4E 04 00 00 00 00 01 00 00", "Read 16777216"}};
  platform.emptyReadLimit = 1;
  for (const auto& row : kCases) {
    platform.forgetCalls();
    device.expect(kStatusRequest).answer(row.header).answer("");
    EXPECT_THROW(ask(), DeviceExhausted);
    EXPECT_EQ(platform.calls().back(), row.read);
  }
}

TEST_F(LowEndCommand, PayloadIsRawBytes) {
  device.expect(kStatusRequest).answer("1B 4E 04 00 05 00 00 00 00 00").answer("00 FF 1B 4E 00");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, std::string("\x00\xFF\x1B\x4E\x00", 5));
}

TEST_F(LowEndCommand, AnswerOfAnotherOperationKeepsThePayload) {
  for (const char* header : {"1B 4E 03 00 02 00 00 00 00 00", "1B 4E 00 00 02 00 00 00 00 00",
                             "1B 4E 02 00 02 00 00 00 01 00", "1B 4E FF 00 02 00 00 00 00 00"}) {
    device.expect(kStatusRequest).answer(header);
    EXPECT_EQ(ask(), 10);
    EXPECT_EQ(payload_, "old");
    EXPECT_EQ(responseBytes(), header);
  }
}

TEST_F(LowEndCommand, FirstTwoBytesOfAnAnswerAreNotTested) {
  device.expect(kStatusRequest).answer("00 FF 04 EE 02 00 00 00 EE EE").answer("7B 7D");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "{}");
  EXPECT_EQ(responseBytes(), "00 FF 04 EE 02 00 00 00 EE EE");
}

TEST_F(LowEndCommand, HeaderCutAtEachLength) {
  const Bytes header = bytes("1B 4E 04 EE 02 00 00 00 EE EE");
  for (std::size_t length = 0; length < header.size(); ++length) {
    SCOPED_TRACE(length);
    payload_ = "old";
    Bytes cut(header.begin(), header.begin() + static_cast<std::ptrdiff_t>(length));
    device.expect(kStatusRequest).answer(cut);
    if (length >= 5) device.answer("7B 7D");
    EXPECT_EQ(ask(), static_cast<int>(length));
    // The operation stands at 2, the low byte of the length at 4.
    EXPECT_EQ(payload_, length < 3 ? "old" : length < 5 ? "" : "{}");
    cut.resize(10);
    EXPECT_EQ(responseBytes(), hex(cut));
  }
}

TEST_F(LowEndCommand, FailedWriteIsFollowedByTheReadAllTheSame) {
  device.expectAndFail(kStatusRequest).answer("1B 4E 04 00 02 00 00 00 00 00").answer("7B 7D");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "{}");
}

TEST_F(LowEndCommand, FailedWriteWithoutAnErrorSkipsTheRead) {
  platform.failCall("WriteFile", 1, 0);
  EXPECT_EQ(ask(), 0);
  EXPECT_EQ(payload_, "old");
  EXPECT_EQ(responseBytes(), hex(Bytes(10)));
  EXPECT_EQ(platform.calls(), (Lines{"Flush write", "Write 1B 4E 04 00 00 00 00 00 80 00"}));
}

TEST_F(LowEndCommand, FailedHeaderReadKeepsThePayload) {
  device.expect(kStatusRequest).failRead();
  EXPECT_EQ(ask(), 0);
  EXPECT_EQ(payload_, "old");
  EXPECT_EQ(responseBytes(), hex(Bytes(10)));
}

TEST_F(LowEndCommand, FailedHeaderReadThatBroughtBytesCountsThem) {
  device.expect(kStatusRequest).failRead(31, "1B 4E 04 00 02 00 00 00 00 00").answer("7B 7D");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "{}");
}

TEST_F(LowEndCommand, ShortWriteGoesUnnoticed) {
  platform.shortDeviceCall(2, 1);
  device.expect("1B").answer("1B 4E 04 00 02 00 00 00 00 00").answer("7B 7D");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "{}");
}

TEST_F(LowEndCommand, FailedFlushesGoUnnoticed) {
  platform.failEveryCall("FlushFileBuffers");
  device.expect(kStatusRequest).answer("1B 4E 04 00 02 00 00 00 00 00").answer("7B 7D");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "{}");
}

TEST_F(LowEndCommand, ReadThatClaimsMoreThanItWasAskedForIsCut) {
  platform.claimRead(1, 5000);
  platform.claimRead(2, 0xFFFFFFFFU);
  device.expect(kStatusRequest).answer("1B 4E 04 00 02 00 00 00 00 00").answer("7B 7D");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "{}");
}

TEST_F(LowEndCommand, ReadThatClaimsLessThanItBroughtIsTakenAtItsWord) {
  platform.claimRead(2, 1);
  device.expect(kStatusRequest)
      .answer("1B 4E 04 00 02 00 00 00 00 00")
      .answer("7B 00")
      .answer("7D");
  EXPECT_EQ(ask(), 10);
  EXPECT_EQ(payload_, "{}");
}

TEST_F(LowEndCommand, PayloadBeyondAllMemoryIsAFailedAllocation) {
  std::string text = "kept";
  // What is left when a packet brought five bytes more than it announced.
  EXPECT_THROW(Peer::readPayload(controller, text, std::size_t{0} - 5), std::bad_alloc);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(platform.calls(), Lines{});
}

TEST_F(LowEndCommand, PayloadIsPutBehindWhatTheTextHolds) {
  std::string text = "ab";
  device.answer("63 64");
  Peer::readPayload(controller, text, 2);
  EXPECT_EQ(text, "abcd");
  Peer::readPayload(controller, text, 0);
  EXPECT_EQ(text, "abcd");
}

// --- Single transfers
// ----------------------------------------------------------------------------

TEST_F(LowEndCommand, WriteRequestTellsSuccessOrTheLastError) {
  const Bytes request = bytes("01 02 03");
  device.expect("01 02 03");
  EXPECT_NE(Peer::writeRequest(controller, request.data(), request.size()), 0);
  platform.failCall("WriteFile", 1, 1234);
  EXPECT_EQ(Peer::writeRequest(controller, request.data(), request.size()), 1234);
  platform.failCall("WriteFile", 1, 0);
  EXPECT_EQ(Peer::writeRequest(controller, request.data(), request.size()), 0);
  EXPECT_EQ(platform.calls(), (Lines{"Flush write", "Write 01 02 03", "Flush write",
                                     "Write 01 02 03", "Flush write", "Write 01 02 03"}));
}

TEST_F(LowEndCommand, ReadResponseTellsTheBytesRead) {
  std::array<std::uint8_t, 4> buffer = {};
  device.answer("0A 0B");
  EXPECT_EQ(Peer::readResponse(controller, buffer.data(), buffer.size()), 2U);
  device.failRead(5, "0C");
  EXPECT_EQ(Peer::readResponse(controller, buffer.data(), buffer.size()), 1U);
  device.failRead(5);
  EXPECT_EQ(Peer::readResponse(controller, buffer.data(), buffer.size()), 0U);
  EXPECT_EQ(platform.calls(),
            (Lines{"Flush read", "Read 4", "Flush read", "Read 4", "Flush read", "Read 4"}));
}

// --- The operations
// ------------------------------------------------------------------------------

TEST_F(LowEndCommand, QueryAsksWithItsOperation) {
  const struct {
    const char* request;
    const char* header;
    int (*ask)(USB_LowEnd_Controller&, std::string&);
  } kQueries[] = {
      {"1B 4E 03 00 00 00 00 00 80 00", "1B 4E 03 00 02 00 00 00 00 00", Peer::supportedFeatures},
      {"1B 4E 04 00 00 00 00 00 80 00", "1B 4E 04 00 02 00 00 00 00 00", Peer::deviceStatus},
  };
  for (const auto& query : kQueries) {
    device.expect(query.request).answer(query.header).answer("7B 7D");
    std::string json;
    EXPECT_EQ(query.ask(controller, json), 10);
    EXPECT_EQ(json, "{}");
  }
}

TEST_F(LowEndCommand, DocumentThatCameEmptyIsACommandFailure) {
  std::string json;
  device.request(3).reply(3, "");
  EXPECT_EQ(Peer::supportedFeatures(controller, json), 15016);
  device.request(4).reply(3, "");
  EXPECT_EQ(Peer::deviceStatus(controller, json), 15016);
  device.request(4).failRead();
  EXPECT_EQ(Peer::deviceStatus(controller, json), 15016);
}

TEST_F(LowEndCommand, DocumentFromBeforeCountsAsOne) {
  std::string json = "old";
  device.request(3).reply(4, "");
  EXPECT_EQ(Peer::supportedFeatures(controller, json), 10);
  device.request(4).failRead();
  EXPECT_EQ(Peer::deviceStatus(controller, json), 0);
  EXPECT_EQ(json, "old");
}

TEST_F(LowEndCommand, AbortAsksWithOperationFifteenAndDropsTheAnswer) {
  for (const bool before : {false, true}) {
    bool argument = before;
    device.expect("1B 4E 0F 00 00 00 00 00 80 00").answer("1B 4E 0F 00 03 00 00 00 01 00");
    device.answer("61 62 63");
    EXPECT_EQ(Peer::abort(controller, argument), 10);
    EXPECT_EQ(argument, before);
  }
  bool argument = true;
  device.expect("1B 4E 0F 00 00 00 00 00 80 00").answer("1B 4E 0F");
  EXPECT_EQ(Peer::abort(controller, argument), 3);
}

TEST_F(LowEndCommand, VerdictHasItsStatus) {
  for (int value = 0; value <= 255; ++value) {
    int status = 15010;
    if (value == 0) status = 15009;
    if (value == 1 || value == 2) status = 15016;
    if (value == 4 || value == 6) status = 15011;
    EXPECT_EQ(Peer::responseStatus(controller, static_cast<unsigned char>(value)), status) << value;
  }
}

// --- The start request
// ---------------------------------------------------------------------------

Bytes startRequest(std::size_t documentLength) {
  const std::string request = tvrscn::startScanRequest(std::string(documentLength, 'x'));
  return {request.begin(), request.end()};
}

TEST(LowEndStartRequest, IsHeaderAndDocument) {
  EXPECT_EQ(hex(startRequest(3)), "1B 4E 01 00 03 00 00 00 80 00 78 78 78");
  EXPECT_EQ(hex(startRequest(0)), "1B 4E 01 00 00 00 00 00 80 00");
  EXPECT_EQ(hex(startRequest(300)), hex(bytes("1B 4E 01 00 2C 01 00 00 80 00 78*300")));
}

TEST(LowEndStartRequest, LengthIsCountedIn16BitsAndToldIn32) {
  const struct {
    std::size_t document;
    const char* header;  // as far as it goes out
    std::size_t length;
  } kCases[] = {
      {65525, "1B 4E 01 00 F5 FF 00 00 80 00", 65535},
      {65526, "", 0},
      {65527, "1B", 1},
      {65531, "1B 4E 01 00 FB", 5},
      {65536, "1B 4E 01 00 00 00 01 00 80 00", 10},
      {65636, "1B 4E 01 00 64 00 01 00 80 00", 110},
      {131072, "1B 4E 01 00 00 00 02 00 80 00", 10},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.document);
    const Bytes request = startRequest(row.document);
    const Bytes header = bytes(row.header);
    ASSERT_EQ(request.size(), row.length);
    EXPECT_EQ(
        hex(Bytes(request.begin(), request.begin() + static_cast<std::ptrdiff_t>(header.size()))),
        row.header);
    EXPECT_EQ(Bytes(request.begin() + static_cast<std::ptrdiff_t>(header.size()), request.end()),
              Bytes(row.length - header.size(), 'x'));
  }
}

// --- Ranges
// --------------------------------------------------------------------------------------

class LowEndRanges : public LowEndTest {
 protected:
  void read(std::string json) { Peer::ranges(controller, json, darkness_, contrast_); }

  void expectRanges(std::array<int, 4> darkness, std::array<int, 4> contrast) const {
    EXPECT_EQ(valuesOf(darkness_), darkness);
    EXPECT_EQ(valuesOf(contrast_), contrast);
  }

  void forget() {
    darkness_ = {1, 2, 3, 4};
    contrast_ = {5, 6, 7, 8};
  }

  static std::array<int, 4> valuesOf(const IPPMinMaxNormalStepData& range) {
    return {range.Min, range.Max, range.Normal, range.Step};
  }

  IPPMinMaxNormalStepData darkness_ = {1, 2, 3, 4};
  IPPMinMaxNormalStepData contrast_ = {5, 6, 7, 8};
};

constexpr std::array<int, 4> kOldDarkness = {1, 2, 3, 4};
constexpr std::array<int, 4> kOldContrast = {5, 6, 7, 8};

TEST_F(LowEndRanges, BothAreRead) {
  read(R"({"supportedDarknessInfo":{"start":-100,"end":100,"userDefault":10},)"
       R"("supportedContrastInfo":{"start":1,"end":9,"userDefault":5,"step":2}})");
  expectRanges({-100, 100, 10, 4}, {1, 9, 5, 8});
}

TEST_F(LowEndRanges, OneWithoutTheOtherIsRead) {
  read(R"({"supportedDarknessInfo":{"start":-4,"end":4,"userDefault":0}})");
  expectRanges({-4, 4, 0, 4}, kOldContrast);
  forget();
  read(R"({"supportedContrastInfo":{"start":-4,"end":4,"userDefault":0}})");
  expectRanges(kOldDarkness, {-4, 4, 0, 8});
}

TEST_F(LowEndRanges, NumbersOfEveryKindBecomeIntegers) {
  read(R"({"supportedDarknessInfo":{"start":-2.9,"end":2.9,"userDefault":1e1},)"
       R"("supportedContrastInfo":{"start":-2147483648,"end":2147483647,"userDefault":-0.5}})");
  expectRanges({-2, 2, 10, 4}, {INT_MIN, INT_MAX, 0, 8});
}

TEST_F(LowEndRanges, NumbersBeyondAnIntegerStayDefined) {
  read(R"({"supportedDarknessInfo":{"start":-1e300,"end":1e300,"userDefault":4294967297},)"
       R"("supportedContrastInfo":{"start":-4294967297,"end":18446744073709551615,)"
       R"("userDefault":2147483648.5}})");
  expectRanges({INT_MIN, INT_MAX, 1, 4}, {-1, -1, INT_MAX, 8});
}

TEST_F(LowEndRanges, SectionThatLacksANumberIsSkippedAndTheOtherRead) {
  for (const char* section :
       {R"({"end":9,"userDefault":5})", R"({"start":1,"userDefault":5})", R"({"start":1,"end":9})",
        R"({"start":"1","end":9,"userDefault":5})", R"({"start":1,"end":true,"userDefault":5})",
        R"({"start":1,"end":9,"userDefault":null})", R"({"start":[1],"end":9,"userDefault":5})",
        R"({"start":1,"end":{},"userDefault":5})", R"({"Start":1,"End":9,"UserDefault":5})",
        R"({})"}) {
    SCOPED_TRACE(section);
    forget();
    read(std::string(R"({"supportedDarknessInfo":)") + section +
         R"(,"supportedContrastInfo":{"start":11,"end":19,"userDefault":15}})");
    expectRanges(kOldDarkness, {11, 19, 15, 8});
    forget();
    read(std::string(R"({"supportedContrastInfo":)") + section +
         R"(,"supportedDarknessInfo":{"start":11,"end":19,"userDefault":15}})");
    expectRanges({11, 19, 15, 4}, kOldContrast);
  }
}

TEST_F(LowEndRanges, SectionThatIsNoObjectEndsTheReading) {
  for (const char* section : {"null", "true", "5", "1.5", R"("text")", "[1,9,5]"}) {
    SCOPED_TRACE(section);
    forget();
    read(std::string(R"({"supportedDarknessInfo":)") + section +
         R"(,"supportedContrastInfo":{"start":11,"end":19,"userDefault":15}})");
    expectRanges(kOldDarkness, kOldContrast);
    forget();
    read(std::string(R"({"supportedContrastInfo":)") + section +
         R"(,"supportedDarknessInfo":{"start":11,"end":19,"userDefault":15}})");
    expectRanges({11, 19, 15, 4}, kOldContrast);
  }
}

TEST_F(LowEndRanges, DocumentWithoutTheSectionsChangesNothing) {
  for (const char* document :
       {"", "{}", R"({"supportedMediaSizes":{}})", "[]", "null", "5", R"("supportedDarknessInfo")",
        R"(["supportedDarknessInfo"])", "no json", "{",
        R"({"supportedDarknessInfo":{"start":1,"end":9,"userDefault":5}} x)",
        R"({/**/"supportedDarknessInfo":{"start":1,"end":9,"userDefault":5}})"}) {
    SCOPED_TRACE(document);
    read(document);
    expectRanges(kOldDarkness, kOldContrast);
  }
  EXPECT_EQ(platform.calls(), Lines{});
}

TEST_F(LowEndRanges, QueryAsksTheDevice) {
  device.features(R"({"supportedDarknessInfo":{"start":-50,"end":50,"userDefault":1},)"
                  R"("supportedContrastInfo":{"start":-5,"end":5,"userDefault":2}})");
  controller.GetUSBBrightnessContrastValue(darkness_, contrast_);
  expectRanges({-50, 50, 1, 4}, {-5, 5, 2, 8});
}

TEST_F(LowEndRanges, QueryThatBringsNothingChangesNothing) {
  device.request(3).reply(3, "");
  controller.GetUSBBrightnessContrastValue(darkness_, contrast_);
  device.request(3).failRead();
  controller.GetUSBBrightnessContrastValue(darkness_, contrast_);
  device.features("not available");
  controller.GetUSBBrightnessContrastValue(darkness_, contrast_);
  expectRanges(kOldDarkness, kOldContrast);
  EXPECT_EQ(platform.calls({Kind::kLog, Kind::kDialog, Kind::kNotification, Kind::kSleep}),
            Lines{});
}

}  // namespace
