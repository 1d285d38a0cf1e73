#include "virtual/windows/pipe_link.h"

#include <algorithm>

#include "virtual/windows/overlapped.h"

namespace tvrscn::virtual_device {

bool PipeLink::waitOn(DWORD milliseconds, HANDLE event) {
  if (!ended_) ended_ = !endpoint_.hostIsHere() || !endpoint_.wait(milliseconds, event);
  return !ended_;
}

std::optional<Bytes> PipeLink::receive() {
  while (!ended_) {
    endpoint_.tidy();
    if (PipeChannel* channel = endpoint_.request()) {
      replies_ = channel->partner->pipe();
      return channel->takeRequest();
    }
    waitOn();
  }
  return std::nullopt;
}

bool PipeLink::send(const Bytes& transfer) {
  if (ended_ || replies_ == nullptr) return false;
  return transfer.empty() ? sendNothing() : sendBytes(transfer);
}

bool PipeLink::sendBytes(std::span<const std::uint8_t> bytes) {
  Overlapped write(replies_);
  write.began(
      WriteFile(replies_, bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, write.record()));
  while (!write.hasEnded()) {
    if (!waitOn(INFINITE, write.event())) return false;
  }
  DWORD written = 0;
  if (write.result(written) != ERROR_SUCCESS) ended_ = true;
  return !ended_;
}

// A write of nothing ends a read that waits, and is lost on some systems when none does. So it is
// said again until the host's next request tells that it was heard.
bool PipeLink::sendNothing() {
  constexpr DWORD kInterval = 10;
  while (endpoint_.request() == nullptr) {
    Overlapped write(replies_);
    write.began(WriteFile(replies_, "", 0, nullptr, write.record()));
    if (!waitOn(kInterval)) return false;
  }
  return true;
}

bool PipeLink::sendFailure() {
  ended_ = true;
  return false;
}

void PipeLink::dropWithin(const Bytes& transfer, std::size_t count) {
  if (!ended_ && replies_ != nullptr) {
    sendBytes(std::span(transfer).first(std::min(count, transfer.size())));
  }
  ended_ = true;
}

bool PipeLink::pause(std::chrono::milliseconds time) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + time;
  for (Clock::time_point now = Clock::now(); now < end; now = Clock::now()) {
    constexpr std::chrono::milliseconds kMost{1'000'000};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now);
    if (!waitOn(static_cast<DWORD>(std::min(left, kMost).count()))) return false;
  }
  return !ended_;
}

void PipeLink::stall() {
  while (waitOn()) {
  }
}

}  // namespace tvrscn::virtual_device
