// The LowEnd scanner as a device of this system.
#include <memory>

#include "virtual/common/device_server.h"
#include "virtual/lowend/lowend_scanner.h"
#include "virtual/virtual_lowend_scanner.h"

namespace tvrscn::virtual_device {

Placement lowEndPlacement() {
  Placement placement;
  placement.name = "virtual-lowend";
  placement.instanceId = "USB\\VID_0A7E&PID_1E4C&MI_00\\VIRTUALLE01";
  return placement;
}

std::unique_ptr<RunningScanner> startLowEndScanner(const LowEndScannerOptions& options,
                                                   const Placement& placement) {
  return startDevice(std::make_unique<LowEndScanner>(options), placement);
}

}  // namespace tvrscn::virtual_device
