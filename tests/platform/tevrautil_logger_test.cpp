// The process-wide logger.
#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/platform/posix_test_support.h"
#include "tvrscn/tevrautil/tevra_logger.h"

namespace tvrscn::test {
namespace {

class Logger : public testing::Test {
 protected:
  void TearDown() override { log_->SetLineListener(nullptr, nullptr); }

  ScratchFolder folder_;
  ScopedVariable variable_{"TVRSCN_LOG", folder_ / "log"};
  CTevraLogger* log_ = CTevraLogger::GetLogInstance();
};

TEST_F(Logger, IsOneForTheProcess) {
  ASSERT_NE(nullptr, log_);
  EXPECT_EQ(log_, CTevraLogger::GetLogInstance());
}

TEST_F(Logger, AppendsEachLineAsUtf8) {
  writeFile(folder_ / "log", "before\n");
  log_->WriteToLog(L"one");
  log_->WriteToLog(L"zw\u00F6lf \u20AC");
  log_->WriteToLog(L"");
  EXPECT_EQ("before\none\nzw\xC3\xB6lf \xE2\x82\xAC\n\n", fileText(folder_ / "log"));
}

TEST_F(Logger, OneLineStaysOneLine) {
  log_->WriteToLog(L"end\n");
  log_->WriteToLog(L"ends\r\n\n");
  log_->WriteToLog(L"\nin\nside\r\n!\n");
  EXPECT_EQ("end\nends\n in side  !\n", fileText(folder_ / "log"));
}

TEST_F(Logger, WithoutTheVariableThereIsNoLog) {
  log_->WriteToLog(L"one");
  variable_.set(std::nullopt);
  log_->WriteToLog(L"two");
  variable_.set("");
  log_->WriteToLog(L"three");
  EXPECT_EQ("one\n", fileText(folder_ / "log"));
}

TEST_F(Logger, FollowsTheVariable) {
  log_->WriteToLog(L"one");
  variable_.set(folder_ / "other");
  log_->WriteToLog(L"two");
  variable_.set(folder_ / "log");
  log_->WriteToLog(L"three");
  EXPECT_EQ("one\nthree\n", fileText(folder_ / "log"));
  EXPECT_EQ("two\n", fileText(folder_ / "other"));
}

TEST_F(Logger, FileThatCannotBeWrittenLosesTheLineOnly) {
  variable_.set(folder_ / "none/log");
  log_->WriteToLog(L"lost");
  std::filesystem::create_directory(folder_ / "none");
  log_->WriteToLog(L"kept");
  log_->WriteToLog(nullptr);
  EXPECT_EQ("kept\n", fileText(folder_ / "none/log"));
}

void keepLine(const wchar_t* line, void* context) {
  static_cast<std::vector<std::wstring>*>(context)->emplace_back(line);
}

TEST_F(Logger, ListenerHearsEveryLineAsItWasWritten) {
  std::vector<std::wstring> heard;
  log_->SetLineListener(&keepLine, &heard);
  log_->WriteToLog(L"one\n");
  variable_.set(std::nullopt);
  log_->WriteToLog(L"two");
  log_->SetLineListener(nullptr, nullptr);
  log_->WriteToLog(L"three");
  EXPECT_EQ((std::vector<std::wstring>{L"one\n", L"two"}), heard);
}

void logAndLeave(const wchar_t* line, void* context) {
  keepLine(line, context);
  CTevraLogger::GetLogInstance()->WriteToLog(L"from the listener");
  CTevraLogger::GetLogInstance()->SetLineListener(nullptr, nullptr);
}

TEST_F(Logger, ListenerMayLogAndTakeItselfAway) {
  std::vector<std::wstring> heard;
  log_->SetLineListener(&logAndLeave, &heard);
  log_->WriteToLog(L"one");
  log_->WriteToLog(L"two");
  EXPECT_EQ((std::vector<std::wstring>{L"one"}), heard);
  EXPECT_EQ("one\nfrom the listener\ntwo\n", fileText(folder_ / "log"));
}

void countLine(const wchar_t*, void* context) {
  ++*static_cast<std::atomic<int>*>(context);
}

TEST_F(Logger, LinesOfSeveralThreadsStayWhole) {
  constexpr int kThreads = 4;
  constexpr int kLines = 200;
  std::atomic<int> heard = 0;
  log_->SetLineListener(&countLine, &heard);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      const std::wstring line(300, static_cast<wchar_t>(L'a' + t));
      for (int i = 0; i < kLines; ++i)
        CTevraLogger::GetLogInstance()->WriteToLog(line.c_str());
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(kThreads * kLines, heard);
  const std::string text = fileText(folder_ / "log");
  ASSERT_EQ(static_cast<std::size_t>(kThreads * kLines * 301), text.size());
  for (std::size_t start = 0; start < text.size(); start += 301) {
    ASSERT_EQ(start + 300, text.find_first_not_of(text[start], start));
    ASSERT_EQ('\n', text[start + 300]);
  }
}

}  // namespace
}  // namespace tvrscn::test
