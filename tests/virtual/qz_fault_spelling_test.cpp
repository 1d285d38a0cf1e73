// How people write the QZ scanner's faults, and what they are told when they write something else.
#include <cstdint>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "virtual/virtual_qz_scanner.h"

namespace tvrscn::virtual_device {
namespace {

using ::testing::HasSubstr;
using Kind = QzFault::Kind;
using Step = QzStep;

TEST(QzFaultSpelling, EachSpellingGivesItsFault) {
  const struct {
    const char* text;
    QzFault fault;
  } rows[] = {
      {"busy@wake-up", {Kind::kRefuse, Step::kWakeUp, 1, 1, 8}},
      {"busy@scan=3", {Kind::kRefuse, Step::kScan, 1, 3, 8}},
      {"reserved", {Kind::kRefuse, Step::kReserve, 1, 0, 24}},
      {"reserved=2", {Kind::kRefuse, Step::kReserve, 1, 2, 24}},
      {"sense@read=060000", {Kind::kSense, Step::kRead, 1, 0, 0x060000}},
      {"sense@mode-select=023a00*1", {Kind::kSense, Step::kModeSelect, 1, 1, 0x023A00}},
      {"sense@ready=000000*2+7", {Kind::kSense, Step::kReady, 1, 2, 0, 7}},
      {"sense@release=FFFFFF+1", {Kind::kSense, Step::kRelease, 1, 0, 0xFFFFFF, 1}},
      {"status@initialize=35", {Kind::kStatus, Step::kInitialize, 1, 0, 35}},
      {"status@inquiry=0xFF*1", {Kind::kStatus, Step::kInquiry, 1, 1, 255}},
      {"state=5", {Kind::kState, Step::kRead, 1, 0, 5}},
      {"state=0*1+2", {Kind::kState, Step::kRead, 1, 1, 0, 2}},
      {"state@mode-sense=0xF", {Kind::kState, Step::kModeSense, 1, 0, 15}},
      {"flags@ready=0x40+1", {Kind::kFlags, Step::kReady, 1, 0, 0x40, 1}},
      {"cancelled=2", {Kind::kCancelled, Step::kRead, 2, 0, 0x060000}},
      {"paper-jam=3", {Kind::kPaperJam, Step::kRead, 3, 1, 0x025300}},
      {"cover-open", {Kind::kSense, Step::kScan, 1, 0, 0x018000}},
      {"no-paper", {Kind::kNoPaper, Step::kModeSelect, 1, 0}},
      {"no-paper=4", {Kind::kNoPaper, Step::kModeSelect, 4, 0}},
      {"block-end=1", {Kind::kBlockEnd, Step::kRead, 1, 0}},
      {"fewer@mode-sense=20", {Kind::kFewer, Step::kModeSense, 1, 0, 20}},
      {"short@block-header", {Kind::kShortAnswer, Step::kBlockHeader, 1, 1, 4}},
      {"short@read=0", {Kind::kShortAnswer, Step::kRead, 1, 1, 0}},
      {"huge-length@window", {Kind::kHugeLength, Step::kWindow}},
      {"wrong-command@reserve", {Kind::kWrongCommand, Step::kReserve, 1, 1, 0x20}},
      {"wrong-command@read=0x5A", {Kind::kWrongCommand, Step::kRead, 1, 1, 0x5A}},
      {"stall@wake-up", {Kind::kStall, Step::kWakeUp, 1, 0}},
      {"failed-read@read", {Kind::kFailedRead, Step::kRead}},
      {"drop=2", {Kind::kDrop, Step::kRead, 2, 0}},
      {"slow=50", {Kind::kSlow, Step::kRead, 1, 1, 50}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    QzScannerOptions options;
    ASSERT_EQ(addQzFault(options, row.text), "");
    ASSERT_EQ(options.faults.size(), 1U);
    EXPECT_TRUE(options.faults[0] == row.fault);
  }
}

TEST(QzFaultSpelling, AnythingElseIsExplainedAndAddsNothing) {
  const struct {
    const char* text;
    const char* hint;
  } rows[] = {
      {"", "there are busy@STEP[=N]"},
      {"warming-up", "there are busy@STEP[=N]"},
      {"busy", "it needs a step (wake-up, reserve, ready, initialize"},
      {"busy@scan=0", "not a number from 1"},
      {"reserved@reserve", "it takes no step"},
      {"sense@read", "it needs words"},
      {"sense=060000", "it needs a step"},
      {"sense@read=60000", "six hexadecimal digits"},
      {"sense@read=0x0600", "six hexadecimal digits"},
      {"sense@read=06000G", "six hexadecimal digits"},
      {"sense@read=*1", "six hexadecimal digits"},
      {"sense@read=060000*0", "'0' is not a number from 1"},
      {"sense@read=060000*", "'' is not a number from 1"},
      {"sense@read=060000+x", "'x' is not a number from 0"},
      {"sense@read=060000+1*2", "'1*2' is not a number from 0"},
      {"sense@read=060000*1000001", "'1000001' is not a number from 1 to 1000000"},
      {"status@read=256", "'256' is not a number from 0 to 255"},
      {"status@read=-1", "'-1' is not a number from 0 to 255"},
      {"status@read=0x", "'0x' is not a number from 0 to 255"},
      {"state=16", "'16' is not a number from 0 to 15"},
      {"state@=1", "there is no step ''"},
      {"flags=1", "it needs a step"},
      {"cancelled", "it needs a number"},
      {"cancelled=0", "not a number from 1"},
      {"paper-jam@read=1", "it takes no step"},
      {"cover-open=1", "it takes no number"},
      {"no-paper=0", "not a number from 1"},
      {"fewer@read", "it needs a number"},
      {"short@image", "there is no step 'image'"},
      {"huge-length", "it needs a step"},
      {"wrong-command@read=256", "from 0 to 255"},
      {"stall@read=1", "it takes no number"},
      {"slow=600001", "from 0 to 600000"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    QzScannerOptions options;
    const std::string error = addQzFault(options, row.text);
    EXPECT_THAT(error, HasSubstr(row.hint));
    EXPECT_THAT(error, HasSubstr("'" + std::string(row.text) + "'"));
    EXPECT_TRUE(options.faults.empty());
  }
}

TEST(QzFaultSpelling, HelpNamesEveryFormAndStep) {
  const std::string help = qzFaultHelp();
  for (const char* form :
       {"busy@STEP[=N]", "reserved[=N]", "sense@STEP=XXXXXX[*N][+K]", "status@STEP=BYTE[*N][+K]",
        "state[@STEP]=VALUE[*N][+K]", "flags@STEP=BYTE[*N][+K]", "cancelled=PAGE", "paper-jam=PAGE",
        "cover-open", "no-paper[=PAGE]", "block-end=PAGE", "fewer@STEP=BYTES", "short@STEP[=BYTES]",
        "huge-length@STEP", "wrong-command@STEP[=BYTE]", "stall@STEP", "failed-read@STEP",
        "drop=PAGE", "slow=MS"}) {
    EXPECT_THAT(help, HasSubstr(std::string(form) + " "));
  }
  EXPECT_THAT(help, HasSubstr("STEP is one of wake-up, reserve, ready, initialize, inquiry, "
                              "mode-sense, mode-select, window, scan, block-header, read, "
                              "release."));
}

}  // namespace
}  // namespace tvrscn::virtual_device
