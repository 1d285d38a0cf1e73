// Names of the user and the computer, and conversion between narrow and wide text.
#ifndef TVRSCN_PLATFORM_IDENTITY_TEXT_H
#define TVRSCN_PLATFORM_IDENTITY_TEXT_H

#include "tvrscn/types.h"

#if !defined(_WIN32)

constexpr UINT CP_ACP = 0;  // the system's narrow code page; UTF-8 here
constexpr UINT CP_UTF8 = 65001;

// The name goes into buffer with its terminator; *size is the buffer's length in characters and
// becomes the length used (user name: with, computer name: without the terminator). A name that
// does not fit leaves the buffer alone and sets a last error.
BOOL GetUserNameW(wchar_t* buffer, DWORD* size);
BOOL GetComputerNameW(wchar_t* buffer, DWORD* size);

// Lengths are in units of the respective side; -1 for the source means up to and with its
// terminator; a destination length of 0 asks for the length needed. 0 is failure.
int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* wide, int wideLength,
                        char* narrow, int narrowLength, const char* defaultChar,
                        BOOL* usedDefaultChar);
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* narrow, int narrowLength,
                        wchar_t* wide, int wideLength);

#endif  // !_WIN32

#endif  // TVRSCN_PLATFORM_IDENTITY_TEXT_H
