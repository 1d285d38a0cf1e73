#include "process.h"

#include <array>
#include <csignal>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace tvrscn::test {
namespace {

std::vector<std::string> changedEnvironment(const Environment& changes) {
  Environment all;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    const std::size_t equals = text.find('=');
    if (equals != std::string::npos) all[text.substr(0, equals)] = text.substr(equals + 1);
  }
  for (const auto& [name, value] : changes)
    all[name] = value;
  std::vector<std::string> lines;
  for (const auto& [name, value] : all)
    lines.push_back(name + "=" + value);
  return lines;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> list;
  for (std::string& text : texts)
    list.push_back(text.data());
  list.push_back(nullptr);
  return list;
}

// Appends what is there to text; closes the pipe at its end.
void drain(int& pipe, std::string& text) {
  std::array<char, 4096> buffer;
  const ssize_t count = read(pipe, buffer.data(), buffer.size());
  if (count > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  } else {
    close(pipe);
    pipe = -1;
  }
}

}  // namespace

Process::Process(const std::vector<std::string>& command, const Environment& changes) {
  std::array<int, 2> out = {};
  std::array<int, 2> error = {};
  if (pipe2(out.data(), O_CLOEXEC) != 0 || pipe2(error.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipes");
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, error[1], STDERR_FILENO);
  std::vector<std::string> arguments = command;
  std::vector<std::string> variables = changedEnvironment(changes);
  const int result = posix_spawnp(&pid_, arguments.front().c_str(), &actions, nullptr,
                                  pointers(arguments).data(), pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);
  close(error[1]);
  outputPipe_ = out[0];
  errorPipe_ = error[0];
  if (result != 0) throw std::runtime_error("cannot start " + arguments.front());
}

Process::~Process() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  if (outputPipe_ >= 0) close(outputPipe_);
  if (errorPipe_ >= 0) close(errorPipe_);
}

bool Process::readSome(std::chrono::milliseconds time) {
  std::array<pollfd, 2> entries = {{{outputPipe_, POLLIN, 0}, {errorPipe_, POLLIN, 0}}};
  poll(entries.data(), entries.size(), static_cast<int>(time.count()));
  if (outputPipe_ >= 0 && entries[0].revents != 0) drain(outputPipe_, output_);
  if (errorPipe_ >= 0 && entries[1].revents != 0) drain(errorPipe_, errors_);
  return outputPipe_ >= 0 || errorPipe_ >= 0;
}

bool Process::waitForOutput(const std::string& text, std::chrono::seconds time) {
  const auto deadline = std::chrono::steady_clock::now() + time;
  const auto hasCome = [&] {
    return output_.find(text) != std::string::npos || errors_.find(text) != std::string::npos;
  };
  while (!hasCome() && std::chrono::steady_clock::now() < deadline) {
    if (!readSome(std::chrono::milliseconds(50))) break;
  }
  return hasCome();
}

void Process::signal(int number) const {
  if (pid_ > 0) kill(pid_, number);
}

int Process::wait(std::chrono::seconds time) {
  const auto deadline = std::chrono::steady_clock::now() + time;
  while (readSome(std::chrono::milliseconds(50))) {
    if (std::chrono::steady_clock::now() >= deadline) return -1;
  }
  int status = 0;
  if (pid_ <= 0 || waitpid(pid_, &status, 0) != pid_) return -1;
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::vector<std::string> Process::outputLines() const {
  std::vector<std::string> lines;
  std::istringstream stream(output_);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

}  // namespace tvrscn::test
