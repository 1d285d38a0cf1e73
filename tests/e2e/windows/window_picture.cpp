#include "tests/e2e/windows/window_picture.h"

#include <chrono>
#include <set>
#include <thread>

// The imaging header asks for these.
#include <objidl.h>

#include <gdiplus.h>

namespace tvrscn::test {
namespace {

constexpr CLSID kPngEncoder = {
    0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

class ImagingSession {
 public:
  ImagingSession() {
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&token_, &input, nullptr);
  }
  ImagingSession(const ImagingSession&) = delete;
  ImagingSession& operator=(const ImagingSession&) = delete;
  ~ImagingSession() { Gdiplus::GdiplusShutdown(token_); }

 private:
  ULONG_PTR token_ = 0;
};

// Copies the window's pixels; the caller deletes the bitmap.
HBITMAP copyPixels(HWND window, int width, int height) {
  HDC from = GetWindowDC(window);
  HDC to = CreateCompatibleDC(from);
  HBITMAP bitmap = CreateCompatibleBitmap(from, width, height);
  HGDIOBJ before = SelectObject(to, bitmap);
  BitBlt(to, 0, 0, width, height, from, 0, 0, SRCCOPY);
  SelectObject(to, before);
  DeleteDC(to);
  ReleaseDC(window, from);
  return bitmap;
}

int countColours(Gdiplus::Bitmap& bitmap) {
  constexpr std::size_t kMost = 256;
  std::set<Gdiplus::ARGB> colours;
  for (INT y = 0; y < static_cast<INT>(bitmap.GetHeight()); ++y) {
    for (INT x = 0; x < static_cast<INT>(bitmap.GetWidth()) && colours.size() < kMost; ++x) {
      Gdiplus::Color colour;
      bitmap.GetPixel(x, y, &colour);
      colours.insert(colour.GetValue());
    }
  }
  return static_cast<int>(colours.size());
}

int savePixels(HBITMAP pixels, const std::filesystem::path& file) {
  const ImagingSession session;
  Gdiplus::Bitmap bitmap(pixels, nullptr);
  const int colours = countColours(bitmap);
  return bitmap.Save(file.c_str(), &kPngEncoder, nullptr) == Gdiplus::Ok ? colours : 0;
}

}  // namespace

int saveWindowPicture(HWND window, const std::filesystem::path& file) {
  // Letters and buttons are drawn after the window has come up.
  constexpr std::chrono::milliseconds kDrawing{300};
  std::this_thread::sleep_for(kDrawing);
  RECT frame = {};
  GetWindowRect(window, &frame);
  HBITMAP pixels = copyPixels(window, frame.right - frame.left, frame.bottom - frame.top);
  const int colours = savePixels(pixels, file);
  DeleteObject(pixels);
  return colours;
}

}  // namespace tvrscn::test
