// The formats of log lines, and where the lines go.
#include "usb/log_writer.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/platform_test.h"

namespace {

using tvrscn::formatLogLine;
using tvrscn::test::FakePlatform;
using tvrscn::test::Lines;
using tvrscn::test::PlatformTest;

TEST(LogLine, PlaceholdersTakeTheirArguments) {
  EXPECT_EQ(formatLogLine(L"COMMAND: INQUIRY", {}), L"COMMAND: INQUIRY");
  EXPECT_EQ(formatLogLine(L"", {}), L"");
  EXPECT_EQ(formatLogLine(L"wide %s, narrow %S.", {L"abc", "def"}), L"wide abc, narrow def.");
  EXPECT_EQ(formatLogLine(L"%s", {std::wstring(L"abc")}), L"abc");
  EXPECT_EQ(formatLogLine(L"%S", {std::string("def")}), L"def");
  EXPECT_EQ(formatLogLine(L"%d %u %lu", {-5, 7U, 4294967295UL}), L"-5 7 4294967295");
  EXPECT_EQ(formatLogLine(L"%ld|%lu", {-1L, 0UL}), L"-1|0");
  EXPECT_EQ(formatLogLine(L"Width Received: %lu ", {2480UL}), L"Width Received: 2480 ");
  EXPECT_EQ(formatLogLine(L"100%% of %d", {3}), L"100% of 3");
}

TEST(LogLine, NarrowTextIsWidenedByteByByte) {
  EXPECT_EQ(formatLogLine(L"%S", {"\xE4\xFF"}), L"\u00E4\u00FF");
}

TEST(LogLine, WideTextStaysAsItIs) {
  EXPECT_EQ(formatLogLine(L"%s", {L"\u4E2D\u00E4"}), L"\u4E2D\u00E4");
}

TEST(LogLine, PlaceholderWithoutArgumentStaysInTheLine) {
  EXPECT_EQ(formatLogLine(L"Scanner status message %s: check condition and no document", {}),
            L"Scanner status message %s: check condition and no document");
  EXPECT_EQ(formatLogLine(L"%d and %lu", {1}), L"1 and %lu");
}

TEST(LogLine, TextBesidesPlaceholdersIsTakenAsItIs) {
  EXPECT_EQ(formatLogLine(L"ends in %", {}), L"ends in %");
  EXPECT_EQ(formatLogLine(L"line\n", {}), L"line\n");
}

TEST(LogLine, IsCutBelowOneThousandTwentyFourCharacters) {
  EXPECT_EQ(formatLogLine(L"%s", {std::wstring(1023, L'a')}), std::wstring(1023, L'a'));
  EXPECT_EQ(formatLogLine(L"%s", {std::wstring(1024, L'a')}), std::wstring(1023, L'a'));
  EXPECT_EQ(formatLogLine(L"12345%S!", {std::string(5000, 'b')}),
            L"12345" + std::wstring(1018, L'b'));
  EXPECT_EQ(formatLogLine(std::wstring(3000, L'c').c_str(), {}), std::wstring(1023, L'c'));
}

using WriteLog = PlatformTest;

TEST_F(WriteLog, HandsTheFormattedLineToTheLogger) {
  tvrscn::fetchLogInstance();
  tvrscn::writeLog(L"Scanned Page : %d", {3});
  tvrscn::writeLog(L"COMMAND: INQUIRY");
  EXPECT_EQ(platform.logLines(), (Lines{"Scanned Page : 3", "COMMAND: INQUIRY"}));
}

// The log instance is set once in a process, so these look at it in a process of their own.
using WriteLogDeathTest = PlatformTest;

TEST_F(WriteLogDeathTest, LinesBeforeTheFirstControllerAreLost) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        tvrscn::writeLog(L"too early");
        const USB_HP_Controller first;
        tvrscn::writeLog(L"in time");
        std::_Exit(platform.logLines() == Lines{"in time"} ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(WriteLogDeathTest, InstanceIsFetchedOnce) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        const USB_HP_Controller first;
        const USB_HP_Controller second;
        std::_Exit(platform.count("GetLogInstance") == 1 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
