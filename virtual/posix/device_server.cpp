// A software device on a unix socket. One thread accepts and serves one host after another; it
// blocks in poll alone, which also watches an event descriptor. Writing to that is all that stop()
// does, so that a signal handler may call it.
#include "virtual/common/device_server.h"

#include <array>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "virtual/posix/registration.h"
#include "virtual/posix/socket_link.h"
#include "virtual/posix/unique_fd.h"

namespace tvrscn::virtual_device {
namespace {

std::string reason(int error) {
  return std::generic_category().message(error);
}

// A folder for this process alone, gone with its owner.
class PrivateFolder {
 public:
  PrivateFolder() {
    std::error_code error;
    std::string pattern = (std::filesystem::temp_directory_path(error) / "tvrscn-XXXXXX").string();
    if (error || mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error(
          "cannot make a folder for the virtual device; let TMPDIR name a "
          "folder that can be written");
    }
    path_ = pattern;
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  ~PrivateFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

sockaddr_un addressOf(const std::filesystem::path& path) {
  const std::string text = path.string();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (text.size() >= sizeof address.sun_path) {
    throw std::runtime_error("the socket's path " + text + " is too long for this system; give " +
                             std::to_string(sizeof address.sun_path - 1) + " characters or less");
  }
  std::memcpy(address.sun_path, text.data(), text.size());
  return address;
}

// The socket calls take any kind of address through a pointer to the general one.
const sockaddr* general(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

// Takes away the socket that a scanner left which did not end properly. A socket that answers has
// an owner, and what is no socket is not ours to remove.
void removeStale(const std::filesystem::path& path, const sockaddr_un& address) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::symlink_status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) return;
  if (status.type() != std::filesystem::file_type::socket) {
    throw std::runtime_error("cannot listen at " + path.string() +
                             ": something else is there; give another path or remove it");
  }
  const UniqueFd probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (connect(probe.get(), general(address), sizeof address) == 0 || errno == EAGAIN) {
    throw std::runtime_error("cannot listen at " + path.string() +
                             ": another program listens there; give another path or end it");
  }
  std::filesystem::remove(path, error);
}

// A listening socket; its name goes with it.
class Listener {
 public:
  explicit Listener(const std::filesystem::path& path) {
    const sockaddr_un address = addressOf(path);
    removeStale(path, address);
    socket_ = UniqueFd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    constexpr int kWaitingHosts = 8;
    if (!socket_.isValid() || bind(socket_.get(), general(address), sizeof address) != 0) {
      fail(path, errno);
    }
    path_ = path;
    if (chmod(path.c_str(), S_IRUSR | S_IWUSR) != 0 || listen(socket_.get(), kWaitingHosts) != 0) {
      const int error = errno;
      std::filesystem::remove(path_);
      fail(path, error);
    }
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

  int fd() const { return socket_.get(); }
  UniqueFd accept() const {
    return UniqueFd(accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  }

 private:
  [[noreturn]] static void fail(const std::filesystem::path& path, int error) {
    throw std::runtime_error("cannot listen at " + path.string() + ": " + reason(error) +
                             "; give a path in a folder that can be written");
  }

  UniqueFd socket_;
  std::filesystem::path path_;
};

// Fills in what the caller left to us.
Placement completed(Placement placement, std::unique_ptr<PrivateFolder>& folder) {
  if (placement.socket.empty() || placement.deviceFolder.empty()) {
    folder = std::make_unique<PrivateFolder>();
  }
  if (placement.socket.empty()) placement.socket = folder->path() / "socket";
  if (placement.deviceFolder.empty()) placement.deviceFolder = folder->path() / "devices";
  placement.socket = std::filesystem::absolute(placement.socket);
  placement.deviceFolder = std::filesystem::absolute(placement.deviceFolder);
  return placement;
}

class SocketScanner final : public RunningScanner {
 public:
  SocketScanner(std::unique_ptr<Device> device, const Placement& placement)
      : device_(std::move(device)),
        placement_(completed(placement, folder_)),
        stop_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
        listener_(placement_.socket),
        registration_(std::make_unique<Registration>(placement_)) {
    if (!stop_.isValid()) throw std::runtime_error("cannot make an event: " + reason(errno));
    thread_ = std::thread([this] { run(); });
  }
  SocketScanner(const SocketScanner&) = delete;
  SocketScanner& operator=(const SocketScanner&) = delete;
  ~SocketScanner() override {
    stop();
    thread_.join();
  }

  const Placement& placement() const override { return placement_; }

  void wait() override {
    std::unique_lock<std::mutex> lock(mutex_);
    ended_.wait(lock, [this] { return hasEnded_; });
  }

  void stop() noexcept override {
    const int error = errno;
    const std::uint64_t one = 1;
    // It can fail only when it was stopped already, over and over.
    if (write(stop_.get(), &one, sizeof one) < 0) errno = error;
  }

 private:
  void run() {
    while (waitForHost())
      serveHost(listener_.accept());
    // Nobody is to find a device that no longer answers.
    registration_.reset();
    const std::lock_guard<std::mutex> lock(mutex_);
    hasEnded_ = true;
    ended_.notify_all();
  }

  bool waitForHost() const {
    std::array<pollfd, 2> fds{{{listener_.fd(), POLLIN, 0}, {stop_.get(), POLLIN, 0}}};
    while (poll(fds.data(), fds.size(), -1) < 0 && errno == EINTR) {
    }
    return fds[1].revents == 0;
  }

  void serveHost(UniqueFd socket) {
    if (!socket.isValid()) return;
    SocketLink link(std::move(socket), stop_.get());
    try {
      device_->serve(link);
    } catch (const std::exception& error) {
      std::cerr << placement_.name << ": a host was disconnected: " << error.what() << '\n';
    }
  }

  std::unique_ptr<PrivateFolder> folder_;
  std::unique_ptr<Device> device_;
  Placement placement_;
  UniqueFd stop_;
  Listener listener_;
  std::unique_ptr<Registration> registration_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool hasEnded_ = false;
  std::thread thread_;
};

}  // namespace

std::unique_ptr<RunningScanner> startDevice(std::unique_ptr<Device> device,
                                            const Placement& placement) {
  return std::make_unique<SocketScanner>(std::move(device), placement);
}

}  // namespace tvrscn::virtual_device
