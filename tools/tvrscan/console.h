// The two streams of a command line: data on standard output, words for people on standard error.
// Not locked; a scan calls it under the lock of its session.
#ifndef TVRSCN_TOOLS_TVRSCAN_CONSOLE_H
#define TVRSCN_TOOLS_TVRSCAN_CONSOLE_H

#include <chrono>
#include <cstdint>
#include <string>

namespace tvrscn::cli {

class Console {
 public:
  explicit Console(bool quiet);

  // A line of data on standard output, at once.
  void data(const std::string& line);
  // Something good to know, on standard error; nothing when quiet.
  void note(const std::string& text);
  // Something that the user has to know, on standard error.
  void problem(const std::string& text);
  // Further lines to a problem.
  void detail(const std::string& text);

  // One line on a terminal that the next call replaces; nothing elsewhere.
  void progress(const std::string& text);
  bool hasProgressLine() const { return progressLine_; }

 private:
  void clearProgress();

  bool quiet_;
  bool colours_;       // on standard error
  bool progressLine_;  // standard error is a terminal that can go back in a line
  bool progressShown_ = false;
};

// "940 bytes", "12 KiB", "3.4 MiB"
std::string byteText(std::uintmax_t bytes);
// "0.8 s", "2 min 5 s"
std::string timeText(std::chrono::milliseconds time);
// "1 page", "2 pages"
std::string pageText(std::size_t pages);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_CONSOLE_H
