// Brings pages into the user's folder without ever touching a file that is there.
//
// The library numbers its files from 1 in each process and replaces what it finds, so it delivers
// into a private folder below the user's, on the same file system; from there each page moves to
// its final name as soon as it is complete.
#ifndef TVRSCN_TOOLS_TVRSCAN_PAGE_STORE_H
#define TVRSCN_TOOLS_TVRSCAN_PAGE_STORE_H

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "name_pattern.h"

namespace tvrscn::cli {

// A file or folder that cannot be written; the text names it.
struct OutputError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct StoredPage {
  int number;  // within this run, from 1
  std::filesystem::path file;
  std::uintmax_t bytes;
};

class PageStore {
 public:
  // Makes the folder if there is none, and proves that it can be written. Throws OutputError.
  PageStore(const std::filesystem::path& folder, const NamePattern& pattern);
  PageStore(const PageStore&) = delete;
  PageStore& operator=(const PageStore&) = delete;
  ~PageStore();

  // Where the library delivers.
  const std::filesystem::path& deliveryFolder() const { return delivery_; }
  // The same as the library wants it. Throws OutputError for a name that is no text.
  std::wstring wideDeliveryFolder() const;

  // Checks a delivered file and gives it its final name: the first free number behind those that
  // the folder holds already. The path comes from a notification, which garbles letters beyond
  // ASCII; its file name alone counts. Throws OutputError.
  const StoredPage& store(const std::string& deliveredPath);

  const std::vector<StoredPage>& pages() const { return pages_; }
  std::uintmax_t bytesStored() const;
  // The number that the first page gets.
  int firstNumber() const { return firstNumber_; }

  // Removes the delivery folder with all that is left in it.
  void cleanUp() noexcept;

 private:
  std::filesystem::path claimName();

  std::filesystem::path folder_;
  std::filesystem::path delivery_;
  NamePattern pattern_;
  int firstNumber_ = 1;
  int nextNumber_ = 1;
  std::vector<StoredPage> pages_;
};

// True for a file that begins and ends as a JPEG does: one that a full disk cut off does not.
bool isWholeJpeg(const std::filesystem::path& file);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_PAGE_STORE_H
