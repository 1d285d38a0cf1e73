// A thread that watches for dialogs of this process, reads them off the screen as a user would,
// takes a picture of each kind and presses a key. A dialog runs a message loop of its own on the
// thread that shows it, so everything here goes through the window system.
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <windows.h>

#include "tests/e2e/system.h"
#include "tests/e2e/windows/window_picture.h"

namespace tvrscn::test {
namespace {

using namespace std::chrono_literals;

constexpr const wchar_t* kDialogClass = L"#32770";

std::wstring classOf(HWND window) {
  std::array<wchar_t, 64> name{};
  GetClassNameW(window, name.data(), static_cast<int>(name.size()));
  return name.data();
}

std::wstring textOf(HWND window) {
  std::array<wchar_t, 1024> text{};
  GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
  return text.data();
}

BOOL CALLBACK takeDialog(HWND window, LPARAM result) {
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process != GetCurrentProcessId() || IsWindowVisible(window) == 0 ||
      classOf(window) != kDialogClass) {
    return 1;
  }
  *reinterpret_cast<HWND*>(result) = window;
  return 0;
}

HWND findDialog() {
  HWND dialog = nullptr;
  EnumWindows(takeDialog, reinterpret_cast<LPARAM>(&dialog));
  return dialog;
}

// The text of a message box is its only static control with one; the other holds the icon.
BOOL CALLBACK takeText(HWND window, LPARAM result) {
  if (classOf(window) == L"Static") *reinterpret_cast<std::wstring*>(result) += textOf(window);
  return 1;
}

BOOL CALLBACK countButton(HWND window, LPARAM result) {
  if (classOf(window) == L"Button" && IsWindowVisible(window) != 0)
    ++*reinterpret_cast<int*>(result);
  return 1;
}

// Wine does not put a message box on top when it is told to, so the flags cannot be read back.
Dialog readDialog(HWND window) {
  Dialog dialog;
  dialog.title = textOf(window);
  EnumChildWindows(window, takeText, reinterpret_cast<LPARAM>(&dialog.text));
  EnumChildWindows(window, countButton, reinterpret_cast<LPARAM>(&dialog.buttons));
  return dialog;
}

void press(HWND window, DialogKey key) {
  SetForegroundWindow(window);
  std::array<INPUT, 2> keys{};
  for (INPUT& input : keys) {
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key == DialogKey::kEscape ? VK_ESCAPE : VK_RETURN;
  }
  keys[1].ki.dwFlags = KEYEVENTF_KEYUP;
  SendInput(static_cast<UINT>(keys.size()), keys.data(), sizeof(INPUT));
}

// Presses the key again when the window had no eye for it yet.
void answer(HWND window, DialogKey key) {
  constexpr auto kPatience = 300ms;
  for (int tries = 0; tries < 20 && IsWindow(window) != 0; ++tries) {
    press(window, key);
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (IsWindow(window) != 0 && std::chrono::steady_clock::now() < end)
      std::this_thread::sleep_for(5ms);
  }
  if (IsWindow(window) != 0) ADD_FAILURE() << "a dialog does not take its key";
}

// One picture of each text for the whole run, if the run wants any.
void keepPicture(HWND window, const Dialog& dialog) {
  static std::set<std::wstring> kept;
  const char* folder = std::getenv("TVRSCN_TEST_OUTPUT");
  if (folder == nullptr || !kept.insert(dialog.text).second) return;
  const fs::path file = fs::path(folder) / ("dialog-" + std::to_string(kept.size()) + ".png");
  constexpr int kLeastColours = 3;  // frame, ground and letters
  EXPECT_GE(saveWindowPicture(window, file), kLeastColours) << file.string();
}

}  // namespace

struct DialogAnswers::State {
  void watch() {
    while (!over) {
      if (HWND window = findDialog()) {
        takeCareOf(window);
      } else {
        std::this_thread::sleep_for(10ms);
      }
    }
  }

  void takeCareOf(HWND window) {
    const Dialog dialog = readDialog(window);
    if (dialog.text.empty()) return;  // still being made
    DialogKey key = DialogKey::kEnter;
    {
      const std::lock_guard lock(mutex);
      if (dialogs.size() < keys.size()) key = keys[dialogs.size()];
      dialogs.push_back(dialog);
    }
    keepPicture(window, dialog);
    answer(window, key);
  }

  std::vector<DialogKey> keys;
  std::mutex mutex;
  std::vector<Dialog> dialogs;
  std::atomic<bool> over = false;
  std::thread thread;
};

DialogAnswers::DialogAnswers(const fs::path& /*folder*/, const std::vector<DialogKey>& keys)
    : state_(std::make_unique<State>()) {
  state_->keys = keys;
  state_->thread = std::thread([this] { state_->watch(); });
}

DialogAnswers::~DialogAnswers() {
  state_->over = true;
  state_->thread.join();
}

std::vector<Dialog> DialogAnswers::seen() const {
  const std::lock_guard lock(state_->mutex);
  return state_->dialogs;
}

}  // namespace tvrscn::test
