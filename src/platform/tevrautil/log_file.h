// The file behind the logger. Each system has an implementation of its own.
#ifndef TVRSCN_PLATFORM_TEVRAUTIL_LOG_FILE_H
#define TVRSCN_PLATFORM_TEVRAUTIL_LOG_FILE_H

#include <string_view>

namespace tvrscn {

// Appends a line, which has no line end in it, to the file that TVRSCN_LOG names at this moment. A
// file that cannot be written loses the line and nothing else. May be called from any thread.
void appendToLogFile(std::wstring_view line);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_TEVRAUTIL_LOG_FILE_H
