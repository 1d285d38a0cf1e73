// The named mutex across processes: the other one is this program once more.
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "tests/e2e/system.h"
#include "tests/windows/roles.h"
#include "tvrscn/tevrautil/named_mutex.h"
#include "virtual/windows/system_text.h"
#include "virtual/windows/unique_handle.h"

namespace tvrscn::test {

using virtual_device::UniqueHandle;
using virtual_device::wide;

namespace {

constexpr DWORD kLongEnough = 20'000;  // milliseconds, for a process to come up
constexpr const char* kName = "MutexUSB-tvrscn-test";

UniqueHandle makeEvent(const std::string& name, const wchar_t* suffix) {
  return UniqueHandle(CreateEventW(nullptr, 1, 0, (wide(name) + suffix).c_str()));
}

}  // namespace

int holdMutex(const std::string& name) {
  const UniqueHandle held = makeEvent(name, L"-held");
  const UniqueHandle release = makeEvent(name, L"-release");
  XMutex mutex(wide(name).c_str());
  if (!mutex.WaitWithRetry(0, 1)) return 1;
  SetEvent(held.get());
  return WaitForSingleObject(release.get(), kLongEnough) == WAIT_OBJECT_0 ? 0 : 1;
}

namespace {

class NamedMutex : public testing::Test {
 protected:
  // Another process that holds the mutex when this returns.
  void startHolder() {
    holder_ = std::make_unique<ChildProcess>(std::vector<std::string>{kHoldMutexArgument, kName});
    ASSERT_EQ(WaitForSingleObject(held_.get(), kLongEnough), WAIT_OBJECT_0);
  }

  UniqueHandle held_ = makeEvent(kName, L"-held");
  UniqueHandle release_ = makeEvent(kName, L"-release");
  std::unique_ptr<ChildProcess> holder_;
  XMutex mutex_{wide(kName).c_str()};
};

TEST_F(NamedMutex, FreeMutexIsHadAtOnce) {
  EXPECT_TRUE(mutex_.WaitWithRetry(0, 1));
  EXPECT_TRUE(mutex_.WaitWithRetry(0, 0)) << "it is held already";
}

TEST_F(NamedMutex, MutexOfAnotherProcessIsNotHad) {
  startHolder();
  EXPECT_FALSE(mutex_.WaitWithRetry(20, 3));
}

TEST_F(NamedMutex, MutexIsHadAsSoonAsTheOtherProcessGivesItUp) {
  startHolder();
  EXPECT_FALSE(mutex_.WaitWithRetry(0, 1));
  SetEvent(release_.get());
  EXPECT_TRUE(mutex_.WaitWithRetry(1000, 20));
  EXPECT_EQ(holder_->wait(), 0);
}

TEST_F(NamedMutex, HolderThatIsKilledGivesItUp) {
  startHolder();
  EXPECT_FALSE(mutex_.WaitWithRetry(0, 1));
  holder_->kill();
  EXPECT_TRUE(mutex_.WaitWithRetry(100, 20));
}

TEST_F(NamedMutex, OtherProcessDoesNotGetWhatIsHeldHere) {
  ASSERT_TRUE(mutex_.WaitWithRetry(0, 1));
  ChildProcess other({kHoldMutexArgument, kName});
  EXPECT_EQ(other.wait(), 1);
  EXPECT_EQ(WaitForSingleObject(held_.get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
}

}  // namespace
}  // namespace tvrscn::test
