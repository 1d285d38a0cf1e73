// The messages of the failure dialogs; their texts stand in dictionary_messages.def.
#include "tvrscn/tevrautil/error_code_dictionary.h"

#include <limits>
#include <string_view>

#include "platform/identity_text.h"
#include "platform/modules.h"

namespace {

struct Message {
  unsigned int resource;  // string resource of a module that has its own wording
  std::wstring CErrorCodeDictionary::*field;
  const wchar_t* text;
};

#define MESSAGE(resource, field, text) {resource, &CErrorCodeDictionary::field, L##text},
const Message kMessages[] = {
#include "platform/tevrautil/dictionary_messages.def"
};
#undef MESSAGE

// Device texts are UTF-8.
std::wstring widened(const std::string& text) {
  if (text.empty() || text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    return {};
  }
  const int length = static_cast<int>(text.size());
  const int needed = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
  if (needed <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(needed), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), needed);
  return wide;
}

}  // namespace

CErrorCodeDictionary::CErrorCodeDictionary() = default;
CErrorCodeDictionary::CErrorCodeDictionary(const CErrorCodeDictionary& other) = default;
CErrorCodeDictionary& CErrorCodeDictionary::operator=(const CErrorCodeDictionary& other) = default;
CErrorCodeDictionary::~CErrorCodeDictionary() = default;

void CErrorCodeDictionary::InitExceptionStrings(HINSTANCE resourceModule) {
  for (const Message& message : kMessages) {
    const std::wstring own = tvrscn::moduleString(resourceModule, message.resource);
    this->*message.field = own.empty() ? message.text : own;
  }
}

// The wording is the same for all families: it is the device's own.
void CErrorCodeDictionary::GetErrorString(std::vector<AlertStatus>& alerts, std::string /*family*/,
                                          std::wstring& message) {
  message.clear();
  for (const AlertStatus& alert : alerts) {
    const std::wstring text =
        widened(alert.description.empty() ? alert.keyword : alert.description);
    if (text.empty()) continue;
    constexpr std::wstring_view kSentenceEnds = L".!?";
    const bool ended = kSentenceEnds.find(text.back()) != std::wstring_view::npos;
    message = L"The device reports: " + text + (ended ? L"" : L".");
    return;
  }
}
