// The notification record as a receiver sees it.
#include <algorithm>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "tvrscn/scan_client.h"

namespace {

struct Receiver {
  int calls = 0;
  ScanNotification last{};
  TVR_FP_CALLBACK record{receive, this};

  static void receive(ScanNotification* notification, void* context) {
    auto* self = static_cast<Receiver*>(context);
    ++self->calls;
    std::memcpy(&self->last, notification, sizeof self->last);
  }
};

bool allZero(const char* begin, const char* end) {
  return std::all_of(begin, end, [](char byte) { return byte == '\0'; });
}

TEST(SendNotification, EmptyTextLeavesTheFieldZero) {
  Receiver receiver;
  ScanBaseClient::SendNotification(&receiver.record, NOTIFY_JOB_COMPLETE, TVR_NOTIF_PRIORITY_NORMAL,
                                   "");
  EXPECT_EQ(receiver.calls, 1);
  EXPECT_EQ(static_cast<int>(receiver.last.type), 1006);
  EXPECT_EQ(static_cast<int>(receiver.last.priority), 2);
  EXPECT_TRUE(allZero(receiver.last.text, receiver.last.text + 1024));
}

TEST(SendNotification, TextIsCopiedAndZeroFilledBehind) {
  Receiver receiver;
  ScanBaseClient::SendNotification(&receiver.record, NOTIFY_IMAGE_READY, TVR_NOTIF_PRIORITY_NORMAL,
                                   "/out/Image_1.JPG");
  EXPECT_EQ(static_cast<int>(receiver.last.type), 1005);
  EXPECT_STREQ(receiver.last.text, "/out/Image_1.JPG");
  EXPECT_TRUE(allZero(receiver.last.text + 16, receiver.last.text + 1024));
}

TEST(SendNotification, LongTextsKeepTheirTerminator) {
  const struct {
    std::size_t length;
    std::size_t kept;
  } kCases[] = {{1022, 1022}, {1023, 1023}, {1024, 1023}, {1025, 1023}, {100'000, 1023}};
  for (const auto& row : kCases) {
    Receiver receiver;
    ScanBaseClient::SendNotification(&receiver.record, NOTIFY_IMAGE_READY,
                                     TVR_NOTIF_PRIORITY_NORMAL, std::string(row.length, 'x'));
    EXPECT_EQ(std::string(receiver.last.text, strnlen(receiver.last.text, 1024)),
              std::string(row.kept, 'x'))
        << row.length;
  }
}

TEST(SendNotification, NullRecordMakesNoCall) {
  ScanBaseClient::SendNotification(nullptr, NOTIFY_SCAN_FAILED, TVR_NOTIF_PRIORITY_NORMAL, "text");
}

TEST(SendNotification, NullFunctionWithContextMakesNoCall) {
  int context = 7;
  const TVR_FP_CALLBACK record{nullptr, &context};
  ScanBaseClient::SendNotification(&record, NOTIFY_SCAN_FAILED, TVR_NOTIF_PRIORITY_NORMAL, "text");
  EXPECT_EQ(context, 7);
}

TEST(SendNotification, ContextIsHandedBackUnchanged) {
  static void* seen;
  seen = &seen;
  const TVR_FP_CALLBACK record{[](ScanNotification*, void* context) { seen = context; }, nullptr};
  ScanBaseClient::SendNotification(&record, NOTIFY_SCAN_FAILED, TVR_NOTIF_PRIORITY_NORMAL, "");
  EXPECT_EQ(seen, nullptr);
}

TEST(SendNotification, EachTypeArrivesWithItsValue) {
  const struct {
    NotificationType type;
    int value;
  } kCases[] = {
      {NOTIFY_SCANNER_BUSY, 1001},    {NOTIFY_SCAN_FAILED, 1002},  {NOTIFY_TRANSFER_STARTED, 1004},
      {NOTIFY_IMAGE_READY, 1005},     {NOTIFY_JOB_COMPLETE, 1006}, {NOTIFY_CONN_FAILURE, 1011},
      {NOTIFY_ERROR_DISPLAYED, 1020}, {NOTIFY_JOB_ABORTED, 1021},
  };
  for (const auto& row : kCases) {
    Receiver receiver;
    ScanBaseClient::SendNotification(&receiver.record, row.type, TVR_NOTIF_PRIORITY_NORMAL, "");
    EXPECT_EQ(static_cast<int>(receiver.last.type), row.value);
  }
}

}  // namespace
