// From records to files. The order is part of the device's format: the records are cut first, the
// block markers go file by file behind that.
#include "family_lowend/lowend_image_files.h"

#include <cstddef>
#include <cstdint>
#include <ios>
#include <utility>

#include "family_lowend/lowend_framing.h"
#include "platform/files.h"
#include "tvrscn/tevrautil/gdi_wrapper.h"

namespace {

constexpr std::string_view kNewFile = "NEWFILE";

// A packet may bring as little as some hundred bytes; files take far more at a time gladly.
constexpr std::size_t kWriteBuffer = 256U * 1024U;

constexpr wchar_t kTiffExtension[] = L".TIF";
// Of the single pages, and no other file: callers know these names.
constexpr wchar_t kPageExtension[] = L".tif";
constexpr wchar_t kImageName[] = L"Image_";
// A TIFF is kept under another name until it has been split.
constexpr wchar_t kUnsplitName[] = L"tempImage_";

}  // namespace

LowEndImageFiles::LowEndImageFiles(USB_LowEnd_Controller& controller)
    : controller_(controller),
      extension_(controller.GetImageOutputFormat()),
      isTiff_(extension_ == kTiffExtension),
      buffer_(std::make_unique_for_overwrite<char[]>(kWriteBuffer)) {}

void LowEndImageFiles::writeAll() {
  open(filePath(isTiff_ ? kUnsplitName : kImageName));
  for (const ScannedRecord& record : controller_.m_scannedRecords)
    writeRecord(record.bytes);
  output_.flush();
  output_.close();
  finishLastFile();
}

std::wstring LowEndImageFiles::filePath(const wchar_t* name) const {
  return controller_.m_imageFolderPath + tvrscn::kPathSeparator + name +
         std::to_wstring(controller_.m_fileCount) + extension_;
}

void LowEndImageFiles::open(std::wstring path) {
  path_ = std::move(path);
  output_ = std::ofstream();
  output_.rdbuf()->pubsetbuf(buffer_.get(), kWriteBuffer);
  output_.open(tvrscn::systemPath(path_), std::ios::binary | std::ios::trunc);
}

void LowEndImageFiles::write(std::string_view bytes) {
  output_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void LowEndImageFiles::writeFromImageStart(std::string_view bytes) {
  const std::size_t start = tvrscn::findImageStart(bytes);
  awaitingImageStart_ = start == std::string_view::npos;
  if (awaitingImageStart_) return;
  output_.clear();
  write(bytes.substr(start));
}

void LowEndImageFiles::writeRecord(std::string_view record) {
  if (awaitingImageStart_) {
    writeFromImageStart(record);
    return;
  }
  const std::size_t newFile = record.find(kNewFile);
  if (newFile == std::string_view::npos) {
    write(record);
  } else {
    closeAndStartNext(record, newFile);
  }
}

// The later files of a TIFF job keep the plain name too: only the split renames.
void LowEndImageFiles::closeAndStartNext(std::string_view record, std::size_t newFile) {
  // The one byte in front of the word belongs to no file.
  if (newFile > 1) write(record.substr(0, newFile - 1));
  output_.flush();
  output_.close();
  cleanAndReport(path_);
  if (isTiff_) splitSeen_ = true;
  open(filePath(kImageName));
  writeFromImageStart(record.substr(newFile));
}

void LowEndImageFiles::finishLastFile() {
  if (isTiff_ && !splitSeen_) {
    controller_.RemoveBlockToBytesWithNewline(path_);
    if (splitIntoPages()) return;
  }
  // A TIFF that could not be split is cleaned once more, and keeps its name.
  cleanAndReport(path_);
}

// False when the file gave no pages; nothing has changed then.
bool LowEndImageFiles::splitIntoPages() {
  const std::wstring prefix = controller_.m_imageFolderPath + tvrscn::kPathSeparator + kImageName;
  const auto first = static_cast<std::uint32_t>(controller_.m_fileCount);
  const std::uint32_t pages =
      GdiWrapper().ConvertMultiPageTIFF2SinglePageTIFF(path_, prefix, first);
  if (pages == 0) return false;
  for (std::uint32_t page = 0; page < pages; ++page)
    cleanAndReport(prefix + std::to_wstring(first + page) + kPageExtension);
  DeleteFileW(path_.c_str());
  return true;
}

void LowEndImageFiles::cleanAndReport(const std::wstring& path) {
  controller_.RemoveBlockToBytesWithNewline(path);
  controller_.SendImageTransferNotification(path);
  controller_.IncrementFileCount();
}
