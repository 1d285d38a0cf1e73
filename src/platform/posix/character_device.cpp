// An endpoint that is an absolute path: the system's own device file, such as /dev/usb/lp0, or a
// pty. The kernel ends a read at the end of a transfer, so one read is one read(2).
#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <mutex>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "platform/device_file.h"
#include "platform/posix/endpoint.h"
#include "platform/posix/system_error.h"
#include "platform/posix/unique_fd.h"

namespace tvrscn {
namespace {

class CharacterDevice final : public Endpoint {
 public:
  CharacterDevice(UniqueFd device, bool terminal)
      : device_(std::move(device)), terminal_(terminal) {}

  DWORD read(void* buffer, DWORD size, DWORD& done) override;
  DWORD write(const void* buffer, DWORD size, DWORD& done) override;
  bool gone() const override;
  // A read that waits keeps the device open until it ends; the system has no call to interrupt it.
  void giveUp() override {}

 private:
  // A terminal that hung up answers EIO; with any other device that is a failed transfer.
  DWORD failure(int error) const {
    return terminal_ && error == EIO ? ERROR_DEVICE_NOT_CONNECTED : errorFromErrno(error);
  }

  UniqueFd device_;
  bool terminal_;
  std::mutex writeMutex_;
};

DWORD CharacterDevice::read(void* buffer, DWORD size, DWORD& done) {
  done = 0;
  if (size == 0) return kErrorNone;
  ssize_t count = 0;
  do {
    count = ::read(device_.get(), buffer, size);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return failure(errno);
  if (count == 0 && terminal_) return ERROR_DEVICE_NOT_CONNECTED;
  done = static_cast<DWORD>(count);
  return kErrorNone;
}

DWORD CharacterDevice::write(const void* buffer, DWORD size, DWORD& done) {
  done = 0;
  const std::lock_guard lock(writeMutex_);
  do {
    const ssize_t count =
        ::write(device_.get(), static_cast<const char*>(buffer) + done, size - done);
    if (count < 0) {
      if (errno == EINTR) continue;
      return failure(errno);
    }
    if (count == 0 && done < size) return ERROR_GEN_FAILURE;
    done += static_cast<DWORD>(count);
  } while (done < size);
  return kErrorNone;
}

bool CharacterDevice::gone() const {
  pollfd state = {device_.get(), 0, 0};
  return ::poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR)) != 0;
}

// Bytes pass unchanged, at once and without an echo.
DWORD makeRaw(int terminal) {
  termios settings = {};
  if (::tcgetattr(terminal, &settings) != 0) return errorFromErrno(errno);
  ::cfmakeraw(&settings);
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  return ::tcsetattr(terminal, TCSANOW, &settings) == 0 ? kErrorNone : errorFromErrno(errno);
}

}  // namespace

DWORD openCharacterDevice(const std::string& path, std::shared_ptr<Endpoint>& endpoint) {
  int opened = -1;
  do {
    opened = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  } while (opened < 0 && errno == EINTR);
  UniqueFd device(opened);
  if (!device.valid()) return errorFromErrno(errno);
  const bool terminal = ::isatty(device.get()) == 1;
  if (terminal) {
    const DWORD error = makeRaw(device.get());
    if (error != kErrorNone) return error;
  }
  endpoint = std::make_shared<CharacterDevice>(std::move(device), terminal);
  return kErrorNone;
}

}  // namespace tvrscn
