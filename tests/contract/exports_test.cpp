// The symbols of the built libraries against the pinned lists: nothing is missing for a driver, and
// nothing leaves that is not promised. A symbol belongs into a list when it becomes a promise.
#include <array>
#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

using Names = std::set<std::string>;

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
    text.replace(at, from.size(), to);
    at += to.size();
  }
  return text;
}

// Strings as people write them, without the mark of functions that return one.
std::string readable(std::string name) {
  name = replaceAll(name, "[abi:cxx11]", "");
  for (const char* space : {"std::__cxx11::", "std::"}) {
    const std::string basic = std::string(space) + "basic_string<";
    name = replaceAll(name, basic + "char, std::char_traits<char>, std::allocator<char> >",
                      "std::string");
    name = replaceAll(name, basic + "wchar_t, std::char_traits<wchar_t>, std::allocator<wchar_t> >",
                      "std::wstring");
  }
  return name;
}

std::string outputOf(const std::string& command) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string output;
  std::array<char, 4096> part{};
  while (pipe != nullptr) {
    const std::size_t length = std::fread(part.data(), 1, part.size(), pipe.get());
    if (length == 0) break;
    output.append(part.data(), length);
  }
  return output;
}

// Lines of nm are an address, a letter and the name.
Names exportsOf(const std::string& library) {
  Names names;
  std::istringstream lines(
      outputOf(std::string("'" TVRSCN_NM "' -D --defined-only --demangle '") + library + "'"));
  for (std::string line; std::getline(lines, line);) {
    const std::size_t start = line.find_first_not_of("0123456789abcdef");
    if (start == std::string::npos || line.size() < start + 3) continue;
    const std::string name = readable(line.substr(start + 3));
    // Bookkeeping of the sanitizers.
    if (name.starts_with("__odr_asan")) continue;
    names.insert(name);
  }
  return names;
}

Names pinned(const std::string& file) {
  Names names;
  std::ifstream in(TVRSCN_CONTRACT_LISTS "/" + file);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line[0] != '#') names.insert(line);
  }
  return names;
}

Names difference(const Names& all, const Names& taken) {
  Names rest;
  for (const std::string& name : all) {
    if (!taken.contains(name)) rest.insert(name);
  }
  return rest;
}

struct Library {
  const char* name;
  const char* path;
  const char* list;
};

class Exports : public ::testing::TestWithParam<Library> {};

TEST_P(Exports, EveryPromisedSymbolIsThere) {
  const Names promised = pinned(GetParam().list);
  ASSERT_FALSE(promised.empty());
  EXPECT_EQ(difference(promised, exportsOf(GetParam().path)), Names{});
}

TEST_P(Exports, NothingElseLeaves) {
  const Names exported = exportsOf(GetParam().path);
  ASSERT_FALSE(exported.empty());
  EXPECT_EQ(difference(exported, pinned(GetParam().list)), Names{});
}

const Library kLibraries[] = {
    {"USBClient", TVRSCN_USBCLIENT_FILE, "exports-linux.txt"},
    {"tevrautil", TVRSCN_TEVRAUTIL_FILE, "exports-tevrautil-linux.txt"},
    {"TDSPClient", TVRSCN_TDSPCLIENT_FILE, "exports-TDSPClient-linux.txt"},
};

INSTANTIATE_TEST_SUITE_P(Each, Exports, ::testing::ValuesIn(kLibraries),
                         [](const auto& library) { return std::string(library.param.name); });

// The size of an exported object, 0 when there is none of that name. Lines of nm are address, size,
// letter and name here.
unsigned long exportedSize(const std::string& library, const std::string& symbol) {
  std::istringstream lines(outputOf("'" TVRSCN_NM "' -D -S --defined-only '" + library + "'"));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string address;
    std::string size;
    std::string letter;
    std::string name;
    if (words >> address >> size >> letter >> name && name == symbol) {
      return std::stoul(size, nullptr, 16);
    }
  }
  return 0;
}

// Instrumentation pads the tables, so their sizes are those of the library that people get alone.
#ifndef TVRSCN_INSTRUMENTED

// Of a class whose destructor is its only virtual function, the table holds two words of
// bookkeeping and the two forms of the destructor.
TEST(ExportedTables, SettingsSourcesHaveOnlyTheirDestructor) {
  for (const char* table : {"_ZTV18CUSBScanDataSource", "_ZTV20CHPUSBScanDataSource",
                            "_ZTV24CLowEndUSBScanDataSource", "_ZTV20CQZUSBScanDataSource"}) {
    EXPECT_EQ(exportedSize(TVRSCN_USBCLIENT_FILE, table), 4 * sizeof(void*)) << table;
  }
}

// Two words, the destructor's two forms, and one slot for each further virtual function.
TEST(ExportedTables, QZControllerHasItsVirtualFunctionsAlone) {
  constexpr unsigned long kFunctions = 23;
  EXPECT_EQ(exportedSize(TVRSCN_USBCLIENT_FILE, "_ZTV17USB_QZ_Controller"),
            (4 + kFunctions) * sizeof(void*));
}

#endif  // TVRSCN_INSTRUMENTED

// Programs look it up by name.
TEST(ExportedFunctions, StoreApplicationsEntryIsUndecorated) {
  EXPECT_NE(exportedSize(TVRSCN_USBCLIENT_FILE, "scanFromStoreApp"), 0U);
}

}  // namespace
