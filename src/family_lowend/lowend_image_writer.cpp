// Files are opened under their whole names and cleaned under narrowed ones, by way of a work file
// that may not be had: what a cleaning would come to is known where the two names are one and the
// work file can be made.
#include "family_lowend/lowend_image_writer.h"

#include <algorithm>
#include <ios>

#include "platform/files.h"
#include "usb/text.h"

namespace {

// Packets and what stands between two markers have any size. A file takes whole blocks of this size
// in half the time that it takes for the same bytes in such pieces.
constexpr std::size_t kBlock = 256U * 1024U;

// Of such a name every system makes the same file, narrowed or not.
bool isPlain(const std::wstring& path) {
  return std::all_of(path.begin(), path.end(), [](wchar_t c) { return c > 0 && c < 0x80; });
}

// Whether it can be made; leaves none behind.
bool tryWorkFile(const std::string& name) {
  if (!std::ofstream(name, std::ios::binary | std::ios::trunc).is_open()) return false;
  DeleteFileW(tvrscn::widen(name).c_str());
  return true;
}

}  // namespace

LowEndImageWriter::LowEndImageWriter(const std::wstring& imageFolder)
    : workFileCanBeMade_(tryWorkFile(tvrscn::workFileName(imageFolder))),
      block_(std::make_unique_for_overwrite<char[]>(kBlock)) {}

LowEndImageWriter::~LowEndImageWriter() {
  close();
}

void LowEndImageWriter::open(const std::wstring& path) {
  output_ = std::ofstream(tvrscn::systemPath(path), std::ios::binary | std::ios::trunc);
  cleans_ = output_.is_open() && workFileCanBeMade_ && isPlain(path);
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
  writeBlock();
  output_.flush();
  output_.close();
}

void LowEndImageWriter::put(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t taken = bytes.copy(block_.get() + held_, kBlock - held_);
    bytes.remove_prefix(taken);
    held_ += taken;
    if (held_ == kBlock) writeBlock();
  }
}

void LowEndImageWriter::writeBlock() {
  output_.write(block_.get(), static_cast<std::streamsize>(held_));
  held_ = 0;
}
