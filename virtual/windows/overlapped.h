// One operation at a time on a handle that does not block. The system writes to the record, and to
// the operation's buffer, until the operation has ended; so the owner of both waits for that.
#ifndef TVRSCN_VIRTUAL_WINDOWS_OVERLAPPED_H
#define TVRSCN_VIRTUAL_WINDOWS_OVERLAPPED_H

#include <windows.h>

#include "virtual/windows/unique_handle.h"

namespace tvrscn::virtual_device {

class Overlapped {
 public:
  // The handle stays its owner's and must outlive this. Throws std::runtime_error.
  explicit Overlapped(HANDLE file);
  Overlapped(const Overlapped&) = delete;
  Overlapped& operator=(const Overlapped&) = delete;
  ~Overlapped();  // calls the operation off and waits for its end

  // The record for a call that begins an operation; began() takes the call's result right after it.
  OVERLAPPED* record();
  void began(BOOL result);

  // Set as soon as the operation has ended.
  HANDLE event() const { return event_.get(); }
  bool hasEnded() const { return WaitForSingleObject(event_.get(), 0) == WAIT_OBJECT_0; }

  // REQUIRES: the operation has ended. Its error value, ERROR_SUCCESS when it went well.
  DWORD result(DWORD& bytes);

 private:
  HANDLE file_;
  UniqueHandle event_;
  OVERLAPPED record_{};
  bool isPending_ = false;            // the system has the record
  DWORD error_ = ERROR_INVALID_DATA;  // of a call that began nothing
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_WINDOWS_OVERLAPPED_H
