// A server on the loopback interface that says to each caller what a test tells it to.
#ifndef TVRSCN_TESTS_ALERTS_TCP_SERVER_H
#define TVRSCN_TESTS_ALERTS_TCP_SERVER_H

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tvrscn::test {

// One caller, on a thread of its own.
class Caller {
 public:
  virtual ~Caller() = default;
  // The path of the HTTP request that has come; it is read in full before the server answers.
  virtual std::string path() const = 0;
  // False when the caller has gone, or the server is to end.
  virtual bool say(std::string_view bytes) = 0;
  // The same with a pause behind it.
  virtual bool saySlowly(std::string_view bytes, std::chrono::milliseconds pause) = 0;
};

class TcpServer {
 public:
  // The connection is closed when the behaviour returns.
  using Behaviour = std::function<void(Caller&)>;

  explicit TcpServer(Behaviour behaviour);
  TcpServer(const TcpServer&) = delete;
  TcpServer& operator=(const TcpServer&) = delete;
  // Ends all conversations and waits for that.
  ~TcpServer();

  std::string address() const;
  int callers() const;  // so far

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_ALERTS_TCP_SERVER_H
