// Brings pages into the user's folder without ever touching a file that is there.
//
// The library numbers its files from 1 in each process and replaces what it finds, so it delivers
// into a private folder below the user's, on the same file system; from there each page moves to
// its final name as soon as it is complete. The extension is that of the device's file, in lower
// case.
#ifndef TVRSCN_TOOLS_TVRSCAN_PAGE_STORE_H
#define TVRSCN_TOOLS_TVRSCAN_PAGE_STORE_H

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "name_pattern.h"

namespace tvrscn::cli {

// A file or folder that cannot be written; the text names it.
struct OutputError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A delivered file that is not there, or no whole picture.
struct UnusablePage : OutputError {
  UnusablePage(const std::string& text, bool diskHasRoom)
      : OutputError(text), hadRoom(diskHasRoom) {}
  bool hadRoom;
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

  // For a driver whose paths are narrow: has it deliver into a folder below other when the private
  // one has a name beyond ASCII. Before the first page. Throws OutputError when neither will do.
  void deliverInAscii(const std::filesystem::path& other);

  // Where the library delivers.
  const std::filesystem::path& deliveryFolder() const { return delivery_; }
  // The same as the library wants it. Throws OutputError for a name that is no text.
  std::wstring wideDeliveryFolder() const;

  // Checks a delivered file and gives it its final name: the first free number behind those that
  // the folder holds already. The path comes from a notification, which garbles letters beyond
  // ASCII; its file name alone counts. Throws OutputError, UnusablePage where the file itself is at
  // fault.
  const StoredPage& store(const std::string& deliveredPath);

  const std::vector<StoredPage>& pages() const { return pages_; }
  std::uintmax_t bytesStored() const;
  // The number that the first page gets.
  int firstNumber() const { return firstNumber_; }

  // Removes the private folders with all that is left in them.
  void cleanUp() noexcept;

 private:
  std::filesystem::path claimName(std::string_view extension);
  std::filesystem::path broughtNear(const std::filesystem::path& delivered,
                                    std::error_code& error) const;

  std::filesystem::path folder_;
  std::filesystem::path private_;   // below folder_
  std::filesystem::path delivery_;  // the private one, or one with a plain name elsewhere
  NamePattern pattern_;
  int firstNumber_ = 1;
  int nextNumber_ = 1;
  std::vector<StoredPage> pages_;
};

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_PAGE_STORE_H
