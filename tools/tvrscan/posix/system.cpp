#include "system.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/runtime_folder.h"

namespace tvrscn::cli {

namespace {

std::FILE* data = nullptr;  // null: stdout

}  // namespace

void prepareStreams() {
  constexpr int kBehindTheStandardOnes = 3;
  const int copy = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, kBehindTheStandardOnes);
  if (copy < 0) return;
  data = fdopen(copy, "w");
  if (data == nullptr) {
    close(copy);
    return;
  }
  dup2(STDERR_FILENO, STDOUT_FILENO);
  std::setvbuf(stdout, nullptr, _IONBF, 0);
}

std::FILE* dataStream() {
  return data != nullptr ? data : stdout;
}

bool stderrIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

std::vector<std::string> commandLineArguments(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

std::string textOf(const std::filesystem::path& path) {
  return path.string();
}

std::filesystem::path pathOf(const std::string& text) {
  return text;
}

void setEnvironment(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);  // NOLINT(concurrency-mt-unsafe): before any thread
}

std::string environment(const std::string& name) {
  const char* value =
      std::getenv(name.c_str());  // NOLINT(concurrency-mt-unsafe): never changed later
  return value == nullptr ? std::string() : std::string(value);
}

void setTemporaryFolder(const std::filesystem::path& folder) {
  setEnvironment("TMPDIR", folder.string());
}

std::filesystem::path createPrivateFolder(const std::filesystem::path& parent,
                                          const std::string& prefix) {
  std::string name = (parent / (prefix + "XXXXXX")).string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), parent.string());
  }
  return name;
}

bool createNewFile(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
  if (descriptor >= 0) {
    close(descriptor);
    return true;
  }
  if (errno == EEXIST) return false;
  throw std::system_error(errno, std::generic_category(), file.string());
}

bool canCreateFilesIn(const std::filesystem::path& folder) {
  return access(folder.c_str(), W_OK | X_OK) == 0;
}

std::filesystem::path userDeviceFolder() {
  return std::filesystem::path(userRuntimeFolder()) / "tvrscn" / "devices";
}

std::filesystem::path endpointPlace(const std::string& word) {
  return std::filesystem::absolute(word);
}

std::string endpointName(const std::filesystem::path& place) {
  return "unix:" + place.string();
}

void endProcess(int exitCode) noexcept {
  _exit(exitCode);
}

}  // namespace tvrscn::cli
