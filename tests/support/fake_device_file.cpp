// The fake device files: each write and read goes to the device that is plugged in.
#include "platform/device_file.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string>

#include "tests/support/fake_platform.h"

using tvrscn::test::FakeDevice;
using tvrscn::test::FakeObject;
using tvrscn::test::FakePlatform;
using tvrscn::test::hexNumber;
using tvrscn::test::Kind;
using tvrscn::test::ReadResult;
using tvrscn::test::utf8;

HANDLE CreateFileW(const wchar_t* name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                   DWORD disposition, DWORD flags, HANDLE templateFile) {
  FakePlatform& platform = FakePlatform::current();
  std::string text = "CreateFileW " + utf8(name) + " " + hexNumber(access) + " share " +
                     std::to_string(share) + " disposition " + std::to_string(disposition) +
                     " flags " + std::to_string(flags);
  if (security != nullptr) text += " security";
  if (templateFile != nullptr) text += " template";
  platform.record(Kind::kOpen, text);
  const auto outcome = platform.call("CreateFileW");
  if (outcome.fail) {
    platform.lastError = outcome.error;
    return INVALID_HANDLE_VALUE;
  }
  return &platform.makeHandle();
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written,
               OVERLAPPED* overlapped) {
  FakePlatform& platform = FakePlatform::current();
  const auto* data = static_cast<const std::uint8_t*>(buffer);
  const std::span<const std::uint8_t> bytes(data, size);
  std::string name;
  const FakeObject* object = platform.findHandle(file, name);
  platform.record(Kind::kDevice, (name.starts_with("write") ? "Write " : "Write " + name + " ") +
                                     tvrscn::test::hex(bytes));
  if (overlapped != nullptr) platform.problem("WriteFile is synchronous");
  const auto outcome = platform.call("WriteFile");
  if (written != nullptr) *written = 0;
  if (outcome.fail || object == nullptr) {
    platform.lastError = outcome.fail ? outcome.error : ERROR_INVALID_HANDLE;
    return 0;
  }
  FakeDevice* device = platform.device();
  const std::size_t length = std::min<std::size_t>(size, outcome.shortTo.value_or(size));
  if (device == nullptr || !device->write(bytes.first(length))) {
    platform.lastError = device == nullptr ? ERROR_DEVICE_NOT_CONNECTED : ERROR_GEN_FAILURE;
    return 0;
  }
  if (written != nullptr) *written = static_cast<DWORD>(length);
  return 1;
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, OVERLAPPED* overlapped) {
  FakePlatform& platform = FakePlatform::current();
  std::string name;
  const FakeObject* object = platform.findHandle(file, name);
  platform.record(Kind::kDevice, (name.starts_with("read") ? "Read " : "Read " + name + " ") +
                                     std::to_string(size));
  if (overlapped != nullptr) platform.problem("ReadFile is synchronous");
  if (read != nullptr) *read = 0;
  const auto outcome = platform.call("ReadFile");
  FakeDevice* device = platform.device();
  if (outcome.fail || object == nullptr || device == nullptr) {
    platform.lastError = outcome.fail        ? outcome.error
                         : object == nullptr ? ERROR_INVALID_HANDLE
                                             : ERROR_DEVICE_NOT_CONNECTED;
    platform.countEmptyRead(true);
    return 0;
  }
  const ReadResult result = device->read(size);
  const std::size_t length =
      std::min({result.bytes.size(), std::size_t{size}, outcome.shortTo.value_or(size)});
  if (length > 0) std::memcpy(buffer, result.bytes.data(), length);
  if (read != nullptr) *read = outcome.claimed.value_or(static_cast<DWORD>(length));
  if (!result.ok) platform.lastError = result.error;
  platform.countEmptyRead(length == 0);
  return result.ok ? 1 : 0;
}

BOOL FlushFileBuffers(HANDLE file) {
  FakePlatform& platform = FakePlatform::current();
  std::string name;
  const FakeObject* object = platform.findHandle(file, name);
  platform.record(Kind::kDevice, "Flush " + name);
  const auto outcome = platform.call("FlushFileBuffers");
  if (!outcome.fail && object != nullptr) return 1;
  platform.lastError = outcome.fail ? outcome.error : ERROR_INVALID_HANDLE;
  return 0;
}

BOOL CloseHandle(HANDLE handle) {
  FakePlatform& platform = FakePlatform::current();
  std::string name;
  FakeObject* object = platform.findHandle(handle, name);
  platform.record(Kind::kOpen, "Close " + name);
  const auto outcome = platform.call("CloseHandle");
  if (outcome.fail || object == nullptr) {
    platform.lastError = outcome.fail ? outcome.error : ERROR_INVALID_HANDLE;
    return 0;
  }
  object->live = false;
  return 1;
}

DWORD GetLastError() {
  return FakePlatform::current().lastError;
}

void SetLastError(DWORD error) {
  FakePlatform::current().lastError = error;
}
