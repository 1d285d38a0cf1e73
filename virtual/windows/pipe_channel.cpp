// The pipe is one of messages on the device's side, so that each WriteFile of a host arrives as one
// transfer. Hosts read it as bytes, which is what an opened pipe starts with.
#include "virtual/windows/pipe_channel.h"

#include <stdexcept>
#include <utility>

#include "virtual/windows/system_text.h"

namespace tvrscn::virtual_device {
namespace {

// Without a buffer on the way out, a transfer has been sent when the host has read all of it, and
// no read of the host runs over into the next one.
constexpr DWORD kOutBuffer = 0;
constexpr DWORD kInBuffer = 64 * 1024;
// No command of any device comes near this; a longer transfer is noise.
constexpr std::size_t kLongestTransfer = 1U << 20;

HANDLE makeInstance(const std::wstring& name, bool isFirst) {
  const DWORD first = isFirst ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0;
  return CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | first,
                          PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS,
                          PIPE_UNLIMITED_INSTANCES, kOutBuffer, kInBuffer, 0, nullptr);
}

UniqueHandle makePipe(const std::wstring& name, bool isFirst) {
  UniqueHandle pipe(makeInstance(name, isFirst));
  if (!pipe.isValid()) {
    throw std::runtime_error("cannot listen at " + narrow(name) + ": " + reason(GetLastError()) +
                             R"(; give a free name of the form \\.\pipe\NAME)");
  }
  return pipe;
}

}  // namespace

bool pipeExists(const std::wstring& name) {
  constexpr DWORD kShortest = 1;  // millisecond; the answer is in how the wait ends
  return WaitNamedPipeW(name.c_str(), kShortest) != 0 || GetLastError() == ERROR_SEM_TIMEOUT;
}

PipeChannel::PipeChannel(const std::wstring& name, bool isFirst)
    : pipe_(makePipe(name, isFirst)), operation_(pipe_.get()) {
  operation_.began(ConnectNamedPipe(pipe_.get(), operation_.record()));
}

void PipeChannel::onEvent() {
  DWORD size = 0;
  const DWORD error = operation_.result(size);
  if (state_ == State::kListening) {
    onConnected(error);
  } else {
    onRead(error, size);
  }
}

void PipeChannel::onConnected(DWORD error) {
  state_ = State::kBroken;
  if (error != ERROR_SUCCESS) return;
  ULONG process = 0;
  if (GetNamedPipeClientProcessId(pipe_.get(), &process) == 0) return;
  process_ = process;
  read();
}

void PipeChannel::read() {
  state_ = State::kReading;
  operation_.began(ReadFile(pipe_.get(), chunk_.data(), static_cast<DWORD>(chunk_.size()), nullptr,
                            operation_.record()));
}

void PipeChannel::onRead(DWORD error, std::size_t size) {
  request_.insert(request_.end(), chunk_.data(), chunk_.data() + size);
  if (error == ERROR_SUCCESS) {
    state_ = State::kHolding;
  } else if (error == ERROR_MORE_DATA && request_.size() <= kLongestTransfer) {
    read();
  } else {
    state_ = State::kBroken;
  }
}

Bytes PipeChannel::takeRequest() {
  Bytes request = std::exchange(request_, {});
  read();
  return request;
}

}  // namespace tvrscn::virtual_device
