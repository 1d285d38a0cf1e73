#include "virtual/windows/overlapped.h"

#include <stdexcept>

#include "virtual/windows/system_text.h"

namespace tvrscn::virtual_device {

Overlapped::Overlapped(HANDLE file) : file_(file), event_(CreateEventW(nullptr, 1, 0, nullptr)) {
  if (!event_.isValid())
    throw std::runtime_error("cannot make an event: " + reason(GetLastError()));
}

Overlapped::~Overlapped() {
  if (!isPending_) return;
  CancelIoEx(file_, &record_);
  DWORD ignored = 0;
  GetOverlappedResult(file_, &record_, &ignored, 1);
}

OVERLAPPED* Overlapped::record() {
  record_ = {};
  record_.hEvent = event_.get();
  ResetEvent(event_.get());
  isPending_ = false;
  return &record_;
}

void Overlapped::began(BOOL result) {
  const DWORD error = result != 0 ? ERROR_SUCCESS : GetLastError();
  // A message longer than the buffer counts as a failure, but it has a result like a success.
  isPending_ = error == ERROR_SUCCESS || error == ERROR_IO_PENDING || error == ERROR_MORE_DATA;
  if (isPending_) return;
  // A host that was quicker than the wait for it is there all the same.
  error_ = error == ERROR_PIPE_CONNECTED ? ERROR_SUCCESS : error;
  SetEvent(event_.get());
}

DWORD Overlapped::result(DWORD& bytes) {
  bytes = 0;
  if (!isPending_) return error_;
  isPending_ = false;
  return GetOverlappedResult(file_, &record_, &bytes, 1) != 0 ? ERROR_SUCCESS : GetLastError();
}

}  // namespace tvrscn::virtual_device
