#include "tests/alerts/tcp_server.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include <poll.h>

#include "platform/posix/unique_fd.h"
#include "tests/alerts/posix/sockets.h"

namespace tvrscn::test {
namespace {

constexpr std::chrono::milliseconds kLook(20);  // how often threads look whether they are to end

// True when the descriptor is ready within the time.
bool waitFor(int fd, short events, std::chrono::milliseconds time) {
  pollfd entry = {fd, events, 0};
  return poll(&entry, 1, static_cast<int>(time.count())) > 0;
}

class Conversation : public Caller {
 public:
  Conversation(UniqueFd fd, const std::atomic<bool>& ending)
      : fd_(std::move(fd)), ending_(ending) {}

  // Reads one request: its head, and as many bytes behind it as that says.
  bool readRequest() {
    while (!isWhole()) {
      if (ending_) return false;
      if (!waitFor(fd_.get(), POLLIN, kLook)) continue;
      std::array<char, 4096> part;
      const ssize_t count = recv(fd_.get(), part.data(), part.size(), 0);
      if (count <= 0) return false;
      request_.append(part.data(), static_cast<std::size_t>(count));
    }
    return true;
  }

  std::string path() const override {
    const std::size_t start = request_.find(' ') + 1;
    return request_.substr(start, request_.find(' ', start) - start);
  }

  bool say(std::string_view bytes) override {
    while (!bytes.empty()) {
      if (ending_) return false;
      if (!waitFor(fd_.get(), POLLOUT, kLook)) continue;
      const ssize_t count =
          send(fd_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
      if (count < 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

  bool saySlowly(std::string_view bytes, std::chrono::milliseconds pause) override {
    if (!say(bytes)) return false;
    // A caller that goes ends the pause.
    waitFor(fd_.get(), POLLRDHUP, pause);
    return !ending_;
  }

 private:
  bool isWhole() const {
    const std::size_t head = request_.find("\r\n\r\n");
    if (head == std::string::npos) return false;
    constexpr std::string_view kLength = "Content-Length: ";
    const std::size_t length = request_.find(kLength);
    if (length > head) return true;
    const char* const number = request_.c_str() + length + kLength.size();
    return request_.size() >= head + 4 + std::strtoul(number, nullptr, 10);
  }

  UniqueFd fd_;
  const std::atomic<bool>& ending_;
  std::string request_;
};

}  // namespace

struct TcpServer::State {
  UniqueFd listener{tcpSocket()};
  int port = 0;
  Behaviour behaviour;
  std::atomic<bool> ending = false;
  std::atomic<int> callers = 0;
  std::vector<std::thread> conversations;  // of the accepting thread until that has ended
  std::thread accepting;

  void accept() {
    while (!ending) {
      if (!waitFor(listener.get(), POLLIN, kLook)) continue;
      UniqueFd fd(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
      if (!fd.valid()) continue;
      ++callers;
      conversations.emplace_back([this, caller = std::move(fd)]() mutable {
        Conversation conversation(std::move(caller), ending);
        if (conversation.readRequest()) behaviour(conversation);
      });
    }
  }
};

TcpServer::TcpServer(Behaviour behaviour) : state_(std::make_unique<State>()) {
  state_->behaviour = std::move(behaviour);
  state_->port = bindToFreePort(state_->listener.get());
  constexpr int kQueue = 16;
  if (listen(state_->listener.get(), kQueue) != 0) throw std::runtime_error("cannot listen");
  state_->accepting = std::thread([this] { state_->accept(); });
}

TcpServer::~TcpServer() {
  state_->ending = true;
  state_->accepting.join();
  for (std::thread& conversation : state_->conversations)
    conversation.join();
}

std::string TcpServer::address() const {
  return "127.0.0.1:" + std::to_string(state_->port);
}

int TcpServer::callers() const {
  return state_->callers;
}

}  // namespace tvrscn::test
