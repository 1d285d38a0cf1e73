// The two vocabularies of the HP device and what becomes of each final code.
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/platform_test.h"

namespace {

using Peer = ControllerTestPeer;
using tvrscn::test::HPTest;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::namedDictionary;

using HPStatus = HPTest;

TEST_F(HPStatus, StatusByteHasItsText) {
  for (int value = 0; value <= 255; ++value) {
    std::string text = " ";
    if (value == 0) text = "Good";
    if (value == 2) text = "Check condition";
    if (value == 4) text = "Cancelled";
    if (value == 8) text = "Busy";
    if (value == 9) text = "Scanner in use";
    EXPECT_EQ(Peer::statusText(controller, static_cast<HPPKUSBStatusCode>(value)), text) << value;
  }
}

TEST_F(HPStatus, MessageWordHasItsTextAndStatus) {
  const struct {
    int word;
    const char* text;
    int status;
  } kCases[] = {
      {0x0001, "No Error", 15009},
      {0x0002, "Command Error", 15016},
      {0x0004, "Saving parameter is not supported", 15005},
      {0x0008, "Power on / Reset set", 15011},
      {0x0020, "Document JAM detected", 15012},
      {0x0040, "Cover is being opened", 15013},
      {0x0080, "Scanner is in warmup", 15015},
      {0x0100, "Scanner locking error", 15015},
      {0x0200, "Requested Invalid area to scan", 15015},
      {0x0400, "Scanner Resource Busy", 15001},
      {0x0800, "Invalid Key is being sent", 15015},
      {0x1000, "Banknote", 15015},
      {0x2000, "Insufficient Quota (Job Accounting)", 15015},
      {0x0000, "", 15010},
      {0x0010, "", 15010},
      {0x0060, "", 15010},  // two bits are no word of the table
      {0x4000, "", 15010},
      {0x8000, "", 15010},
      {0xFFFF, "", 15010},
  };
  for (const auto& row : kCases) {
    platform.forgetCalls();
    EXPECT_EQ(Peer::messageStatus(controller, static_cast<HPPKUSBMessageData>(row.word)),
              row.status)
        << row.word;
    EXPECT_EQ(platform.calls(), Lines{std::string("Log Scanner status message : ") + row.text});
  }
}

class HPErrorHandler : public HPTest {
 protected:
  HPErrorHandler() { Peer::callback(controller) = platform.callback(); }

  int handle(int error, int showDialog) {
    platform.forgetCalls();
    return Peer::errorHandler(controller, static_cast<USBStatusErrors>(error), showDialog);
  }
};

const std::string kFailureLine = "Log Sending FAILURE Notification to DS ...\n";

const int kCodes[] = {15000, 15001, 15002, 15005, 15007, 15008, 15009, 15010, 15011,
                      15012, 15013, 15015, 15016, 15017, 15018, 15019, 0,     -1};

TEST_F(HPErrorHandler, EachCodeHasItsDialogAndNotification) {
  const struct {
    int error;
    const char* dialog;
    int notification;
  } kCases[] = {
      {15001, "Dialog [Title] CommFailure 0x40000", 1021},
      {15011, "Dialog [Title] CommFailure 0x40000", 1021},
      {15016, "Dialog [Title] CommFailure 0x40000", 1021},
      {15005, "Dialog [Title] InvalidRequest 0x40000", 1002},
      {15015, "Dialog [Title] InvalidRequest 0x40000", 1002},
      {15010, "Dialog [Title] GeneralError 0x40000", 1002},
      {15012, "Dialog [PaperJamTitle] PaperJam 0x40000", 1002},
      {15013, "Dialog [Title] CoverOpen 0x40000", 1021},
      {15018, "Dialog [Title] CoverOpen 0x40000", 1021},
      {15017, "Dialog [Title] ScannerBusy 0x40000", 1001},
      {15009, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
      {15000, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
      {15002, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
      {15007, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
      {15008, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
      {15019, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
      {0, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
      {-1, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
  };
  auto dictionary = namedDictionary();
  controller.InitExceptionStrings(dictionary);
  for (const auto& row : kCases) {
    EXPECT_EQ(handle(row.error, 1), row.error);
    EXPECT_EQ(platform.calls(),
              (Lines{row.dialog, kFailureLine, "Notify " + std::to_string(row.notification)}))
        << row.error;
  }
}

TEST_F(HPErrorHandler, WithoutDialogsEachCodeIsAConnectionFailure) {
  auto dictionary = namedDictionary();
  controller.InitExceptionStrings(dictionary);
  for (const int error : kCodes) {
    EXPECT_EQ(handle(error, 0), error);
    EXPECT_EQ(platform.calls(), (Lines{"Notify 1011", kFailureLine})) << error;
  }
}

TEST_F(HPErrorHandler, WithoutDictionaryEachCodeIsAConnectionFailure) {
  for (const int error : kCodes) {
    EXPECT_EQ(handle(error, 1), error);
    EXPECT_EQ(platform.calls(), (Lines{"Notify 1011", kFailureLine})) << error;
  }
}

TEST_F(HPErrorHandler, NullCallbackStillShowsTheDialog) {
  auto dictionary = namedDictionary();
  controller.InitExceptionStrings(dictionary);
  Peer::callback(controller) = nullptr;
  EXPECT_EQ(handle(15017, 1), 15017);
  EXPECT_EQ(platform.calls(), (Lines{"Dialog [Title] ScannerBusy 0x40000", kFailureLine}));
}

TEST_F(HPErrorHandler, ExceptionOfTheCallbackPasses) {
  platform.onNotification = [](const ScanNotification&) { throw std::runtime_error("caller"); };
  EXPECT_THROW(handle(15010, 0), std::runtime_error);
}

TEST_F(HPStatus, RangesStayUntouched) {
  IPPMinMaxNormalStepData brightness{1, 2, 3, 4};
  IPPMinMaxNormalStepData contrast{5, 6, 7, 8};
  controller.GetUSBBrightnessContrastValue(brightness, contrast);
  EXPECT_EQ(brightness.Min * 1000 + brightness.Max * 100 + brightness.Normal * 10 + brightness.Step,
            1234);
  EXPECT_EQ(contrast.Min * 1000 + contrast.Max * 100 + contrast.Normal * 10 + contrast.Step, 5678);
  EXPECT_EQ(platform.calls(), Lines{});
}

}  // namespace
