// The live handles of this process. A HANDLE is the address of an object kept here; a value that is
// not in the table, or whose object is of another kind, is an invalid handle and never looked into.
#ifndef TVRSCN_PLATFORM_POSIX_HANDLE_TABLE_H
#define TVRSCN_PLATFORM_POSIX_HANDLE_TABLE_H

#include <memory>

#include "tvrscn/types.h"

namespace tvrscn {

// What a handle stands for. Destroyed when the handle is closed and no call uses it any more.
class HandleObject {
 public:
  HandleObject() = default;
  HandleObject(const HandleObject&) = delete;
  HandleObject& operator=(const HandleObject&) = delete;
  virtual ~HandleObject() = default;

  // The handle was closed; calls on other threads may still be using the object.
  virtual void closed() {}
};

// All three may be called from any thread.
HANDLE registerHandle(std::shared_ptr<HandleObject> object);
std::shared_ptr<HandleObject> findHandle(HANDLE handle);      // null when unknown
std::shared_ptr<HandleObject> withdrawHandle(HANDLE handle);  // the same, and it is unknown then

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_POSIX_HANDLE_TABLE_H
