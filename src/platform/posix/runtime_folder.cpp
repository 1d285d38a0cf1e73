// A relative $XDG_RUNTIME_DIR is no folder: it would mean another one in each working folder.
#include "platform/posix/runtime_folder.h"

#include <cstdlib>

#include <unistd.h>

namespace tvrscn {

std::string userRuntimeFolder() {
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder != nullptr && folder[0] == '/') return folder;
  return "/run/user/" + std::to_string(::geteuid());
}

}  // namespace tvrscn
