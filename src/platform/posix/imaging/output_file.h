// A file that is either written completely or not there.
#ifndef TVRSCN_PLATFORM_POSIX_IMAGING_OUTPUT_FILE_H
#define TVRSCN_PLATFORM_POSIX_IMAGING_OUTPUT_FILE_H

#include <cstdio>
#include <string>

namespace tvrscn::imaging {

// Created, or emptied if it exists. Closing it with close() keeps it; otherwise, or when closing
// fails, it is removed again, unless the name leads to something else than a plain file.
class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  // name is in UTF-8. False when it cannot be created.
  [[nodiscard]] bool open(const std::string& name);
  // A new file beside the one of that name, with its access rights and a name of its own.
  [[nodiscard]] bool openBeside(const std::string& name);

  [[nodiscard]] std::FILE* get() const { return file_; }
  [[nodiscard]] const std::string& name() const { return name_; }

  // False when what was written did not all reach the file.
  [[nodiscard]] bool close();
  // Closes, then takes the place of the file that it was opened beside, in one step.
  [[nodiscard]] bool closeAndReplace();

 private:
  void discard();

  std::string name_;
  std::string replaced_;
  std::FILE* file_ = nullptr;
  bool removable_ = false;
};

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_POSIX_IMAGING_OUTPUT_FILE_H
