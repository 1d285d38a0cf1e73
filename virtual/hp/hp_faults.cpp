// Faults at run time, and their spelling for people. Which fault can stand at which step follows
// from the answers: image data has no status, and only three answers have room for a message word.
#include "virtual/hp/hp_faults.h"

#include <string>
#include <string_view>

#include "virtual/common/fault_spelling.h"
#include "virtual/hp/hp_protocol.h"

namespace tvrscn::virtual_device {
namespace {

// In the order of HpStep.
constexpr std::string_view kStepNames[] = {
    "inquiry",     // 1B A8 12
    "reserve",     // 1B A8 16
    "window",      // 1B A8 24
    "position",    // 1B A8 31
    "read",        // 1B A8 28
    "read-image",  // 1B A8 29
    "abort",       // 1B A8 06
    "release",     // 1B A8 17
};

bool isMessageStep(HpStep step) {
  return step == HpStep::kReserve || step == HpStep::kWindow || step == HpStep::kPosition;
}

}  // namespace

std::optional<HpRefusal> HpFaults::takeRefusal(HpStep step, int page) {
  using Kind = HpFault::Kind;
  if (step == HpStep::kReadImage) return std::nullopt;
  if (faults_.take(Kind::kBusy, step) != nullptr) return HpRefusal{kHpBusy, std::nullopt};
  if (const HpFault* other = faults_.take(Kind::kStatus, step)) {
    return HpRefusal{static_cast<std::uint8_t>(other->value & 0xFF), std::nullopt};
  }
  const HpFault* message = faults_.findIf([&](const HpFault& fault) {
    const bool isHere = fault.kind == Kind::kMessage && fault.step == step && isMessageStep(step);
    const bool isBeforePage =
        fault.kind == Kind::kBeforePage && step == HpStep::kPosition && fault.page == page;
    return isHere || isBeforePage;
  });
  if (message != nullptr) {
    return HpRefusal{kHpCheckCondition, static_cast<std::uint16_t>(message->value & 0xFFFF)};
  }
  if (step == HpStep::kPosition && faults_.hasOnPage(Kind::kCancelled, page)) {
    return HpRefusal{kHpCancelled, std::nullopt};
  }
  return std::nullopt;
}

std::optional<std::size_t> HpFaults::takeCut(HpStep step) {
  const HpFault* fault = faults_.take(HpFault::Kind::kShortAnswer, step);
  if (fault == nullptr) return std::nullopt;
  return fault->value;
}

bool HpFaults::takeFailedTransfer(HpStep step) {
  return faults_.take(HpFault::Kind::kFailedRead, step) != nullptr;
}

bool HpFaults::stalls(HpStep step) const {
  return faults_.hasAt(HpFault::Kind::kStall, step);
}

bool HpFaults::losesEndBlock(int page) const {
  return faults_.hasOnPage(HpFault::Kind::kEndBlockLost, page);
}

bool HpFaults::dropsWithin(int page) const {
  return faults_.hasOnPage(HpFault::Kind::kDrop, page);
}

std::chrono::milliseconds HpFaults::delay() const {
  return faults_.sumOf(HpFault::Kind::kSlow);
}

namespace {

// Which member of the fault the number is.
enum class NumberIs { kNothing, kCount, kPage, kValue };

struct Spelling {
  FaultForm form;
  NumberIs numberIs;
  HpFault fault;  // what stands when the text does not say otherwise
};

using Kind = HpFault::Kind;
constexpr int kEveryTime = 0;
// Enough to show a status and too little for anything behind it.
constexpr std::uint32_t kShortBytes = 2;

// clang-format off
constexpr Spelling kSpellings[] = {
    {{"busy", FaultPart::kNeeded, FaultPart::kOptional, 1, kMostFaultCounts,
      "busy@STEP[=N]",
      "the first N answers at STEP say busy (N is 1 unless given)"},
     NumberIs::kCount, {Kind::kBusy}},
    {{"in-use", FaultPart::kOptional, FaultPart::kNone, 0, 0,
      "in-use[@STEP]",
      "another user has the scanner (at inquiry unless given)"},
     NumberIs::kNothing, {Kind::kStatus, HpStep::kInquiry, 1, kEveryTime, kHpInUse}},
    {{"warming-up", FaultPart::kNone, FaultPart::kNone, 0, 0,
      "warming-up",
      "the reservation is answered with the message that the lamp warms up"},
     NumberIs::kNothing, {Kind::kMessage, HpStep::kReserve, 1, kEveryTime, kHpWarmingUp}},
    {{"paper-jam", FaultPart::kNone, FaultPart::kNeeded, 1, kMostFaultPages,
      "paper-jam=PAGE",
      "the paper jams before page PAGE"},
     NumberIs::kPage, {Kind::kBeforePage, HpStep::kPosition, 1, 1, kHpPaperJam}},
    {{"cover-open", FaultPart::kNone, FaultPart::kNeeded, 1, kMostFaultPages,
      "cover-open=PAGE",
      "the cover is opened before page PAGE"},
     NumberIs::kPage, {Kind::kBeforePage, HpStep::kPosition, 1, 1, kHpCoverOpen}},
    {{"no-paper", FaultPart::kNone, FaultPart::kNeeded, 1, kMostFaultPages,
      "no-paper=PAGE",
      "there is no paper for page PAGE"},
     NumberIs::kPage, {Kind::kBeforePage, HpStep::kPosition, 1, 1, kHpNoDocument}},
    {{"cancelled", FaultPart::kNone, FaultPart::kNeeded, 1, kMostFaultPages,
      "cancelled=PAGE",
      "someone presses the device's stop button before page PAGE"},
     NumberIs::kPage, {Kind::kCancelled, HpStep::kPosition}},
    {{"short", FaultPart::kNeeded, FaultPart::kOptional, 0, kMostFaultBytes,
      "short@STEP[=BYTES]",
      "the first answer at STEP is cut to BYTES bytes (2 unless given)"},
     NumberIs::kValue, {Kind::kShortAnswer, HpStep::kInquiry, 1, 1, kShortBytes}},
    {{"stall", FaultPart::kNeeded, FaultPart::kNone, 0, 0,
      "stall@STEP",
      "no answer at STEP, ever"},
     NumberIs::kNothing, {Kind::kStall}},
    {{"failed-read", FaultPart::kNeeded, FaultPart::kNone, 0, 0,
      "failed-read@STEP",
      "the first transfer that should bring the answer at STEP fails"},
     NumberIs::kNothing, {Kind::kFailedRead}},
    {{"end-block-lost", FaultPart::kNone, FaultPart::kNeeded, 1, kMostFaultPages,
      "end-block-lost=PAGE",
      "page PAGE breaks off before its last block, as cancelled"},
     NumberIs::kPage, {Kind::kEndBlockLost}},
    {{"drop", FaultPart::kNone, FaultPart::kNeeded, 1, kMostFaultPages,
      "drop=PAGE",
      "the device is unplugged in the middle of page PAGE, within a block"},
     NumberIs::kPage, {Kind::kDrop}},
    {{"slow", FaultPart::kNone, FaultPart::kNeeded, 0, kMostFaultMilliseconds,
      "slow=MS",
      "every answer comes MS milliseconds late"},
     NumberIs::kValue, {Kind::kSlow}},
    {{"message", FaultPart::kNeeded, FaultPart::kNeeded, 0, 0xFFFF,
      "message@STEP=WORD",
      "check condition with message WORD at STEP (reserve, window or position)"},
     NumberIs::kValue, {Kind::kMessage, HpStep::kReserve, 1, kEveryTime, 0}},
    {{"status", FaultPart::kNeeded, FaultPart::kNeeded, 0, 0xFF,
      "status@STEP=BYTE",
      "every answer at STEP has status BYTE"},
     NumberIs::kValue, {Kind::kStatus, HpStep::kInquiry, 1, kEveryTime, 0}},
};
// clang-format on

// What is wrong with this kind of fault at its step, or nothing.
std::string checkStep(const HpFault& fault) {
  const bool setsStatus = fault.kind == Kind::kBusy || fault.kind == Kind::kStatus;
  if (setsStatus && fault.step == HpStep::kReadImage) {
    return "image data carries no status; use the step read";
  }
  if (fault.kind == Kind::kMessage && !isMessageStep(fault.step)) {
    return "only reserve, window and position carry a message";
  }
  return {};
}

void setNumber(HpFault& fault, NumberIs member, std::uint32_t number) {
  if (member == NumberIs::kCount) fault.count = static_cast<int>(number);
  if (member == NumberIs::kPage) fault.page = static_cast<int>(number);
  if (member == NumberIs::kValue) fault.value = number;
}

}  // namespace

std::string addHpFault(HpScannerOptions& options, std::string_view text) {
  const FaultReading reading = readFault(faultForms(kSpellings), kStepNames, text);
  if (!reading.error.empty()) return reading.error;
  const Spelling& spelling = kSpellings[reading.row];
  HpFault fault = spelling.fault;
  if (reading.step) fault.step = static_cast<HpStep>(*reading.step);
  if (reading.number) setNumber(fault, spelling.numberIs, *reading.number);
  const std::string wrong = checkStep(fault);
  if (!wrong.empty()) return faultError(spelling.form, text, wrong);
  options.faults.push_back(fault);
  return {};
}

std::string hpFaultHelp() {
  return faultHelp(faultForms(kSpellings), kStepNames);
}

}  // namespace tvrscn::virtual_device
