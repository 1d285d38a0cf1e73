// From records to files: where a record is cut, what each file is called, and what is told of it.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "family_lowend/lowend_image_files.h"
#include "tests/support/lowend_test.h"

namespace {

using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::LowEndTest;
using tvrscn::test::readFile;
using tvrscn::test::writeFile;

using Records = std::vector<std::string>;
using Files = std::map<std::string, std::string>;

const std::string kJpeg = "\xFF\xD8\xFF\xE0";
// 18 bytes.
const std::string kMarker = "BLOCK012345678TES\n";

class LowEndFiles : public LowEndTest {
 protected:
  LowEndFiles() {
    BasePeer::callback(controller) = platform.callback();
    Peer::imageFolder(controller) = folder.path().wstring();
    Peer::dataSource(controller) = std::make_shared<CLowEndUSBScanDataSource>();
    useColour("Grayscale");
  }

  void useColour(const std::string& mode) {
    settings_.colorMode = mode;
    Peer::dataSource(controller)->setAppDataToScanCommand(settings_);
  }
  void useTiff() { useColour("BlackAndWhite"); }

  void write(const Records& records) {
    Peer::records(controller).clear();
    for (const std::string& record : records)
      Peer::records(controller).push_back({record, record.size()});
    LowEndImageFiles(controller).writeAll();
  }

  // All files of the folder with their contents.
  Files files() const {
    Files found;
    for (const std::string& name : folder.fileNames()) {
      const auto bytes = readFile(folder.path() / name);
      found[name] = {bytes.begin(), bytes.end()};
    }
    return found;
  }
  Files written(const Records& records) {
    write(records);
    return files();
  }
  std::string path(const std::string& name) const { return (folder.path() / name).string(); }
  // The notifications of a job that reports these files.
  Lines reported(const Lines& names) const {
    Lines lines = {"1004"};
    for (const std::string& name : names)
      lines.push_back("1005 " + path(name));
    return lines;
  }
  // Whether a cleaning would have its work file is tried when a job's files are begun.
  Lines beginning() const { return {"DeleteFileW " + path("temp.bin")}; }
  Lines cleaning(const std::string& name) const {
    return {"CopyFileW " + path("temp.bin") + " " + path(name), "DeleteFileW " + path("temp.bin")};
  }
  // File, imaging and notification calls, as they should come.
  void expectCalls(const std::vector<Lines>& parts) const {
    Lines expected;
    for (const Lines& part : parts)
      expected.insert(expected.end(), part.begin(), part.end());
    EXPECT_EQ(platform.calls(), expected);
  }
};

// --- Image starts --------------------------------------------------------------------------------

TEST_F(LowEndFiles, JobWithoutRecordsMakesOneEmptyFile) {
  EXPECT_EQ(written({}), (Files{{"Image_1.JPG", ""}}));
  EXPECT_EQ(platform.notifications(), reported({"Image_1.JPG"}));
  EXPECT_EQ(controller.GetFileCount(), 2);
}

TEST_F(LowEndFiles, RecordBeforeAnyImageStartIsDropped) {
  EXPECT_EQ(written({"noise", kJpeg + "a", "b"}), (Files{{"Image_1.JPG", kJpeg + "ab"}}));
}

TEST_F(LowEndFiles, BytesBeforeAnImageStartAreDropped) {
  EXPECT_EQ(written({"noise" + kJpeg + "a"}), (Files{{"Image_1.JPG", kJpeg + "a"}}));
}

TEST_F(LowEndFiles, ImageStartMayBeThatOfATiff) {
  EXPECT_EQ(written({"noiseIIa"}), (Files{{"Image_1.JPG", "IIa"}}));
}

TEST_F(LowEndFiles, JpegStartGoesBeforeATiffStartInFrontOfIt) {
  EXPECT_EQ(written({"IIx" + kJpeg + "a"}), (Files{{"Image_1.JPG", kJpeg + "a"}}));
}

TEST_F(LowEndFiles, JpegStartCountsInATiffJobToo) {
  useTiff();
  EXPECT_EQ(written({"IIx" + kJpeg + "a"}), (Files{{"tempImage_1.TIF", kJpeg + "a"}}));
}

TEST_F(LowEndFiles, ImageStartAcrossRecordsIsNone) {
  EXPECT_EQ(written({"\xFF\xD8", "\xFF\xE0 a", "I", "I"}), (Files{{"Image_1.JPG", ""}}));
}

TEST_F(LowEndFiles, LaterImageStartsAreData) {
  EXPECT_EQ(written({kJpeg + "a", "x" + kJpeg + "II"}),
            (Files{{"Image_1.JPG", kJpeg + "ax" + kJpeg + "II"}}));
}

TEST_F(LowEndFiles, RecordsMayHoldAnyByte) {
  const std::string all = std::string("\0\r\n\x1A\xFF", 5);
  EXPECT_EQ(written({kJpeg + all, all}), (Files{{"Image_1.JPG", kJpeg + all + all}}));
}

// --- New files -----------------------------------------------------------------------------------

TEST_F(LowEndFiles, NewFileStartsTheNextOne) {
  EXPECT_EQ(written({kJpeg + "a", "b.NEWFILE" + kJpeg + "c", "d"}),
            (Files{{"Image_1.JPG", kJpeg + "ab"}, {"Image_2.JPG", kJpeg + "cd"}}));
  expectCalls({beginning(),
               {"Notify 1004", "Notify 1005 " + path("Image_1.JPG")},
               {"Notify 1005 " + path("Image_2.JPG")}});
  EXPECT_EQ(controller.GetFileCount(), 3);
}

TEST_F(LowEndFiles, NewFileAtTheStartAddsNothing) {
  EXPECT_EQ(written({kJpeg + "a", "NEWFILE" + kJpeg + "c"}),
            (Files{{"Image_1.JPG", kJpeg + "a"}, {"Image_2.JPG", kJpeg + "c"}}));
}

TEST_F(LowEndFiles, NewFileAtPositionOneAddsNothing) {
  EXPECT_EQ(written({kJpeg + "a", "xNEWFILE" + kJpeg + "c"}),
            (Files{{"Image_1.JPG", kJpeg + "a"}, {"Image_2.JPG", kJpeg + "c"}}));
}

TEST_F(LowEndFiles, NewFileAtPositionTwoAddsOneByte) {
  EXPECT_EQ(written({kJpeg + "a", "xyNEWFILE" + kJpeg + "c"}),
            (Files{{"Image_1.JPG", kJpeg + "ax"}, {"Image_2.JPG", kJpeg + "c"}}));
}

TEST_F(LowEndFiles, BytesBetweenNewFileAndTheImageStartAreDropped) {
  EXPECT_EQ(written({kJpeg + "a", "x.NEWFILEjunk" + kJpeg + "c"}),
            (Files{{"Image_1.JPG", kJpeg + "ax"}, {"Image_2.JPG", kJpeg + "c"}}));
}

TEST_F(LowEndFiles, ImageStartInFrontOfNewFileDoesNotCount) {
  EXPECT_EQ(written({kJpeg + "a", kJpeg + ".NEWFILEjunk"}),
            (Files{{"Image_1.JPG", kJpeg + "a" + kJpeg}, {"Image_2.JPG", ""}}));
}

TEST_F(LowEndFiles, NewFileWithoutImageStartSearchesTheRecordsThatFollow) {
  EXPECT_EQ(written({kJpeg + "a", ".NEWFILE", "junk", "junk" + kJpeg + "c", "d"}),
            (Files{{"Image_1.JPG", kJpeg + "a"}, {"Image_2.JPG", kJpeg + "cd"}}));
}

TEST_F(LowEndFiles, NewFileIsNotLookedForWhileAnImageStartIs) {
  EXPECT_EQ(written({"x.NEWFILE", kJpeg + "a", "b.NEWFILE", "c.NEWFILE" + kJpeg + "d"}),
            (Files{{"Image_1.JPG", kJpeg + "ab"}, {"Image_2.JPG", kJpeg + "d"}}));
}

TEST_F(LowEndFiles, NewFileInTheRecordOfTheImageStartIsData) {
  EXPECT_EQ(written({kJpeg + "a.NEWFILE" + kJpeg}),
            (Files{{"Image_1.JPG", kJpeg + "a.NEWFILE" + kJpeg}}));
}

TEST_F(LowEndFiles, OnlyTheFirstNewFileOfARecordCounts) {
  EXPECT_EQ(
      written({kJpeg + "a", "b.NEWFILE" + kJpeg + "c.NEWFILE" + kJpeg + "d"}),
      (Files{{"Image_1.JPG", kJpeg + "ab"}, {"Image_2.JPG", kJpeg + "c.NEWFILE" + kJpeg + "d"}}));
}

TEST_F(LowEndFiles, NewFileAcrossRecordsIsData) {
  EXPECT_EQ(written({kJpeg + "a.NEW", "FILE" + kJpeg}),
            (Files{{"Image_1.JPG", kJpeg + "a.NEWFILE" + kJpeg}}));
}

TEST_F(LowEndFiles, NewFileAtTheEndLeavesAnEmptyFile) {
  EXPECT_EQ(written({kJpeg + "a", "b.NEWFILE"}),
            (Files{{"Image_1.JPG", kJpeg + "ab"}, {"Image_2.JPG", ""}}));
  EXPECT_EQ(platform.notifications(), reported({"Image_1.JPG", "Image_2.JPG"}));
}

TEST_F(LowEndFiles, SixLettersAreNoNewFile) {
  EXPECT_EQ(written({kJpeg + "a", "NEWFIL", "NEWFILe"}),
            (Files{{"Image_1.JPG", kJpeg + "aNEWFILNEWFILe"}}));
}

// --- Block markers -------------------------------------------------------------------------------

TEST_F(LowEndFiles, MarkersGoFromTheWholeFile) {
  EXPECT_EQ(
      written({kJpeg + "aBLO", "CK0123", "45678TES\nb", kMarker, "c.NEWFILE" + kJpeg, kMarker}),
      (Files{{"Image_1.JPG", kJpeg + "abc"}, {"Image_2.JPG", kJpeg}}));
}

TEST_F(LowEndFiles, RecordsAreCutBeforeTheMarkersGo) {
  // Without its marker this would be a new file.
  EXPECT_EQ(written({kJpeg + "a", "NEW" + kMarker + "FILE"}),
            (Files{{"Image_1.JPG", kJpeg + "aNEWFILE"}}));
}

TEST_F(LowEndFiles, MarkerDoesNotRunIntoTheNextFile) {
  EXPECT_EQ(written({kJpeg + "aBLOCK012", "345.NEWFILE" + kJpeg + "b"}),
            (Files{{"Image_1.JPG", kJpeg + "a"}, {"Image_2.JPG", kJpeg + "b"}}));
}

TEST_F(LowEndFiles, MarkersGoWhileAFileIsWritten) {
  Files seen;
  platform.onNotification = [&](const ScanNotification&) {
    if (seen.empty()) seen = files();
  };
  write({kJpeg + "a" + kMarker + "b.", kMarker + ".NEWFILE" + kJpeg});
  EXPECT_EQ(seen, (Files{{"Image_1.JPG", kJpeg + "ab."}}));
  EXPECT_EQ(platform.count("CopyFileW"), 0);
}

TEST_F(LowEndFiles, WorkFileThatCannotBeMadeLeavesTheMarkers) {
  std::filesystem::create_directory(path("temp.bin"));
  write({kJpeg + "a" + kMarker + "b"});
  std::filesystem::remove(path("temp.bin"));
  EXPECT_EQ(files(), (Files{{"Image_1.JPG", kJpeg + "a" + kMarker + "b"}}));
  expectCalls({cleaning("Image_1.JPG"), {"Notify 1004", "Notify 1005 " + path("Image_1.JPG")}});
}

TEST_F(LowEndFiles, FilesLargerThanABlockLoseTheirMarkersToo) {
  // 1000 bytes without markers, six hundred times, in records that fall anywhere.
  std::string stream = kJpeg;
  std::string cleaned = kJpeg;
  for (int i = 0; i < 600; ++i) {
    const std::string bytes(1000, static_cast<char>('a' + i % 26));
    stream += bytes + kMarker;
    cleaned += bytes;
  }
  Records records;
  for (std::size_t at = 0; at < stream.size(); at += 7001)
    records.push_back(stream.substr(at, 7001));
  EXPECT_TRUE(written(records) == (Files{{"Image_1.JPG", cleaned}}));
}

TEST_F(LowEndFiles, FileInWorkStaysAsFarAsItHadCome) {
  {
    LowEndImageWriter writer(folder.path().wstring());
    writer.open((folder.path() / "Image_1.JPG").wstring());
    writer.write("image" + kMarker + "BLO");
  }
  EXPECT_EQ(files(), (Files{{"Image_1.JPG", "imageBLO"}}));
}

TEST_F(LowEndFiles, WorkFileOfABrokenJobGoes) {
  writeFile(path("temp.bin"), "left behind");
  EXPECT_EQ(written({kJpeg + kMarker}), (Files{{"Image_1.JPG", kJpeg}}));
}

// --- Names and numbers ---------------------------------------------------------------------------

TEST_F(LowEndFiles, NumbersGoOnFromJobToJob) {
  write({kJpeg + "a", ".NEWFILE" + kJpeg + "b"});
  write({kJpeg + "c"});
  EXPECT_EQ(files(), (Files{{"Image_1.JPG", kJpeg + "a"},
                            {"Image_2.JPG", kJpeg + "b"},
                            {"Image_3.JPG", kJpeg + "c"}}));
}

TEST_F(LowEndFiles, NumbersArePlainDecimal) {
  Peer::fileCount(controller) = 1000;
  EXPECT_EQ(written({kJpeg}), (Files{{"Image_1000.JPG", kJpeg}}));
}

TEST_F(LowEndFiles, FileOfTheSameNameIsEmptied) {
  writeFile(folder.path() / "Image_1.JPG", "an older file that was longer");
  EXPECT_EQ(written({kJpeg}), (Files{{"Image_1.JPG", kJpeg}}));
}

TEST_F(LowEndFiles, JobWithoutSettingsMakesJpegFiles) {
  Peer::dataSource(controller) = nullptr;
  EXPECT_EQ(written({kJpeg}), (Files{{"Image_1.JPG", kJpeg}}));
}

TEST_F(LowEndFiles, TransferStartIsToldOnceAJob) {
  BasePeer::imageNotified(controller) = true;
  write({kJpeg});
  EXPECT_EQ(platform.notifications(), Lines{"1005 " + path("Image_1.JPG")});
}

// --- TIFF ----------------------------------------------------------------------------------------

TEST_F(LowEndFiles, TiffIsSplitIntoPages) {
  useTiff();
  platform.tiffPages = {"page" + kMarker + "1", "page2", "page3"};
  EXPECT_EQ(written({"IIa" + kMarker, "b"}),
            (Files{{"Image_1.tif", "page1"}, {"Image_2.tif", "page2"}, {"Image_3.tif", "page3"}}));
  expectCalls({beginning(),
               {"GdiWrapper",
                "ConvertMultiPageTIFF2SinglePageTIFF " + path("tempImage_1.TIF") + " " +
                    path("Image_") + " 1",
                "~GdiWrapper"},
               cleaning("Image_1.tif"),
               {"Notify 1004", "Notify 1005 " + path("Image_1.tif")},
               cleaning("Image_2.tif"),
               {"Notify 1005 " + path("Image_2.tif")},
               cleaning("Image_3.tif"),
               {"Notify 1005 " + path("Image_3.tif"), "DeleteFileW " + path("tempImage_1.TIF")}});
  EXPECT_EQ(controller.GetFileCount(), 4);
}

TEST_F(LowEndFiles, TiffIsCleanedBeforeItIsSplit) {
  useTiff();
  platform.tiffPages = {"page"};
  std::string seen;
  platform.onCall("ConvertMultiPageTIFF2SinglePageTIFF", 1,
                  [&] { seen = files().at("tempImage_1.TIF"); });
  write({"IIa" + kMarker + "b"});
  EXPECT_EQ(seen, "IIab");
}

TEST_F(LowEndFiles, PagesAreNumberedFromTheFileCount) {
  useTiff();
  Peer::fileCount(controller) = 9;
  platform.tiffPages = {"p", "q"};
  EXPECT_EQ(written({"II"}), (Files{{"Image_9.tif", "p"}, {"Image_10.tif", "q"}}));
  EXPECT_EQ(platform.notifications(), reported({"Image_9.tif", "Image_10.tif"}));
  EXPECT_EQ(controller.GetFileCount(), 11);
}

TEST_F(LowEndFiles, PageThatIsMissingEndsTheJob) {
  useTiff();
  platform.tiffPages = {"p", "q"};
  platform.onCall("CopyFileW", 1, [&] { std::filesystem::remove(path("Image_2.tif")); });
  EXPECT_THROW(write({"II"}), std::runtime_error);
  EXPECT_EQ(files(), (Files{{"Image_1.tif", "p"}, {"tempImage_1.TIF", "II"}}));
  EXPECT_EQ(platform.notifications(), reported({"Image_1.tif"}));
}

TEST_F(LowEndFiles, SplitTiffThatCannotBeDeletedStays) {
  useTiff();
  platform.tiffPages = {"p"};
  platform.failCall("DeleteFileW", 3);  // behind the two of the work file
  EXPECT_EQ(written({"II"}), (Files{{"Image_1.tif", "p"}, {"tempImage_1.TIF", "II"}}));
  EXPECT_EQ(platform.notifications(), reported({"Image_1.tif"}));
}

TEST_F(LowEndFiles, TiffThatGivesNoPagesKeepsItsTemporaryName) {
  useTiff();
  EXPECT_EQ(written({"IIa" + kMarker}), (Files{{"tempImage_1.TIF", "IIa"}}));
  expectCalls({beginning(),
               {"GdiWrapper",
                "ConvertMultiPageTIFF2SinglePageTIFF " + path("tempImage_1.TIF") + " " +
                    path("Image_") + " 1",
                "~GdiWrapper"},
               cleaning("tempImage_1.TIF"),
               {"Notify 1004", "Notify 1005 " + path("tempImage_1.TIF")}});
  EXPECT_EQ(controller.GetFileCount(), 2);
}

TEST_F(LowEndFiles, TiffThatGivesNoPagesIsCleanedTwice) {
  useTiff();
  EXPECT_EQ(written({"IIBLO" + kMarker + "CK0123456789abcx"}), (Files{{"tempImage_1.TIF", "IIx"}}));
}

TEST_F(LowEndFiles, TiffWithNewFilesIsNotSplit) {
  useTiff();
  platform.tiffPages = {"page"};
  EXPECT_EQ(written({"IIa", "b.NEWFILEIIc", ".NEWFILE", "IId"}),
            (Files{{"tempImage_1.TIF", "IIab"}, {"Image_2.TIF", "IIc"}, {"Image_3.TIF", "IId"}}));
  EXPECT_EQ(platform.notifications(), reported({"tempImage_1.TIF", "Image_2.TIF", "Image_3.TIF"}));
  EXPECT_EQ(platform.count("GdiWrapper"), 0);
  EXPECT_EQ(controller.GetFileCount(), 4);
}

TEST_F(LowEndFiles, EmptyTiffJobIsOfferedForSplitting) {
  useTiff();
  EXPECT_EQ(written({}), (Files{{"tempImage_1.TIF", ""}}));
  EXPECT_EQ(platform.count("ConvertMultiPageTIFF2SinglePageTIFF"), 1);
}

TEST_F(LowEndFiles, NoOtherImagingTakesPlace) {
  useTiff();
  write({"IIa"});
  EXPECT_EQ(platform.calls({Kind::kImaging}).size(), 3U);
  useColour("FullColor");
  platform.forgetCalls();
  write({kJpeg});
  EXPECT_EQ(platform.calls({Kind::kImaging}), Lines{});
}

// --- Failures ------------------------------------------------------------------------------------

TEST_F(LowEndFiles, FolderThatIsMissingEndsTheJob) {
  Peer::imageFolder(controller) = (folder.path() / "missing").wstring();
  EXPECT_THROW(write({kJpeg}), std::runtime_error);
  EXPECT_EQ(platform.calls(), Lines{});
  EXPECT_EQ(controller.GetFileCount(), 1);
}

TEST_F(LowEndFiles, FolderThatDoesNotSurviveNarrowingEndsTheJob) {
  const std::wstring name = folder.path().wstring() + L"/\u0100";
  std::filesystem::create_directory(tvrscn::test::toPath(name));
  Peer::imageFolder(controller) = name;
  EXPECT_THROW(write({kJpeg + "a"}), std::runtime_error);
  // What had been written stays.
  EXPECT_EQ(readFile(tvrscn::test::toPath(name) / "Image_1.JPG").size(), 5U);
  EXPECT_EQ(platform.notifications(), Lines{});
}

TEST_F(LowEndFiles, FilesBeforeAFailureStayReported) {
  platform.onCall("DeleteFileW", 1, [&] {
    std::filesystem::create_directory(path("Image_2.JPG"));  // no file can be opened on it
  });
  EXPECT_THROW(write({kJpeg + "a", ".NEWFILE" + kJpeg + "b"}), std::runtime_error);
  EXPECT_EQ(platform.notifications(), reported({"Image_1.JPG"}));
  EXPECT_EQ(controller.GetFileCount(), 2);
}

}  // namespace
