// Names are random and a name that is taken is passed over, so that tests may run side by side.
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

namespace tvrscn::test {

TemporaryFolder::TemporaryFolder() {
  std::random_device random;
  do {
    path_ = std::filesystem::temp_directory_path() / ("tvrscn-test-" + std::to_string(random()));
  } while (!std::filesystem::create_directory(path_));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> TemporaryFolder::fileNames() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path_)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::uint8_t> readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path.string());
  std::vector<std::uint8_t> content;
  for (std::istreambuf_iterator<char> byte(in), end; byte != end; ++byte) {
    content.push_back(static_cast<std::uint8_t>(*byte));
  }
  return content;
}

void writeFile(const std::filesystem::path& path, std::string_view content) {
  std::ofstream out(path, std::ios::binary);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!out) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace tvrscn::test
