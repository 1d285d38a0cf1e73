// A host in memory: puts its commands on a link, lets the device serve them to their end, and keeps
// what came back.
#ifndef TVRSCN_TESTS_VIRTUAL_SUPPORT_FAKE_HOST_H
#define TVRSCN_TESTS_VIRTUAL_SUPPORT_FAKE_HOST_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

#include "virtual/common/device_server.h"
#include "virtual/common/link.h"
#include "virtual/hp/hp_scanner.h"

namespace tvrscn::virtual_device::testing {

// One thing that the device did on the wire.
struct Event {
  enum class Kind { kTransfer, kFailure, kDrop, kPause, kStall };
  Kind kind;
  Bytes bytes;            // of a transfer, or of the one that was dropped
  std::size_t count = 0;  // bytes before the drop, or milliseconds of a pause
};

class FakeLink final : public Link {
 public:
  explicit FakeLink(std::deque<Bytes> commands) : commands_(std::move(commands)) {}

  std::optional<Bytes> receive() override {
    if (commands_.empty()) return std::nullopt;
    Bytes command = std::move(commands_.front());
    commands_.pop_front();
    return command;
  }
  bool send(const Bytes& transfer) override { return note({Event::Kind::kTransfer, transfer}); }
  bool sendFailure() override { return note({Event::Kind::kFailure, {}}); }
  void dropWithin(const Bytes& transfer, std::size_t count) override {
    note({Event::Kind::kDrop, transfer, count});
  }
  bool pause(std::chrono::milliseconds time) override {
    return note({Event::Kind::kPause, {}, static_cast<std::size_t>(time.count())});
  }
  void stall() override { note({Event::Kind::kStall, {}}); }

  std::vector<Event> events;
  std::size_t unread() const { return commands_.size(); }

 private:
  bool note(Event event) {
    events.push_back(std::move(event));
    return true;
  }
  std::deque<Bytes> commands_;
};

inline const Bytes kInquiryCommand = {0x1B, 0xA8, 0x12, 0x00};
inline const Bytes kReserveCommand = {0x1B, 0xA8, 0x16, 0x00};
inline const Bytes kPositionCommand = {0x1B, 0xA8, 0x31, 0x00};
inline const Bytes kReadCommand = {0x1B, 0xA8, 0x28, 0x00};
inline const Bytes kReadImageCommand = {0x1B, 0xA8, 0x29, 0x00};
inline const Bytes kAbortCommand = {0x1B, 0xA8, 0x06, 0x00};
inline const Bytes kReleaseCommand = {0x1B, 0xA8, 0x17, 0x00};

// 1 by 2 inches at 75 dpi, colour, background as it is, flatbed: 75 by 150 pixels.
inline const Bytes kSmallWindow = {0x1B, 0xA8, 0x24, 0x13, 0x30, 0x00, 0x00, 0x04, 0xB0,
                                   0x00, 0x00, 0x09, 0x60, 0x00, 0x00, 0x00, 0x00, 0x00,
                                   0x00, 0x05, 0x06, 0x01, 0x15, 0x40, 0x01};

inline Bytes smallWindowFrom(std::uint8_t source0, std::uint8_t source1) {
  Bytes window = kSmallWindow;
  window[23] = source0;
  window[24] = source1;
  return window;
}

// What the device did for these commands.
inline std::vector<Event> exchangeWith(Device& device, std::deque<Bytes> commands) {
  FakeLink link(std::move(commands));
  device.serve(link);
  return link.events;
}
inline std::vector<Event> exchange(HpScanner& scanner, std::deque<Bytes> commands) {
  return exchangeWith(scanner, std::move(commands));
}

// The transfers among them, the last one for a sequence that ends in the command of interest.
inline Bytes lastTransfer(const std::vector<Event>& events) {
  if (events.empty() || events.back().kind != Event::Kind::kTransfer) return {0xEE};
  return events.back().bytes;
}

// A host that goes through a job, command by command, on the device's own thread of control.
class JobLink final : public Link {
 public:
  struct Block {
    int type = 0;
    std::uint32_t size = 0;
    int lines = 0;
    int width = 0;
    Bytes jpeg;
  };
  using PageBlocks = std::vector<Block>;

  explicit JobLink(Bytes window) : window_(std::move(window)) {}

  std::optional<Bytes> receive() override {
    return next_.empty() ? start() : std::exchange(next_, {});
  }
  bool send(const Bytes& transfer) override {
    answers.push_back(transfer);
    next_ = follow(transfer);
    return true;
  }
  bool sendFailure() override { return false; }
  void dropWithin(const Bytes&, std::size_t) override {}
  bool pause(std::chrono::milliseconds) override { return true; }
  void stall() override {}

  std::vector<PageBlocks> pages;
  std::vector<Bytes> answers;
  Bytes lastPosition;

 private:
  std::optional<Bytes> start() {
    if (started_) return std::nullopt;
    started_ = true;
    return kReserveCommand;
  }

  Bytes follow(const Bytes& answer) {
    switch (answer.size()) {
      case 8:  // reserve
        return window_;
      case 32:  // window
        return answer[1] == 0 ? kPositionCommand : kReleaseCommand;
      case 6:  // object position
        lastPosition = answer;
        if (answer[1] != 0) return kReleaseCommand;
        pages.emplace_back();
        return kReadCommand;
      case 20:
        return announced(answer);
      case 3:  // release
        return {};
      default:
        return received(answer);
    }
  }

  Bytes announced(const Bytes& answer) {
    if (answer[1] != 0) return kPositionCommand;
    Block block;
    block.type = answer[3];
    block.size = (std::uint32_t{answer[4]} << 24) | (std::uint32_t{answer[5]} << 16) |
                 (std::uint32_t{answer[6]} << 8) | answer[7];
    block.lines = answer[8] * 256 + answer[9];
    block.width = answer[10] * 256 + answer[11];
    pages.back().push_back(block);
    return kReadImageCommand;
  }

  Bytes received(const Bytes& data) {
    Block& block = pages.back().back();
    block.jpeg = data;
    if (block.type != 0x81) return kReadCommand;
    // The flatbed is asked again too, to see that it has no second page.
    return kPositionCommand;
  }

  Bytes window_;
  Bytes next_;
  bool started_ = false;
};

}  // namespace tvrscn::virtual_device::testing

#endif  // TVRSCN_TESTS_VIRTUAL_SUPPORT_FAKE_HOST_H
