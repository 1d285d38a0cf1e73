// A link over a stream socket. Both sides send frames: a 32-bit little-endian length and that many
// bytes, one frame per transfer. The length 0xFFFFFFFF, alone, makes one read of the host fail.
#ifndef TVRSCN_VIRTUAL_POSIX_SOCKET_LINK_H
#define TVRSCN_VIRTUAL_POSIX_SOCKET_LINK_H

#include <cstddef>
#include <cstdint>

#include "virtual/common/link.h"
#include "virtual/posix/unique_fd.h"

namespace tvrscn::virtual_device {

class SocketLink final : public Link {
 public:
  // Takes the connected socket, which must not block. Everything ends as soon as stopFd is
  // readable.
  SocketLink(UniqueFd socket, int stopFd);

  std::optional<Bytes> receive() override;
  bool send(const Bytes& transfer) override;
  bool sendFailure() override;
  void dropWithin(const Bytes& transfer, std::size_t count) override;
  bool pause(std::chrono::milliseconds time) override;
  void stall() override;

 private:
  // Waits until the socket is ready for that (a POLL... flag), the host is gone or the device
  // stopped. Says whether the socket is ready; a timeout below 0 is none.
  bool waitFor(short events, int timeoutMilliseconds = -1);
  bool readAll(std::uint8_t* data, std::size_t size);
  bool writeAll(const std::uint8_t* data, std::size_t size);
  bool writeLength(std::uint32_t length);

  UniqueFd socket_;
  int stopFd_;
  bool ended_ = false;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_POSIX_SOCKET_LINK_H
