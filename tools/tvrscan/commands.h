// The commands. Each does its work, tells the user, and returns the exit code.
#ifndef TVRSCN_TOOLS_TVRSCAN_COMMANDS_H
#define TVRSCN_TOOLS_TVRSCAN_COMMANDS_H

#include "options.h"
#include "system.h"

namespace tvrscn::cli {

int runScan(const ScanOptions& options, StopRequests& stop);
int runDevices(const DevicesOptions& options);
int runStore(const StoreOptions& options, StopRequests& stop);
int runModels(const ModelsOptions& options);
int runAlerts(const AlertsOptions& options);
int runRanges(const RangesOptions& options);
int runVirtual(const VirtualCommandOptions& options, StopRequests& stop);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_COMMANDS_H
