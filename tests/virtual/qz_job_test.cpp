// Whole jobs with the QZ scanner: which pages come, and how they are cut into replies.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/support/images.h"
#include "tests/virtual/support/qz_host.h"
#include "virtual/qz/qz_scanner.h"

namespace tvrscn::virtual_device {
namespace {

namespace qz = testing::qz;
using qz::JobHost;
using testing::Picture;
using testing::readJpegBytes;
using testing::TestFolder;

const std::vector<std::string> kGood = {""};

QzScannerOptions feederWith(int sheets) {
  QzScannerOptions options;
  options.feeder = true;
  options.sheets = sheets;
  return options;
}

std::vector<Bytes> pagesOf(const QzScannerOptions& options, const Bytes& fromFeeder) {
  JobHost host(1, fromFeeder);
  QzScanner scanner(options);
  scanner.serve(host);
  EXPECT_EQ(host.outcomes, kGood);
  EXPECT_TRUE(host.page.empty());
  return host.pages;
}

TEST(QzJob, TheFlatbedHasOnePage) {
  QzScannerOptions options;
  EXPECT_EQ(pagesOf(options, qz::feeder()).size(), 1U);
  options = feederWith(0);
  EXPECT_EQ(pagesOf(options, qz::feeder()).size(), 1U) << "so it has when the feeder is empty";
}

TEST(QzJob, TheFeederGivesItsSheets) {
  JobHost host;
  QzScanner scanner(feederWith(3));
  scanner.serve(host);
  EXPECT_EQ(host.pages.size(), 3U);
  const std::vector<int> pass = {0x07, 0x5A, 0x5A, 0x55, 0x24, 0x1B, 0xC2, 0x28, 0xC1};
  std::vector<int> commands = {0xC3, 0x16, 0xC1};
  for (int i = 0; i < 3; ++i)
    commands.insert(commands.end(), pass.begin(), pass.end());
  commands.insert(commands.end(), {0x07, 0x17});
  EXPECT_EQ(host.commands, commands);
  EXPECT_NE(host.pages[0], host.pages[1]) << "each has its number";
}

TEST(QzJob, SheetsLieAnewInEachJob) {
  JobHost host(2);
  QzScanner scanner(feederWith(2));
  scanner.serve(host);
  ASSERT_EQ(host.pages.size(), 4U);
  EXPECT_EQ(host.pages[2], host.pages[0]);
  EXPECT_EQ(host.pages[3], host.pages[1]);
  JobHost next;
  scanner.serve(next);
  EXPECT_EQ(next.pages.size(), 2U) << "and for the next host";
}

TEST(QzJob, TwoSidesAreTwoPages) {
  EXPECT_EQ(pagesOf(feederWith(3), qz::selection(0x40, 0, 0x80)).size(), 6U);
  EXPECT_EQ(pagesOf(feederWith(1), qz::selection(0x40, 0, 0x80)).size(), 2U);
}

TEST(QzJob, TheBackOfASheetIsTurnedWhenAskedFor) {
  const TestFolder folder;
  Picture picture = testing::filled(75, 150, {255, 255, 255});
  testing::fillBox(picture, 0, 0, 74, 50, {0, 0, 0});
  testing::writePngFile(folder / "page.png", picture);
  QzScannerOptions options = feederWith(1);
  options.pageFiles = {folder / "page.png"};
  for (const bool turned : {false, true}) {
    const std::vector<Bytes> pages = pagesOf(options, qz::selection(0x40, 0, turned ? 0x84 : 0x80));
    ASSERT_EQ(pages.size(), 2U);
    const auto levels = [&](std::size_t page) {
      const Picture image = readJpegBytes(pages[page]);
      return std::vector<int>{image.at(30, 20).at(0) / 128, image.at(30, 130).at(0) / 128};
    };
    EXPECT_EQ(levels(0), (std::vector<int>{0, 1}));
    EXPECT_EQ(levels(1), turned ? (std::vector<int>{1, 0}) : (std::vector<int>{0, 1}));
  }
}

TEST(QzJob, ALimitOfOnePageClosesTheFeeder) {
  EXPECT_EQ(pagesOf(feederWith(3), qz::selection(0x50, 1, 0x00)).size(), 1U);
  EXPECT_EQ(pagesOf(feederWith(3), qz::selection(0x50, 1, 0x80)).size(), 1U);
}

TEST(QzJob, AFeederWithoutOptionsIsUsedByItself) {
  QzScannerOptions options = feederWith(2);
  options.feederOptions = 0x20;
  EXPECT_EQ(pagesOf(options, qz::selection(0x00, 0, 0x00)).size(), 2U);
}

TEST(QzJob, RepliesAreAsLongAsTheOptionsSay) {
  QzScannerOptions options;
  options.leastReply = options.mostReply = 100;
  JobHost host;
  QzScanner scanner(options);
  scanner.serve(host);
  ASSERT_GT(host.readSizes.size(), 5U);
  for (std::size_t i = 0; i + 1 < host.readSizes.size(); ++i) {
    EXPECT_EQ(host.readSizes[i], 100U);
    EXPECT_EQ(host.readStates[i], 2);
  }
  EXPECT_LE(host.readSizes.back(), 100U);
  EXPECT_EQ(host.readStates.back(), 3);
  EXPECT_EQ(host.pages, pagesOf({}, qz::feeder()));
}

TEST(QzJob, RepliesVaryBetweenTheirLimitsAndWithTheSeed) {
  QzScannerOptions options = feederWith(2);
  options.leastReply = 20;
  options.mostReply = 90;
  options.emptyReplies = 3;
  std::vector<std::vector<std::size_t>> sizes;
  for (const std::uint64_t seed : {1U, 1U, 2U}) {
    options.seed = seed;
    JobHost host;
    QzScanner scanner(options);
    scanner.serve(host);
    EXPECT_EQ(host.pages, pagesOf(feederWith(2), qz::feeder()));
    sizes.push_back(host.readSizes);
  }
  EXPECT_EQ(sizes[0], sizes[1]);
  EXPECT_NE(sizes[0], sizes[2]);
  const auto empty = std::count(sizes[0].begin(), sizes[0].end(), 0U);
  EXPECT_GT(empty, static_cast<std::ptrdiff_t>(sizes[0].size() / 10));
  EXPECT_LT(empty, static_cast<std::ptrdiff_t>(sizes[0].size() / 2));
  EXPECT_EQ(*std::max_element(sizes[0].begin(), sizes[0].end()), 90U);
}

TEST(QzJob, EveryJobDrawsFromTheSeedAnew) {
  QzScannerOptions options;
  options.leastReply = 1;
  options.mostReply = 300;
  JobHost host(2);
  QzScanner scanner(options);
  scanner.serve(host);
  const std::size_t half = host.readSizes.size() / 2;
  ASSERT_EQ(host.readSizes.size(), 2 * half);
  EXPECT_TRUE(std::equal(host.readSizes.begin(),
                         host.readSizes.begin() + static_cast<std::ptrdiff_t>(half),
                         host.readSizes.begin() + static_cast<std::ptrdiff_t>(half)));
}

TEST(QzJob, APageCanHaveAnyNumberOfReplies) {
  const std::vector<Bytes> whole = pagesOf({}, qz::feeder());
  const auto size = static_cast<int>(whole.at(0).size());
  for (const int count : {1, 2, 7, size, 3 * size}) {
    SCOPED_TRACE(count);
    QzScannerOptions options;
    options.pageReplies = count;
    JobHost host;
    QzScanner scanner(options);
    scanner.serve(host);
    EXPECT_EQ(host.readSizes.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(host.pages, whole);
    const auto [least, most] = std::minmax_element(host.readSizes.begin(), host.readSizes.end());
    EXPECT_LE(*most - *least, 1U);
  }
}

TEST(QzJob, AReplyHasNoMoreThanWasAskedFor) {
  QzScannerOptions options;
  options.pageReplies = 2;
  // 216 by 297 mm at 600 dpi.
  Bytes window = qz::smallWindow();
  const Bytes edges = {0, 0, 0x08, 0x70, 0, 0, 0x0B, 0x9A};
  window[2] = window[4] = 0x02;
  window[3] = window[5] = 0x58;
  std::copy(edges.begin(), edges.end(), window.begin() + 16);
  std::copy(edges.begin(), edges.end(), window.begin() + 40);
  JobHost host(1, qz::feeder(), qz::flatbed(), window);
  QzScanner scanner(options);
  scanner.serve(host);
  EXPECT_EQ(host.outcomes, kGood);
  ASSERT_EQ(host.pages.size(), 1U);
  ASSERT_GT(host.pages[0].size(), 600000U);
  EXPECT_EQ(*std::max_element(host.readSizes.begin(), host.readSizes.end()), 262144U);
  EXPECT_EQ(std::accumulate(host.readSizes.begin(), host.readSizes.end(), std::size_t{0}),
            host.pages[0].size());
  EXPECT_EQ(readJpegBytes(host.pages[0]).width, 5102);  // 5102.36
}

TEST(QzJob, TheLastReplyCanBeEmpty) {
  const std::vector<Bytes> whole = pagesOf({}, qz::feeder());
  for (const int count : {0, 4}) {
    QzScannerOptions options;
    options.emptyEnd = true;
    options.pageReplies = count;
    JobHost host;
    QzScanner scanner(options);
    scanner.serve(host);
    EXPECT_EQ(host.pages, whole);
    EXPECT_EQ(host.readSizes.size(), count == 0 ? 2U : 5U);
    EXPECT_EQ(host.readSizes.back(), 0U);
    EXPECT_EQ(host.readStates.back(), 3);
  }
}

}  // namespace
}  // namespace tvrscn::virtual_device
