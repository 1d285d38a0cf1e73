// Owner of a system handle.
#ifndef TVRSCN_PLATFORM_WINDOWS_UNIQUE_HANDLE_H
#define TVRSCN_PLATFORM_WINDOWS_UNIQUE_HANDLE_H

#include <utility>

#include "tvrscn/types.h"

namespace tvrscn {

// Null and INVALID_HANDLE_VALUE both mean none: the system's calls answer a failure with either.
class UniqueHandle {
 public:
  explicit UniqueHandle(HANDLE handle = nullptr)
      : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~UniqueHandle() {
    if (handle_ != nullptr) CloseHandle(handle_);
  }

  [[nodiscard]] HANDLE get() const { return handle_; }
  [[nodiscard]] bool valid() const { return handle_ != nullptr; }

 private:
  HANDLE handle_;
};

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_WINDOWS_UNIQUE_HANDLE_H
