// Each QZ command on its own: the exact bytes that go out, and the reservation's names.
#include <span>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/qz_test.h"

namespace {

using tvrscn::test::bytes;
using tvrscn::test::hex;
using tvrscn::test::Kind;
using tvrscn::test::kQZClient;
using tvrscn::test::kReserve;
using tvrscn::test::Lines;
using tvrscn::test::QZDialogue;
using tvrscn::test::QZTest;

using Controller = USB_QZ_Controller;
using Command = int (*)(Controller&);

std::string spelled(std::string_view hexBytes) {
  return hex(bytes(hexBytes));
}

// The packets that the host wrote.
Lines written(const tvrscn::test::FakePlatform& platform) {
  Lines packets;
  for (const std::string& call : platform.calls({Kind::kDevice})) {
    if (call.starts_with("Write ")) packets.push_back(call.substr(6));
  }
  return packets;
}

class QZCommand : public QZTest {
 protected:
  QZCommand() { ControllerTestPeer::reservedClientID(controller) = kQZClient; }
};

struct CommandRow {
  const char* name;
  Command run;
  const char* request;
  const char* reply;  // an accepted one without data
};

const CommandRow kCommands[] = {
    {"wake-up", QZTestPeer::wakeup, "00 C3 00 00 00 00 00 00", "EE C3 00 00 00 00 00 00"},
    {"RESERVE UNIT", QZTestPeer::reserveUnit,
     "00 16 00 00 00 00 01 10 00*4 55 54 46 2D 38 00*29 63 6F 6D 70 75 74 65 72 00*26 "
     "75 73 65 72 00*30 00*166",
     "05 16 00 00 00 00 00 00"},
    {"TEST UNIT READY", QZTestPeer::testUnitReady, "05 C1 00 00 00 00 00 00",
     "EE C1 00 00 00 00 00 00"},
    {"INITIALIZE", QZTestPeer::initialize, "05 07 00 00 00 00 00 04 00 00 00 00",
     "EE 07 00 00 00 00 00 00"},
    {"INQUIRY", QZTestPeer::inquiry, "05 12 00 00 00 00 00 00", "EE 12 00 00 00 00 00 00"},
    {"MODE SENSE 0x20", [](Controller& c) { return QZTestPeer::modeSense(c, 0x20); },
     "05 5A 00 00 00 00 00 04 20 00 00 00", "EE 5A 00 00 00 00 00 00"},
    {"MODE SENSE 0x03", [](Controller& c) { return QZTestPeer::modeSense(c, 0x03); },
     "05 5A 00 00 00 00 00 04 03 00 00 00", "EE 5A 00 00 00 00 00 00"},
    {"MODE SENSE 0xFF", [](Controller& c) { return QZTestPeer::modeSense(c, 0xFF); },
     "05 5A 00 00 00 00 00 04 FF 00 00 00", "EE 5A 00 00 00 00 00 00"},
    {"MODE SELECT without a source", QZTestPeer::modeSelect, "05 55 00 00 00 00 00 38 00*56",
     "EE 55 00 00 00 00 00 00"},
    {"SET WINDOW without a source", QZTestPeer::setWindow, "05 24 00 00 00 00 00 30 00*48",
     "EE 24 00 00 00 00 00 00"},
    {"SCAN", QZTestPeer::scan, "05 1B 00 00 00 00 00 00", "EE 1B 00 00 00 00 00 00"},
    {"READ BLOCK HEADER", QZTestPeer::readBlockHeader, "05 C2 00 00 00 00 00 00",
     "EE C2 00 00 00 00 00 00"},
    {"READ", QZTestPeer::read, "05 28 00 00 00 00 00 04 00 04 00 00", "EE 28 00 00 00 00 00 00"},
    {"RELEASE UNIT", QZTestPeer::release, "05 17 00 00 00 00 00 00", "EE 17 00 00 00 00 00 00"},
};

TEST_F(QZCommand, WritesItsBytesInOneTransfer) {
  for (const CommandRow& row : kCommands) {
    platform.forgetCalls();
    device.expect(row.request).answer(row.reply);
    EXPECT_EQ(row.run(controller), 0) << row.name;
    EXPECT_EQ(written(platform), Lines{spelled(row.request)}) << row.name;
    EXPECT_EQ(device.problems(), Lines{}) << row.name;
  }
}

TEST_F(QZCommand, ResultIsThatOfTheTransaction) {
  for (const CommandRow& row : kCommands) {
    device.expectAndFail(row.request);
    testing::internal::CaptureStdout();
    EXPECT_EQ(row.run(controller), 15005) << row.name;
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "writeRequest: Failed to write data to the printer\n");
    device.expect(row.request).failRead();
    EXPECT_EQ(row.run(controller), 15002) << row.name;
    EXPECT_EQ(device.problems(), Lines{}) << row.name;
  }
}

TEST_F(QZCommand, RequestsCarryTheClientIdThatTheDeviceAssigned) {
  device.expect("00 C3 00*6").answer("77 C3 00*6");
  device.request(kReserve, QZDialogue::kReservation).answer("A9 16 00*6");
  device.expect("A9 C1 00*6").answer("77 C1 00*6");
  device.expect("A9 17 00*6").answer("00 17 00*6");
  EXPECT_EQ(Peer::wakeup(controller), 0);
  EXPECT_EQ(Peer::reserveUnit(controller), 0);
  EXPECT_EQ(Peer::testUnitReady(controller), 0);
  EXPECT_EQ(Peer::release(controller), 0);
}

TEST_F(QZCommand, FreshControllerSendsClientIdZeroAndNoCancel) {
  USB_QZ_Controller fresh;
  ControllerTestPeer::deviceWrite(fresh) = ControllerTestPeer::deviceWrite(controller);
  ControllerTestPeer::deviceRead(fresh) = ControllerTestPeer::deviceRead(controller);
  device.expect("00 07 00 00 00 00 00 04 00 00 00 00").answer("EE 07 00*6");
  EXPECT_EQ(Peer::initialize(fresh), 0);
  ControllerTestPeer::deviceWrite(fresh) = INVALID_HANDLE_VALUE;
  ControllerTestPeer::deviceRead(fresh) = INVALID_HANDLE_VALUE;
}

TEST_F(QZCommand, InitializeTellsOfACancelledJob) {
  controller.setJobCancelled(true);
  device.expect("05 07 00 00 00 00 00 04 80 00 00 00").answer("EE 07 00*6");
  device.expect("05 07 00 00 00 00 00 04 00 00 00 00").answer("EE 07 00*6");
  EXPECT_EQ(Peer::initialize(controller), 0);
  EXPECT_EQ(Peer::initialize(controller), 0) << "the reply has cleared the flag";
}

TEST_F(QZCommand, ModeSelectSendsWhatTheSourceWants) {
  auto& source = prepareJob();
  source.SetPaperSource(1);
  auto page = *source.GetSubDevicesPageData();
  page.bFeederOptions = 0x21;
  source.SetSubDevicesPageData(&page);
  device.modeSelect(QZDialogue::kFeederSelect);
  EXPECT_EQ(Peer::modeSelect(controller), 0);
  EXPECT_EQ(source.GetSubDevicesPageData()->bFeederOptions, 0x21) << "the received page stays";
}

TEST_F(QZCommand, SetWindowSendsTheWindowOfTheSource) {
  prepareJob();
  Peer::pendingModePage(controller) = 0x20;
  device.modeSenseLimits().setWindow();
  EXPECT_EQ(Peer::modeSense(controller, 0x20), 0);
  EXPECT_EQ(Peer::setWindow(controller), 0);
}

TEST_F(QZCommand, ModeSenseAloneAsksForNoPageToBeKept) {
  auto& source = prepareJob();
  device.modeSenseLimits();
  EXPECT_EQ(Peer::modeSense(controller, 0x20), 0);
  EXPECT_EQ(source.GetSubDevicesPageData()->bFeederOptions, 0);
}

TEST_F(QZCommand, CancelSequenceIsInitializeAndRelease) {
  device.initialize().release();
  EXPECT_EQ(Peer::cancelSequence(controller), 15009);
}

// --- The reservation
// ------------------------------------------------------------------------------

class QZReservation : public QZTest {
 protected:
  // The two name fields of the reservation that the names of the system give.
  std::string fields(const std::wstring& computer, const std::wstring& user) {
    platform.computerName = computer;
    platform.userName = user;
    platform.forgetCalls();
    reserve_.answer("05 16 00 00 00 00 00 00");
    platform.plug(&reserve_);
    EXPECT_EQ(Peer::reserveUnit(controller), 0);
    platform.plug(&device);
    return written(platform).at(0).substr(std::size_t{3} * (8 + 38), std::size_t{3} * 68 - 1);
  }

  // A computer's name that does not fit: no request, and a line in the log.
  void expectRefused(const char* field, int length) {
    platform.forgetCalls();
    EXPECT_EQ(Peer::reserveUnit(controller), 15010);
    EXPECT_EQ(platform.calls({Kind::kDevice}), Lines{});
    EXPECT_EQ(platform.logLines(),
              Lines{std::string("RESERVE UNIT is not sent: the name for ") + field + " has " +
                    std::to_string(length) + " bytes in UTF-8, and only 33 fit"});
  }

 private:
  // Takes any request.
  class AnyRequest : public tvrscn::test::ScriptedDevice {
   public:
    bool write(std::span<const std::uint8_t> /*data*/) override { return true; }
  };
  AnyRequest reserve_;
};

TEST_F(QZReservation, NamesAreGatheredAndConvertedInOrder) {
  device.reserve();
  EXPECT_EQ(Peer::reserveUnit(controller), 0);
  EXPECT_EQ(platform.calls({Kind::kText}),
            (Lines{"GetUserNameW", "GetComputerNameW",
                   "WideCharToMultiByte page 65001 flags 0 from 9 to 0",
                   "WideCharToMultiByte page 65001 flags 0 from 9 to 9",
                   "WideCharToMultiByte page 65001 flags 0 from 5 to 0",
                   "WideCharToMultiByte page 65001 flags 0 from 5 to 5"}));
}

TEST_F(QZReservation, NameOf33CharactersFits) {
  EXPECT_EQ(fields(std::wstring(33, L'c'), std::wstring(33, L'u')), spelled("63*33 00 75*33 00"));
}

TEST_F(QZReservation, NameOf34CharactersIsSentAsEmpty) {
  EXPECT_EQ(fields(std::wstring(34, L'c'), std::wstring(34, L'u')), spelled("00*68"));
}

TEST_F(QZReservation, EmptyNamesAreZeros) {
  EXPECT_EQ(fields(L"", L""), spelled("00*68"));
}

TEST_F(QZReservation, NamesAreUtf8) {
  // U+00E9 is C3 A9, U+20AC is E2 82 AC.
  EXPECT_EQ(fields(L"caf\u00E9", L"\u20ACu"), spelled("63 61 66 C3 A9 00*29 E2 82 AC 75 00*30"));
}

TEST_F(QZReservation, NameOf33BytesInUtf8Fits) {
  // 11 times 3 bytes; 16 times 2 bytes and one more.
  EXPECT_EQ(fields(std::wstring(11, L'\u20AC'), std::wstring(16, L'\u00E9') + L"u"),
            spelled("E2 82 AC E2 82 AC E2 82 AC E2 82 AC E2 82 AC E2 82 AC E2 82 AC E2 82 AC "
                    "E2 82 AC E2 82 AC E2 82 AC 00 "
                    "C3 A9 C3 A9 C3 A9 C3 A9 C3 A9 C3 A9 C3 A9 C3 A9 C3 A9 C3 A9 C3 A9 C3 A9 "
                    "C3 A9 C3 A9 C3 A9 C3 A9 75 00"));
}

TEST_F(QZReservation, LongerNameIsNotCutAndNotSent) {
  platform.computerName = std::wstring(11, L'\u20AC') + L"c";  // 34 bytes
  expectRefused("csComputerName", 34);
  platform.computerName = std::wstring(33, L'\u20AC');  // 99 bytes
  expectRefused("csComputerName", 99);
  platform.computerName = L"computer";
  platform.userName = std::wstring(17, L'\u00E9');  // 34 bytes
  expectRefused("csUserName", 34);
  platform.computerName = std::wstring(33, L'\u00E9');  // 66 bytes: the first field is told
  expectRefused("csComputerName", 66);
}

TEST_F(QZReservation, SequenceEndsBeforeANameThatDoesNotFitGoesOut) {
  prepareJob();
  hideDialogs();
  platform.userName = std::wstring(33, L'\u20AC');
  device.wakeup();
  EXPECT_EQ(scan(), 1);
  EXPECT_EQ(platform.notifications(), Lines{"1011"});
}

TEST_F(QZReservation, NamesThatCannotBeHadAreSentAsEmpty) {
  platform.failCall("GetUserNameW");
  EXPECT_EQ(fields(L"c", L"u"), spelled("63 00*67"));
  platform.failCall("GetComputerNameW");
  EXPECT_EQ(fields(L"c", L"u"), spelled("00*34 75 00*33"));
}

TEST_F(QZReservation, NameThatCannotBeConvertedIsSentAsEmpty) {
  platform.failCall("WideCharToMultiByte", 1);  // the computer's length
  EXPECT_EQ(fields(L"c", L"u"), spelled("00*34 75 00*33"));
  platform.failCall("WideCharToMultiByte", 2);  // its bytes
  EXPECT_EQ(fields(L"c", L"u"), spelled("00*34 75 00*33"));
}

TEST_F(QZReservation, EncodedTextHoldsItsTerminator) {
  EXPECT_EQ(Peer::encoded(controller, L"", 65001), std::string(1, '\0'));
  EXPECT_EQ(Peer::encoded(controller, L"a\u00E9", 65001), std::string("a\xC3\xA9\0", 4));
}

}  // namespace
