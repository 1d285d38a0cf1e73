#include "console.h"

#include <cstdio>
#include <string_view>

#include "system.h"

namespace tvrscn::cli {
namespace {

constexpr const char* kRed = "\033[1;31m";
constexpr const char* kPlain = "\033[0m";
constexpr const char* kClearLine = "\r\033[K";
constexpr std::size_t kLineWidth = 78;

void put(std::FILE* stream, std::string_view text) {
  // A stream that takes nothing any more changes nothing about the pages.
  std::fwrite(text.data(), 1, text.size(), stream);
  std::fflush(stream);
}

// One decimal, rounded down.
std::string tenths(std::uintmax_t value, std::uintmax_t unit) {
  return std::to_string(value / unit) + "." + std::to_string(value % unit * 10 / unit);
}

}  // namespace

Console::Console(bool quiet) : quiet_(quiet) {
  const bool terminal = stderrIsTerminal() && environment("TERM") != "dumb";
  colours_ = terminal && environment("NO_COLOR").empty();
  progressLine_ = terminal && !quiet;
}

void Console::data(const std::string& line) {
  clearProgress();
  put(dataStream(), line + "\n");
}

void Console::note(const std::string& text) {
  if (quiet_) return;
  clearProgress();
  put(stderr, "tvrscan: " + text + "\n");
}

void Console::problem(const std::string& text) {
  clearProgress();
  put(stderr, (colours_ ? kRed : "") + std::string("tvrscan:") + (colours_ ? kPlain : "") + " " +
                  text + "\n");
}

void Console::detail(const std::string& text) {
  clearProgress();
  put(stderr, "  " + text + "\n");
}

void Console::progress(const std::string& text) {
  if (!progressLine_) return;
  put(stderr, kClearLine + text.substr(0, kLineWidth));
  progressShown_ = true;
}

void Console::clearProgress() {
  if (!progressShown_) return;
  put(stderr, kClearLine);
  progressShown_ = false;
}

std::string byteText(std::uintmax_t bytes) {
  constexpr std::uintmax_t kKibi = 1024;
  if (bytes == 1) return "1 byte";
  if (bytes < kKibi) return std::to_string(bytes) + " bytes";
  if (bytes < kKibi * kKibi) return std::to_string(bytes / kKibi) + " KiB";
  return tenths(bytes, kKibi * kKibi) + " MiB";
}

std::string timeText(std::chrono::milliseconds time) {
  const auto millis = static_cast<std::uintmax_t>(time.count() > 0 ? time.count() : 0);
  if (millis < 60'000) return tenths(millis, 1000) + " s";
  const std::uintmax_t seconds = millis / 1000;
  return std::to_string(seconds / 60) + " min " + std::to_string(seconds % 60) + " s";
}

std::string pageText(std::size_t pages) {
  return std::to_string(pages) + (pages == 1 ? " page" : " pages");
}

}  // namespace tvrscn::cli
