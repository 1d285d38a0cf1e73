// A link over a device's pipe, for the one host that is there. Its owner drops that host when the
// link has ended.
#ifndef TVRSCN_VIRTUAL_WINDOWS_PIPE_LINK_H
#define TVRSCN_VIRTUAL_WINDOWS_PIPE_LINK_H

#include <cstddef>
#include <span>

#include "virtual/common/link.h"
#include "virtual/windows/pipe_endpoint.h"

namespace tvrscn::virtual_device {

class PipeLink final : public Link {
 public:
  explicit PipeLink(PipeEndpoint& endpoint) : endpoint_(endpoint) {}

  std::optional<Bytes> receive() override;
  bool send(const Bytes& transfer) override;
  // A pipe cannot make one read fail and live on: this ends the link, and with it the host's read.
  bool sendFailure() override;
  void dropWithin(const Bytes& transfer, std::size_t count) override;
  bool pause(std::chrono::milliseconds time) override;
  void stall() override;

 private:
  bool sendBytes(std::span<const std::uint8_t> bytes);
  bool sendNothing();
  // Waits on if the link still stands, and says whether it does.
  bool waitOn(DWORD milliseconds = INFINITE, HANDLE event = nullptr);

  PipeEndpoint& endpoint_;
  HANDLE replies_ = nullptr;  // pipe of the handle that the reply to the last request goes to
  bool ended_ = false;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_WINDOWS_PIPE_LINK_H
