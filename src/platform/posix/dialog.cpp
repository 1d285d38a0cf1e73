// Message boxes without a window system: a program of the user's choice, the controlling terminal,
// or standard error.
//
// A program that cannot be run, or whose exit status is no button of the box, counts as a box that
// was closed without a choice: Cancel where there is one. The default button would be Retry there,
// and a program that never answers would keep a failing job going for ever.
#include "platform/dialog.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/device_file.h"
#include "platform/posix/system_error.h"
#include "platform/posix/unique_fd.h"
#include "platform/posix/utf8.h"

namespace tvrscn {
namespace {

constexpr UINT kBoxMask = 0xF;  // the part of the flags that tells the buttons

struct Button {
  int answer;
  char letter;  // lower case; 0 when there is no choice to make
};

// The kinds of box. The first button is the default one, the last one is what closing it means.
struct Box {
  UINT kind;
  std::array<Button, 2> buttons;
  std::string_view prompt;
};

const Box kBoxes[] = {
    {MB_OK, {{{IDOK, '\0'}, {IDOK, '\0'}}}, "Press Enter to go on: "},
    {MB_RETRYCANCEL, {{{IDRETRY, 'r'}, {IDCANCEL, 'c'}}}, "(R)etry or (C)ancel? "},
};

const Box* findBox(UINT flags) {
  for (const Box& box : kBoxes) {
    if (box.kind == (flags & kBoxMask)) return &box;
  }
  return nullptr;
}

int defaultAnswer(const Box& box) {
  return box.buttons.front().answer;
}
int closedAnswer(const Box& box) {
  return box.buttons.back().answer;
}

// Text for a terminal. Control characters stay out: the text may come from a device.
std::string printable(std::wstring_view text) {
  std::wstring clean(text);
  for (wchar_t& character : clean) {
    const bool control = character < L' ' || (character >= 0x7F && character <= 0x9F);
    if (control && character != L'\n') character = L' ';
  }
  return utf8FromWide(clean);
}

bool writeText(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(file, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

// Runs the program and returns its exit status; -1 when there is none.
int runProgram(const char* program, const std::wstring& title, const std::wstring& text,
               UINT flags) {
  std::string arguments[] = {program, utf8FromWide(title), utf8FromWide(text),
                             std::to_string(flags)};
  char* const list[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(),
                        arguments[3].data(), nullptr};
  pid_t child = 0;
  const int error = ::posix_spawnp(&child, program, nullptr, nullptr, list, ::environ);
  if (error != 0) {
    writeText(STDERR_FILENO, std::string("The dialog program ") + program +
                                 " cannot be run: " + std::strerror(error) + "\n");
    return -1;
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int askProgram(const char* program, const Box& box, const std::wstring& title,
               const std::wstring& text, UINT flags) {
  const int status = runProgram(program, title, text, flags);
  for (const Button& button : box.buttons) {
    if (button.answer == status) return status;
  }
  return closedAnswer(box);
}

// One line without its end; false when there is none.
bool readLine(int terminal, std::string& line) {
  line.clear();
  for (;;) {
    char character = '\0';
    const ssize_t count = ::read(terminal, &character, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    if (character == '\n') return true;
    line.push_back(character);
  }
}

int askTerminal(int terminal, const Box& box, const std::string& message) {
  std::string question = message;
  for (;;) {
    std::string line;
    question += box.prompt;
    if (!writeText(terminal, question) || !readLine(terminal, line)) return defaultAnswer(box);
    for (const Button& button : box.buttons) {
      if (button.letter == '\0') return button.answer;
      // Setting this bit turns an ASCII letter into lower case.
      if (!line.empty() && (line.front() | 0x20) == button.letter) return button.answer;
    }
    if (line.empty()) return defaultAnswer(box);
    question.clear();
  }
}

}  // namespace
}  // namespace tvrscn

int MessageBoxW(HWND /*owner*/, const wchar_t* text, const wchar_t* caption, UINT type) {
  using namespace tvrscn;
  const Box* const box = findBox(type);
  if (box == nullptr) {
    SetLastError(kErrorInvalidBoxStyle);
    return 0;
  }
  const std::wstring title = caption != nullptr ? caption : L"Error";
  const std::wstring body = text != nullptr ? text : L"";
  const char* const program = std::getenv("TVRSCN_DIALOG");
  if (program != nullptr && program[0] != '\0') {
    return askProgram(program, *box, title, body, type);
  }
  const std::string message = printable(title) + "\n" + printable(body) + "\n";
  const UniqueFd terminal(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (terminal.valid()) return askTerminal(terminal.get(), *box, message);
  writeText(STDERR_FILENO, message);
  return defaultAnswer(*box);
}
