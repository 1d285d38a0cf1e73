// The named mutex, within a process and across processes.
#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/platform/posix_test_support.h"
#include "tvrscn/tevrautil/named_mutex.h"

namespace tvrscn::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class NamedMutex : public testing::Test {
 protected:
  ScratchFolder folder_;
  ScopedVariable runtime_{"XDG_RUNTIME_DIR", folder_.path().string()};
};

TEST_F(NamedMutex, FreeMutexIsHadAtOnce) {
  XMutex mutex(L"MutexUSB");
  EXPECT_TRUE(mutex.WaitWithRetry(0, 1));
}

TEST_F(NamedMutex, HeldMutexIsStillHeldWhenAskedAgain) {
  XMutex mutex(L"MutexUSB");
  EXPECT_TRUE(mutex.WaitWithRetry(0, 1));
  EXPECT_TRUE(mutex.WaitWithRetry(0, 1));
  EXPECT_TRUE(mutex.WaitWithRetry(0, 0));
}

TEST_F(NamedMutex, NoTryIsNoMutex) {
  XMutex mutex(L"MutexUSB");
  EXPECT_FALSE(mutex.WaitWithRetry(100, 0));
}

TEST_F(NamedMutex, TwoObjectsOfOneThreadExcludeEachOther) {
  auto first = std::make_unique<XMutex>(L"MutexUSB");
  XMutex second(L"MutexUSB");
  EXPECT_TRUE(first->WaitWithRetry(0, 1));
  EXPECT_FALSE(second.WaitWithRetry(5, 2));
  first.reset();
  EXPECT_TRUE(second.WaitWithRetry(0, 1));
}

TEST_F(NamedMutex, ConstructionTakesNothing) {
  const XMutex first(L"MutexUSB");
  XMutex second(L"MutexUSB");
  EXPECT_TRUE(second.WaitWithRetry(0, 1));
}

TEST_F(NamedMutex, DestructionOfAnObjectThatDoesNotHoldItChangesNothing) {
  XMutex holder(L"MutexUSB");
  EXPECT_TRUE(holder.WaitWithRetry(0, 1));
  { XMutex passing(L"MutexUSB"); }
  XMutex other(L"MutexUSB");
  EXPECT_FALSE(other.WaitWithRetry(0, 1));
}

TEST_F(NamedMutex, NamesAreKeptApart) {
  const std::wstring longName(300, L'n');
  const std::wstring names[] = {L"a",  L"A",         L"a/b",    L"a_b",   L"a%2Fb",       L"",
                                L"..", L"Global\\a", L"\u00E4", longName, longName + L"1"};
  std::vector<std::unique_ptr<XMutex>> held;
  for (const std::wstring& name : names) {
    held.push_back(std::make_unique<XMutex>(name.c_str()));
    EXPECT_TRUE(held.back()->WaitWithRetry(0, 1)) << std::string(name.begin(), name.end());
  }
  for (const std::wstring& name : names)
    EXPECT_FALSE(XMutex(name.c_str()).WaitWithRetry(0, 1));
}

TEST_F(NamedMutex, WaitIsBoundedByTriesTimesTheirLength) {
  XMutex holder(L"MutexUSB");
  ASSERT_TRUE(holder.WaitWithRetry(0, 1));
  XMutex waiting(L"MutexUSB");
  const auto start = steady_clock::now();
  EXPECT_FALSE(waiting.WaitWithRetry(40, 5));
  const auto waited = steady_clock::now() - start;
  EXPECT_GE(waited, milliseconds(200));
  EXPECT_LT(waited, milliseconds(1000));
}

TEST_F(NamedMutex, WaitEndsWhenTheHolderGivesItUp) {
  auto holder = std::make_unique<XMutex>(L"MutexUSB");
  ASSERT_TRUE(holder->WaitWithRetry(0, 1));
  std::thread release([&holder] {
    std::this_thread::sleep_for(milliseconds(50));
    holder.reset();
  });
  XMutex waiting(L"MutexUSB");
  EXPECT_TRUE(waiting.WaitWithRetry(10'000, 3));
  release.join();
}

TEST_F(NamedMutex, ThreadsTakeTurns) {
  int inside = 0;  // guarded by the mutex alone
  int entered = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&inside, &entered] {
      for (int i = 0; i < 5; ++i) {
        XMutex mutex(L"MutexUSB");
        ASSERT_TRUE(mutex.WaitWithRetry(10'000, 3));
        EXPECT_EQ(1, ++inside);
        ++entered;
        std::this_thread::sleep_for(milliseconds(1));
        --inside;
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(20, entered);
}

TEST_F(NamedMutex, ProcessesExcludeEachOther) {
  auto holder = std::make_unique<XMutex>(L"MutexUSB");
  ASSERT_TRUE(holder->WaitWithRetry(0, 1));
  const auto tryInChild = [] { return XMutex(L"MutexUSB").WaitWithRetry(10, 2) ? 1 : 0; };
  EXPECT_EQ(0, exitStatusOf(tryInChild));
  holder.reset();
  EXPECT_EQ(1, exitStatusOf(tryInChild));
}

TEST_F(NamedMutex, HolderThatIsKilledGivesItUp) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(0, ::pipe2(ends, O_CLOEXEC));
  const UniqueFd readEnd(ends[0]);
  UniqueFd writeEnd(ends[1]);
  const pid_t child = ::fork();
  if (child == 0) {
    XMutex mutex(L"MutexUSB");
    const char held = mutex.WaitWithRetry(0, 1) ? 'y' : 'n';
    if (::write(writeEnd.get(), &held, 1) != 1) ::_exit(1);
    for (;;)
      ::pause();
  }
  char held = '?';
  ASSERT_EQ(1, ::read(readEnd.get(), &held, 1));
  EXPECT_EQ('y', held);
  XMutex mutex(L"MutexUSB");
  EXPECT_FALSE(mutex.WaitWithRetry(0, 1));
  ::kill(child, SIGKILL);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(mutex.WaitWithRetry(100, 20));
}

TEST_F(NamedMutex, FolderIsPrivate) {
  const XMutex mutex(L"MutexUSB");
  struct stat status = {};
  ASSERT_EQ(0, ::stat((folder_ / "tvrscn").c_str(), &status));
  EXPECT_EQ(0700U, status.st_mode & 0777U);
}

TEST_F(NamedMutex, LinkedFolderIsNotFollowed) {
  std::filesystem::create_directory(folder_ / "elsewhere");
  std::filesystem::create_directory_symlink(folder_ / "elsewhere", folder_ / "tvrscn");
  XMutex mutex(L"MutexUSB-linked");
  EXPECT_TRUE(mutex.WaitWithRetry(0, 1));  // in the folder below /tmp
  EXPECT_TRUE(std::filesystem::is_empty(folder_ / "elsewhere"));
}

TEST_F(NamedMutex, FolderThatOthersMayWriteToIsNotUsed) {
  std::filesystem::create_directory(folder_ / "tvrscn");
  ::chmod((folder_ / "tvrscn").c_str(), 0777);
  const XMutex mutex(L"MutexUSB-open");
  EXPECT_TRUE(std::filesystem::is_empty(folder_ / "tvrscn"));
}

}  // namespace
}  // namespace tvrscn::test
