// One claim on one device, shared by all handles that the process has on it. Reading and writing
// may happen on two threads at once.
#ifndef TVRSCN_PLATFORM_POSIX_ENDPOINT_H
#define TVRSCN_PLATFORM_POSIX_ENDPOINT_H

#include <memory>
#include <string>

#include "tvrscn/types.h"

namespace tvrscn {

class Endpoint {
 public:
  Endpoint() = default;
  Endpoint(const Endpoint&) = delete;
  Endpoint& operator=(const Endpoint&) = delete;
  virtual ~Endpoint() = default;

  // One transfer each. The result is 0 or the last error to set; `done` is the number of bytes that
  // went over in either case.
  [[nodiscard]] virtual DWORD read(void* buffer, DWORD size, DWORD& done) = 0;
  [[nodiscard]] virtual DWORD write(const void* buffer, DWORD size, DWORD& done) = 0;

  // The device has gone; opening it again needs a claim of its own.
  virtual bool gone() const = 0;
  // The last handle was closed. Ends a transfer that waits on another thread, where that is
  // possible.
  virtual void giveUp() = 0;
};

// Both set `endpoint` and return 0, or return the last error to set.
[[nodiscard]] DWORD connectFrames(const std::string& socketPath,
                                  std::shared_ptr<Endpoint>& endpoint);
[[nodiscard]] DWORD openCharacterDevice(const std::string& path,
                                        std::shared_ptr<Endpoint>& endpoint);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_POSIX_ENDPOINT_H
