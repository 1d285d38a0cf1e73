// The catalogue on the command line, and what follows from it for the devices that are present.
#include <chrono>
#include <string>
#include <vector>

#include <signal.h>

#include <nlohmann/json.hpp>

#include "tvrscan_fixture.h"

namespace tvrscn::test {
namespace {

using nlohmann::json;
using Names = std::vector<std::string>;

class TvrscanModels : public TvrscanTest {
 protected:
  // The short names of the models that the filters leave.
  Names shortNames(Names filters) const {
    filters.insert(filters.begin(), {"models", "--json"});
    const auto program = start(filters);
    EXPECT_EQ(program->wait(), 0) << program->errors();
    Names list;
    for (const std::string& line : program->outputLines())
      list.push_back(json::parse(line)["short_name"]);
    return list;
  }

  void addDevice(const std::string& name, const std::string& hardwareId) const {
    writeText(devices() / (name + ".device"), "InstanceId=USB\\" + hardwareId +
                                                  "\\X1\nDriver={c}\\0001\n"
                                                  "CreateFileName=unix:/nowhere/at/all\n");
  }
};

TEST_F(TvrscanModels, AllAreListed) {
  const auto program = start({"models"});
  EXPECT_EQ(program->wait(), 0) << program->errors();
  const Names lines = program->outputLines();
  ASSERT_EQ(lines.size(), 91U);
  EXPECT_EQ(lines[0], "MODEL                   SHORT  FAMILY    USB IDS            SCANS OVER");
  EXPECT_EQ(lines[1], "Tevra Alder 3020        3020   MERIDIAN  VID_0A7E&PID_1234  nsp");
  EXPECT_EQ(lines[90], "Tevra Tamarisk 825 MFP  825    LOWEND    VID_0A7E&PID_1E56  usb, ipp");
}

TEST_F(TvrscanModels, EachFilterLeavesWhatFits) {
  const struct {
    Names filters;
    std::size_t count;
  } cases[] = {
      {{}, 90},
      {{"--family", "lantern"}, 37},
      {{"--family", "LOWEND"}, 23},
      {{"--over", "usb"}, 40},
      {{"--over", "NSP"}, 67},
      {{"--over", "ipp"}, 43},
      {{"--mode", "auto"}, 46},
      {{"--mode", "bw"}, 58},
      {{"--resolution", "1200"}, 28},
      {{"--resolution", "72"}, 20},
      {{"--sides", "one"}, 90},
      {{"--sides", "two"}, 84},
      {{"--sides", "flip"}, 67},
      {{"--size", "auto"}, 26},
      {{"--family", "lowend", "--sides", "flip"}, 0},
  };
  for (const auto& row : cases)
    EXPECT_EQ(shortNames(row.filters).size(), row.count) << json(row.filters);
}

TEST_F(TvrscanModels, TextStandsInNamesAndIds) {
  EXPECT_EQ(shortNames({"--text", "wALNut"}), (Names{"2060", "2560", "2660"}));
  EXPECT_EQ(shortNames({"--text", "1f49"}), Names{"2560"});
  EXPECT_EQ(shortNames({"--text", "p100"}), (Names{"P100", "P100"}));
  EXPECT_EQ(shortNames({"--text", "b3", "--over", "usb"}), (Names{"B32", "B36"}));
}

TEST_F(TvrscanModels, WhatFitsNothingIsSaid) {
  const auto program = start({"models", "--text", "toaster"});
  EXPECT_EQ(program->wait(), 0);
  EXPECT_EQ(program->output(), "");
  EXPECT_EQ(program->errors(), "tvrscan: no model is like that\n");
}

TEST_F(TvrscanModels, OneIsShownWhole) {
  const auto program = start({"models", "holly 520"});
  EXPECT_EQ(program->wait(), 0) << program->errors();
  EXPECT_EQ(program->output(),
            "model                   Tevra Holly 520 MFP\n"
            "short name              520\n"
            "family                  LOWEND\n"
            "scans over              usb, ipp\n"
            "network scan            ipp\n"
            "hardware id             VID_0A7E&PID_1E4C&MI_00\n"
            "object id               1.3.6.1.4.1.99999.2.13\n"
            "secure object id        1.3.6.1.4.1.99999.9.3\n"
            "rated speed             32\n"
            "colours                 BlackAndWhite, FullColor, Grayscale\n"
            "resolutions             75x75, 150x150, 200x200, 300x300, 400x400, 600x600\n"
            "sides                   OneSided, TwoSided\n"
            "media                   NA_8.5x11SEF, NA_8.5x14SEF, NA_5.5x8.5SEF, NA_8.5x13SEF, "
            "NA_8.5x13.4SEF, ISO_A5SEF, ISO_A4SEF, ISO_B5SEF, JIS_B6SEF, JIS_B5SEF, "
            "NA_7.25x10.5SEF, NA_5x7SEF, ISO_A6SEF, NA_4x6SEF\n"
            "starts with colour      FullColor\n"
            "starts with resolution  200x200\n"
            "starts with sides       none\n"
            "starts with paper       Manual\n"
            "small picture           Holly_48x48.png\n"
            "large picture           Holly_128x128.png\n"
            "settings page           http://{0}/properties/index.dhtml\n"
            "Mopria page             https://{0}/protocols/mopria.php?from=protocolConfig\n");
}

TEST_F(TvrscanModels, OneIsShownWholeAsJson) {
  const auto program = start({"models", "Tevra Quay 200", "--json"});
  EXPECT_EQ(program->wait(), 0) << program->errors();
  ASSERT_EQ(program->outputLines().size(), 1U);
  EXPECT_EQ(json::parse(program->output()), json::parse(R"({
    "event": "model", "name": "Tevra Quay 200", "short_name": "200", "family": "HARBOR",
    "connections": ["nsp"], "network_scan": "nsp",
    "usb_vendor_id": "0A7E", "usb_product_id": "1D10", "usb_interface": "MI_00",
    "object_id": "1.3.6.1.4.1.99999.4.1", "secure_object_id": null, "rated_speed": 20,
    "colors": ["BlackAndWhite", "FullColor", "Grayscale"],
    "resolutions": ["200x200", "300x300"],
    "sides": ["OneSided", "TwoSided", "SecondSideRotation"],
    "media": ["NA_8.5x11LEF", "NA_8.5x11SEF", "NA_8.5x14SEF", "NA_5.5x8.5SEF", "ISO_A5LEF",
              "ISO_A5SEF", "ISO_A4LEF", "ISO_A4SEF", "JIS_B5SEF"],
    "default_color": "FullColor", "default_resolution": "200x200", "default_sides": null,
    "default_paper": "Manual",
    "small_picture": "General_48x48.png", "large_picture": "General_128x128.png",
    "settings_page": "http://{0}/properties/index.dhtml",
    "mopria_page": "https://{0}/protocols/mopria.php?from=protocolConfig"})"));
}

TEST_F(TvrscanModels, BadWordsAreRefusedWithAHint) {
  const struct {
    Names arguments;
    const char* words;
  } cases[] = {
      {{"models", "P100"}, "Tevra Linden P100, Tevra Elm P100"},
      {{"models", "toaster"}, "'tvrscan models' lists them"},
      {{"models", "2060", "--over", "usb"}, "excludes --over"},
      {{"models", "--family", "lantrn"}, "did you mean LANTERN"},
      {{"models", "--family", "hp"}, "'tvrscan models' shows the families"},
      {{"models", "--over", "wire"}, "usb"},
      {{"models", "--size", "20x30mm"}, "help sizes"},
      {{"models", "--sides", "both"}, "one, two and flip"},
      {{"modles"}, "did you mean models"},
  };
  for (const auto& row : cases) {
    const auto program = start(row.arguments);
    EXPECT_EQ(program->wait(), 2) << row.words;
    EXPECT_NE(program->errors().find(row.words), std::string::npos) << program->errors();
    EXPECT_EQ(program->output(), "");
  }
}

TEST_F(TvrscanModels, DevicesAreNamedByTheirModels) {
  addDevice("a", "VID_0A7E&PID_1E4C&MI_00");
  addDevice("b", "VID_0A7E&PID_1C5A&MI_02");
  addDevice("c", "VID_0A7E&PID_1F48&MI_00");
  addDevice("d", "VID_0A7E&PID_1234&MI_00");
  addDevice("e", "VID_0A7E&PID_9999&MI_00");
  const auto table = start({"devices"});
  EXPECT_EQ(table->wait(), 0);
  EXPECT_EQ(table->output(),
            "FAMILY  HARDWARE ID              ENDPOINT              MODEL\n"
            "lowend  VID_0A7E&PID_1E4C&MI_00  unix:/nowhere/at/all  Tevra Holly 520 MFP\n"
            "qz      VID_0A7E&PID_1C5A&MI_02  unix:/nowhere/at/all  Tevra Poplar B42\n"
            "hp      VID_0A7E&PID_1F48&MI_00  unix:/nowhere/at/all  Tevra Walnut 2060\n"
            "-       VID_0A7E&PID_1234&MI_00  unix:/nowhere/at/all  Tevra Alder 3020\n"
            "?       VID_0A7E&PID_9999&MI_00  unix:/nowhere/at/all  ?\n");
  const auto list = start({"devices", "--json"});
  EXPECT_EQ(list->wait(), 0);
  std::vector<json> named;
  for (const std::string& line : list->outputLines()) {
    const json device = json::parse(line);
    named.push_back({device["family"], device["model"]});
  }
  EXPECT_EQ(named, (std::vector<json>{{"lowend", "Tevra Holly 520 MFP"},
                                      {"qz", "Tevra Poplar B42"},
                                      {"hp", "Tevra Walnut 2060"},
                                      {nullptr, "Tevra Alder 3020"},
                                      {nullptr, nullptr}}));
}

TEST_F(TvrscanModels, TheOnlyScannerIsScannedWithByItsFamily) {
  // Neither another USB device nor a model of the network is in the way.
  addDevice("a", "VID_1D6B&PID_0002");
  addDevice("b", "VID_0A7E&PID_1234&MI_00");
  std::size_t pages = 0;
  for (const char* family : {"hp", "lowend", "qz"}) {
    const auto scanner = start({"virtual", family});
    ASSERT_TRUE(scanner->waitForOutput("registered in")) << scanner->errors();
    const auto scan = start(
        {"scan", "--json", "--resolution", "75", "--size", "50x60mm", "--out", out().string()});
    EXPECT_EQ(scan->wait(), 0) << scan->errors();
    EXPECT_EQ(json::parse(scan->outputLines().at(0))["family"], family);
    EXPECT_EQ(names(out()).size(), ++pages) << scan->errors();
    scanner->signal(SIGINT);
    EXPECT_EQ(scanner->wait(std::chrono::seconds(10)), 0) << scanner->errors();
  }
  expectNothingLeft();
}

TEST_F(TvrscanModels, ANamedDeviceBringsItsFamilyToEachCommand) {
  addDevice("a", "VID_0A7E&PID_1F48&MI_00");
  const auto scanner = start({"virtual", "lowend"});
  ASSERT_TRUE(scanner->waitForOutput("registered in")) << scanner->errors();
  const auto ranges = start({"ranges", "--device", "pid_1e4c"});
  EXPECT_EQ(ranges->wait(), 0) << ranges->errors();
  EXPECT_EQ(ranges->outputLines().size(), 2U) << ranges->output();
  const auto unclear = start({"scan", "--out", out().string()});
  EXPECT_EQ(unclear->wait(), 3);
  EXPECT_NE(unclear->errors().find("more than one device"), std::string::npos) << unclear->errors();
}

TEST_F(TvrscanModels, AModelOfTheNetworkIsRefusedUntilTheFamilyIsNamed) {
  addDevice("a", "VID_0A7E&PID_1234&MI_00");
  for (const Names& named : {Names{}, Names{"--device", "PID_1234"}}) {
    Names command = {"scan", "--out", out().string()};
    command.insert(command.end(), named.begin(), named.end());
    const auto refused = start(command);
    EXPECT_EQ(refused->wait(), 13) << refused->errors();
    EXPECT_NE(refused->errors().find("Tevra Alder 3020 does not scan over USB"), std::string::npos)
        << refused->errors();
    command.insert(command.end(), {"--family", "hp"});
    // Nobody is at its endpoint: it was tried.
    const auto tried = start(command);
    EXPECT_EQ(tried->wait(), 9) << tried->errors();
  }
}

}  // namespace
}  // namespace tvrscn::test
