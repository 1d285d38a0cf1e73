// The endpoint "unix:/path": a stream socket on which each transfer is a frame, a 32-bit
// little-endian length and that many bytes.
//
// A frame may announce up to 4 GiB. Nothing is allocated for it: its bytes go from the socket into
// the buffers of the reads that ask for them.
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>

#include "platform/device_file.h"
#include "platform/posix/endpoint.h"
#include "platform/posix/system_error.h"
#include "platform/posix/unique_fd.h"

namespace tvrscn {
namespace {

constexpr std::size_t kLengthSize = 4;
// In place of a length: the device fails this transfer. No bytes follow.
constexpr std::uint32_t kFailedTransfer = 0xFFFFFFFFU;

using LengthBytes = std::array<std::uint8_t, kLengthSize>;

LengthBytes littleEndian(std::uint32_t number) {
  return {
      static_cast<std::uint8_t>(number & 0xFFU), static_cast<std::uint8_t>((number >> 8U) & 0xFFU),
      static_cast<std::uint8_t>((number >> 16U) & 0xFFU), static_cast<std::uint8_t>(number >> 24U)};
}

std::uint32_t fromLittleEndian(const LengthBytes& bytes) {
  return std::uint32_t{bytes[0]} | (std::uint32_t{bytes[1]} << 8U) |
         (std::uint32_t{bytes[2]} << 16U) | (std::uint32_t{bytes[3]} << 24U);
}

class FrameConnection final : public Endpoint {
 public:
  explicit FrameConnection(UniqueFd socket) : socket_(std::move(socket)) {}

  DWORD read(void* buffer, DWORD size, DWORD& done) override;
  DWORD write(const void* buffer, DWORD size, DWORD& done) override;
  bool gone() const override;
  void giveUp() override { ::shutdown(socket_.get(), SHUT_RDWR); }

 private:
  // Receives exactly size bytes; fewer only when the connection ended or failed.
  DWORD receive(void* buffer, std::size_t size, std::size_t& got);
  // Waits for the head of the next frame, unless one is under way.
  DWORD startFrame();

  UniqueFd socket_;
  std::atomic<bool> closed_ = false;  // nothing can be written any more
  std::mutex readMutex_;
  bool readEnded_ = false;  // guarded by readMutex_, as is the next one
  std::uint32_t left_ = 0;  // bytes of the frame under way
  std::mutex writeMutex_;
};

DWORD FrameConnection::receive(void* buffer, std::size_t size, std::size_t& got) {
  got = 0;
  while (got < size) {
    const ssize_t count =
        ::recv(socket_.get(), static_cast<char*>(buffer) + got, size - got, MSG_WAITALL);
    if (count > 0) {
      got += static_cast<std::size_t>(count);
      continue;
    }
    if (count < 0 && errno == EINTR) continue;
    // After any failure nobody can tell where the next frame begins, so this is the end.
    readEnded_ = true;
    closed_ = true;
    return count == 0 ? ERROR_DEVICE_NOT_CONNECTED : errorFromErrno(errno);
  }
  return kErrorNone;
}

DWORD FrameConnection::startFrame() {
  LengthBytes head = {};
  std::size_t got = 0;
  const DWORD error = receive(head.data(), head.size(), got);
  if (error != kErrorNone) return error;
  const std::uint32_t length = fromLittleEndian(head);
  if (length == kFailedTransfer) return ERROR_GEN_FAILURE;
  left_ = length;
  return kErrorNone;
}

DWORD FrameConnection::read(void* buffer, DWORD size, DWORD& done) {
  done = 0;
  if (size == 0) return kErrorNone;
  const std::lock_guard lock(readMutex_);
  if (readEnded_) return ERROR_DEVICE_NOT_CONNECTED;
  if (left_ == 0) {
    const DWORD error = startFrame();
    if (error != kErrorNone) return error;
  }
  std::size_t got = 0;
  const DWORD error = receive(buffer, std::min(size, left_), got);
  done = static_cast<DWORD>(got);
  left_ -= done;
  // A frame cut by the close: what came of it counts, the next read tells of the close.
  return got > 0 ? kErrorNone : error;
}

DWORD FrameConnection::write(const void* buffer, DWORD size, DWORD& done) {
  done = 0;
  if (size == kFailedTransfer) return ERROR_INVALID_PARAMETER;
  LengthBytes head = littleEndian(size);
  // sendmsg only reads what the vector points to, yet its type has no const.
  iovec parts[] = {{head.data(), head.size()}, {const_cast<void*>(buffer), size}};
  msghdr message = {};
  message.msg_iov = parts;
  message.msg_iovlen = 2;
  const std::lock_guard lock(writeMutex_);
  if (closed_) return ERROR_DEVICE_NOT_CONNECTED;
  for (std::size_t left = kLengthSize + size; left > 0;) {
    const ssize_t count = ::sendmsg(socket_.get(), &message, MSG_NOSIGNAL);
    if (count < 0) {
      if (errno == EINTR) continue;
      const DWORD error = errorFromErrno(errno);
      // Half a frame is out: the other side could no longer tell where the next one begins.
      if (left < kLengthSize + size) closed_ = true;
      return error;
    }
    auto sent = static_cast<std::size_t>(count);
    left -= sent;
    for (iovec& part : parts) {
      const std::size_t ofPart = std::min(sent, part.iov_len);
      part.iov_base = static_cast<char*>(part.iov_base) + ofPart;
      part.iov_len -= ofPart;
      sent -= ofPart;
    }
  }
  done = size;
  return kErrorNone;
}

bool FrameConnection::gone() const {
  pollfd state = {socket_.get(), POLLRDHUP, 0};
  const bool hungUp =
      ::poll(&state, 1, 0) > 0 && (state.revents & (POLLRDHUP | POLLHUP | POLLERR)) != 0;
  return closed_ || hungUp;
}

}  // namespace

DWORD connectFrames(const std::string& socketPath, std::shared_ptr<Endpoint>& endpoint) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (socketPath.size() >= sizeof(address.sun_path)) return kErrorNameTooLong;
  std::memcpy(address.sun_path, socketPath.c_str(), socketPath.size() + 1);

  UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.valid()) return errorFromErrno(errno);
  int result = 0;
  do {
    // The call's own way to take an address of any family.
    result = ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  } while (result < 0 && errno == EINTR);
  if (result < 0) return errorFromErrno(errno);
  endpoint = std::make_shared<FrameConnection>(std::move(socket));
  return kErrorNone;
}

}  // namespace tvrscn
