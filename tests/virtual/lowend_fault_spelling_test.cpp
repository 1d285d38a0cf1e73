// How people write the LowEnd scanner's faults, and what they are told when they write something
// else.
#include <cstdint>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "virtual/virtual_lowend_scanner.h"

namespace tvrscn::virtual_device {
namespace {

using ::testing::HasSubstr;
using Kind = LowEndFault::Kind;
using Step = LowEndStep;

TEST(LowEndFaultSpelling, EachSpellingGivesItsFault) {
  const struct {
    const char* text;
    LowEndFault fault;
  } rows[] = {
      {"busy", {Kind::kBusy, Step::kStatus, 1, 0}},
      {"busy=3", {Kind::kBusy, Step::kStatus, 1, 3}},
      {"not-ready=11", {Kind::kNotReady, Step::kStatus, 1, 1, 11}},
      {"cover-open=adf", {Kind::kCoverOpen, Step::kStatus, 1, 1, 0}},
      {"cover-open=flatbed", {Kind::kCoverOpen, Step::kStatus, 1, 1, 1}},
      {"paper-jam", {Kind::kPaperJam}},
      {"no-section", {Kind::kNoSection}},
      {"refuse", {Kind::kRefuse, Step::kStatus, 1, 1, 0, "The device refuses to scan"}},
      {"refuse=ask me=later @ noon",
       {Kind::kRefuse, Step::kStatus, 1, 1, 0, "ask me=later @ noon"}},
      {"status=4", {Kind::kNibble, Step::kStatus, 1, 1, 4}},
      {"status=0xF2", {Kind::kNibble, Step::kStatus, 1, 1, 0xF2}},
      {"empty@capabilities", {Kind::kEmpty, Step::kCapabilities}},
      {"empty@image", {Kind::kEmpty, Step::kImage}},
      {"not-json@start", {Kind::kNotJson, Step::kStart}},
      {"wrong-code@status", {Kind::kWrongCode, Step::kStatus}},
      {"short@abort", {Kind::kShortAnswer, Step::kAbort, 1, 1, 4}},
      {"short@image=100", {Kind::kShortAnswer, Step::kImage, 1, 1, 100}},
      {"stall@image", {Kind::kStall, Step::kImage}},
      {"failed-read@start", {Kind::kFailedRead, Step::kStart}},
      {"drop=4", {Kind::kDrop, Step::kStatus, 4}},
      {"slow=250", {Kind::kSlow, Step::kStatus, 1, 1, 250}},
      {"cancelled", {Kind::kCancelled}},
      {"truncated-page=2", {Kind::kTruncatedPage, Step::kStatus, 2}},
      {"junk", {Kind::kJunk}},
      {"silent-end", {Kind::kSilentEnd}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    LowEndScannerOptions options;
    ASSERT_EQ(addLowEndFault(options, row.text), "");
    ASSERT_EQ(options.faults.size(), 1U);
    const LowEndFault& fault = options.faults[0];
    EXPECT_EQ(fault.kind, row.fault.kind);
    EXPECT_EQ(fault.step, row.fault.step);
    EXPECT_EQ(fault.page, row.fault.page);
    EXPECT_EQ(fault.count, row.fault.count);
    EXPECT_EQ(fault.value, row.fault.value);
    EXPECT_EQ(fault.words, row.fault.words);
  }
}

TEST(LowEndFaultSpelling, AnythingElseIsExplainedAndAddsNothing) {
  const struct {
    const char* text;
    const char* hint;
  } rows[] = {
      {"", "there are busy[=N]"},
      {"warming-up", "there are busy[=N]"},
      {"busy@status", "it takes no step"},
      {"busy=0", "not a number from 1"},
      {"not-ready", "it needs a number"},
      {"not-ready=soon", "not a number from 1"},
      {"cover-open", "it needs words"},
      {"cover-open=", "it needs words"},
      {"cover-open=lid", "there are the covers adf and flatbed"},
      {"paper-jam=1", "it takes no number"},
      {"refuse=", "it needs words"},
      {"status=256", "from 0 to 255"},
      {"status", "it needs a number"},
      {"empty", "it needs a step (capabilities, status, start, image, abort)"},
      {"empty@abort", "the answer at abort is always empty"},
      {"not-json@image", "only capabilities, status and start have a document"},
      {"not-json@abort", "only capabilities, status and start have a document"},
      {"wrong-code@", "there is no step ''"},
      {"stall@read", "there is no step 'read'"},
      {"short@image=x", "not a number"},
      {"drop=0", "not a number from 1"},
      {"slow=600001", "from 0 to 600000"},
      {"cancelled=1", "it takes no number"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    LowEndScannerOptions options;
    const std::string error = addLowEndFault(options, row.text);
    EXPECT_THAT(error, HasSubstr(row.hint));
    EXPECT_THAT(error, HasSubstr("'" + std::string(row.text) + "'"));
    EXPECT_TRUE(options.faults.empty());
  }
}

TEST(LowEndFaultSpelling, HelpNamesEveryFormAndStep) {
  const std::string help = lowEndFaultHelp();
  for (const char* form :
       {"busy[=N]", "not-ready=N", "cover-open=adf|flatbed", "paper-jam", "no-section",
        "refuse[=WORDS]", "status=BYTE", "empty@STEP", "not-json@STEP", "wrong-code@STEP",
        "short@STEP[=BYTES]", "stall@STEP", "failed-read@STEP", "drop=PAGE", "slow=MS", "cancelled",
        "truncated-page=PAGE", "junk", "silent-end"}) {
    EXPECT_THAT(help, HasSubstr(std::string(form) + " "));
  }
  EXPECT_THAT(help, HasSubstr("STEP is one of capabilities, status, start, image, abort."));
}

}  // namespace
}  // namespace tvrscn::virtual_device
