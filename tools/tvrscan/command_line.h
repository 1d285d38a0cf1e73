// Understands the command line. Touches nothing.
#ifndef TVRSCN_TOOLS_TVRSCAN_COMMAND_LINE_H
#define TVRSCN_TOOLS_TVRSCAN_COMMAND_LINE_H

#include <string>
#include <vector>

#include "exit_codes.h"
#include "options.h"

namespace tvrscn::cli {

// A command line that is no command: what to say, and how to end.
struct UsageProblem {
  ExitCode code = ExitCode::kUsage;
  std::string text;
};

// The arguments without the program's name. Throws UsageProblem.
Command parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_COMMAND_LINE_H
