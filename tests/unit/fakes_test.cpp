// The fakes themselves: a test that leans on them has to be able to fail.
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "platform/device_file.h"
#include "tests/support/fake_platform.h"
#include "tests/support/scripted_device.h"

namespace {

using tvrscn::test::bytes;
using tvrscn::test::Bytes;
using tvrscn::test::describeMismatch;
using tvrscn::test::DeviceExhausted;
using tvrscn::test::FakePlatform;
using tvrscn::test::hex;
using tvrscn::test::Kind;
using tvrscn::test::ScriptedDevice;
using Lines = std::vector<std::string>;

TEST(BytesNotation, ReadsAndWrites) {
  EXPECT_EQ(bytes("1B A8 00*3 ff"), (Bytes{0x1B, 0xA8, 0, 0, 0, 0xFF}));
  EXPECT_EQ(hex(Bytes{0x1B, 0xA8, 0x0F}), "1B A8 0F");
  for (const char* wrong : {"G0", "100", "1B*", "1B*x", "*2", "0x1B"}) {
    EXPECT_THROW(bytes(wrong), std::invalid_argument) << wrong;
  }
}

TEST(BytesNotation, MismatchNamesOffsetAndBothSides) {
  EXPECT_EQ(describeMismatch(bytes("01 02 03"), bytes("01 02 03")), "");
  EXPECT_EQ(describeMismatch(bytes("01 02 03"), bytes("01 FF 03")),
            "offset 1: expected 02 03, actual FF 03 (lengths 3 and 3)");
  EXPECT_EQ(describeMismatch(bytes("01 02"), bytes("01")),
            "offset 1: expected 02, actual (end) (lengths 2 and 1)");
}

TEST(ScriptedDeviceTest, FollowsItsScript) {
  ScriptedDevice device;
  device.expect("01 02").answer("0A 0B 0C").expectAndFail("03").failRead(99, "0D");
  EXPECT_TRUE(device.write(bytes("01 02")));
  EXPECT_EQ(device.read(2).bytes, bytes("0A 0B"));
  EXPECT_EQ(device.read(2).bytes, bytes("0C"));
  EXPECT_FALSE(device.write(bytes("03")));
  const tvrscn::test::ReadResult failed = device.read(2);
  EXPECT_FALSE(failed.ok);
  EXPECT_EQ(failed.error, 99U);
  EXPECT_EQ(device.problems(), Lines{});
}

TEST(ScriptedDeviceTest, TellsEachDifference) {
  ScriptedDevice device;
  device.expect("01 02").answer("0A").expect("05");
  device.write(bytes("01 03"));
  device.write(bytes("04"));
  device.read(1);
  device.read(1);
  EXPECT_EQ(device.problems(),
            (Lines{"step 1: host bytes differ at offset 1: expected 02, actual 03 "
                   "(lengths 2 and 2)",
                   "step 2: unexpected write of 04", "step 3: unexpected read of 1 bytes",
                   "step 3: 1 steps were never reached, next: 05"}));
}

class Fakes : public ::testing::Test {
 protected:
  Fakes() { platform.plug(&device); }
  bool write(const char* data) {
    const Bytes content = bytes(data);
    DWORD written = 0;
    return WriteFile(handles.first, content.data(), static_cast<DWORD>(content.size()), &written,
                     nullptr) != 0;
  }
  Bytes read(DWORD size) {
    Bytes buffer(size);
    DWORD count = 0;
    ok = ReadFile(handles.second, buffer.data(), size, &count, nullptr) != 0;
    buffer.resize(count);
    return buffer;
  }

  FakePlatform platform;
  ScriptedDevice device;
  std::pair<HANDLE, HANDLE> handles = platform.openDevice();
  bool ok = false;
};

TEST_F(Fakes, DeviceCallsAreRecordedInOrder) {
  device.expect("01 02").answer("0A 0B");
  FlushFileBuffers(handles.first);
  EXPECT_TRUE(write("01 02"));
  FlushFileBuffers(handles.second);
  EXPECT_EQ(read(5), bytes("0A 0B"));
  EXPECT_EQ(platform.calls(), (Lines{"Flush write", "Write 01 02", "Flush read", "Read 5"}));
  EXPECT_EQ(platform.deviceCallCount(), 4);
  EXPECT_EQ(platform.count("ReadFile"), 1);
}

TEST_F(Fakes, ChosenCallFailsAndOthersDoNot) {
  device.answer("0A").answer("0B");
  platform.failCall("ReadFile", 2, 77);
  EXPECT_EQ(read(1), bytes("0A"));
  EXPECT_EQ(read(1), Bytes{});
  EXPECT_FALSE(ok);
  EXPECT_EQ(GetLastError(), 77U);
  EXPECT_EQ(read(1), bytes("0B"));
}

TEST_F(Fakes, ChosenDeviceCallComesShort) {
  device.expect("01").answer("0A 0B 0C");
  platform.shortDeviceCall(2, 1);
  EXPECT_TRUE(write("01"));
  EXPECT_EQ(read(3), bytes("0A"));
  EXPECT_TRUE(ok);
}

TEST_F(Fakes, ReadingOnThoughNothingComesIsEnded) {
  platform.emptyReadLimit = 3;
  EXPECT_EQ(read(1), Bytes{});
  EXPECT_EQ(read(1), Bytes{});
  EXPECT_THROW(read(1), DeviceExhausted);
}

TEST_F(Fakes, EndlessDeviceCallsAreEnded) {
  platform.deviceCallLimit = 2;
  FlushFileBuffers(handles.first);
  FlushFileBuffers(handles.first);
  EXPECT_THROW(FlushFileBuffers(handles.first), DeviceExhausted);
}

TEST_F(Fakes, MisuseOfHandlesIsAProblem) {
  CloseHandle(handles.first);
  EXPECT_EQ(platform.problems(), Lines{});
  EXPECT_FALSE(write("01"));
  EXPECT_EQ(platform.problems(), Lines{"used as a live handle: handle write"});
}

}  // namespace
