// Whole QZ jobs that go well: every shape, and what stands in the files. Numbers of pages go on
// through the life of the process.
#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "tests/e2e/e2e_support.h"
#include "tests/support/small_stack.h"
#include "virtual/common/codec.h"

namespace tvrscn::test {
namespace {

using virtual_device::addQzFault;
using virtual_device::decodeImageFile;
using virtual_device::QzScannerOptions;
using virtual_device::Raster;
using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;
using Types = std::vector<NotificationType>;

const Types kOnePage = {NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY, NOTIFY_JOB_COMPLETE};

class QzJob : public ScannerTest {
 protected:
  int numberOf(std::size_t page) const {
    return std::stoi(pages().at(page).filename().string().substr(std::size("Image_") - 1));
  }
  Raster pictureOf(std::size_t page) const { return decodeImageFile(pages().at(page)); }
};

QzScannerOptions feeder(int sheets) {
  QzScannerOptions options;
  options.feeder = true;
  options.sheets = sheets;
  return options;
}

// The first quantisation table of a JPEG file: the smaller its numbers, the finer the picture.
Bytes quantisationOf(const Bytes& file) {
  constexpr std::size_t kTableSize = 64;
  const std::array<std::uint8_t, 2> marker = {0xFF, 0xDB};
  const auto found = std::search(file.begin(), file.end(), marker.begin(), marker.end());
  // Behind the marker: the length, two bytes, and the table's precision and number.
  const auto table = found + 5;
  return {table, table + kTableSize};
}

// 1000 and 800 tenths of a millimetre at 75 dots per inch.
TEST_F(QzJob, FlatbedInColourDeliversOnePageOnTheCallersThread) {
  startQz({});
  EXPECT_EQ(scan(smallJob()), 0);
  EXPECT_EQ(types(), kOnePage);
  EXPECT_TRUE(std::none_of(notifications_.begin(), notifications_.end(),
                           [](const Notification& one) { return one.onAnotherThread; }));
  ASSERT_EQ(pages().size(), 1U);
  EXPECT_EQ(pages()[0], out_ / ("Image_" + std::to_string(numberOf(0)) + ".jpg"));
  const JpegHead head = readJpegHead(pages()[0]);
  EXPECT_EQ(head.width, 295);
  EXPECT_EQ(head.height, 236);
  EXPECT_EQ(head.components, 3);
  EXPECT_EQ(head.dotsPerInch, 75);
  EXPECT_EQ(logLines(), Lines{"...USB success."});
  EXPECT_EQ(std::distance(fs::directory_iterator(out_), fs::directory_iterator()), 1);
}

TEST_F(QzJob, GreyPageIsGrey) {
  QzScannerOptions options;
  options.pageFiles = {makePage("half", 200, 60)};
  startQz(options);
  TevraScanUIData job = smallJob();
  job.colorMode = "Grayscale";
  EXPECT_EQ(scan(job), 0);
  expectHalves(pictureOf(0), 200, 60);
  expectGrey(pictureOf(0));
}

TEST_F(QzJob, FeederDeliversEverySheetInOrder) {
  QzScannerOptions options = feeder(3);
  options.pageFiles = makeThreeSheets();
  startQz(options);
  EXPECT_EQ(scan(smallJob()), 0);
  expectThreeSheets();
  EXPECT_EQ(numberOf(1), numberOf(0) + 1);
  EXPECT_EQ(numberOf(2), numberOf(0) + 2);
}

TEST_F(QzJob, BothSidesOfASheetArePages) {
  QzScannerOptions options = feeder(2);
  options.pageFiles = makeThreeSheets();
  startQz(options);
  TevraScanUIData job = smallJob();
  job.sides = "TwoSided";
  EXPECT_EQ(scan(job), 0);
  ASSERT_EQ(pages().size(), 4U);
  EXPECT_NEAR(meanLevel(pictureOf(1)), 120, 3);
  EXPECT_NEAR(meanLevel(pictureOf(3)), 40, 3);  // the first picture once more
}

TEST_F(QzJob, BackOfASheetComesTurned) {
  QzScannerOptions options = feeder(1);
  options.pageFiles = makeSheetToTurn();
  startQz(options);
  expectBackTurned();
}

TEST_F(QzJob, FlatbedHasOneSide) {
  startQz({});
  TevraScanUIData job = smallJob();
  job.sides = "TwoSided";
  EXPECT_EQ(scan(job), 0);
  EXPECT_EQ(types(), kOnePage);
}

// The device sends colour; black and white are made here, in the file.
TEST_F(QzJob, BlackAndWhitePageIsBlackAndWhiteAtItsOwnSizeAndQuality) {
  QzScannerOptions options;
  options.pageFiles = {makePage("half", 200, 40)};
  options.jpegQuality = 60;
  startQz(options);
  EXPECT_EQ(scan(smallJob()), 0);
  TevraScanUIData job = smallJob();
  job.colorMode = "BlackAndWhite";
  EXPECT_EQ(scan(job), 0);
  ASSERT_EQ(pages().size(), 2U);
  expectGrey(pictureOf(1));
  EXPECT_GT(meanLevel(pictureOf(1), 0.0, 0.45), 252);
  EXPECT_EQ(readJpegHead(pages()[1]).width, readJpegHead(pages()[0]).width);
  EXPECT_EQ(readJpegHead(pages()[1]).height, readJpegHead(pages()[0]).height);
  EXPECT_EQ(readJpegHead(pages()[1]).dotsPerInch, 75);
}

// A darkness of -160 is 40 levels brighter on the first page; each page divides what the one before
// it left by four once more, and turns its sign.
TEST_F(QzJob, BrightnessShrinksFromPageToPage) {
  QzScannerOptions options = feeder(4);
  options.pageFiles = {makePage("middle", 120, 120)};
  startQz(options);
  TevraScanUIData job = smallJob();
  job.brightness = L"-160";
  EXPECT_EQ(scan(job), 0);
  ASSERT_EQ(pages().size(), 4U);
  EXPECT_NEAR(meanLevel(pictureOf(0)), 160, 2);
  EXPECT_NEAR(meanLevel(pictureOf(1)), 110, 2);
  EXPECT_NEAR(meanLevel(pictureOf(2)), 122, 2);
  EXPECT_NEAR(meanLevel(pictureOf(3)), 120, 1);
}

// 100 of 400 are a quarter: the slope is 100 / 75, about the middle of 127.5.
TEST_F(QzJob, ContrastPullsLevelsApart) {
  QzScannerOptions options;
  options.pageFiles = {makePage("half", 187, 67)};
  startQz(options);
  TevraScanUIData job = smallJob();
  job.contrast = L"100";
  EXPECT_EQ(scan(job), 0);
  expectHalves(pictureOf(0), 207, 47);
}

TEST_F(QzJob, ProcessedPageIsNoCoarserThanItCame) {
  for (const int quality : {50, 75, 90, 97}) {
    QzScannerOptions options;
    options.jpegQuality = quality;
    startQz(options);
    TevraScanUIData job = smallJob();
    EXPECT_EQ(scan(job), 0);
    const Bytes before = quantisationOf(readFile(pages().back()));
    for (const char* colour : {"FullColor", "BlackAndWhite"}) {
      job.colorMode = colour;
      job.brightness = L"-40";
      EXPECT_EQ(scan(job), 0);
      const Bytes after = quantisationOf(readFile(pages().back()));
      ASSERT_EQ(before.size(), after.size());
      for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_LE(after[i], before[i]) << colour << " at quality " << quality << ", entry " << i;
    }
    scanner_.reset();
  }
}

// What comes behind the end of a block is not asked for. The sheet's first half stands in front of
// the next page.
TEST_F(QzJob, PageInTwoBlocksLeavesItsFirstBlockToTheNextPage) {
  QzScannerOptions options = feeder(2);
  startQz(options);
  EXPECT_EQ(scan(smallJob()), 0);
  ASSERT_EQ(pages().size(), 2U);
  const Bytes first = readFile(pages()[0]);
  const Bytes second = readFile(pages()[1]);
  scanner_.reset();
  notifications_.clear();

  ASSERT_EQ(addQzFault(options, "block-end=1"), "");
  startQz(options);
  EXPECT_EQ(scan(smallJob()), 0);
  EXPECT_EQ(types(), kOnePage);
  Bytes expected(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(first.size() / 2));
  expected.insert(expected.end(), second.begin(), second.end());
  EXPECT_EQ(readFile(pages().at(0)), expected);
}

TEST_F(QzJob, PageInTwoBlocksOnTheFlatbedIsNoPage) {
  QzScannerOptions options;
  ASSERT_EQ(addQzFault(options, "block-end=1"), "");
  startQz(options);
  EXPECT_EQ(scan(smallJob()), 0);
  EXPECT_EQ(types(), Types{NOTIFY_JOB_COMPLETE});
  EXPECT_TRUE(fs::is_empty(out_));
}

TEST_F(QzJob, PageOfFourThousandRepliesNeedsNoDeepStack) {
  QzScannerOptions options;
  options.pageReplies = 4000;
  startQz(options);
  constexpr std::size_t kStack = 1024U * 1024U;
  long result = 1;
  runOnStack(kStack, [&] { result = scan(smallJob()); });
  EXPECT_EQ(result, 0);
  EXPECT_EQ(types(), kOnePage);
  EXPECT_EQ(readJpegHead(pages().at(0)).width, 295);
}

TEST_F(QzJob, RepliesOfOddSizesAndEmptyOnesMakeTheSamePage) {
  QzScannerOptions options;
  startQz(options);
  EXPECT_EQ(scan(smallJob()), 0);
  scanner_.reset();
  options.leastReply = 1;
  options.mostReply = 500;
  options.emptyReplies = 3;
  options.emptyEnd = true;
  startQz(options);
  EXPECT_EQ(scan(smallJob()), 0);
  ASSERT_EQ(pages().size(), 2U);
  EXPECT_EQ(readFile(pages()[0]), readFile(pages()[1]));
}

TEST_F(QzJob, NumbersGoOnFromJobToJob) {
  startQz(feeder(2));
  const auto client = openClient();
  EXPECT_EQ(scan(*client, smallJob()), 0);
  EXPECT_EQ(scan(*client, smallJob()), 0);
  const Types job = {NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY, NOTIFY_IMAGE_READY,
                     NOTIFY_JOB_COMPLETE};
  Types both = job;
  both.insert(both.end(), job.begin(), job.end());
  EXPECT_EQ(types(), both);
  EXPECT_EQ(numberOf(3), numberOf(0) + 3);
}

TEST_F(QzJob, FolderThatIsNotThereIsAnnouncedAllTheSame) {
  startQz({});
  EXPECT_EQ(scanInto((folder_ / "nowhere").wstring(), *openClient(), smallJob()), 0);
  EXPECT_EQ(types(), kOnePage);
  EXPECT_FALSE(fs::exists(pages().at(0)));
}

}  // namespace
}  // namespace tvrscn::test
