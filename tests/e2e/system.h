// What the whole-job tests ask of the system around them. One implementation per system.
#ifndef TVRSCN_TESTS_E2E_SYSTEM_H
#define TVRSCN_TESTS_E2E_SYSTEM_H

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvrscn::test {

namespace fs = std::filesystem;

// Variables of this process, which its libraries read too. Not while other threads use them.
void setVariable(const std::string& name, const std::string& value);
void clearVariable(const std::string& name);

// The variable that names the folder for temporary files.
extern const char* const kTemporaryFolderVariable;

// Components in the JPEG file of a grey page, as the system's imaging writes it.
extern const int kGreyPageComponents;

// This test program once more, as another process.
class ChildProcess {
 public:
  explicit ChildProcess(const std::vector<std::string>& arguments);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();  // kills it

  bool isRunning();
  // Ends it at once, without a word to anybody, and waits for that.
  void kill();
  // Waits for its end and gives its exit code.
  int wait();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// Learns when a thread has ended that somebody else made, one at a time.
class ThreadWatch {
 public:
  ThreadWatch();
  ThreadWatch(const ThreadWatch&) = delete;
  ThreadWatch& operator=(const ThreadWatch&) = delete;
  ~ThreadWatch();

  // On that thread; any further call on it changes nothing.
  void watchThisThread();
  // Waits for a thread to be watched and to end. False when one of them takes longer.
  bool wait(std::chrono::milliseconds patience);

 private:
  struct State;
  std::shared_ptr<State> state_;
};

// Gives this process a root folder of its own: the one named, where the system can do that, with
// the folders of the old root in it; else that of a drive of its own, which is returned in its
// place. Empty where there is neither. Only while the process has one thread.
fs::path enterOwnRoot(const fs::path& folder);

struct Dialog {
  std::wstring title;
  std::wstring text;
  int buttons = 0;
  std::optional<unsigned int> flags;  // of the call that shows it, where they can be told
};

// What a dialog is answered with: Enter is its first button, Escape its last one.
enum class DialogKey { kEnter, kEscape };

// Answers every dialog of this process for as long as it lives.
class DialogAnswers {
 public:
  // The folder is there for files that answering may need. The first dialogs get these keys, in
  // order, all others Enter.
  explicit DialogAnswers(const fs::path& folder, const std::vector<DialogKey>& keys = {});
  DialogAnswers(const DialogAnswers&) = delete;
  DialogAnswers& operator=(const DialogAnswers&) = delete;
  ~DialogAnswers();

  // The dialogs so far; one that is there counts before it is answered.
  std::vector<Dialog> seen() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_E2E_SYSTEM_H
