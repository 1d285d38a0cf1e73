// Device files over endpoints. Two tables: the handles, and the claims by endpoint name. A claim is
// taken by the first open of a name, shared by the further ones and given up with the last close. A
// device that went away is claimed anew by the next open, although old handles may still be about.
#include "platform/device_file.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "platform/posix/endpoint.h"
#include "platform/posix/handle_table.h"
#include "platform/posix/system_error.h"
#include "platform/posix/utf8.h"

namespace tvrscn {
namespace {

constexpr std::string_view kSocketScheme = "unix:";
constexpr std::string_view kUsbScheme = "usb:";

thread_local DWORD lastError = 0;

BOOL fail(DWORD error) {
  lastError = error;
  return 0;
}

struct Claim {
  std::string name;
  std::shared_ptr<Endpoint> endpoint;
  int handles = 0;  // guarded by ClaimTable::mutex
};

struct ClaimTable {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<Claim>> claims;
};

ClaimTable& claimTable() {
  static ClaimTable& table = *new ClaimTable;  // outlives every static object, as the handles do
  return table;
}

DWORD openEndpoint(const std::string& name, std::shared_ptr<Endpoint>& endpoint) {
  if (name.rfind(kUsbScheme, 0) == 0) return ERROR_NOT_SUPPORTED;
  if (name.rfind(kSocketScheme, 0) == 0) {
    const std::string path = name.substr(kSocketScheme.size());
    return path.rfind('/', 0) == 0 ? connectFrames(path, endpoint) : ERROR_FILE_NOT_FOUND;
  }
  return name.rfind('/', 0) == 0 ? openCharacterDevice(name, endpoint) : ERROR_FILE_NOT_FOUND;
}

DWORD takeClaim(const std::string& name, std::shared_ptr<Claim>& claim) {
  ClaimTable& table = claimTable();
  // Held while the device is opened, so that two threads cannot claim it twice.
  const std::lock_guard lock(table.mutex);
  const auto found = table.claims.find(name);
  if (found != table.claims.end() && !found->second->endpoint->gone()) {
    claim = found->second;
  } else {
    claim = std::make_shared<Claim>();
    claim->name = name;
    const DWORD error = openEndpoint(name, claim->endpoint);
    if (error != kErrorNone) return error;
    table.claims[name] = claim;
  }
  ++claim->handles;
  return kErrorNone;
}

void releaseClaim(const std::shared_ptr<Claim>& claim) {
  ClaimTable& table = claimTable();
  const std::lock_guard lock(table.mutex);
  if (--claim->handles > 0) return;
  claim->endpoint->giveUp();
  const auto found = table.claims.find(claim->name);
  if (found != table.claims.end() && found->second == claim) table.claims.erase(found);
}

class DeviceFile final : public HandleObject {
 public:
  explicit DeviceFile(std::shared_ptr<Claim> claim) : claim_(std::move(claim)) {}

  void closed() override { releaseClaim(claim_); }
  Endpoint& endpoint() { return *claim_->endpoint; }

 private:
  std::shared_ptr<Claim> claim_;
};

std::shared_ptr<DeviceFile> findFile(HANDLE handle) {
  return std::dynamic_pointer_cast<DeviceFile>(findHandle(handle));
}

}  // namespace
}  // namespace tvrscn

HANDLE CreateFileW(const wchar_t* name, DWORD /*access*/, DWORD /*share*/,
                   SECURITY_ATTRIBUTES* /*security*/, DWORD /*disposition*/, DWORD /*flags*/,
                   HANDLE /*templateFile*/) {
  DWORD error = ERROR_INVALID_PARAMETER;
  std::shared_ptr<tvrscn::Claim> claim;
  if (name != nullptr) error = tvrscn::takeClaim(tvrscn::utf8FromWide(name), claim);
  if (error != tvrscn::kErrorNone) {
    tvrscn::lastError = error;
    return INVALID_HANDLE_VALUE;
  }
  return tvrscn::registerHandle(std::make_shared<tvrscn::DeviceFile>(std::move(claim)));
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, OVERLAPPED* overlapped) {
  DWORD done = 0;
  DWORD& count = read != nullptr ? *read : done;
  count = 0;
  const auto device = tvrscn::findFile(file);
  if (device == nullptr) return tvrscn::fail(ERROR_INVALID_HANDLE);
  if (overlapped != nullptr || (buffer == nullptr && size > 0)) {
    return tvrscn::fail(ERROR_INVALID_PARAMETER);
  }
  const DWORD error = device->endpoint().read(buffer, size, count);
  return error == tvrscn::kErrorNone ? 1 : tvrscn::fail(error);
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written,
               OVERLAPPED* overlapped) {
  DWORD done = 0;
  DWORD& count = written != nullptr ? *written : done;
  count = 0;
  const auto device = tvrscn::findFile(file);
  if (device == nullptr) return tvrscn::fail(ERROR_INVALID_HANDLE);
  if (overlapped != nullptr || (buffer == nullptr && size > 0)) {
    return tvrscn::fail(ERROR_INVALID_PARAMETER);
  }
  const DWORD error = device->endpoint().write(buffer, size, count);
  return error == tvrscn::kErrorNone ? 1 : tvrscn::fail(error);
}

// Writes are with the device when WriteFile returns, and what it has sent is never discarded.
BOOL FlushFileBuffers(HANDLE file) {
  return tvrscn::findFile(file) != nullptr ? 1 : tvrscn::fail(ERROR_INVALID_HANDLE);
}

BOOL CloseHandle(HANDLE handle) {
  const auto object = tvrscn::withdrawHandle(handle);
  if (object == nullptr) return tvrscn::fail(ERROR_INVALID_HANDLE);
  object->closed();
  return 1;
}

DWORD GetLastError() {
  return tvrscn::lastError;
}

void SetLastError(DWORD error) {
  tvrscn::lastError = error;
}
