// Dialogs are a program's affair here: a script that writes down what it is to show, and answers.
#include "tests/e2e/system.h"

#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sstream>
#include <stdexcept>

#include <sched.h>
#include <sys/mount.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tvrscn::test {

const char* const kTemporaryFolderVariable = "TMPDIR";
const int kGreyPageComponents = 1;

void setVariable(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

void clearVariable(const std::string& name) {
  unsetenv(name.c_str());
}

struct ChildProcess::State {
  pid_t id = -1;  // -1 when it has been waited for
};

ChildProcess::ChildProcess(const std::vector<std::string>& arguments)
    : state_(std::make_unique<State>()) {
  const std::string program = fs::read_symlink("/proc/self/exe").string();
  std::vector<std::string> words = {program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words)
    pointers.push_back(word.data());
  pointers.push_back(nullptr);
  state_->id = fork();
  if (state_->id == 0) {
    execv(program.c_str(), pointers.data());
    _exit(127);
  }
  if (state_->id < 0) throw std::runtime_error("cannot start " + program);
}

ChildProcess::~ChildProcess() {
  kill();
}

bool ChildProcess::isRunning() {
  if (state_->id < 0) return false;
  if (waitpid(state_->id, nullptr, WNOHANG) == 0) return true;
  state_->id = -1;
  return false;
}

void ChildProcess::kill() {
  if (state_->id < 0) return;
  ::kill(state_->id, SIGKILL);
  wait();
}

int ChildProcess::wait() {
  int status = 0;
  waitpid(state_->id, &status, 0);
  state_->id = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct ThreadWatch::State {
  std::mutex mutex;
  std::condition_variable changed;
  int ended = 0;  // threads, not waited for yet
};

ThreadWatch::ThreadWatch() : state_(std::make_shared<State>()) {}
ThreadWatch::~ThreadWatch() = default;

// Whatever a thread keeps for itself goes when the thread does, behind all that it had to do.
void ThreadWatch::watchThisThread() {
  struct Mark {
    Mark() = default;
    Mark(const Mark&) = delete;
    Mark& operator=(const Mark&) = delete;
    ~Mark() {
      const std::lock_guard lock(state->mutex);
      ++state->ended;
      state->changed.notify_all();
    }
    std::shared_ptr<State> state;
  };
  thread_local Mark mark;
  mark.state = state_;
}

bool ThreadWatch::wait(std::chrono::milliseconds patience) {
  std::unique_lock lock(state_->mutex);
  if (!state_->changed.wait_for(lock, patience, [this] { return state_->ended > 0; })) return false;
  --state_->ended;
  return true;
}

namespace {

void writeText(const fs::path& file, const std::string& text) {
  std::ofstream(file) << text;
}

// One user in the new namespace, who may do what root may do there.
bool enterNamespaces() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  writeText("/proc/self/setgroups", "deny");
  writeText("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
  writeText("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
  return true;
}

}  // namespace

fs::path enterOwnRoot(const fs::path& folder) {
  fs::create_directories(folder);
  if (!enterNamespaces() || mount("none", folder.c_str(), "tmpfs", 0, nullptr) != 0) return {};
  for (const auto& entry : fs::directory_iterator("/")) {
    const fs::path inside = folder / entry.path().filename();
    if (fs::is_symlink(entry.path())) {
      fs::copy_symlink(entry.path(), inside);
    } else if (fs::is_directory(entry.path())) {
      fs::create_directory(inside);
      mount(entry.path().c_str(), inside.c_str(), nullptr, MS_BIND | MS_REC, nullptr);
    }
  }
  if (chroot(folder.c_str()) != 0 || chdir("/") != 0) return {};
  return "/";
}

struct DialogAnswers::State {
  fs::path records;
};

// The exit status is the button: 1 OK, 2 Cancel, 4 Retry, which boxes of kind 5 have. The keys for
// the next dialogs stand in a file, a line each.
DialogAnswers::DialogAnswers(const fs::path& folder, const std::vector<DialogKey>& keys)
    : state_(std::make_unique<State>()) {
  state_->records = folder / "dialogs";
  const fs::path program = folder / "answer";
  const fs::path keyFile = folder / "keys";
  std::ofstream keyLines(keyFile);
  for (const DialogKey key : keys)
    keyLines << (key == DialogKey::kEscape ? "escape" : "enter") << '\n';
  keyLines.close();
  std::ofstream(program) << "#!/bin/sh\nprintf '%s|%s|%s\\n' \"$1\" \"$2\" \"$3\" >>"
                         << state_->records << "\nkey=$(sed -n \"$(grep -c '' " << state_->records
                         << ")p\" " << keyFile
                         << ")\n[ \"$key\" != escape ] || exit 2\n"
                            "[ $(($3 & 15)) -ne 5 ] || exit 4\nexit 1\n";
  fs::permissions(program, fs::perms::owner_all);
  setVariable("TVRSCN_DIALOG", program.string());
}

DialogAnswers::~DialogAnswers() {
  clearVariable("TVRSCN_DIALOG");
}

std::vector<Dialog> DialogAnswers::seen() const {
  const auto wide = [](const std::string& text) { return std::wstring(text.begin(), text.end()); };
  std::vector<Dialog> dialogs;
  std::ifstream stream(state_->records);
  for (std::string line; std::getline(stream, line);) {
    std::istringstream fields(line);
    std::string title;
    std::string text;
    Dialog dialog;
    unsigned int flags = 0;
    std::getline(std::getline(fields, title, '|'), text, '|') >> flags;
    constexpr unsigned int kButtons = 0xF;
    dialog.flags = flags;
    dialog.buttons = (flags & kButtons) == 0 ? 1 : 2;
    dialog.title = wide(title);
    dialog.text = wide(text);
    dialogs.push_back(dialog);
  }
  return dialogs;
}

}  // namespace tvrscn::test
