#include "image_check.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "file_content.h"

namespace tvrscn::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kStripOffsets = 273;
constexpr std::uint32_t kStripByteCounts = 279;
constexpr std::uint32_t kTypeShort = 3;
constexpr std::uint32_t kTypeLong = 4;
constexpr std::size_t kEntryBytes = 12;

// Numbers out of the bytes of a file; what lies beyond its end is not there.
class TiffBytes {
 public:
  explicit TiffBytes(const std::string& bytes) : bytes_(bytes) {}

  std::optional<std::uint32_t> number(std::size_t at, std::size_t length) const {
    if (!holds(at, length)) return std::nullopt;
    std::uint32_t value = 0;
    for (std::size_t index = length; index > 0; --index)
      value = value << 8 | static_cast<unsigned char>(bytes_[at + index - 1]);
    return value;
  }
  bool holds(std::size_t at, std::size_t length) const {
    return at <= bytes_.size() && length <= bytes_.size() - at;
  }

  // The numbers of the directory entry at a place; none when they are not all there.
  std::vector<std::uint32_t> entryValues(std::size_t entry) const {
    const std::uint32_t type = number(entry + 2, 2).value_or(0);
    const std::size_t count = number(entry + 4, 4).value_or(0);
    if (type != kTypeShort && type != kTypeLong) return {};
    const std::size_t size = type == kTypeShort ? 2 : 4;
    const bool inPlace = count * size <= 4;
    const std::size_t first = inPlace ? entry + 8 : number(entry + 8, 4).value_or(0);
    if (!holds(first, count * size)) return {};
    std::vector<std::uint32_t> values;
    for (std::size_t index = 0; index < count; ++index)
      values.push_back(*number(first + index * size, size));
    return values;
  }

 private:
  const std::string& bytes_;
};

}  // namespace

bool isWholeJpeg(const fs::path& file) {
  constexpr std::array<char, 2> kStart = {'\xFF', '\xD8'};
  constexpr std::array<char, 2> kEnd = {'\xFF', '\xD9'};
  std::ifstream stream(file, std::ios::binary);
  std::array<char, 2> bytes = {};
  stream.read(bytes.data(), bytes.size());
  if (!stream || bytes != kStart) return false;
  stream.seekg(-2, std::ios::end);
  stream.read(bytes.data(), bytes.size());
  return stream && bytes == kEnd;
}

bool isWholeTiff(const fs::path& file) {
  constexpr std::string_view kStart("II*\0", 4);
  const std::string content = fileContent(file);
  if (!std::string_view(content).starts_with(kStart)) return false;
  const TiffBytes bytes(content);
  const std::size_t directory = bytes.number(4, 4).value_or(0);
  const std::size_t entries = bytes.number(directory, 2).value_or(0);
  if (directory == 0 || !bytes.holds(directory + 2, entries * kEntryBytes)) return false;
  std::vector<std::uint32_t> offsets;
  std::vector<std::uint32_t> counts;
  for (std::size_t index = 0; index < entries; ++index) {
    const std::size_t entry = directory + 2 + index * kEntryBytes;
    const std::uint32_t tag = *bytes.number(entry, 2);
    if (tag == kStripOffsets) offsets = bytes.entryValues(entry);
    if (tag == kStripByteCounts) counts = bytes.entryValues(entry);
  }
  bool whole = !offsets.empty() && offsets.size() == counts.size();
  for (std::size_t index = 0; whole && index < offsets.size(); ++index)
    whole = bytes.holds(offsets[index], counts[index]);
  return whole;
}

}  // namespace tvrscn::cli
