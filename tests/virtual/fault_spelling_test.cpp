// How people write faults, and what they are told when they write something else.
#include <cstdint>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "virtual/virtual_scanner.h"

namespace tvrscn::virtual_device {
namespace {

using ::testing::HasSubstr;
using Kind = HpFault::Kind;

TEST(FaultSpelling, EachSpellingGivesItsFault) {
  struct Row {
    const char* text;
    Kind kind;
    HpStep step;
    int page, count;
    std::uint32_t value;
  };
  const Row rows[] = {
      {"busy@inquiry", Kind::kBusy, HpStep::kInquiry, 1, 1, 0},
      {"busy@position=2", Kind::kBusy, HpStep::kPosition, 1, 2, 0},
      {"busy@read=0x10", Kind::kBusy, HpStep::kRead, 1, 16, 0},
      {"in-use", Kind::kStatus, HpStep::kInquiry, 1, 0, 9},
      {"in-use@window", Kind::kStatus, HpStep::kWindow, 1, 0, 9},
      {"warming-up", Kind::kMessage, HpStep::kReserve, 1, 0, 0x80},
      {"paper-jam=3", Kind::kBeforePage, HpStep::kPosition, 3, 1, 0x20},
      {"cover-open=1", Kind::kBeforePage, HpStep::kPosition, 1, 1, 0x40},
      {"no-paper=2", Kind::kBeforePage, HpStep::kPosition, 2, 1, 0x10},
      {"cancelled=2", Kind::kCancelled, HpStep::kPosition, 2, 1, 0},
      {"short@inquiry", Kind::kShortAnswer, HpStep::kInquiry, 1, 1, 2},
      {"short@read-image=100", Kind::kShortAnswer, HpStep::kReadImage, 1, 1, 100},
      {"short@abort=0", Kind::kShortAnswer, HpStep::kAbort, 1, 1, 0},
      {"stall@release", Kind::kStall, HpStep::kRelease, 1, 1, 0},
      {"failed-read@reserve", Kind::kFailedRead, HpStep::kReserve, 1, 1, 0},
      {"end-block-lost=2", Kind::kEndBlockLost, HpStep::kInquiry, 2, 1, 0},
      {"drop=4", Kind::kDrop, HpStep::kInquiry, 4, 1, 0},
      {"slow=250", Kind::kSlow, HpStep::kInquiry, 1, 1, 250},
      {"message@reserve=0x40", Kind::kMessage, HpStep::kReserve, 1, 0, 0x40},
      {"message@window=8192", Kind::kMessage, HpStep::kWindow, 1, 0, 0x2000},
      {"message@position=0XFFFF", Kind::kMessage, HpStep::kPosition, 1, 0, 0xFFFF},
      {"status@read=4", Kind::kStatus, HpStep::kRead, 1, 0, 4},
      {"status@release=0xff", Kind::kStatus, HpStep::kRelease, 1, 0, 255},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    HpScannerOptions options;
    ASSERT_EQ(addHpFault(options, row.text), "");
    ASSERT_EQ(options.faults.size(), 1U);
    const HpFault& fault = options.faults[0];
    EXPECT_EQ(fault.kind, row.kind);
    EXPECT_EQ(fault.step, row.step);
    EXPECT_EQ(fault.page, row.page);
    EXPECT_EQ(fault.count, row.count);
    EXPECT_EQ(fault.value, row.value);
  }
}

TEST(FaultSpelling, AnythingElseIsExplainedAndAddsNothing) {
  struct Row {
    const char* text;
    const char* hint;
  };
  const Row rows[] = {
      {"", "there are busy@STEP"},
      {"jam", "there are busy@STEP"},
      {"Busy@read", "there are busy@STEP"},
      {"@read", "there are busy@STEP"},
      {"=3", "there are busy@STEP"},
      {"busy", "it needs a step (inquiry, reserve"},
      {"busy@", "there is no step ''"},
      {"busy@scan", "there is no step 'scan'"},
      {"busy@read=", "not a number from 1"},
      {"busy@read=0", "not a number from 1"},
      {"busy@read=-1", "not a number from 1"},
      {"busy@read=two", "not a number from 1"},
      {"busy@read=2x", "not a number from 1"},
      {"busy@read=0x", "not a number from 1"},
      {"busy@read-image", "carries no status"},
      {"status@read-image=4", "carries no status"},
      {"status@read", "it needs a number"},
      {"status@read=256", "from 0 to 255"},
      {"message@inquiry=2", "only reserve, window and position"},
      {"message@reserve=0x10000", "from 0 to 65535"},
      {"message=2", "it needs a step"},
      {"warming-up@reserve", "it takes no step"},
      {"warming-up=1", "it takes no number"},
      {"in-use=1", "it takes no number"},
      {"paper-jam", "it needs a number"},
      {"paper-jam=0", "not a number from 1"},
      {"paper-jam@read=1", "it takes no step"},
      {"stall@read=1", "it takes no number"},
      {"short@read=99999999999", "not a number"},
      {"slow=", "not a number"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    HpScannerOptions options;
    const std::string error = addHpFault(options, row.text);
    EXPECT_THAT(error, HasSubstr(row.hint));
    EXPECT_THAT(error, HasSubstr("'" + std::string(row.text) + "'"));
    EXPECT_TRUE(options.faults.empty());
  }
}

TEST(FaultSpelling, HelpNamesEveryFormAndStep) {
  const std::string help = hpFaultHelp();
  for (const char* form :
       {"busy@STEP[=N]", "in-use[@STEP]", "warming-up", "paper-jam=PAGE", "cover-open=PAGE",
        "no-paper=PAGE", "cancelled=PAGE", "short@STEP[=BYTES]", "stall@STEP", "failed-read@STEP",
        "end-block-lost=PAGE", "drop=PAGE", "slow=MS", "message@STEP=WORD", "status@STEP=BYTE"}) {
    EXPECT_THAT(help, HasSubstr(std::string(form) + " "));
  }
  EXPECT_THAT(help,
              HasSubstr("inquiry, reserve, window, position, read, read-image, abort, release"));
}

}  // namespace
}  // namespace tvrscn::virtual_device
