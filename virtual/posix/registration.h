// The file that makes a software device one of the present devices: <name>.device, key=value lines.
#ifndef TVRSCN_VIRTUAL_POSIX_REGISTRATION_H
#define TVRSCN_VIRTUAL_POSIX_REGISTRATION_H

#include <filesystem>

#include "virtual/virtual_scanner.h"

namespace tvrscn::virtual_device {

// Registers in the constructor, makes the folder if need be, and takes the entry back in the
// destructor. Throws std::runtime_error.
class Registration {
 public:
  explicit Registration(const Placement& placement);
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;
  ~Registration();

 private:
  std::filesystem::path file_;
};

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_POSIX_REGISTRATION_H
