// What turns a device's behaviour into a device of this system: an endpoint, a place in the device
// tree, and a thread. One implementation per system.
#ifndef TVRSCN_VIRTUAL_COMMON_DEVICE_SERVER_H
#define TVRSCN_VIRTUAL_COMMON_DEVICE_SERVER_H

#include <memory>

#include "virtual/common/link.h"
#include "virtual/running_scanner.h"

namespace tvrscn::virtual_device {

class Device {
 public:
  Device() = default;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;
  virtual ~Device() = default;

  // Talks to one host until the link ends. Called for one host after another, on one thread.
  virtual void serve(Link& link) = 0;
};

// Takes the device, makes the endpoint, registers it, and serves. When this returns, a host can
// connect. Throws std::runtime_error with a text that names the thing and the remedy.
std::unique_ptr<RunningScanner> startDevice(std::unique_ptr<Device> device,
                                            const Placement& placement);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_DEVICE_SERVER_H
