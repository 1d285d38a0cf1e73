#include "tests/alerts/loopback.h"

#include <vector>

#include <unistd.h>

#include "platform/posix/unique_fd.h"
#include "tests/alerts/posix/sockets.h"

namespace tvrscn::test {

ClosedPort::ClosedPort() : socket_(tcpSocket()) {
  bindToFreePort(socket_);
}

ClosedPort::~ClosedPort() {
  close(socket_);
}

int ClosedPort::number() const {
  sockaddr_in address = {};
  socklen_t size = sizeof address;
  getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

struct FullPort::State {
  UniqueFd listener{tcpSocket()};
  int port = 0;
  std::vector<UniqueFd> waiting;
};

FullPort::FullPort() : state_(std::make_unique<State>()) {
  state_->port = bindToFreePort(state_->listener.get());
  if (listen(state_->listener.get(), 0) != 0) throw std::runtime_error("cannot listen");
  // More than any queue of length 0 takes; what does not fit in goes on trying.
  constexpr int kMoreThanFit = 4;
  for (int number = 0; number < kMoreThanFit; ++number) {
    state_->waiting.emplace_back(tcpSocket(SOCK_NONBLOCK));
    connectTo(state_->waiting.back().get(), state_->port);
  }
}

FullPort::~FullPort() = default;

std::string FullPort::address() const {
  return "127.0.0.1:" + std::to_string(state_->port);
}

bool isListenedAt(int port) {
  const UniqueFd fd(tcpSocket());
  return connectTo(fd.get(), port);
}

}  // namespace tvrscn::test
