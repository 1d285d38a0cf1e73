// Whole scans with the real program and a virtual scanner of the LowEnd family.
#include <algorithm>
#include <csignal>

#include <nlohmann/json.hpp>

#include "tvrscan_fixture.h"

namespace tvrscn::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;
using json = nlohmann::json;

class TvrscanLowEnd : public TvrscanTest {
 protected:
  std::unique_ptr<Process> startScan(const std::vector<std::string>& arguments) const {
    return TvrscanTest::startScan(arguments, "lowend");
  }
  // The same in black and white. An option counts once, so this leaves the mode of startScan out.
  std::unique_ptr<Process> startBlackAndWhite(const std::vector<std::string>& arguments) const {
    Names command = {"scan",         "--virtual", "lowend", "--mode",      "bw",
                     "--resolution", "75",        "--out",  out().string()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return start(command);
  }
};

TEST_F(TvrscanLowEnd, FlatbedGivesOnePage) {
  const auto scan = startScan({"--flatbed"});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_EQ(scan->outputLines(), Names{(out() / "Image_1.jpg").string()});
  EXPECT_EQ(names(out()), Names{"Image_1.jpg"});
  EXPECT_NE(scan->errors().find("asked for 50x60 mm, Grayscale, OneSided, 75x75 dpi"),
            std::string::npos)
      << scan->errors();
  expectNothingLeft();
}

TEST_F(TvrscanLowEnd, BlackAndWhiteSheetsBecomeSingleTiffFiles) {
  const auto scan = startBlackAndWhite({"--feeder", "3", "--name", "fax-%02d", "--json"});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_EQ(names(out()), (Names{"fax-01.tif", "fax-02.tif", "fax-03.tif"}));
  const json device = json::parse(scan->outputLines().at(0));
  EXPECT_EQ(device["family"], "lowend");
  const json end = json::parse(scan->outputLines().back());
  EXPECT_EQ(end["pages"].size(), 3U);
  EXPECT_EQ(end["pages"][2]["file"], (out() / "fax-03.tif").string());
  expectNothingLeft();
}

TEST_F(TvrscanLowEnd, NumbersGoOnWhateverTheFormat) {
  EXPECT_EQ(startScan({"--feeder", "2"})->wait(), 0);
  EXPECT_EQ(startBlackAndWhite({})->wait(), 0);
  EXPECT_EQ(names(out()), (Names{"Image_1.jpg", "Image_2.jpg", "Image_3.tif"}));
}

TEST_F(TvrscanLowEnd, AFolderNameBeyondAsciiIsFine) {
  const fs::path folder = out() / "Gr\xC3\xBC\xC3\x9F \xE2\x82\xAC";
  const auto scan = start({"scan", "--virtual", "lowend", "--resolution", "75", "--size", "50x60mm",
                           "--out", folder.string()});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_EQ(names(folder), Names{"Image_1.jpg"});
  expectNothingLeft();
}

struct FaultCase {
  const char* fault;
  bool feeder;
  int exitCode;
  std::size_t pages;
  const char* words;  // in the message
};

class TvrscanLowEndFaults : public TvrscanLowEnd, public testing::WithParamInterface<FaultCase> {};

TEST_P(TvrscanLowEndFaults, EndWithCodeCauseAndPages) {
  const FaultCase& row = GetParam();
  Names arguments = {"--fault", row.fault};
  if (row.feeder) arguments.insert(arguments.end(), {"--feeder", "2"});
  const auto scan = startScan(arguments);
  EXPECT_EQ(scan->wait(), row.exitCode) << scan->errors();
  EXPECT_NE(scan->errors().find(row.words), std::string::npos) << scan->errors();
  EXPECT_EQ(names(out()).size(), row.pages) << scan->errors();
  EXPECT_EQ(scan->outputLines().size(), row.pages);
  if (row.exitCode != 0) {
    EXPECT_NE(scan->errors().find("The device said: "), std::string::npos) << scan->errors();
  }
  expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(
    Scan, TvrscanLowEndFaults,
    testing::Values(FaultCase{"junk", true, 0, 2, "2 pages stored"},
                    FaultCase{"empty@capabilities", false, 0, 1, "1 page stored"},
                    FaultCase{"busy", false, 4, 0, "device busy"},
                    FaultCase{"paper-jam", true, 5, 0, "Open the feeder"},
                    FaultCase{"cover-open=adf", true, 6, 0, "Close the cover"},
                    FaultCase{"cover-open=flatbed", false, 6, 0, "Close the cover"},
                    FaultCase{"cancelled", true, 8, 0, "cancelled at the device"},
                    FaultCase{"no-section", false, 9, 0, "status cannot be understood"},
                    FaultCase{"not-json@status", false, 9, 0, "answer cannot be understood"},
                    FaultCase{"empty@start", false, 9, 0, "does not answer"},
                    FaultCase{"failed-read@status", false, 9, 0, "does not answer"},
                    FaultCase{"truncated-page=2", true, 9, 1, "1 page is safe"},
                    FaultCase{"status=4", false, 11, 0, "a refusal without a word"},
                    FaultCase{"refuse=no toner, no scan", false, 11, 0,
                              "The device said: no toner, no scan"}));

// Reading blocks for ever when the device falls silent, on a thread that nobody can interrupt.
TEST_F(TvrscanLowEnd, ADeviceThatFallsSilentTimesOut) {
  for (const char* fault : {"stall@status", "drop=2"}) {
    const auto scan = startScan({"--feeder", "2", "--fault", fault, "--timeout", "1"});
    EXPECT_EQ(scan->wait(std::chrono::seconds(20)), 12) << fault << scan->errors();
    EXPECT_NE(scan->errors().find("while waiting for the "), std::string::npos) << scan->errors();
    EXPECT_EQ(names(out()), Names{});
    expectNothingLeft();
  }
}

TEST_F(TvrscanLowEnd, CtrlCEndsAJobWhoseWorkerReads) {
  const auto scan = startScan({"--fault", "stall@image"});
  ASSERT_TRUE(scan->waitForOutput("the pages come all together")) << scan->errors();
  scan->signal(SIGINT);
  EXPECT_EQ(scan->wait(std::chrono::seconds(10)), 130) << scan->errors();
  EXPECT_NE(scan->errors().find("interrupted"), std::string::npos) << scan->errors();
  expectNothingLeft();
}

TEST_F(TvrscanLowEnd, RangesAreThoseOfTheDevice) {
  const auto ranges = start({"ranges", "--virtual", "lowend"});
  EXPECT_EQ(ranges->wait(), 0) << ranges->errors();
  EXPECT_EQ(ranges->output(),
            "brightness: -100 to 100, normally 0; larger is darker\n"
            "contrast: -100 to 100, normally 0; larger is harder\n");
  const auto lines = start({"ranges", "--virtual", "lowend", "--json"});
  EXPECT_EQ(lines->wait(), 0);
  const json first = json::parse(lines->outputLines().at(0));
  EXPECT_EQ(first["setting"], "brightness");
  EXPECT_EQ(first["max"], 100);
  EXPECT_EQ(first["larger"], "darker");
}

TEST_F(TvrscanLowEnd, ADeviceThatTellsNoRangesIsSaidToTellNone) {
  const auto ranges = start({"ranges", "--virtual", "lowend", "--fault", "empty@capabilities"});
  EXPECT_EQ(ranges->wait(), 13);
  EXPECT_NE(ranges->errors().find("the device tells no ranges"), std::string::npos);

  const auto scan = startScan({"--fault", "empty@capabilities", "--brightness", "20"});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_NE(scan->errors().find("--brightness has no effect"), std::string::npos);
}

TEST_F(TvrscanLowEnd, TwoScannersWithTheirOwnIdsStandSideBySide) {
  const std::string ids[] = {R"(USB\VID_0A7E&PID_1E4C&MI_00\FIRST)",
                             R"(usb\vid_0a7e&pid_1e4c\second)"};
  const auto first = start({"virtual", "lowend", "--instance-id", ids[0]});
  ASSERT_TRUE(first->waitForOutput("registered in")) << first->errors();
  const auto second = start({"virtual", "lowend", "--instance-id", ids[1], "--feeder", "2"});
  ASSERT_TRUE(second->waitForOutput("registered in")) << second->errors();
  EXPECT_EQ(second->errors().find("already"), std::string::npos) << second->errors();
  const auto third = start({"virtual", "lowend", "--instance-id", ids[0]});
  ASSERT_TRUE(third->waitForOutput("registered in")) << third->errors();
  EXPECT_NE(third->errors().find("already"), std::string::npos) << third->errors();

  const auto table = start({"devices"});
  EXPECT_EQ(table->wait(), 0);
  EXPECT_EQ(table->outputLines().size(), 3U) << table->output();
  const auto scan = start({"scan", "--family", "lowend", "--device", R"(PID_1E4C\SECOND)",
                           "--resolution", "75", "--size", "50x60mm", "--out", out().string()});
  EXPECT_EQ(scan->wait(), 0) << scan->errors();
  EXPECT_EQ(names(out()).size(), 2U);
}

}  // namespace
}  // namespace tvrscn::test
