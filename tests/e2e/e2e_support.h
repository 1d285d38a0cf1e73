// A job on a virtual scanner: the device runs on a thread of its own, the client is the exported
// one, and what came of it is collected for the test to look at.
#ifndef TVRSCN_TESTS_E2E_E2E_SUPPORT_H
#define TVRSCN_TESTS_E2E_E2E_SUPPORT_H

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tvrscn/scan_client.h"
#include "virtual/common/raster.h"
#include "virtual/virtual_scanner.h"

namespace tvrscn::test {

namespace fs = std::filesystem;

struct Notification {
  NotificationType type;
  std::string text;
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

class ScannerTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Starts the scanner; the device folder it registers in becomes that of this process.
  void start(const virtual_device::HpScannerOptions& options);
  // A file with one picture, `level` above `lowerLevel`, for the scanner to deliver.
  fs::path makePage(const std::string& name, int level, int lowerLevel);

  // A client for the scanner that runs, with its texts, without dialogs.
  std::unique_ptr<CScanUSBClient> openClient();
  // One job with a client of its own, or with the one given.
  long scan(TevraScanUIData job);
  long scan(CScanUSBClient& client, TevraScanUIData job);

  // Has dialogs answered by a program that writes them down; dialogs() is what it wrote.
  void answerDialogs();
  std::vector<std::string> dialogs() const;
  std::vector<std::string> logLines() const;
  std::vector<fs::path> pages() const;
  std::vector<NotificationType> types() const;

  fs::path folder_;  // for everything of this test
  fs::path out_;     // where pages go
  std::vector<Notification> notifications_;
  std::unique_ptr<virtual_device::RunningScanner> scanner_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_E2E_E2E_SUPPORT_H
