// Names of the user and the computer, and code pages, of which there is one: UTF-8.
#include "platform/identity_text.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <pwd.h>
#include <unistd.h>

#include "platform/device_file.h"
#include "platform/posix/system_error.h"
#include "platform/posix/utf8.h"

namespace tvrscn {
namespace {

int fail(DWORD error) {
  SetLastError(error);
  return 0;
}

// Stores a name with its terminator. A buffer that is too small is left alone, and *size tells the
// length needed.
bool storeName(const std::wstring& name, wchar_t* buffer, DWORD* size) {
  const std::size_t length = name.size() + 1;
  const bool fits = buffer != nullptr && *size >= length;
  if (fits) std::wmemcpy(buffer, name.c_str(), length);
  *size = static_cast<DWORD>(length);
  return fits;
}

// The account's name; empty when the system knows none for this user.
std::string userName() {
  constexpr std::size_t kLargestEntry = 1024U * 1024U;
  std::vector<char> storage(1024);
  passwd entry = {};
  passwd* found = nullptr;
  for (;;) {
    const int error = ::getpwuid_r(::geteuid(), &entry, storage.data(), storage.size(), &found);
    if (error == EINTR) continue;
    if (error != ERANGE || storage.size() >= kLargestEntry) break;
    storage.resize(storage.size() * 2);
  }
  return found != nullptr ? found->pw_name : "";
}

// Length of the source that a caller hands in: -1 means up to and with its terminator. False for
// arguments that make no sense.
template <typename Character>
bool sourceText(const Character* source, int length, std::basic_string_view<Character>& text) {
  if (source == nullptr || length == 0 || length < -1) return false;
  const std::size_t characters = length > 0 ? static_cast<std::size_t>(length)
                                            : std::char_traits<Character>::length(source) + 1;
  text = {source, characters};
  return true;
}

// Hands the converted text out, or tells its length.
template <typename Character>
int deliver(const std::basic_string<Character>& text, Character* target, int capacity) {
  constexpr auto kLargest = static_cast<std::size_t>(std::numeric_limits<int>::max());
  if (capacity < 0 || text.size() > kLargest) return fail(ERROR_INVALID_PARAMETER);
  const int length = static_cast<int>(text.size());
  if (capacity == 0) return length;
  if (target == nullptr) return fail(ERROR_INVALID_PARAMETER);
  if (capacity < length) return fail(ERROR_INSUFFICIENT_BUFFER);
  std::char_traits<Character>::copy(target, text.data(), text.size());
  return length;
}

bool knownCodePage(UINT codePage) {
  return codePage == CP_ACP || codePage == CP_UTF8;
}

}  // namespace
}  // namespace tvrscn

BOOL GetUserNameW(wchar_t* buffer, DWORD* size) {
  if (size == nullptr) return tvrscn::fail(ERROR_INVALID_PARAMETER);
  const std::string name = tvrscn::userName();
  if (name.empty()) return tvrscn::fail(tvrscn::kErrorNoSuchUser);
  if (tvrscn::storeName(tvrscn::wideFromUtf8(name), buffer, size)) return 1;
  return tvrscn::fail(ERROR_INSUFFICIENT_BUFFER);
}

BOOL GetComputerNameW(wchar_t* buffer, DWORD* size) {
  if (size == nullptr) return tvrscn::fail(ERROR_INVALID_PARAMETER);
  std::array<char, 257> name = {};  // the last byte stays zero whatever the call does
  if (::gethostname(name.data(), name.size() - 1) != 0) {
    return tvrscn::fail(tvrscn::errorFromErrno(errno));
  }
  if (!tvrscn::storeName(tvrscn::wideFromUtf8(name.data()), buffer, size)) {
    return tvrscn::fail(tvrscn::kErrorBufferOverflow);
  }
  --*size;
  return 1;
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* wide, int wideLength,
                        char* narrow, int narrowLength, const char* /*defaultChar*/,
                        BOOL* usedDefaultChar) {
  using namespace tvrscn;
  std::wstring_view text;
  if (flags != 0) return fail(kErrorInvalidFlags);
  if (!knownCodePage(codePage) || !sourceText(wide, wideLength, text)) {
    return fail(ERROR_INVALID_PARAMETER);
  }
  // UTF-8 has a form for every character.
  if (usedDefaultChar != nullptr) *usedDefaultChar = 0;
  return deliver(utf8FromWide(text), narrow, narrowLength);
}

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* narrow, int narrowLength,
                        wchar_t* wide, int wideLength) {
  using namespace tvrscn;
  std::string_view text;
  if (flags != 0) return fail(kErrorInvalidFlags);
  if (!knownCodePage(codePage) || !sourceText(narrow, narrowLength, text)) {
    return fail(ERROR_INVALID_PARAMETER);
  }
  return deliver(wideFromUtf8(text), wide, wideLength);
}
