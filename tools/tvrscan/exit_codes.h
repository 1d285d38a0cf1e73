// How tvrscan ends, said once: the code uses the names, --help and the tests print and check the
// table, the man page repeats it.
#ifndef TVRSCN_TOOLS_TVRSCAN_EXIT_CODES_H
#define TVRSCN_TOOLS_TVRSCAN_EXIT_CODES_H

#include <array>
#include <string>

namespace tvrscn::cli {

enum class ExitCode : int {
  kDone = 0,
  kFailed = 1,
  kUsage = 2,
  kNoDevice = 3,
  kBusy = 4,
  kPaperJam = 5,
  kCoverOpen = 6,
  kNoPaper = 7,
  kCancelled = 8,
  kDeviceFailed = 9,
  kOutput = 10,
  kRefused = 11,
  kTimeout = 12,
  kNotSupported = 13,
  kAttention = 14,
  kInterrupted = 130,
};

struct ExitCodeRow {
  ExitCode code;
  const char* name;     // a word or two; "status" of the JSON output
  const char* meaning;  // a sentence for people
};

extern const std::array<ExitCodeRow, 16> kExitCodes;

const ExitCodeRow& exitCodeRow(ExitCode code);

// The table as lines of text.
std::string exitCodeHelp();

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_EXIT_CODES_H
