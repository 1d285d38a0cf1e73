// A host on a software scanner's socket, byte by byte.
#ifndef TVRSCN_TESTS_VIRTUAL_SUPPORT_RAW_HOST_H
#define TVRSCN_TESTS_VIRTUAL_SUPPORT_RAW_HOST_H

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tvrscn::virtual_device::testing {

using Frame = std::vector<std::uint8_t>;

// A host on the socket that writes and reads bytes as they are.
class RawHost {
 public:
  explicit RawHost(const std::filesystem::path& path) : fd_(socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    connected_ = connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  RawHost(const RawHost&) = delete;
  RawHost& operator=(const RawHost&) = delete;
  ~RawHost() { hangUp(); }

  bool isConnected() const { return connected_; }
  void hangUp() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }
  void write(const Frame& bytes) {
    EXPECT_EQ(::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  // Up to `size` bytes; fewer when the device hangs up or is silent for the time.
  Frame read(std::size_t size, std::chrono::milliseconds time = std::chrono::seconds(10)) {
    Frame bytes;
    while (bytes.size() < size) {
      pollfd poller{fd_, POLLIN, 0};
      if (poll(&poller, 1, static_cast<int>(time.count())) <= 0) break;
      std::array<std::uint8_t, 4096> part{};
      const ssize_t got = recv(fd_, part.data(), std::min(part.size(), size - bytes.size()), 0);
      if (got <= 0) break;
      bytes.insert(bytes.end(), part.begin(), part.begin() + got);
    }
    return bytes;
  }
  // The length in front of the next frame.
  std::uint32_t readLength() {
    const Frame bytes = read(4);
    if (bytes.size() != 4) return 0xDEADDEAD;
    return bytes[0] | (std::uint32_t{bytes[1]} << 8) | (std::uint32_t{bytes[2]} << 16) |
           (std::uint32_t{bytes[3]} << 24);
  }
  Frame readFrame() { return read(readLength()); }
  bool isHungUp() {
    pollfd poller{fd_, POLLIN, 0};
    std::uint8_t byte = 0;
    return poll(&poller, 1, 10000) > 0 && recv(fd_, &byte, 1, 0) <= 0;
  }

 private:
  int fd_;
  bool connected_ = false;
};

}  // namespace tvrscn::virtual_device::testing

#endif  // TVRSCN_TESTS_VIRTUAL_SUPPORT_RAW_HOST_H
