// The files of one job, cut out of its records on the worker's thread.
#ifndef TVRSCN_FAMILY_LOWEND_LOWEND_IMAGE_FILES_H
#define TVRSCN_FAMILY_LOWEND_LOWEND_IMAGE_FILES_H

#include <cstddef>
#include <string>
#include <string_view>

#include "family_lowend/lowend_image_writer.h"
#include "tvrscn/lowend_controller.h"

// A record is what one packet brought, and says nothing of where an image begins or ends: that is
// told by marker words within the records. Each is searched by itself; a word that runs over from
// one record into the next is image data.
//
// Failing writes are not told: they show as files that are short or missing.
class LowEndImageFiles {
 public:
  // controller has to outlive this.
  explicit LowEndImageFiles(USB_LowEnd_Controller& controller);

  // Writes, cleans and reports every file of the job. Throws std::runtime_error when a file that
  // was written is not there.
  void writeAll();

 private:
  std::wstring filePath(const wchar_t* name) const;
  void open(std::wstring path);
  void writeFromImageStart(std::string_view bytes);
  void writeRecord(std::string_view record);
  void closeAndStartNext(std::string_view record, std::size_t newFile);
  void finishLastFile();
  bool splitIntoPages();
  void cleanWritten();
  void report(const std::wstring& path);

  USB_LowEnd_Controller& controller_;
  const std::wstring extension_;
  const bool isTiff_;
  std::wstring path_;  // of the file that is being written
  LowEndImageWriter writer_;
  bool awaitingImageStart_ = true;  // records are dropped until one begins an image
  bool splitSeen_ = false;          // the device itself began a new file in a TIFF job
};

#endif  // TVRSCN_FAMILY_LOWEND_LOWEND_IMAGE_FILES_H
