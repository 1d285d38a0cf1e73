// Owners for what the system's components hand out.
#ifndef TVRSCN_VIRTUAL_WINDOWS_COM_H
#define TVRSCN_VIRTUAL_WINDOWS_COM_H

#include <windows.h>

#include <objbase.h>

namespace tvrscn::virtual_device {

// Components are usable on this thread while it lives.
class ComSession {
 public:
  ComSession() : result_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
  ComSession(const ComSession&) = delete;
  ComSession& operator=(const ComSession&) = delete;
  ~ComSession() {
    // A thread that had them in another way before goes on so.
    if (SUCCEEDED(result_)) CoUninitialize();
  }

 private:
  HRESULT result_;
};

template <typename Interface>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  ~ComPtr() {
    if (object_ != nullptr) object_->Release();
  }
  Interface* operator->() const { return object_; }
  Interface* get() const { return object_; }
  // REQUIRES: empty.
  Interface** out() { return &object_; }

 private:
  Interface* object_ = nullptr;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_WINDOWS_COM_H
