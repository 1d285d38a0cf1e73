#include "tests/e2e/e2e_support.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <stdexcept>

#include "platform/files.h"
#include "tests/e2e/job_end.h"
#include "tvrscn/store_app.h"
#include "virtual/common/codec.h"

namespace tvrscn::test {

using virtual_device::decodeImageFile;
using virtual_device::Raster;

namespace {

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

// The middle one of an instance id's three parts.
std::string hardwareIdOf(const virtual_device::Placement& placement) {
  const std::string& id = placement.instanceId;
  const std::size_t first = id.find('\\') + 1;
  return id.substr(first, id.find('\\', first) - first);
}

std::unique_ptr<CScanUSBClient> makeClient(const DeviceChoice& device) {
  auto client = std::make_unique<CScanUSBClient>(device.controller);
  client->InitExceptionStrings(nullptr);
  client->SetUsingTevraUI(0);
  client->InitScanConfigInfo("scanner", device.hardwareId, L"label");
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

DeviceChoice lowEndDevice() {
  return {CONTROLLER_LOWEND, hardwareIdOf(virtual_device::lowEndPlacement())};
}

DeviceChoice qzDevice() {
  return {CONTROLLER_QZ, hardwareIdOf(virtual_device::qzPlacement())};
}

int runOneJob(const fs::path& folder, const DeviceChoice& device) {
  JobEnd end;
  TevraScanUIData job = smallJob();
  const auto client = makeClient(device);
  const long result = client->Scan(job, end.callback(), folder.wstring(), nullptr);
  if (result != 0) return static_cast<int>(result);
  // A QZ job that never had its turn tells nothing.
  if (device.controller == CONTROLLER_QZ && !end.hasCome()) return 2;
  return end.type() == NOTIFY_JOB_COMPLETE ? 0 : 1;
}

std::vector<std::string> oneJobArguments(const fs::path& folder, const DeviceChoice& device) {
  return {kOneJobArgument, folder.string(), std::to_string(device.controller), device.hardwareId};
}

int runStoreScan(const fs::path& folder, const std::string& settings) {
  const fs::path root = enterOwnRoot(folder / "root");
  if (root.empty()) return kNoOwnRoot;
  setVariable("TVRSCN_PROGRAM_DATA", (folder / "settings").string());
  const fs::path file = storeAppSettingsPath();
  fs::create_directories(file.parent_path());
  writeFile(file, settings);
  scanFromStoreApp(0);
  fs::remove(file);
  for (int page = 1;; ++page) {
    const std::string name = "Image_" + std::to_string(page) + ".jpg";
    if (!fs::exists(root / name)) return page - 1;
    fs::copy_file(root / name, folder / name);
    fs::remove(root / name);
  }
}

void ScannerTest::SetUp() {
  // Jobs of other tests hold no mutex of this one's.
  fs::create_directories(folder_ / "runtime");
  setVariable("XDG_RUNTIME_DIR", (folder_ / "runtime").string());
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
  clearVariable("XDG_RUNTIME_DIR");
}

void ScannerTest::start(const virtual_device::HpScannerOptions& options) {
  scanner_ = virtual_device::startHpScanner(options, {});
  setVariable("TVRSCN_DEVICE_PATH", scanner_->placement().deviceFolder.string());
}

void ScannerTest::startLowEnd(const virtual_device::LowEndScannerOptions& options) {
  scanner_ = virtual_device::startLowEndScanner(options, virtual_device::lowEndPlacement());
  setVariable("TVRSCN_DEVICE_PATH", scanner_->placement().deviceFolder.string());
  device_ = lowEndDevice();
}

void ScannerTest::startQz(const virtual_device::QzScannerOptions& options) {
  scanner_ = virtual_device::startQzScanner(options, virtual_device::qzPlacement());
  setVariable("TVRSCN_DEVICE_PATH", scanner_->placement().deviceFolder.string());
  // The whole instance id: a test may have another scanner of the family.
  device_ = {CONTROLLER_QZ, scanner_->placement().instanceId};
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

void ScannerTest::expectHalves(const Raster& page, int upper, int lower) {
  EXPECT_NEAR(meanLevel(page, 0.0, 0.45), upper, 3);
  EXPECT_NEAR(meanLevel(page, 0.55, 1.0), lower, 3);
}

void ScannerTest::expectGrey(const Raster& page) {
  int colourful = 0;
  for (std::size_t i = 0; page.channels == 3 && i + 2 < page.data.size(); i += 3) {
    if (page.data[i] != page.data[i + 1] || page.data[i] != page.data[i + 2]) ++colourful;
  }
  EXPECT_EQ(colourful, 0);
}

std::vector<fs::path> ScannerTest::makeThreeSheets() {
  return {makePage("dark", 40, 40), makePage("middle", 120, 120), makePage("light", 220, 220)};
}

void ScannerTest::expectThreeSheets() const {
  EXPECT_EQ(types(), (std::vector<NotificationType>{NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY,
                                                    NOTIFY_IMAGE_READY, NOTIFY_IMAGE_READY,
                                                    NOTIFY_JOB_COMPLETE}));
  ASSERT_EQ(pages().size(), 3U);
  EXPECT_NEAR(meanLevel(decodeImageFile(pages()[0])), 40, 3);
  EXPECT_NEAR(meanLevel(decodeImageFile(pages()[1])), 120, 3);
  EXPECT_NEAR(meanLevel(decodeImageFile(pages()[2])), 220, 3);
}

std::vector<fs::path> ScannerTest::makeSheetToTurn() {
  return {makePage("front", 230, 30), makePage("back", 230, 30)};
}

void ScannerTest::expectBackTurned() {
  TevraScanUIData job = smallJob();
  job.sides = "SecondSideRotation";
  EXPECT_EQ(scan(job), 0);
  ASSERT_EQ(pages().size(), 2U);
  EXPECT_GT(meanLevel(decodeImageFile(pages()[0]), 0.0, 0.4), 200);
  EXPECT_LT(meanLevel(decodeImageFile(pages()[1]), 0.0, 0.4), 60);
}

std::unique_ptr<CScanUSBClient> ScannerTest::openClient() {
  return makeClient(device_);
}

long ScannerTest::scan(TevraScanUIData job) {
  return scan(*openClient(), job);
}

long ScannerTest::scan(CScanUSBClient& client, TevraScanUIData job) {
  return scanInto(out_.wstring(), client, job);
}

long ScannerTest::scanInto(const std::wstring& folder, CScanUSBClient& client,
                           TevraScanUIData job) {
  const long result = client.Scan(job, &callback_, folder, nullptr);
  // The library tells the end of a job while its worker still has to clear away what is its own,
  // and tells nothing of that.
  if (result == 0 && device_.controller == CONTROLLER_LOWEND) {
    constexpr std::chrono::seconds kPatience{60};
    EXPECT_TRUE(worker_.wait(kPatience)) << "the worker does not end";
  }
  return result;
}

void ScannerTest::collect(ScanNotification* notification, void* context) {
  auto* test = static_cast<ScannerTest*>(context);
  const bool onAnotherThread = std::this_thread::get_id() != test->thread_;
  if (onAnotherThread) test->worker_.watchThisThread();
  const std::lock_guard lock(test->mutex_);
  test->notifications_.push_back(
      {notification->type, notification->text, test->dialogs().size(), onAnotherThread});
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
