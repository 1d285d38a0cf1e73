#include "page_store.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <system_error>
#include <utility>

#include "platform/identity_text.h"
#include "system.h"

namespace tvrscn::cli {

namespace fs = std::filesystem;

namespace {

constexpr int kHighestNumber = 999'999'999;

int highestNumber(const fs::path& folder, const NamePattern& pattern) {
  int highest = 0;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    highest = std::max(highest, pattern.numberOf(textOf(entry->path().filename())));
  }
  return highest;
}

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

PageStore::PageStore(const fs::path& folder, const NamePattern& pattern)
    : folder_(folder), pattern_(pattern) {
  std::error_code error;
  fs::create_directories(folder_, error);
  if (!fs::is_directory(folder_)) {
    throw OutputError("the folder " + textOf(folder_) + " cannot be made" +
                      (error ? ": " + error.message() : ""));
  }
  try {
    delivery_ = createPrivateFolder(folder_, ".tvrscan-");
  } catch (const std::system_error& failure) {
    throw OutputError("the folder " + textOf(folder_) +
                      " cannot be written: " + failure.code().message());
  }
  nextNumber_ = highestNumber(folder_, pattern_) + 1;
  firstNumber_ = nextNumber_;
}

PageStore::~PageStore() {
  cleanUp();
}

// The standard library converts by the locale of the process; the library takes UTF-8 in any.
std::wstring PageStore::wideDeliveryFolder() const {
  const std::u8string name = delivery_.u8string();
  const std::string bytes(name.begin(), name.end());
  const auto length = static_cast<int>(bytes.size());
  std::wstring wide(bytes.size(), L'\0');
  const int used = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), length, wide.data(), length);
  wide.resize(static_cast<std::size_t>(used));
  std::string back(bytes.size(), '\0');
  const int backLength =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), used, back.data(), length, nullptr, nullptr);
  if (used <= 0 || backLength != length || back != bytes) {
    throw OutputError("the name of the folder " + textOf(folder_) + " is not UTF-8");
  }
  return wide;
}

const StoredPage& PageStore::store(const std::string& deliveredPath) {
  const std::string name = deliveredPath.substr(deliveredPath.find_last_of("/\\") + 1);
  const fs::path delivered = delivery_ / pathOf(name);
  const std::string page = "page " + std::to_string(pages_.size() + 1);
  if (!isWholeJpeg(delivered)) {
    throw OutputError(page + " could not be stored: " + textOf(delivered) +
                      " was not written, or not whole");
  }
  const std::uintmax_t bytes = fs::file_size(delivered);
  fs::path target = claimName();
  std::error_code error;
  fs::rename(delivered, target, error);
  if (error) {
    std::error_code ignored;
    fs::remove(target, ignored);
    throw OutputError(page + " could not be stored as " + textOf(target) + ": " + error.message());
  }
  pages_.push_back({static_cast<int>(pages_.size()) + 1, std::move(target), bytes});
  return pages_.back();
}

// The name is taken by making the file, so that two programs cannot settle on the same one.
fs::path PageStore::claimName() {
  while (nextNumber_ <= kHighestNumber) {
    fs::path target = (folder_ / pathOf(pattern_.fileName(nextNumber_))).lexically_normal();
    ++nextNumber_;
    try {
      if (createNewFile(target)) return target;
    } catch (const std::system_error& failure) {
      throw OutputError("the file " + textOf(target) +
                        " cannot be made: " + failure.code().message());
    }
  }
  throw OutputError("there is no number left for another page in " + textOf(folder_));
}

std::uintmax_t PageStore::bytesStored() const {
  std::uintmax_t bytes = 0;
  for (const StoredPage& page : pages_)
    bytes += page.bytes;
  return bytes;
}

void PageStore::cleanUp() noexcept {
  if (delivery_.empty()) return;
  std::error_code ignored;
  fs::remove_all(delivery_, ignored);
}

}  // namespace tvrscn::cli
