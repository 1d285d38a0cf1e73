#include <array>
#include <stdexcept>

#include <windows.h>

#include "tests/e2e/system.h"
#include "virtual/windows/system_text.h"
#include "virtual/windows/unique_handle.h"

namespace tvrscn::test {

using virtual_device::UniqueHandle;

struct ChildProcess::State {
  UniqueHandle process;
};

namespace {

std::wstring ownProgram() {
  std::array<wchar_t, MAX_PATH + 1> path{};
  GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
  return path.data();
}

// Arguments here have no quotes of their own, and no backslash at their ends.
std::wstring commandLine(const std::wstring& program, const std::vector<std::string>& arguments) {
  std::wstring line = L'"' + program + L'"';
  for (const std::string& argument : arguments)
    line += L" \"" + virtual_device::wide(argument) + L'"';
  return line;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments)
    : state_(std::make_unique<State>()) {
  const std::wstring program = ownProgram();
  std::wstring line = commandLine(program, arguments);
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started = {};
  if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, 0, 0, nullptr, nullptr,
                     &startup, &started) == 0) {
    throw std::runtime_error("cannot start this program once more");
  }
  const UniqueHandle thread(started.hThread);
  state_->process = UniqueHandle(started.hProcess);
}

ChildProcess::~ChildProcess() {
  kill();
}

bool ChildProcess::isRunning() {
  return WaitForSingleObject(state_->process.get(), 0) == WAIT_TIMEOUT;
}

void ChildProcess::kill() {
  constexpr UINT kKilled = 137;
  TerminateProcess(state_->process.get(), kKilled);
  wait();
}

int ChildProcess::wait() {
  WaitForSingleObject(state_->process.get(), INFINITE);
  DWORD code = 0;
  GetExitCodeProcess(state_->process.get(), &code);
  return static_cast<int>(code);
}

}  // namespace tvrscn::test
