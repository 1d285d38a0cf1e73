// Runs a program as a person would, and keeps what it says.
#ifndef TVRSCN_TESTS_TOOLS_PROCESS_H
#define TVRSCN_TESTS_TOOLS_PROCESS_H

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tvrscn::test {

using Environment = std::map<std::string, std::string>;

class Process {
 public:
  // Starts a program with the environment of this process, changed by changes. Its standard input
  // is empty.
  Process(const std::vector<std::string>& command, const Environment& changes);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  // Kills it if it still runs.
  ~Process();

  // True when the text has come on one of the two streams within the time.
  bool waitForOutput(const std::string& text, std::chrono::seconds time = std::chrono::seconds(30));
  void signal(int number) const;
  // The exit code; -1 when it was killed or did not end in time.
  int wait(std::chrono::seconds time = std::chrono::seconds(60));

  const std::string& output() const { return output_; }
  const std::string& errors() const { return errors_; }
  std::vector<std::string> outputLines() const;

 private:
  // Reads what is there, waiting so long at most. False once both streams have ended.
  bool readSome(std::chrono::milliseconds time);

  pid_t pid_ = -1;
  int outputPipe_ = -1;
  int errorPipe_ = -1;
  std::string output_;
  std::string errors_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_TOOLS_PROCESS_H
