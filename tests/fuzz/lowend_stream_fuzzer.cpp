// The worker of a LowEnd job whose device sends the fuzzer's bytes: packets, records, files, the
// cleaning and the splitting of a TIFF are the real ones.
//
// The input is read front to back. Its first byte chooses the kind of job. Then every ReadFile
// takes one control byte (0x80: the read fails; 0x40: it brings at most the low six bits; else all
// it asked for) and its data. When the input is used up, what is still asked for is zero, and the
// next packet is the last.
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
#include "tests/support/lowend_test_peer.h"
#include "tests/support/test_peers.h"

namespace {

constexpr std::size_t kFirstRead = 512;
constexpr std::uint8_t kLastPacket[] = {0x1B, 0x4E, 2, 0, 0, 0, 0, 0, 1, 0};

class InputDevice {
 public:
  void load(std::span<const std::uint8_t> input) { rest_ = input; }

  BOOL read(std::uint8_t* buffer, DWORD size, DWORD& count) {
    if (rest_.empty()) return end(buffer, size, count);
    constexpr std::uint8_t kFails = 0x80;
    constexpr std::uint8_t kShort = 0x40;
    const std::uint8_t control = rest_.front();
    rest_ = rest_.subspan(1);
    const std::size_t most =
        (control & kShort) != 0 ? std::min<std::size_t>(size, control & 0x3FU) : size;
    const std::size_t length = std::min(most, rest_.size());
    if (length != 0) std::memcpy(buffer, rest_.data(), length);
    rest_ = rest_.subspan(length);
    if (size == kFirstRead) tame(buffer, length);
    count = static_cast<DWORD>(length);
    return (control & kFails) == 0 ? 1 : 0;
  }

 private:
  static BOOL end(std::uint8_t* buffer, DWORD size, DWORD& count) {
    count = size;
    if (size != kFirstRead) {
      std::memset(buffer, 0, size);
    } else {
      std::memcpy(buffer, kLastPacket, sizeof kLastPacket);
      count = sizeof kLastPacket;
    }
    return 1;
  }
  // Sizes that cost minutes and find nothing: a run is for the many small jobs.
  static void tame(std::uint8_t* header, std::size_t length) {
    for (std::size_t i = 6; i < std::min<std::size_t>(length, 8); ++i)
      header[i] = 0;
  }

  std::span<const std::uint8_t> rest_;
};

InputDevice device;

struct Report {
  int pages = 0;
  int complete = 0;
  int failed = 0;
};

// The page of a notification is there to be read.
void hear(ScanNotification* notification, void* context) {
  auto& report = *static_cast<Report*>(context);
  if (std::memchr(notification->text, '\0', sizeof(notification->text)) == nullptr) std::abort();
  switch (notification->type) {
    case NOTIFY_TRANSFER_STARTED:
      if (report.pages != 0) std::abort();
      break;
    case NOTIFY_IMAGE_READY:
      ++report.pages;
      if (!std::filesystem::is_regular_file(notification->text)) std::abort();
      break;
    case NOTIFY_JOB_COMPLETE:
      ++report.complete;
      break;
    default:
      ++report.failed;
  }
}

// A job ends in one way, and tells so once.
void checkEnd(unsigned result, const Report& report) {
  const bool complete = result == USB_SUCCESS;
  const bool known = complete || result == USB_ERR_SCANNER_STATE || result == USB_ERR_OPEN;
  if (!known || report.complete != (complete ? 1 : 0) || report.failed != (complete ? 0 : 1)) {
    std::abort();
  }
  if (complete && report.pages == 0) std::abort();
}

std::filesystem::path makeFolder() {
  std::filesystem::path folder = std::filesystem::temp_directory_path() / "tvrscn-fuzz-stream";
  std::filesystem::create_directories(folder);
  return folder;
}

std::shared_ptr<CLowEndUSBScanDataSource> sourceFor(std::uint8_t choice) {
  TevraScanUIData settings;
  settings.mediaSize = "ISO_A4SEF";
  settings.pageWidth = 210;
  settings.pageHeight = 297;
  settings.sides = "OneSided";
  settings.resolution = "300x300";
  settings.colorMode = (choice & 1U) != 0 ? "BlackAndWhite" : "FullColor";
  settings.brightness = settings.contrast = L"0";
  auto source = std::make_shared<CLowEndUSBScanDataSource>();
  source->setAppDataToScanCommand(settings);
  return source;
}

void runJob(std::uint8_t choice, const std::filesystem::path& folder) {
  Report report;
  TVR_FP_CALLBACK callback = {hear, &report};
  USB_LowEnd_Controller controller;
  LowEndTestPeer::imageFolder(controller) = folder.wstring();
  LowEndTestPeer::dataSource(controller) = sourceFor(choice);
  ControllerTestPeer::callback(controller) = &callback;
  auto*& arguments = LowEndTestPeer::threadArgs(controller);
  arguments = new LowEndImageThreadArgs{&controller, &callback, nullptr};
  checkEnd(LowEndTestPeer::threadProc(arguments), report);
}

}  // namespace

BOOL ReadFile(HANDLE, void* buffer, DWORD size, DWORD* read, OVERLAPPED*) {
  return device.read(static_cast<std::uint8_t*>(buffer), size, *read);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::filesystem::path folder = makeFolder();
  if (size == 0) return 0;
  device.load({data + 1, size - 1});
  runJob(data[0], folder);
  for (const auto& file : std::filesystem::directory_iterator(folder))
    std::filesystem::remove(file);
  return 0;
}
