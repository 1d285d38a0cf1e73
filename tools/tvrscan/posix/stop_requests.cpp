// Signals reach the program through a pipe: the handler writes a byte, and whoever waits does the
// work, on an ordinary thread. Handlers instead of blocked signals, so that programs that are
// started from here (the one that shows dialogs) can be interrupted as usual.
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "exit_codes.h"
#include "system.h"

namespace tvrscn::cli {
namespace {

std::array<int, 2> stopPipe = {-1, -1};
std::atomic<bool> stopSeen{false};
static_assert(std::atomic<bool>::is_always_lock_free, "used in a signal handler");

void onStopSignal(int /*signal*/) {
  if (stopSeen.exchange(true)) _exit(static_cast<int>(ExitCode::kInterrupted));
  const int savedError = errno;
  const char byte = 1;
  // A pipe that cannot take the byte is a pipe that nobody waits on.
  if (write(stopPipe[1], &byte, 1) != 1) _exit(static_cast<int>(ExitCode::kInterrupted));
  errno = savedError;
}

void onIgnoredSignal(int /*signal*/) {}

void setHandler(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  if (sigaction(signal, &action, nullptr) != 0) {
    throw std::system_error(errno, std::generic_category(), "sigaction");
  }
}

}  // namespace

StopRequests::StopRequests() {
  if (pipe2(stopPipe.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    setHandler(signal, onStopSignal);
  // A reader of our output that has gone away is no reason to lose pages.
  setHandler(SIGPIPE, onIgnoredSignal);
}

bool StopRequests::wait(std::chrono::milliseconds time) {
  const auto deadline = std::chrono::steady_clock::now() + time;
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    pollfd entry = {stopPipe[0], POLLIN, 0};
    const int ready = poll(&entry, 1, left.count() > 0 ? static_cast<int>(left.count()) : 0);
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

}  // namespace tvrscn::cli
