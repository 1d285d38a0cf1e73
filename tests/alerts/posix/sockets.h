// Sockets of the loopback interface, each with one owner.
#ifndef TVRSCN_TESTS_ALERTS_POSIX_SOCKETS_H
#define TVRSCN_TESTS_ALERTS_POSIX_SOCKETS_H

#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace tvrscn::test {

inline sockaddr_in loopback(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<in_port_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

inline int tcpSocket(int flags = 0) {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | flags, 0);
  if (fd < 0) throw std::runtime_error("no socket");
  return fd;
}

inline bool connectTo(int fd, int port) {
  const sockaddr_in address = loopback(port);
  return connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

// Binds to a free port and returns its number.
inline int bindToFreePort(int fd) {
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  auto* const plain = reinterpret_cast<sockaddr*>(&address);
  if (bind(fd, plain, size) != 0 || getsockname(fd, plain, &size) != 0) {
    throw std::runtime_error("no free port");
  }
  return ntohs(address.sin_port);
}

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_ALERTS_POSIX_SOCKETS_H
