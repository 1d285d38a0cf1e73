// The device's side of a QZ job in words, and a fixture with a controller on such a device.
#ifndef TVRSCN_TESTS_SUPPORT_QZ_TEST_H
#define TVRSCN_TESTS_SUPPORT_QZ_TEST_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tests/support/bytes.h"
#include "tests/support/platform_test.h"
#include "tests/support/qz_test_peer.h"
#include "tests/support/scripted_device.h"

namespace tvrscn::test {

// Operation codes as they stand on the wire.
enum QZCode : unsigned {
  kInitialize = 0x07,
  kInquiry = 0x12,
  kReserve = 0x16,
  kRelease = 0x17,
  kScan = 0x1B,
  kSetWindow = 0x24,
  kRead = 0x28,
  kModeSelect = 0x55,
  kModeSense = 0x5A,
  kTestUnitReady = 0xC1,
  kReadBlockHeader = 0xC2,
  kWakeup = 0xC3,
};

// The client id that the scripted device assigns.
inline constexpr unsigned kQZClient = 0x05;

// Operation statuses and the words that the log has for them.
struct QZStatusText {
  unsigned status;
  const char* text;
};

inline constexpr QZStatusText kQZStatusTexts[] = {
    {0, "Good:Command is accepted correctly"},
    {2, "Check condition: Error due to command has occured"},
    {8, "Busy: Command cannot be accepted, Resend the command"},
    {9, "Scanning: Command cannot be accepted, scanning is in progress"},
    {24, "Reservation Conflict: Scanning resource is reserved by a different job"},
    {33, "Scan Auth Error: Authentication error for scan occurred"},
    {34, "Scan Function Disabled: Scan feature is disabled"},
    {35,
     "Scan Prohibited Time: Scanning is not possible due to the time limitation for the scan "
     "feature."},
    {36, "Scan imaging Error: Scanning could not complete."},
};

// Eight header bytes.
Bytes qzHeader(unsigned clientId, unsigned command, unsigned status, unsigned scannerStatus,
               std::uint32_t length);

// What a device's answer says besides its data.
struct QZAnswer {
  unsigned status = 0;         // bOperationStatus
  unsigned scannerStatus = 0;  // bScannerStatus
};

class QZDialogue : public ScriptedDevice {
 public:
  // One request in one transfer: header and payload. Wake-up and RESERVE UNIT carry no client id.
  QZDialogue& request(unsigned command, std::string_view payload = "");
  // A reply in two transfers, the header and, if there are any, the data. A reply to RESERVE UNIT
  // carries the client id; that of the others is EE, so that reading it shows.
  QZDialogue& reply(unsigned command, unsigned status = 0, unsigned scannerStatus = 0,
                    std::string_view data = "");
  // A header alone that announces `length` bytes.
  QZDialogue& replyHeader(unsigned command, std::uint32_t length, QZAnswer answer = {});
  // Status 2 with its sense bytes ("02 3A 00"), those in front of them EE.
  QZDialogue& checkCondition(unsigned command, std::string_view sense);

  // Request and reply of each step of a job of `settings()` on a device with `kLimits`.
  QZDialogue& wakeup(QZAnswer answer = {});
  QZDialogue& reserve(QZAnswer answer = {});
  QZDialogue& testUnitReady(QZAnswer answer = {});
  QZDialogue& initialize(QZAnswer answer = {});
  QZDialogue& initializeCancelled(QZAnswer answer = {});
  QZDialogue& modeSenseLimits(std::string_view page = kLimits, QZAnswer answer = {});
  QZDialogue& modeSenseUnits(std::string_view unit = kUnits, QZAnswer answer = {});
  QZDialogue& modeSelect(std::string_view payload = kFlatbedSelect, QZAnswer answer = {});
  QZDialogue& setWindow(std::string_view payload = kWindow, QZAnswer answer = {});
  QZDialogue& startScan(QZAnswer answer = {});
  QZDialogue& readBlockHeader(QZAnswer answer = {});
  QZDialogue& readRequest();
  // A READ whose reply has this scanner state (2, 3, 5 ...) and these image bytes.
  QZDialogue& readImage(unsigned state, std::string_view data, unsigned status = 0);
  QZDialogue& release(QZAnswer answer = {});

  // Wake-up, reservation, document sensor.
  QZDialogue& openFlatbed() { return wakeup().reserve().testUnitReady(); }
  QZDialogue& openFeeder() { return wakeup().reserve().testUnitReady(kDocument); }
  // INITIALIZE to READ BLOCK HEADER.
  QZDialogue& setUp(std::string_view select = kFlatbedSelect, std::string_view window = kWindow);
  // A whole pass of one READ with three bytes; `end` is the document sensor's word behind it.
  QZDialogue& flatbedPage();
  QZDialogue& feederPage(QZAnswer end);
  QZDialogue& close() { return initialize().release(); }

  // A document lies in the feeder.
  static constexpr QZAnswer kDocument = {0, 0x40};
  // The mode page: feeder and duplex unit; flatbed 216.0 x 297.0 mm, feeder 216.0 x 356.0 mm; 100
  // to 600 dpi. What nobody reads is EE.
  static constexpr std::string_view kLimits =
      "EE EE 23 EE EE 30 EE EE 00 00 08 70 00 00 0B 9A 00 00 08 70 00 00 0D E8 EE*4 "
      "02 58 02 58 00 64 00 64 EE*20";
  static constexpr std::string_view kUnits = "A0 A1 A2 A3 A4 A5 A6 A7";
  // MODE SELECT of a one-sided job: flatbed, one page; feeder without a limit.
  static constexpr std::string_view kFlatbedSelect = "00*3 00 01 00*51";
  static constexpr std::string_view kFeederSelect = "00*2 40 00*53";
  // SET WINDOW of `settings()`: 300 dpi, 210.0 x 297.0 mm, grey, background kept.
  static constexpr std::string_view kWindow =
      "00*2 01 2C 01 2C 00*10 00 00 08 34 00 00 0B 9A 00*2 20 08 10 01 00*10 "
      "00 00 08 34 00 00 0B 9A";
  // RESERVE UNIT of the fake system: "UTF-8", "computer", "user".
  static constexpr std::string_view kReservation =
      "00*4 55 54 46 2D 38 00*29 63 6F 6D 70 75 74 65 72 00*26 75 73 65 72 00*30 00*166";
};

// Without a dictionary: no dialog out of a sense, empty ones out of a failed exchange.
class QZTest : public PlatformTest {
 protected:
  using Peer = QZTestPeer;
  using BasePeer = ControllerTestPeer;

  QZTest();
  // Fails the test when the device was not spoken to as scripted.
  void TearDown() override;

  // Gives the controller texts that are the names of their fields.
  void giveDictionary();
  // Failures show no dialogs.
  void hideDialogs() { BasePeer::usingTevraUI(controller) = false; }
  // What a job leaves in the controller before its first command: the recording callback, the
  // folder, a source with `settings_`, and the client id.
  CQZUSBScanDataSource& prepareJob();
  // A job of `settings_` into the folder, with the recording callback.
  long scan();

  QZDialogue device;
  TemporaryFolder folder;
  USB_QZ_Controller controller;
  TevraScanUIData settings_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_QZ_TEST_H
