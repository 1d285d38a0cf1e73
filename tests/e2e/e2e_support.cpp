#include "tests/e2e/e2e_support.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <stdexcept>

#include "virtual/common/codec.h"

namespace tvrscn::test {
namespace {

constexpr const char* kHardwareId = "VID_0A7E&PID_1F48&MI_00";

std::vector<std::string> readLines(const fs::path& file) {
  std::vector<std::string> lines;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

int word(const std::vector<std::uint8_t>& bytes, std::size_t at) {
  return bytes.at(at) * 256 + bytes.at(at + 1);
}

std::unique_ptr<CScanUSBClient> makeClient() {
  auto client = std::make_unique<CScanUSBClient>(CONTROLLER_HP);
  client->InitExceptionStrings(nullptr);
  client->SetUsingTevraUI(0);
  client->InitScanConfigInfo("scanner", kHardwareId, L"label");
  return client;
}

}  // namespace

JpegHead readJpegHead(const fs::path& file) {
  const std::vector<std::uint8_t> bytes = readFile(file);
  JpegHead head;
  std::size_t at = 2;
  while (bytes.at(at) == 0xFF) {
    const int marker = bytes.at(at + 1);
    if (marker == 0xE0 && bytes.at(at + 11) == 1) head.dotsPerInch = word(bytes, at + 12);
    if (marker == 0xC0 || marker == 0xC2) {
      head.height = word(bytes, at + 5);
      head.width = word(bytes, at + 7);
      head.components = bytes.at(at + 9);
      return head;
    }
    at += 2 + static_cast<std::size_t>(word(bytes, at + 2));
  }
  throw std::runtime_error(file.string() + " is no JPEG file");
}

double meanLevel(const virtual_device::Raster& raster, double from, double to) {
  const int first = static_cast<int>(raster.height * from);
  const int last = static_cast<int>(raster.height * to);
  const int green = raster.channels == 3 ? 1 : 0;
  double sum = 0;
  for (int y = first; y < last; ++y) {
    for (int x = 0; x < raster.width; ++x)
      sum += raster.line(y)[x * raster.channels + green];
  }
  return sum / (static_cast<double>(last - first) * raster.width);
}

TevraScanUIData smallJob() {
  TevraScanUIData job;
  job.mediaSize = "ISO_A6SEF";
  job.pageWidth = 100;
  job.pageHeight = 80;
  job.sides = "OneSided";
  job.resolution = "75x75";
  job.colorMode = "FullColor";
  job.brightness = L"0";
  job.contrast = L"0";
  job.backgroundRemoval = L"Off";
  return job;
}

int runOneJob(const fs::path& folder) {
  TevraScanUIData job = smallJob();
  return static_cast<int>(makeClient()->Scan(job, nullptr, folder.wstring(), nullptr));
}

void ScannerTest::SetUp() {
  fs::create_directories(out_);
  setVariable("TVRSCN_LOG", (folder_ / "log").string());
  // Where a test expects no dialog, a dialog is an answer that shows.
  clearVariable("TVRSCN_DIALOG");
  setVariable("TVRSCN_DEVICE_PATH", folder_.string());
}

void ScannerTest::TearDown() {
  answers_.reset();
  if (scanner_) scanner_->stop();
  scanner_.reset();
  clearVariable("TVRSCN_LOG");
  clearVariable("TVRSCN_DEVICE_PATH");
}

void ScannerTest::start(const virtual_device::HpScannerOptions& options) {
  scanner_ = virtual_device::startHpScanner(options, {});
  setVariable("TVRSCN_DEVICE_PATH", scanner_->placement().deviceFolder.string());
}

fs::path ScannerTest::makePage(const std::string& name, int level, int lowerLevel) {
  virtual_device::Raster raster(100, 80, 3);
  for (int y = 0; y < raster.height; ++y) {
    const int value = y < raster.height / 2 ? level : lowerLevel;
    std::fill_n(raster.line(y), raster.lineBytes(), static_cast<std::uint8_t>(value));
  }
  const auto bytes = virtual_device::encodeJpeg(raster, 95, 25);
  const fs::path file = folder_ / (name + ".jpg");
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  return file;
}

std::unique_ptr<CScanUSBClient> ScannerTest::openClient() {
  return makeClient();
}

long ScannerTest::scan(TevraScanUIData job) {
  return scan(*openClient(), job);
}

long ScannerTest::scan(CScanUSBClient& client, TevraScanUIData job) {
  TVR_FP_CALLBACK callback = {&ScannerTest::collect, this};
  return client.Scan(job, &callback, out_.wstring(), nullptr);
}

void ScannerTest::collect(ScanNotification* notification, void* context) {
  auto* test = static_cast<ScannerTest*>(context);
  test->notifications_.push_back({notification->type, notification->text, test->dialogs().size()});
}

std::vector<Dialog> ScannerTest::dialogs() const {
  return answers_ ? answers_->seen() : std::vector<Dialog>{};
}

std::vector<std::string> ScannerTest::logLines() const {
  return readLines(folder_ / "log");
}

std::vector<fs::path> ScannerTest::pages() const {
  std::vector<fs::path> files;
  for (const Notification& notification : notifications_) {
    if (notification.type == NOTIFY_IMAGE_READY) files.emplace_back(notification.text);
  }
  return files;
}

std::vector<NotificationType> ScannerTest::types() const {
  std::vector<NotificationType> types;
  for (const Notification& notification : notifications_)
    types.push_back(notification.type);
  return types;
}

}  // namespace tvrscn::test
