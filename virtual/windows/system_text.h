// Texts on their way to and from the system, which takes wide ones.
#ifndef TVRSCN_VIRTUAL_WINDOWS_SYSTEM_TEXT_H
#define TVRSCN_VIRTUAL_WINDOWS_SYSTEM_TEXT_H

#include <string>

#include <windows.h>

namespace tvrscn::virtual_device {

std::wstring wide(const std::string& utf8);
std::string narrow(const std::wstring& text);

// What the system says to an error value.
std::string reason(DWORD error);

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_WINDOWS_SYSTEM_TEXT_H
