// The failure dialog; shown on the thread that failed.
#include "client/failure_dialog.h"

namespace tvrscn {

int showFailure(const CErrorCodeDictionary* dictionary, FailureText text, FailureText title,
                UINT flags) {
  const wchar_t* shownText = dictionary == nullptr ? L"" : (dictionary->*text).c_str();
  const wchar_t* shownTitle = dictionary == nullptr ? L"" : (dictionary->*title).c_str();
  return MessageBoxW(nullptr, shownText, shownTitle, flags);
}

}  // namespace tvrscn
