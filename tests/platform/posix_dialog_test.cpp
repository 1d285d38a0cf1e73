// Message boxes by program, by terminal and without either.
#include <array>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/device_file.h"
#include "platform/dialog.h"
#include "platform/posix/system_error.h"
#include "tests/platform/posix_test_support.h"

namespace tvrscn::test {
namespace {

constexpr UINT kRetryBox = MB_TOPMOST | MB_RETRYCANCEL;
constexpr UINT kOkBox = MB_TOPMOST | MB_OK;

class DialogProgram : public testing::Test {
 protected:
  void program(const std::string& lines) {
    writeFile(folder_ / "dialog", "#!/bin/sh\n" + lines);
    std::filesystem::permissions(folder_ / "dialog", std::filesystem::perms::owner_all);
    variable_.set(folder_ / "dialog");
  }

  ScratchFolder folder_;
  ScopedVariable variable_{"TVRSCN_DIALOG", std::nullopt};
};

TEST_F(DialogProgram, GetsTitleTextAndFlags) {
  program("printf '%s|' \"$#\" \"$1\" \"$2\" \"$3\" > '" + (folder_ / "seen") + "'\nexit 1\n");
  EXPECT_EQ(IDOK, MessageBoxW(nullptr, L"Load \u00E4 \"$HOME\" page.\nThen go on.", L"Paper; ls",
                              kOkBox));
  EXPECT_EQ("3|Paper; ls|Load \xC3\xA4 \"$HOME\" page.\nThen go on.|262144|",
            fileText(folder_ / "seen"));
}

TEST_F(DialogProgram, ExitStatusIsTheAnswer) {
  program("exit 4\n");
  EXPECT_EQ(IDRETRY, MessageBoxW(nullptr, L"text", L"title", kRetryBox));
  program("exit 2\n");
  EXPECT_EQ(IDCANCEL, MessageBoxW(nullptr, L"text", L"title", kRetryBox));
}

TEST_F(DialogProgram, AnswerThatIsNoButtonClosesTheBox) {
  for (const char* answer : {"exit 0\n", "exit 1\n", "exit 77\n", "kill -9 $$\n"}) {
    program(answer);
    EXPECT_EQ(IDCANCEL, MessageBoxW(nullptr, L"text", L"title", kRetryBox)) << answer;
    EXPECT_EQ(IDOK, MessageBoxW(nullptr, L"text", L"title", kOkBox)) << answer;
  }
}

TEST_F(DialogProgram, ProgramThatCannotRunClosesTheBox) {
  variable_.set(folder_ / "none");
  testing::internal::CaptureStderr();
  EXPECT_EQ(IDCANCEL, MessageBoxW(nullptr, L"text", L"title", kRetryBox));
  EXPECT_EQ(IDOK, MessageBoxW(nullptr, L"text", L"title", kOkBox));
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(folder_ / "none"));
}

TEST_F(DialogProgram, NullTextsAreNoFault) {
  program("printf '%s|' \"$1\" \"$2\" > '" + (folder_ / "seen") + "'\nexit 1\n");
  EXPECT_EQ(IDOK, MessageBoxW(nullptr, nullptr, nullptr, kOkBox));
  EXPECT_EQ("Error||", fileText(folder_ / "seen"));
}

TEST(Dialog, UnknownKindOfBoxFails) {
  EXPECT_EQ(0, MessageBoxW(nullptr, L"text", L"title", 0xF));
  EXPECT_EQ(kErrorInvalidBoxStyle, GetLastError());
}

// Answers a box in a process that has no terminal; what it prints goes to a file.
int answerWithoutTerminal(UINT flags, const std::string& output) {
  const ScopedVariable unset("TVRSCN_DIALOG", std::nullopt);
  return exitStatusOf([flags, &output] {
    ::setsid();
    const int file = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(file, STDERR_FILENO);
    return MessageBoxW(nullptr, L"A text\twith \x1B[2J\u009B tricks", L"Title", flags);
  });
}

TEST(Dialog, WithoutATerminalTheDefaultButtonAnswers) {
  const ScratchFolder folder;
  EXPECT_EQ(IDOK, answerWithoutTerminal(kOkBox, folder / "out"));
  EXPECT_EQ(IDRETRY, answerWithoutTerminal(kRetryBox, folder / "out"));
}

TEST(Dialog, WithoutATerminalTheTextGoesToStandardErrorCleaned) {
  const ScratchFolder folder;
  answerWithoutTerminal(kOkBox, folder / "out");
  EXPECT_EQ("Title\nA text with  [2J  tricks\n", fileText(folder / "out"));
}

// Answers a box in a process whose terminal is a pty, where somebody types the input given. The
// screen is what that person saw.
int answerOnTerminal(UINT flags, const std::string& input, std::string& screen) {
  const ScopedVariable unset("TVRSCN_DIALOG", std::nullopt);
  int master = -1;
  const pid_t child = ::forkpty(&master, nullptr, nullptr, nullptr);
  if (child == 0) ::_exit(MessageBoxW(nullptr, L"The text", L"The title", flags));
  const UniqueFd terminal(master);
  std::array<char, 512> buffer = {};
  bool typed = false;
  for (;;) {
    const ssize_t count = ::read(master, buffer.data(), buffer.size());
    if (count <= 0) break;
    screen.append(buffer.data(), static_cast<std::size_t>(count));
    const bool asked =
        screen.find(": ") != std::string::npos || screen.find("? ") != std::string::npos;
    if (asked && !typed) {
      typed = true;
      EXPECT_EQ(static_cast<ssize_t>(input.size()), ::write(master, input.data(), input.size()));
    }
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct TerminalCase {
  const char* name;
  UINT flags;
  const char* input;
  int answer;
};

const TerminalCase kTerminalCases[] = {
    {"OK by Enter", kOkBox, "\n", IDOK},
    {"OK by any line", kOkBox, "fine\n", IDOK},
    {"OK at the end of input", kOkBox, "\x04", IDOK},
    {"Retry by letter", kRetryBox, "r\n", IDRETRY},
    {"Retry by word", kRetryBox, "Retry\n", IDRETRY},
    {"Cancel by letter", kRetryBox, "c\n", IDCANCEL},
    {"Cancel by capital", kRetryBox, "C\n", IDCANCEL},
    {"Retry by Enter", kRetryBox, "\n", IDRETRY},
    {"Retry at the end of input", kRetryBox, "\x04", IDRETRY},
    {"asked again", kRetryBox, "what\nc\n", IDCANCEL},
};

TEST(Dialog, TerminalIsAsked) {
  for (const TerminalCase& row : kTerminalCases) {
    SCOPED_TRACE(row.name);
    std::string screen;
    EXPECT_EQ(row.answer, answerOnTerminal(row.flags, row.input, screen));
    EXPECT_NE(std::string::npos, screen.find("The title"));
    EXPECT_NE(std::string::npos, screen.find("The text"));
  }
}

}  // namespace
}  // namespace tvrscn::test
