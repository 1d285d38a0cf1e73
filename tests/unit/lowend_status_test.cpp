// How each final status of a LowEnd job is told: dialog, notifications, their order.
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/lowend_test.h"

namespace {

using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::LowEndTest;

class LowEndErrorHandler : public LowEndTest {
 protected:
  LowEndErrorHandler() { BasePeer::callback(controller) = platform.callback(); }

  int handle(int status, int showDialog) {
    platform.forgetCalls();
    BasePeer::errorShown(controller) = false;
    return controller.ErrorHandler(static_cast<USBStatusErrors>(status), showDialog);
  }

  bool shown() { return BasePeer::errorShown(controller); }
};

const std::string kFailureLine = "Log Sending FAILURE Notification to DS ...\n";

struct StatusRow {
  int status;
  const char* dialog;
  int notification;
};

const StatusRow kRows[] = {
    {-1, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
    {0, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
    {15000, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
    {15001, "Dialog [Title] CommFailure 0x40000", 1021},
    {15002, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
    {15005, "Dialog [Title] InvalidRequest 0x40000", 1002},
    {15007, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
    {15008, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
    {15009, "Dialog [CommFailureTitle] CommFailure 0x40000", 1011},
    {15010, "Dialog [Title] GeneralError 0x40000", 1002},
    {15011, "Dialog [Title] CommFailure 0x40000", 1021},
    {15012, "Dialog [PaperJamTitle] PaperJam 0x40000", 1002},
    {15013, "Dialog [Title] CoverOpen 0x40000", 1021},
    {15015, "Dialog [Title] InvalidRequest 0x40000", 1002},
    {15016, "Dialog [Title] CommFailure 0x40000", 1021},
    {15017, "Dialog [Title] ScannerBusy 0x40000", 1001},
    {15018, "Dialog [Title] CoverOpen 0x40000", 1021},
    {15019, "Dialog [Title] JobCancelled 0x40000", 1021},
};

TEST_F(LowEndErrorHandler, EachStatusHasItsDialogBetweenTwoNotifications) {
  showDialogs();
  for (const StatusRow& row : kRows) {
    EXPECT_EQ(handle(row.status, 1), row.status);
    EXPECT_EQ(platform.calls(), (Lines{"Notify 1020", row.dialog, kFailureLine,
                                       "Notify " + std::to_string(row.notification)}))
        << row.status;
    EXPECT_TRUE(shown()) << row.status;
  }
}

TEST_F(LowEndErrorHandler, WithoutDialogsEachStatusIsAConnectionFailure) {
  showDialogs();
  for (const StatusRow& row : kRows) {
    EXPECT_EQ(handle(row.status, 0), row.status);
    EXPECT_EQ(platform.calls(), (Lines{"Notify 1011", kFailureLine})) << row.status;
    EXPECT_FALSE(shown()) << row.status;
  }
}

TEST_F(LowEndErrorHandler, WithoutDictionaryEachStatusIsAConnectionFailure) {
  EXPECT_TRUE(BasePeer::usingTevraUI(controller));
  for (const StatusRow& row : kRows) {
    EXPECT_EQ(handle(row.status, 1), row.status);
    EXPECT_EQ(platform.calls(), (Lines{"Notify 1011", kFailureLine})) << row.status;
    EXPECT_FALSE(shown()) << row.status;
  }
}

TEST_F(LowEndErrorHandler, CallerThatWantsADialogGetsNoneWhereTheInterfaceIsOff) {
  showDialogs();
  BasePeer::usingTevraUI(controller) = false;
  for (const StatusRow& row : kRows) {
    EXPECT_EQ(handle(row.status, 1), row.status);
    EXPECT_EQ(platform.calls(), Lines{"Notify " + std::to_string(row.notification)}) << row.status;
    EXPECT_FALSE(shown()) << row.status;
  }
}

TEST_F(LowEndErrorHandler, FlagIsSetBeforeTheCallerHearsOfTheDialog) {
  showDialogs();
  bool shownAtNotification = false;
  platform.onNotification = [&](const ScanNotification& notification) {
    if (notification.type == NOTIFY_ERROR_DISPLAYED) shownAtNotification = shown();
  };
  handle(15010, 1);
  EXPECT_TRUE(shownAtNotification);
}

TEST_F(LowEndErrorHandler, EmptyTextsShowAnEmptyDialog) {
  auto dictionary = std::make_shared<CErrorCodeDictionary>();
  controller.InitExceptionStrings(dictionary);
  EXPECT_EQ(handle(15012, 1), 15012);
  EXPECT_EQ(platform.calls({Kind::kDialog}), Lines{"Dialog []  0x40000"});
}

TEST_F(LowEndErrorHandler, AnswerToTheDialogChangesNothing) {
  showDialogs();
  platform.dialogAnswers = {2, 4};
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(handle(15017, 1), 15017);
    EXPECT_EQ(platform.notifications(), (Lines{"1020", "1001"}));
  }
}

TEST_F(LowEndErrorHandler, NullCallbackStillShowsTheDialog) {
  showDialogs();
  BasePeer::callback(controller) = nullptr;
  EXPECT_EQ(handle(15017, 1), 15017);
  EXPECT_EQ(platform.calls(), (Lines{"Dialog [Title] ScannerBusy 0x40000", kFailureLine}));
}

TEST_F(LowEndErrorHandler, ExceptionOfTheCallbackPasses) {
  platform.onNotification = [](const ScanNotification&) { throw std::runtime_error("caller"); };
  EXPECT_THROW(handle(15010, 0), std::runtime_error);
}

}  // namespace
