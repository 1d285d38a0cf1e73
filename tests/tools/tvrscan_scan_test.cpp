// Whole scans with the real program and a virtual scanner.
#include <algorithm>
#include <csignal>

#include <nlohmann/json.hpp>

#include "tvrscan_fixture.h"

namespace tvrscn::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;
using json = nlohmann::json;

// Width and height out of the frame header of a JPEG.
std::pair<int, int> jpegSize(const fs::path& file) {
  const std::string bytes = readText(file);
  const auto at = [&](std::size_t index) { return static_cast<unsigned char>(bytes.at(index)); };
  for (std::size_t index = 2; index + 9 < bytes.size();) {
    const int marker = at(index + 1);
    if (marker == 0xC0 || marker == 0xC2) {
      return {at(index + 7) * 256 + at(index + 8), at(index + 5) * 256 + at(index + 6)};
    }
    index += 2 + static_cast<std::size_t>(at(index + 2) * 256 + at(index + 3));
  }
  return {0, 0};
}

TEST_F(TvrscanTest, FlatbedGivesOnePage) {
  const auto scan = startScan({"--flatbed"});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_EQ(scan->outputLines(), Names{(out() / "Image_1.jpg").string()});
  EXPECT_EQ(names(out()), Names{"Image_1.jpg"});
  // 50 and 60 mm at 75 dots per inch, give or take the rounding of the device.
  const auto [width, height] = jpegSize(out() / "Image_1.jpg");
  EXPECT_NEAR(width, 148, 8);
  EXPECT_NEAR(height, 177, 8);
  EXPECT_NE(scan->errors().find("1 page stored"), std::string::npos) << scan->errors();
  expectNothingLeft();
}

TEST_F(TvrscanTest, FeederGivesBothSidesOfAllSheets) {
  const auto scan = startScan({"--feeder", "2", "--sides", "two"});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_EQ(names(out()), (Names{"Image_1.jpg", "Image_2.jpg", "Image_3.jpg", "Image_4.jpg"}));
  EXPECT_EQ(scan->outputLines().size(), 4U);
  expectNothingLeft();
}

TEST_F(TvrscanTest, JsonTellsDevicePagesAndEnd) {
  const auto scan = startScan({"--feeder", "2", "--json", "--quiet"});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  const Names lines = scan->outputLines();
  ASSERT_EQ(lines.size(), 4U) << scan->output();
  const json device = json::parse(lines[0]);
  EXPECT_EQ(device["event"], "device");
  EXPECT_EQ(device["family"], "hp");
  EXPECT_EQ(device["hardware_id"], "VID_0A7E&PID_1F48&MI_00");
  const json second = json::parse(lines[2]);
  EXPECT_EQ(second["event"], "page");
  EXPECT_EQ(second["number"], 2);
  EXPECT_EQ(second["file"], (out() / "Image_2.jpg").string());
  EXPECT_EQ(second["bytes"], fs::file_size(out() / "Image_2.jpg"));
  const json end = json::parse(lines[3]);
  EXPECT_EQ(end["event"], "end");
  EXPECT_EQ(end["status"], "done");
  EXPECT_EQ(end["exit_code"], 0);
  EXPECT_EQ(end["pages"].size(), 2U);
}

TEST_F(TvrscanTest, JsonTellsTheCauseOfAFailure) {
  const auto scan = startScan({"--feeder", "2", "--json", "--quiet", "--fault", "paper-jam=2"});
  EXPECT_EQ(scan->wait(), 5);
  const json end = json::parse(scan->outputLines().back());
  EXPECT_EQ(end["status"], "paper jam");
  EXPECT_EQ(end["pages"].size(), 1U);
  EXPECT_EQ(end["device_status"], "OBJECT POSITION: Check condition, Document JAM detected");
}

TEST_F(TvrscanTest, QuietSaysNothingWhenAllGoesWell) {
  const auto scan = startScan({"--quiet"});
  EXPECT_EQ(scan->wait(), 0);
  EXPECT_EQ(scan->errors(), "");
  EXPECT_EQ(scan->outputLines().size(), 1U);
}

TEST_F(TvrscanTest, PagesTakeTheirNamesAndReplaceNothing) {
  fs::create_directories(out());
  writeText(out() / "page-002.jpg", "mine");
  const auto scan = startScan({"--feeder", "2", "--name", "page-%03d"});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_EQ(names(out()), (Names{"page-002.jpg", "page-003.jpg", "page-004.jpg"}));
  EXPECT_EQ(readText(out() / "page-002.jpg"), "mine");
  EXPECT_NE(scan->errors().find("page-003.jpg"), std::string::npos);
}

TEST_F(TvrscanTest, ASecondRunContinuesTheNumbers) {
  EXPECT_EQ(startScan({})->wait(), 0);
  const std::string first = readText(out() / "Image_1.jpg");
  EXPECT_EQ(startScan({})->wait(), 0);
  EXPECT_EQ(names(out()), (Names{"Image_1.jpg", "Image_2.jpg"}));
  EXPECT_EQ(readText(out() / "Image_1.jpg"), first);
}

TEST_F(TvrscanTest, AFolderNameBeyondAsciiIsFine) {
  const fs::path folder = out() /
                          "Gr\xC3\xBC\xC3\x9F"
                          "e \xE2\x82\xAC";
  const auto command = start({"scan", "--virtual", "hp", "--resolution", "75", "--size", "50x60mm",
                              "--out", folder.string()});
  EXPECT_EQ(command->wait(), 0) << command->errors();
  EXPECT_EQ(names(folder), Names{"Image_1.jpg"});
}

TEST_F(TvrscanTest, TheLogGoesToItsFile) {
  const fs::path log = temporary() / "log";
  const auto scan = startScan({"--log", log.string()});
  EXPECT_EQ(scan->wait(), 0);
  EXPECT_NE(readText(log).find("COMMAND: INQUIRY"), std::string::npos);
}

struct FaultCase {
  const char* fault;
  bool feeder;
  int exitCode;
  int pages;
  const char* words;  // in the message
};

class TvrscanFaults : public TvrscanTest, public testing::WithParamInterface<FaultCase> {};

TEST_P(TvrscanFaults, EndWithCodeCauseAndPages) {
  const FaultCase& row = GetParam();
  std::vector<std::string> arguments = {"--fault", row.fault};
  if (row.feeder) arguments.insert(arguments.end(), {"--feeder", "2"});
  const auto scan = startScan(arguments);
  EXPECT_EQ(scan->wait(), row.exitCode) << scan->errors();
  EXPECT_NE(scan->errors().find(row.words), std::string::npos) << scan->errors();
  EXPECT_EQ(names(out()).size(), static_cast<std::size_t>(row.pages)) << scan->errors();
  EXPECT_EQ(scan->outputLines().size(), static_cast<std::size_t>(row.pages));
  if (row.exitCode != 0) {
    EXPECT_NE(scan->errors().find("The device said: "), std::string::npos) << scan->errors();
    for (const std::string& page : scan->outputLines()) {
      EXPECT_NE(scan->errors().find(page), std::string::npos) << "not told safe: " << page;
    }
  }
  expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(
    Scan, TvrscanFaults,
    testing::Values(FaultCase{"busy@position=2", true, 0, 2, "2 pages stored"},
                    FaultCase{"busy@read=2", false, 0, 1, "1 page stored"},
                    FaultCase{"slow=5", false, 0, 1, "1 page stored"},
                    FaultCase{"busy@inquiry", false, 4, 0, "device busy"},
                    FaultCase{"in-use", false, 4, 0, "device busy"},
                    FaultCase{"busy@reserve", false, 4, 0, "device busy"},
                    FaultCase{"status@reserve=4", false, 4, 0, "no memory"},
                    FaultCase{"busy@window", false, 4, 0, "device busy"},
                    FaultCase{"busy@position", false, 4, 0, "device busy"},
                    FaultCase{"paper-jam=2", true, 5, 1, "Document JAM detected"},
                    FaultCase{"cover-open=1", false, 6, 0, "Close the cover"},
                    FaultCase{"no-paper=1", true, 7, 0, "no document"},
                    FaultCase{"cancelled=2", true, 8, 1, "cancelled at the device"},
                    FaultCase{"cancelled=1", false, 8, 0, "cancelled at the device"},
                    FaultCase{"end-block-lost=1", false, 8, 0, "while it sent page 1"},
                    FaultCase{"end-block-lost=2", true, 8, 2, "page 2 is incomplete"},
                    FaultCase{"failed-read@inquiry", false, 9, 0, "link to the device failed"},
                    FaultCase{"failed-read@reserve", false, 9, 0, "link to the device failed"},
                    FaultCase{"failed-read@read", false, 9, 0, "no usable answer"},
                    FaultCase{"status@window=7", false, 9, 0, "makes no sense"},
                    FaultCase{"message@position=0x60", false, 9, 0, "unknown condition"},
                    FaultCase{"status@inquiry=2", false, 11, 0, "refused"},
                    FaultCase{"warming-up", false, 11, 0, "warming up"},
                    FaultCase{"message@window=0x200", false, 11, 0, "smaller --size"},
                    FaultCase{"message@reserve=0x2000", false, 11, 0, "quota"}));

TEST_F(TvrscanTest, AStalledDeviceTimesOut) {
  const auto scan = startScan({"--fault", "stall@window", "--timeout", "1"});
  EXPECT_EQ(scan->wait(std::chrono::seconds(20)), 12) << scan->errors();
  EXPECT_NE(scan->errors().find("the answer to RESERVE UNIT or SET WINDOW"), std::string::npos)
      << scan->errors();
  expectNothingLeft();
}

TEST_F(TvrscanTest, AnUnpluggedDeviceTimesOutWithItsPages) {
  const auto scan = startScan({"--feeder", "2", "--fault", "drop=2", "--timeout", "1"});
  EXPECT_EQ(scan->wait(std::chrono::seconds(20)), 12) << scan->errors();
  EXPECT_EQ(names(out()), Names{"Image_1.jpg"});
  EXPECT_NE(scan->errors().find("1 page is safe"), std::string::npos) << scan->errors();
  expectNothingLeft();
}

TEST_F(TvrscanTest, CtrlCNamesThePagesThatAreSafe) {
  for (const int signal : {SIGINT, SIGTERM}) {
    fs::remove_all(out());
    const auto scan = startScan({"--fault", "stall@abort"});
    ASSERT_TRUE(scan->waitForOutput("Image_1.jpg\n")) << scan->errors();
    scan->signal(signal);
    EXPECT_EQ(scan->wait(std::chrono::seconds(10)), 130) << scan->errors();
    EXPECT_NE(scan->errors().find("interrupted"), std::string::npos) << scan->errors();
    EXPECT_NE(scan->errors().find("1 page is safe"), std::string::npos) << scan->errors();
    EXPECT_EQ(names(out()), Names{"Image_1.jpg"});
    expectNothingLeft();
  }
}

TEST_F(TvrscanTest, AFolderThatCannotBeWrittenIsFoundBeforeTheScan) {
  writeText(temporary() / "file", "");
  for (const std::string& folder :
       {(temporary() / "file").string(), (temporary() / "file" / "below").string(),
        std::string("/proc/self/fdinfo"), std::string("/proc/none")}) {
    const auto scan = start({"scan", "--virtual", "hp", "--out", folder});
    EXPECT_EQ(scan->wait(), 10) << folder << scan->errors();
    EXPECT_NE(scan->errors().find(folder), std::string::npos) << scan->errors();
    EXPECT_EQ(scan->output(), "");
  }
}

TEST_F(TvrscanTest, ALogThatCannotBeWrittenIsFoundBeforeTheScan) {
  const auto scan = startScan({"--log", "/proc/none/log"});
  EXPECT_EQ(scan->wait(), 10);
  EXPECT_EQ(names(out()), Names{});
}

TEST_F(TvrscanTest, AMissingDeviceIsNamed) {
  const auto scan = start({"scan", "--device", "vid_dead&pid_beef", "--out", out().string()});
  EXPECT_EQ(scan->wait(), 3);
  EXPECT_NE(scan->errors().find("VID_DEAD&PID_BEEF is not connected"), std::string::npos)
      << scan->errors();
}

TEST_F(TvrscanTest, ADeviceThatCannotBeOpenedIsAFailureOfTheDevice) {
  writeText(devices() / "a.device",
            "InstanceId=USB\\VID_0A7E&PID_9999&MI_00\\X1\nDriver={c}\\0001\n"
            "CreateFileName=unix:/nowhere/at/all\n");
  const auto scan = start({"scan", "--device", "VID_0A7E&PID_9999", "--out", out().string()});
  EXPECT_EQ(scan->wait(), 9) << scan->errors();
  EXPECT_NE(scan->errors().find("cannot be opened"), std::string::npos) << scan->errors();
}

TEST_F(TvrscanTest, AScannerInAnotherProcessIsFoundListedAndUsed) {
  const auto scanner = start({"virtual", "hp", "--feeder", "2"});
  ASSERT_TRUE(scanner->waitForOutput("registered in")) << scanner->errors();
  EXPECT_EQ(scanner->outputLines().at(0), "hardware id: VID_0A7E&PID_1F48&MI_00");

  const auto table = start({"devices"});
  EXPECT_EQ(table->wait(), 0);
  EXPECT_NE(table->output().find("VID_0A7E&PID_1F48&MI_00  unix:/"), std::string::npos)
      << table->output();
  const auto list = start({"devices", "--json"});
  EXPECT_EQ(list->wait(), 0);
  const json device = json::parse(list->outputLines().at(0));
  EXPECT_EQ(device["hardware_id"], "VID_0A7E&PID_1F48&MI_00");
  EXPECT_EQ(device["family"], "hp");

  for (int run = 0; run < 2; ++run) {
    const auto scan = start({"scan", "--device", "vid_0a7e&pid_1f48", "--resolution", "75",
                             "--size", "50x60mm", "--out", out().string()});
    EXPECT_EQ(scan->wait(), 0) << scan->errors();
  }
  EXPECT_EQ(names(out()).size(), 4U);

  scanner->signal(SIGINT);
  EXPECT_EQ(scanner->wait(std::chrono::seconds(10)), 0) << scanner->errors();
  EXPECT_EQ(names(devices()), Names{});
  expectNothingLeft();
}

TEST_F(TvrscanTest, RangesAreNotToldByTheHpFamily) {
  const auto ranges = start({"ranges", "--virtual", "hp"});
  EXPECT_EQ(ranges->wait(), 13);
  EXPECT_NE(ranges->errors().find("no ranges"), std::string::npos) << ranges->errors();
  EXPECT_EQ(ranges->output(), "");
}

TEST_F(TvrscanTest, BlackAndWhiteTellsThatBrightnessHasNoEffect) {
  const auto once = start({"scan", "--virtual", "hp", "--resolution", "75", "--size", "50x60mm",
                           "--mode", "bw", "--brightness", "-20", "--out", out().string()});
  EXPECT_EQ(once->wait(), 0) << once->errors();
  EXPECT_NE(once->errors().find("no effect with --mode bw"), std::string::npos) << once->errors();
}

}  // namespace
}  // namespace tvrscn::test
