// The user's runtime folder: made by the system at login, private, and gone at logout.
#ifndef TVRSCN_PLATFORM_POSIX_RUNTIME_FOLDER_H
#define TVRSCN_PLATFORM_POSIX_RUNTIME_FOLDER_H

#include <string>

namespace tvrscn {

// $XDG_RUNTIME_DIR where that is an absolute path, else /run/user/<user id>. It need not exist.
std::string userRuntimeFolder();

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_POSIX_RUNTIME_FOLDER_H
