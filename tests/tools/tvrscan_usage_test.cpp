// The command line as people meet it: help, refusals, manual and completion.
#include <algorithm>
#include <regex>
#include <set>

#include "exit_codes.h"
#include "tvrscan_fixture.h"

namespace tvrscn::test {
namespace {

struct UsageCase {
  std::vector<std::string> arguments;
  int exitCode;
  const char* words;
};

TEST_F(TvrscanTest, BadUsageIsRefusedWithAHint) {
  const UsageCase cases[] = {
      {{}, 2, "--help"},
      {{"scna"}, 2, "did you mean scan?"},
      {{"scan", "--rezolution", "300"}, 2, "did you mean --resolution?"},
      {{"scan", "--resolution", "301"}, 2, "did you mean"},
      {{"scan", "--resolution"}, 2, "--resolution"},
      {{"scan", "--mode", "colr"}, 2, "did you mean color"},
      {{"scan", "--sides", "both"}, 2, "one, two and flip"},
      {{"scan", "--size", "lettre"}, 2, "did you mean letter"},
      {{"scan", "--size", "0x0mm"}, 2, "--size"},
      {{"scan", "--brightness", "101"}, 2, "--brightness"},
      {{"scan", "--brightness", "dark"}, 2, "--brightness"},
      {{"scan", "--contrast", "-101"}, 2, "--contrast"},
      {{"scan", "--background", "maybe"}, 2, "off or on"},
      {{"scan", "--name", "page"}, 2, "has no number"},
      {{"scan", "--name", "%d-%d"}, 2, "more than one number"},
      {{"scan", "--name", "a/%d"}, 2, "--out names the folder"},
      {{"scan", "--timeout", "0"}, 2, "--timeout"},
      {{"scan", "--page", "x.png"}, 2, "--virtual"},
      {{"scan", "--fault", "in-use"}, 2, "--virtual"},
      {{"scan", "--virtual", "hp", "--device", "X"}, 2, "--device"},
      {{"scan", "--virtual", "hp", "--feeder", "2", "--flatbed"}, 2, "--feeder"},
      {{"scan", "--virtual", "hp", "--feeder", "0"}, 2, "--feeder"},
      {{"scan", "--virtual", "hp", "--fault", "nonsense"}, 2, "nonsense"},
      {{"scan", "--virtual", "xp"}, 2, "did you mean hp"},
      {{"scan", "--virtual", "qz", "--fault", "silent-end"}, 2, "silent-end"},
      {{"scan", "--family", "lowed"}, 2, "did you mean lowend"},
      {{"scan", "--family", "x"}, 2, "the families are hp, lowend and qz"},
      {{"scan", "--virtual", "lowend", "--family", "hp"}, 2, "is of the family lowend"},
      {{"scan", "--virtual", "lowend", "--fault", "warming-up"}, 2, "warming-up"},
      {{"scan", "--virtual", "hp", "--fault", "silent-end"}, 2, "silent-end"},
      {{"virtual", "hp", "--instance-id", "X"}, 2, "no instance id"},
      {{"virtual", "hp", "--instance-id", "USB\\VID_0A7E&PID_1F48\\A/B"}, 2, "no instance id"},
      {{"virtual", "hp", "--instance-id", "USB\\VID_0A7E&PID_1F48\\"}, 2, "no instance id"},
      {{"store"}, 2, "a COMMAND is missing"},
      {{"store", "raed"}, 2, "did you mean read"},
      {{"store", "999"}, 2, "help store"},
      {{"store", "scan", "--check"}, 2, "--check"},
      {{"scan", "surplus"}, 2, "'surplus' is not expected"},
      {{"virtual"}, 2, "virtual --help"},
      {{"help", "exit-code"}, 2, "did you mean exit-codes"},
  };
  for (const UsageCase& row : cases) {
    const auto program = start(row.arguments);
    EXPECT_EQ(program->wait(), row.exitCode) << row.words << "\n" << program->errors();
    EXPECT_NE(program->errors().find(row.words), std::string::npos) << program->errors();
    EXPECT_EQ(program->output(), "");
  }
}

TEST_F(TvrscanTest, AVirtualPageThatCannotBeReadIsNamed) {
  const auto scan = startScan({"--page", "/nowhere/page.png"});
  EXPECT_NE(scan->wait(), 0);
  EXPECT_NE(scan->errors().find("/nowhere/page.png"), std::string::npos) << scan->errors();
  expectNothingLeft();
}

TEST_F(TvrscanTest, HelpTopicsGoToStandardOutput) {
  const UsageCase cases[] = {
      {{"--help"}, 0, "Examples:"},
      {{"help"}, 0, "Examples:"},
      {{"scan", "--help"}, 0, "--resolution"},
      {{"help", "scan"}, 0, "--resolution"},
      {{"virtual", "hp", "--help"}, 0, "--device-folder"},
      {{"help", "sizes"}, 0, "ISO_A4SEF"},
      {{"help", "exit-codes"}, 0, "paper jam"},
      {{"help", "faults"}, 0, "paper-jam=PAGE"},
      {{"scan", "--virtual", "hp", "--fault", "help"}, 0, "paper-jam=PAGE"},
      {{"virtual", "hp", "--fault", "help"}, 0, "paper-jam=PAGE"},
      {{"help", "faults"}, 0, "silent-end"},
      {{"scan", "--virtual", "lowend", "--fault", "help"}, 0, "silent-end"},
      {{"virtual", "lowend", "--fault", "help"}, 0, "silent-end"},
      {{"help", "faults"}, 0, "block-end=PAGE"},
      {{"virtual", "qz", "--fault", "help"}, 0, "block-end=PAGE"},
      {{"help", "store"}, 0, "mode-sense"},
      {{"help", "models"}, 0, "--over"},
      {{"help", "alerts"}, 0, "14 for a warning"},
      {{"virtual", "lowend", "--help"}, 0, "--instance-id"},
      {{"--version"}, 0, "tvrscan "},
  };
  for (const UsageCase& row : cases) {
    const auto program = start(row.arguments);
    EXPECT_EQ(program->wait(), row.exitCode) << program->errors();
    EXPECT_NE(program->output().find(row.words), std::string::npos) << program->output();
    EXPECT_EQ(program->errors(), "");
  }
}

std::set<std::string> matches(const std::string& text, const char* pattern) {
  const std::regex expression(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
       ++match) {
    found.insert((*match)[1].str());
  }
  return found;
}

TEST_F(TvrscanTest, ManualAndCompletionKnowEveryOption) {
  const std::string manual = readText(TVRSCAN_SOURCE_FOLDER "/tvrscan.1");
  const std::string completion = readText(TVRSCAN_SOURCE_FOLDER "/tvrscan.bash");
  std::set<std::string> options;
  for (const std::vector<std::string>& command :
       std::vector<std::vector<std::string>>{{"--help"},
                                             {"scan", "--help"},
                                             {"devices", "--help"},
                                             {"models", "--help"},
                                             {"alerts", "--help"},
                                             {"ranges", "--help"},
                                             {"store", "--help"},
                                             {"virtual", "hp", "--help"}}) {
    const auto program = start(command);
    EXPECT_EQ(program->wait(), 0);
    options.merge(matches(program->output(), "--([a-z]+(?:-[a-z]+)*)"));
  }
  EXPECT_GT(options.size(), 20U);
  for (const std::string& option : options) {
    EXPECT_TRUE(std::regex_search(manual, std::regex("Fl -" + option + "\\b"))) << option;
    EXPECT_TRUE(std::regex_search(completion, std::regex("--" + option + "\\b"))) << option;
  }
  // And nothing that does not exist.
  for (const std::string& option : matches(manual, "Fl -([a-z]+(?:-[a-z]+)*)")) {
    EXPECT_EQ(options.count(option), 1U) << option;
  }
  for (const std::string& option : matches(completion, " --([a-z]+(?:-[a-z]+)*)")) {
    EXPECT_EQ(options.count(option), 1U) << option;
  }
}

TEST_F(TvrscanTest, ManualKnowsEveryExitCode) {
  const std::string manual = readText(TVRSCAN_SOURCE_FOLDER "/tvrscan.1");
  for (const cli::ExitCodeRow& row : cli::kExitCodes) {
    const std::string entry =
        ".It " + std::to_string(static_cast<int>(row.code)) + "\n" + row.name + ": ";
    EXPECT_NE(manual.find(entry), std::string::npos) << entry;
  }
}

TEST_F(TvrscanTest, CompletionOffersWhatFits) {
  const auto complete = [](const std::string& words, int index) {
    const std::string script = "source " TVRSCAN_SOURCE_FOLDER "/tvrscan.bash; COMP_WORDS=(" +
                               words + "); COMP_CWORD=" + std::to_string(index) +
                               "; _tvrscan; printf '%s\\n' \"${COMPREPLY[@]}\"";
    Process bash({"bash", "-c", script}, {});
    EXPECT_EQ(bash.wait(), 0) << bash.errors();
    return bash.outputLines();
  };
  using Names = std::vector<std::string>;
  EXPECT_EQ(complete("tvrscan sc", 1), Names{"scan"});
  EXPECT_EQ(complete("tvrscan scan --res", 2), Names{"--resolution"});
  EXPECT_EQ(complete("tvrscan scan --mode g", 3), Names{"gray"});
  EXPECT_EQ(complete("tvrscan scan --size lett", 3), Names{"letter"});
  EXPECT_EQ(complete("tvrscan virtual ''", 2), (Names{"hp", "lowend", "qz", "--help"}));
  EXPECT_EQ(complete("tvrscan virtual hp --li", 3), Names{"--listen"});
  EXPECT_EQ(complete("tvrscan scan --family l", 3), Names{"lowend"});
  EXPECT_EQ(complete("tvrscan store mode-se", 2), (Names{"mode-select", "mode-sense"}));
  EXPECT_EQ(complete("tvrscan store --ch", 2), Names{"--check"});
  EXPECT_EQ(complete("tvrscan models --over u", 3), Names{"usb"});
  EXPECT_EQ(complete("tvrscan alerts --family LA", 3), Names{"LANTERN"});
  EXPECT_EQ(complete("tvrscan virtual lowend --ins", 3), Names{"--instance-id"});
}

}  // namespace
}  // namespace tvrscn::test
