// A whole HP job whose device answers with the fuzzer's bytes: settings, dialogues, strips, pages
// and files are the real ones.
//
// The input is read front to back. Its first byte chooses the settings. Then every ReadFile takes
// one control byte (0x80: the read fails; 0x40: it brings at most the low six bits; else all it
// asked for) and its data. When the input is used up, the job is left by an exception, as a cable
// is pulled.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <span>
#include <string>

#include "platform/device_file.h"
#include "tvrscn/hp_controller.h"
#include "tvrscn/scan_client.h"

namespace {

// Leaves the job; no std::exception, so that nothing in between takes it for a failure of its own.
struct InputUsedUp {};

class InputDevice {
 public:
  void load(std::span<const std::uint8_t> input) { rest_ = input; }

  std::uint8_t next() {
    if (rest_.empty()) throw InputUsedUp{};
    const std::uint8_t byte = rest_.front();
    rest_ = rest_.subspan(1);
    return byte;
  }

  BOOL read(std::uint8_t* buffer, DWORD size, DWORD& count) {
    constexpr std::uint8_t kFails = 0x80;
    constexpr std::uint8_t kShort = 0x40;
    const std::uint8_t control = next();
    const std::size_t most =
        (control & kShort) != 0 ? std::min<std::size_t>(size, control & 0x3FU) : size;
    const std::size_t length = std::min(most, rest_.size());
    if (length != 0) std::memcpy(buffer, rest_.data(), length);
    rest_ = rest_.subspan(length);
    if (size == sizeof(HPPKUSBReadResponse)) tame(buffer);
    count = static_cast<DWORD>(length);
    return (control & kFails) == 0 ? 1 : 0;
  }

 private:
  // Sizes that cost minutes and find nothing: a run is for the many small jobs. What a device can
  // do with the full range has tests of its own.
  static void tame(std::uint8_t* answer) {
    answer[4] = 0;
    answer[5] = 0;
    answer[8] &= 0x01;
    answer[10] &= 0x03;
  }

  std::span<const std::uint8_t> rest_;
};

InputDevice device;

TevraScanUIData settingsFor(std::uint8_t choice) {
  TevraScanUIData settings;
  settings.mediaSize = "ISO_A4SEF";
  settings.pageWidth = 210;
  settings.pageHeight = 297;
  settings.sides = (choice & 0x08U) != 0 ? "TwoSided" : "OneSided";
  settings.resolution = "300x300";
  const char* const modes[] = {"FullColor", "Grayscale", "BlackAndWhite", "Auto"};
  settings.colorMode = modes[choice & 0x03U];
  settings.brightness = (choice & 0x10U) != 0 ? L"-120" : L"0";
  settings.contrast = (choice & 0x20U) != 0 ? L"200" : L"0";
  settings.backgroundRemoval = (choice & 0x04U) != 0 ? L"Off" : L"On";
  return settings;
}

// The page of a notification is there to be read and is taken away again.
void takePage(ScanNotification* notification, void* /*context*/) {
  if (std::memchr(notification->text, '\0', sizeof(notification->text)) == nullptr) std::abort();
  if (notification->type != NOTIFY_IMAGE_READY) return;
  std::error_code ignored;
  std::filesystem::remove(notification->text, ignored);
}

std::wstring outputFolder() {
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "tvrscn-fuzz";
  std::filesystem::create_directories(folder);
  return folder.wstring();
}

}  // namespace

BOOL ReadFile(HANDLE, void* buffer, DWORD size, DWORD* read, OVERLAPPED*) {
  return device.read(static_cast<std::uint8_t*>(buffer), size, *read);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::wstring folder = outputFolder();
  if (size == 0) return 0;
  device.load({data + 1, size - 1});
  TevraScanUIData settings = settingsFor(data[0]);
  TVR_FP_CALLBACK callback = {takePage, nullptr};
  bool errorShown = false;
  try {
    USB_HP_Controller controller;
    controller.doScan(settings, &callback, folder, errorShown);
  } catch (const InputUsedUp&) {
    // The device is gone, and with it the job.
  }
  return 0;
}
