// The messages of the failure dialogs; their texts stand in dictionary_messages.def.
#include "tvrscn/tevrautil/error_code_dictionary.h"

#include "platform/modules.h"
#include "platform/tevrautil/alert_messages.h"

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

void CErrorCodeDictionary::GetErrorString(std::vector<AlertStatus>& alerts, std::string family,
                                          std::wstring& message) {
  message = tvrscn::alertMessage(alerts, family);
}
