// From records to files. The order is part of the device's format: the records are cut first, the
// block markers go file by file behind that.
#include "family_lowend/lowend_image_files.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "family_lowend/lowend_framing.h"
#include "platform/files.h"
#include "tvrscn/tevrautil/gdi_wrapper.h"

namespace {

constexpr std::string_view kNewFile = "NEWFILE";

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
      writer_(controller.m_imageFolderPath) {}

void LowEndImageFiles::writeAll() {
  open(filePath(isTiff_ ? kUnsplitName : kImageName));
  for (const ScannedRecord& record : controller_.m_scannedRecords)
    writeRecord(record.bytes);
  writer_.close();
  finishLastFile();
}

std::wstring LowEndImageFiles::filePath(const wchar_t* name) const {
  return controller_.m_imageFolderPath + tvrscn::kPathSeparator + name +
         std::to_wstring(controller_.m_fileCount) + extension_;
}

void LowEndImageFiles::open(std::wstring path) {
  path_ = std::move(path);
  writer_.open(path_);
}

void LowEndImageFiles::writeFromImageStart(std::string_view bytes) {
  const std::size_t start = tvrscn::findImageStart(bytes);
  awaitingImageStart_ = start == std::string_view::npos;
  if (awaitingImageStart_) return;
  writer_.forgetFailure();
  writer_.write(bytes.substr(start));
}

void LowEndImageFiles::writeRecord(std::string_view record) {
  if (awaitingImageStart_) {
    writeFromImageStart(record);
    return;
  }
  const std::size_t newFile = record.find(kNewFile);
  if (newFile == std::string_view::npos) {
    writer_.write(record);
  } else {
    closeAndStartNext(record, newFile);
  }
}

// The later files of a TIFF job keep the plain name too: only the split renames.
void LowEndImageFiles::closeAndStartNext(std::string_view record, std::size_t newFile) {
  // The one byte in front of the word belongs to no file.
  if (newFile > 1) writer_.write(record.substr(0, newFile - 1));
  writer_.close();
  cleanWritten();
  report(path_);
  if (isTiff_) splitSeen_ = true;
  open(filePath(kImageName));
  writeFromImageStart(record.substr(newFile));
}

void LowEndImageFiles::finishLastFile() {
  cleanWritten();
  if (isTiff_ && !splitSeen_) {
    if (splitIntoPages()) return;
    // One that could not be split is cleaned once more, and keeps its name.
    controller_.RemoveBlockToBytesWithNewline(path_);
  }
  report(path_);
}

// Of the file that has just been closed.
void LowEndImageFiles::cleanWritten() {
  if (!writer_.isCleaned()) controller_.RemoveBlockToBytesWithNewline(path_);
}

// False when the file gave no pages; nothing has changed then.
bool LowEndImageFiles::splitIntoPages() {
  const std::wstring prefix = controller_.m_imageFolderPath + tvrscn::kPathSeparator + kImageName;
  const auto first = static_cast<std::uint32_t>(controller_.m_fileCount);
  const std::uint32_t pages =
      GdiWrapper().ConvertMultiPageTIFF2SinglePageTIFF(path_, prefix, first);
  if (pages == 0) return false;
  for (std::uint32_t page = 0; page < pages; ++page) {
    const std::wstring name = prefix + std::to_wstring(first + page) + kPageExtension;
    controller_.RemoveBlockToBytesWithNewline(name);
    report(name);
  }
  DeleteFileW(path_.c_str());
  return true;
}

void LowEndImageFiles::report(const std::wstring& path) {
  controller_.SendImageTransferNotification(path);
  controller_.IncrementFileCount();
}
