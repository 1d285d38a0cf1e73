// Owner of a file descriptor.
#ifndef TVRSCN_VIRTUAL_POSIX_UNIQUE_FD_H
#define TVRSCN_VIRTUAL_POSIX_UNIQUE_FD_H

#include <utility>

#include <unistd.h>

namespace tvrscn::virtual_device {

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~UniqueFd() {
    if (fd_ >= 0) close(fd_);
  }

  int get() const { return fd_; }
  bool isValid() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_POSIX_UNIQUE_FD_H
