// Whole LowEnd jobs that go well: every shape, and what stands in the files. The worker of a job
// has ended when scan returns.
#include <algorithm>
#include <iterator>
#include <vector>

#include "tests/e2e/e2e_support.h"
#include "virtual/common/codec.h"

namespace tvrscn::test {
namespace {

using virtual_device::decodeImageFile;
using virtual_device::LowEndDocumentShape;
using virtual_device::LowEndScannerOptions;
using virtual_device::Raster;
using Names = std::vector<std::string>;
using Types = std::vector<NotificationType>;

// The numbers of a client's files begin at 1.
class LowEndJob : public ScannerTest {
 protected:
  Names pageNames() const {
    Names names;
    for (const fs::path& page : pages())
      names.push_back(page.filename().string());
    return names;
  }
};

LowEndScannerOptions feeder(int sheets) {
  LowEndScannerOptions options;
  options.feeder = true;
  options.sheets = sheets;
  return options;
}

TevraScanUIData blackAndWhiteJob() {
  TevraScanUIData job = smallJob();
  job.colorMode = "BlackAndWhite";
  return job;
}

TEST_F(LowEndJob, FlatbedInColourDeliversOnePageFromTheWorker) {
  startLowEnd({});
  EXPECT_EQ(scan(smallJob()), 0);
  EXPECT_EQ(types(), (Types{NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY, NOTIFY_JOB_COMPLETE}));
  EXPECT_TRUE(std::all_of(notifications_.begin(), notifications_.end(),
                          [](const Notification& one) { return one.onAnotherThread; }));
  ASSERT_EQ(pages().size(), 1U);
  EXPECT_EQ(pages()[0], out_ / "Image_1.JPG");
  // A6 by its media code, 105 x 148 mm at 75 dpi.
  const JpegHead head = readJpegHead(pages()[0]);
  EXPECT_EQ(head.width, 310);
  EXPECT_EQ(head.height, 437);
  EXPECT_EQ(head.components, 3);
  EXPECT_EQ(head.dotsPerInch, 75);
  // A step that goes well leaves no line, and the folder has the page and nothing else.
  EXPECT_EQ(logLines(), Names{});
  EXPECT_EQ(std::distance(fs::directory_iterator(out_), fs::directory_iterator()), 1);
}

// 100 x 80 mm are 3.9 x 3.1 inches to a tenth.
TEST_F(LowEndJob, GreyPageOfACustomSizeIsGrey) {
  LowEndScannerOptions options;
  options.pageFiles = {makePage("half", 200, 60)};
  startLowEnd(options);
  TevraScanUIData job = smallJob();
  job.colorMode = "Grayscale";
  job.mediaSize = "Custom";
  EXPECT_EQ(scan(job), 0);
  ASSERT_EQ(pages().size(), 1U);
  const Raster page = decodeImageFile(pages()[0]);
  EXPECT_EQ(page.width, 293);
  EXPECT_EQ(page.height, 232);
  expectHalves(page, 200, 60);
  expectGrey(page);
}

// The feeder takes no A6: it is asked for a custom size, which its least one, 4 x 5 inches,
// replaces; at 75 dpi and the least width it is one dot more.
TEST_F(LowEndJob, FeederDeliversEverySheetInOrder) {
  LowEndScannerOptions options = feeder(3);
  options.pageFiles = makeThreeSheets();
  startLowEnd(options);
  EXPECT_EQ(scan(smallJob()), 0);
  expectThreeSheets();
  ASSERT_EQ(pageNames(), (Names{"Image_1.JPG", "Image_2.JPG", "Image_3.JPG"}));
  EXPECT_EQ(readJpegHead(pages()[0]).width, 301);
  EXPECT_EQ(readJpegHead(pages()[0]).height, 375);
}

TEST_F(LowEndJob, BlackAndWhiteSheetsBecomeSinglePageFiles) {
  LowEndScannerOptions options = feeder(2);
  options.pageFiles = {makePage("front", 250, 5), makePage("back", 5, 250)};
  startLowEnd(options);
  TevraScanUIData job = blackAndWhiteJob();
  job.sides = "TwoSided";
  EXPECT_EQ(scan(job), 0);
  ASSERT_EQ(pageNames(), (Names{"Image_1.tif", "Image_2.tif", "Image_3.tif", "Image_4.tif"}));
  for (std::size_t i = 0; i < pages().size(); ++i) {
    const Raster page = decodeImageFile(pages()[i]);
    const bool lightFirst = i % 2 == 0;
    EXPECT_EQ(meanLevel(page, 0.0, 0.45), lightFirst ? 255 : 0) << i;
    EXPECT_EQ(meanLevel(page, 0.55, 1.0), lightFirst ? 0 : 255) << i;
  }
  // The file that they were cut from is gone.
  EXPECT_EQ(std::distance(fs::directory_iterator(out_), fs::directory_iterator()), 4);
}

TEST_F(LowEndJob, BlackAndWhiteFileForEachPageIsDeliveredAsItCame) {
  LowEndScannerOptions options = feeder(3);
  options.documentShape = LowEndDocumentShape::kFilePerPage;
  options.group4 = false;
  startLowEnd(options);
  EXPECT_EQ(scan(blackAndWhiteJob()), 0);
  ASSERT_EQ(pageNames(), (Names{"tempImage_1.TIF", "Image_2.TIF", "Image_3.TIF"}));
  for (const fs::path& page : pages())
    EXPECT_EQ(decodeImageFile(page).height, 375) << page;
}

TEST_F(LowEndJob, SecondSideRotationTurnsTheBack) {
  LowEndScannerOptions options = feeder(1);
  options.pageFiles = makeSheetToTurn();
  startLowEnd(options);
  expectBackTurned();
}

TEST_F(LowEndJob, BrightnessGoesOutAsADarkness) {
  LowEndScannerOptions options;
  options.pageFiles = {makePage("level", 160, 160)};
  startLowEnd(options);
  TevraScanUIData job = smallJob();
  job.brightness = L"40";
  EXPECT_EQ(scan(job), 0);
  ASSERT_EQ(pages().size(), 1U);
  EXPECT_LT(meanLevel(decodeImageFile(pages()[0])), 150);
}

TEST_F(LowEndJob, TwoJobsOnOneClientNumberTheirPagesOn) {
  startLowEnd(feeder(2));
  const auto client = openClient();
  EXPECT_EQ(scan(*client, smallJob()), 0);
  EXPECT_EQ(scan(*client, blackAndWhiteJob()), 0);
  EXPECT_EQ(pageNames(), (Names{"Image_1.JPG", "Image_2.JPG", "Image_3.tif", "Image_4.tif"}));
  const Types once = {NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY, NOTIFY_IMAGE_READY,
                      NOTIFY_JOB_COMPLETE};
  Types twice = once;
  twice.insert(twice.end(), once.begin(), once.end());
  EXPECT_EQ(types(), twice);
}

// And the open cover of a feeder that is not there does not count.
TEST_F(LowEndJob, AnswersInPiecesAndManyMarkersMakeThePageAllTheSame) {
  LowEndScannerOptions options;
  options.pageFiles = {makePage("half", 200, 60)};
  options.splitAnswers = true;
  options.mostPacket = 300;
  options.blockDistance = 40;
  options.jobDone = false;
  options.pollsUntilReady = 1;
  options.feederInstalled = false;
  ASSERT_EQ(virtual_device::addLowEndFault(options, "cover-open=adf"), "");
  startLowEnd(options);
  EXPECT_EQ(scan(smallJob()), 0);
  ASSERT_EQ(pages().size(), 1U);
  const Raster page = decodeImageFile(pages()[0]);
  EXPECT_EQ(page.height, 437);
  expectHalves(page, 200, 60);
  EXPECT_EQ(logLines(), Names{"LowEnd USB Scanner is not ready"});
}

TEST_F(LowEndJob, RangesAreThoseOfTheDevice) {
  LowEndScannerOptions options;
  options.darkness = {1, 9, 5};
  options.contrast = {-4, 4, 0};
  startLowEnd(options);
  const auto client = openClient();
  IPPMinMaxNormalStepData brightness = {0, 0, 0, 7};
  IPPMinMaxNormalStepData contrast = {0, 0, 0, 7};
  client->GetBrightnessContrastValue(brightness, contrast);
  EXPECT_EQ(brightness.Min, 1);
  EXPECT_EQ(brightness.Max, 9);
  EXPECT_EQ(brightness.Normal, 5);
  EXPECT_EQ(contrast.Min, -4);
  EXPECT_EQ(contrast.Max, 4);
  EXPECT_EQ(contrast.Normal, 0);
  EXPECT_EQ(brightness.Step, 7);
  EXPECT_EQ(contrast.Step, 7);
}

}  // namespace
}  // namespace tvrscn::test
