// Plain files only are ever removed: a page may be sent to a device file, which has to stay.
#include "platform/posix/imaging/output_file.h"

#include <cstdlib>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace tvrscn::imaging {
namespace {

constexpr mode_t kAccessBits = 07777;

}  // namespace

OutputFile::~OutputFile() {
  discard();
}

bool OutputFile::open(const std::string& name) {
  discard();
  file_ = std::fopen(name.c_str(), "wbe");
  if (file_ == nullptr) return false;
  name_ = name;
  struct stat facts {};
  removable_ = fstat(fileno(file_), &facts) == 0 && S_ISREG(facts.st_mode);
  return true;
}

bool OutputFile::openBeside(const std::string& name) {
  discard();
  // A link stays a link: it is the file behind it that is replaced.
  char* const resolved = realpath(name.c_str(), nullptr);
  if (resolved == nullptr) return false;
  std::string target = resolved;
  std::free(resolved);

  struct stat facts {};
  if (stat(target.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) return false;
  std::string temporary = target + ".XXXXXX";
  const int descriptor = mkstemp(temporary.data());
  if (descriptor < 0) return false;
  name_ = std::move(temporary);
  replaced_ = std::move(target);
  removable_ = true;
  file_ = fdopen(descriptor, "wb");
  if (file_ == nullptr) ::close(descriptor);
  if (file_ != nullptr && fchmod(descriptor, facts.st_mode & kAccessBits) == 0) return true;
  discard();
  return false;
}

bool OutputFile::close() {
  if (file_ == nullptr) return false;
  const bool written = std::ferror(file_) == 0;
  const bool closed = std::fclose(std::exchange(file_, nullptr)) == 0;
  if (written && closed) {
    removable_ = false;
    return true;
  }
  discard();
  return false;
}

bool OutputFile::closeAndReplace() {
  if (!close()) return false;
  if (std::rename(name_.c_str(), replaced_.c_str()) == 0) return true;
  removable_ = true;
  discard();
  return false;
}

void OutputFile::discard() {
  if (file_ != nullptr) static_cast<void>(std::fclose(std::exchange(file_, nullptr)));
  if (std::exchange(removable_, false)) static_cast<void>(unlink(name_.c_str()));
}

}  // namespace tvrscn::imaging
