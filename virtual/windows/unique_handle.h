// Owner of a kernel object's handle.
#ifndef TVRSCN_VIRTUAL_WINDOWS_UNIQUE_HANDLE_H
#define TVRSCN_VIRTUAL_WINDOWS_UNIQUE_HANDLE_H

#include <utility>

#include <windows.h>

namespace tvrscn::virtual_device {

class UniqueHandle {
 public:
  UniqueHandle() = default;
  explicit UniqueHandle(HANDLE handle) : handle_(handle) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() {
    if (isValid()) CloseHandle(handle_);
  }

  // Calls that make a handle fail with null or with INVALID_HANDLE_VALUE.
  bool isValid() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle_; }

 private:
  HANDLE handle_ = nullptr;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_WINDOWS_UNIQUE_HANDLE_H
