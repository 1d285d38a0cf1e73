#include "log_option.h"

#include <fstream>

#include "page_store.h"
#include "system.h"

namespace tvrscn::cli {

void openLog(const std::filesystem::path& file) {
  if (file.empty()) return;
  if (!std::ofstream(file, std::ios::app)) {
    throw OutputError("the log file " + textOf(file) + " cannot be written");
  }
  setEnvironment("TVRSCN_LOG", textOf(std::filesystem::absolute(file)));
}

}  // namespace tvrscn::cli
