// A device's pipe and the hosts on it. A host opens the pipe twice: it writes to one handle and
// reads from the other. Which is which shows when a request comes; the reply goes to its partner.
//
// The handles that one process has open share the device, as they do on a USB device: requests are
// taken from all its pairs of handles, and other processes wait until the last of them is closed.
#ifndef TVRSCN_VIRTUAL_WINDOWS_PIPE_ENDPOINT_H
#define TVRSCN_VIRTUAL_WINDOWS_PIPE_ENDPOINT_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <windows.h>

#include "virtual/windows/pipe_channel.h"
#include "virtual/windows/unique_handle.h"

namespace tvrscn::virtual_device {

class PipeEndpoint {
 public:
  // Hosts can connect from here on. Throws std::runtime_error when the name is taken or no pipe's.
  explicit PipeEndpoint(const std::wstring& name);
  PipeEndpoint(const PipeEndpoint&) = delete;
  PipeEndpoint& operator=(const PipeEndpoint&) = delete;
  ~PipeEndpoint() = default;

  // From any thread: ends every wait, now and later.
  void stop() noexcept { SetEvent(stop_.get()); }

  // All below is for the one thread that serves.

  // Until there is a host, which is then the host. False when the device is to stop.
  bool waitForHost();
  bool hostIsHere() const;
  // Closes its handles: all that it still does with them fails.
  void dropHost();
  // Drops every host, and nobody can connect any more.
  void close() { channels_.clear(); }

  // The handle with a transfer of the host, or null. The pointer is good until the next tidy().
  PipeChannel* request();
  // Forgets the handles that hosts have closed, and makes room for new ones.
  void tidy();
  // Until something happens: on a handle, to `event` if there is one, or the time is over. False
  // when the device is to stop.
  bool wait(DWORD milliseconds = INFINITE, HANDLE event = nullptr);

 private:
  void noteEvents();
  void pairUp();
  static bool isUsable(const PipeChannel& channel);

  std::wstring name_;
  UniqueHandle stop_;
  std::vector<std::unique_ptr<PipeChannel>> channels_;  // in the order in which hosts get them
  std::optional<DWORD> host_;                           // process
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_WINDOWS_PIPE_ENDPOINT_H
