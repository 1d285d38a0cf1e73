// String resources, read where they lie in the module.
#include "platform/modules.h"

namespace tvrscn {

std::wstring moduleString(HINSTANCE module, unsigned int id) {
  // The system takes a null module for the program itself, which has texts of its own under any id.
  if (module == nullptr) return {};
  // Asked with a length of 0, the call stores a pointer to the resource, which has no terminator.
  const wchar_t* text = nullptr;
  const int length = LoadStringW(module, id, reinterpret_cast<LPWSTR>(&text), 0);
  if (length <= 0 || text == nullptr) return {};
  return {text, static_cast<std::size_t>(length)};
}

}  // namespace tvrscn
