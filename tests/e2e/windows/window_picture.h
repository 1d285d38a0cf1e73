// What a window looks like on the screen, as a file.
#ifndef TVRSCN_TESTS_E2E_WINDOWS_WINDOW_PICTURE_H
#define TVRSCN_TESTS_E2E_WINDOWS_WINDOW_PICTURE_H

#include <filesystem>

#include <windows.h>

namespace tvrscn::test {

// Saves the window, frame included, as PNG. Returns how many colours the picture has, at most 256;
// 0 when it could not be made.
int saveWindowPicture(HWND window, const std::filesystem::path& file);

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_E2E_WINDOWS_WINDOW_PICTURE_H
