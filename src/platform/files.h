// Temporary files, and what a path looks like on this system.
#ifndef TVRSCN_PLATFORM_FILES_H
#define TVRSCN_PLATFORM_FILES_H

#include <filesystem>
#include <string>

#include "tvrscn/types.h"

#if !defined(_WIN32)

// The folder for temporary files with a trailing separator: $TMPDIR, else /tmp. Returns the length
// without the terminator, the length needed with it when `characters` is too small, or 0.
DWORD GetTempPathW(DWORD characters, wchar_t* buffer);
// Creates an empty file of a new name, the first three letters of prefix in front when unique is 0.
// fileName holds 260 characters. Returns a number other than 0, or 0 with a last error.
UINT GetTempFileNameW(const wchar_t* folder, const wchar_t* prefix, UINT unique, wchar_t* fileName);
BOOL DeleteFileW(const wchar_t* fileName);
BOOL CopyFileW(const wchar_t* existing, const wchar_t* copy, BOOL failIfExists);

#endif  // !_WIN32

namespace tvrscn {

// Between the parts of a path that the library builds: '\' on Windows, '/' on Linux.
extern const wchar_t kPathSeparator;

// A path as the standard library's file streams take it here.
std::filesystem::path systemPath(const std::wstring& path);

// The file in which a store application leaves the settings of its job: ScanInputData.txt in
// C:\ProgramData\Tevra on Windows, in $TVRSCN_PROGRAM_DATA, by default /var/lib/tevra, on Linux.
std::filesystem::path storeAppSettingsPath();

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_FILES_H
