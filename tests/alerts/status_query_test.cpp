// Which paths are asked, and that nobody waits longer than allowed.
#include "platform/tdspclient/status_query.h"

#include <chrono>
#include <future>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tvrscn {
namespace {

using std::chrono::milliseconds;
using Lines = std::vector<std::string>;

constexpr milliseconds kLong(20000);

// Gives the replies in turn; without one it waits to be aborted.
class ScriptedConnection : public StatusConnection {
 public:
  ScriptedConnection(std::vector<Reply> replies, Lines& paths)
      : replies_(std::move(replies)), paths_(paths) {}
  ~ScriptedConnection() override { gone_.set_value(); }

  Reply ask(const DeviceAddress& address, const std::string& path, Deadline /*deadline*/,
            PrinterStatus& status) override {
    EXPECT_EQ(address.host, "host");
    paths_.push_back(path);
    status.reasons.push_back(path);
    if (paths_.size() <= replies_.size()) return replies_[paths_.size() - 1];
    aborted_.get_future().wait();
    return Reply::kStatus;
  }
  void abort() override { aborted_.set_value(); }

  std::future<void> gone() { return gone_.get_future(); }

 private:
  std::vector<Reply> replies_;
  Lines& paths_;
  std::promise<void> aborted_;
  std::promise<void> gone_;
};

class StatusQuery : public ::testing::Test {
 protected:
  std::optional<PrinterStatus> ask(std::vector<Reply> replies, milliseconds limit = kLong) {
    auto connection = std::make_unique<ScriptedConnection>(std::move(replies), paths);
    gone = connection->gone();
    std::optional<PrinterStatus> status =
        askDevice({"host", false, 631}, std::move(connection), limit);
    // The thread touches nothing of ours once its connection has gone.
    EXPECT_EQ(gone.wait_for(kLong), std::future_status::ready);
    return status;
  }

  Lines paths;
  std::future<void> gone;
};

TEST_F(StatusQuery, FirstPathIsEnoughWhenItAnswers) {
  const std::optional<PrinterStatus> status = ask({Reply::kStatus});
  ASSERT_TRUE(status.has_value());
  EXPECT_EQ(status->reasons, Lines{"/ipp/print"});
  EXPECT_EQ(paths, Lines{"/ipp/print"});
}

TEST_F(StatusQuery, RootIsAskedWhenTheFirstPathIsRefused) {
  const std::optional<PrinterStatus> status = ask({Reply::kRefused, Reply::kStatus});
  ASSERT_TRUE(status.has_value());
  EXPECT_EQ(status->reasons, Lines{"/"});
  EXPECT_EQ(paths, (Lines{"/ipp/print", "/"}));
}

TEST_F(StatusQuery, NoPathIsNoStatus) {
  EXPECT_FALSE(ask({Reply::kRefused, Reply::kRefused}).has_value());
  EXPECT_EQ(paths, (Lines{"/ipp/print", "/"}));
}

TEST_F(StatusQuery, DeviceThatDoesNotSpeakIsAskedOnce) {
  EXPECT_FALSE(ask({Reply::kNone}).has_value());
  EXPECT_EQ(paths, Lines{"/ipp/print"});
}

TEST_F(StatusQuery, SlowDeviceIsLeftAtTheLimitAndAborted) {
  for (const std::vector<Reply>& replies :
       {std::vector<Reply>{}, std::vector<Reply>{Reply::kRefused}}) {
    paths.clear();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(ask(replies, milliseconds(60)).has_value());
    const auto time = std::chrono::steady_clock::now() - start;
    EXPECT_GE(time, milliseconds(60));
    EXPECT_LT(time, kLong);
    EXPECT_EQ(paths.size(), replies.size() + 1);
  }
}

TEST_F(StatusQuery, EachOfManyInARowIsAnswered) {
  for (int i = 0; i < 200; ++i) {
    paths.clear();
    ASSERT_TRUE(ask({Reply::kStatus}).has_value()) << i;
  }
}

class ExhaustedConnection : public StatusConnection {
 public:
  Reply ask(const DeviceAddress&, const std::string&, Deadline, PrinterStatus&) override {
    throw std::bad_alloc();
  }
  void abort() override {}
};

TEST_F(StatusQuery, ExhaustedMemoryIsNoStatus) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(
      askDevice({"host", false, 631}, std::make_unique<ExhaustedConnection>(), kLong).has_value());
  EXPECT_LT(std::chrono::steady_clock::now() - start, kLong);
}

}  // namespace
}  // namespace tvrscn
