// Ports of this machine, for tests that need one that behaves in a certain way.
#ifndef TVRSCN_TESTS_ALERTS_LOOPBACK_H
#define TVRSCN_TESTS_ALERTS_LOOPBACK_H

#include <memory>
#include <string>

namespace tvrscn::test {

// A port of 127.0.0.1 that is bound and not listened at, so that nobody else takes it.
class ClosedPort {
 public:
  ClosedPort();
  ClosedPort(const ClosedPort&) = delete;
  ClosedPort& operator=(const ClosedPort&) = delete;
  ~ClosedPort();

  int number() const;
  std::string address() const { return "127.0.0.1:" + std::to_string(number()); }

 private:
  int socket_;
};

// A port at which connections are neither accepted nor refused: its queue is full.
class FullPort {
 public:
  FullPort();
  FullPort(const FullPort&) = delete;
  FullPort& operator=(const FullPort&) = delete;
  ~FullPort();

  std::string address() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// True when somebody listens there.
bool isListenedAt(int port);

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_ALERTS_LOOPBACK_H
