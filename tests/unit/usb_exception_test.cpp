// The three handlers: dialog, notification, log line and result of every row of their tables.
#include "tvrscn/usb_exception.h"

#include <memory>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/platform_test.h"
#include "usb/log_writer.h"

namespace {

using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::namedDictionary;
using tvrscn::test::PlatformTest;

class USBExceptionTest : public PlatformTest {
 protected:
  USBExceptionTest() { tvrscn::fetchLogInstance(); }

  // Dialogs, notifications and log lines since the last call.
  Lines heard() {
    Lines lines = platform.calls({Kind::kDialog, Kind::kNotification, Kind::kLog});
    platform.forgetCalls();
    return lines;
  }

  std::shared_ptr<CErrorCodeDictionary> dictionary = namedDictionary();
};

const std::string kConnFailureLine = "Log Sending CONNFAILURE Notification to DS ...\n";

TEST_F(USBExceptionTest, SenseCodeChoosesTheDialog) {
  const struct {
    const char* code;
    int busy;
    const char* dialog;
  } kCases[] = {
      {"060000", 0, "Dialog [Title] JobCancelled 0x40000"},
      {"060000", 1, "Dialog [Title] JobCancelled 0x40000"},
      {"025300", 1, "Dialog [Title] ScannerBusy 0x40000"},
      {"999999", -1, "Dialog [Title] ScannerBusy 0x40000"},
      {"025300", 0, "Dialog [PaperJamTitle] PaperJam 0x40005"},
      {"050000", 0, "Dialog [Title] InvalidRequest 0x40000"},
      {"023A00", 0, "Dialog [Title] NoDocument 0x40000"},
      {"023a00", 0, "Dialog [Title] GeneralError 0x40000"},
      {"010400", 0, "Dialog [Title] CoverOpen 0x40000"},
      {"040000", 0, "Dialog [Title] DeviceError 0x40000"},
      {"041A00", 0, "Dialog [Title] DeviceError 0x40000"},
      {"042000", 0, "Dialog [Title] DeviceError 0x40000"},
      {"042400", 0, "Dialog [Title] DeviceError 0x40000"},
      {"042600", 0, "Dialog [Title] DeviceError 0x40000"},
      {"042500", 0, "Dialog [Title] GeneralError 0x40000"},
      {"04000", 0, "Dialog [Title] GeneralError 0x40000"},
      {"0400000", 0, "Dialog [Title] GeneralError 0x40000"},
      {"000000", 0, "Dialog [Title] GeneralError 0x40000"},
      {" ", 0, "Dialog [Title] GeneralError 0x40000"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(std::string(row.code) + " busy " + std::to_string(row.busy));
    EXPECT_EQ(USBException::USBExceptionHandler(row.code, row.busy, platform.callback(),
                                                dictionary.get(), 1),
              -1);
    EXPECT_EQ(heard(), (Lines{row.dialog, "Notify 1002"}));
  }
}

TEST_F(USBExceptionTest, PaperJamAnswerDecidesTheRetry) {
  const struct {
    int answer;
    int result;
  } kCases[] = {{4, 1}, {2, -1}, {1, -1}, {0, -1}};
  for (const auto& row : kCases) {
    platform.dialogAnswers = {row.answer};
    EXPECT_EQ(
        USBException::USBExceptionHandler("025300", 0, platform.callback(), dictionary.get(), 1),
        row.result)
        << row.answer;
    EXPECT_EQ(heard(), (Lines{"Dialog [PaperJamTitle] PaperJam 0x40005", "Notify 1002"}));
  }
}

TEST_F(USBExceptionTest, RetryAnswerToAnotherDialogIsNoRetry) {
  platform.dialogAnswers = {4};
  EXPECT_EQ(
      USBException::USBExceptionHandler("050000", 0, platform.callback(), dictionary.get(), 1), -1);
}

TEST_F(USBExceptionTest, EmptySenseCodeIsLoggedAndReportedToNobody) {
  for (const int showDialog : {0, 1}) {
    EXPECT_EQ(
        USBException::USBExceptionHandler("", 0, platform.callback(), dictionary.get(), showDialog),
        -1);
    EXPECT_EQ(heard(), Lines{"Log USB error code is invalid"});
  }
}

TEST_F(USBExceptionTest, SenseCodeWithoutDialogsOnlyNotifies) {
  EXPECT_EQ(USBException::USBExceptionHandler("025300", 0, platform.callback(), nullptr, 0), 1022);
  EXPECT_EQ(heard(), Lines{"Notify 1002"});
  EXPECT_EQ(
      USBException::USBExceptionHandler("025300", 0, platform.callback(), dictionary.get(), 0),
      1022);
  EXPECT_EQ(heard(), Lines{"Notify 1002"});
}

TEST_F(USBExceptionTest, SenseCodeWithoutDictionaryShowsNoDialog) {
  platform.dialogAnswers = {4};
  EXPECT_EQ(USBException::USBExceptionHandler("025300", 0, platform.callback(), nullptr, 1), -1);
  EXPECT_EQ(heard(), Lines{"Notify 1002"});
}

TEST_F(USBExceptionTest, NullCallbackStillShowsTheDialog) {
  EXPECT_EQ(USBException::USBExceptionHandler("010400", 0, nullptr, dictionary.get(), 1), -1);
  EXPECT_EQ(heard(), Lines{"Dialog [Title] CoverOpen 0x40000"});
}

TEST_F(USBExceptionTest, ReturnHandlerReportsEachStatus) {
  const struct {
    int status;
    unsigned char operationStatus;
    int result;
    Lines lines;
  } kCases[] = {
      {15000,
       0,
       15000,
       {"Dialog [CommFailureTitle] CommFailure 0x40000", "Notify 1011", kConnFailureLine}},
      {15000,
       2,
       15000,
       {"Dialog [CommFailureTitle] CommFailure 0x40000", "Notify 1011", kConnFailureLine}},
      {15001,
       2,
       52,
       {"Dialog [CommFailureTitle] CommFailure 0x40000", "Notify 1011", kConnFailureLine}},
      {15009,
       0,
       52,
       {"Dialog [CommFailureTitle] CommFailure 0x40000", "Notify 1011", kConnFailureLine}},
      {0,
       0,
       52,
       {"Dialog [CommFailureTitle] CommFailure 0x40000", "Notify 1011", kConnFailureLine}},
      {15010, 2, 15010, {}},
      {15010, 8, 15010, {"Dialog [Title] ScannerBusy 0x40000", "Notify 1011"}},
      {15010, 9, 15010, {"Dialog [Title] DeviceError 0x40000", "Notify 1011"}},
      {15010, 24, 15010, {"Dialog [Title] DeviceError 0x40000", "Notify 1011"}},
      {15010, 33, 15010, {"Dialog [Title] DeviceError 0x40000", "Notify 1011"}},
      {15010, 34, 15010, {"Dialog [Title] DeviceError 0x40000", "Notify 1011"}},
      {15010, 35, 15010, {"Dialog [Title] DeviceError 0x40000", "Notify 1011"}},
      {15010, 36, 15010, {"Dialog [Title] DeviceError 0x40000", "Notify 1011"}},
      {15010, 0, 15010, {"Dialog [CommFailureTitle] CommFailure 0x40000", "Notify 1011"}},
      {15010, 32, 15010, {"Dialog [CommFailureTitle] CommFailure 0x40000", "Notify 1011"}},
      {15010, 37, 15010, {"Dialog [CommFailureTitle] CommFailure 0x40000", "Notify 1011"}},
      {15010, 255, 15010, {"Dialog [CommFailureTitle] CommFailure 0x40000", "Notify 1011"}},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(std::to_string(row.status) + "/" + std::to_string(row.operationStatus));
    EXPECT_EQ(USBException::USBReturnHandler(platform.callback(), row.status, row.operationStatus,
                                             dictionary.get(), 1),
              row.result);
    EXPECT_EQ(heard(), row.lines);
  }
}

TEST_F(USBExceptionTest, ReturnHandlerWithoutDictionary) {
  EXPECT_EQ(USBException::USBReturnHandler(platform.callback(), 15000, 0, nullptr, 1), 15000);
  EXPECT_EQ(heard(), (Lines{"Notify 1011", kConnFailureLine}));
  EXPECT_EQ(USBException::USBReturnHandler(platform.callback(), 15002, 0, nullptr, 1), 52);
  EXPECT_EQ(heard(), (Lines{"Notify 1011", kConnFailureLine}));
  EXPECT_EQ(USBException::USBReturnHandler(platform.callback(), 15010, 8, nullptr, 1), 15010);
  EXPECT_EQ(heard(), (Lines{"Dialog []  0x40000", "Notify 1011"}));
}

TEST_F(USBExceptionTest, ReturnHandlerWithoutDialogsOnlyNotifies) {
  for (const int status : {15000, 15010, 15001}) {
    EXPECT_EQ(USBException::USBReturnHandler(platform.callback(), status, 2, dictionary.get(), 0),
              1022);
    EXPECT_EQ(heard(), Lines{"Notify 1011"});
  }
}

TEST_F(USBExceptionTest, LowEndReplyChoosesTheDialog) {
  const struct {
    unsigned char status;
    const char* dialog;
  } kCases[] = {
      {1, "Dialog [Title] DeviceError 0x40000"},
      {2, "Dialog [Title] DeviceError 0x40000"},
      {0, "Dialog [CommFailureTitle] CommFailure 0x40000"},
      {3, "Dialog [CommFailureTitle] CommFailure 0x40000"},
      {255, "Dialog [CommFailureTitle] CommFailure 0x40000"},
  };
  for (const auto& row : kCases) {
    EXPECT_EQ(USBException::USBReturnHandlerForLowEnd(platform.callback(), row.status,
                                                      dictionary.get(), 1),
              15010);
    EXPECT_EQ(heard(), (Lines{row.dialog, "Notify 1011"})) << int{row.status};
  }
}

TEST_F(USBExceptionTest, LowEndReplyWithoutDictionaryOrDialogs) {
  EXPECT_EQ(USBException::USBReturnHandlerForLowEnd(platform.callback(), 1, nullptr, 1), 15010);
  EXPECT_EQ(heard(), (Lines{"Dialog []  0x40000", "Notify 1011"}));
  EXPECT_EQ(USBException::USBReturnHandlerForLowEnd(platform.callback(), 1, nullptr, 0), 1022);
  EXPECT_EQ(heard(), Lines{"Notify 1011"});
}

TEST_F(USBExceptionTest, IsAStandardExceptionWithCopies) {
  static_assert(std::is_base_of_v<std::exception, USBException>);
  static_assert(sizeof(USBException) == sizeof(std::exception), "adds no field");
  const USBException original;
  USBException copy(original);
  copy = original;
  EXPECT_STREQ(copy.what(), std::exception().what());
  EXPECT_EQ(USBException::m_bIsCommError, 0);
}

}  // namespace
