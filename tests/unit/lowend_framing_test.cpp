// The removal of block markers: from the payload of one packet, and from a file by way of the work
// file.
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "family_lowend/lowend_framing.h"
#include "tests/support/lowend_test.h"

namespace {

using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::LowEndTest;
using tvrscn::test::readFile;
using tvrscn::test::writeFile;

// 18 bytes.
const std::string kMarker = "BLOCK012345678TES\n";
// The file is read in windows of this many bytes.
constexpr std::size_t kWindow = 262144;

// --- Packets -------------------------------------------------------------------------------------

struct PacketCase {
  const char* name;
  std::string packet;
  std::string result;
};

const PacketCase kPacketCases[] = {
    {"Empty", "", ""},
    {"NothingOfInterest", "some image bytes", "some image bytes"},
    {"LineInfoAloneStays", "abLINFO012345678901234", "abLINFO012345678901234"},
    {"ThreeLettersOfTheStart", "BLO", "BLO"},
    {"ThreeLettersOfTheEnd", "TES", "TES"},
    {"RestOfAnEarlierMarker", "123TES\nimage", "image"},
    {"EndOfAMarkerAlone", "TES\nimage", "image"},
    {"LongestRest", "012345678901234567TES\nimage", "image"},
    {"TwoRests", "1TES\n2TES\nimage", "image"},
    {"LineInfoWithItsEnd", "xyLINFO012345678TES\nimage", "xyimage"},
    {"LineInfoBehindARest", "TES\nabLINFO0123456789012XY", "abXY"},
    {"StartWhoseRestIsToCome", "imageBLOCK01", "image"},
    {"FourLettersAreAStart", "imageBLOC", "image"},
    {"StartAlone", "BLOCK", ""},
    {"WholeMarker", "ab" + kMarker + "cd", "abcd"},
    {"MarkersInSuccession", "ab" + kMarker + kMarker + "cd", "abcd"},
    {"MarkersApart", kMarker + "ab" + kMarker + "cd" + kMarker, "abcd"},
    {"FourLettersAreEnoughOfAMarker", "abBLOC_012345678TES\ncd", "abcd"},
    {"RestThenStart", "45TES\nabcdefBLOCK0", "abcdef"},
    // The cut is at 6, where "BLOC" stood while the rest was still in front of it.
    {"RestThenWholeMarkerLosesWhatFollows", "TES\nab" + kMarker + "image", "ab"},
    {"RestThenWholeMarkerKeepsWhatTheCutLeaves", "0123456789TES\nab" + kMarker, "ab"},
    // The cut is at 24, four bytes behind the marker.
    {"LongRestThenWholeMarker", "012345678901234567TES\nab" + kMarker + "wxyz!", "abwxyz"},
    {"JoinedBytesAreLookedAtAgain", "BL" + kMarker + "OC", ""},
};

class PacketFraming : public ::testing::TestWithParam<PacketCase> {
 protected:
  tvrscn::test::FakePlatform platform;
  USB_LowEnd_Controller controller;
};

TEST_P(PacketFraming, IsRemoved) {
  EXPECT_EQ(controller.RemoveBlockBytesFromUSBPackets(GetParam().packet), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(All, PacketFraming, ::testing::ValuesIn(kPacketCases),
                         [](const auto& test) { return std::string(test.param.name); });

class PacketFramingLimits : public PacketFraming {};

TEST_P(PacketFramingLimits, MarkerBeyondThePacketThrows) {
  EXPECT_THROW(controller.RemoveBlockBytesFromUSBPackets(GetParam().packet), std::out_of_range);
}

INSTANTIATE_TEST_SUITE_P(All, PacketFramingLimits,
                         ::testing::Values(PacketCase{"LineInfo", "LINFOTES\n", ""},
                                           PacketCase{"LineInfoAByteShort",
                                                      "TES\nabLINFO012345678901", ""},
                                           PacketCase{"Start", "abBLOCTES\n", ""},
                                           PacketCase{"StartAByteShort", "BLOCK01234567TES\n", ""}),
                         [](const auto& test) { return std::string(test.param.name); });

using PacketFramingDeathTest = LowEndTest;

// Leaves the process from a second thread, since nothing else ends the first.
void waitInVain(USB_LowEnd_Controller& controller, const std::string& packet) {
  std::thread([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    std::_Exit(7);
  }).detach();
  controller.RemoveBlockBytesFromUSBPackets(packet);
}

TEST_F(PacketFramingDeathTest, EndTooLateToBeARestNeverReturns) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(waitInVain(controller, "0123456789012345678TES\n"), ::testing::ExitedWithCode(7), "");
}

// --- Bytes in memory -----------------------------------------------------------------------------

TEST(StreamSearch, LastOccurrenceIsFound) {
  EXPECT_EQ(tvrscn::findLast("abcabcab", "abc"), 3U);
  EXPECT_EQ(tvrscn::findLast("aaaa", "aa"), 2U);
  EXPECT_EQ(tvrscn::findLast("ab", "abc"), std::string::npos);
  EXPECT_EQ(tvrscn::findLast("", "abc"), std::string::npos);
}

TEST(StreamSearch, JpegGoesBeforeTiff) {
  EXPECT_EQ(tvrscn::findImageStart("II\xFF\xD8\xFF\xE0"), 2U);
  EXPECT_EQ(tvrscn::findImageStart("\xFF\xD8\xFF\xE0II"), 0U);
  EXPECT_EQ(tvrscn::findImageStart("\xFF\xFF\xD8\xFF\xE0"), 1U);
  EXPECT_EQ(tvrscn::findImageStart("\xFF\xD8\xFF\xE1 II"), 5U);
  EXPECT_EQ(tvrscn::findImageStart("\xFF\xD8\xFFI"), std::string::npos);
  EXPECT_EQ(tvrscn::findImageStart(""), std::string::npos);
}

std::string cleaned(const std::vector<std::string>& pieces) {
  tvrscn::BlockMarkerFilter filter;
  std::string data;
  for (std::string_view piece : pieces) {
    while (!piece.empty())
      data += filter.next(piece);
  }
  return data.append(filter.finish());
}

std::string cleanedInTwo(const std::string& text, std::size_t split) {
  return cleaned({text.substr(0, split), text.substr(split)});
}

TEST(BlockMarkers, GoWhereverThePiecesMeet) {
  const std::string text = "BLOC" + kMarker + kMarker + "BLOabc" + kMarker + "CK" + "BLOCK01";
  for (std::size_t split = 0; split <= text.size(); ++split)
    EXPECT_EQ(cleanedInTwo(text, split), "BLOCBLOabcCK") << split;
}

TEST(BlockMarkers, GoFromSingleBytes) {
  std::vector<std::string> bytes;
  for (const char byte : "BBLBLO" + kMarker + kMarker + "BLOCBLOCBLOCKxBLOCK012345TES\nyBLOC")
    bytes.emplace_back(1, byte);
  EXPECT_EQ(cleaned(bytes), "BBLBLOBLOCBLOCES\nyBLOC");
}

TEST(BlockMarkers, FilesDoNotRunIntoEachOther) {
  tvrscn::BlockMarkerFilter filter;
  std::string_view cutMarker = "aBLOCK0";
  EXPECT_EQ(filter.next(cutMarker), "a");
  EXPECT_EQ(filter.next(cutMarker), "");
  EXPECT_EQ(filter.finish(), "");
  std::string_view cutWord = "bBLO";
  EXPECT_EQ(filter.next(cutWord), "b");
  EXPECT_EQ(filter.finish(), "BLO");
  std::string_view word = "CKc";
  EXPECT_EQ(filter.next(word), "CKc");
}

// --- Files ---------------------------------------------------------------------------------------

class FileFraming : public LowEndTest {
 protected:
  FileFraming() { Peer::imageFolder(controller) = folder.path().wstring(); }

  std::filesystem::path image() const { return folder.path() / "Image_1.JPG"; }
  std::string content() const {
    const auto bytes = readFile(image());
    return {bytes.begin(), bytes.end()};
  }
  void clean() { Peer::removeBlocks(controller, image().wstring()); }
  std::string cleaned(const std::string& text) {
    writeFile(image(), text);
    clean();
    return content();
  }
  Lines workFileCalls() const {
    const std::string work = (folder.path() / "temp.bin").string();
    return {"CopyFileW " + work + " " + image().string(), "DeleteFileW " + work};
  }
  void expectNotAvailable(const std::wstring& path) {
    try {
      Peer::removeBlocks(controller, path);
      FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(),
                   "Exception thrown from RemoveBlockToBytesWithNewline due to Input Image file to "
                   "process is not available");
    }
    EXPECT_EQ(platform.calls(), Lines{});
  }
};

TEST_F(FileFraming, FileGoesThroughTheWorkFile) {
  EXPECT_EQ(cleaned("ab" + kMarker + "cd"), "abcd");
  EXPECT_EQ(platform.calls(), workFileCalls());
  EXPECT_EQ(folder.fileNames(), Lines{"Image_1.JPG"});
}

TEST_F(FileFraming, FileWithoutMarkersIsRewrittenToo) {
  EXPECT_EQ(cleaned("image"), "image");
  EXPECT_EQ(platform.calls(), workFileCalls());
}

TEST_F(FileFraming, EmptyFileStaysEmptyAndIsRewritten) {
  EXPECT_EQ(cleaned(""), "");
  EXPECT_EQ(platform.calls(), workFileCalls());
  EXPECT_EQ(folder.fileNames(), Lines{"Image_1.JPG"});
}

TEST_F(FileFraming, MarkersBackToBackAllVanish) {
  EXPECT_EQ(cleaned("ab" + kMarker + kMarker + kMarker + "cd"), "abcd");
}

TEST_F(FileFraming, MarkersAtBothEndsVanish) {
  EXPECT_EQ(cleaned(kMarker + "abcd" + kMarker), "abcd");
  EXPECT_EQ(cleaned(kMarker), "");
}

TEST_F(FileFraming, StartWithinTheLast17BytesTakesTheRest) {
  for (std::size_t length = 5; length <= 18; ++length)
    EXPECT_EQ(cleaned("image" + kMarker.substr(0, length)), "image") << length;
}

TEST_F(FileFraming, ByteBehindAMarkerStays) {
  EXPECT_EQ(cleaned("image" + kMarker + "x"), "imagex");
}

TEST_F(FileFraming, FourLettersAtTheEndStay) {
  EXPECT_EQ(cleaned("imageBLOC"), "imageBLOC");
  EXPECT_EQ(cleaned("BLOC"), "BLOC");
}

TEST_F(FileFraming, MarkerIsNotParsed) {
  EXPECT_EQ(cleaned("ab" + std::string("BLOCK") + std::string(13, '\0') + "cd"), "abcd");
  EXPECT_EQ(cleaned("abBLOCK0BLOCK0123456cd"), "abcd");
}

TEST_F(FileFraming, WordWithinAWordIsFound) {
  EXPECT_EQ(cleaned("BLOC" + kMarker + "x"), "BLOCx");
  EXPECT_EQ(cleaned("BB" + kMarker + "x"), "BBx");
}

TEST_F(FileFraming, JoinedBytesAreNotLookedAtAgain) {
  EXPECT_EQ(cleaned("BLO" + kMarker + "CKabcdefghijklmnop"), "BLOCKabcdefghijklmnop");
}

TEST_F(FileFraming, MarkersOfPacketsStay) {
  EXPECT_EQ(cleaned("aTES\nbLINFOcBLOCd"), "aTES\nbLINFOcBLOCd");
}

TEST_F(FileFraming, MarkerMayRunAcrossWindows) {
  const std::string kept = "tail" + std::string(kWindow, 'y');
  for (std::size_t before = kWindow - 20; before <= kWindow + 2; ++before) {
    std::string text(before, 'x');
    text.append(kMarker).append("tail").append(kMarker).append(kWindow, 'y');
    EXPECT_TRUE(cleaned(text) == std::string(before, 'x').append(kept)) << before;
  }
}

TEST_F(FileFraming, FileMayEndAnywhereInAWindow) {
  for (std::size_t size = kWindow - 20; size <= kWindow + 20; ++size) {
    const std::string body(size - 7, 'x');
    std::string whole = body;
    whole.append("xxxBLOC");
    EXPECT_TRUE(cleaned(whole) == whole) << size;
    EXPECT_TRUE(cleaned(whole.append("K01")) == body + "xxx") << size;
  }
}

TEST_F(FileFraming, MissingFileIsAnException) {
  expectNotAvailable(image().wstring());
}

TEST_F(FileFraming, FolderIsNoFile) {
  expectNotAvailable(folder.path().wstring());
}

// 'A' with a macron keeps a zero byte, which is no character of a name.
TEST_F(FileFraming, NameThatDoesNotSurviveNarrowingIsNotAvailable) {
  const std::wstring path = folder.path().wstring() + L"/\u0100.JPG";
  writeFile(tvrscn::test::toPath(path), "image");
  expectNotAvailable(path);
}

// 'L' with a stroke keeps the byte of 'A': another name.
TEST_F(FileFraming, NameThatNarrowsToAnotherIsNotAvailable) {
  const std::wstring path = folder.path().wstring() + L"/\u0141.JPG";
  writeFile(tvrscn::test::toPath(path), "image");
  expectNotAvailable(path);
}

TEST_F(FileFraming, ShortNameBeforeAZeroByteIsNotTouched) {
  writeFile(folder.path() / "short", "mine" + kMarker);
  expectNotAvailable(folder.path().wstring() + L"/short\u0100.JPG");
  EXPECT_EQ(readFile(folder.path() / "short").size(), 22U);
}

// 'e' with an acute accent keeps its byte, but the system's names are UTF-8: two bytes.
TEST_F(FileFraming, NameWhoseBytesAreAnotherNameIsNotAvailable) {
  const std::wstring path = folder.path().wstring() + L"/\u00E9.JPG";
  writeFile(tvrscn::test::toPath(path), "ab" + kMarker);
  expectNotAvailable(path);
}

TEST_F(FileFraming, CopyThatFailsLeavesTheFileAsItWas) {
  platform.failCall("CopyFileW");
  EXPECT_EQ(cleaned("ab" + kMarker + "cd"), "ab" + kMarker + "cd");
  EXPECT_EQ(platform.calls(), workFileCalls());
  EXPECT_EQ(folder.fileNames(), Lines{"Image_1.JPG"});
}

TEST_F(FileFraming, WorkFileThatCannotBeDeletedStays) {
  platform.failCall("DeleteFileW");
  EXPECT_EQ(cleaned("ab" + kMarker + "cd"), "abcd");
  EXPECT_EQ(folder.fileNames(), (Lines{"Image_1.JPG", "temp.bin"}));
}

TEST_F(FileFraming, WorkFileThatIsThereIsOverwritten) {
  writeFile(folder.path() / "temp.bin", "left by a job that was cut off, and longer");
  EXPECT_EQ(cleaned("ab" + kMarker + "cd"), "abcd");
  EXPECT_EQ(folder.fileNames(), Lines{"Image_1.JPG"});
}

TEST_F(FileFraming, WorkFileThatCannotBeMadeIsNotNoticed) {
  Peer::imageFolder(controller) = (folder.path() / "missing").wstring();
  EXPECT_EQ(cleaned("ab" + kMarker + "cd"), "ab" + kMarker + "cd");
  const std::string work = (folder.path() / "missing" / "temp.bin").string();
  EXPECT_EQ(platform.calls(),
            (Lines{"CopyFileW " + work + " " + image().string(), "DeleteFileW " + work}));
}

}  // namespace
