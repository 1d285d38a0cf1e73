// One instance of a device's pipe, which is one handle of a host: it waits for the host, then for
// the host's transfers, one operation at a time. A transfer that came stays until it is taken.
#ifndef TVRSCN_VIRTUAL_WINDOWS_PIPE_CHANNEL_H
#define TVRSCN_VIRTUAL_WINDOWS_PIPE_CHANNEL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include <windows.h>

#include "virtual/common/bytes.h"
#include "virtual/windows/overlapped.h"
#include "virtual/windows/unique_handle.h"

namespace tvrscn::virtual_device {

// Whether some program has a pipe of that name.
bool pipeExists(const std::wstring& name);

class PipeChannel {
 public:
  // Makes the instance and waits for a host. `isFirst` makes the name, which must be free then.
  // Throws std::runtime_error.
  PipeChannel(const std::wstring& name, bool isFirst);
  PipeChannel(const PipeChannel&) = delete;
  PipeChannel& operator=(const PipeChannel&) = delete;
  ~PipeChannel() = default;

  // Set when onEvent() is due.
  HANDLE event() const { return operation_.event(); }
  bool hasEvent() const { return operation_.hasEnded(); }
  void onEvent();
  // No event comes any more: the host is gone, or its transfer waits to be taken.
  bool isSilent() const { return state_ == State::kHolding || state_ == State::kBroken; }

  bool isListening() const { return state_ == State::kListening; }
  bool isBroken() const { return state_ == State::kBroken; }
  bool hasRequest() const { return state_ == State::kHolding; }
  void giveUp() { state_ = State::kBroken; }
  DWORD process() const { return process_; }  // of the host
  HANDLE pipe() const { return pipe_.get(); }

  // REQUIRES: hasRequest().
  Bytes takeRequest();

  // The host's other handle; null until it is there.
  PipeChannel* partner = nullptr;

 private:
  enum class State { kListening, kReading, kHolding, kBroken };

  void read();
  void onConnected(DWORD error);
  void onRead(DWORD error, std::size_t size);

  UniqueHandle pipe_;
  std::array<std::uint8_t, 4096> chunk_{};
  Overlapped operation_;
  State state_ = State::kListening;
  DWORD process_ = 0;
  Bytes request_;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_WINDOWS_PIPE_CHANNEL_H
