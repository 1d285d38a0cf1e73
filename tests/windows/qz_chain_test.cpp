// A page of a thousand replies on a stack that none of them may grow, with device files of this
// system: pipes, whose other ends the test serves.
#include <array>
#include <cstddef>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>
#include <windows.h>

#include "tests/support/qz_test_peer.h"
#include "tests/support/small_stack.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_peers.h"
#include "virtual/windows/unique_handle.h"

namespace tvrscn::test {
namespace {

using virtual_device::UniqueHandle;

constexpr int kReplies = 1000;
constexpr std::size_t kReplyData = 16;
constexpr std::size_t kStack = std::size_t{128} * 1024;

struct Pipe {
  Pipe() {
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    if (CreatePipe(&read, &write, nullptr, 0) == 0) return;
    readEnd = UniqueHandle(read);
    writeEnd = UniqueHandle(write);
  }
  UniqueHandle readEnd;
  UniqueHandle writeEnd;
};

// Takes a READ and says "there is more" each time but the last. The number of READs that were as
// they should be.
int serve(HANDLE requests, HANDLE replies) {
  constexpr std::array<unsigned char, 12> kRead = {5, 0x28, 0, 0, 0, 0, 0, 4, 0, 4, 0, 0};
  std::array<unsigned char, 8 + kReplyData> reply = {0xEE, 0x28, 0, 2, 0, 0, 0, kReplyData};
  int served = 0;
  for (int i = 1; i <= kReplies; ++i) {
    std::array<unsigned char, 12> request = {};
    DWORD count = 0;
    if (ReadFile(requests, request.data(), request.size(), &count, nullptr) == 0) break;
    if (count == request.size() && request == kRead) ++served;
    if (i == kReplies) reply[3] = 3;
    if (WriteFile(replies, reply.data(), reply.size(), &count, nullptr) == 0) break;
  }
  return served;
}

void count(ScanNotification* notification, void* context) {
  if (notification->type == NOTIFY_IMAGE_READY) ++*static_cast<int*>(context);
}

TEST(QZChain, ThousandRepliesFitOnASmallStack) {
  Pipe requests;
  Pipe replies;
  ASSERT_TRUE(requests.writeEnd.isValid());
  ASSERT_TRUE(replies.readEnd.isValid());
  const TemporaryFolder folder;
  int pages = 0;
  TVR_FP_CALLBACK callback = {count, &pages};
  USB_QZ_Controller controller;
  ControllerTestPeer::deviceWrite(controller) = requests.writeEnd.get();
  ControllerTestPeer::deviceRead(controller) = replies.readEnd.get();
  ControllerTestPeer::callback(controller) = &callback;
  ControllerTestPeer::reservedClientID(controller) = 5;
  QZTestPeer::scanFolder(controller) = folder.path().wstring();

  int served = 0;
  std::thread device([&] { served = serve(requests.readEnd.get(), replies.writeEnd.get()); });
  int result = -1;
  runOnStack(kStack, [&] { result = QZTestPeer::read(controller); });
  // The device's end ends the serving, should the chain have ended early.
  requests.writeEnd = UniqueHandle();
  device.join();
  ControllerTestPeer::deviceWrite(controller) = INVALID_HANDLE_VALUE;
  ControllerTestPeer::deviceRead(controller) = INVALID_HANDLE_VALUE;

  EXPECT_EQ(result, 0);
  EXPECT_EQ(served, kReplies);
  EXPECT_EQ(pages, 1);
  ASSERT_EQ(folder.fileNames().size(), 1U);
  EXPECT_EQ(std::filesystem::file_size(folder.path() / folder.fileNames()[0]),
            kReplies * kReplyData);
}

}  // namespace
}  // namespace tvrscn::test
