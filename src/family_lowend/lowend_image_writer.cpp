// Files are opened under their whole names and cleaned under narrowed ones, by way of a work file
// that may not be had: what a cleaning would come to is known where the two names are one and the
// work file can be made.
#include "family_lowend/lowend_image_writer.h"

#include <algorithm>
#include <ios>

#include "platform/files.h"
#include "usb/text.h"

namespace {

// A packet may bring as little as some hundred bytes; files take far more at a time gladly.
constexpr std::size_t kWriteBuffer = 256U * 1024U;

// Of such a name every system makes the same file, narrowed or not.
bool isPlain(const std::wstring& path) {
  return std::all_of(path.begin(), path.end(), [](wchar_t c) { return c > 0 && c < 0x80; });
}

}  // namespace

LowEndImageWriter::LowEndImageWriter(const std::wstring& imageFolder)
    : workFile_(tvrscn::workFileName(imageFolder)),
      buffer_(std::make_unique_for_overwrite<char[]>(kWriteBuffer)) {}

void LowEndImageWriter::open(const std::wstring& path) {
  output_ = std::ofstream();
  output_.rdbuf()->pubsetbuf(buffer_.get(), kWriteBuffer);
  output_.open(tvrscn::systemPath(path), std::ios::binary | std::ios::trunc);
  cleans_ = output_.is_open() && canBeCleaned(path);
}

void LowEndImageWriter::write(std::string_view bytes) {
  if (!cleans_) {
    put(bytes);
    return;
  }
  while (!bytes.empty())
    put(markers_.next(bytes));
}

void LowEndImageWriter::forgetFailure() {
  output_.clear();
}

void LowEndImageWriter::close() {
  put(markers_.finish());
  output_.flush();
  output_.close();
}

// Tries the work file, and leaves none behind.
bool LowEndImageWriter::canBeCleaned(const std::wstring& path) const {
  if (!isPlain(path)) return false;
  if (!std::ofstream(workFile_, std::ios::binary | std::ios::trunc).is_open()) return false;
  DeleteFileW(tvrscn::widen(workFile_).c_str());
  return true;
}

void LowEndImageWriter::put(std::string_view bytes) {
  output_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}
