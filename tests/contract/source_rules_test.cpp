// Rules of the source tree that no compiler keeps: which files may ask for the system, and which
// may include its headers.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

// Sources below the given folders, as paths from the root.
Lines sourcesIn(const Lines& folders) {
  Lines files;
  for (const std::string& folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(TVRSCN_ROOT) / folder)) {
      const std::string extension = entry.path().extension().string();
      if (extension == ".h" || extension == ".cpp" || extension == ".c") {
        files.push_back(fs::relative(entry.path(), TVRSCN_ROOT).generic_string());
      }
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

// "file:number: line" of each line that matches.
Lines matches(const Lines& files, const std::regex& pattern) {
  Lines found;
  for (const std::string& file : files) {
    std::ifstream in(fs::path(TVRSCN_ROOT) / file);
    int number = 0;
    for (std::string line; std::getline(in, line);) {
      ++number;
      if (std::regex_search(line, pattern)) {
        found.push_back(file + ":" + std::to_string(number) + ": " + line);
      }
    }
  }
  return found;
}

Lines without(const Lines& files, const Lines& prefixes) {
  Lines rest;
  std::copy_if(files.begin(), files.end(), std::back_inserter(rest), [&](const std::string& file) {
    return std::none_of(prefixes.begin(), prefixes.end(),
                        [&](const std::string& prefix) { return file.starts_with(prefix); });
  });
  return rest;
}

const std::regex kSystemCondition(
    R"(^\s*#\s*(if|ifdef|ifndef|elif|elifdef)\b.*\b(_WIN32|_WIN64|WIN32|__linux__|__linux|__unix__|__APPLE__|__MINGW32__|__MINGW64__|_MSC_VER|__CYGWIN__)\b)");
const std::regex kSystemHeader(
    R"(^\s*#\s*include\s*<(unistd\.h|fcntl\.h|dirent\.h|dlfcn\.h|poll\.h|pthread\.h|pwd\.h|signal\.h|termios\.h|spawn\.h|sys/|arpa/|net/|netinet/|linux/|windows\.h|winsock|setupapi\.h|shlobj\.h|gdiplus|process\.h))");

TEST(SourceRules, PatternsFindWhatTheyAreFor) {
  EXPECT_TRUE(std::regex_search("#if defined(_WIN32)", kSystemCondition));
  EXPECT_TRUE(std::regex_search("  #ifdef __linux__", kSystemCondition));
  EXPECT_TRUE(std::regex_search("#elif defined(_MSC_VER)", kSystemCondition));
  EXPECT_FALSE(std::regex_search("#ifndef TVRSCN_TYPES_H", kSystemCondition));
  EXPECT_TRUE(std::regex_search("#include <sys/socket.h>", kSystemHeader));
  EXPECT_TRUE(std::regex_search("#include <windows.h>", kSystemHeader));
  EXPECT_FALSE(std::regex_search("#include <cstdint>", kSystemHeader));
}

TEST(SourceRules, OnlyThePlatformAsksWhichSystemThisIs) {
  const Lines files =
      without(sourcesIn({"include", "src", "virtual", "tools", "tests", "bench"}),
              {"src/platform/", "include/tvrscn/export.h", "include/tvrscn/types.h"});
  ASSERT_FALSE(files.empty());
  EXPECT_EQ(matches(files, kSystemCondition), Lines{});
}

TEST(SourceRules, OnlyThePlatformIncludesSystemHeaders) {
  const Lines files =
      without(sourcesIn({"include", "src"}), {"src/platform/", "include/tvrscn/types.h"});
  ASSERT_FALSE(files.empty());
  EXPECT_EQ(matches(files, kSystemHeader), Lines{});
}

TEST(SourceRules, CoreIncludesNoImplementationOfThePlatform) {
  const Lines files = without(sourcesIn({"include", "src"}), {"src/platform/"});
  EXPECT_EQ(matches(files,
                    std::regex(R"(#\s*include\s*"platform/(posix|windows|tevrautil|tdspclient)/)")),
            Lines{});
}

TEST(SourceRules, FamiliesKnowNothingOfEachOther) {
  for (const char* family : {"hp", "qz", "lowend"}) {
    const std::string folder = std::string("src/family_") + family;
    if (!fs::exists(fs::path(TVRSCN_ROOT) / folder)) continue;
    const std::regex other(std::string(R"(#\s*include\s*"family_(?!)") + family + "/)");
    EXPECT_EQ(matches(sourcesIn({folder}), other), Lines{});
  }
}

TEST(SourceRules, PlatformKnowsNothingAboveIt) {
  EXPECT_EQ(matches(sourcesIn({"src/platform"}),
                    std::regex(R"(#\s*include\s*"(client|usb|catalogue|family_\w+)/)")),
            Lines{});
}

}  // namespace
