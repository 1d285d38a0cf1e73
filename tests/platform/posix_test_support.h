// What the tests of the POSIX platform share: scratch folders, environment variables that come
// back, child processes, and the device's side of a frame socket, written in plain system calls.
#ifndef TVRSCN_TESTS_PLATFORM_POSIX_TEST_SUPPORT_H
#define TVRSCN_TESTS_PLATFORM_POSIX_TEST_SUPPORT_H

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/posix/unique_fd.h"

namespace tvrscn::test {

class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "tvrscn-test-XXXXXX").string();
    path_ = ::mkdtemp(name.data());
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  std::string operator/(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// Sets a variable, or unsets it when there is no value, and puts the old state back.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, std::optional<std::string> value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    set(value);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { set(old_); }

  void set(const std::optional<std::string>& value) {
    if (value) {
      ::setenv(name_, value->c_str(), 1);
    } else {
      ::unsetenv(name_);
    }
  }

 private:
  const char* name_;
  std::optional<std::string> old_;
};

inline void writeFile(const std::filesystem::path& path, std::string_view text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream out(path, std::ios::binary);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

inline std::string fileText(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// Runs a function in a child process and gives its exit status, -1 when it was killed.
template <typename Function>
int exitStatusOf(Function function) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(function());
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline std::string bytes(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values)
    text.push_back(static_cast<char>(value));
  return text;
}

// The other end of a "unix:" endpoint. Knows nothing of frames: tests spell the bytes.
class SocketDevice {
 public:
  explicit SocketDevice(const std::string& path) : path_(path) {
    listener_ = UniqueFd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    EXPECT_EQ(
        0, ::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)));
    EXPECT_EQ(0, ::listen(listener_.get(), 8));
  }

  std::wstring endpoint() const {
    const std::string name = "unix:" + path_;
    return {name.begin(), name.end()};
  }
  void accept() { connection_ = UniqueFd(::accept(listener_.get(), nullptr, nullptr)); }
  bool someoneWaits() const { return readable(listener_.get(), 0); }
  int descriptor() const { return connection_.get(); }

  void send(const std::string& data) const {
    std::size_t done = 0;
    while (done < data.size()) {
      const ssize_t count =
          ::send(connection_.get(), data.data() + done, data.size() - done, MSG_NOSIGNAL);
      ASSERT_GT(count, 0);
      done += static_cast<std::size_t>(count);
    }
  }
  // Up to size bytes; fewer when the other side closed.
  std::string receive(std::size_t size) const {
    std::string data(size, '\0');
    std::size_t done = 0;
    while (done < size) {
      const ssize_t count = ::recv(connection_.get(), data.data() + done, size - done, 0);
      if (count <= 0) break;
      done += static_cast<std::size_t>(count);
    }
    data.resize(done);
    return data;
  }
  // Whether the client's claim ended; waits a while for it.
  bool clientIsGone() const { return readable(connection_.get(), 2000) && receive(1).empty(); }
  bool clientIsSilent() const { return !readable(connection_.get(), 50); }
  void close() { connection_ = UniqueFd(); }
  void stopListening() { listener_ = UniqueFd(); }

 private:
  static bool readable(int fd, int milliseconds) {
    pollfd state = {fd, POLLIN, 0};
    return ::poll(&state, 1, milliseconds) > 0;
  }

  std::string path_;
  UniqueFd listener_;
  UniqueFd connection_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_PLATFORM_POSIX_TEST_SUPPORT_H
