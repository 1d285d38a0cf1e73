// The one dialog that this library has: a text of the dictionary under a title of the dictionary.
#ifndef TVRSCN_CLIENT_FAILURE_DIALOG_H
#define TVRSCN_CLIENT_FAILURE_DIALOG_H

#include <string>

#include "platform/dialog.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"

namespace tvrscn {

// One of the dictionary's texts.
using FailureText = std::wstring CErrorCodeDictionary::*;

// Blocks until the user has answered and returns the button. Without a dictionary the dialog shows
// empty texts; callers that want none ask before.
int showFailure(const CErrorCodeDictionary* dictionary, FailureText text, FailureText title,
                UINT flags = MB_TOPMOST);

}  // namespace tvrscn

#endif  // TVRSCN_CLIENT_FAILURE_DIALOG_H
