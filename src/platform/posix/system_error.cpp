// A table; an endpoint that is not there, not ours or gone has to be told apart by its user.
#include "platform/posix/system_error.h"

#include <cerrno>

#include "platform/device_file.h"

namespace tvrscn {
namespace {

struct ErrnoMeaning {
  int error;
  DWORD meaning;
};

const ErrnoMeaning kMeanings[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_FILE_NOT_FOUND},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EROFS, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {ELOOP, ERROR_ACCESS_DENIED},
    {ECONNREFUSED, ERROR_DEVICE_NOT_CONNECTED},
    {ECONNRESET, ERROR_DEVICE_NOT_CONNECTED},
    {ENOTCONN, ERROR_DEVICE_NOT_CONNECTED},
    {EPIPE, ERROR_DEVICE_NOT_CONNECTED},
    {ENODEV, ERROR_DEVICE_NOT_CONNECTED},
    {ENXIO, ERROR_DEVICE_NOT_CONNECTED},
    {ESHUTDOWN, ERROR_DEVICE_NOT_CONNECTED},
    {EBUSY, ERROR_BUSY},
    {EEXIST, kErrorFileExists},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EFAULT, ERROR_INVALID_PARAMETER},
    {EMFILE, kErrorTooManyOpenFiles},
    {ENFILE, kErrorTooManyOpenFiles},
    {ENAMETOOLONG, kErrorNameTooLong},
    {ENOMEM, kErrorNotEnoughMemory},
    {ENOBUFS, kErrorNotEnoughMemory},
    {ENOSPC, kErrorDiskFull},
    {EDQUOT, kErrorDiskFull},
};

}  // namespace

DWORD errorFromErrno(int error) {
  for (const ErrnoMeaning& row : kMeanings) {
    if (row.error == error) return row.meaning;
  }
  return ERROR_GEN_FAILURE;
}

}  // namespace tvrscn
