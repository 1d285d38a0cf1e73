#include "virtual/windows/system_text.h"

#include <system_error>

namespace tvrscn::virtual_device {

std::wstring wide(const std::string& utf8) {
  const int size = static_cast<int>(utf8.size());
  const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
  std::wstring text(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, text.data(), length);
  return text;
}

std::string narrow(const std::wstring& text) {
  const int size = static_cast<int>(text.size());
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), length, nullptr, nullptr);
  return utf8;
}

std::string reason(DWORD error) {
  return std::system_category().message(static_cast<int>(error));
}

}  // namespace tvrscn::virtual_device
