// Fixtures over the fake platform: the bare one, and one with an HP controller on a scripted device
// together with the device's side of a job in words.
#ifndef TVRSCN_TESTS_SUPPORT_PLATFORM_TEST_H
#define TVRSCN_TESTS_SUPPORT_PLATFORM_TEST_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/fake_platform.h"
#include "tests/support/scripted_device.h"
#include "tests/support/test_peers.h"
#include "tvrscn/hp_controller.h"

namespace tvrscn::test {

using Lines = std::vector<std::string>;

// A platform of its own for each test; misuse of handles and imaging objects fails the test.
class PlatformTest : public ::testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(platform.problems(), Lines{}); }

  FakePlatform platform;
};

// The device's side of an HP job. Bytes that nobody reads are EE, so that reading them shows.
class HPDialogue : public ScriptedDevice {
 public:
  HPDialogue& inquiry(unsigned status = 0, unsigned source = 0);
  HPDialogue& reserve(unsigned status = 0, unsigned flag = 0, unsigned message = 0);
  HPDialogue& window(unsigned status = 0, unsigned flag = 0, unsigned message = 1,
                     std::string_view request = kFlatbedRequest);
  HPDialogue& position(unsigned status = 0, unsigned message = 0);
  HPDialogue& announce(unsigned status, unsigned type, std::uint32_t size, unsigned lines,
                       unsigned pixels);
  HPDialogue& image(std::string_view data);
  // Announcement and data of one block of 8 lines of 16 pixels.
  HPDialogue& block(unsigned type, std::string_view data);
  HPDialogue& abort(unsigned status = 0);
  HPDialogue& release(unsigned status = 0);

  // A page of header, data and end block, with 5, 3 and 1 bytes.
  HPDialogue& page();
  // Inquiry, reserve and window for the flatbed, or for the feeder.
  HPDialogue& openFlatbed();
  HPDialogue& openFeeder();
  HPDialogue& close() { return abort().release(); }

  // The window of `settings()`: A4, 300 dpi, grey, background off, one-sided.
  static constexpr std::string_view kFlatbedRequest =
      "1B A8 24 13 30 00 00 26 C1 00 00 36 CF 05 05 00 00 00 00 03 06 01 15 40 01";
  static constexpr std::string_view kFeederRequest =
      "1B A8 24 13 30 00 00 26 C1 00 00 36 CF 05 05 00 00 00 00 03 06 01 15 20 00";
};

TevraScanUIData settings();

// A dictionary whose texts are the names of their fields.
std::shared_ptr<CErrorCodeDictionary> namedDictionary();

class HPTest : public PlatformTest {
 protected:
  HPTest();
  void TearDown() override;

  // A job of `settings_` into the folder, with the recording callback.
  long scan();
  // The number that the next page gets, seen through the name of a page made now.
  static int pageNumber(const std::string& notification);

  HPDialogue device;
  TemporaryFolder folder;
  USB_HP_Controller controller;
  TevraScanUIData settings_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_PLATFORM_TEST_H
