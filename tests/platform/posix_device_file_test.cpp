// Device files: frames on a socket, a pty, shared claims, and what a wrong handle answers.
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/device_file.h"
#include "platform/posix/system_error.h"
#include "platform/threads.h"
#include "tests/platform/posix_test_support.h"

namespace tvrscn::test {
namespace {

HANDLE openEndpoint(const std::wstring& name) {
  return CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                     nullptr, OPEN_EXISTING, 0, nullptr);
}

// Outcome of one read, as a text: the bytes, or "error N" behind the bytes that came all the same.
std::string readText(HANDLE file, DWORD size) {
  std::string buffer(size, '?');
  DWORD count = 12345;
  SetLastError(0);
  const BOOL good = ReadFile(file, buffer.data(), size, &count, nullptr);
  buffer.resize(count);
  return good != 0 ? buffer : buffer + "error " + std::to_string(GetLastError());
}

std::string writeText(HANDLE file, const std::string& data) {
  DWORD count = 12345;
  SetLastError(0);
  const auto size = static_cast<DWORD>(data.size());
  const BOOL good = WriteFile(file, data.data(), size, &count, nullptr);
  return (good != 0 ? "wrote " : "error " + std::to_string(GetLastError()) + " after ") +
         std::to_string(count);
}

class FrameEndpoint : public testing::Test {
 protected:
  void SetUp() override {
    writer_ = openEndpoint(device_.endpoint());
    reader_ = openEndpoint(device_.endpoint());
    ASSERT_NE(INVALID_HANDLE_VALUE, writer_);
    ASSERT_NE(INVALID_HANDLE_VALUE, reader_);
    device_.accept();
  }
  void TearDown() override {
    CloseHandle(writer_);
    CloseHandle(reader_);
  }

  ScratchFolder folder_;
  SocketDevice device_{folder_ / "scanner"};
  HANDLE writer_ = INVALID_HANDLE_VALUE;
  HANDLE reader_ = INVALID_HANDLE_VALUE;
};

TEST_F(FrameEndpoint, OneWriteIsOneFrame) {
  EXPECT_EQ("wrote 3", writeText(writer_, bytes({0x1B, 0xA8, 0x12})));
  EXPECT_EQ("wrote 1", writeText(writer_, "x"));
  EXPECT_EQ(bytes({3, 0, 0, 0, 0x1B, 0xA8, 0x12, 1, 0, 0, 0, 'x'}), device_.receive(12));
}

TEST_F(FrameEndpoint, LengthIsLittleEndian) {
  EXPECT_EQ("wrote 259", writeText(writer_, std::string(259, 'a')));
  EXPECT_EQ(bytes({0x03, 0x01, 0, 0}), device_.receive(4));
}

TEST_F(FrameEndpoint, EmptyWriteIsAnEmptyFrame) {
  EXPECT_EQ("wrote 0", writeText(writer_, ""));
  EXPECT_EQ(bytes({0, 0, 0, 0}), device_.receive(4));
}

TEST_F(FrameEndpoint, WriteOfTheFailureMarksLengthIsRefused) {
  DWORD count = 1;
  char byte = 0;
  EXPECT_EQ(0, WriteFile(writer_, &byte, 0xFFFFFFFFU, &count, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
  EXPECT_EQ(0U, count);
  EXPECT_TRUE(device_.clientIsSilent());
}

TEST_F(FrameEndpoint, ReadOfTheFramesLengthTakesItWhole) {
  device_.send(bytes({3, 0, 0, 0, 'a', 'b', 'c'}));
  EXPECT_EQ("abc", readText(reader_, 3));
}

TEST_F(FrameEndpoint, ShortFrameEndsTheRead) {
  device_.send(bytes({2, 0, 0, 0, 'a', 'b'}));
  EXPECT_EQ("ab", readText(reader_, 72));
}

TEST_F(FrameEndpoint, ReadNeverSpansTwoFrames) {
  device_.send(bytes({2, 0, 0, 0, 'a', 'b', 2, 0, 0, 0, 'c', 'd'}));
  EXPECT_EQ("ab", readText(reader_, 4));
  EXPECT_EQ("cd", readText(reader_, 4));
}

TEST_F(FrameEndpoint, RestOfAFrameStaysForTheNextRead) {
  device_.send(bytes({5, 0, 0, 0, 'a', 'b', 'c', 'd', 'e', 1, 0, 0, 0, 'f'}));
  EXPECT_EQ("ab", readText(reader_, 2));
  EXPECT_EQ("cd", readText(reader_, 2));
  EXPECT_EQ("e", readText(reader_, 2));
  EXPECT_EQ("f", readText(reader_, 2));
}

TEST_F(FrameEndpoint, LengthZeroIsASuccessfulReadOfNothing) {
  device_.send(bytes({0, 0, 0, 0, 1, 0, 0, 0, 'a'}));
  EXPECT_EQ("", readText(reader_, 8));
  EXPECT_EQ("a", readText(reader_, 8));
}

TEST_F(FrameEndpoint, FailureMarkFailsOneReadOnly) {
  device_.send(bytes({0xFF, 0xFF, 0xFF, 0xFF, 1, 0, 0, 0, 'a'}));
  EXPECT_EQ("error 31", readText(reader_, 8));
  EXPECT_EQ("a", readText(reader_, 8));
}

TEST_F(FrameEndpoint, ReadOfNothingTakesNothing) {
  device_.send(bytes({0, 0, 0, 0, 1, 0, 0, 0, 'a'}));
  EXPECT_EQ("", readText(reader_, 0));
  EXPECT_EQ("", readText(reader_, 1));
  EXPECT_EQ("a", readText(reader_, 1));
}

TEST_F(FrameEndpoint, EitherHandleReadsAndWrites) {
  EXPECT_EQ("wrote 1", writeText(reader_, "r"));
  EXPECT_EQ(bytes({1, 0, 0, 0, 'r'}), device_.receive(5));
  device_.send(bytes({2, 0, 0, 0, 'a', 'b'}));
  EXPECT_EQ("a", readText(writer_, 1));
  EXPECT_EQ("b", readText(reader_, 1));
}

TEST_F(FrameEndpoint, WhatWasSentBeforeACloseIsStillRead) {
  device_.send(bytes({2, 0, 0, 0, 'a', 'b', 1, 0, 0, 0, 'c'}));
  device_.close();
  EXPECT_EQ("ab", readText(reader_, 8));
  EXPECT_EQ("c", readText(reader_, 8));
  EXPECT_EQ("error 1167", readText(reader_, 8));
  EXPECT_EQ("error 1167", readText(reader_, 8));
  EXPECT_EQ("error 1167 after 0", writeText(writer_, "x"));
}

TEST_F(FrameEndpoint, UnreadRequestAtTheDeviceDoesNotLoseItsAnswer) {
  EXPECT_EQ("wrote 1", writeText(writer_, "x"));
  device_.send(bytes({1, 0, 0, 0, 'a'}));
  device_.close();
  EXPECT_EQ("a", readText(reader_, 8));
  EXPECT_EQ("error 1167", readText(reader_, 8));
}

TEST_F(FrameEndpoint, WriteAfterACloseFailsWithoutASignal) {
  device_.close();
  EXPECT_EQ("error 1167 after 0", writeText(writer_, "x"));
  EXPECT_EQ("error 1167 after 0", writeText(writer_, "x"));
  EXPECT_EQ("error 1167", readText(reader_, 8));
}

TEST_F(FrameEndpoint, FrameCutByTheCloseGivesWhatCame) {
  device_.send(bytes({5, 0, 0, 0, 'a', 'b'}));
  device_.close();
  EXPECT_EQ("ab", readText(reader_, 5));
  EXPECT_EQ("error 1167", readText(reader_, 5));
}

TEST_F(FrameEndpoint, FrameCutBehindItsLengthIsAClose) {
  device_.send(bytes({5, 0, 0, 0}));
  device_.close();
  EXPECT_EQ("error 1167", readText(reader_, 5));
}

TEST_F(FrameEndpoint, LengthCutByTheCloseIsAClose) {
  for (const int cut : {1, 2, 3}) {
    SCOPED_TRACE(cut);
    const std::string path = folder_ / ("cut" + std::to_string(cut));
    SocketDevice device(path);
    const HANDLE file = openEndpoint(device.endpoint());
    device.accept();
    device.send(std::string(static_cast<std::size_t>(cut), '\1'));
    device.close();
    EXPECT_EQ("error 1167", readText(file, 5));
    CloseHandle(file);
  }
}

TEST_F(FrameEndpoint, LargestAnnouncedLengthCostsNoMemory) {
  device_.send(bytes({0xFE, 0xFF, 0xFF, 0xFF, 'a', 'b', 'c'}));
  EXPECT_EQ("ab", readText(reader_, 2));
  device_.close();
  EXPECT_EQ("c", readText(reader_, 100));
  EXPECT_EQ("error 1167", readText(reader_, 100));
}

TEST_F(FrameEndpoint, ReadWaitsUntilItsBytesAreThere) {
  std::thread sender([this] {
    for (const char piece : bytes({4, 0, 0, 0, 'a', 'b', 'c', 'd'})) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      device_.send(std::string(1, piece));
    }
  });
  EXPECT_EQ("abc", readText(reader_, 3));
  EXPECT_EQ("d", readText(reader_, 3));
  sender.join();
}

TEST_F(FrameEndpoint, FlushDiscardsNothing) {
  device_.send(bytes({1, 0, 0, 0, 'a'}));
  EXPECT_NE(0, FlushFileBuffers(reader_));
  EXPECT_NE(0, FlushFileBuffers(writer_));
  EXPECT_EQ("a", readText(reader_, 8));
}

void ignoreSignal(int) {}

TEST_F(FrameEndpoint, SignalDoesNotEndAWait) {
  struct sigaction action = {};
  struct sigaction old = {};
  action.sa_handler = ignoreSignal;  // without SA_RESTART: system calls do come back with EINTR
  ASSERT_EQ(0, ::sigaction(SIGUSR1, &action, &old));
  std::string answer;
  std::thread reader([this, &answer] { answer = readText(reader_, 2); });
  const pthread_t thread = reader.native_handle();
  for (int i = 0; i < 10; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ::pthread_kill(thread, SIGUSR1);
    if (i == 4) device_.send(bytes({2, 0, 0, 0, 'a'}));
  }
  device_.send("b");
  reader.join();
  EXPECT_EQ("ab", answer);
  ::sigaction(SIGUSR1, &old, nullptr);
}

TEST_F(FrameEndpoint, ReadWaitsOnOneThreadWhileAnotherWrites) {
  std::string answer;
  std::thread reader([this, &answer] { answer = readText(reader_, 1); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ("wrote 1", writeText(writer_, "q"));
  EXPECT_EQ(bytes({1, 0, 0, 0, 'q'}), device_.receive(5));
  device_.send(bytes({1, 0, 0, 0, 'a'}));
  reader.join();
  EXPECT_EQ("a", answer);
}

TEST_F(FrameEndpoint, LargeTransfersInBothDirectionsAtOnceArriveWhole) {
  constexpr std::size_t kSize = 0x00200000;  // far more than a socket buffers
  std::string sent(kSize, '\0');
  for (std::size_t i = 0; i < kSize; ++i)
    sent[i] = static_cast<char>(i * 7 / 3);
  std::string seenByDevice;
  std::string received;
  std::thread deviceSends([&] { device_.send(bytes({0, 0, 0x20, 0}) + sent); });
  std::thread deviceReceives([&] { seenByDevice = device_.receive(4 + kSize); });
  std::thread reader([&] { received = readText(reader_, kSize); });
  EXPECT_EQ("wrote 2097152", writeText(writer_, sent));
  deviceSends.join();
  deviceReceives.join();
  reader.join();
  EXPECT_TRUE(received == sent);
  EXPECT_TRUE(seenByDevice == bytes({0, 0, 0x20, 0}) + sent);
}

TEST_F(FrameEndpoint, FramesOfSeveralThreadsDoNotMix) {
  constexpr int kThreads = 4;
  constexpr int kFrames = 40;
  constexpr std::size_t kSize = 0x00010203;  // more than one system call takes at once
  std::vector<std::thread> writers;
  for (int t = 0; t < kThreads; ++t) {
    writers.emplace_back([this, t] {
      const std::string data(kSize, static_cast<char>('a' + t));
      for (int i = 0; i < kFrames; ++i)
        writeText(t % 2 == 0 ? writer_ : reader_, data);
    });
  }
  int whole = 0;
  for (int i = 0; i < kThreads * kFrames; ++i) {
    const std::string frame = device_.receive(4 + kSize);
    const bool good = frame.size() == 4 + kSize &&
                      frame.compare(0, 4, bytes({0x03, 0x02, 0x01, 0x00})) == 0 &&
                      frame.find_first_not_of(frame[4], 4) == std::string::npos;
    if (!good) break;
    ++whole;
  }
  device_.close();  // lets the writers go if a frame was not whole
  for (std::thread& writer : writers)
    writer.join();
  EXPECT_EQ(kThreads * kFrames, whole);
}

TEST_F(FrameEndpoint, HandlesShareOneConnection) {
  EXPECT_FALSE(device_.someoneWaits());
  const HANDLE third = openEndpoint(device_.endpoint());
  EXPECT_NE(INVALID_HANDLE_VALUE, third);
  EXPECT_NE(third, reader_);
  EXPECT_FALSE(device_.someoneWaits());
  CloseHandle(third);
}

TEST_F(FrameEndpoint, ClaimIsGivenUpWithTheLastHandle) {
  EXPECT_NE(0, CloseHandle(writer_));
  EXPECT_TRUE(device_.clientIsSilent());
  EXPECT_NE(0, CloseHandle(reader_));
  EXPECT_TRUE(device_.clientIsGone());

  const HANDLE again = openEndpoint(device_.endpoint());
  EXPECT_NE(INVALID_HANDLE_VALUE, again);
  EXPECT_TRUE(device_.someoneWaits());
  CloseHandle(again);
}

TEST_F(FrameEndpoint, ClosingTheLastHandleEndsAWaitingRead) {
  std::string answer;
  std::thread reader([this, &answer] { answer = readText(reader_, 1); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  CloseHandle(writer_);
  CloseHandle(reader_);
  reader.join();
  // A read that had not begun yet finds its handle closed instead.
  EXPECT_TRUE(answer == "error 1167" || answer == "error 6") << answer;
}

TEST_F(FrameEndpoint, DeviceThatWentAwayIsConnectedAnewByTheNextOpen) {
  device_.close();
  const HANDLE fresh = openEndpoint(device_.endpoint());
  ASSERT_NE(INVALID_HANDLE_VALUE, fresh);
  EXPECT_TRUE(device_.someoneWaits());
  device_.accept();
  device_.send(bytes({1, 0, 0, 0, 'n'}));
  EXPECT_EQ("error 1167", readText(reader_, 8));
  EXPECT_EQ("n", readText(fresh, 8));
  // Closing the old handles leaves the new claim alone.
  CloseHandle(writer_);
  CloseHandle(reader_);
  EXPECT_EQ("wrote 1", writeText(fresh, "x"));
  EXPECT_EQ(bytes({1, 0, 0, 0, 'x'}), device_.receive(5));
  CloseHandle(fresh);
}

TEST_F(FrameEndpoint, OverlappedUseAndMissingBuffersAreRefused) {
  int dummy = 0;
  auto* const overlapped = reinterpret_cast<OVERLAPPED*>(&dummy);
  char byte = 0;
  DWORD count = 1;
  EXPECT_EQ(0, ReadFile(reader_, &byte, 1, &count, overlapped));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
  EXPECT_EQ(0, ReadFile(reader_, nullptr, 1, &count, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
  EXPECT_EQ(0, WriteFile(writer_, nullptr, 1, &count, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
  EXPECT_NE(0, WriteFile(writer_, &byte, 1, nullptr, nullptr));
}

void expectInvalid(HANDLE handle) {
  EXPECT_EQ("error 6", readText(handle, 1));
  EXPECT_EQ("error 6 after 0", writeText(handle, "x"));
  SetLastError(0);
  EXPECT_EQ(0, FlushFileBuffers(handle));
  EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
}

TEST_F(FrameEndpoint, WrongHandlesAreInvalidAndHarmless) {
  int somethingElse = 0;
  for (const HANDLE handle : {HANDLE{nullptr}, INVALID_HANDLE_VALUE, HANDLE{&somethingElse}}) {
    expectInvalid(handle);
    SetLastError(0);
    EXPECT_EQ(0, CloseHandle(handle));
    EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
  }
}

TEST_F(FrameEndpoint, ClosedHandleIsInvalid) {
  const HANDLE third = openEndpoint(device_.endpoint());
  EXPECT_NE(0, CloseHandle(third));
  expectInvalid(third);
  EXPECT_EQ(0, CloseHandle(third));
  EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
}

unsigned returnAtOnce(void*) {
  return 0;
}

TEST(DeviceFile, ThreadHandleIsNoFile) {
  const std::uintptr_t thread = _beginthreadex(nullptr, 0, &returnAtOnce, nullptr, 0, nullptr);
  ASSERT_NE(0U, thread);
  const auto handle = reinterpret_cast<HANDLE>(thread);
  expectInvalid(handle);
  EXPECT_NE(0, CloseHandle(handle));
  EXPECT_EQ(0, CloseHandle(handle));
}

DWORD errorOfOpening(const std::wstring& name) {
  SetLastError(0);
  const HANDLE file = openEndpoint(name);
  EXPECT_EQ(INVALID_HANDLE_VALUE, file);
  return GetLastError();
}

std::wstring wideOf(const std::string& ascii) {
  return {ascii.begin(), ascii.end()};
}

TEST(DeviceFile, UsbEndpointIsNotSupported) {
  EXPECT_EQ(ERROR_NOT_SUPPORTED, errorOfOpening(L"usb:3:7:0"));
}

TEST(DeviceFile, MissingEndpointIsNotFound) {
  const ScratchFolder folder;
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, errorOfOpening(L"unix:" + wideOf(folder / "none")));
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, errorOfOpening(wideOf(folder / "none")));
}

TEST(DeviceFile, NameOfNoKnownFormIsNotFound) {
  for (const wchar_t* name : {L"", L"unix:", L"unix:relative", L"relative", L"tcp:host"}) {
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, errorOfOpening(name));
  }
}

TEST(DeviceFile, NullNameIsRefused) {
  EXPECT_EQ(INVALID_HANDLE_VALUE, CreateFileW(nullptr, 0, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
}

TEST(DeviceFile, SocketPathThatIsTooLongIsRefused) {
  EXPECT_EQ(kErrorNameTooLong, errorOfOpening(L"unix:/" + std::wstring(107, L'x')));
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, errorOfOpening(L"unix:/" + std::wstring(106, L'x')));
}

TEST(DeviceFile, SocketWithoutAListenerIsNotConnected) {
  const ScratchFolder folder;
  SocketDevice device(folder / "scanner");
  device.stopListening();
  EXPECT_EQ(ERROR_DEVICE_NOT_CONNECTED, errorOfOpening(device.endpoint()));
}

TEST(DeviceFile, EndpointOfAnotherUserIsDenied) {
  const ScratchFolder folder;
  ::chmod(folder.path().c_str(), 0755);
  const SocketDevice device(folder / "scanner");
  writeFile(folder / "device", "");
  ::chmod((folder / "scanner").c_str(), 0000);
  ::chmod((folder / "device").c_str(), 0000);
  // Root may open anything, so it steps aside for this.
  const bool root = ::geteuid() == 0;
  if (root) {
    ASSERT_EQ(0, ::seteuid(65534));
  }
  EXPECT_EQ(ERROR_ACCESS_DENIED, errorOfOpening(device.endpoint()));
  EXPECT_EQ(ERROR_ACCESS_DENIED, errorOfOpening(wideOf(folder / "device")));
  if (root) {
    ASSERT_EQ(0, ::seteuid(0));
  }
}

TEST(DeviceFile, LastErrorBelongsToTheThread) {
  SetLastError(7);
  std::thread([] {
    EXPECT_EQ(0U, GetLastError());
    SetLastError(8);
  }).join();
  EXPECT_EQ(7U, GetLastError());
}

class PtyEndpoint : public testing::Test {
 protected:
  void SetUp() override {
    master_ = UniqueFd(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_TRUE(master_.valid());
    ASSERT_EQ(0, ::grantpt(master_.get()));
    ASSERT_EQ(0, ::unlockpt(master_.get()));
    std::array<char, 64> name = {};
    ASSERT_EQ(0, ::ptsname_r(master_.get(), name.data(), name.size()));
    file_ = openEndpoint(wideOf(name.data()));
    second_ = openEndpoint(wideOf(name.data()));
    ASSERT_NE(INVALID_HANDLE_VALUE, file_);
    ASSERT_NE(INVALID_HANDLE_VALUE, second_);
  }
  void TearDown() override {
    CloseHandle(file_);
    CloseHandle(second_);
  }
  void send(const std::string& data) const {
    ASSERT_EQ(static_cast<ssize_t>(data.size()), ::write(master_.get(), data.data(), data.size()));
  }
  std::string receive(std::size_t size) const {
    std::string data;
    std::array<char, 256> buffer = {};
    while (data.size() < size) {
      const ssize_t count = ::read(master_.get(), buffer.data(), buffer.size());
      if (count <= 0) break;
      data.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return data;
  }

  UniqueFd master_;
  HANDLE file_ = INVALID_HANDLE_VALUE;
  HANDLE second_ = INVALID_HANDLE_VALUE;
};

TEST_F(PtyEndpoint, BytesPassUnchangedBothWays) {
  const std::string all = bytes({0x00, 0x03, 0x04, 0x0A, 0x0D, 0x11, 0x13, 0x1A, 0x7F, 0xFF});
  EXPECT_EQ("wrote 10", writeText(file_, all));
  EXPECT_EQ(all, receive(all.size()));
  send(all);
  std::string got;
  while (got.size() < all.size())
    got += readText(second_, 64);
  EXPECT_EQ(all, got);
}

TEST_F(PtyEndpoint, ReadGivesWhatIsThere) {
  send("abc");
  EXPECT_EQ("ab", readText(file_, 2));
  EXPECT_EQ("c", readText(file_, 64));
}

TEST_F(PtyEndpoint, HangUpIsADeviceThatIsNotConnected) {
  master_ = UniqueFd();
  EXPECT_EQ("error 1167", readText(file_, 8));
  EXPECT_EQ("error 1167 after 0", writeText(second_, "x"));
}

TEST(SystemError, ErrnoValuesBecomeTheErrorsThatUsersAreTold) {
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, errorFromErrno(ENOENT));
  EXPECT_EQ(ERROR_ACCESS_DENIED, errorFromErrno(EACCES));
  EXPECT_EQ(ERROR_ACCESS_DENIED, errorFromErrno(EPERM));
  EXPECT_EQ(ERROR_DEVICE_NOT_CONNECTED, errorFromErrno(ECONNREFUSED));
  EXPECT_EQ(ERROR_DEVICE_NOT_CONNECTED, errorFromErrno(ENODEV));
  EXPECT_EQ(ERROR_BUSY, errorFromErrno(EBUSY));
  EXPECT_EQ(ERROR_GEN_FAILURE, errorFromErrno(EIO));
  EXPECT_EQ(ERROR_GEN_FAILURE, errorFromErrno(0));
}

}  // namespace
}  // namespace tvrscn::test
