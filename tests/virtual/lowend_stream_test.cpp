// The stream as a plain host sees it: whatever the seed, every file comes back to the last byte.
#include "virtual/lowend/lowend_stream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/virtual/support/lowend_host.h"

namespace tvrscn::virtual_device {
namespace {

using testing::StreamModel;

Bytes bytesOf(const std::string& text) {
  return {text.begin(), text.end()};
}

// What a shape makes of these files, each handed over in pieces of at most `piece` bytes.
std::vector<Bytes> streamOf(const LowEndStreamShape& shape, const std::vector<Bytes>& files,
                            bool withJobDone = true, std::size_t piece = 1000) {
  std::vector<Bytes> transfers;
  LowEndStream stream(shape, [&](Bytes transfer) {
    transfers.push_back(std::move(transfer));
    return true;
  });
  for (const Bytes& file : files) {
    EXPECT_TRUE(stream.beginFile());
    for (std::size_t at = 0; at < file.size(); at += piece) {
      const std::size_t end = std::min(file.size(), at + piece);
      EXPECT_TRUE(stream.addData(Bytes(file.begin() + static_cast<std::ptrdiff_t>(at),
                                       file.begin() + static_cast<std::ptrdiff_t>(end))));
    }
  }
  EXPECT_TRUE(stream.end(withJobDone));
  return transfers;
}

// An image file full of what a host could take for markers.
Bytes trickyFile(const std::string& start, std::mt19937& random) {
  const std::string words[] = {
      "BLOCK", "BLO",   "CK",        "OCKB",     "NEWFILE",          "NEW",
      "FILE",  "JOB",   "DONE",      "JOBDONE",  "JOBCANCEL",        "II",
      "\n",    "TES\n", "BLOCK 123", "\xFF\xD8", "\xFF\xD8\xFF\xE0", "\xFF\xE0"};
  std::string text = start;
  const std::size_t size = 20 + random() % 3000;
  while (text.size() < size) {
    if (random() % 2 == 0) {
      text += words[random() % std::size(words)];
    } else {
      text += static_cast<char>(random() % 256);
    }
  }
  return bytesOf(text);
}

constexpr std::uint64_t kSeeds = 200;

class SeededStream : public ::testing::TestWithParam<const char*> {};

TEST_P(SeededStream, BringsEveryFileToTheLastByte) {
  const std::string start(GetParam(), 4);
  for (std::uint64_t seed = 0; seed < kSeeds; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(static_cast<unsigned>(seed));
    LowEndStreamShape shape;
    shape.seed = seed;
    shape.leastPacket = 1 + static_cast<int>(random() % 20);
    shape.mostPacket = shape.leastPacket + static_cast<int>(random() % 900);
    const int distances[] = {0, 1, 2, 30, 400};
    shape.blockDistance = distances[random() % std::size(distances)];
    shape.controlPackets = static_cast<int>(random() % 5);
    shape.junk = random() % 2 == 0;
    std::vector<Bytes> files;
    for (unsigned i = 0; i <= seed % 4; ++i)
      files.push_back(trickyFile(start, random));
    const StreamModel host(streamOf(shape, files, random() % 2 == 0, 4 + random() % 700));
    EXPECT_TRUE(host.hasEnded());
    EXPECT_FALSE(host.isCancelled());
    ASSERT_EQ(host.files().size(), files.size());
    for (std::size_t i = 0; i < files.size(); ++i)
      ASSERT_TRUE(host.files()[i] == files[i]) << "file " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(, SeededStream, ::testing::Values("\xFF\xD8\xFF\xE0", "II*\0"),
                         [](const auto& row) { return row.param[0] == 'I' ? "Tiff" : "Jpeg"; });

// Packets of one size without anything extra.
LowEndStreamShape plainShape(int packet) {
  LowEndStreamShape shape;
  shape.leastPacket = packet;
  shape.mostPacket = packet;
  shape.blockDistance = 0;
  shape.controlPackets = 0;
  return shape;
}

TEST(LowEndStream, PacketsHaveTheirLengthInTheHeader) {
  const Bytes file = bytesOf("II*!" + std::string(700, 'x'));
  const std::vector<Bytes> transfers = streamOf(plainShape(300), {file}, false);
  ASSERT_GE(transfers.size(), 3U);
  // 300 is 2C 01 with the low byte first.
  EXPECT_EQ(Bytes(transfers[0].begin(), transfers[0].begin() + 10),
            (Bytes{0x1B, 0x4E, 0x02, 0x00, 0x2C, 0x01, 0x00, 0x00, 0x00, 0x00}));
  EXPECT_EQ(transfers[0].size(), 310U);
  EXPECT_EQ(transfers.back()[8], 0x01);
  for (std::size_t i = 0; i + 1 < transfers.size(); ++i)
    EXPECT_EQ(transfers[i][8], 0x00);
}

TEST(LowEndStream, TheSameSeedGivesTheSameTransfersAndAnotherOneDoesNot) {
  std::mt19937 random(3);
  const std::vector<Bytes> files = {trickyFile("II*!", random), trickyFile("II*!", random)};
  LowEndStreamShape shape;
  shape.mostPacket = 50;
  shape.blockDistance = 40;
  shape.junk = true;
  const std::vector<Bytes> once = streamOf(shape, files);
  EXPECT_EQ(streamOf(shape, files), once);
  shape.seed = 2;
  EXPECT_NE(streamOf(shape, files), once);
}

TEST(LowEndStream, TheLastPacketIsOfEveryKind) {
  const std::vector<Bytes> files = {bytesOf("II*!" + std::string(100, 'x'))};
  bool hasData = false;
  bool isEmpty = false;
  bool isControl = false;
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    LowEndStreamShape shape = plainShape(40);
    shape.seed = seed;
    const Bytes last = streamOf(shape, files).back();
    hasData = hasData || last.size() > 12;
    isEmpty = isEmpty || last == Bytes{0x1B, 0x4E, 2, 0, 0, 0, 0, 0, 1, 0};
    isControl = isControl || last == Bytes{0x1B, 0x4E, 2, 0, 2, 0, 0, 0, 1, 0, 0, 0};
  }
  EXPECT_TRUE(hasData);
  EXPECT_TRUE(isEmpty);
  EXPECT_TRUE(isControl);
}

std::string joined(const std::vector<std::string>& records) {
  std::string text;
  for (const std::string& record : records)
    text += record;
  return text;
}

TEST(LowEndStream, BlockMarkersTellTheBytesSinceTheLastOne) {
  LowEndStreamShape shape = plainShape(20);
  shape.blockDistance = 50;
  const std::vector<Bytes> transfers =
      streamOf(shape, {bytesOf("II*!" + std::string(2000, 'x'))}, false);
  const std::string text = joined(StreamModel(transfers).records());
  std::size_t markers = 0;
  std::size_t from = text.find("II*!");
  for (std::size_t at = text.find("BLOCK", from); at != std::string::npos;
       at = text.find("BLOCK", from)) {
    std::string digits = std::to_string(at - from);
    digits.insert(0, 5 - digits.size(), '0');
    EXPECT_EQ(text.substr(at, 18), "BLOCK " + digits + " BYTES\n");
    from = at + 18;
    ++markers;
  }
  // One in 50 bytes on average.
  EXPECT_GT(markers, 20U);
  EXPECT_LT(markers, 80U);
}

TEST(LowEndStream, MarkersRunAcrossPacketBorders) {
  LowEndStreamShape shape = plainShape(7);
  shape.blockDistance = 30;
  const StreamModel host(streamOf(shape, {bytesOf("II*!" + std::string(500, 'x'))}, false));
  EXPECT_NE(joined(host.records()).find("BLOCK"), std::string::npos);
  const bool cut = std::any_of(host.records().begin(), host.records().end(), [](const auto& text) {
    return text.find('B') != std::string::npos && text.find("BLOCK") == std::string::npos;
  });
  EXPECT_TRUE(cut);
}

TEST(LowEndStream, FilesAreJoinedByAByteAndTheWord) {
  const std::string first = "\xFF\xD8\xFF\xE0" + std::string(30, 'a');
  const std::string second = "\xFF\xD8\xFF\xE0" + std::string(30, 'b');
  const std::string text = joined(
      StreamModel(streamOf(plainShape(16), {bytesOf(first), bytesOf(second)}, false)).records());
  const std::size_t border = text.find(first + "\nNEWFILE");
  ASSERT_NE(border, std::string::npos);
  EXPECT_NE(text.find(second, border + first.size()), std::string::npos);
}

// A host acts on one border in a packet, and on none in the packet in which it finds a file's
// start.
TEST(LowEndStream, FilesShorterThanAPacketStayApart) {
  std::vector<Bytes> files;
  for (const char letter : {'a', 'b', 'c', 'd', 'e'})
    files.push_back(bytesOf("II*!" + std::string(9, letter)));
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    LowEndStreamShape shape = plainShape(5000);
    shape.seed = seed;
    EXPECT_EQ(StreamModel(streamOf(shape, files)).files(), files);
  }
}

TEST(LowEndStream, JobDoneIsLastInItsRecord) {
  const Bytes file = bytesOf("II*!" + std::string(100, 'x'));
  const std::vector<Bytes> transfers = streamOf(plainShape(30), {file});
  std::string text;
  for (const Bytes& transfer : transfers)
    text.append(transfer.begin() + 10, transfer.end());
  const std::size_t mark = text.find("xJOBDONE");
  ASSERT_NE(mark, std::string::npos);
  EXPECT_EQ(text.find_first_not_of('\0', mark + 8), std::string::npos);
  for (const Bytes& transfer : streamOf(plainShape(30), {file}, false)) {
    EXPECT_EQ(std::string(transfer.begin(), transfer.end()).find("JOBDONE"), std::string::npos);
  }
}

TEST(LowEndStream, ACancelledJobSaysSoInItsFirstRecord) {
  std::vector<Bytes> transfers;
  LowEndStream stream(plainShape(3), [&](Bytes transfer) {
    transfers.push_back(std::move(transfer));
    return true;
  });
  ASSERT_TRUE(stream.addCancellation());
  ASSERT_TRUE(stream.end(false));
  EXPECT_EQ(transfers[0], (Bytes{0x1B, 0x4E, 2, 0, 9, 0, 0, 0, 0, 0, 'J', 'O', 'B', 'C', 'A', 'N',
                                 'C', 'E', 'L'}));
  EXPECT_TRUE(StreamModel(transfers).isCancelled());
  EXPECT_TRUE(StreamModel(transfers).hasEnded());
}

TEST(LowEndStream, StopsWhenTheHostIsGone) {
  int transfers = 0;
  LowEndStream stream(plainShape(10), [&](const Bytes&) { return ++transfers < 3; });
  ASSERT_TRUE(stream.beginFile());
  EXPECT_FALSE(stream.addData(bytesOf("II*!" + std::string(1000, 'x'))));
  EXPECT_EQ(transfers, 3);
}

TEST(LowEndStream, ControlPacketsAndJunkComeAmongThePackets) {
  LowEndStreamShape shape = plainShape(20);
  shape.controlPackets = 3;
  shape.junk = true;
  int control = 0;
  int otherCodes = 0;
  int noise = 0;
  for (const Bytes& transfer : streamOf(shape, {bytesOf("II*!" + std::string(4000, 'x'))})) {
    if (transfer.size() == 12 && transfer[0] == 0x1B && transfer[8] == 0) {
      EXPECT_EQ(transfer, (Bytes{0x1B, 0x4E, 2, 0, 2, 0, 0, 0, 0, 0, 0, 0}));
      ++control;
    } else if (transfer[0] != 0x1B) {
      ++noise;
    } else if (transfer[2] != 2) {
      EXPECT_EQ(transfer, (Bytes{0x1B, 0x4E, 4, 0, 0, 0, 0, 0, 0, 0}));
      ++otherCodes;
    }
  }
  EXPECT_GT(control, 20);
  EXPECT_GT(otherCodes, 5);
  EXPECT_GT(noise, 5);
}

}  // namespace
}  // namespace tvrscn::virtual_device
