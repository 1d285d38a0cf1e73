// The HP scanner as a device of this system.
#include <memory>

#include "virtual/common/device_server.h"
#include "virtual/hp/hp_scanner.h"
#include "virtual/virtual_scanner.h"

namespace tvrscn::virtual_device {

std::unique_ptr<RunningScanner> startHpScanner(const HpScannerOptions& options,
                                               const Placement& placement) {
  return startDevice(std::make_unique<HpScanner>(options), placement);
}

}  // namespace tvrscn::virtual_device
