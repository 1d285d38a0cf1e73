#include "wide_text.h"

#include <cstddef>

#include "platform/identity_text.h"

namespace tvrscn::cli {

std::string utf8(const std::wstring& wide) {
  const wchar_t* const text = wide.c_str();
  const int length = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (length <= 1) return {};
  std::string narrow(static_cast<std::size_t>(length), '\0');
  if (WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), length, nullptr, nullptr) == 0) {
    return {};
  }
  narrow.pop_back();
  return narrow;
}

std::wstring widened(const std::string& text) {
  std::wstring wide;
  for (const char byte : text)
    wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
  return wide;
}

}  // namespace tvrscn::cli
