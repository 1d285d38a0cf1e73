#include "exit_codes.h"

namespace tvrscn::cli {

const std::array<ExitCodeRow, 16> kExitCodes = {{
    {ExitCode::kDone, "done", "All pages are stored."},
    {ExitCode::kFailed, "failed", "Something went wrong inside tvrscan itself."},
    {ExitCode::kUsage, "bad usage", "The command line or a settings file cannot be understood."},
    {ExitCode::kNoDevice, "no such device", "The device is not there, or it is not clear which."},
    {ExitCode::kBusy, "device busy", "The scanner is busy, in use, or has no memory for the job."},
    {ExitCode::kPaperJam, "paper jam", "A document is stuck in the feeder."},
    {ExitCode::kCoverOpen, "cover open", "A cover of the scanner is open."},
    {ExitCode::kNoPaper, "no paper", "There is no document to scan."},
    {ExitCode::kCancelled, "cancelled", "The job was cancelled at the device."},
    {ExitCode::kDeviceFailed, "device failed", "The device or the link to it failed."},
    {ExitCode::kOutput, "output failed", "A folder or file could not be written."},
    {ExitCode::kRefused, "refused", "The device refuses the job in its present state."},
    {ExitCode::kTimeout, "timed out", "Nothing happened for the time that --timeout allows."},
    {ExitCode::kNotSupported, "not supported", "The device cannot do what was asked for."},
    {ExitCode::kAttention, "attention", "The device works, and warns of something (alerts)."},
    {ExitCode::kInterrupted, "interrupted", "Ctrl-C or a termination signal ended the program."},
}};

const ExitCodeRow& exitCodeRow(ExitCode code) {
  for (const ExitCodeRow& row : kExitCodes) {
    if (row.code == code) return row;
  }
  return kExitCodes[1];
}

std::string exitCodeHelp() {
  std::string text;
  for (const ExitCodeRow& row : kExitCodes) {
    std::string line = std::to_string(static_cast<int>(row.code));
    line.insert(0, 5 - line.size(), ' ');
    line += "  ";
    line += row.name;
    line.resize(23, ' ');
    text += line + row.meaning + "\n";
  }
  return text;
}

}  // namespace tvrscn::cli
