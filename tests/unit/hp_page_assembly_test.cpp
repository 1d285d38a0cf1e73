// From blocks to a page file: the imaging calls in their order, the temporary file, the
// notifications, and every way in which it can go wrong.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/platform_test.h"

namespace {

using Peer = ControllerTestPeer;
using tvrscn::test::Bytes;
using tvrscn::test::bytes;
using tvrscn::test::HPTest;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::namedDictionary;
using tvrscn::test::Strip;

class HPPage : public HPTest {
 protected:
  HPPage() {
    Peer::callback(controller) = platform.callback();
    Peer::imageFolder(controller) = folder.path().wstring();
    source = std::make_shared<CHPUSBScanDataSource>();
    Peer::dataSource(controller) = source;
  }

  void make(const std::vector<Bytes>& contents, unsigned short width, unsigned short height,
            short number = 7) {
    Peer::Blocks blocks;
    for (const Bytes& content : contents) {
      std::shared_ptr<unsigned char> buffer(new unsigned char[content.size() + 1],
                                            std::default_delete<unsigned char[]>());
      std::copy(content.begin(), content.end(), buffer.get());
      blocks.emplace_back(buffer, content.size());
    }
    Peer::prepareFinalImage(controller, blocks, width, height, number);
  }

  std::string path(const std::string& name) const { return (folder.path() / name).string(); }

  // The calls of one kind of imaging operation.
  Lines callsOf(const std::string& operation) const {
    Lines found;
    for (const std::string& call : platform.calls({Kind::kImaging})) {
      if (call.starts_with(operation + " ")) found.push_back(call);
    }
    return found;
  }

  void expectNothingLeft() {
    EXPECT_EQ(platform.liveObjects("bitmap"), Lines{});
    EXPECT_EQ(platform.liveObjects("graphics"), Lines{});
    EXPECT_EQ(platform.liveObjects("effect"), Lines{});
    EXPECT_EQ(platform.count("GdiWrapper"), platform.calls().empty() ? 0 : 1);
  }
  bool tempFolderIsEmpty() const { return std::filesystem::is_empty(platform.tempFolder()); }

  std::shared_ptr<CHPUSBScanDataSource> source;
};

const std::string kEncoder = "{0A0B0C0D-0102-0304-0506-0708090A0B0C}";
const std::string kEffect = "{D3A1DBE1-8EC4-4C17-9F4C-EA97AD1C343D}";

TEST_F(HPPage, EmptyBlockListDoesNothing) {
  make({}, 16, 8);
  EXPECT_EQ(platform.calls(), Lines{});
}

TEST_F(HPPage, CallsOfAPageComeInOrder) {
  make({bytes("01 02"), bytes("03")}, 16, 20);
  EXPECT_EQ(platform.calls(),
            (Lines{"GdiWrapper",
                   "GetEncoderClsid image/jpeg",
                   "GdipCreateEffect " + kEffect,
                   "GdipSetEffectParameters effect1 brightness 0 contrast 0 size 8",
                   "GetTempPathW 261",
                   "GetTempFileNameW aster_ 0",
                   "GdipCreateBitmapFromFile temp1",
                   "GdipGetImagePixelFormat bitmap1",
                   "GdipCreateBitmapFromScan0 16x20 stride 0 0x21808",
                   "GdipGetImageHorizontalResolution bitmap1",
                   "GdipGetImageVerticalResolution bitmap1",
                   "GdipBitmapSetResolution bitmap2 300 300",
                   "GdipGetImageGraphicsContext bitmap2",
                   "GdipDrawImageI graphics1 bitmap1 at 0,0",
                   "GdipGetImageHeight bitmap1",
                   "GdipDisposeImage bitmap1",
                   "GdipCreateBitmapFromFile temp1",
                   "GdipDrawImageI graphics1 bitmap3 at 0,8",
                   "GdipGetImageHeight bitmap3",
                   "GdipDisposeImage bitmap3",
                   "GdipSaveImageToFile bitmap2 " + path("Image_7.JPG") + " " + kEncoder,
                   "Notify 1004",
                   "Notify 1005 " + path("Image_7.JPG"),
                   "GdipDisposeImage bitmap2",
                   "GdipDeleteGraphics graphics1",
                   "DeleteFileW temp1",
                   "GdipDeleteEffect effect1",
                   "~GdiWrapper"}));
  expectNothingLeft();
  EXPECT_TRUE(tempFolderIsEmpty());
  EXPECT_EQ(folder.fileNames(), Lines{"Image_7.JPG"});
  EXPECT_TRUE(Peer::imageNotified(controller));
}

TEST_F(HPPage, OneBlockIsDrawnAtTheTop) {
  make({bytes("01")}, 2480, 3508);
  EXPECT_EQ(callsOf("GdipCreateBitmapFromScan0"),
            Lines{"GdipCreateBitmapFromScan0 2480x3508 stride 0 0x21808"});
  EXPECT_EQ(callsOf("GdipDrawImageI"), Lines{"GdipDrawImageI graphics1 bitmap1 at 0,0"});
}

TEST_F(HPPage, TemporaryFileHoldsExactlyEachBlockInTurn) {
  make({bytes("01 02 03 04"), bytes("05"), Bytes{}, bytes("00*5000 06")}, 16, 8);
  EXPECT_EQ(platform.decoded,
            (std::vector<Bytes>{bytes("01 02 03 04"), bytes("05"), Bytes{}, bytes("00*5000 06")}));
  EXPECT_EQ(platform.count("GetTempFileNameW"), 1);
  EXPECT_TRUE(tempFolderIsEmpty());
}

TEST_F(HPPage, FormatAndResolutionComeFromTheFirstStrip) {
  int strip = 0;
  platform.decode = [&strip](const Bytes&) {
    return ++strip == 1 ? Strip{16, 8, 0x30803, 200.0F, 100.0F}
                        : Strip{16, 8, 0x21808, 600.0F, 600.0F};
  };
  make({bytes("01"), bytes("02")}, 16, 16);
  EXPECT_EQ(callsOf("GdipCreateBitmapFromScan0"),
            Lines{"GdipCreateBitmapFromScan0 16x16 stride 0 0x30803"});
  EXPECT_EQ(callsOf("GdipBitmapSetResolution"), Lines{"GdipBitmapSetResolution bitmap2 200 100"});
}

TEST_F(HPPage, OnlyExactlyBlackAndWhiteGetsAOneBitPage) {
  const struct {
    const char* color;
    const char* format;
  } kCases[] = {{"BlackAndWhite", "0x30101"},
                {"FullColor", "0x21808"},
                {"Grayscale", "0x21808"},
                {"Auto", "0x21808"},
                {"blackandwhite", "0x21808"}};
  for (const auto& row : kCases) {
    platform.forgetCalls();
    DataSourceTestPeer::colorMode(*source) = row.color;
    make({bytes("01")}, 16, 8);
    EXPECT_EQ(callsOf("GdipCreateBitmapFromScan0"),
              Lines{std::string("GdipCreateBitmapFromScan0 16x8 stride 0 ") + row.format})
        << row.color;
  }
}

TEST_F(HPPage, StripsAreStackedByTheirDecodedHeight) {
  const unsigned kHeights[] = {10, 1, 100};
  int strip = 0;
  platform.decode = [&](const Bytes&) { return Strip{16, kHeights[strip++]}; };
  make({bytes("01"), bytes("02"), bytes("03")}, 16, 50);
  EXPECT_EQ(callsOf("GdipDrawImageI"), (Lines{"GdipDrawImageI graphics1 bitmap1 at 0,0",
                                              "GdipDrawImageI graphics1 bitmap3 at 0,10",
                                              "GdipDrawImageI graphics1 bitmap4 at 0,11"}));
}

TEST_F(HPPage, PositionWrapsAtSixteenBits) {
  platform.decode = [](const Bytes&) { return Strip{16, 40000}; };
  make({bytes("01"), bytes("02"), bytes("03")}, 16, 50);
  EXPECT_EQ(callsOf("GdipDrawImageI"), (Lines{"GdipDrawImageI graphics1 bitmap1 at 0,0",
                                              "GdipDrawImageI graphics1 bitmap3 at 0,40000",
                                              "GdipDrawImageI graphics1 bitmap4 at 0,14464"}));
}

TEST_F(HPPage, StripThatCannotBeDecodedAdvancesNothing) {
  int strip = 0;
  platform.decode = [&strip](const Bytes&) -> std::optional<Strip> {
    if (++strip == 2) return {};
    return Strip{};
  };
  make({bytes("01"), bytes("02"), bytes("03")}, 16, 50);
  const Lines drawn = callsOf("GdipDrawImageI");
  EXPECT_EQ(drawn.back(), "GdipDrawImageI graphics1 bitmap3 at 0,8");
  EXPECT_EQ(folder.fileNames(), Lines{"Image_7.JPG"});
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + path("Image_7.JPG")}));
  expectNothingLeft();
}

TEST_F(HPPage, PageThatCouldNotBeCreatedLeavesNoFileButIsTold) {
  platform.failCall("GdipCreateBitmapFromFile", 1);
  make({bytes("01"), bytes("02")}, 16, 16);
  EXPECT_EQ(folder.fileNames(), Lines{});
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + path("Image_7.JPG")}));
  EXPECT_EQ(platform.logLines(), Lines{});
  expectNothingLeft();
  EXPECT_TRUE(tempFolderIsEmpty());
}

TEST_F(HPPage, PageOfNoSizeLeavesNoFileButIsTold) {
  for (const auto& [width, height] : {std::pair{0, 8}, std::pair{16, 0}, std::pair{0, 0}}) {
    platform.forgetCalls();
    Peer::imageNotified(controller) = false;
    make({bytes("01")}, static_cast<unsigned short>(width), static_cast<unsigned short>(height));
    EXPECT_EQ(folder.fileNames(), Lines{});
    EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + path("Image_7.JPG")}));
  }
  EXPECT_EQ(platform.liveObjects("bitmap"), Lines{});
  EXPECT_TRUE(tempFolderIsEmpty());
}

TEST_F(HPPage, EveryImagingCallMayFailUnnoticed) {
  const char* const kOperations[] = {
      "GetEncoderClsid",
      "GdipCreateEffect",
      "GdipSetEffectParameters",
      "GdipCreateBitmapFromFile",
      "GdipGetImagePixelFormat",
      "GdipCreateBitmapFromScan0",
      "GdipGetImageHorizontalResolution",
      "GdipGetImageVerticalResolution",
      "GdipBitmapSetResolution",
      "GdipGetImageGraphicsContext",
      "GdipDrawImageI",
      "GdipGetImageHeight",
      "GdipBitmapApplyEffect",
      "GdipSaveImageToFile",
      "DeleteFileW",
  };
  DataSourceTestPeer::brightness(*source) = 1;
  for (const char* operation : kOperations) {
    SCOPED_TRACE(operation);
    platform.forgetCalls();
    Peer::imageNotified(controller) = false;
    const int before = platform.count(operation);
    platform.failCall(operation, 1);
    make({bytes("01")}, 16, 8);
    EXPECT_GT(platform.count(operation), before);
    EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + path("Image_7.JPG")}));
    EXPECT_EQ(platform.logLines(), Lines{});
    EXPECT_EQ(platform.liveObjects("bitmap"), Lines{});
    EXPECT_EQ(platform.liveObjects("graphics"), Lines{});
    EXPECT_EQ(platform.liveObjects("effect"), Lines{});
  }
}

TEST_F(HPPage, UnknownTemporaryFileNameIsNotNoticed) {
  platform.failCall("GetTempFileNameW");
  make({bytes("01")}, 16, 8);
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + path("Image_7.JPG")}));
  expectNothingLeft();
}

TEST_F(HPPage, EffectIsAppliedOnlyWhenAskedFor) {
  const struct {
    int brightness;
    int contrast;
    bool applied;
  } kCases[] = {{0, 0, false}, {-2, 0, true}, {0, -1, true}, {25, 25, true}};
  int page = 0;
  for (const auto& row : kCases) {
    ++page;
    platform.forgetCalls();
    DataSourceTestPeer::brightness(*source) = row.brightness;
    DataSourceTestPeer::contrast(*source) = row.contrast;
    make({bytes("01")}, 16, 8);
    const std::string effect = "effect" + std::to_string(page);
    EXPECT_EQ(callsOf("GdipSetEffectParameters"),
              Lines{"GdipSetEffectParameters " + effect + " brightness " +
                    std::to_string(row.brightness) + " contrast " + std::to_string(row.contrast) +
                    " size 8"});
    const std::string bitmap = "bitmap" + std::to_string(2 * page);
    EXPECT_EQ(callsOf("GdipBitmapApplyEffect"),
              row.applied ? Lines{"GdipBitmapApplyEffect " + bitmap + " " + effect} : Lines{});
    EXPECT_EQ(callsOf("GdipDeleteEffect"), Lines{"GdipDeleteEffect " + effect});
  }
}

TEST_F(HPPage, EffectIsFollowedByADrawOutsideThePage) {
  DataSourceTestPeer::contrast(*source) = 3;
  make({bytes("01")}, 1600, 800);
  Lines calls = platform.calls({Kind::kImaging});
  const auto applied =
      std::find(calls.begin(), calls.end(), "GdipBitmapApplyEffect bitmap2 effect1");
  ASSERT_LT(applied, calls.end() - 2);
  EXPECT_EQ(*(applied + 1), "GdipDrawImageI graphics1 bitmap2 at 1600,800");
  EXPECT_EQ(*(applied + 2), "GdipSaveImageToFile bitmap2 " + path("Image_7.JPG") + " " + kEncoder);
}

TEST_F(HPPage, NumberOfTheFileIsSigned) {
  for (const short number : {short{1}, short{32767}, short{-32768}, short{-1}, short{0}}) {
    make({bytes("01")}, 16, 8, number);
    EXPECT_EQ(platform.notifications().back(),
              "1005 " + path("Image_" + std::to_string(number) + ".JPG"));
  }
  EXPECT_EQ(folder.fileNames(), (Lines{"Image_-1.JPG", "Image_-32768.JPG", "Image_0.JPG",
                                       "Image_1.JPG", "Image_32767.JPG"}));
}

TEST_F(HPPage, ExtensionIsTheControllers) {
  Peer::imageExtension(controller) = ".x";
  make({bytes("01")}, 16, 8);
  EXPECT_EQ(folder.fileNames(), Lines{"Image_7.x"});
}

TEST_F(HPPage, TwoPagesAnnounceTheTransferOnce) {
  make({bytes("01")}, 16, 8, 1);
  make({bytes("02")}, 16, 8, 2);
  EXPECT_EQ(platform.notifications(),
            (Lines{"1004", "1005 " + path("Image_1.JPG"), "1005 " + path("Image_2.JPG")}));
}

TEST_F(HPPage, PathIsNarrowedForTheCallerAndTrueOnDisk) {
  const std::wstring name = folder.path().wstring() + L"/\u0141\u00E4";  // low bytes 'A' and E4
  const std::filesystem::path wide = tvrscn::test::toPath(name);
  std::filesystem::create_directory(wide);
  Peer::imageFolder(controller) = name;
  make({bytes("01")}, 16, 8);
  EXPECT_TRUE(std::filesystem::exists(wide / "Image_7.JPG"));
  EXPECT_EQ(platform.notifications().back(),
            "1005 " + folder.path().string() + "/A\xE4/Image_7.JPG");
}

TEST_F(HPPage, TemporaryFolderMayHaveAnyName) {
  platform.tempSubfolder = L"\u4E2D\u00E4";
  std::filesystem::create_directory(platform.tempFolder());
  make({bytes("01 02")}, 16, 8);
  EXPECT_EQ(platform.decoded, std::vector<Bytes>{bytes("01 02")});
  EXPECT_EQ(platform.logLines(), Lines{});
  EXPECT_TRUE(tempFolderIsEmpty());
}

TEST_F(HPPage, FolderThatCannotBeWrittenIsNotNoticed) {
  Peer::imageFolder(controller) = (folder.path() / "missing").wstring();
  make({bytes("01")}, 16, 8);
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + path("missing/Image_7.JPG")}));
  EXPECT_EQ(platform.logLines(), Lines{});
}

TEST_F(HPPage, WithoutTemporaryFolderThePageIsLost) {
  platform.failCall("GetTempPathW", 1, 1234);
  make({bytes("01")}, 16, 8);
  EXPECT_EQ(
      platform.calls(),
      (Lines{"GdiWrapper", "GetEncoderClsid image/jpeg", "GdipCreateEffect " + kEffect,
             "GdipSetEffectParameters effect1 brightness 0 contrast 0 size 8", "GetTempPathW 261",
             "Log Received Error code : 1234", "GdipDeleteEffect effect1", "~GdiWrapper"}));
  EXPECT_FALSE(Peer::imageNotified(controller));
  expectNothingLeft();
}

TEST_F(HPPage, TemporaryFolderMayHave1To261Characters) {
  const struct {
    DWORD length;
    bool good;
  } kCases[] = {{0, false}, {1, true}, {260, true}, {261, true}, {262, false}, {0xFFFFFFFF, false}};
  platform.lastError = 5;
  for (const auto& row : kCases) {
    platform.forgetCalls();
    platform.tempPathLength = row.length;
    make({bytes("01")}, 16, 8);
    EXPECT_EQ(platform.logLines(), row.good ? Lines{} : Lines{"Received Error code : 5"})
        << row.length;
    EXPECT_EQ(platform.notifications().empty(), !row.good) << row.length;
  }
}

// --- Exceptions
// -------------------------------------------------------------------------------------

const std::string kFailureLine = "Sending FAILURE Notification to DS ...\n";

TEST_F(HPPage, ExceptionOfEachStepIsLoggedAndReported) {
  const char* const kSteps[] = {"GdiWrapper",
                                "GetEncoderClsid",
                                "GdipCreateEffect",
                                "GetTempPathW",
                                "GetTempFileNameW",
                                "GdipCreateBitmapFromFile",
                                "GdipCreateBitmapFromScan0",
                                "GdipDrawImageI",
                                "GdipSaveImageToFile"};
  for (const char* step : kSteps) {
    SCOPED_TRACE(step);
    platform.forgetCalls();
    platform.onCall(step, 1, [] { throw std::runtime_error("the reason"); });
    make({bytes("01")}, 16, 8);
    EXPECT_EQ(platform.logLines(),
              (Lines{"Error: Writing image data to temp path is failed the reason", kFailureLine}));
    EXPECT_EQ(platform.notifications(), Lines{"1011"});
    EXPECT_EQ(platform.liveObjects("bitmap"), Lines{});
    EXPECT_EQ(platform.liveObjects("graphics"), Lines{});
    EXPECT_EQ(platform.liveObjects("effect"), Lines{});
  }
}

TEST_F(HPPage, ExceptionLeavesTheTemporaryFile) {
  platform.onCall("GdipCreateBitmapFromFile", 2, [] { throw std::bad_alloc(); });
  make({bytes("01"), bytes("02 03")}, 16, 8);
  EXPECT_EQ(platform.count("DeleteFileW"), 0);
  EXPECT_EQ(tvrscn::test::readFile(platform.tempFolder() / "ast1.tmp"), bytes("02 03"));
  EXPECT_EQ(folder.fileNames(), Lines{});
  EXPECT_EQ(platform.liveObjects("bitmap"), Lines{});
}

TEST_F(HPPage, ExceptionWithDialogsShowsTheInvalidRequest) {
  auto dictionary = namedDictionary();
  controller.InitExceptionStrings(dictionary);
  platform.onCall("GdipDrawImageI", 1, [] { throw std::out_of_range("far"); });
  make({bytes("01")}, 16, 8);
  EXPECT_EQ(platform.calls({Kind::kDialog, Kind::kLog, Kind::kNotification}),
            (Lines{"Log Error: Writing image data to temp path is failed far",
                   "Dialog [Title] InvalidRequest 0x40000", "Log " + kFailureLine, "Notify 1002"}));
}

TEST_F(HPPage, ExceptionOfTheCallbackIsCaughtToo) {
  platform.onNotification = [](const ScanNotification& notification) {
    if (notification.type == NOTIFY_IMAGE_READY) throw std::runtime_error("caller");
  };
  make({bytes("01")}, 16, 8);
  EXPECT_EQ(platform.logLines(),
            (Lines{"Error: Writing image data to temp path is failed caller", kFailureLine}));
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + path("Image_7.JPG"), "1011"}));
  EXPECT_EQ(folder.fileNames(), Lines{"Image_7.JPG"});
  EXPECT_EQ(platform.liveObjects("bitmap"), Lines{});
}

TEST_F(HPPage, ExceptionOfTheFirstNotificationLeavesItUnsent) {
  platform.onNotification = [](const ScanNotification& notification) {
    if (notification.type == NOTIFY_TRANSFER_STARTED) throw std::runtime_error("caller");
  };
  make({bytes("01")}, 16, 8);
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1011"}));
  EXPECT_FALSE(Peer::imageNotified(controller));
}

}  // namespace
