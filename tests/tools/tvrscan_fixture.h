// tvrscan in a folder of its own, far from the user's devices and temporary files.
#ifndef TVRSCN_TESTS_TOOLS_TVRSCAN_FIXTURE_H
#define TVRSCN_TESTS_TOOLS_TVRSCAN_FIXTURE_H

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "process.h"

namespace tvrscn::test {

class TvrscanTest : public testing::Test {
 protected:
  TvrscanTest();
  ~TvrscanTest() override;

  std::filesystem::path out() const { return folder_ / "out"; }
  std::filesystem::path devices() const { return folder_ / "devices"; }
  std::filesystem::path temporary() const { return folder_ / "t"; }

  // Where a store application leaves its settings.
  std::filesystem::path programData() const { return folder_ / "data"; }
  const std::filesystem::path& folder() const { return folder_; }

  // A program with the folders of this test, its scanners' turns included.
  std::unique_ptr<Process> startProgram(const std::vector<std::string>& command) const;
  std::unique_ptr<Process> start(const std::vector<std::string>& arguments) const;
  // A small, quick scan into out() with a virtual scanner, and whatever stands in arguments.
  std::unique_ptr<Process> startScan(const std::vector<std::string>& arguments,
                                     const std::string& family = "hp") const;

  // Names in a folder, hidden ones too, sorted.
  static std::vector<std::string> names(const std::filesystem::path& folder);
  // Nothing of a run may stay behind but its pages.
  void expectNothingLeft() const;

 private:
  std::filesystem::path folder_;
};

std::string readText(const std::filesystem::path& file);
void writeText(const std::filesystem::path& file, const std::string& text);

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_TOOLS_TVRSCAN_FIXTURE_H
