// Owner of one file descriptor. Nobody closes a descriptor by hand.
#ifndef TVRSCN_PLATFORM_POSIX_UNIQUE_FD_H
#define TVRSCN_PLATFORM_POSIX_UNIQUE_FD_H

#include <utility>

#include <unistd.h>

namespace tvrscn {

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() {
    if (fd_ >= 0) ::close(fd_);
  }

  int get() const { return fd_; }
  bool valid() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_POSIX_UNIQUE_FD_H
