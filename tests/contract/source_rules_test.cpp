// Rules of the source tree that no compiler keeps: which files may ask for the system, and which
// may include its headers.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
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

using LineTest = std::function<bool(std::string_view line)>;

// "file:number: line" of each line that a test is true for.
Lines matches(const Lines& files, const LineTest& test) {
  Lines found;
  for (const std::string& file : files) {
    std::ifstream in(fs::path(TVRSCN_ROOT) / file);
    int number = 0;
    for (std::string line; std::getline(in, line);) {
      ++number;
      if (test(line)) found.push_back(file + ":" + std::to_string(number) + ": " + line);
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

// What stands behind a directive, such as "include" or "if"; nothing for other lines.
std::string_view behindDirective(std::string_view line, std::string_view directive) {
  constexpr std::string_view kBlank = " \t";
  const auto skipBlank = [&line, kBlank] {
    line.remove_prefix(std::min(line.find_first_not_of(kBlank), line.size()));
  };
  skipBlank();
  if (!line.starts_with('#')) return {};
  line.remove_prefix(1);
  skipBlank();
  if (!line.starts_with(directive)) return {};
  line.remove_prefix(directive.size());
  skipBlank();
  return line;
}

bool asksForTheSystem(std::string_view line) {
  const std::string_view kDirectives[] = {"if", "elif"};  // and what begins so: ifdef, ifndef ...
  const std::string_view kNames[] = {"WIN32",     "WIN64",   "__linux",  "__unix",
                                     "__APPLE__", "__MINGW", "_MSC_VER", "__CYGWIN__"};
  for (const std::string_view directive : kDirectives) {
    const std::string_view condition = behindDirective(line, directive);
    for (const std::string_view name : kNames) {
      if (condition.find(name) != std::string_view::npos) return true;
    }
  }
  return false;
}

bool includesAnyOf(std::string_view line, std::initializer_list<std::string_view> beginnings) {
  const std::string_view header = behindDirective(line, "include");
  return std::any_of(beginnings.begin(), beginnings.end(), [header](std::string_view beginning) {
    return header.starts_with(beginning);
  });
}

bool includesASystemHeader(std::string_view line) {
  return includesAnyOf(
      line, {"<unistd.h", "<fcntl.h",  "<dirent.h",  "<dlfcn.h",   "<poll.h",     "<pthread.h",
             "<pwd.h",    "<signal.h", "<termios.h", "<spawn.h",   "<sys/",       "<arpa/",
             "<net/",     "<netinet/", "<linux/",    "<windows.h", "<winsock",    "<setupapi.h",
             "<shlobj.h", "<gdiplus",  "<process.h", "<poll.h",    "<semaphore.h"});
}

TEST(SourceRules, TestsFindWhatTheyAreFor) {
  EXPECT_TRUE(asksForTheSystem("#if defined(_WIN32)"));
  EXPECT_TRUE(asksForTheSystem("  #  ifdef __linux__"));
  EXPECT_TRUE(asksForTheSystem("#ifndef _WIN64"));
  EXPECT_TRUE(asksForTheSystem("#elif defined(_MSC_VER)"));
  EXPECT_FALSE(asksForTheSystem("#ifndef TVRSCN_TYPES_H"));
  EXPECT_FALSE(asksForTheSystem("// #if defined(_WIN32)"));
  EXPECT_TRUE(includesASystemHeader("#include <sys/socket.h>"));
  EXPECT_TRUE(includesASystemHeader("# include <windows.h>"));
  EXPECT_FALSE(includesASystemHeader("#include <cstdint>"));
  EXPECT_FALSE(includesASystemHeader("#include \"platform/files.h\""));
}

TEST(SourceRules, OnlyThePlatformAsksWhichSystemThisIs) {
  const Lines files =
      without(sourcesIn({"include", "src", "virtual", "tools", "tests", "bench"}),
              {"src/platform/", "include/tvrscn/export.h", "include/tvrscn/types.h"});
  ASSERT_FALSE(files.empty());
  EXPECT_EQ(matches(files, asksForTheSystem), Lines{});
}

TEST(SourceRules, OnlyThePlatformIncludesSystemHeaders) {
  const Lines files =
      without(sourcesIn({"include", "src"}), {"src/platform/", "include/tvrscn/types.h"});
  ASSERT_FALSE(files.empty());
  EXPECT_EQ(matches(files, includesASystemHeader), Lines{});
}

TEST(SourceRules, CoreIncludesNoImplementationOfThePlatform) {
  const Lines files = without(sourcesIn({"include", "src"}), {"src/platform/"});
  EXPECT_EQ(matches(files,
                    [](std::string_view line) {
                      return includesAnyOf(line,
                                           {"\"platform/posix/", "\"platform/windows/",
                                            "\"platform/tevrautil/", "\"platform/tdspclient/"});
                    }),
            Lines{});
}

TEST(SourceRules, FamiliesKnowNothingOfEachOther) {
  for (const auto& entry : fs::directory_iterator(fs::path(TVRSCN_ROOT) / "src")) {
    const std::string folder = entry.path().filename().string();
    if (!folder.starts_with("family_")) continue;
    EXPECT_EQ(matches(sourcesIn({"src/" + folder}),
                      [&folder](std::string_view line) {
                        return includesAnyOf(line, {"\"family_"}) &&
                               !includesAnyOf(line, {"\"" + folder + "/"});
                      }),
              Lines{});
  }
}

TEST(SourceRules, PlatformKnowsNothingAboveIt) {
  EXPECT_EQ(
      matches(sourcesIn({"src/platform"}),
              [](std::string_view line) {
                return includesAnyOf(line, {"\"client/", "\"usb/", "\"catalogue/", "\"family_"});
              }),
      Lines{});
}

}  // namespace
