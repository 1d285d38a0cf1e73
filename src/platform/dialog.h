// Modal message boxes.
#ifndef TVRSCN_PLATFORM_DIALOG_H
#define TVRSCN_PLATFORM_DIALOG_H

#include "tvrscn/types.h"

#if !defined(_WIN32)

constexpr UINT MB_OK = 0x0;
constexpr UINT MB_RETRYCANCEL = 0x5;
constexpr UINT MB_TOPMOST = 0x40000;
constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int IDRETRY = 4;

// Blocks until answered and returns the button. $TVRSCN_DIALOG names a program that is run with
// title, text and flags and whose exit status is the answer; unset, the controlling terminal is
// asked; with none, the text goes to standard error and the default button is the answer.
int MessageBoxW(HWND owner, const wchar_t* text, const wchar_t* caption, UINT type);

#endif  // !_WIN32

#endif  // TVRSCN_PLATFORM_DIALOG_H
