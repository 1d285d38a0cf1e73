// What tvrscan asks of the system itself. One implementation a system, chosen by the build.
#ifndef TVRSCN_TOOLS_TVRSCAN_SYSTEM_H
#define TVRSCN_TOOLS_TVRSCAN_SYSTEM_H

#include <chrono>
#include <filesystem>
#include <string>

namespace tvrscn::cli {

bool stdoutIsTerminal();
bool stderrIsTerminal();

// Sets a variable for this process and those it starts. Only before there are threads.
void setEnvironment(const std::string& name, const std::string& value);
// Empty when it is not set.
std::string environment(const std::string& name);

// Where this process puts its temporary files from now on. Only before there are threads.
void setTemporaryFolder(const std::filesystem::path& folder);

// Makes a new folder in parent that nobody else has or can enter. Throws std::system_error.
std::filesystem::path createPrivateFolder(const std::filesystem::path& parent,
                                          const std::string& prefix);

// Makes an empty file. False when there is one of that name; throws std::system_error when it
// cannot be made.
bool createNewFile(const std::filesystem::path& file);

// Where the user's virtual devices are registered when nothing else is said.
std::filesystem::path userDeviceFolder();

// Ends the process here and now: no destructors, no other thread gets a say.
[[noreturn]] void endProcess(int exitCode) noexcept;

// Takes Ctrl-C and the requests to terminate away from the system's own handling, for the life of
// the process. A second Ctrl-C ends the process in any state. Made once, in main.
class StopRequests {
 public:
  StopRequests();
  StopRequests(const StopRequests&) = delete;
  StopRequests& operator=(const StopRequests&) = delete;
  ~StopRequests() = default;

  // Waits for one. True when there was one, false when the time is over.
  bool wait(std::chrono::milliseconds time);
};

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_SYSTEM_H
