// What a notification leaves behind in memory: nothing once it was delivered, and its record of
// 1032 bytes when there was nobody to deliver it to.
#include <cstddef>

#include <gtest/gtest.h>

#include "tests/support/allocation.h"
#include "tvrscn/scan_client.h"

namespace {

using tvrscn::test::liveAllocations;
using tvrscn::test::RefusedAllocations;

constexpr std::size_t kRecord = 1032;

void count(ScanNotification*, void* context) {
  ++*static_cast<int*>(context);
}

void send(const TVR_FP_CALLBACK* callback) {
  ScanBaseClient::SendNotification(callback, NOTIFY_JOB_COMPLETE, TVR_NOTIF_PRIORITY_NORMAL,
                                   "text");
}

TEST(NotificationMemory, RecordIsFreedAfterTheCall) {
  int calls = 0;
  const TVR_FP_CALLBACK callback{count, &calls};
  const long before = liveAllocations(kRecord);
  send(&callback);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(liveAllocations(kRecord), before);
}

TEST(NotificationMemory, RecordIsLiveDuringTheCall) {
  static long live;
  live = -1;
  const long before = liveAllocations(kRecord);
  const TVR_FP_CALLBACK callback{[](ScanNotification*, void*) { live = liveAllocations(kRecord); },
                                 nullptr};
  send(&callback);
  EXPECT_EQ(live, before + 1);
}

TEST(NotificationMemory, NullCallbackKeepsOneRecordPerCall) {
  const long before = liveAllocations(kRecord);
  send(nullptr);
  EXPECT_EQ(liveAllocations(kRecord), before + 1);
  send(nullptr);
  EXPECT_EQ(liveAllocations(kRecord), before + 2);
}

TEST(NotificationMemory, RecordThatCannotBeHadIsLostSilently) {
  int calls = 0;
  const TVR_FP_CALLBACK callback{count, &calls};
  {
    const RefusedAllocations refused(kRecord, kRecord);
    send(&callback);
    EXPECT_EQ(RefusedAllocations::count(), 1);
  }
  EXPECT_EQ(calls, 0);
  send(&callback);
  EXPECT_EQ(calls, 1);
}

}  // namespace
