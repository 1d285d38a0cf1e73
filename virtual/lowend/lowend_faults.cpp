// The spelling of the faults for people.
#include "virtual/lowend/lowend_faults.h"

#include <string>
#include <string_view>
#include <utility>

#include "virtual/common/fault_spelling.h"

namespace tvrscn::virtual_device {
namespace {

// In the order of LowEndStep.
constexpr std::string_view kStepNames[] = {"capabilities", "status", "start", "image", "abort"};

// Which member of the fault the argument is.
enum class ArgumentIs { kNothing, kCount, kPage, kValue, kWords, kCover };

using Kind = LowEndFault::Kind;

struct Spelling {
  FaultForm form;
  Kind kind;
  ArgumentIs argumentIs;
  // What stands when the text does not say otherwise.
  int count = 1;
  std::uint32_t value = 0;
};

constexpr int kEveryTime = 0;
// Within the header, in front of the length.
constexpr std::uint32_t kShortBytes = 4;

constexpr FaultPart kNone = FaultPart::kNone;
constexpr FaultPart kMay = FaultPart::kOptional;
constexpr FaultPart kMust = FaultPart::kNeeded;

// clang-format off
constexpr Spelling kSpellings[] = {
    {{"busy", kNone, kMay, 1, kMostFaultCounts,
      "busy[=N]", "the first N status documents say busy (all unless given)"},
     Kind::kBusy, ArgumentIs::kCount, kEveryTime},
    {{"not-ready", kNone, kMust, 1, kMostFaultCounts,
      "not-ready=N", "the first N status documents say neither busy nor ready"},
     Kind::kNotReady, ArgumentIs::kValue},
    {{"cover-open", kNone, kMust, 0, 0,
      "cover-open=adf|flatbed", "the cover of the feeder or of the flatbed is open", true},
     Kind::kCoverOpen, ArgumentIs::kCover},
    {{"paper-jam", kNone, kNone, 0, 0,
      "paper-jam", "paper is jammed in the feeder"},
     Kind::kPaperJam, ArgumentIs::kNothing},
    {{"no-section", kNone, kNone, 0, 0,
      "no-section", "the status document lacks the feeder's section"},
     Kind::kNoSection, ArgumentIs::kNothing},
    {{"refuse", kNone, kMay, 0, 0,
      "refuse[=WORDS]", "scan requests are refused, with WORDS as the reason", true},
     Kind::kRefuse, ArgumentIs::kWords},
    {{"status", kNone, kMust, 0, 0xFF,
      "status=BYTE", "answers to scan requests have status BYTE; its low four bits count"},
     Kind::kNibble, ArgumentIs::kValue},
    {{"empty", kMust, kNone, 0, 0,
      "empty@STEP", "the first answer at STEP has nothing in it; at image, the first job"},
     Kind::kEmpty, ArgumentIs::kNothing},
    {{"not-json", kMust, kNone, 0, 0,
      "not-json@STEP", "the first answer at STEP is no document"},
     Kind::kNotJson, ArgumentIs::kNothing},
    {{"wrong-code", kMust, kNone, 0, 0,
      "wrong-code@STEP", "the first answer or packet at STEP has another operation's code"},
     Kind::kWrongCode, ArgumentIs::kNothing},
    {{"short", kMust, kMay, 0, kMostFaultBytes,
      "short@STEP[=BYTES]",
      "the first answer or packet at STEP is cut to BYTES bytes (4 unless given)"},
     Kind::kShortAnswer, ArgumentIs::kValue, 1, kShortBytes},
    {{"stall", kMust, kNone, 0, 0,
      "stall@STEP", "nothing comes at STEP, ever"},
     Kind::kStall, ArgumentIs::kNothing},
    {{"failed-read", kMust, kNone, 0, 0,
      "failed-read@STEP", "the first transfer at STEP fails"},
     Kind::kFailedRead, ArgumentIs::kNothing},
    {{"drop", kNone, kMust, 1, kMostFaultPages,
      "drop=PAGE", "the device is unplugged in the middle of page PAGE, within a packet"},
     Kind::kDrop, ArgumentIs::kPage},
    {{"slow", kNone, kMust, 0, kMostFaultMilliseconds,
      "slow=MS", "every answer and every packet comes MS milliseconds late"},
     Kind::kSlow, ArgumentIs::kValue},
    {{"cancelled", kNone, kNone, 0, 0,
      "cancelled", "someone presses the device's stop button before the first page"},
     Kind::kCancelled, ArgumentIs::kNothing},
    {{"truncated-page", kNone, kMust, 1, kMostFaultPages,
      "truncated-page=PAGE", "the image data end in the middle of page PAGE"},
     Kind::kTruncatedPage, ArgumentIs::kPage},
    {{"junk", kNone, kNone, 0, 0,
      "junk", "transfers that are no image packets stand among them"},
     Kind::kJunk, ArgumentIs::kNothing},
    {{"silent-end", kNone, kNone, 0, 0,
      "silent-end", "the last packet of a job never comes"},
     Kind::kSilentEnd, ArgumentIs::kNothing},
};
// clang-format on

void setNumber(LowEndFault& fault, ArgumentIs member, std::uint32_t number) {
  if (member == ArgumentIs::kCount) fault.count = static_cast<int>(number);
  if (member == ArgumentIs::kPage) fault.page = static_cast<int>(number);
  if (member == ArgumentIs::kValue) fault.value = number;
}

std::string setWords(LowEndFault& fault, ArgumentIs member, std::string_view words) {
  if (member == ArgumentIs::kWords) fault.words = words;
  if (member != ArgumentIs::kCover) return {};
  if (words != "adf" && words != "flatbed") return "there are the covers adf and flatbed";
  fault.value = words == "adf" ? kFeederCover : kFlatbedCover;
  return {};
}

// What is wrong with this kind of fault at its step, or nothing.
std::string checkStep(const LowEndFault& fault) {
  const bool hasDocument = fault.step != LowEndStep::kImage && fault.step != LowEndStep::kAbort;
  if (fault.kind == Kind::kNotJson && !hasDocument) {
    return "only capabilities, status and start have a document";
  }
  if (fault.kind == Kind::kEmpty && fault.step == LowEndStep::kAbort) {
    return "the answer at abort is always empty";
  }
  return {};
}

}  // namespace

std::string addLowEndFault(LowEndScannerOptions& options, std::string_view text) {
  const FaultReading reading = readFault(faultForms(kSpellings), kStepNames, text);
  if (!reading.error.empty()) return reading.error;
  const Spelling& spelling = kSpellings[reading.row];
  LowEndFault fault{spelling.kind};
  fault.count = spelling.count;
  fault.value = spelling.value;
  if (fault.kind == Kind::kRefuse) fault.words = "The device refuses to scan";
  if (reading.step) fault.step = static_cast<LowEndStep>(*reading.step);
  if (reading.number) setNumber(fault, spelling.argumentIs, *reading.number);
  std::string wrong = checkStep(fault);
  if (reading.words) wrong += setWords(fault, spelling.argumentIs, *reading.words);
  if (!wrong.empty()) return faultError(spelling.form, text, wrong);
  options.faults.push_back(std::move(fault));
  return {};
}

std::string lowEndFaultHelp() {
  return faultHelp(faultForms(kSpellings), kStepNames);
}

}  // namespace tvrscn::virtual_device
