// The one place that turns an errno value into a last error, and the error values that only this
// side of the seam names.
#ifndef TVRSCN_PLATFORM_POSIX_SYSTEM_ERROR_H
#define TVRSCN_PLATFORM_POSIX_SYSTEM_ERROR_H

#include "tvrscn/types.h"

namespace tvrscn {

inline constexpr DWORD kErrorNone = 0;
inline constexpr DWORD kErrorTooManyOpenFiles = 4;
inline constexpr DWORD kErrorNotEnoughMemory = 8;
inline constexpr DWORD kErrorSharingViolation = 32;
inline constexpr DWORD kErrorFileExists = 80;
inline constexpr DWORD kErrorBufferOverflow = 111;
inline constexpr DWORD kErrorDiskFull = 112;
inline constexpr DWORD kErrorModuleNotFound = 126;
inline constexpr DWORD kErrorProcedureNotFound = 127;
inline constexpr DWORD kErrorNameTooLong = 206;
inline constexpr DWORD kErrorInvalidFlags = 1004;
inline constexpr DWORD kErrorNoSuchUser = 1317;
inline constexpr DWORD kErrorInvalidBoxStyle = 1438;

// Never 0; ERROR_GEN_FAILURE for an errno value without a meaning of its own.
DWORD errorFromErrno(int error);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_POSIX_SYSTEM_ERROR_H
