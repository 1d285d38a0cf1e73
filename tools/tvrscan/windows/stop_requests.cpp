// The system calls the handler on a thread of its own, so it may do more than a signal handler; it
// still only sets an event, and whoever waits does the work.
#include <atomic>
#include <system_error>

#include <windows.h>

#include "exit_codes.h"
#include "system.h"

namespace tvrscn::cli {
namespace {

HANDLE stopEvent = nullptr;  // stays set; owned by the process
std::atomic<bool> stopSeen{false};

BOOL WINAPI onControl(DWORD control) {
  if (stopSeen.exchange(true)) endProcess(static_cast<int>(ExitCode::kInterrupted));
  SetEvent(stopEvent);
  // When the window closes or the user logs off, the system ends the process as soon as this
  // returns; it gives a few seconds to the threads that save what there is to save.
  if (control != CTRL_C_EVENT && control != CTRL_BREAK_EVENT) Sleep(INFINITE);
  return TRUE;
}

std::system_error lastError(const char* what) {
  return {static_cast<int>(GetLastError()), std::system_category(), what};
}

}  // namespace

StopRequests::StopRequests() {
  stopEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  if (stopEvent == nullptr) throw lastError("CreateEvent");
  // A program that was started in the background of another one may have been told to ignore
  // Ctrl-C; with a null handler it listens again.
  SetConsoleCtrlHandler(nullptr, FALSE);
  if (SetConsoleCtrlHandler(onControl, TRUE) == 0) throw lastError("SetConsoleCtrlHandler");
}

bool StopRequests::wait(std::chrono::milliseconds time) {
  const auto millis = time.count() > 0 ? static_cast<DWORD>(time.count()) : 0;
  return WaitForSingleObject(stopEvent, millis) == WAIT_OBJECT_0;
}

}  // namespace tvrscn::cli
