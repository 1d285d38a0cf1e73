// Nothing here blocks in a call but poll, which also watches the descriptor that stops the device.
#include "virtual/posix/socket_link.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <utility>

#include <poll.h>
#include <sys/socket.h>

namespace tvrscn::virtual_device {
namespace {

constexpr std::uint32_t kFailedRead = 0xFFFFFFFF;
constexpr std::size_t kLengthBytes = 4;
// No command of any device comes near this; a longer frame is noise.
constexpr std::uint32_t kLongestTransfer = 1U << 20;

bool wouldBlock(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

}  // namespace

SocketLink::SocketLink(UniqueFd socket, int stopFd) : socket_(std::move(socket)), stopFd_(stopFd) {}

bool SocketLink::waitFor(short events, int timeoutMilliseconds) {
  std::array<pollfd, 2> fds{{{socket_.get(), events, 0}, {stopFd_, POLLIN, 0}}};
  int ready = 0;
  do {
    ready = poll(fds.data(), fds.size(), timeoutMilliseconds);
  } while (ready < 0 && errno == EINTR && timeoutMilliseconds < 0);
  if (fds[1].revents != 0) ended_ = true;
  return !ended_ && fds[0].revents != 0;
}

bool SocketLink::readAll(std::uint8_t* data, std::size_t size) {
  while (size > 0 && !ended_) {
    if (!waitFor(POLLIN)) continue;
    const ssize_t got = recv(socket_.get(), data, size, 0);
    if (got < 0 && wouldBlock(errno)) continue;
    if (got <= 0) {
      ended_ = true;
      break;
    }
    data += got;
    size -= static_cast<std::size_t>(got);
  }
  return !ended_;
}

bool SocketLink::writeAll(const std::uint8_t* data, std::size_t size) {
  while (size > 0 && !ended_) {
    if (!waitFor(POLLOUT)) continue;
    const ssize_t sent = ::send(socket_.get(), data, size, MSG_NOSIGNAL);
    if (sent < 0 && wouldBlock(errno)) continue;
    if (sent <= 0) {
      ended_ = true;
      break;
    }
    data += sent;
    size -= static_cast<std::size_t>(sent);
  }
  return !ended_;
}

bool SocketLink::writeLength(std::uint32_t length) {
  const std::array<std::uint8_t, kLengthBytes> bytes = {
      static_cast<std::uint8_t>(length & 0xFF), static_cast<std::uint8_t>((length >> 8) & 0xFF),
      static_cast<std::uint8_t>((length >> 16) & 0xFF), static_cast<std::uint8_t>(length >> 24)};
  return writeAll(bytes.data(), bytes.size());
}

std::optional<Bytes> SocketLink::receive() {
  std::array<std::uint8_t, kLengthBytes> bytes{};
  if (!readAll(bytes.data(), bytes.size())) return std::nullopt;
  const std::uint32_t length = bytes[0] | (std::uint32_t{bytes[1]} << 8) |
                               (std::uint32_t{bytes[2]} << 16) | (std::uint32_t{bytes[3]} << 24);
  if (length > kLongestTransfer) return std::nullopt;
  Bytes transfer(length);
  if (!readAll(transfer.data(), transfer.size())) return std::nullopt;
  return transfer;
}

bool SocketLink::send(const Bytes& transfer) {
  return writeLength(static_cast<std::uint32_t>(transfer.size())) &&
         writeAll(transfer.data(), transfer.size());
}

bool SocketLink::sendFailure() {
  return writeLength(kFailedRead);
}

void SocketLink::dropWithin(const Bytes& transfer, std::size_t count) {
  if (writeLength(static_cast<std::uint32_t>(transfer.size()))) {
    writeAll(transfer.data(), std::min(count, transfer.size()));
  }
  shutdown(socket_.get(), SHUT_RDWR);
  ended_ = true;
}

bool SocketLink::pause(std::chrono::milliseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (!ended_) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        end - std::chrono::steady_clock::now() + std::chrono::microseconds(999));
    if (left.count() <= 0) return true;
    const auto most = std::chrono::milliseconds(std::numeric_limits<int>::max());
    // The host's hanging up is all that matters: what it sends meanwhile can wait.
    if (waitFor(POLLRDHUP, static_cast<int>(std::min(left, most).count()))) ended_ = true;
  }
  return false;
}

void SocketLink::stall() {
  while (!ended_) {
    if (waitFor(POLLRDHUP)) ended_ = true;
  }
}

}  // namespace tvrscn::virtual_device
