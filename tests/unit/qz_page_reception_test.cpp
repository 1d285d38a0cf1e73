// The pages of a QZ device: what READ replies leave in the buffer, what becomes a file, who works
// on it and who hears of it.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/qz_test.h"
#include "tests/support/temporary_folder.h"

namespace {

using tvrscn::test::Bytes;
using tvrscn::test::bytes;
using tvrscn::test::hex;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::namedDictionary;
using tvrscn::test::QZTest;
using tvrscn::test::readFile;
using tvrscn::test::toPath;
using tvrscn::test::writeFile;

const std::string kReadRequest = "Write 05 28 00 00 00 00 00 04 00 04 00 00";
const std::string kGood = "Good:Command is accepted correctly";

class QZPages : public QZTest {
 protected:
  QZPages() : source_(prepareJob()) {}

  int read() { return Peer::read(controller); }

  // A page of one reply; its number.
  int page(const std::string& data = "01") {
    device.readImage(3, data);
    EXPECT_EQ(read(), 0);
    return numberOf(platform.notifications().back());
  }

  static int numberOf(const std::string& notification) {
    const std::size_t at = notification.rfind("/Image_");
    return at == std::string::npos ? -1 : std::stoi(notification.substr(at + 7));
  }

  std::filesystem::path pathOf(int number) const {
    return folder.path() / ("Image_" + std::to_string(number) + ".jpg");
  }
  std::string announcement(int number) const { return "1005 " + pathOf(number).string(); }
  std::string contentOf(int number) const { return hex(readFile(pathOf(number))); }

  std::string buffered() {
    const char* const data = Peer::imageBytes(controller);
    return hex(Bytes(data, data + Peer::imageSize(controller)));
  }
  void expectNoPageInReception() {
    EXPECT_EQ(Peer::imageBytes(controller), nullptr);
    EXPECT_EQ(Peer::imageSize(controller), 0U);
  }

  CQZUSBScanDataSource& source_;
};

// --- Replies
// -----------------------------------------------------------------------------------------------

TEST_F(QZPages, PageOfOneReplyTakesNoFurtherRead) {
  const int number = page("70 71 72");
  EXPECT_EQ(platform.calls({Kind::kDevice, Kind::kNotification, Kind::kImaging}),
            (Lines{"Flush write", "Flush read", kReadRequest, "Read 8", "Read 3", "Notify 1004",
                   "Notify " + announcement(number), "Flush read", "Flush write"}));
  EXPECT_EQ(contentOf(number), "70 71 72");
  expectNoPageInReception();
}

TEST_F(QZPages, RepliesOfAPageAreOneFile) {
  device.readImage(2, "01 02").readImage(2, "03").readImage(2, "04 05 06");
  const int number = page("07");
  EXPECT_EQ(contentOf(number), "01 02 03 04 05 06 07");
  EXPECT_EQ(platform.notifications(), (Lines{"1004", announcement(number)}));
  expectNoPageInReception();
}

TEST_F(QZPages, EmptyLastReplyWritesWhatWasGathered) {
  device.readImage(2, "01 02").readImage(2, "03");
  EXPECT_EQ(contentOf(page("")), "01 02 03");
}

TEST_F(QZPages, PageWithoutBytesIsAnEmptyFile) {
  const int number = page("");
  EXPECT_EQ(contentOf(number), "");
  EXPECT_EQ(platform.notifications(), (Lines{"1004", announcement(number)}));
}

TEST_F(QZPages, EmptyRepliesKeepThePageInReception) {
  device.readImage(2, "").readImage(2, "").readImage(2, "").readImage(2, "01").readImage(2, "");
  EXPECT_EQ(contentOf(page("02")), "01 02");
}

TEST_F(QZPages, UpperBitsOfTheScannerStatusAreNoState) {
  for (const unsigned upper : {0x10U, 0x20U, 0x40U, 0x80U, 0xF0U}) {
    device.readImage(2 | upper, "01").readImage(3 | upper, "02");
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(contentOf(numberOf(platform.notifications().back())), "01 02") << upper;
  }
}

TEST_F(QZPages, AnyOtherStateDropsTheDataAndEndsTheChain) {
  for (const unsigned state : {0U, 1U, 4U, 6U, 7U, 8U, 9U, 10U, 11U, 12U, 13U, 14U, 15U}) {
    SCOPED_TRACE(state);
    platform.forgetCalls();
    device.readImage(2, "01").readImage(state, "02 03");
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(platform.logLines(), Lines{"Read: Device Status Error " + kGood + "\r\n"});
    EXPECT_EQ(platform.notifications(), Lines{});
    EXPECT_EQ(buffered(), "01");
    page("04");
  }
  device.readImage(4, "02 03");
  EXPECT_EQ(read(), 0);
  expectNoPageInReception();
}

struct StatusRow {
  unsigned status;
  const char* text;
};
const StatusRow kStatuses[] = {
    {8, "Busy: Command cannot be accepted, Resend the command"},
    {9, "Scanning: Command cannot be accepted, scanning is in progress"},
    {24, "Reservation Conflict: Scanning resource is reserved by a different job"},
    {33, "Scan Auth Error: Authentication error for scan occurred"},
    {34, "Scan Function Disabled: Scan feature is disabled"},
    {35,
     "Scan Prohibited Time: Scanning is not possible due to the time limitation for the scan "
     "feature."},
    {36, "Scan imaging Error: Scanning could not complete."},
};

TEST_F(QZPages, StatusOfAReadIsLoggedAndLeftToTheCaller) {
  for (const StatusRow& row : kStatuses) {
    SCOPED_TRACE(row.status);
    platform.forgetCalls();
    device.readImage(3, "01 02", row.status);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(Peer::operationStatus(controller), row.status);
    EXPECT_EQ(platform.logLines(),
              Lines{"Read: Operation Error " + std::string(row.text) + "\r\n"});
    EXPECT_EQ(platform.calls({Kind::kNotification, Kind::kDialog}), Lines{});
    expectNoPageInReception();
  }
  // A status without words leaves those of the status before it.
  platform.forgetCalls();
  device.readImage(3, "01", 77);
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(platform.logLines(),
            Lines{"Read: Operation Error Scan imaging Error: Scanning could not complete.\r\n"});
  EXPECT_EQ(Peer::operationStatus(controller), 77);
}

TEST_F(QZPages, StatusWithinTheChainIsAFailedReadAndKeepsWhatCame) {
  for (const unsigned status : {1U, 9U, 36U, 255U}) {
    SCOPED_TRACE(status);
    device.readImage(2, "01").readImage(2, "02").readImage(3, "03", status);
    EXPECT_EQ(read(), 15002);
    EXPECT_EQ(buffered(), "01 02");
    page("04");
  }
}

TEST_F(QZPages, SenseNeverTouchesThePage) {
  giveDictionary();
  device.readImage(2, "01").readRequest().checkCondition(tvrscn::test::kRead, "05 00 00");
  EXPECT_EQ(read(), 15002);
  EXPECT_EQ(buffered(), "01");
  EXPECT_EQ(platform.calls({Kind::kLog, Kind::kDialog, Kind::kNotification}),
            (Lines{"Dialog [Title] InvalidRequest 0x40000", "Notify 1002"}));
}

// --- Block end
// ---------------------------------------------------------------------------------------------

TEST_F(QZPages, BlockEndAsksForTheBlockHeaderAndEndsTheChain) {
  device.readImage(5, "01 02").readBlockHeader();
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(platform.calls({Kind::kDevice, Kind::kLog, Kind::kNotification}),
            (Lines{"Flush write", "Flush read", kReadRequest, "Read 8", "Read 2",  //
                   "Flush write", "Flush read", "Write 05 C2 00 00 00 00 00 00",   //
                   "Read 8", "Read 8", "Flush read", "Flush write",                //
                   "Flush read", "Flush write"}));
  EXPECT_EQ(buffered(), "01 02");
  EXPECT_EQ(Peer::blockSize(controller), 0x00040000U);
  EXPECT_EQ(folder.fileNames(), Lines{});
}

TEST_F(QZPages, BytesOfABlockEndComeInFrontOfTheNextPage) {
  device.readImage(2, "01").readImage(5, "02").readBlockHeader();
  EXPECT_EQ(read(), 0);
  device.readImage(5, "03").readBlockHeader();
  EXPECT_EQ(read(), 0);
  device.readImage(2, "04");
  EXPECT_EQ(contentOf(page("05")), "01 02 03 04 05");
  EXPECT_EQ(contentOf(page("06")), "06");
}

TEST_F(QZPages, FailedBlockHeaderIsIgnored) {
  using tvrscn::test::kReadBlockHeader;
  const std::function<void()> kFailures[] = {
      [this] { device.expectAndFail("05 C2 00*6"); },
      [this] { device.request(kReadBlockHeader).failRead(); },
      [this] { device.request(kReadBlockHeader).answer("EE C2 00"); },
      [this] { device.request(kReadBlockHeader).replyHeader(kReadBlockHeader, 8).failRead(); },
      [this] { device.request(kReadBlockHeader).replyHeader(kReadBlockHeader, 8).answer("00"); },
  };
  for (const auto& fail : kFailures) {
    device.readImage(5, "01");
    fail();
    EXPECT_EQ(read(), 0);
    // Within a chain too, for the last status stays that of an accepted command.
    device.readImage(2, "02").readImage(5, "03");
    fail();
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(buffered(), "01 02 03");
    EXPECT_EQ(Peer::operationStatus(controller), 0);
    EXPECT_EQ(platform.calls({Kind::kLog, Kind::kDialog}), Lines{});
    page();
  }
}

TEST_F(QZPages, StatusOfTheBlockHeaderIsLeftToTheCaller) {
  device.readImage(5, "01").readBlockHeader({9, 0});
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(Peer::operationStatus(controller), 9);
  // A READ in front of it sees the status itself.
  device.readImage(2, "02").readImage(5, "03").readBlockHeader({9, 0});
  EXPECT_EQ(read(), 15002);
  EXPECT_EQ(buffered(), "01 02 03");
}

TEST_F(QZPages, SenseOfTheBlockHeaderIsToldAndLeftToTheCaller) {
  giveDictionary();
  device.readImage(5, "01").request(tvrscn::test::kReadBlockHeader);
  device.checkCondition(tvrscn::test::kReadBlockHeader, "04 24 00");
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(Peer::operationStatus(controller), 2);
  EXPECT_TRUE(controller.getReleaseInfo());
  EXPECT_EQ(platform.calls({Kind::kDialog, Kind::kNotification}),
            (Lines{"Dialog [Title] DeviceError 0x40000", "Notify 1002"}));
}

// --- The buffer
// --------------------------------------------------------------------------------------------

TEST_F(QZPages, BufferGrowsByWhatArrives) {
  Bytes first = bytes("01 02");
  Bytes second = bytes("03 04 05");
  Peer::imageData(controller, reinterpret_cast<char*>(first.data()), 2);
  EXPECT_EQ(buffered(), "01 02");
  Peer::imageData(controller, reinterpret_cast<char*>(second.data()), 3);
  EXPECT_EQ(buffered(), "01 02 03 04 05");
  EXPECT_EQ(platform.logLines(), Lines{});
}

TEST_F(QZPages, BytesThatCannotBeHeldAreLostWithALine) {
  char byte = 1;
  Peer::imageData(controller, &byte, 0x100000000UL);
  EXPECT_EQ(platform.logLines(), Lines{" Error readImageData: malloc failed \r\n"});
  expectNoPageInReception();

  Peer::imageData(controller, &byte, 1);
  platform.forgetCalls();
  Peer::imageData(controller, &byte, 0xFFFFFFFFUL);
  EXPECT_EQ(platform.logLines(), Lines{" Error: readImageData: realloc failed \r\n"});
  EXPECT_EQ(buffered(), "01");
}

TEST_F(QZPages, ControllerTakesThePageInReceptionWithIt) {
  char byte = 1;
  USB_QZ_Controller another;
  Peer::imageData(another, &byte, 1);  // a leak, were it not freed
  EXPECT_NE(Peer::imageBytes(another), nullptr);
  EXPECT_EQ(Peer::imageBytes(controller), nullptr);
}

// --- Files
// -------------------------------------------------------------------------------------------------

TEST_F(QZPages, PagesAreNumberedOnAndTransferStartIsToldOnce) {
  const int first = page("01");
  EXPECT_EQ(page("02"), first + 1);
  EXPECT_EQ(page("03"), first + 2);
  EXPECT_EQ(platform.notifications(),
            (Lines{"1004", announcement(first), announcement(first + 1), announcement(first + 2)}));
  EXPECT_EQ(contentOf(first + 1), "02");
}

TEST_F(QZPages, ControllersShareTheNumber) {
  const int first = page();
  USB_QZ_Controller another;
  const auto [write, read] = platform.openDevice();
  BasePeer::deviceWrite(another) = write;
  BasePeer::deviceRead(another) = read;
  BasePeer::callback(another) = platform.callback();
  Peer::scanFolder(another) = folder.path().wstring();
  device.expect("00 28 00 00 00 00 00 04 00 04 00 00");
  device.reply(tvrscn::test::kRead, 0, 3, "01");
  EXPECT_EQ(Peer::read(another), 0);
  EXPECT_EQ(numberOf(platform.notifications().back()), first + 1);
  EXPECT_EQ(page(), first + 2);
}

TEST_F(QZPages, ExistingFileIsEmptied) {
  const int next = page() + 1;
  writeFile(pathOf(next), "a longer file of an earlier process");
  EXPECT_EQ(page("05"), next);
  EXPECT_EQ(contentOf(next), "05");
}

TEST_F(QZPages, MissingFolderLosesThePageAndTellsOfItAllTheSame) {
  const std::filesystem::path missing = folder.path() / "missing";
  Peer::scanFolder(controller) = missing.wstring();
  const int number = page();
  EXPECT_EQ(
      platform.notifications(),
      (Lines{"1004", "1005 " + (missing / ("Image_" + std::to_string(number) + ".jpg")).string()}));
  EXPECT_FALSE(std::filesystem::exists(missing));
  EXPECT_EQ(platform.calls({Kind::kLog, Kind::kDialog}), Lines{});
  expectNoPageInReception();
  // It has used up its number.
  Peer::scanFolder(controller) = folder.path().wstring();
  EXPECT_EQ(page(), number + 1);
}

TEST_F(QZPages, NameKeepsTheLowByteOfEachCharacter) {
  std::filesystem::create_directory(folder.path() / "A");
  Peer::scanFolder(controller) = folder.path().wstring() + L"/\u0141";
  const int number = page("01 02");
  const std::filesystem::path file =
      folder.path() / "A" / ("Image_" + std::to_string(number) + ".jpg");
  EXPECT_EQ(platform.notifications().back(), "1005 " + file.string());
  EXPECT_EQ(hex(readFile(file)), "01 02");
}

TEST_F(QZPages, FileIsOpenedByTheSystemsPageOfItsNarrowName) {
  // The fake system has U+F7E4 for the byte E4.
  const std::filesystem::path widened = folder.path() / toPath(L"\uF7E4");
  std::filesystem::create_directory(widened);
  Peer::scanFolder(controller) = folder.path().wstring() + L"/\u00E4";
  device.readImage(3, "01");
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(widened), {}), 1);
}

TEST_F(QZPages, NameLongerThanAPathOfTheSystemStaysWhole) {
  // The file system takes no such name; nothing else may be written in its place.
  const std::wstring deep = folder.path().wstring() + L"/" + std::wstring(300, L'x');
  Peer::scanFolder(controller) = deep;
  const int number = page();
  EXPECT_EQ(platform.notifications().back(), "1005 " + folder.path().string() + "/" +
                                                 std::string(300, 'x') + "/Image_" +
                                                 std::to_string(number) + ".jpg");
  EXPECT_EQ(folder.fileNames(), Lines{});
}

// --- Post-processing
// ---------------------------------------------------------------------------------------

struct ProcessingRow {
  const char* name;
  bool needed;
  const char* colorMode;
  int brightness;
  int contrast;
  const char* operation;  // "": none; null: no imaging at all
};
const ProcessingRow kProcessing[] = {
    {"colour without adjustment", false, "FullColor", 0, 0, nullptr},
    {"black and white not asked for", false, "BlackAndWhite", 10, 10, nullptr},
    {"black and white", true, "BlackAndWhite", 0, 0, "BlackandWhiteImageProcessing"},
    {"black and white, adjusted", true, "BlackAndWhite", -25, 6, "BlackandWhiteImageProcessing"},
    {"colour, brighter", true, "FullColor", 25, 0, "BrightnessContrastApplyEffect"},
    {"colour, more contrast", true, "FullColor", 0, -25, "BrightnessContrastApplyEffect"},
    {"grey, both", true, "Grayscale", -1, 1, "BrightnessContrastApplyEffect"},
    {"grey, quartered to nothing", true, "Grayscale", 0, 0, ""},
    {"another spelling", true, "blackandwhite", 3, 0, "BrightnessContrastApplyEffect"},
};

TEST_F(QZPages, SettingsDecideWhatIsDoneWithThePage) {
  for (const ProcessingRow& row : kProcessing) {
    SCOPED_TRACE(row.name);
    DataSourceTestPeer::needImageProcessing(source_) = row.needed;
    DataSourceTestPeer::colorMode(source_) = row.colorMode;
    DataSourceTestPeer::brightness(source_) = row.brightness;
    DataSourceTestPeer::contrast(source_) = row.contrast;
    platform.forgetCalls();
    const int number = page();
    Lines expected;
    if (row.operation != nullptr) expected.emplace_back("GdiWrapper");
    if (row.operation != nullptr && *row.operation != '\0') {
      expected.push_back(row.operation + (" " + pathOf(number).string()) + " " +
                         std::to_string(row.brightness) + " " + std::to_string(row.contrast));
    }
    if (row.operation != nullptr) expected.emplace_back("~GdiWrapper");
    EXPECT_EQ(platform.calls({Kind::kImaging}), expected);
  }
}

TEST_F(QZPages, ControllerWithoutSettingsProcessesNothing) {
  Peer::dataSource(controller).reset();
  EXPECT_EQ(contentOf(page("01")), "01");
  EXPECT_EQ(platform.calls({Kind::kImaging}), Lines{});
}

class QZProcessing : public QZPages {
 protected:
  QZProcessing() {
    DataSourceTestPeer::needImageProcessing(source_) = true;
    DataSourceTestPeer::colorMode(source_) = "FullColor";
    DataSourceTestPeer::brightness(source_) = 5;
  }
};

TEST_F(QZProcessing, PageIsStoredBeforeItAndToldBehindIt) {
  std::string stored;
  platform.onCall("BrightnessContrastApplyEffect", 1,
                  [&] { stored = hex(readFile(folder.path() / folder.fileNames().at(0))); });
  const int number = page("01 02");
  EXPECT_EQ(stored, "01 02");
  EXPECT_EQ(
      platform.calls({Kind::kImaging, Kind::kNotification}),
      (Lines{"GdiWrapper", "BrightnessContrastApplyEffect " + pathOf(number).string() + " 5 0",
             "~GdiWrapper", "Notify 1004", "Notify " + announcement(number)}));
}

TEST_F(QZProcessing, ExceptionFailsTheReadAndTheNumberIsUsedAgain) {
  const int before = page();
  const struct {
    const char* function;
    const char* colorMode;
    std::function<void()> thrower;
  } kCases[] = {
      {"GdiWrapper", "FullColor", [] { throw std::runtime_error("no imaging"); }},
      {"GdiWrapper", "FullColor", [] { throw std::bad_alloc(); }},
      {"BrightnessContrastApplyEffect", "FullColor", [] { throw std::runtime_error("effect"); }},
      {"BrightnessContrastApplyEffect", "FullColor", [] { throw 5; }},
      {"BlackandWhiteImageProcessing", "BlackAndWhite", [] { throw std::logic_error("grey"); }},
      {"BlackandWhiteImageProcessing", "BlackAndWhite", [] { throw 5; }},
  };
  int content = 0x10;
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.function);
    DataSourceTestPeer::colorMode(source_) = row.colorMode;
    platform.forgetCalls();
    platform.onCall(row.function, 1, row.thrower);
    const std::string data = std::to_string(content++);
    device.readImage(3, data);
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(contentOf(before + 1), data);
    EXPECT_EQ(platform.calls({Kind::kNotification, Kind::kLog, Kind::kDialog}), Lines{});
    expectNoPageInReception();
  }
  EXPECT_EQ(page("77"), before + 1);
  EXPECT_EQ(contentOf(before + 1), "77");
}

TEST_F(QZProcessing, ExceptionWithinTheChainIsAFailedRead) {
  platform.onCall("GdiWrapper", 1, [] { throw std::runtime_error("no imaging"); });
  device.readImage(2, "01").readImage(3, "02");
  EXPECT_EQ(read(), 15002);
}

// --- Exceptions elsewhere
// ----------------------------------------------------------------------------------

class QZPageTrouble : public QZPages {
 protected:
  QZPageTrouble() { giveDictionary(); }

  static constexpr const char* kLine = "Log Error: Writing image data to temp path is failed ";
};

TEST_F(QZPageTrouble, ExceptionInFrontOfTheFileIsToldAndKeepsThePage) {
  const int before = page();
  platform.forgetCalls();
  platform.onCall("MultiByteToWideChar", 1, [] { throw std::runtime_error("no name"); });
  device.readImage(2, "01").readImage(3, "02");
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(platform.calls({Kind::kLog, Kind::kDialog, Kind::kNotification}),
            (Lines{std::string(kLine) + "no name", "Dialog [Title] InvalidRequest 0x40000",
                   "Notify 1002"}));
  EXPECT_EQ(folder.fileNames().size(), 1U);
  EXPECT_EQ(buffered(), "01 02");
  EXPECT_EQ(page("03"), before + 1);
  EXPECT_EQ(contentOf(before + 1), "01 02 03");
}

TEST_F(QZPageTrouble, ExceptionOfTheCallbackIsToldAndTheNumberUsedUp) {
  const int before = page();
  for (const NotificationType type : {NOTIFY_TRANSFER_STARTED, NOTIFY_IMAGE_READY}) {
    SCOPED_TRACE(type);
    BasePeer::imageNotified(controller) = false;
    platform.forgetCalls();
    platform.onNotification = [type](const ScanNotification& notification) {
      if (notification.type == type) throw std::runtime_error("caller");
    };
    device.readImage(3, "01");
    EXPECT_EQ(read(), 0);
    const Lines told = platform.calls({Kind::kLog, Kind::kDialog, Kind::kNotification});
    ASSERT_GE(told.size(), 4U);
    EXPECT_EQ(Lines(told.end() - 3, told.end()),
              (Lines{std::string(kLine) + "caller", "Dialog [Title] InvalidRequest 0x40000",
                     "Notify 1002"}));
    // The start is told once more when telling it failed.
    EXPECT_EQ(BasePeer::imageNotified(controller), type != NOTIFY_TRANSFER_STARTED);
    EXPECT_FALSE(Peer::retryScan(controller));
  }
  platform.onNotification = nullptr;
  EXPECT_EQ(page(), before + 3);
}

TEST_F(QZPageTrouble, ExceptionOfAnotherKindPasses) {
  platform.onNotification = [](const ScanNotification&) { throw 5; };
  device.readImage(2, "01").readImage(3, "02");
  EXPECT_THROW(read(), int);
  platform.onNotification = nullptr;
  EXPECT_EQ(platform.logLines(), Lines{});
  // The next exchange of the controller is one of its own again.
  page();
}

TEST_F(QZPageTrouble, WithoutDialogsTheNotificationComesAlone) {
  hideDialogs();
  platform.onCall("MultiByteToWideChar", 1, [] { throw std::runtime_error("no name"); });
  device.readImage(3, "01");
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(platform.calls({Kind::kLog, Kind::kDialog, Kind::kNotification}),
            (Lines{std::string(kLine) + "no name", "Notify 1002"}));
}

// The numbers run through the process, so these look at them in a process of their own.
using QZPageNumberDeathTest = QZPages;

TEST_F(QZPageNumberDeathTest, FirstPageOfAProcessIsNumberOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto firstIsOne = [this] {
    page();
    page();
    return folder.fileNames() == Lines{"Image_1.jpg", "Image_2.jpg"};
  };
  EXPECT_EXIT(std::_Exit(firstIsOne() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

}  // namespace
