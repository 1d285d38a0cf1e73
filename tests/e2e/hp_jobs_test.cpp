// Whole HP jobs that go well: every shape, and what stands in the files.
#include <vector>

#include "tests/e2e/e2e_support.h"
#include "virtual/common/codec.h"

namespace tvrscn::test {
namespace {

using virtual_device::decodeImageFile;
using virtual_device::HpScannerOptions;
using virtual_device::Raster;
using Types = std::vector<NotificationType>;

class HPJob : public ScannerTest {};

// 100 x 80 mm are 4724 x 3779 units of 1/1200 inch, 295 x 236 pixels at 75 dpi.
constexpr int kSmallWidth = 295;
constexpr int kSmallHeight = 236;

HpScannerOptions feeder(int sheets) {
  HpScannerOptions options;
  options.feeder = true;
  options.sheets = sheets;
  options.stripLines = 64;
  return options;
}

TEST_F(HPJob, FlatbedInColourDeliversOnePage) {
  start({});
  EXPECT_EQ(scan(smallJob()), 0);
  EXPECT_EQ(types(), (Types{NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY, NOTIFY_JOB_COMPLETE}));
  ASSERT_EQ(pages().size(), 1U);
  const JpegHead head = readJpegHead(pages()[0]);
  EXPECT_EQ(head.width, kSmallWidth);
  EXPECT_EQ(head.height, kSmallHeight);
  EXPECT_EQ(head.components, 3);
  EXPECT_EQ(head.dotsPerInch, 75);
}

TEST_F(HPJob, PageFileIsNamedByFolderAndNumber) {
  start({});
  scan(smallJob());
  ASSERT_EQ(pages().size(), 1U);
  EXPECT_EQ(pages()[0].parent_path(), out_);
  EXPECT_TRUE(pages()[0].filename().string().starts_with("Image_"));
  EXPECT_EQ(pages()[0].extension(), ".JPG");
}

TEST_F(HPJob, GreyPageIsGrey) {
  HpScannerOptions options;
  options.pageFiles = {makePage("half", 200, 60)};
  start(options);
  TevraScanUIData job = smallJob();
  job.colorMode = "Grayscale";
  EXPECT_EQ(scan(job), 0);
  ASSERT_EQ(pages().size(), 1U);
  EXPECT_EQ(readJpegHead(pages()[0]).components, kGreyPageComponents);
  const Raster page = decodeImageFile(pages()[0]);
  expectHalves(page, 200, 60);
  expectGrey(page);
}

TEST_F(HPJob, BlackAndWhitePageHoldsBlackAndWhiteOnly) {
  HpScannerOptions options;
  options.pageFiles = {makePage("half", 200, 60)};
  start(options);
  TevraScanUIData job = smallJob();
  job.colorMode = "BlackAndWhite";
  EXPECT_EQ(scan(job), 0);
  ASSERT_EQ(pages().size(), 1U);
  const Raster page = decodeImageFile(pages()[0]);
  EXPECT_GT(meanLevel(page, 0.0, 0.45), 254.0);
  EXPECT_LT(meanLevel(page, 0.55, 1.0), 1.0);
}

TEST_F(HPJob, ResolutionTextsGiveTheirPixels) {
  start({});
  const struct {
    const char* text;
    int width;
    int dotsPerInch;
  } rows[] = {
      // 4724 units times dpi, over 1200, towards zero
      {"75x75", 295, 75},    {"100x100", 393, 100},  {"150x150", 590, 150},
      {"200x200", 787, 200}, {"300x300", 1181, 300}, {"72x72", 1181, 300},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    notifications_.clear();
    TevraScanUIData job = smallJob();
    job.resolution = row.text;
    EXPECT_EQ(scan(job), 0);
    ASSERT_EQ(pages().size(), 1U);
    EXPECT_EQ(readJpegHead(pages()[0]).width, row.width);
    EXPECT_EQ(readJpegHead(pages()[0]).dotsPerInch, row.dotsPerInch);
  }
}

TEST_F(HPJob, FeederDeliversEverySheetInOrder) {
  HpScannerOptions options = feeder(3);
  options.pageFiles = makeThreeSheets();
  start(options);
  EXPECT_EQ(scan(smallJob()), 0);
  expectThreeSheets();
}

TEST_F(HPJob, TwoSidedJobDeliversBothSidesOfEverySheet) {
  start(feeder(2));
  TevraScanUIData job = smallJob();
  job.sides = "TwoSided";
  EXPECT_EQ(scan(job), 0);
  EXPECT_EQ(pages().size(), 4U);
}

TEST_F(HPJob, SecondSideRotationTurnsTheBack) {
  HpScannerOptions options = feeder(1);
  options.pageFiles = makeSheetToTurn();
  start(options);
  expectBackTurned();
}

TEST_F(HPJob, BrightnessIsADarknessAndContrastSpreads) {
  HpScannerOptions options;
  options.pageFiles = {makePage("levels", 160, 90)};
  start(options);
  TevraScanUIData job = smallJob();
  job.brightness = L"80";  // becomes -20
  EXPECT_EQ(scan(job), 0);
  job.brightness = L"0";
  job.contrast = L"160";  // becomes 40
  EXPECT_EQ(scan(job), 0);
  ASSERT_EQ(pages().size(), 2U);
  const Raster darker = decodeImageFile(pages()[0]);
  EXPECT_NEAR(meanLevel(darker, 0.0, 0.4), 140, 3);
  EXPECT_NEAR(meanLevel(darker, 0.6, 1.0), 70, 3);
  const Raster contrasted = decodeImageFile(pages()[1]);
  EXPECT_GT(meanLevel(contrasted, 0.0, 0.4), 170);
  EXPECT_LT(meanLevel(contrasted, 0.6, 1.0), 80);
}

TEST_F(HPJob, TwoJobsInARowOnOneClientNumberTheirPagesOn) {
  start(feeder(2));
  const auto client = openClient();
  EXPECT_EQ(scan(*client, smallJob()), 0);
  EXPECT_EQ(scan(*client, smallJob()), 0);
  const auto files = pages();
  ASSERT_EQ(files.size(), 4U);
  for (std::size_t i = 1; i < files.size(); ++i)
    EXPECT_NE(files[i], files[i - 1]);
  for (const fs::path& file : files)
    EXPECT_EQ(readJpegHead(file).width, kSmallWidth);
}

TEST_F(HPJob, ClientAfterADestroyedClientUsesTheHandlesThatStayedOpen) {
  start({});
  EXPECT_EQ(scan(smallJob()), 0);
  EXPECT_EQ(scan(smallJob()), 0);
  EXPECT_EQ(pages().size(), 2U);
}

TEST_F(HPJob, NullCallbackScansInSilence) {
  start({});
  const auto client = openClient();
  TevraScanUIData job = smallJob();
  EXPECT_EQ(client->Scan(job, nullptr, out_.wstring(), nullptr), 0);
  EXPECT_FALSE(fs::is_empty(out_));
}

TEST_F(HPJob, FolderWithUnicodeNameGetsItsPage) {
  start({});
  const auto client = openClient();
  const fs::path folder = folder_ / u8"Bl\u00E4tter \u7528\u7D19";
  fs::create_directories(folder);
  TevraScanUIData job = smallJob();
  const std::wstring wide = folder_.wstring() + L"/Bl\u00E4tter \u7528\u7D19";
  EXPECT_EQ(client->Scan(job, nullptr, wide, nullptr), 0);
  EXPECT_FALSE(fs::is_empty(folder));
}

TEST_F(HPJob, TemporaryStripFileIsGoneAfterTheJob) {
  const fs::path temporary = folder_ / "temporary";
  fs::create_directories(temporary);
  setVariable(kTemporaryFolderVariable, temporary.string());
  start({});
  EXPECT_EQ(scan(smallJob()), 0);
  std::vector<fs::path> strips;
  for (const auto& entry : fs::directory_iterator(temporary)) {
    if (entry.path().filename().string().starts_with("ast")) strips.push_back(entry.path());
  }
  clearVariable(kTemporaryFolderVariable);
  EXPECT_TRUE(strips.empty());
}

TEST_F(HPJob, LogTellsEveryStep) {
  HpScannerOptions options;
  options.stripLines = 118;  // 236 lines are two blocks, header and end
  start(options);
  EXPECT_EQ(scan(smallJob()), 0);
  std::vector<std::string> lines = logLines();
  // Block sizes are the encoder's affair.
  for (std::string& line : lines) {
    if (line.starts_with("Received Block Size: ") || line.starts_with("Total Block Size : ")) {
      line.resize(line.find(": ") + 2);
    }
  }
  const std::vector<std::string> expected = {
      "COMMAND: INQUIRY",
      "COMMAND: RESERVE UNIT",
      "COMMAND: SET_WINDOW_PARAM Status: Good",
      "Scanner status message : ",
      "Height Received: 236",
      "Width Received: 295 ",
      "COMMAND: OBJECT POSITION Status: Good",
      "COMMAND: READ Status: Good",
      "Received Block Size: ",
      "Received Vertical  Size: 118",
      "Received Horizontal Size: 295",
      "Received JPEG Header block",
      "COMMAND: READ IMAGE",
      "COMMAND: READ Status: Good",
      "Received Block Size: ",
      "Received Vertical  Size: 118",
      "Received Horizontal Size: 295",
      "Received end block",
      "COMMAND: READ IMAGE",
      "Scanned Page : 1",
      "Total Block Size : ",
      "Total Height : 236",
      "Total Width : 295",
      "Total Page Scanned : 1",
      "COMMAND: ABORT Status: Good",
      "COMMAND: RELEASE_UNIT Status: Good",
  };
  EXPECT_EQ(lines, expected);
}

}  // namespace
}  // namespace tvrscn::test
