// What Windows needs beyond the system itself: log file, string resources, paths.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/modules.h"
#include "tests/support/temporary_folder.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"
#include "tvrscn/tevrautil/named_mutex.h"
#include "tvrscn/tevrautil/tevra_logger.h"

namespace tvrscn::test {
namespace {

std::string textOf(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class LogFile : public testing::Test {
 protected:
  ~LogFile() override { SetEnvironmentVariableW(L"TVRSCN_LOG", nullptr); }

  void logTo(const std::filesystem::path& path) {
    SetEnvironmentVariableW(L"TVRSCN_LOG", path.c_str());
  }
  // The environment is empty and the file closed, so that it can be removed.
  void logToNothing() {
    SetEnvironmentVariableW(L"TVRSCN_LOG", nullptr);
    write(L"closes the file");
  }
  void write(const wchar_t* line) { CTevraLogger::GetLogInstance()->WriteToLog(line); }

  TemporaryFolder folder_;
};

TEST_F(LogFile, LinesAreAppendedAsUtf8) {
  const auto file = folder_.path() / L"log \u00e4.txt";
  logTo(file);
  write(L"first");
  write(L"caf\u00e9 \u20ac\n");
  write(L"two\r\nlines");
  logToNothing();
  EXPECT_EQ("first\ncaf\xC3\xA9 \xE2\x82\xAC\ntwo  lines\n", textOf(file));
}

TEST_F(LogFile, ExistingFileIsKept) {
  const auto file = folder_.path() / "log.txt";
  writeFile(file, "before\n");
  logTo(file);
  write(L"after");
  logToNothing();
  EXPECT_EQ("before\nafter\n", textOf(file));
}

TEST_F(LogFile, FollowsTheVariableFromLineToLine) {
  logTo(folder_.path() / "one.txt");
  write(L"1");
  logTo(folder_.path() / "two.txt");
  write(L"2");
  logToNothing();
  EXPECT_EQ("1\n", textOf(folder_.path() / "one.txt"));
  EXPECT_EQ("2\n", textOf(folder_.path() / "two.txt"));
}

TEST_F(LogFile, FileThatCannotBeWrittenLosesTheLineAlone) {
  logTo(folder_.path());  // a folder
  SetLastError(1234);
  write(L"lost");
  EXPECT_EQ(1234U, GetLastError());
}

struct MessageRow {
  unsigned resource;
  std::wstring CErrorCodeDictionary::*field;
};

const MessageRow kMessages[] = {
    {101, &CErrorCodeDictionary::m_strScannerBusy},
    {102, &CErrorCodeDictionary::m_strDeviceError},
    {103, &CErrorCodeDictionary::m_strGeneralError},
    {104, &CErrorCodeDictionary::m_strJobCancelled},
    {105, &CErrorCodeDictionary::m_strNoDocument},
    {106, &CErrorCodeDictionary::m_strInvalidRequest},
    {107, &CErrorCodeDictionary::m_strPaperJam},
    {108, &CErrorCodeDictionary::m_strCommFailure},
    {109, &CErrorCodeDictionary::m_strTitle},
    {110, &CErrorCodeDictionary::m_strCommFailureTitle},
    {111, &CErrorCodeDictionary::m_strCoverOpen},
    {112, &CErrorCodeDictionary::m_strPaperJamTitle},
};

TEST(StringResources, LibraryCarriesTheTwelveTexts) {
  const HMODULE library = GetModuleHandleW(L"tvrscn_tevrautil.dll");
  ASSERT_NE(nullptr, library);
  CErrorCodeDictionary builtIn;
  builtIn.InitExceptionStrings(nullptr);
  CErrorCodeDictionary loaded;
  loaded.InitExceptionStrings(library);
  for (const MessageRow& row : kMessages) {
    const std::wstring text = moduleString(library, row.resource);
    EXPECT_FALSE(text.empty()) << row.resource;
    EXPECT_EQ(builtIn.*row.field, text) << row.resource;
    EXPECT_EQ(text, loaded.*row.field) << row.resource;
  }
  EXPECT_EQ(L"Paper jam", moduleString(library, 112));
  EXPECT_EQ(L"", moduleString(library, 100));
  EXPECT_EQ(L"", moduleString(library, 113));
}

TEST(StringResources, ModuleWithoutTextsLeavesTheBuiltInOnes) {
  CErrorCodeDictionary dictionary;
  dictionary.InitExceptionStrings(GetModuleHandleW(nullptr));
  EXPECT_EQ(L"Paper jam", dictionary.m_strPaperJamTitle);
  EXPECT_EQ(L"", moduleString(nullptr, 112));
}

TEST(NamedMutexOwner, TwoObjectsOfOneThreadExcludeEachOther) {
  auto first = std::make_unique<XMutex>(L"tvrscn-one-thread");
  XMutex second(L"tvrscn-one-thread");
  EXPECT_TRUE(first->WaitWithRetry(0, 1));
  EXPECT_TRUE(first->WaitWithRetry(0, 1));
  EXPECT_FALSE(second.WaitWithRetry(5, 2));
  first.reset();
  EXPECT_TRUE(second.WaitWithRetry(0, 1));
}

TEST(NamedMutexOwner, AnotherThreadMayGiveTheMutexUp) {
  auto first = std::make_unique<XMutex>(L"tvrscn-two-threads");
  ASSERT_TRUE(first->WaitWithRetry(0, 1));
  std::thread([&first] { first.reset(); }).join();
  XMutex second(L"tvrscn-two-threads");
  EXPECT_TRUE(second.WaitWithRetry(0, 1));
}

TEST(NamedMutexOwner, WaitingObjectGetsTheMutexWhenItIsGivenUp) {
  auto first = std::make_unique<XMutex>(L"tvrscn-waiting");
  ASSERT_TRUE(first->WaitWithRetry(0, 1));
  std::thread releasing([&first] {
    Sleep(50);
    first.reset();
  });
  XMutex second(L"tvrscn-waiting");
  EXPECT_TRUE(second.WaitWithRetry(5000, 1));
  releasing.join();
}

TEST(NamedMutexOwner, NameOfAnotherObjectIsNoMutex) {
  const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, L"tvrscn-no-mutex");
  ASSERT_NE(nullptr, event);
  XMutex mutex(L"tvrscn-no-mutex");
  EXPECT_FALSE(mutex.WaitWithRetry(0, 1));
  CloseHandle(event);
}

TEST(Paths, AreTheSystemsOwn) {
  EXPECT_EQ(L'\\', kPathSeparator);
  EXPECT_EQ(L"C:\\a\\caf\u00e9.jpg", systemPath(L"C:\\a\\caf\u00e9.jpg").wstring());
  EXPECT_EQ(L"C:\\ProgramData\\Tevra\\ScanInputData.txt", storeAppSettingsPath().wstring());
}

}  // namespace
}  // namespace tvrscn::test
