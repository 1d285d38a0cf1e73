// A QZ device that replies with the fuzzer's bytes: the sequence or one command, and its clean-up,
// with the real replies, mode pages, pages, files and post-processing.
//
// The input is read front to back. Its first byte chooses the settings, its second what is run.
// Then every ReadFile takes one control byte (0x80: the read fails; 0x40: it brings at most the low
// six bits; else all it asked for) and its data. When the input is used up, every read fails.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "platform/device_file.h"
#include "tests/support/qz_test_peer.h"
#include "tests/support/test_peers.h"

namespace {

class InputDevice {
 public:
  void load(std::span<const std::uint8_t> input) { rest_ = input; }

  BOOL read(std::uint8_t* buffer, DWORD size, DWORD& count) {
    count = 0;
    if (rest_.empty()) return 0;
    constexpr std::uint8_t kFails = 0x80;
    constexpr std::uint8_t kShort = 0x40;
    const std::uint8_t control = rest_.front();
    rest_ = rest_.subspan(1);
    const std::size_t most =
        (control & kShort) != 0 ? std::min<std::size_t>(size, control & 0x3FU) : size;
    const std::size_t length = std::min(most, rest_.size());
    if (length != 0) std::memcpy(buffer, rest_.data(), length);
    rest_ = rest_.subspan(length);
    if (size == sizeof(USBVendorPacketHeader)) tame(buffer);
    count = static_cast<DWORD>(length);
    return (control & kFails) == 0 ? 1 : 0;
  }

 private:
  // Lengths that cost minutes and find nothing; the full range has tests of its own.
  static void tame(std::uint8_t* header) {
    header[4] = 0;
    header[5] = 0;
    header[6] &= 0x0FU;
  }

  std::span<const std::uint8_t> rest_;
};

InputDevice device;

struct Report {
  int started = 0;
  int pages = 0;
  int complete = 0;
};

// The page of a notification is there to be read.
void hear(ScanNotification* notification, void* context) {
  auto& report = *static_cast<Report*>(context);
  if (std::memchr(notification->text, '\0', sizeof(notification->text)) == nullptr) std::abort();
  switch (notification->type) {
    case NOTIFY_TRANSFER_STARTED:
      if (report.pages != 0 || ++report.started != 1) std::abort();
      break;
    case NOTIFY_IMAGE_READY:
      ++report.pages;
      if (!std::filesystem::is_regular_file(notification->text)) std::abort();
      break;
    case NOTIFY_JOB_COMPLETE:
      ++report.complete;
      break;
    default:
      if (notification->type != NOTIFY_SCAN_FAILED && notification->type != NOTIFY_CONN_FAILURE)
        std::abort();
  }
}

std::filesystem::path makeFolder() {
  std::filesystem::path folder = std::filesystem::temp_directory_path() / "tvrscn-fuzz-qz";
  std::filesystem::create_directories(folder);
  return folder;
}

std::shared_ptr<CQZUSBScanDataSource> sourceFor(std::uint8_t choice) {
  const char* const modes[] = {"FullColor", "Grayscale", "BlackAndWhite", "Auto"};
  const char* const sides[] = {"OneSided", "SecondSideRotation"};
  auto source = std::make_shared<CQZUSBScanDataSource>();
  source->SetScaningPropertiesFromApp(
      modes[choice & 0x03U], "300x300", sides[(choice >> 2U) & 1U], 210, 297, 0,
      (choice & 0x08U) != 0 ? 400 : 0, (choice & 0x10U) != 0 ? -1000 : 0,
      (choice & 0x20U) != 0 ? "Off" : "On", (choice >> 6U) & 1, "ISO_A4SEF");
  return source;
}

// What one operation leaves fits together.
void check(USB_QZ_Controller& controller, bool sequence, bool result, const Report& report) {
  if (QZTestPeer::imageBytes(controller) == nullptr && QZTestPeer::imageSize(controller) != 0)
    std::abort();
  if (report.complete != (sequence && result ? 1 : 0)) std::abort();
  if (!sequence && !result) std::abort();
}

void run(std::uint8_t settings, std::uint8_t choice, const std::filesystem::path& folder) {
  const int commands[] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 40, 40, 40, 90, 18, 194, 22};
  const int command = commands[choice & 0x0FU];
  Report report;
  TVR_FP_CALLBACK callback = {hear, &report};
  USB_QZ_Controller controller;
  QZTestPeer::scanFolder(controller) = folder.wstring();
  QZTestPeer::dataSource(controller) = sourceFor(settings);
  QZTestPeer::pendingModePage(controller) = kQZSubDevicePage;
  ControllerTestPeer::callback(controller) = &callback;
  ControllerTestPeer::usingTevraUI(controller) = false;
  const bool result = controller.sendCommandstoDevice(command);
  check(controller, command == 0, result, report);
}

}  // namespace

BOOL ReadFile(HANDLE, void* buffer, DWORD size, DWORD* read, OVERLAPPED*) {
  return device.read(static_cast<std::uint8_t*>(buffer), size, *read);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::filesystem::path folder = makeFolder();
  if (size < 2) return 0;
  device.load({data + 2, size - 2});
  run(data[0], data[1], folder);
  for (const auto& file : std::filesystem::directory_iterator(folder))
    std::filesystem::remove(file);
  return 0;
}
