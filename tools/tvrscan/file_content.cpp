#include "file_content.h"

#include <cstdint>
#include <fstream>
#include <system_error>

namespace tvrscn::cli {

std::string fileContent(const std::filesystem::path& file) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  if (error) return {};
  std::ifstream stream(file, std::ios::binary);
  std::string content(static_cast<std::size_t>(size), '\0');
  if (!stream.read(content.data(), static_cast<std::streamsize>(size))) return {};
  return content;
}

}  // namespace tvrscn::cli
