// The worker: what each kind of packet does to the records, and every way in which the thread ends.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/lowend_test.h"

namespace {

using tvrscn::test::Bytes;
using tvrscn::test::bytes;
using tvrscn::test::DeviceExhausted;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::lowEndHeader;
using tvrscn::test::lowEndPacket;
using tvrscn::test::LowEndTest;

const std::string kJpeg = "\xFF\xD8\xFF\xE0";
const std::string kBadStatus =
    "Error from RetrieveScannedRecordData....The return status is not good.... check for status "
    "dump text file";
const std::string kFailureSent = "Sending FAILURE Notification to DS ...\n";

class Retrieval : public LowEndTest {
 protected:
  // Reads a job and gives its records.
  Lines records() {
    status_ = Peer::retrieve(controller);
    Lines found;
    for (const ScannedRecord& record : Peer::records(controller)) {
      EXPECT_EQ(record.length, record.bytes.size());
      found.push_back(record.bytes);
    }
    return found;
  }
  // The same, ended by a last packet without payload behind what the device has been given.
  Lines recordsOfJob() {
    device.lastPacket();
    return records();
  }
  Lines deviceCalls() const { return platform.calls({Kind::kDevice}); }

  USBStatusErrors status_ = USB_ERR_GENERAL;
};

Bytes operator+(Bytes first, std::string_view text) {
  first.insert(first.end(), text.begin(), text.end());
  return first;
}

// --- Packets -------------------------------------------------------------------------------------

TEST_F(Retrieval, PayloadOfAPacketIsARecord) {
  device.packet("image").packet("bytes");
  EXPECT_EQ(recordsOfJob(), (Lines{"image", "bytes"}));
  EXPECT_EQ(status_, USB_SUCCESS);
  EXPECT_EQ(deviceCalls(),
            (Lines{"Flush read", "Read 512", "Flush read", "Read 512", "Flush read", "Read 512"}));
}

TEST_F(Retrieval, PayloadOfTheLastPacketCounts) {
  device.packet("image").lastPacket("end");
  EXPECT_EQ(records(), (Lines{"image", "end"}));
}

TEST_F(Retrieval, PayloadOf502BytesComesInOneRead) {
  device.packet(std::string(502, 'x'));
  EXPECT_EQ(recordsOfJob(), Lines{std::string(502, 'x')});
  EXPECT_EQ(deviceCalls().size(), 4U);
}

TEST_F(Retrieval, RestOfALongerPayloadIsReadToTheByte) {
  device.packet(std::string(502, 'x') + "y");
  EXPECT_EQ(recordsOfJob(), Lines{std::string(502, 'x') + "y"});
  EXPECT_EQ(deviceCalls(),
            (Lines{"Flush read", "Read 512", "Flush read", "Read 1", "Flush read", "Read 512"}));
}

TEST_F(Retrieval, RestThatComesInPiecesIsAskedForAgain) {
  device.answer(lowEndHeader(2, 10) + "012").answer(Bytes{} + "345").answer(Bytes{});
  device.failRead().answer(Bytes{} + "6789");
  EXPECT_EQ(recordsOfJob(), Lines{"0123456789"});
  EXPECT_EQ(deviceCalls(),
            (Lines{"Flush read", "Read 512", "Flush read", "Read 7", "Flush read", "Read 4",
                   "Flush read", "Read 4", "Flush read", "Read 4", "Flush read", "Read 512"}));
}

TEST_F(Retrieval, ReadThatFailsBringsWhatItBrings) {
  device.failRead(31, "1B 4E 02 00 03 00 00 00 00 00 61 62 63");
  EXPECT_EQ(recordsOfJob(), Lines{"abc"});
}

TEST_F(Retrieval, FlushesAreNotLookedAt) {
  platform.failEveryCall("FlushFileBuffers");
  device.packet("abc");
  EXPECT_EQ(recordsOfJob(), Lines{"abc"});
}

struct SkippedCase {
  const char* name;
  const char* transfer;
};

// None of these is an image packet: each would end the job or leave a record if it were taken.
const SkippedCase kSkippedCases[] = {
    {"Nothing", ""},
    {"NineBytes", "1B 4E 02 00 00 00 00 00 01"},
    {"OtherEscape", "1C 4E 02 00 03 00 00 00 01 00 61 62 63"},
    {"OtherLead", "1B 4F 02 00 03 00 00 00 01 00 61 62 63"},
    {"OperationOne", "1B 4E 01 00 03 00 00 00 01 00 61 62 63"},
    {"OperationThree", "1B 4E 03 00 03 00 00 00 01 00 61 62 63"},
    {"OperationZero", "1B 4E 00 00 03 00 00 00 01 00 61 62 63"},
};

class SkippedRead : public Retrieval, public ::testing::WithParamInterface<SkippedCase> {};

TEST_P(SkippedRead, ChangesNothing) {
  device.answer(GetParam().transfer);
  device.packet("image");
  EXPECT_EQ(recordsOfJob(), Lines{"image"});
  EXPECT_EQ(platform.count("ReadFile"), 3);
}

INSTANTIATE_TEST_SUITE_P(All, SkippedRead, ::testing::ValuesIn(kSkippedCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Retrieval, ReadsThatFailAreRepeatedWithoutAPause) {
  for (int i = 0; i < 60; ++i)
    device.failRead();
  EXPECT_EQ(recordsOfJob(), Lines{});
  EXPECT_EQ(platform.calls({Kind::kSleep}), Lines{});
  EXPECT_EQ(platform.count("ReadFile"), 61);
}

TEST_F(Retrieval, SilentDeviceKeepsTheWorkerReading) {
  EXPECT_THROW(records(), DeviceExhausted);
  device.forget();
}

TEST_F(Retrieval, SkippedPacketLosesItsFirstReadOnly) {
  // The rest of it is no packet either, and goes with the next read.
  device.answer(lowEndPacket(std::string(600, 'x'), 0, 3));
  device.packet("image");
  EXPECT_EQ(recordsOfJob(), Lines{"image"});
  EXPECT_EQ(platform.count("ReadFile"), 4);
}

TEST_F(Retrieval, TwelveBytesAreAControlPacket) {
  device.answer("1B 4E 02 00 64 00 00 00 00 00 61 62");
  device.packet("image");
  EXPECT_EQ(recordsOfJob(), Lines{"image"});
  EXPECT_EQ(platform.count("ReadFile"), 3);
}

TEST_F(Retrieval, PayloadLengthTwoIsAControlPacket) {
  device.answer("1B 4E 02 00 02 00 00 00 00 00 61 62 63 64");
  device.packet("image");
  EXPECT_EQ(recordsOfJob(), Lines{"image"});
}

TEST_F(Retrieval, TwelveBytesThatAreTheLastEndTheJob) {
  device.packet("image").lastPacket("ab");
  EXPECT_EQ(records(), Lines{"image"});
  EXPECT_EQ(status_, USB_SUCCESS);
}

TEST_F(Retrieval, HeaderAloneLeavesNoRecord) {
  device.packet("").packet("image");
  EXPECT_EQ(recordsOfJob(), Lines{"image"});
}

TEST_F(Retrieval, StatusOtherThanOneIsNotTheLast) {
  device.packet("a", 0x81).packet("b", 0x11).packet("c", 2).packet("d", 0xFF);
  EXPECT_EQ(recordsOfJob(), (Lines{"a", "b", "c", "d"}));
}

TEST_F(Retrieval, LengthIsLittleEndian) {
  device.answer((bytes("1B 4E 02 00 00 02 00 00 00 00") + std::string(502, 'x')));
  device.answer(Bytes{} + std::string(10, 'y'));
  EXPECT_EQ(recordsOfJob(), Lines{std::string(502, 'x') + std::string(10, 'y')});
}

TEST_F(Retrieval, RecordsOfTheJobBeforeAreGone) {
  device.packet("first").lastPacket().packet("second").lastPacket();
  EXPECT_EQ(records(), Lines{"first"});
  EXPECT_EQ(records(), Lines{"second"});
}

// --- Words of the device -------------------------------------------------------------------------

TEST_F(Retrieval, CancelInTheFirstRecordIsReportedAtTheEnd) {
  device.packet("xxJOBCANCELxx").packet("image");
  EXPECT_EQ(recordsOfJob(), (Lines{"xxJOBCANCELxx", "image"}));
  EXPECT_EQ(status_, USB_ERR_JOB_CANCELLED);
}

TEST_F(Retrieval, CancelMayComeInTheLastPacket) {
  device.lastPacket("JOBCANCEL");
  EXPECT_EQ(records(), Lines{"JOBCANCEL"});
  EXPECT_EQ(status_, USB_ERR_JOB_CANCELLED);
}

TEST_F(Retrieval, CancelBehindPacketsWithoutRecordsCounts) {
  device.packet("ab").packet("").packet("JOBCANCEL");
  recordsOfJob();
  EXPECT_EQ(status_, USB_ERR_JOB_CANCELLED);
}

TEST_F(Retrieval, CancelBehindARecordThatVanishedCounts) {
  device.packet("JOBDONE").packet("JOBCANCEL");
  EXPECT_EQ(recordsOfJob(), Lines{"JOBCANCEL"});
  EXPECT_EQ(status_, USB_ERR_JOB_CANCELLED);
}

TEST_F(Retrieval, CancelThatVanishesWithItsRecordCounts) {
  device.packet("JOBDONEJOBCANCEL").packet("image");
  EXPECT_EQ(recordsOfJob(), Lines{"image"});
  EXPECT_EQ(status_, USB_ERR_JOB_CANCELLED);
}

TEST_F(Retrieval, CancelInALaterRecordIsData) {
  device.packet("image").packet("JOBCANCEL");
  EXPECT_EQ(recordsOfJob(), (Lines{"image", "JOBCANCEL"}));
  EXPECT_EQ(status_, USB_SUCCESS);
}

TEST_F(Retrieval, CancelInTheSecondReadIsData) {
  device.packet(std::string(502, 'x') + "JOBCANCEL");
  EXPECT_EQ(recordsOfJob(), Lines{std::string(502, 'x') + "JOBCANCEL"});
  EXPECT_EQ(status_, USB_SUCCESS);
}

TEST_F(Retrieval, CancelAcrossTheReadsIsData) {
  device.packet(std::string(494, 'x') + "JOBCANCEL");
  recordsOfJob();
  EXPECT_EQ(status_, USB_SUCCESS);
}

TEST_F(Retrieval, CancelAtTheEndOfTheFirstReadCounts) {
  device.packet(std::string(493, 'x') + "JOBCANCELmore");
  recordsOfJob();
  EXPECT_EQ(status_, USB_ERR_JOB_CANCELLED);
}

TEST_F(Retrieval, CancelInAControlPacketIsNotSeen) {
  device.answer(lowEndHeader(2, 2) + "JOBCANCEL");
  device.packet("image");
  EXPECT_EQ(recordsOfJob(), Lines{"image"});
  EXPECT_EQ(status_, USB_SUCCESS);
}

TEST_F(Retrieval, EightLettersAreNoCancel) {
  device.packet("JOBCANCE");
  recordsOfJob();
  EXPECT_EQ(status_, USB_SUCCESS);
}

TEST_F(Retrieval, DoneDropsTheTailOfItsRecord) {
  device.packet("imageJOBDONEtail").packet("more");
  EXPECT_EQ(recordsOfJob(), (Lines{"image", "more"}));
}

TEST_F(Retrieval, LastDoneOfARecordCounts) {
  device.packet("aJOBDONEbJOBDONEc");
  EXPECT_EQ(recordsOfJob(), Lines{"aJOBDONEb"});
}

TEST_F(Retrieval, RecordThatStartsWithDoneVanishes) {
  device.packet("a").packet("JOBDONEb");
  EXPECT_EQ(recordsOfJob(), Lines{"a"});
}

TEST_F(Retrieval, DoneAcrossTheReadsOfARecordIsFound) {
  device.packet(std::string(499, 'x') + "JOBDONEtail");
  EXPECT_EQ(recordsOfJob(), Lines{std::string(499, 'x')});
}

TEST_F(Retrieval, DoneAcrossPacketsIsData) {
  device.packet("aJOB").packet("DONEb");
  EXPECT_EQ(recordsOfJob(), (Lines{"aJOB", "DONEb"}));
}

TEST_F(Retrieval, SixLettersAreNoDone) {
  device.packet("JOBDON");
  EXPECT_EQ(recordsOfJob(), Lines{"JOBDON"});
}

// --- The thread ----------------------------------------------------------------------------------

class Worker : public LowEndTest {
 protected:
  void expectReleased() {
    EXPECT_EQ(Peer::threadArgs(controller), nullptr);
    EXPECT_EQ(platform.liveObjects("handle"), (Lines{"write", "read"}));
    EXPECT_NE(Peer::thread(controller), nullptr);  // keeps its value
  }
  // Calls that tell how a job ends.
  Lines ending() const {
    return platform.calls({Kind::kNotification, Kind::kLog, Kind::kDialog, Kind::kOpen});
  }
  std::string image(int number) const {
    return (folder.path() / ("Image_" + std::to_string(number) + ".JPG")).string();
  }
  std::string pageOf(const std::string& name) const {
    const auto content = tvrscn::test::readFile(folder.path() / name);
    return {content.begin(), content.end()};
  }
};

TEST_F(Worker, NoArgumentsEndAtOnce) {
  EXPECT_EQ(Peer::threadProc(nullptr), 0U);
  EXPECT_EQ(platform.calls(), Lines{});
}

TEST_F(Worker, NoControllerEndsAtOnce) {
  LowEndImageThreadArgs arguments = {nullptr, platform.callback(), nullptr};
  EXPECT_EQ(Peer::threadProc(&arguments), 0U);
  EXPECT_EQ(platform.calls(), Lines{});
}

TEST_F(Worker, EmptyCallbackRecordEndsAtOnceAndReleasesNothing) {
  TVR_FP_CALLBACK nobody = {nullptr, nullptr};
  LowEndImageThreadArgs arguments = {&controller, &nobody, nullptr};
  Peer::threadArgs(controller) = &arguments;
  Peer::thread(controller) = &platform.make("handle", "thread");
  EXPECT_EQ(Peer::threadProc(&arguments), 0U);
  EXPECT_EQ(platform.calls(), Lines{});
  EXPECT_EQ(Peer::threadArgs(controller), &arguments);
  Peer::threadArgs(controller) = nullptr;
}

TEST_F(Worker, CallbackRecordWithAContextAloneWillDo) {
  TVR_FP_CALLBACK silent = {nullptr, &platform};
  LowEndImageThreadArgs arguments = {&controller, &silent, nullptr};
  BasePeer::callback(controller) = &silent;
  Peer::imageFolder(controller) = folder.path().wstring();
  device.lastPacket();
  EXPECT_EQ(Peer::threadProc(&arguments), 15009U);
  EXPECT_EQ(platform.notifications(), Lines{});
}

TEST_F(Worker, NullCallbackIsASilentJob) {
  LowEndImageThreadArgs arguments = {&controller, nullptr, nullptr};
  Peer::imageFolder(controller) = folder.path().wstring();
  device.lastPacket(kJpeg);
  EXPECT_EQ(Peer::threadProc(&arguments), 15009U);
  EXPECT_EQ(folder.fileNames(), Lines{"Image_1.JPG"});
}

TEST_F(Worker, FinishedJobIsToldAndReleased) {
  device.packet(kJpeg + "a").lastPacket(".NEWFILE" + kJpeg + "b");
  EXPECT_EQ(work(), 15009U);
  EXPECT_EQ(ending(), (Lines{"Notify 1004", "Notify 1005 " + image(1), "Notify 1005 " + image(2),
                             "Notify 1006", "Close thread"}));
  EXPECT_EQ(pageOf("Image_1.JPG"), kJpeg + "a");
  EXPECT_EQ(pageOf("Image_2.JPG"), kJpeg + "b");
  expectReleased();
}

TEST_F(Worker, NothingIsWrittenBeforeTheLastPacket) {
  device.packet(kJpeg).packet(".NEWFILE" + kJpeg).lastPacket();
  platform.onCall("ReadFile", 3, [&] { EXPECT_EQ(folder.fileNames(), Lines{}); });
  EXPECT_EQ(work(), 15009U);
  EXPECT_EQ(platform.count("ReadFile"), 3);
  EXPECT_EQ(folder.fileNames().size(), 2U);
}

TEST_F(Worker, JobWithoutRecordsReportsOneEmptyFile) {
  device.lastPacket();
  EXPECT_EQ(work(), 15009U);
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + image(1), "1006"}));
  EXPECT_EQ(pageOf("Image_1.JPG"), "");
}

TEST_F(Worker, RecordsStayUntilTheNextJob) {
  device.packet(kJpeg).lastPacket();
  EXPECT_EQ(work(), 15009U);
  EXPECT_EQ(Peer::records(controller).size(), 1U);
}

TEST_F(Worker, ArgumentsAreStillThereWhenTheJobIsToldComplete) {
  bool there = false;
  platform.onNotification = [&](const ScanNotification& notification) {
    if (notification.type == NOTIFY_JOB_COMPLETE) there = Peer::threadArgs(controller) != nullptr;
  };
  device.lastPacket();
  EXPECT_EQ(work(), 15009U);
  EXPECT_TRUE(there);
  expectReleased();
}

// The worker can be done before its handle has been kept.
TEST_F(Worker, HandleThatIsNotKeptYetIsNotClosed) {
  BasePeer::callback(controller) = platform.callback();
  Peer::imageFolder(controller) = folder.path().wstring();
  Peer::threadArgs(controller) =
      new LowEndImageThreadArgs{&controller, platform.callback(), nullptr};
  device.lastPacket();
  EXPECT_EQ(Peer::threadProc(Peer::threadArgs(controller)), 15009U);
  EXPECT_EQ(platform.calls({Kind::kOpen}), Lines{});
  EXPECT_EQ(Peer::threadArgs(controller), nullptr);
}

TEST_F(Worker, ShutDownReleasesAndGivesZero) {
  Peer::threadArgs(controller) = new LowEndImageThreadArgs{};
  Peer::thread(controller) = &platform.make("handle", "thread");
  EXPECT_EQ(Peer::shutDownThread(controller), 0);
  EXPECT_EQ(platform.calls(), Lines{"Close thread"});
  expectReleased();
}

TEST_F(Worker, ShutDownWithNothingToReleaseDoesNothing) {
  EXPECT_EQ(Peer::shutDownThread(controller), 0);
  EXPECT_EQ(platform.calls(), Lines{});
}

TEST_F(Worker, DeviceCancelFailsTheJob) {
  device.packet("JOBCANCEL").packet(kJpeg).lastPacket();
  EXPECT_EQ(work(), 15015U);
  EXPECT_EQ(ending(),
            (Lines{"Close thread", "Log " + kBadStatus, "Notify 1011", "Log " + kFailureSent}));
  EXPECT_EQ(folder.fileNames(), Lines{});
  EXPECT_EQ(Peer::records(controller).size(), 2U);
  expectReleased();
}

TEST_F(Worker, DeviceCancelIsShownToTheUser) {
  showDialogs();
  device.lastPacket("JOBCANCEL");
  EXPECT_EQ(work(), 15015U);
  EXPECT_EQ(ending(),
            (Lines{"Close thread", "Log " + kBadStatus, "Notify 1020",
                   "Dialog [Title] JobCancelled 0x40000", "Log " + kFailureSent, "Notify 1021"}));
  EXPECT_TRUE(BasePeer::errorShown(controller));
}

TEST_F(Worker, ExceptionOfTheFilesFailsTheJob) {
  BasePeer::usingTevraUI(controller) = false;
  device.packet(kJpeg + "a").lastPacket(".NEWFILE" + kJpeg + "b");
  platform.onCall("DeleteFileW", 1, [] { throw std::runtime_error("disk \xE9 gone"); });
  EXPECT_EQ(work(), 15007U);
  EXPECT_EQ(ending(), (Lines{"Log disk \xC3\xA9 gone", "Notify 1011", "Log " + kFailureSent,
                             "Close thread"}));
  expectReleased();
}

TEST_F(Worker, ExceptionIsShownToTheUser) {
  showDialogs();
  device.packet("first").lastPacket();
  platform.onCall("ReadFile", 2, [] { throw std::bad_alloc(); });
  EXPECT_EQ(work(), 15007U);
  EXPECT_EQ(ending(), (Lines{"Log std::bad_alloc", "Notify 1020",
                             "Dialog [CommFailureTitle] CommFailure 0x40000", "Log " + kFailureSent,
                             "Notify 1011", "Close thread"}));
  expectReleased();
  device.forget();
}

TEST_F(Worker, ExceptionOfTheCallbackFailsTheJob) {
  platform.onNotification = [](const ScanNotification& notification) {
    if (notification.type == NOTIFY_JOB_COMPLETE) throw std::runtime_error("100% %s");
  };
  device.lastPacket(kJpeg);
  EXPECT_EQ(work(), 15007U);
  EXPECT_EQ(ending(), (Lines{"Notify 1004", "Notify 1005 " + image(1), "Notify 1006", "Log 100% %s",
                             "Notify 1011", "Log " + kFailureSent, "Close thread"}));
  expectReleased();
}

TEST_F(Worker, FilesBeforeAnExceptionStay) {
  platform.onNotification = [](const ScanNotification& notification) {
    if (notification.type == NOTIFY_IMAGE_READY) throw std::runtime_error("x");
  };
  device.packet(kJpeg + "a").lastPacket("b.NEWFILE" + kJpeg + "c");
  EXPECT_EQ(work(), 15007U);
  EXPECT_EQ(pageOf("Image_1.JPG"), kJpeg + "ab");
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + image(1), "1011"}));
}

TEST_F(Worker, MoreBytesThanAnnouncedFailTheJob) {
  device.answer(lowEndHeader(2, 5) + "0123456");
  EXPECT_EQ(work(), 15007U);
  EXPECT_EQ(platform.notifications(), Lines{"1011"});
  EXPECT_EQ(platform.count("ReadFile"), 1);
  expectReleased();
}

TEST_F(Worker, FolderThatDoesNotSurviveNarrowingFailsTheJob) {
  device.lastPacket(kJpeg);
  Peer::fileCount(controller) = 5;
  platform.onCall("ReadFile", 1, [&] {
    const std::wstring name = folder.path().wstring() + L"/\u0100";
    std::filesystem::create_directory(tvrscn::test::toPath(name));
    Peer::imageFolder(controller) = name;
  });
  EXPECT_EQ(work(), 15007U);
  EXPECT_EQ(ending(),
            (Lines{"Log Exception thrown from RemoveBlockToBytesWithNewline due to Input Image "
                   "file to process is not available",
                   "Notify 1011", "Log " + kFailureSent, "Close thread"}));
  EXPECT_EQ(controller.GetFileCount(), 5);
}

TEST_F(Worker, MissingFolderFailsTheJob) {
  device.lastPacket(kJpeg);
  platform.onCall("ReadFile", 1, [&] { std::filesystem::remove_all(folder.path()); });
  EXPECT_EQ(work(), 15007U);
  EXPECT_EQ(platform.notifications(), Lines{"1011"});
}

TEST_F(Worker, SecondJobStartsAtTheNumberWhereTheFirstStopped) {
  device.packet(kJpeg).lastPacket(".NEWFILE" + kJpeg).lastPacket(kJpeg);
  EXPECT_EQ(work(), 15009U);
  EXPECT_EQ(work(), 15009U);
  EXPECT_EQ(folder.fileNames(), (Lines{"Image_1.JPG", "Image_2.JPG", "Image_3.JPG"}));
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + image(1), "1005 " + image(2), "1006",
                                             "1005 " + image(3), "1006"}));
}

TEST_F(Worker, JobAfterAFailedOneWorks) {
  device.lastPacket("JOBCANCEL").lastPacket(kJpeg);
  EXPECT_EQ(work(), 15015U);
  EXPECT_EQ(work(), 15009U);
  EXPECT_EQ(folder.fileNames(), Lines{"Image_1.JPG"});
}

TEST_F(Worker, WholeJobFromScanToFiles) {
  device.open().packet(kJpeg + "a").lastPacket("bJOBDONE");
  EXPECT_EQ(scan(), 0);
  EXPECT_EQ(runWorker(), 15009U);
  EXPECT_EQ(pageOf("Image_1.JPG"), kJpeg + "ab");
  EXPECT_EQ(platform.notifications(), (Lines{"1004", "1005 " + image(1), "1006"}));
  expectReleased();
}

}  // namespace
