// The entry of store applications: the settings file that they leave, and what one call does to the
// device.
#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/qz_test.h"
#include "tests/support/temporary_folder.h"
#include "tvrscn/store_app.h"

namespace {

using tvrscn::test::hex;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::QZDialogue;
using tvrscn::test::QZTest;
using tvrscn::test::readFile;
using tvrscn::test::writeFile;
using Source = DataSourceTestPeer;

const std::string kDiscovered = " Discovered the USB End Point from Store App! \r\n";
const std::string kNotDiscovered = " Unable to Create End Point from Store App! \r\n";

// Twelve fields, each with a value of its own.
const std::string kLine =
    "Grayscale,300x300,TwoSided,210,297,1,-40,25,On,1,VID_0A7E&PID_1234,ISO_A4LEF";

class QZStoreApp : public QZTest {
 protected:
  QZStoreApp() {
    platform.storeAppSettings = settingsFile();
    platform.devices.push_back({L"USB\\VID_0A7E&PID_1234&MI_00\\1"});
  }

  std::filesystem::path settingsFile() const { return folder.path() / "ScanInputData.txt"; }
  void leave(std::string_view content) { writeFile(settingsFile(), content); }

  CQZUSBScanDataSource& sourceOf(std::string_view content) {
    leave(content);
    controller.setStoreAppPropertiesToScan();
    return *controller.GetUSBScanDataSource();
  }

  void expectDefaults(CQZUSBScanDataSource& source) {
    EXPECT_EQ(Source::colorMode(source), "FullColor");
    EXPECT_EQ(Source::resolution(source), "200x200");
    EXPECT_EQ(Source::sides(source), "OneSided");
    EXPECT_EQ(Source::width(source), 0);
    EXPECT_EQ(Source::height(source), 0);
    EXPECT_EQ(Source::paperSource(source), 1);
    EXPECT_EQ(Source::brightness(source), 0);
    EXPECT_EQ(Source::contrast(source), 0);
    EXPECT_EQ(Source::backgroundRemoval(source), "");
    EXPECT_EQ(Source::pageLimit(source), 0);
    EXPECT_EQ(source.getHardwareId(), "");
    EXPECT_EQ(Source::mediaSize(source), "");
    EXPECT_EQ(Source::feedEdge(source), 1);
  }

  // What a call leaves behind: nothing that it opened.
  void expectControllerGone() {
    EXPECT_EQ(platform.liveObjects("handle"), (Lines{"write", "read"}));
    EXPECT_EQ(platform.liveObjects("module").size(), 1U);
    EXPECT_EQ(platform.calls({Kind::kMutex, Kind::kNotification}), Lines{});
  }
};

// --- The settings file
// -------------------------------------------------------------------------------------

TEST_F(QZStoreApp, EachFieldGoesToItsPlace) {
  CQZUSBScanDataSource& source = sourceOf(kLine);
  EXPECT_EQ(Source::colorMode(source), "Grayscale");
  EXPECT_EQ(Source::resolution(source), "300x300");
  EXPECT_EQ(Source::sides(source), "TwoSided");
  EXPECT_EQ(Source::width(source), 210);
  EXPECT_EQ(Source::height(source), 297);
  EXPECT_EQ(Source::paperSource(source), 1);
  EXPECT_EQ(Source::brightness(source), -40);
  EXPECT_EQ(Source::contrast(source), 25);
  EXPECT_EQ(Source::backgroundRemoval(source), "On");
  EXPECT_EQ(Source::pageLimit(source), 1);
  EXPECT_EQ(source.getHardwareId(), "VID_0A7E&PID_1234");
  EXPECT_EQ(Source::mediaSize(source), "ISO_A4LEF");
  EXPECT_EQ(Source::feedEdge(source), 0);
}

TEST_F(QZStoreApp, LineMayLookInManyWays) {
  const std::string front = "a,b,c,1,2,3,4,5,h,6,";
  const struct {
    const char* name;
    std::string content;
    const char* hardwareId;
    const char* media;
  } kCases[] = {
      {"no end of line", front + "id,SEF", "id", "SEF"},
      {"end of line", front + "id,SEF\n", "id", "SEF"},
      {"end of a Windows line", front + "id,SEF\r\n", "id", "SEF"},
      {"a second line", front + "id,SEF\nx,y", "id", "SEF"},
      {"a second Windows line", front + "id,SEF\r\nx,y\r\n", "id", "SEF"},
      {"a comma at the end", front + "id,SEF,", "id", "SEF"},
      {"a comma in front of a Windows end", front + "id,SEF,\r\n", "id", "SEF"},
      {"a thirteenth field", front + "id,SEF,LEF,x", "id", "SEF"},
      {"commas in front", ",," + front + "id,SEF", "id", "SEF"},
      {"commas in runs", front + ",,,id,,SEF", "id", "SEF"},
      {"blanks stay", front + " id , SEF ", " id ", " SEF "},
      {"bytes beyond ASCII stay", front + "\xE4,\xFF", "\xE4", "\xFF"},
      {"a zero byte ends it", front + "id,SEF" + std::string(1, '\0') + "LEF", "id", "SEF"},
      {"a zero byte behind a carriage return", front + "id,SEF\r" + std::string(1, '\0') + "\n",
       "id", "SEF\r"},
      {"a carriage return at the end of the file stays", front + "id,SEF\r", "id", "SEF\r"},
      {"a carriage return alone is a character", front + "id,S\rF", "id", "S\rF"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    CQZUSBScanDataSource& source = sourceOf(row.content);
    EXPECT_EQ(source.getHardwareId(), row.hardwareId);
    EXPECT_EQ(Source::mediaSize(source), row.media);
    EXPECT_EQ(Source::feedEdge(source), 1);
    EXPECT_EQ(Source::pageLimit(source), 6);
  }
}

TEST_F(QZStoreApp, EmptyFieldMovesTheLaterOnesForward) {
  // Without a background: the page limit is taken for it, and so on.
  CQZUSBScanDataSource& source = sourceOf("a,b,c,1,2,3,4,5,,6,7,id,SEF");
  EXPECT_EQ(Source::backgroundRemoval(source), "6");
  EXPECT_EQ(Source::pageLimit(source), 7);
  EXPECT_EQ(source.getHardwareId(), "id");
  EXPECT_EQ(Source::mediaSize(source), "SEF");
}

TEST_F(QZStoreApp, LineIsCutAfterFiveHundredAndElevenCharacters) {
  const std::string front = "a,b,c,1,2,3,4,5,h,6,";
  const std::string filler(511 - front.size() - 4, 'x');  // room for ",LEF"
  EXPECT_EQ(Source::mediaSize(sourceOf(front + filler + ",LEF")), "LEF");
  EXPECT_EQ(Source::mediaSize(sourceOf(front + filler + ",LEF\n")), "LEF");
  EXPECT_EQ(Source::mediaSize(sourceOf(front + filler + ",LEF\r\n")), "LEF");
  EXPECT_EQ(Source::mediaSize(sourceOf(front + filler + ",LEFx")), "LEF");
  CQZUSBScanDataSource& source = sourceOf(front + filler + "y,LEF\n");
  EXPECT_EQ(Source::mediaSize(source), "LE");
  EXPECT_EQ(Source::feedEdge(source), 1);
  EXPECT_EQ(source.getHardwareId(), filler + "y");
}

TEST_F(QZStoreApp, FileThatSaysNothingLeavesTheDefaults) {
  const struct {
    const char* name;
    std::function<void()> arrange;
  } kCases[] = {
      {"missing", [] {}},
      {"empty", [this] { leave(""); }},
      {"an empty first line", [this] { leave("\n" + kLine); }},
      {"an empty first Windows line", [this] { leave("\r\n" + kLine); }},
      {"commas alone", [this] { leave(",,,,,,,,,,,,"); }},
      {"a zero byte in front", [this] { leave(std::string(1, '\0') + kLine); }},
      {"not readable",
       [this] {
         std::filesystem::remove(settingsFile());
         std::filesystem::create_directory(settingsFile());
       }},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    row.arrange();
    const auto before = std::make_shared<CQZUSBScanDataSource>();
    Source::width(*before) = 5;
    Peer::dataSource(controller) = before;
    controller.setStoreAppPropertiesToScan();
    ASSERT_NE(controller.GetUSBScanDataSource(), before);
    expectDefaults(*controller.GetUSBScanDataSource());
  }
}

TEST_F(QZStoreApp, FileIsLeftAsItIs) {
  sourceOf(kLine + "\r\nmore");
  const std::string kept = kLine + "\r\nmore";
  EXPECT_EQ(readFile(settingsFile()), tvrscn::test::Bytes(kept.begin(), kept.end()));
}

// The line with another text in one of its fields.
std::string lineWith(std::size_t field, const std::string& text) {
  std::string line;
  std::size_t start = 0;
  for (std::size_t i = 0; i < 12; ++i) {
    const std::size_t end = std::min(kLine.find(',', start), kLine.size());
    line += (i == 0 ? "" : ",") + (i == field ? text : kLine.substr(start, end - start));
    start = end + 1;
  }
  return line;
}

constexpr std::size_t kNumberFields[] = {3, 4, 5, 6, 7, 9};

TEST_F(QZStoreApp, FieldThatIsNoNumberThrowsToTheCaller) {
  for (const std::size_t field : kNumberFields) {
    for (const char* text : {"abc", "-", " ", "x1"}) {
      SCOPED_TRACE(lineWith(field, text));
      leave(lineWith(field, text));
      try {
        scanFromStoreApp(0);
        ADD_FAILURE();
      } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "invalid stoi argument");
      }
      EXPECT_EQ(platform.calls({Kind::kDevice, Kind::kOpen, Kind::kLog}), Lines{});
      expectControllerGone();
    }
  }
}

TEST_F(QZStoreApp, NumberBeyondThirtyTwoBitsThrowsToTheCaller) {
  for (const std::size_t field : kNumberFields) {
    for (const char* text : {"2147483648", "-2147483649", "99999999999999999999"}) {
      SCOPED_TRACE(lineWith(field, text));
      leave(lineWith(field, text));
      try {
        controller.setStoreAppPropertiesToScan();
        ADD_FAILURE();
      } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "stoi argument out of range");
      }
      // The new source has not taken a single field.
      expectDefaults(*controller.GetUSBScanDataSource());
    }
  }
}

TEST_F(QZStoreApp, NumberEndsAtTheFirstOtherCharacter) {
  const struct {
    const char* text;
    int value;
  } kCases[] = {{"12mm", 12},   {" 7", 7},   {"+7", 7},
                {"\t-7.9", -7}, {"0x10", 0}, {"2147483647", 2147483647}};
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(Source::width(sourceOf(lineWith(3, row.text))), row.value);
    EXPECT_EQ(Source::height(sourceOf(lineWith(4, row.text))), row.value);
    EXPECT_EQ(Source::paperSource(sourceOf(lineWith(5, row.text))), row.value);
    EXPECT_EQ(Source::brightness(sourceOf(lineWith(6, row.text))), row.value);
    EXPECT_EQ(Source::contrast(sourceOf(lineWith(7, row.text))), row.value);
    EXPECT_EQ(Source::pageLimit(sourceOf(lineWith(9, row.text))), row.value);
  }
}

TEST_F(QZStoreApp, NoOtherFieldIsANumber) {
  for (const std::size_t field : {0U, 1U, 2U, 8U, 10U, 11U})
    EXPECT_NO_THROW(sourceOf(lineWith(field, "abc"))) << field;
}

using QZStoreAppDeathTest = QZStoreApp;

TEST_F(QZStoreAppDeathTest, LineOfFewerThanTwelveFieldsEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  std::string line;
  for (std::size_t fields = 1; fields < 12; ++fields) {
    line += fields == 1 ? "1" : ",1";
    leave(line + "\n");
    EXPECT_EXIT(scanFromStoreApp(0), ::testing::KilledBySignal(SIGABRT), "fewer than its twelve")
        << fields;
  }
}

TEST_F(QZStoreAppDeathTest, FieldsBeyondTheCutAreMissing) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  leave("a,b,c,1,2,3,4,5," + std::string(493, 'x') + ",12,id,SEF");  // 511 characters with ",1"
  EXPECT_EXIT(scanFromStoreApp(0), ::testing::KilledBySignal(SIGABRT), "fewer than its twelve");
}

TEST_F(QZStoreAppDeathTest, ProcessEndsBeforeTheDeviceIsOpened) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  platform.onCall("CreateFileW", 1, [] { std::_Exit(0); });
  leave("a,b,c,1,2,3,4,5,h,6,VID_0A7E");
  EXPECT_EXIT(scanFromStoreApp(0), ::testing::KilledBySignal(SIGABRT), "fewer than its twelve");
}

TEST_F(QZStoreApp, FieldThatIsNoNumberIsFoundBeforeOneThatIsMissing) {
  leave("a,b,c,abc");
  EXPECT_THROW(controller.setStoreAppPropertiesToScan(), std::invalid_argument);
}

// --- The device
// --------------------------------------------------------------------------------------------

TEST_F(QZStoreApp, EndpointIsSearchedByTheIdOfTheFile) {
  leave(kLine);
  scanFromStoreApp(999);
  EXPECT_EQ(platform.logLines(), Lines{kDiscovered});
  EXPECT_EQ(platform.count("CreateFileW"), 2);
  EXPECT_EQ(platform.calls({Kind::kDevice}), Lines{});
  expectControllerGone();
}

TEST_F(QZStoreApp, EndpointThatIsNotFoundIsALineAndNoCommand) {
  const std::function<void()> kTroubles[] = {
      [this] { leave(lineWith(10, "VID_FFFF")); },
      // Ids are compared as they stand, with the upper case of the device's.
      [this] { leave(lineWith(10, "vid_0a7e")); },
      [this] {
        leave(kLine);
        platform.failEveryCall("CreateFileW", 5);
      },
      [this] { platform.devices.clear(); },
      [this] { platform.missingFunctions = {"SetupDiEnumDeviceInterfaces"}; },
  };
  for (const auto& arrange : kTroubles) {
    arrange();
    platform.forgetCalls();
    scanFromStoreApp(0);
    EXPECT_EQ(platform.logLines(), Lines{kNotDiscovered});
    EXPECT_EQ(platform.calls({Kind::kDevice, Kind::kDialog}), Lines{});
    expectControllerGone();
  }
}

TEST_F(QZStoreApp, WithoutAFileTheFirstDeviceIsTaken) {
  scanFromStoreApp(999);
  EXPECT_EQ(platform.logLines(), Lines{kDiscovered});
}

TEST_F(QZStoreApp, NinetyAsksForBothModePagesOfAFreshController) {
  leave(kLine);
  for (int i = 0; i < 2; ++i) {
    // No reply has set a client id, and none stays behind.
    device.expect("00 5A 00 00 00 00 00 04 20 00 00 00");
    device.reply(tvrscn::test::kModeSense, 0, 0, QZDialogue::kLimits);
    device.expect("00 5A 00 00 00 00 00 04 03 00 00 00");
    device.reply(tvrscn::test::kModeSense, 0, 0, QZDialogue::kUnits);
    scanFromStoreApp(90);
  }
  EXPECT_EQ(platform.logLines(), (Lines{kDiscovered, kDiscovered}));
  expectControllerGone();
}

TEST_F(QZStoreApp, ReservationOfOneCallIsUnknownToTheNext) {
  leave(kLine);
  device.reserve();
  scanFromStoreApp(22);
  device.expect("00 C1 00*6");
  device.reply(tvrscn::test::kTestUnitReady);
  scanFromStoreApp(193);
  expectControllerGone();
}

TEST_F(QZStoreApp, OneRunsTheCancelSequence) {
  leave(kLine);
  device.expect("00 07 00 00 00 00 00 04 00*4");
  device.reply(tvrscn::test::kInitialize);
  device.expect("00 17 00*6");
  device.reply(tvrscn::test::kRelease, 9);
  scanFromStoreApp(1);
  // The dialog comes, without a word in it.
  EXPECT_EQ(platform.calls({Kind::kDialog}), Lines{"Dialog []  0x40000"});
  expectControllerGone();
}

TEST_F(QZStoreApp, WindowAndModeSelectComeOutOfTheFile) {
  leave("Grayscale,300x300,SecondSideRotation,210,297,0,0,0,Off,1,VID_0A7E,ISO_A4SEF");
  device.openFeeder().initialize().modeSenseLimits().modeSenseUnits();
  // One page from the feeder: bits 6 and 4, count 1; both sides, the second turned: 80 and 04.
  device.modeSelect("00 00 50 00 01 84 00*50").setWindow().startScan();
  device.readBlockHeader().readImage(4, "01").testUnitReady().close();
  scanFromStoreApp(0);
  EXPECT_EQ(
      platform.logLines(),
      (Lines{kDiscovered, "Read: Device Status Error Good:Command is accepted correctly\r\n"}));
  expectControllerGone();
}

TEST_F(QZStoreApp, SensorOverridesThePaperSourceOfTheFile) {
  leave("Grayscale,300x300,OneSided,210,297,1,0,0,Off,1,VID_0A7E,ISO_A4SEF");
  device.openFlatbed().setUp().readImage(4, "").testUnitReady().close();
  scanFromStoreApp(0);
  expectControllerGone();
}

TEST_F(QZStoreApp, PagesGoToTheRootOfTheDrive) {
  leave("BlackAndWhite,300x300,OneSided,210,297,0,0,0,Off,0,VID_0A7E,ISO_A4SEF");
  device.openFlatbed();
  device.setUp(QZDialogue::kFlatbedSelect,
               "00*2 01 2C 01 2C 00*10 00 00 08 34 00 00 0B 9A 00*2 10 08 10 01 00*10 "
               "00 00 08 34 00 00 0B 9A");
  device.readImage(2, "01").readImage(3, "02").testUnitReady().close();
  scanFromStoreApp(0);
  const Lines imaging = platform.calls({Kind::kImaging});
  ASSERT_EQ(imaging.size(), 3U);
  ASSERT_TRUE(imaging[1].starts_with("BlackandWhiteImageProcessing /Image_")) << imaging[1];
  EXPECT_TRUE(imaging[1].ends_with(".jpg 0 0")) << imaging[1];
  const std::size_t start = imaging[1].find('/') + 1;
  const std::string name = imaging[1].substr(start, imaging[1].find(' ', start) - start);
  EXPECT_EQ(hex(readFile(platform.driveRoot() / name)), "01 02");
  expectControllerGone();
}

TEST_F(QZStoreApp, FailedScanShowsADialogWithoutTexts) {
  leave(kLine);
  device.wakeup({8, 0});
  scanFromStoreApp(0);
  EXPECT_EQ(platform.calls({Kind::kDialog}), Lines{"Dialog []  0x40000"});
  expectControllerGone();
}

TEST_F(QZStoreApp, SenseShowsNoDialogAndIsNotRetried) {
  leave(kLine);
  platform.dialogAnswers = {4};
  device.wakeup().reserve().request(tvrscn::test::kTestUnitReady);
  device.checkCondition(tvrscn::test::kTestUnitReady, "02 53 00").release();
  scanFromStoreApp(0);
  EXPECT_EQ(platform.calls({Kind::kDialog}), Lines{});
  expectControllerGone();
}

TEST_F(QZStoreApp, MutexOfTheJobsIsNotAsked) {
  platform.mutexFree = false;
  leave(kLine);
  device.expect("00 C3 00*6");
  device.reply(tvrscn::test::kWakeup);
  scanFromStoreApp(195);
  expectControllerGone();
}

}  // namespace
