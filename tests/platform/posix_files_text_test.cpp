// Temporary files, copies, names of user and computer, code pages, threads.
#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <thread>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/device_file.h"
#include "platform/files.h"
#include "platform/identity_text.h"
#include "platform/posix/system_error.h"
#include "platform/posix/utf8.h"
#include "platform/threads.h"
#include "tests/platform/posix_test_support.h"

namespace tvrscn::test {
namespace {

TEST(TempPath, IsTheVariablesFolderWithASeparator) {
  std::array<wchar_t, 260> path = {};
  ScopedVariable variable("TMPDIR", "/some/where");
  EXPECT_EQ(12U, GetTempPathW(260, path.data()));
  EXPECT_STREQ(L"/some/where/", path.data());
  variable.set("/some/where/");
  EXPECT_EQ(12U, GetTempPathW(260, path.data()));
  EXPECT_STREQ(L"/some/where/", path.data());
}

TEST(TempPath, IsTmpWithoutTheVariable) {
  std::array<wchar_t, 260> path = {};
  ScopedVariable variable("TMPDIR", std::nullopt);
  EXPECT_EQ(5U, GetTempPathW(260, path.data()));
  EXPECT_STREQ(L"/tmp/", path.data());
  variable.set("");
  EXPECT_EQ(5U, GetTempPathW(260, path.data()));
}

TEST(TempPath, TooSmallABufferIsToldTheLengthNeeded) {
  const ScopedVariable variable("TMPDIR", std::nullopt);
  std::array<wchar_t, 6> path = {L'u'};
  EXPECT_EQ(6U, GetTempPathW(5, path.data()));
  EXPECT_EQ(L'u', path[0]);
  EXPECT_EQ(6U, GetTempPathW(0, nullptr));
  EXPECT_EQ(5U, GetTempPathW(6, path.data()));
}

TEST(StoreAppSettings, LieInTheVariablesFolder) {
  ScopedVariable variable("TVRSCN_PROGRAM_DATA", "/some/where");
  EXPECT_EQ("/some/where/ScanInputData.txt", storeAppSettingsPath().string());
  variable.set("/some/where/");
  EXPECT_EQ("/some/where/ScanInputData.txt", storeAppSettingsPath().string());
}

TEST(StoreAppSettings, LieInTheSystemsFolderWithoutTheVariable) {
  ScopedVariable variable("TVRSCN_PROGRAM_DATA", std::nullopt);
  EXPECT_EQ("/var/lib/tevra/ScanInputData.txt", storeAppSettingsPath().string());
  variable.set("");
  EXPECT_EQ("/var/lib/tevra/ScanInputData.txt", storeAppSettingsPath().string());
}

class TempFileName : public testing::Test {
 protected:
  std::wstring folder() const { return wideFromUtf8(folder_.path().string()); }

  ScratchFolder folder_;
  std::array<wchar_t, 260> name_ = {};
};

TEST_F(TempFileName, BeginsWithThreeLettersOfThePrefix) {
  EXPECT_NE(0U, GetTempFileNameW(folder().c_str(), L"aster_", 0, name_.data()));
  const std::filesystem::path file = utf8FromWide(name_.data());
  EXPECT_EQ(folder_.path(), file.parent_path());
  EXPECT_EQ("ast", file.filename().string().substr(0, 3));
  EXPECT_FALSE(file.filename().string().starts_with("aster_"));
  EXPECT_EQ(".tmp", file.extension());
}

TEST_F(TempFileName, MakesAnEmptyPrivateFile) {
  EXPECT_NE(0U, GetTempFileNameW(folder().c_str(), L"abc", 0, name_.data()));
  struct stat status = {};
  ASSERT_EQ(0, ::stat(utf8FromWide(name_.data()).c_str(), &status));
  EXPECT_EQ(0, status.st_size);
  EXPECT_EQ(0U, status.st_mode & 0077U);
}

TEST_F(TempFileName, IsNewEachTime) {
  std::set<std::wstring> names;
  for (int i = 0; i < 50; ++i) {
    EXPECT_NE(0U, GetTempFileNameW((folder() + L"/").c_str(), L"abc", 0, name_.data()));
    names.insert(name_.data());
  }
  EXPECT_EQ(50U, names.size());
}

TEST_F(TempFileName, GivenNumberIsUsedAndNoFileMade) {
  EXPECT_EQ(0xABCU, GetTempFileNameW(folder().c_str(), L"x", 0xABC, name_.data()));
  EXPECT_EQ(folder() + L"/xabc.tmp", name_.data());
  EXPECT_FALSE(std::filesystem::exists(utf8FromWide(name_.data())));
}

TEST_F(TempFileName, PrefixCannotLeaveTheFolder) {
  EXPECT_NE(0U, GetTempFileNameW(folder().c_str(), L"../x", 0, name_.data()));
  EXPECT_EQ(folder_.path(), std::filesystem::path(utf8FromWide(name_.data())).parent_path());
}

TEST_F(TempFileName, FailuresSetALastErrorAndLeaveTheNameAlone) {
  EXPECT_EQ(0U, GetTempFileNameW((folder() + L"/none").c_str(), L"x", 0, name_.data()));
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, GetLastError());
  const std::wstring longFolder = L"/" + std::wstring(255, L'd');
  EXPECT_EQ(0U, GetTempFileNameW(longFolder.c_str(), L"x", 0, name_.data()));
  EXPECT_EQ(kErrorBufferOverflow, GetLastError());
  EXPECT_EQ(0U, GetTempFileNameW(nullptr, L"x", 0, name_.data()));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
  EXPECT_EQ(L'\0', name_[0]);
}

class FileCalls : public testing::Test {
 protected:
  std::wstring name(const std::string& file) const { return wideFromUtf8(folder_ / file); }

  ScratchFolder folder_;
};

TEST_F(FileCalls, DeleteRemovesTheFile) {
  writeFile(folder_ / "\xC3\xA4", "x");
  EXPECT_NE(0, DeleteFileW(name("\xC3\xA4").c_str()));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "\xC3\xA4"));
  EXPECT_EQ(0, DeleteFileW(name("\xC3\xA4").c_str()));
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, GetLastError());
  EXPECT_EQ(0, DeleteFileW(nullptr));
}

TEST_F(FileCalls, BackslashSeparatesFolders) {
  writeFile(folder_ / "sub/file", "x");
  EXPECT_NE(0, DeleteFileW((name("sub") + L"\\file").c_str()));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "sub/file"));
}

TEST_F(FileCalls, CopyCopiesEveryByte) {
  std::string content(200'001, '\0');
  for (std::size_t i = 0; i < content.size(); ++i)
    content[i] = static_cast<char>(i * 31 / 7);
  writeFile(folder_ / "from", content);
  writeFile(folder_ / "to", std::string(300'000, 'o'));
  EXPECT_NE(0, CopyFileW(name("from").c_str(), name("to").c_str(), 0));
  EXPECT_TRUE(fileText(folder_ / "to") == content);
}

TEST_F(FileCalls, CopyRefusesAnExistingFileWhenTold) {
  writeFile(folder_ / "from", "new");
  writeFile(folder_ / "to", "old");
  EXPECT_EQ(0, CopyFileW(name("from").c_str(), name("to").c_str(), 1));
  EXPECT_EQ(kErrorFileExists, GetLastError());
  EXPECT_EQ("old", fileText(folder_ / "to"));
}

TEST_F(FileCalls, CopyOntoItselfKeepsTheFile) {
  writeFile(folder_ / "file", "content");
  EXPECT_EQ(0, CopyFileW(name("file").c_str(), name("file").c_str(), 0));
  EXPECT_EQ(kErrorSharingViolation, GetLastError());
  EXPECT_EQ("content", fileText(folder_ / "file"));
}

TEST_F(FileCalls, CopyOfNothingFails) {
  EXPECT_EQ(0, CopyFileW(name("none").c_str(), name("to").c_str(), 0));
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, GetLastError());
  EXPECT_FALSE(std::filesystem::exists(folder_ / "to"));
  EXPECT_EQ(0, CopyFileW(wideFromUtf8(folder_.path().string()).c_str(), name("to").c_str(), 0));
  EXPECT_EQ(ERROR_ACCESS_DENIED, GetLastError());
}

TEST(PathSeparator, IsASlash) {
  EXPECT_EQ(L'/', kPathSeparator);
}

struct TextCase {
  const char* name;
  std::string narrow;
  std::wstring wide;
};

const TextCase kValidTexts[] = {
    {"empty", "", L""},
    {"one byte", bytes({0x41, 0x7F}), L"A\x7F"},
    {"two bytes", bytes({0xC2, 0x80, 0xDF, 0xBF}), L"\x80\x7FF"},
    {"three bytes", bytes({0xE0, 0xA0, 0x80, 0xED, 0x9F, 0xBF, 0xEE, 0x80, 0x80, 0xEF, 0xBF, 0xBF}),
     L"\x800\xD7FF\xE000\xFFFF"},
    {"four bytes", bytes({0xF0, 0x90, 0x80, 0x80, 0xF4, 0x8F, 0xBF, 0xBF}), L"\x10000\x10FFFF"},
};

TEST(Utf8, ValidTextConvertsBothWays) {
  for (const TextCase& row : kValidTexts) {
    EXPECT_EQ(row.wide, wideFromUtf8(row.narrow)) << row.name;
    EXPECT_EQ(row.narrow, utf8FromWide(row.wide)) << row.name;
  }
}

const TextCase kBrokenTexts[] = {
    {"stray continuation", bytes({0x80, 'a'}),
     L"\xFFFD"
     L"a"},
    {"overlong slash", bytes({0xC0, 0xAF}), L"\xFFFD\xFFFD"},
    {"overlong three", bytes({0xE0, 0x80, 0xAF}), L"\xFFFD\xFFFD\xFFFD"},
    {"surrogate", bytes({0xED, 0xA0, 0x80}), L"\xFFFD\xFFFD\xFFFD"},
    {"beyond the last", bytes({0xF4, 0x90, 0x80, 0x80}), L"\xFFFD\xFFFD\xFFFD\xFFFD"},
    {"cut at the end", bytes({'a', 0xE2, 0x82}), L"a\xFFFD"},
    {"cut by a letter", bytes({0xF0, 0x9F, 0x98, 'a'}),
     L"\xFFFD"
     L"a"},
    {"no lead byte", bytes({0xFF, 0xFE}), L"\xFFFD\xFFFD"},
};

TEST(Utf8, BrokenBytesBecomeReplacementCharacters) {
  for (const TextCase& row : kBrokenTexts) {
    EXPECT_EQ(row.wide, wideFromUtf8(row.narrow)) << row.name;
  }
}

TEST(Utf8, WideCharactersThatAreNoneBecomeReplacementCharacters) {
  for (const std::uint32_t code : {0xD800U, 0xDFFFU, 0x110000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(bytes({0xEF, 0xBF, 0xBD}), utf8FromWide(std::wstring(1, static_cast<wchar_t>(code))));
  }
}

TEST(CodePage, LengthOfMinusOneTakesTheTerminatorAlong) {
  std::array<wchar_t, 8> wide = {};
  EXPECT_EQ(3, MultiByteToWideChar(CP_ACP, 0,
                                   "\xC3\xA4"
                                   "b",
                                   -1, nullptr, 0));
  EXPECT_EQ(3, MultiByteToWideChar(CP_ACP, 0,
                                   "\xC3\xA4"
                                   "b",
                                   -1, wide.data(), 8));
  EXPECT_STREQ(L"\u00E4b", wide.data());
  std::array<char, 8> narrow = {};
  EXPECT_EQ(4, WideCharToMultiByte(CP_UTF8, 0, L"\u00E4b", -1, nullptr, 0, nullptr, nullptr));
  EXPECT_EQ(4, WideCharToMultiByte(CP_UTF8, 0, L"\u00E4b", -1, narrow.data(), 8, nullptr, nullptr));
  EXPECT_STREQ(
      "\xC3\xA4"
      "b",
      narrow.data());
}

TEST(CodePage, GivenLengthTakesThatMuchAndNoTerminator) {
  std::array<wchar_t, 4> wide = {L'u', L'u', L'u', L'u'};
  EXPECT_EQ(2, MultiByteToWideChar(CP_UTF8, 0, "abcd", 2, wide.data(), 4));
  EXPECT_EQ((std::array<wchar_t, 4>{L'a', L'b', L'u', L'u'}), wide);
  std::array<char, 4> narrow = {'u', 'u', 'u', 'u'};
  // A zero inside the length is a character like any other.
  EXPECT_EQ(3, WideCharToMultiByte(CP_UTF8, 0, L"a\0b", 3, narrow.data(), 4, nullptr, nullptr));
  EXPECT_EQ((std::array<char, 4>{'a', '\0', 'b', 'u'}), narrow);
}

TEST(CodePage, TooSmallATargetStaysUntouched) {
  std::array<wchar_t, 2> wide = {L'u', L'u'};
  EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, "abc", 3, wide.data(), 2));
  EXPECT_EQ(ERROR_INSUFFICIENT_BUFFER, GetLastError());
  EXPECT_EQ(L'u', wide[0]);
  std::array<char, 2> narrow = {'u', 'u'};
  EXPECT_EQ(0, WideCharToMultiByte(CP_UTF8, 0, L"\u20AC", 1, narrow.data(), 2, nullptr, nullptr));
  EXPECT_EQ(ERROR_INSUFFICIENT_BUFFER, GetLastError());
  EXPECT_EQ('u', narrow[0]);
}

TEST(CodePage, ArgumentsThatMakeNoSenseFail) {
  std::array<wchar_t, 2> wide = {};
  std::array<char, 2> narrow = {};
  EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, "a", 0, wide.data(), 2));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
  EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, nullptr, 1, wide.data(), 2));
  EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, "a", -2, wide.data(), 2));
  EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, "a", 1, nullptr, 2));
  EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, "a", 1, wide.data(), -1));
  EXPECT_EQ(0, MultiByteToWideChar(1252, 0, "a", 1, wide.data(), 2));
  EXPECT_EQ(0, WideCharToMultiByte(CP_UTF8, 0, L"a", 0, narrow.data(), 2, nullptr, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
  EXPECT_EQ(0, WideCharToMultiByte(CP_UTF8, 8, L"a", 1, narrow.data(), 2, nullptr, nullptr));
  EXPECT_EQ(kErrorInvalidFlags, GetLastError());
}

std::wstring accountName() {
  const passwd* const entry = ::getpwuid(::geteuid());
  return entry != nullptr ? wideFromUtf8(entry->pw_name) : L"";
}

TEST(Identity, UserNameIsCountedWithItsTerminator) {
  const std::wstring expected = accountName();
  ASSERT_FALSE(expected.empty());
  const auto needed = static_cast<DWORD>(expected.size() + 1);
  std::array<wchar_t, 300> name = {};
  DWORD size = needed;
  EXPECT_NE(0, GetUserNameW(name.data(), &size));
  EXPECT_EQ(expected, name.data());
  EXPECT_EQ(needed, size);
}

TEST(Identity, UserNameThatDoesNotFitLeavesTheBufferAlone) {
  std::array<wchar_t, 300> name = {L'u'};
  const auto needed = static_cast<DWORD>(accountName().size() + 1);
  DWORD size = needed - 1;
  EXPECT_EQ(0, GetUserNameW(name.data(), &size));
  EXPECT_EQ(ERROR_INSUFFICIENT_BUFFER, GetLastError());
  EXPECT_EQ(needed, size);
  EXPECT_EQ(L'u', name[0]);
  EXPECT_EQ(0, GetUserNameW(name.data(), nullptr));
}

TEST(Identity, ComputerNameIsCountedWithoutItsTerminator) {
  std::array<char, 257> host = {};
  ASSERT_EQ(0, ::gethostname(host.data(), 256));
  const std::wstring expected = wideFromUtf8(host.data());
  const auto length = static_cast<DWORD>(expected.size());
  std::array<wchar_t, 300> name = {};
  DWORD size = length + 1;
  EXPECT_NE(0, GetComputerNameW(name.data(), &size));
  EXPECT_EQ(expected, name.data());
  EXPECT_EQ(length, size);

  name = {L'u'};
  size = length;
  EXPECT_EQ(0, GetComputerNameW(name.data(), &size));
  EXPECT_EQ(kErrorBufferOverflow, GetLastError());
  EXPECT_EQ(length + 1, size);
  EXPECT_EQ(L'u', name[0]);
}

unsigned raiseFlag(void* flag) {
  static_cast<std::atomic<bool>*>(flag)->store(true);
  return 0;
}

TEST(Threads, StartedThreadRunsAlsoWhenItsHandleIsClosed) {
  static std::atomic<bool> ran = false;
  unsigned id = 0;
  const std::uintptr_t thread = _beginthreadex(nullptr, 0, &raiseFlag, &ran, 0, &id);
  ASSERT_NE(0U, thread);
  EXPECT_NE(0U, id);
  EXPECT_NE(0, CloseHandle(reinterpret_cast<HANDLE>(thread)));
  for (int i = 0; i < 1000 && !ran; ++i)
    Sleep(5);
  EXPECT_TRUE(ran);
}

TEST(Threads, ThreadThatCannotStartAsAskedIsNotStarted) {
  EXPECT_EQ(0U, _beginthreadex(nullptr, 0, nullptr, nullptr, 0, nullptr));
  constexpr unsigned kSuspended = 4;
  EXPECT_EQ(0U, _beginthreadex(nullptr, 0, &raiseFlag, nullptr, kSuspended, nullptr));
}

TEST(Threads, SleepLastsAtLeastItsTime) {
  const auto start = std::chrono::steady_clock::now();
  Sleep(30);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

}  // namespace
}  // namespace tvrscn::test
