// The wire as a device sees it: whole transfers, one after another, to and from one host. Each
// system has its implementation; the tests have one in memory. Used by one thread.
#ifndef TVRSCN_VIRTUAL_COMMON_LINK_H
#define TVRSCN_VIRTUAL_COMMON_LINK_H

#include <chrono>
#include <cstddef>
#include <optional>

#include "virtual/common/bytes.h"

namespace tvrscn::virtual_device {

// Every operation that says false or gives nothing means: this host is gone, or the device is being
// switched off. The link is of no more use then.
class Link {
 public:
  Link() = default;
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
  virtual ~Link() = default;

  // The next transfer from the host; waits for it.
  virtual std::optional<Bytes> receive() = 0;

  // One transfer to the host. An empty one is a transfer too.
  [[nodiscard]] virtual bool send(const Bytes& transfer) = 0;

  // Makes one read of the host fail without any byte.
  [[nodiscard]] virtual bool sendFailure() = 0;

  // Unplugs the device after the first `count` bytes of transfer.
  virtual void dropWithin(const Bytes& transfer, std::size_t count) = 0;

  // Lets time pass.
  [[nodiscard]] virtual bool pause(std::chrono::milliseconds time) = 0;

  // Falls silent until the host is gone or the device is switched off.
  virtual void stall() = 0;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_LINK_H
