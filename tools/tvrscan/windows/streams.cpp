// The standard streams. A console keeps its code page and its modes when a program has gone, so
// what is changed here is put back at each way out of the process.
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include "streams.h"
#include "system.h"

namespace tvrscn::cli {
namespace {

struct ConsoleState {
  UINT codePage = 0;      // 0: there was no console
  DWORD stderrMode = 0;   // as it was
  bool terminal = false;  // standard error is a console that understands escape sequences
};
ConsoleState consoleState;

std::FILE* data = nullptr;  // null: stdout

void keepStandardOutput() {
  const int copy = _dup(_fileno(stdout));
  if (copy < 0) return;
  data = _fdopen(copy, "wb");
  if (data == nullptr) {
    _close(copy);
    return;
  }
  _dup2(_fileno(stderr), _fileno(stdout));
  std::setvbuf(stdout, nullptr, _IONBF, 0);
}

bool isConsole(DWORD stream, DWORD& mode) {
  const HANDLE handle = GetStdHandle(stream);
  return handle != nullptr && handle != INVALID_HANDLE_VALUE && GetConsoleMode(handle, &mode) != 0;
}

}  // namespace

void prepareStreams() {
  // Lines end the same on every system, for the programs that read them.
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  keepStandardOutput();
  consoleState.codePage = GetConsoleOutputCP();
  if (consoleState.codePage != 0) SetConsoleOutputCP(CP_UTF8);
  if (isConsole(STD_ERROR_HANDLE, consoleState.stderrMode)) {
    constexpr DWORD kWanted = ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING;
    consoleState.terminal =
        SetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), consoleState.stderrMode | kWanted) != 0;
  }
  std::atexit(restoreStreams);
}

void restoreStreams() {
  if (consoleState.terminal) {
    SetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), consoleState.stderrMode);
  }
  if (consoleState.codePage != 0) SetConsoleOutputCP(consoleState.codePage);
}

std::FILE* dataStream() {
  return data != nullptr ? data : stdout;
}

bool stderrIsTerminal() {
  return consoleState.terminal;
}

}  // namespace tvrscn::cli
