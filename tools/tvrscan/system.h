// What tvrscan asks of the system itself. One implementation a system, chosen by the build.
#ifndef TVRSCN_TOOLS_TVRSCAN_SYSTEM_H
#define TVRSCN_TOOLS_TVRSCAN_SYSTEM_H

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace tvrscn::cli {

// Makes standard output and standard error take UTF-8, with the same line ends on every system, and
// keeps standard output for this program's own data: what libraries print there comes out on
// standard error from here on. Once, at the start of main.
void prepareStreams();
// Where data go: standard output, as it was before prepareStreams.
std::FILE* dataStream();
// Whether standard error is a terminal that can go back in a line.
bool stderrIsTerminal();

// Texts of this program are UTF-8 on every system; so are its arguments, from those of main.
std::vector<std::string> commandLineArguments(int argc, char** argv);
// A path as text, and back. What is no text in a path is kept on Linux, and replaced on Windows.
std::string textOf(const std::filesystem::path& path);
std::filesystem::path pathOf(const std::string& text);

// Sets a variable for this process and those it starts. Only before there are threads.
void setEnvironment(const std::string& name, const std::string& value);
// Empty when it is not set.
std::string environment(const std::string& name);

// Where this process puts its temporary files from now on. Only before there are threads.
void setTemporaryFolder(const std::filesystem::path& folder);

// Makes a new folder in parent that nobody else has, and that nobody can enter where that leaves no
// trace on the files that move out of it. Throws std::system_error.
std::filesystem::path createPrivateFolder(const std::filesystem::path& parent,
                                          const std::string& prefix);

// Makes an empty file. False when there is one of that name; throws std::system_error when it
// cannot be made.
bool createNewFile(const std::filesystem::path& file);

// Whether this user may make files in the folder. May make one for a moment.
bool canCreateFilesIn(const std::filesystem::path& folder);

// The folder where the user's virtual devices are registered when nothing else is said; empty on a
// system that keeps its list of devices elsewhere.
std::filesystem::path userDeviceFolder();

// The place of a virtual device's endpoint, from what the user wrote; and an endpoint as the device
// search finds it, from its place.
std::filesystem::path endpointPlace(const std::string& word);
std::string endpointName(const std::filesystem::path& place);

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
