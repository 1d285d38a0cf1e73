#include "page_store.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "image_check.h"
#include "platform/identity_text.h"
#include "system.h"
#include "words.h"

namespace tvrscn::cli {

namespace fs = std::filesystem;

namespace {

constexpr int kHighestNumber = 999'999'999;

// The files that devices deliver, by their extension.
struct Format {
  const char* extension;  // in lower case
  bool (*isWhole)(const fs::path& file);
};
constexpr Format kFormats[] = {{".jpg", isWholeJpeg}, {".tif", isWholeTiff}};

const Format* formatOf(const fs::path& file) {
  const std::string extension = lowerCase(textOf(file.extension()));
  for (const Format& format : kFormats) {
    if (extension == format.extension) return &format;
  }
  return nullptr;
}

bool hasRoom(const fs::path& folder) {
  constexpr std::uintmax_t kLeastRoom = 1024 * 1024;
  std::error_code error;
  const fs::space_info space = fs::space(folder, error);
  return !error && space.available >= kLeastRoom;
}

bool isAscii(const fs::path& path) {
  const std::string text = textOf(path);
  return std::all_of(text.begin(), text.end(),
                     [](char letter) { return static_cast<unsigned char>(letter) < 0x80; });
}

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

PageStore::PageStore(const fs::path& folder, const NamePattern& pattern)
    : folder_(folder), pattern_(pattern) {
  std::error_code error;
  fs::create_directories(folder_, error);
  if (!fs::is_directory(folder_)) {
    throw OutputError("the folder " + textOf(folder_) + " cannot be made" +
                      (error ? ": " + error.message() : ""));
  }
  try {
    private_ = createPrivateFolder(folder_, ".tvrscan-");
  } catch (const std::system_error& failure) {
    throw OutputError("the folder " + textOf(folder_) +
                      " cannot be written: " + failure.code().message());
  }
  delivery_ = private_;
  nextNumber_ = highestNumber(folder_, pattern_) + 1;
  firstNumber_ = nextNumber_;
}

PageStore::~PageStore() {
  cleanUp();
}

void PageStore::deliverInAscii(const fs::path& other) {
  if (isAscii(private_)) return;
  if (!isAscii(other)) {
    throw OutputError("neither the folder " + textOf(folder_) +
                      " nor the one for temporary files, " + textOf(other.parent_path()) +
                      ", has a name of plain ASCII letters, which this device's driver needs");
  }
  delivery_ = other / "pages";
  std::error_code error;
  fs::create_directory(delivery_, error);
  if (error) {
    throw OutputError("the folder " + textOf(delivery_) + " cannot be made: " + error.message());
  }
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
  const Format* format = formatOf(delivered);
  if (format == nullptr || !format->isWhole(delivered)) {
    throw UnusablePage(
        page + " could not be stored: " + textOf(delivered) + " was not written, or not whole",
        fs::exists(delivered) && hasRoom(delivery_));
  }
  const std::uintmax_t bytes = fs::file_size(delivered);
  std::error_code error;
  const fs::path moved = broughtNear(delivered, error);
  fs::path target;
  if (!error) {
    target = claimName(format->extension);
    fs::rename(moved, target, error);
  }
  if (error) {
    std::error_code ignored;
    if (!target.empty()) fs::remove(target, ignored);
    throw OutputError(page + " could not be stored" +
                      (target.empty() ? "" : " as " + textOf(target)) + ": " + error.message());
  }
  pages_.push_back({static_cast<int>(pages_.size()) + 1, std::move(target), bytes});
  return pages_.back();
}

// Onto the file system of the user's folder, where moving it replaces a name at once or not at all.
fs::path PageStore::broughtNear(const fs::path& delivered, std::error_code& error) const {
  if (delivery_ == private_) return delivered;
  fs::path moved = private_ / delivered.filename();
  fs::copy_file(delivered, moved, fs::copy_options::overwrite_existing, error);
  std::error_code ignored;
  fs::remove(delivered, ignored);
  return moved;
}

// The name is taken by making the file, so that two programs cannot settle on the same one.
fs::path PageStore::claimName(std::string_view extension) {
  while (nextNumber_ <= kHighestNumber) {
    fs::path target =
        (folder_ / pathOf(pattern_.fileName(nextNumber_, extension))).lexically_normal();
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
  std::error_code ignored;
  for (const fs::path& folder : {private_, delivery_}) {
    if (!folder.empty()) fs::remove_all(folder, ignored);
  }
}

}  // namespace tvrscn::cli
