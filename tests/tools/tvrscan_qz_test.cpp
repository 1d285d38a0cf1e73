// Whole scans with the real program and a virtual scanner of the QZ family.
#include <algorithm>
#include <csignal>

#include <nlohmann/json.hpp>

#include "tvrscan_fixture.h"

namespace tvrscn::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;
using json = nlohmann::json;

class TvrscanQz : public TvrscanTest {
 protected:
  std::unique_ptr<Process> startScan(const std::vector<std::string>& arguments) const {
    return TvrscanTest::startScan(arguments, "qz");
  }
};

TEST_F(TvrscanQz, FlatbedGivesOnePage) {
  const auto scan = startScan({"--flatbed"});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_EQ(scan->outputLines(), Names{(out() / "Image_1.jpg").string()});
  EXPECT_EQ(names(out()), Names{"Image_1.jpg"});
  EXPECT_EQ(scan->errors().find("turn"), std::string::npos) << scan->errors();
  expectNothingLeft();
}

TEST_F(TvrscanQz, BothSidesOfTheSheetsInTheFeeder) {
  const auto scan = startScan({"--feeder", "2", "--sides", "two", "--name", "q-%02d", "--json"});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_EQ(names(out()), (Names{"q-01.jpg", "q-02.jpg", "q-03.jpg", "q-04.jpg"}));
  EXPECT_EQ(json::parse(scan->outputLines().at(0))["family"], "qz");
  EXPECT_EQ(json::parse(scan->outputLines().back())["pages"].size(), 4U);
  expectNothingLeft();
}

TEST_F(TvrscanQz, AFolderNameBeyondAsciiIsFine) {
  const fs::path folder = out() / "Gr\xC3\xBC\xC3\x9F \xE2\x82\xAC";
  const auto scan = start({"scan", "--virtual", "qz", "--resolution", "75", "--size", "50x60mm",
                           "--mode", "bw", "--out", folder.string()});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_EQ(names(folder), Names{"Image_1.jpg"});
  expectNothingLeft();
}

TEST_F(TvrscanQz, TellsWhatShrinksFromPageToPage) {
  const auto scan = startScan({"--feeder", "2", "--brightness", "20"});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_NE(scan->errors().find("a quarter of the one before"), std::string::npos)
      << scan->errors();
}

struct FaultCase {
  const char* fault;
  int exitCode;
  std::size_t pages;
  const char* words;  // in the message
};

class TvrscanQzFaults : public TvrscanQz, public testing::WithParamInterface<FaultCase> {};

// A page that is not fetched to its end, as with block-end, leaves no trace in the library's log:
// the job ends well without it.
TEST_P(TvrscanQzFaults, EndWithCodeCauseAndPages) {
  const FaultCase& row = GetParam();
  const auto scan = startScan({"--fault", row.fault, "--feeder", "2"});
  EXPECT_EQ(scan->wait(), row.exitCode) << scan->errors();
  EXPECT_NE(scan->errors().find(row.words), std::string::npos) << scan->errors();
  EXPECT_EQ(names(out()).size(), row.pages) << scan->errors();
  EXPECT_EQ(scan->outputLines().size(), row.pages) << scan->output();
  expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(
    Scan, TvrscanQzFaults,
    testing::Values(FaultCase{"slow=1", 0, 2, "2 pages stored"},
                    FaultCase{"busy@read", 4, 0, "The device said: READ: Busy"},
                    FaultCase{"paper-jam=2", 9, 1, "the device reports a fault"},
                    FaultCase{"cancelled=1", 9, 0, "check condition"},
                    FaultCase{"reserved", 9, 0, "Wait until the scanner is ready"},
                    FaultCase{"block-end=2", 0, 1, "1 page stored"},
                    FaultCase{"state@read=0*1", 9, 1, "a page is not whole"},
                    FaultCase{"drop=2", 9, 1, "1 page is safe"},
                    FaultCase{"huge-length@read", 9, 0, "cable"},
                    FaultCase{"status@read=35*1", 11, 0, "at this time of day"}));

TEST_F(TvrscanQz, ADeviceThatFallsSilentTimesOut) {
  const auto scan = startScan({"--fault", "stall@read", "--timeout", "1"});
  EXPECT_EQ(scan->wait(std::chrono::seconds(20)), 12) << scan->errors();
  EXPECT_NE(scan->errors().find("while waiting for the first page"), std::string::npos)
      << scan->errors();
  expectNothingLeft();
}

TEST_F(TvrscanQz, ASecondScanSaysThatItWaitsAndGetsItsTurn) {
  const auto first = startScan({"--fault", "stall@read", "--name", "first-%d"});
  ASSERT_TRUE(first->waitForOutput("scanning with")) << first->errors();
  // The first one takes its turn right behind what it says.
  std::unique_ptr<Process> second;
  for (int tries = 0; tries < 20 && second == nullptr; ++tries) {
    auto one = startScan({"--name", "second-%d"});
    if (one->waitForOutput("this scan waits for its turn", std::chrono::seconds(1)))
      second = std::move(one);
  }
  ASSERT_NE(second, nullptr) << "no scan has to wait";
  first->signal(SIGINT);
  EXPECT_EQ(first->wait(std::chrono::seconds(10)), 130);
  EXPECT_EQ(second->wait(), 0) << second->errors();
}

TEST_F(TvrscanQz, RangesAreNotTold) {
  const auto ranges = start({"ranges", "--virtual", "qz"});
  EXPECT_EQ(ranges->wait(), 13);
  EXPECT_NE(ranges->errors().find("devices of the QZ family have no ranges"), std::string::npos)
      << ranges->errors();
}

class TvrscanStore : public TvrscanTest {
 protected:
  void leave(const std::string& settings) const {
    fs::create_directories(programData());
    writeText(programData() / "ScanInputData.txt", settings);
  }
  // A virtual scanner, and a good line for it.
  std::unique_ptr<Process> startScanner(const std::vector<std::string>& arguments = {}) const {
    std::vector<std::string> command = {"virtual", "qz"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    auto scanner = start(command);
    EXPECT_TRUE(scanner->waitForOutput("registered in")) << scanner->errors();
    leave("Grayscale,75x75,OneSided,50,60,0,0,0,Off,0,VID_0A7E&PID_1C5A&MI_02,ISO_A6SEF\n");
    return scanner;
  }
};

TEST_F(TvrscanStore, TemplateIsALineThatPassesTheCheck) {
  const auto line = start({"store", "--print-template"});
  EXPECT_EQ(line->wait(), 0);
  leave(line->output());
  const auto check = start({"store", "--check"});
  EXPECT_EQ(check->wait(), 0) << check->errors();
  EXPECT_NE(check->errors().find("ScanInputData.txt is good"), std::string::npos);
  EXPECT_EQ(check->output(), "");
}

TEST_F(TvrscanStore, NothingIsSentForABadLine) {
  const auto scanner = startScanner();
  leave("FullColor,300x300,OneSided,210mm,297,0,0,0,off,0,VID_0A7E\n");
  for (const char* argument : {"--check", "scan", "ready"}) {
    const auto store = start({"store", argument});
    EXPECT_EQ(store->wait(), 2);
    for (const char* words :
         {"ScanInputData.txt: field 4 (width) is '210mm'", "field 9 (background removal) is 'off'",
          "field 12 (media) is missing", "--print-template"}) {
      EXPECT_NE(store->errors().find(words), std::string::npos) << store->errors();
    }
  }
}

TEST_F(TvrscanStore, AMissingFileIsNamed) {
  const auto store = start({"store", "ready"});
  EXPECT_EQ(store->wait(), 2);
  EXPECT_NE(store->errors().find((programData() / "ScanInputData.txt").string()), std::string::npos)
      << store->errors();
}

TEST_F(TvrscanStore, ADeviceThatIsNotThereIsNamed) {
  leave("Grayscale,75x75,OneSided,50,60,0,0,0,Off,0,VID_FFFF,ISO_A6SEF\n");
  const auto store = start({"store", "ready"});
  EXPECT_EQ(store->wait(), 3);
  EXPECT_NE(store->errors().find("the device VID_FFFF is not connected"), std::string::npos)
      << store->errors();
}

TEST_F(TvrscanStore, ASingleCommandIsSent) {
  const auto scanner = startScanner();
  for (const char* command : {"wake-up", "0xC3", "mode-sense"}) {
    const auto store = start({"store", command});
    EXPECT_EQ(store->wait(), 0) << store->errors();
    EXPECT_NE(store->errors().find("the command was sent"), std::string::npos) << store->errors();
    EXPECT_EQ(store->output(), "");
  }
}

TEST_F(TvrscanStore, CtrlCEndsACommandThatGetsNoAnswer) {
  const auto scanner = startScanner({"--fault", "stall@wake-up"});
  const auto store = start({"store", "wake-up"});
  ASSERT_TRUE(store->waitForOutput("a message box without words")) << store->errors();
  store->signal(SIGINT);
  EXPECT_EQ(store->wait(std::chrono::seconds(10)), 130) << store->errors();
}

// The root of this machine is not written to: the program gets a root of its own, with the folders
// of the real one in it.
class TvrscanStoreScan : public TvrscanStore {
 protected:
  // Empty where the system gives a process no such root.
  std::unique_ptr<Process> startInOwnRoot(bool writable) const {
    const fs::path root = folder() / "root";
    fs::create_directories(root);
    fs::create_directories(out());
    const std::string script =
        "root=" + root.string() +
        "; mount -t tmpfs none $root && for entry in /*; do"
        " if [ -L $entry ]; then cp -P $entry $root; elif [ -d $entry ]; then"
        " mkdir $root$entry && mount --rbind $entry $root$entry; fi; done; " +
        std::string(writable ? "" : "mount -o remount,ro none $root; ") +
        "echo entered >&2; chroot $root " TVRSCAN_PROGRAM
        " store scan; code=$?; [ ! -e $root/Image_1.jpg ] || cp $root/Image_*.jpg " +
        out().string() + "; exit $code";
    return startProgram({"unshare", "-rm", "sh", "-c", script});
  }
};

// Where the system denies namespaces, as some containers do, these skip and say so: on the
// machine's own root they would overwrite people's files.

TEST_F(TvrscanStoreScan, PagesComeToTheRoot) {
  const auto scanner = startScanner({"--feeder", "2"});
  const auto store = startInOwnRoot(true);
  const int code = store->wait();
  if (store->errors().find("entered") == std::string::npos)
    GTEST_SKIP() << "this machine gives a process no root of its own: " << store->errors();
  EXPECT_EQ(code, 0) << store->errors();
  EXPECT_EQ(store->outputLines(), (Names{"/Image_1.jpg", "/Image_2.jpg"}));
  EXPECT_NE(store->errors().find("pages go to /Image_1.jpg and so on"), std::string::npos);
  EXPECT_NE(store->errors().find("2 pages stored"), std::string::npos) << store->errors();
  EXPECT_EQ(names(out()), (Names{"Image_1.jpg", "Image_2.jpg"}));
}

TEST_F(TvrscanStoreScan, PagesThatCannotBeWrittenAreMissed) {
  const auto scanner = startScanner();
  const auto store = startInOwnRoot(false);
  const int code = store->wait();
  if (store->errors().find("entered") == std::string::npos)
    GTEST_SKIP() << "this machine gives a process no root of its own: " << store->errors();
  EXPECT_EQ(code, 10) << store->errors();
  EXPECT_EQ(store->output(), "");
  EXPECT_NE(store->errors().find("/Image_1.jpg was not written: this user cannot write to /"),
            std::string::npos)
      << store->errors();
  EXPECT_NE(store->errors().find("tvrscan scan --family qz"), std::string::npos);
}

TEST_F(TvrscanStoreScan, AScanWithoutAPageSaysSo) {
  const auto scanner = startScanner({"--fault", "block-end=1"});
  const auto store = startInOwnRoot(true);
  const int code = store->wait();
  if (store->errors().find("entered") == std::string::npos)
    GTEST_SKIP() << "this machine gives a process no root of its own: " << store->errors();
  EXPECT_EQ(code, 9) << store->errors();
  EXPECT_NE(store->errors().find("the device delivered no page"), std::string::npos)
      << store->errors();
}

}  // namespace
}  // namespace tvrscn::test
