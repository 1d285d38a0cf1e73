// Each command's answer in literal bytes, and whole jobs block by block.
#include "virtual/hp/hp_scanner.h"

#include <cstddef>
#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/virtual/support/fake_host.h"
#include "tests/virtual/support/images.h"

namespace tvrscn::virtual_device {
namespace {

using testing::Event;
using testing::exchange;
using testing::filled;
using testing::JobLink;
using testing::kAbortCommand;
using testing::kInquiryCommand;
using testing::kPositionCommand;
using testing::kReadCommand;
using testing::kReadImageCommand;
using testing::kReleaseCommand;
using testing::kReserveCommand;
using testing::kSmallWindow;
using testing::lastTransfer;
using testing::Picture;
using testing::readJpegBytes;
using testing::smallWindowFrom;
using testing::TestFolder;

HpScannerOptions feederWith(int sheets) {
  HpScannerOptions options;
  options.feeder = true;
  options.sheets = sheets;
  return options;
}

Bytes zeros(std::size_t size) {
  return Bytes(size, 0);
}

Bytes longCommand(std::uint8_t code, std::size_t size) {
  Bytes command(size, 0);
  command[0] = 0x1B;
  command[1] = 0xA8;
  command[2] = code;
  command[3] = 0xFB;
  return command;
}

TEST(HpScanner, InquiryOfAFlatbedIsAllZero) {
  HpScanner scanner{HpScannerOptions{}};
  EXPECT_EQ(lastTransfer(exchange(scanner, {kInquiryCommand})), zeros(72));
}

TEST(HpScanner, InquiryOfALoadedFeederSaysSoAtOffset53) {
  HpScanner scanner{feederWith(1)};
  Bytes expected(72, 0);
  expected[53] = 2;
  EXPECT_EQ(lastTransfer(exchange(scanner, {kInquiryCommand})), expected);
}

TEST(HpScanner, InquiryOfAnEmptyFeederSaysFlatbed) {
  HpScanner scanner{feederWith(0)};
  EXPECT_EQ(lastTransfer(exchange(scanner, {kInquiryCommand})), zeros(72));
}

TEST(HpScanner, ShortCommandsAreAnsweredGood) {
  HpScanner scanner{HpScannerOptions{}};
  EXPECT_EQ(lastTransfer(exchange(scanner, {kReserveCommand})), zeros(8));
  EXPECT_EQ(lastTransfer(exchange(scanner, {kAbortCommand})), zeros(3));
  EXPECT_EQ(lastTransfer(exchange(scanner, {kReleaseCommand})), zeros(3));
  EXPECT_EQ(lastTransfer(exchange(scanner, {longCommand(0x13, 255)})), zeros(260));
  EXPECT_EQ(lastTransfer(exchange(scanner, {longCommand(0x25, 249)})), zeros(260));
}

TEST(HpScanner, TimeoutCommandHasNoAnswer) {
  HpScanner scanner{HpScannerOptions{}};
  EXPECT_TRUE(exchange(scanner, {longCommand(0x22, 255)}).empty());
}

TEST(HpScanner, WindowAnswerHoldsHeightAndWidthInPixels) {
  HpScanner scanner{HpScannerOptions{}};
  const Bytes expected = {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                          0x00, 0x00, 0x00, 0x96,  // 150 lines
                          0x00, 0x00, 0x00, 0x4B,  // 75 pixels
                          0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                          0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
  EXPECT_EQ(lastTransfer(exchange(scanner, {kReserveCommand, kSmallWindow})), expected);
}

TEST(HpScanner, WindowOfNoHeightIsRefusedAsInvalidArea) {
  HpScanner scanner{HpScannerOptions{}};
  Bytes window = kSmallWindow;
  window[11] = 0;
  window[12] = 0;
  Bytes expected(32, 0);
  expected[1] = 0x02;
  expected[3] = 0x20;
  expected[4] = 0x02;
  expected[5] = 0x00;
  EXPECT_EQ(lastTransfer(exchange(scanner, {kReserveCommand, window})), expected);
}

TEST(HpScanner, CommandsOutOfOrderAreCommandErrors) {
  HpScanner scanner{HpScannerOptions{}};
  Bytes window(32, 0);
  window[1] = 0x02;
  window[3] = 0x20;
  window[5] = 0x02;
  EXPECT_EQ(lastTransfer(exchange(scanner, {kSmallWindow})), window);
  const Bytes position = {0x00, 0x02, 0x00, 0x00, 0x00, 0x02};
  EXPECT_EQ(lastTransfer(exchange(scanner, {kReserveCommand, kPositionCommand})), position);
  Bytes read(20, 0);
  read[1] = 0x02;
  EXPECT_EQ(lastTransfer(exchange(scanner, {kReserveCommand, kSmallWindow, kReadCommand})), read);
  const Bytes image = {0x00, 0x02, 0x02};
  EXPECT_EQ(lastTransfer(exchange(
                scanner, {kReserveCommand, kSmallWindow, kPositionCommand, kReadImageCommand})),
            image);
}

TEST(HpScanner, AbortAndReleaseEndTheJob) {
  HpScanner scanner{HpScannerOptions{}};
  const Bytes refused = {0x00, 0x02, 0x00, 0x00, 0x00, 0x02};
  for (const Bytes& command : {kAbortCommand, kReleaseCommand}) {
    EXPECT_EQ(
        lastTransfer(exchange(scanner, {kReserveCommand, kSmallWindow, command, kPositionCommand})),
        refused);
  }
}

TEST(HpScanner, ANewHostStartsWithoutReservation) {
  HpScanner scanner{HpScannerOptions{}};
  exchange(scanner, {kReserveCommand, kSmallWindow});
  EXPECT_EQ(lastTransfer(exchange(scanner, {kSmallWindow}))[1], 0x02);
}

TEST(HpScanner, UnknownCommandsGetThreeBytesAndTheDeviceGoesOn) {
  const Bytes unknown[] = {
      {},
      {0x1B},
      {0x1B, 0xA8},
      {0x1B, 0xA8, 0x30, 0x00},  // no such code
      {0x1A, 0xA8, 0x12, 0x00},  // wrong lead-in
      {0x1B, 0xA9, 0x12, 0x00},
      Bytes(300, 0xFF),
  };
  for (const Bytes& command : unknown) {
    SCOPED_TRACE(::testing::PrintToString(command));
    HpScanner scanner{HpScannerOptions{}};
    const std::vector<Event> events = exchange(scanner, {command, kInquiryCommand});
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].bytes, (Bytes{0x00, 0x02, 0x02}));
    EXPECT_EQ(events[1].bytes, zeros(72));
  }
}

TEST(HpScanner, KnownCommandsOfEveryWrongLengthGetTheirOwnAnswerWithAnError) {
  struct Row {
    const char* name;
    Bytes command;
    std::size_t answerSize;
    std::size_t messageAt;  // of the low byte; 0: no room
  };
  const Row rows[] = {
      {"inquiry", kInquiryCommand, 72, 0},
      {"reserve", kReserveCommand, 8, 5},
      {"window", kSmallWindow, 32, 5},
      {"position", kPositionCommand, 6, 5},
      {"read", kReadCommand, 20, 0},
      {"read image", kReadImageCommand, 3, 2},
      {"abort", kAbortCommand, 3, 2},
      {"release", kReleaseCommand, 3, 2},
      {"extended inquiry", longCommand(0x13, 255), 260, 0},
      {"extended window", longCommand(0x25, 249), 260, 0},
  };
  HpScanner scanner{HpScannerOptions{}};
  for (const Row& row : rows) {
    for (std::size_t size = 3; size <= row.command.size() + 1; ++size) {
      if (size == row.command.size()) continue;
      SCOPED_TRACE(std::string(row.name) + " of " + std::to_string(size));
      Bytes command = row.command;
      command.resize(size, 0);
      const Bytes answer = lastTransfer(exchange(scanner, {kReserveCommand, command}));
      ASSERT_EQ(answer.size(), row.answerSize);
      EXPECT_EQ(answer[1], 0x02);
      if (row.messageAt != 0) {
        EXPECT_EQ(answer[row.messageAt], 0x02);
      }
    }
  }
}

TEST(HpScanner, KnownCommandsWithStrayBytesAreErrors) {
  HpScanner scanner{HpScannerOptions{}};
  EXPECT_EQ(lastTransfer(exchange(scanner, {{0x1B, 0xA8, 0x16, 0x01}})),
            (Bytes{0x00, 0x02, 0x00, 0x20, 0x00, 0x02, 0x00, 0x00}));
  Bytes command = longCommand(0x13, 255);
  command[254] = 1;
  EXPECT_EQ(lastTransfer(exchange(scanner, {command}))[1], 0x02);
  command = longCommand(0x22, 254);
  EXPECT_TRUE(exchange(scanner, {command}).empty()) << "timeout is never answered";
}

TEST(HpScanner, APageIsHeaderDataAndEndBlockOfWholeStrips) {
  HpScannerOptions options;
  options.stripLines = 64;
  HpScanner scanner{options};
  JobLink job(kSmallWindow);
  scanner.serve(job);
  ASSERT_EQ(job.pages.size(), 1U);
  const JobLink::PageBlocks& blocks = job.pages[0];
  ASSERT_EQ(blocks.size(), 3U);
  const int types[] = {0x70, 0x80, 0x81};
  const int lines[] = {64, 64, 22};
  for (std::size_t i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(blocks[i].type, types[i]);
    EXPECT_EQ(blocks[i].lines, lines[i]);
    EXPECT_EQ(blocks[i].width, 75);
    EXPECT_EQ(blocks[i].size, blocks[i].jpeg.size());
    const Picture strip = readJpegBytes(blocks[i].jpeg);
    EXPECT_EQ(strip.width, 75);
    EXPECT_EQ(strip.height, lines[i]);
    EXPECT_EQ(strip.channels, 3);
    EXPECT_EQ(strip.densityUnit, 1);
    EXPECT_EQ(strip.densityX, 75);
    EXPECT_EQ(strip.densityY, 75);
  }
}

TEST(HpScanner, GrayStripsHaveOneComponent) {
  HpScanner scanner{HpScannerOptions{}};
  Bytes window = kSmallWindow;
  window[13] = window[14] = 0x02;  // 150 dpi
  window[19] = 0x03;
  JobLink job(window);
  scanner.serve(job);
  ASSERT_EQ(job.pages.size(), 1U);
  int height = 0;
  for (const JobLink::Block& block : job.pages[0]) {
    const Picture strip = readJpegBytes(block.jpeg);
    EXPECT_EQ(strip.channels, 1);
    EXPECT_EQ(strip.width, 150);
    EXPECT_EQ(strip.densityX, 150);
    height += strip.height;
  }
  EXPECT_EQ(height, 300);
}

TEST(HpScanner, APageThatFitsIntoOneBlockIsCutInTwo) {
  for (const int stripLines : {150, 151, 1000}) {
    SCOPED_TRACE(stripLines);
    HpScannerOptions options;
    options.stripLines = stripLines;
    HpScanner scanner{options};
    JobLink job(kSmallWindow);
    scanner.serve(job);
    ASSERT_EQ(job.pages.size(), 1U);
    ASSERT_EQ(job.pages[0].size(), 2U);
    EXPECT_EQ(job.pages[0][0].type, 0x70);
    EXPECT_EQ(job.pages[0][0].lines, 75);
    EXPECT_EQ(job.pages[0][1].type, 0x81);
    EXPECT_EQ(job.pages[0][1].lines, 75);
  }
}

TEST(HpScanner, TheSmallestPageHasTwoLinesInTwoBlocks) {
  HpScanner scanner{HpScannerOptions{}};
  Bytes window = kSmallWindow;
  window[11] = 0x00;
  window[12] = 0x20;  // 32 units are 2 lines
  JobLink job(window);
  scanner.serve(job);
  ASSERT_EQ(job.pages.size(), 1U);
  ASSERT_EQ(job.pages[0].size(), 2U);
  EXPECT_EQ(job.pages[0][0].lines + job.pages[0][1].lines, 2);
}

TEST(HpScanner, ReadingAgainAnnouncesTheSameBlockUntilItIsFetched) {
  HpScanner scanner{HpScannerOptions{}};
  const std::vector<Event> events =
      exchange(scanner, {kReserveCommand, kSmallWindow, kPositionCommand, kReadCommand,
                         kReadCommand, kReadImageCommand, kReadCommand});
  ASSERT_EQ(events.size(), 7U);
  EXPECT_EQ(events[3].bytes, events[4].bytes);
  EXPECT_EQ(events[4].bytes[3], 0x70);
  EXPECT_EQ(events[6].bytes[3], 0x81);
}

TEST(HpScanner, TheFlatbedHasOnePageInEachJob) {
  HpScanner scanner{HpScannerOptions{}};
  for (int round = 0; round < 2; ++round) {
    JobLink job(kSmallWindow);
    scanner.serve(job);
    EXPECT_EQ(job.pages.size(), 1U);
    EXPECT_EQ(job.lastPosition, (Bytes{0x00, 0x02, 0x00, 0x00, 0x00, 0x10}));
  }
}

TEST(HpScanner, TheFeederHasItsSheetsInEachJob) {
  struct Row {
    int sheets;
    std::uint8_t source;
    std::size_t pages;
  };
  const Row rows[] = {{1, 0x20, 1}, {3, 0x20, 3}, {2, 0x11, 4}, {2, 0x10, 4}, {0, 0x20, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sheets);
    HpScanner scanner{feederWith(row.sheets)};
    for (int round = 0; round < 2; ++round) {
      JobLink job(smallWindowFrom(row.source, 0x00));
      scanner.serve(job);
      EXPECT_EQ(job.pages.size(), row.pages);
      EXPECT_EQ(job.lastPosition, (Bytes{0x00, 0x02, 0x00, 0x00, 0x00, 0x10}));
    }
  }
}

TEST(HpScanner, AFlatbedAskedForItsFeederHasNoDocument) {
  HpScanner scanner{HpScannerOptions{}};
  JobLink job(smallWindowFrom(0x20, 0x00));
  scanner.serve(job);
  EXPECT_TRUE(job.pages.empty());
  EXPECT_EQ(job.lastPosition, (Bytes{0x00, 0x02, 0x00, 0x00, 0x00, 0x10}));
}

TEST(HpScanner, AskingForTheNextPageGivesUpTheRestOfThisOne) {
  HpScanner scanner{feederWith(2)};
  const std::vector<Event> events =
      exchange(scanner, {kReserveCommand, smallWindowFrom(0x20, 0x00), kPositionCommand,
                         kReadCommand, kPositionCommand, kReadCommand, kPositionCommand});
  ASSERT_EQ(events.size(), 7U);
  EXPECT_EQ(events[4].bytes, zeros(6));
  EXPECT_EQ(events[5].bytes[3], 0x70) << "the second page begins anew";
  EXPECT_EQ(events[6].bytes, (Bytes{0x00, 0x02, 0x00, 0x00, 0x00, 0x10}));
}

// The four quarters of a sheet, so that a turn shows.
std::vector<std::filesystem::path> quarteredPages(const TestFolder& folder) {
  Picture picture = filled(100, 200, {255, 255, 255});
  fillBox(picture, 0, 0, 50, 100, {200, 0, 0});
  fillBox(picture, 50, 100, 100, 200, {0, 0, 200});
  testing::writePngFile(folder / "quarters.png", picture);
  return {folder / "quarters.png"};
}

void expectNear(const std::vector<int>& pixel, const std::vector<int>& expected) {
  ASSERT_EQ(pixel.size(), expected.size());
  for (std::size_t i = 0; i < pixel.size(); ++i)
    EXPECT_NEAR(pixel[i], expected[i], 6) << i;
}

TEST(HpScanner, OnlyTheSecondSideOfAFlippedSheetIsTurned) {
  const TestFolder folder;
  HpScannerOptions options = feederWith(1);
  options.pageFiles = quarteredPages(folder);
  options.stripLines = 50;
  struct Row {
    std::uint8_t source;
    bool turned;
  };
  for (const Row& row : {Row{0x11, false}, Row{0x10, true}}) {
    SCOPED_TRACE(int{row.source});
    HpScanner scanner{options};
    JobLink job(smallWindowFrom(row.source, 0x00));
    scanner.serve(job);
    ASSERT_EQ(job.pages.size(), 2U);
    const Picture front = readJpegBytes(job.pages[0].front().jpeg);
    expectNear(front.at(10, 10), {200, 0, 0});
    expectNear(front.at(65, 10), {255, 255, 255});
    const Picture back = readJpegBytes(job.pages[1].front().jpeg);
    expectNear(back.at(10, 10),
               row.turned ? std::vector<int>{0, 0, 200} : std::vector<int>{200, 0, 0});
    const Picture backEnd = readJpegBytes(job.pages[1].back().jpeg);
    expectNear(backEnd.at(65, 40),
               row.turned ? std::vector<int>{200, 0, 0} : std::vector<int>{0, 0, 200});
  }
}

TEST(HpScanner, PagesGoThroughTheFilesAndStartOver) {
  const TestFolder folder;
  testing::writePngFile(folder / "dark.png", filled(4, 4, {10, 10, 10}));
  testing::writePngFile(folder / "light.png", filled(4, 4, {180, 180, 180}));
  HpScannerOptions options = feederWith(3);
  options.pageFiles = {folder / "dark.png", folder / "light.png"};
  HpScanner scanner{options};
  JobLink job(smallWindowFrom(0x20, 0x00));
  scanner.serve(job);
  ASSERT_EQ(job.pages.size(), 3U);
  const int levels[] = {10, 180, 10};
  for (std::size_t page = 0; page < 3; ++page) {
    EXPECT_NEAR(readJpegBytes(job.pages[page][0].jpeg).at(30, 30)[0], levels[page], 4) << page;
  }
}

TEST(HpScanner, OptionsOutOfRangeAreRefused) {
  HpScannerOptions options;
  options.stripLines = 0;
  EXPECT_THROW(HpScanner{options}, std::runtime_error);
  options = {};
  options.jpegQuality = 101;
  EXPECT_THROW(HpScanner{options}, std::runtime_error);
  options = {};
  options.sheets = -1;
  EXPECT_THROW(HpScanner{options}, std::runtime_error);
}

}  // namespace
}  // namespace tvrscn::virtual_device
