// A job on a virtual scanner: the device runs on a thread of its own, the client is the exported
// one, and what came of it is collected for the test to look at.
#ifndef TVRSCN_TESTS_E2E_E2E_SUPPORT_H
#define TVRSCN_TESTS_E2E_E2E_SUPPORT_H

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/e2e/system.h"
#include "tests/support/temporary_folder.h"
#include "tvrscn/scan_client.h"
#include "virtual/common/raster.h"
#include "virtual/virtual_lowend_scanner.h"
#include "virtual/virtual_qz_scanner.h"
#include "virtual/virtual_scanner.h"

namespace tvrscn::test {

struct Notification {
  NotificationType type;
  std::string text;
  std::size_t dialogsBefore;  // how many dialogs had been shown by then
  bool onAnotherThread;       // than the one that called Scan
};

// What the head of a JPEG file says.
struct JpegHead {
  int width = 0;
  int height = 0;
  int components = 0;
  int dotsPerInch = 0;
};
JpegHead readJpegHead(const fs::path& file);

// Mean of the green channel over the part of a picture between two fractions of its height.
double meanLevel(const virtual_device::Raster& raster, double from = 0.0, double to = 1.0);

// Settings for a small page: 75 dpi, 100 by 80 mm, colour, one side.
TevraScanUIData smallJob();

// Which device a client is for.
struct DeviceChoice {
  ControllerType controller = CONTROLLER_HP;
  std::string hardwareId = "VID_0A7E&PID_1F48&MI_00";
};
DeviceChoice lowEndDevice();
DeviceChoice qzDevice();

// A process that is just a host: one small job into the folder that the next argument names, with
// an HP device or, where two more arguments name its controller type and hardware id, with another
// one. Its exit code is that of the job.
constexpr const char* kOneJobArgument = "--one-job";
int runOneJob(const fs::path& folder, const DeviceChoice& device);
// The arguments for such a process.
std::vector<std::string> oneJobArguments(const fs::path& folder, const DeviceChoice& device);

// A process that is a store application: it leaves its settings where they belong, scans, and puts
// what has come to the root of its drive into the folder that the next argument names, which is
// empty. What it names behind that is the line of settings.
constexpr const char* kStoreScanArgument = "--store-scan";
constexpr int kNoOwnRoot = 77;  // exit code: pages would go to the root of this machine
int runStoreScan(const fs::path& folder, const std::string& settings);

class ScannerTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Starts the scanner; the device folder it registers in becomes that of this process.
  void start(const virtual_device::HpScannerOptions& options);
  // Clients are for the LowEnd family from here on.
  void startLowEnd(const virtual_device::LowEndScannerOptions& options);
  void startQz(const virtual_device::QzScannerOptions& options);
  // A file with one picture, `level` above `lowerLevel`, for the scanner to deliver.
  fs::path makePage(const std::string& name, int level, int lowerLevel);

  // A page whose upper and lower half have these grey levels, or nearly.
  static void expectHalves(const virtual_device::Raster& page, int upper, int lower);
  static void expectGrey(const virtual_device::Raster& page);
  // Three pictures for the feeder, and the pages of a job that scanned them.
  std::vector<fs::path> makeThreeSheets();
  void expectThreeSheets() const;
  // A sheet of two pictures that are light above and dark below, and a job in which the second one
  // comes turned.
  std::vector<fs::path> makeSheetToTurn();
  void expectBackTurned();

  // A client for the scanner that runs, with its texts, without dialogs.
  std::unique_ptr<CScanUSBClient> openClient();
  // One job with a client of its own, or with the one given. Where Scan has returned 0 and a worker
  // goes on, the job ends here when that thread has.
  long scan(TevraScanUIData job);
  long scan(CScanUSBClient& client, TevraScanUIData job);
  long scanInto(const std::wstring& folder, CScanUSBClient& client, TevraScanUIData job);

  // Has dialogs answered and remembered from here on.
  void answerDialogs(const std::vector<DialogKey>& keys = {}) {
    answers_ = std::make_unique<DialogAnswers>(folder_, keys);
  }
  std::vector<Dialog> dialogs() const;
  std::vector<std::string> logLines() const;
  std::vector<fs::path> pages() const;
  std::vector<NotificationType> types() const;

  TemporaryFolder temporary_;
  fs::path folder_ = temporary_.path();  // for everything of this test
  fs::path out_ = folder_ / "pages";     // where pages go
  std::unique_ptr<DialogAnswers> answers_;
  std::vector<Notification> notifications_;
  std::unique_ptr<virtual_device::RunningScanner> scanner_;

 private:
  static void collect(ScanNotification* notification, void* context);

  DeviceChoice device_;
  TVR_FP_CALLBACK callback_ = {&ScannerTest::collect, this};
  const std::thread::id thread_ = std::this_thread::get_id();
  // A worker's notifications come under it; nobody else reads them before the worker has ended.
  std::mutex mutex_;
  ThreadWatch worker_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_E2E_E2E_SUPPORT_H
