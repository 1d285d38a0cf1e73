// Temporary files and copies. Names are wide above the seam and UTF-8 below it.
#include "platform/files.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <random>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/device_file.h"
#include "platform/posix/system_error.h"
#include "platform/posix/unique_fd.h"
#include "platform/posix/utf8.h"

namespace tvrscn {

extern const wchar_t kPathSeparator = L'/';

std::filesystem::path systemPath(const std::wstring& path) {
  return pathFromWide(path);
}

std::filesystem::path storeAppSettingsPath() {
  const char* const named = std::getenv("TVRSCN_PROGRAM_DATA");
  const bool usable = named != nullptr && *named != '\0';
  return std::filesystem::path(usable ? named : "/var/lib/tevra") / "ScanInputData.txt";
}

namespace {

constexpr std::size_t kPathCapacity = 260;  // characters in a buffer for a path
constexpr std::size_t kPrefixLetters = 3;
constexpr std::size_t kCopyChunk = 256U * 1024U;
constexpr int kNameAttempts = 100;

BOOL fail(DWORD error) {
  SetLastError(error);
  return 0;
}

std::wstring temporaryFolder() {
  const char* named = std::getenv("TMPDIR");
  std::wstring folder = wideFromUtf8(named != nullptr && named[0] != '\0' ? named : "/tmp");
  if (folder.back() != kPathSeparator) folder += kPathSeparator;
  return folder;
}

// <folder>/<three letters><number in hex>.tmp
std::wstring temporaryName(std::wstring_view folder, std::wstring_view prefix, UINT number) {
  std::wstring name(folder);
  if (!name.empty() && name.back() != L'/' && name.back() != L'\\') name += kPathSeparator;
  for (const wchar_t letter : prefix.substr(0, kPrefixLetters)) {
    name += letter == L'/' || letter == L'\\' ? L'_' : letter;
  }
  std::array<wchar_t, 16> rest = {};
  std::swprintf(rest.data(), rest.size(), L"%x.tmp", number);
  return name + rest.data();
}

bool sameFile(int a, int b) {
  struct stat first = {};
  struct stat second = {};
  return ::fstat(a, &first) == 0 && ::fstat(b, &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

bool writeAll(int file, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t count = ::write(file, data, size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    data += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

// Overwrites what is there and cuts off what is left of a longer file. Emptying it first would come
// to the same content, but file systems hurry a file to disk that is emptied and filled again.
// False with errno.
bool copyBytes(int from, int to) {
  std::string chunk(kCopyChunk, '\0');
  off_t size = 0;
  for (;;) {
    const ssize_t count = ::read(from, chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) return ::ftruncate(to, size) == 0;
    if (!writeAll(to, chunk.data(), static_cast<std::size_t>(count))) return false;
    size += count;
  }
}

}  // namespace
}  // namespace tvrscn

DWORD GetTempPathW(DWORD characters, wchar_t* buffer) {
  const std::wstring folder = tvrscn::temporaryFolder();
  const std::size_t length = folder.size();
  if (buffer == nullptr || characters <= length) return static_cast<DWORD>(length + 1);
  std::wmemcpy(buffer, folder.c_str(), length + 1);
  return static_cast<DWORD>(length);
}

UINT GetTempFileNameW(const wchar_t* folder, const wchar_t* prefix, UINT unique,
                      wchar_t* fileName) {
  using namespace tvrscn;
  if (folder == nullptr || fileName == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  std::random_device random;
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    const UINT number = unique != 0 ? unique : random();
    if (number == 0) continue;
    const std::wstring name = temporaryName(folder, prefix != nullptr ? prefix : L"", number);
    if (name.size() >= kPathCapacity) {
      SetLastError(kErrorBufferOverflow);
      return 0;
    }
    if (unique == 0) {
      const UniqueFd file(::open(pathFromWide(name).c_str(),
                                 O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
      if (!file.valid() && (errno == EEXIST || errno == EINTR)) continue;
      if (!file.valid()) {
        SetLastError(errorFromErrno(errno));
        return 0;
      }
    }
    std::wmemcpy(fileName, name.c_str(), name.size() + 1);
    return number;
  }
  SetLastError(kErrorFileExists);
  return 0;
}

BOOL DeleteFileW(const wchar_t* fileName) {
  if (fileName == nullptr) return tvrscn::fail(ERROR_INVALID_PARAMETER);
  if (::unlink(tvrscn::pathFromWide(fileName).c_str()) == 0) return 1;
  return tvrscn::fail(tvrscn::errorFromErrno(errno));
}

BOOL CopyFileW(const wchar_t* existing, const wchar_t* copy, BOOL failIfExists) {
  using namespace tvrscn;
  if (existing == nullptr || copy == nullptr) return fail(ERROR_INVALID_PARAMETER);
  const UniqueFd from(::open(pathFromWide(existing).c_str(), O_RDONLY | O_CLOEXEC));
  if (!from.valid()) return fail(errorFromErrno(errno));
  struct stat source = {};
  if (::fstat(from.get(), &source) != 0) return fail(errorFromErrno(errno));
  if (S_ISDIR(source.st_mode)) return fail(ERROR_ACCESS_DENIED);

  const std::string target = pathFromWide(copy);
  const int exclusive = failIfExists != 0 ? O_EXCL : 0;
  const UniqueFd to(
      ::open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | exclusive, source.st_mode & 0777U));
  if (!to.valid()) return fail(errorFromErrno(errno));
  if (sameFile(from.get(), to.get())) return fail(kErrorSharingViolation);
  if (copyBytes(from.get(), to.get())) return 1;
  const DWORD error = errorFromErrno(errno);
  ::unlink(target.c_str());  // half a copy is worse than none
  return fail(error);
}
