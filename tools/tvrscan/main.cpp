// tvrscan: scanning from the command line, for people and for scripts.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "command_line.h"
#include "commands.h"
#include "console.h"
#include "device_choice.h"
#include "system.h"

namespace {

using namespace tvrscn::cli;  // NOLINT(google-build-using-namespace): this is its program

// The options with the device's family, where nobody has named it.
template <typename Options>
Options settled(Options options) {
  settleFamily(options.device);
  return options;
}

struct Runner {
  StopRequests& stop;

  int operator()(const HelpOptions& help) const {
    std::fputs(help.text.c_str(), dataStream());
    return static_cast<int>(ExitCode::kDone);
  }
  int operator()(const ScanOptions& options) const { return runScan(settled(options), stop); }
  int operator()(const DevicesOptions& options) const { return runDevices(options); }
  int operator()(const ModelsOptions& options) const { return runModels(options); }
  int operator()(const AlertsOptions& options) const { return runAlerts(options); }
  int operator()(const RangesOptions& options) const { return runRanges(settled(options)); }
  int operator()(const StoreOptions& options) const { return runStore(options, stop); }
  int operator()(const VirtualCommandOptions& options) const { return runVirtual(options, stop); }
};

int run(const std::vector<std::string>& arguments) {
  try {
    const Command command = parseCommandLine(arguments);
    StopRequests stop;
    return std::visit(Runner{stop}, command);
  } catch (const UsageProblem& problem) {
    Console(false).problem(problem.text);
    return static_cast<int>(problem.code);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    prepareStreams();
    return run(commandLineArguments(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tvrscan: %s\n", error.what());
    return static_cast<int>(ExitCode::kFailed);
  }
}
