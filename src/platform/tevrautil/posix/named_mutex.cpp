// A mutex is a lock on a file of its name in a folder that only this user can write to. The lock
// hangs on the open file: two objects of one process exclude each other too, and the system
// releases it with the process that holds it. The files stay; removing one would split the mutex in
// two.
#include "tvrscn/tevrautil/named_mutex.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/runtime_folder.h"
#include "platform/posix/unique_fd.h"
#include "platform/posix/utf8.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::size_t kLongestEscapedName = 180;  // of the 255 bytes that a file name may have
constexpr mode_t kWritableByOthers = 0022;
// The system has no wait for a lock with a time-out, so a waiting object looks again and again:
// soon at first, for short waits, then seldom.
constexpr milliseconds kFirstPause{1};
constexpr milliseconds kLongestPause{20};
constexpr unsigned long kLongestWait = 24UL * 60 * 60 * 1000;  // per try; keeps the clock in range

// Every taking and giving up passes through here. The lock itself lies in the kernel, where the
// language sees no order; this tells it that what one thread wrote under the mutex is there for the
// next.
std::atomic<unsigned> handovers = 0;

void orderMemory() {
  handovers.fetch_add(1, std::memory_order_acq_rel);
}

struct LockFile {
  tvrscn::UniqueFd file;
};

std::uint64_t hashOf(std::string_view text) {
  std::uint64_t hash = 14695981039346656037ULL;  // FNV-1a
  for (const char c : text)
    hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
  return hash;
}

// Every name gives a file name of its own: letters, digits, '-' and '_' stay, other bytes become
// %XX, and what is cut off a long name is kept apart by a hash.
std::string fileNameOf(std::wstring_view name) {
  constexpr char kHex[] = "0123456789ABCDEF";
  const std::string bytes = tvrscn::utf8FromWide(name);
  std::string escaped;
  for (const char c : bytes) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '-' || c == '_';
    const auto byte = static_cast<unsigned char>(c);
    if (plain) {
      escaped += c;
    } else {
      escaped += {'%', kHex[byte >> 4U], kHex[byte & 0xFU]};
    }
  }
  if (escaped.size() > kLongestEscapedName) {
    escaped.resize(kLongestEscapedName);
    escaped += "%-" + std::to_string(hashOf(bytes));
  }
  return "mutex-" + escaped + ".lock";
}

// Makes the folder if need be and opens it; invalid unless it is a real folder that belongs to this
// user and that nobody else can write to.
tvrscn::UniqueFd openPrivateFolder(const std::string& path) {
  if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return {};
  tvrscn::UniqueFd folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status = {};
  if (!folder.valid() || ::fstat(folder.get(), &status) != 0) return {};
  if (status.st_uid != ::geteuid() || (status.st_mode & kWritableByOthers) != 0) return {};
  return folder;
}

std::unique_ptr<LockFile> openLockFile(std::wstring_view name) {
  tvrscn::UniqueFd folder = openPrivateFolder(tvrscn::userRuntimeFolder() + "/tvrscn");
  if (!folder.valid()) folder = openPrivateFolder("/tmp/tvrscn-" + std::to_string(::geteuid()));
  if (!folder.valid()) return nullptr;
  tvrscn::UniqueFd file(::openat(folder.get(), fileNameOf(name).c_str(),
                                 O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.valid()) return nullptr;
  return std::make_unique<LockFile>(LockFile{std::move(file)});
}

enum class Attempt { kHeld, kTaken, kImpossible };

Attempt attemptLock(int file) {
  while (::flock(file, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) return Attempt::kTaken;
    if (errno != EINTR) return Attempt::kImpossible;
  }
  return Attempt::kHeld;
}

// Looks at once, then until the time is over.
Attempt lockWithin(int file, unsigned long waitMilliseconds) {
  const auto wait = milliseconds(std::min(waitMilliseconds, kLongestWait));
  const Clock::time_point deadline = Clock::now() + wait;
  milliseconds pause = kFirstPause;
  for (;;) {
    const Attempt attempt = attemptLock(file);
    const Clock::time_point now = Clock::now();
    if (attempt != Attempt::kTaken || now >= deadline) return attempt;
    std::this_thread::sleep_for(std::min<Clock::duration>(pause, deadline - now));
    pause = std::min(pause * 2, kLongestPause);
  }
}

}  // namespace

XMutex::XMutex(const wchar_t* name)
    : m_hMutex(openLockFile(name != nullptr ? name : L"").release()), m_bHeld(false) {}

XMutex::~XMutex() {
  const std::unique_ptr<LockFile> lock(static_cast<LockFile*>(m_hMutex));
  // Said aloud, since a child process may have inherited the open file.
  if (lock != nullptr && m_bHeld) {
    orderMemory();
    ::flock(lock->file.get(), LOCK_UN);
  }
}

bool XMutex::WaitWithRetry(unsigned long millisecondsPerTry, unsigned long tries) {
  const auto* const lock = static_cast<const LockFile*>(m_hMutex);
  if (lock == nullptr) return false;
  for (unsigned long i = 0; i < tries && !m_bHeld; ++i) {
    const Attempt attempt = lockWithin(lock->file.get(), millisecondsPerTry);
    if (attempt == Attempt::kImpossible) return false;
    if (attempt == Attempt::kHeld) {
      orderMemory();
      m_bHeld = true;
    }
  }
  return m_bHeld;
}
