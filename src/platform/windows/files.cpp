// Paths are what the system takes already.
#include "platform/files.h"

namespace tvrscn {

const wchar_t kPathSeparator = L'\\';

std::filesystem::path systemPath(const std::wstring& path) {
  return {path};
}

std::filesystem::path storeAppSettingsPath() {
  return {LR"(C:\ProgramData\Tevra\ScanInputData.txt)"};
}

}  // namespace tvrscn
