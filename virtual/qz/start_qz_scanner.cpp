// The QZ scanner as a device of this system.
#include <memory>

#include "virtual/common/device_server.h"
#include "virtual/qz/qz_scanner.h"
#include "virtual/virtual_qz_scanner.h"

namespace tvrscn::virtual_device {

Placement qzPlacement() {
  Placement placement;
  placement.name = "virtual-qz";
  placement.instanceId = "USB\\VID_0A7E&PID_1C5A&MI_02\\VIRTUALQZ01";
  return placement;
}

std::unique_ptr<RunningScanner> startQzScanner(const QzScannerOptions& options,
                                               const Placement& placement) {
  return startDevice(std::make_unique<QzScanner>(options), placement);
}

}  // namespace tvrscn::virtual_device
