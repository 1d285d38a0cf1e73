// The table outlives every static object: handles are used until the very end of the process, and
// those that their owner never closes stay reachable.
#include "platform/posix/handle_table.h"

#include <mutex>
#include <unordered_map>
#include <utility>

namespace tvrscn {
namespace {

struct HandleTable {
  std::mutex mutex;
  std::unordered_map<HANDLE, std::shared_ptr<HandleObject>> objects;
};

HandleTable& handleTable() {
  static HandleTable& table = *new HandleTable;
  return table;
}

}  // namespace

HANDLE registerHandle(std::shared_ptr<HandleObject> object) {
  HandleTable& table = handleTable();
  const HANDLE handle = object.get();
  const std::lock_guard lock(table.mutex);
  table.objects.emplace(handle, std::move(object));
  return handle;
}

std::shared_ptr<HandleObject> findHandle(HANDLE handle) {
  HandleTable& table = handleTable();
  const std::lock_guard lock(table.mutex);
  const auto found = table.objects.find(handle);
  return found == table.objects.end() ? nullptr : found->second;
}

std::shared_ptr<HandleObject> withdrawHandle(HANDLE handle) {
  HandleTable& table = handleTable();
  const std::lock_guard lock(table.mutex);
  const auto found = table.objects.find(handle);
  if (found == table.objects.end()) return nullptr;
  std::shared_ptr<HandleObject> object = std::move(found->second);
  table.objects.erase(found);
  return object;
}

}  // namespace tvrscn
