// The device's side of a LowEnd job in words, and a fixture with a controller on such a device.
#ifndef TVRSCN_TESTS_SUPPORT_LOWEND_TEST_H
#define TVRSCN_TESTS_SUPPORT_LOWEND_TEST_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tests/support/bytes.h"
#include "tests/support/lowend_test_peer.h"
#include "tests/support/platform_test.h"
#include "tests/support/scripted_device.h"

namespace tvrscn::test {

// Ten header bytes as a device sends them. The two that nobody reads are EE, so that reading them
// shows.
Bytes lowEndHeader(unsigned operation, std::uint32_t length, unsigned status = 0);
// A header and the payload that it announces, in one transfer: an image packet unless told
// otherwise.
Bytes lowEndPacket(std::string_view payload, unsigned status = 0, unsigned operation = 2);

// Each answer is two transfers, header and document; an image packet is one.
class LowEndDialogue : public ScriptedDevice {
 public:
  // The ten bytes of a request without payload.
  LowEndDialogue& request(unsigned operation);
  // An answer; the header alone when there is no document.
  LowEndDialogue& reply(unsigned operation, std::string_view document, unsigned status = 0);

  // Request and answer of an operation.
  LowEndDialogue& features(std::string_view document = kFeatures);
  LowEndDialogue& status(std::string_view document = kReady);
  // The start of a job, by the request of `settings()`.
  LowEndDialogue& startScan(std::string_view answer = kAccepted, unsigned status = 0);
  // What the host writes to start one.
  LowEndDialogue& startRequest(std::string_view document = kFlatbedRequest);
  // Features, a ready device and an accepted job: all that the caller's thread exchanges.
  LowEndDialogue& open() { return features().status().startScan(); }

  LowEndDialogue& packet(std::string_view payload, unsigned status = 0);
  LowEndDialogue& lastPacket(std::string_view payload = "") { return packet(payload, 1); }

  // Offers A4, code 4, in both sources.
  static constexpr std::string_view kFeatures =
      R"({"supportedMediaSizes":{"adf":[0,4],"flatbed":[0,4]}})";
  // Ready, with a feeder that is closed and empty.
  static constexpr std::string_view kReady =
      R"({"status":{"busy":false,"flatbedCoverOpen":false,"ready":true},)"
      R"("adfStatus":{"adfCoverOpen":false,"adfPaperLoaded":false,"installed":true,)"
      R"("jamPresent":false}})";
  static constexpr std::string_view kAccepted = R"({"result":"Starting scan","status":204})";
  // The request for `settings()`: A4, 300 dpi, grey, one-sided, from the flatbed.
  static constexpr std::string_view kFlatbedRequest =
      R"({"compression":1,"contrast":0,"darkness":0,"fileFormat":1,"imageComposition":2,)"
      R"("mediaSize":4,"name":"","orientation":0,"resolution":300,"scanDuplex":0,)"
      R"("scanSource":7})";
};

// Without a dictionary, so that every failure is told by 1011 alone.
class LowEndTest : public PlatformTest {
 protected:
  using Peer = LowEndTestPeer;
  using BasePeer = ControllerTestPeer;

  LowEndTest();
  // Fails the test when the device was not spoken to as scripted.
  void TearDown() override;

  // Gives the controller texts that are the names of their fields: failures show dialogs.
  void showDialogs();
  // A job of `settings_` into the folder, with the recording callback. It ends when the worker has
  // been asked for.
  long scan();
  // Runs the worker that the last scan asked for, and returns the thread's result.
  unsigned runWorker();
  // The worker on its own: makes what a started job of `settings_` leaves to it, and runs it.
  unsigned work();

  LowEndDialogue device;
  TemporaryFolder folder;
  USB_LowEnd_Controller controller;
  TevraScanUIData settings_;
  bool errorShown_ = false;  // what the last scan said of dialogs
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_LOWEND_TEST_H
