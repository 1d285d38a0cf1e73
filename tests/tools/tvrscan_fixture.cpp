#include "tvrscan_fixture.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <stdlib.h>

namespace tvrscn::test {

namespace fs = std::filesystem;

TvrscanTest::TvrscanTest() {
  std::string name = (fs::temp_directory_path() / "tvrscan-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  folder_ = name;
  fs::create_directory(devices());
  fs::create_directory(temporary());
}

TvrscanTest::~TvrscanTest() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

std::unique_ptr<Process> TvrscanTest::startProgram(const std::vector<std::string>& command) const {
  return std::make_unique<Process>(command,
                                   Environment{{"TVRSCN_DEVICE_PATH", devices().string()},
                                               {"TVRSCN_PROGRAM_DATA", programData().string()},
                                               {"XDG_RUNTIME_DIR", folder_.string()},
                                               {"TMPDIR", temporary().string()},
                                               {"TVRSCN_LOG", ""}});
}

std::unique_ptr<Process> TvrscanTest::start(const std::vector<std::string>& arguments) const {
  std::vector<std::string> command = {TVRSCAN_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return startProgram(command);
}

std::unique_ptr<Process> TvrscanTest::startScan(const std::vector<std::string>& arguments,
                                                const std::string& family) const {
  std::vector<std::string> command = {"scan", "--virtual", family,        "--resolution",
                                      "75",   "--size",    "50x60mm",     "--mode",
                                      "gray", "--out",     out().string()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return start(command);
}

std::vector<std::string> TvrscanTest::names(const fs::path& folder) {
  std::vector<std::string> list;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    list.push_back(entry.path().filename().string());
  }
  std::sort(list.begin(), list.end());
  return list;
}

void TvrscanTest::expectNothingLeft() const {
  EXPECT_EQ(names(temporary()), std::vector<std::string>{});
  for (const std::string& name : names(out()))
    EXPECT_NE(name.front(), '.') << name;
}

std::string readText(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + file.string());
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

void writeText(const fs::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

}  // namespace tvrscn::test
