// The C library's own call changes both its copy and the process's.
#include <cstdlib>

#include "tests/e2e/system.h"

namespace tvrscn::test {

const char* const kTemporaryFolderVariable = "TMP";
const int kGreyPageComponents = 3;  // GDI+ turns a page of grey levels into colours to save it

void setVariable(const std::string& name, const std::string& value) {
  _putenv_s(name.c_str(), value.c_str());
}

void clearVariable(const std::string& name) {
  setVariable(name, "");
}

// The system's own drive; a run of the tests has it to itself.
fs::path enterOwnRoot(const fs::path& /*folder*/) {
  const fs::path root = LR"(C:\)";
  fs::current_path(root);
  return root;
}

}  // namespace tvrscn::test
