// The registry keys that make a software device one of the present devices: its own key below Enum,
// and the key of its driver, with the pipe's name, below Class. They do not outlive a restart of
// the system, and what a crashed program left is taken over by the next device of the same id.
#ifndef TVRSCN_VIRTUAL_WINDOWS_REGISTRATION_H
#define TVRSCN_VIRTUAL_WINDOWS_REGISTRATION_H

#include <string>

namespace tvrscn::virtual_device {

// A key of ours below HKEY_LOCAL_MACHINE; goes with its owner, and so do the keys above it that are
// empty then.
class OwnedKey {
 public:
  // Makes the key, `depth` levels below keys that are the system's own. Throws std::runtime_error.
  OwnedKey(std::wstring path, int depth);
  OwnedKey(const OwnedKey&) = delete;
  OwnedKey& operator=(const OwnedKey&) = delete;
  ~OwnedKey();

  void set(const wchar_t* name, const std::wstring& text) const;

 private:
  std::wstring path_;
  int depth_;
};

// Registers in the constructor and takes the keys back in the destructor. Throws
// std::runtime_error.
class Registration {
 public:
  Registration(const std::string& instanceId, const std::wstring& pipe);

 private:
  OwnedKey driver_;
  OwnedKey device_;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_WINDOWS_REGISTRATION_H
