// A folder of a test's own, gone with the object.
#ifndef TVRSCN_TESTS_SUPPORT_TEMPORARY_FOLDER_H
#define TVRSCN_TESTS_SUPPORT_TEMPORARY_FOLDER_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tvrscn::test {

class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::filesystem::path& path() const { return path_; }
  // Names of the files in it, sorted.
  std::vector<std::string> fileNames() const;

 private:
  std::filesystem::path path_;
};

// The whole content of a file; throws std::runtime_error when it cannot be read.
std::vector<std::uint8_t> readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, std::string_view content);

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_TEMPORARY_FOLDER_H
