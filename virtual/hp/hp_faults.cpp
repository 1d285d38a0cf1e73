// Faults at run time, and their spelling for people. Which fault can stand at which step follows
// from the answers: image data has no status, and only three answers have room for a message word.
#include "virtual/hp/hp_faults.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

#include "virtual/hp/hp_protocol.h"

namespace tvrscn::virtual_device {
namespace {

struct StepName {
  HpStep step;
  std::string_view name;
};

constexpr StepName kStepNames[] = {
    {HpStep::kInquiry, "inquiry"},       // 1B A8 12
    {HpStep::kReserve, "reserve"},       // 1B A8 16
    {HpStep::kWindow, "window"},         // 1B A8 24
    {HpStep::kPosition, "position"},     // 1B A8 31
    {HpStep::kRead, "read"},             // 1B A8 28
    {HpStep::kReadImage, "read-image"},  // 1B A8 29
    {HpStep::kAbort, "abort"},           // 1B A8 06
    {HpStep::kRelease, "release"},       // 1B A8 17
};

bool isMessageStep(HpStep step) {
  return step == HpStep::kReserve || step == HpStep::kWindow || step == HpStep::kPosition;
}

}  // namespace

HpFaults::HpFaults(const std::vector<HpFault>& faults) {
  for (const HpFault& fault : faults)
    entries_.push_back({fault, fault.count <= 0, fault.count});
}

const HpFault* HpFaults::take(HpFault::Kind kind, HpStep step) {
  for (Entry& entry : entries_) {
    if (entry.fault.kind != kind || entry.fault.step != step) continue;
    if (entry.everyTime) return &entry.fault;
    if (entry.left == 0) continue;
    --entry.left;
    return &entry.fault;
  }
  return nullptr;
}

bool HpFaults::hasPageFault(HpFault::Kind kind, int page) const {
  return std::any_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    return entry.fault.kind == kind && entry.fault.page == page;
  });
}

std::optional<HpRefusal> HpFaults::takeRefusal(HpStep step, int page) {
  if (step == HpStep::kReadImage) return std::nullopt;
  if (take(HpFault::Kind::kBusy, step) != nullptr) return HpRefusal{kHpBusy, std::nullopt};
  if (const HpFault* other = take(HpFault::Kind::kStatus, step)) {
    return HpRefusal{static_cast<std::uint8_t>(other->value & 0xFF), std::nullopt};
  }
  for (const Entry& entry : entries_) {
    const HpFault& fault = entry.fault;
    const bool isHere = fault.kind == HpFault::Kind::kMessage && fault.step == step;
    const bool isBeforePage =
        fault.kind == HpFault::Kind::kBeforePage && step == HpStep::kPosition && fault.page == page;
    if ((isHere && isMessageStep(step)) || isBeforePage) {
      return HpRefusal{kHpCheckCondition, static_cast<std::uint16_t>(fault.value & 0xFFFF)};
    }
  }
  if (step == HpStep::kPosition && hasPageFault(HpFault::Kind::kCancelled, page)) {
    return HpRefusal{kHpCancelled, std::nullopt};
  }
  return std::nullopt;
}

std::optional<std::size_t> HpFaults::takeCut(HpStep step) {
  const HpFault* fault = take(HpFault::Kind::kShortAnswer, step);
  if (fault == nullptr) return std::nullopt;
  return fault->value;
}

bool HpFaults::takeFailedTransfer(HpStep step) {
  return take(HpFault::Kind::kFailedRead, step) != nullptr;
}

bool HpFaults::stalls(HpStep step) const {
  return std::any_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    return entry.fault.kind == HpFault::Kind::kStall && entry.fault.step == step;
  });
}

bool HpFaults::losesEndBlock(int page) const {
  return hasPageFault(HpFault::Kind::kEndBlockLost, page);
}

bool HpFaults::dropsWithin(int page) const {
  return hasPageFault(HpFault::Kind::kDrop, page);
}

std::chrono::milliseconds HpFaults::delay() const {
  std::chrono::milliseconds sum{0};
  for (const Entry& entry : entries_) {
    if (entry.fault.kind == HpFault::Kind::kSlow) {
      sum += std::chrono::milliseconds(entry.fault.value);
    }
  }
  return sum;
}

namespace {

// How a fault's text goes on behind its name.
enum class StepPart { kNone, kOptional, kNeeded };
enum class NumberPart { kNone, kOptional, kNeeded };
// Which member of the fault the number is.
enum class NumberIs { kNothing, kCount, kPage, kValue };

struct Spelling {
  std::string_view name;
  StepPart stepPart;
  NumberPart numberPart;
  NumberIs numberIs;
  std::uint32_t least;
  std::uint32_t most;
  HpFault fault;  // what stands when the text does not say otherwise
  std::string_view form;
  std::string_view help;
};

using Kind = HpFault::Kind;
constexpr std::uint32_t kMostPages = 9999;
constexpr std::uint32_t kMostCounts = 1000000;
constexpr std::uint32_t kMostMilliseconds = 600000;
constexpr std::uint32_t kMostBytes = std::numeric_limits<std::uint32_t>::max();
constexpr int kEveryTime = 0;
// Enough to show a status and too little for anything behind it.
constexpr std::uint32_t kShortBytes = 2;

// clang-format off
constexpr Spelling kSpellings[] = {
    {"busy", StepPart::kNeeded, NumberPart::kOptional, NumberIs::kCount, 1, kMostCounts,
     {Kind::kBusy}, "busy@STEP[=N]", "the first N answers at STEP say busy (N is 1 unless given)"},
    {"in-use", StepPart::kOptional, NumberPart::kNone, NumberIs::kNothing, 0, 0,
     {Kind::kStatus, HpStep::kInquiry, 1, kEveryTime, kHpInUse},
     "in-use[@STEP]", "another user has the scanner (at inquiry unless given)"},
    {"warming-up", StepPart::kNone, NumberPart::kNone, NumberIs::kNothing, 0, 0,
     {Kind::kMessage, HpStep::kReserve, 1, kEveryTime, kHpWarmingUp},
     "warming-up", "the reservation is answered with the message that the lamp warms up"},
    {"paper-jam", StepPart::kNone, NumberPart::kNeeded, NumberIs::kPage, 1, kMostPages,
     {Kind::kBeforePage, HpStep::kPosition, 1, 1, kHpPaperJam},
     "paper-jam=PAGE", "the paper jams before page PAGE"},
    {"cover-open", StepPart::kNone, NumberPart::kNeeded, NumberIs::kPage, 1, kMostPages,
     {Kind::kBeforePage, HpStep::kPosition, 1, 1, kHpCoverOpen},
     "cover-open=PAGE", "the cover is opened before page PAGE"},
    {"no-paper", StepPart::kNone, NumberPart::kNeeded, NumberIs::kPage, 1, kMostPages,
     {Kind::kBeforePage, HpStep::kPosition, 1, 1, kHpNoDocument},
     "no-paper=PAGE", "there is no paper for page PAGE"},
    {"cancelled", StepPart::kNone, NumberPart::kNeeded, NumberIs::kPage, 1, kMostPages,
     {Kind::kCancelled, HpStep::kPosition},
     "cancelled=PAGE", "someone presses the device's stop button before page PAGE"},
    {"short", StepPart::kNeeded, NumberPart::kOptional, NumberIs::kValue, 0, kMostBytes,
     {Kind::kShortAnswer, HpStep::kInquiry, 1, 1, kShortBytes},
     "short@STEP[=BYTES]", "the first answer at STEP is cut to BYTES bytes (2 unless given)"},
    {"stall", StepPart::kNeeded, NumberPart::kNone, NumberIs::kNothing, 0, 0,
     {Kind::kStall}, "stall@STEP", "no answer at STEP, ever"},
    {"failed-read", StepPart::kNeeded, NumberPart::kNone, NumberIs::kNothing, 0, 0,
     {Kind::kFailedRead}, "failed-read@STEP",
     "the first transfer that should bring the answer at STEP fails"},
    {"end-block-lost", StepPart::kNone, NumberPart::kNeeded, NumberIs::kPage, 1, kMostPages,
     {Kind::kEndBlockLost}, "end-block-lost=PAGE",
     "page PAGE breaks off before its last block, as cancelled"},
    {"drop", StepPart::kNone, NumberPart::kNeeded, NumberIs::kPage, 1, kMostPages,
     {Kind::kDrop}, "drop=PAGE",
     "the device is unplugged in the middle of page PAGE, within a block"},
    {"slow", StepPart::kNone, NumberPart::kNeeded, NumberIs::kValue, 0, kMostMilliseconds,
     {Kind::kSlow}, "slow=MS", "every answer comes MS milliseconds late"},
    {"message", StepPart::kNeeded, NumberPart::kNeeded, NumberIs::kValue, 0, 0xFFFF,
     {Kind::kMessage, HpStep::kReserve, 1, kEveryTime, 0},
     "message@STEP=WORD",
     "check condition with message WORD at STEP (reserve, window or position)"},
    {"status", StepPart::kNeeded, NumberPart::kNeeded, NumberIs::kValue, 0, 0xFF,
     {Kind::kStatus, HpStep::kInquiry, 1, kEveryTime, 0},
     "status@STEP=BYTE", "every answer at STEP has status BYTE"},
};
// clang-format on

std::string stepList() {
  std::string list;
  for (const StepName& step : kStepNames) {
    if (!list.empty()) list += ", ";
    list += step.name;
  }
  return list;
}

std::string formList() {
  std::string list;
  for (const Spelling& spelling : kSpellings) {
    if (!list.empty()) list += ", ";
    list += spelling.form;
  }
  return list;
}

// The text cut at its '@' and '='.
struct FaultText {
  std::string_view name;
  std::optional<std::string_view> step;
  std::optional<std::string_view> number;
};

FaultText split(std::string_view text) {
  FaultText parts;
  const std::size_t equals = text.find('=');
  if (equals != std::string_view::npos) parts.number = text.substr(equals + 1);
  const std::string_view front = text.substr(0, equals);
  const std::size_t at = front.find('@');
  if (at != std::string_view::npos) parts.step = front.substr(at + 1);
  parts.name = front.substr(0, at);
  return parts;
}

std::optional<std::uint32_t> parseNumber(std::string_view text) {
  int base = 10;
  if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") {
    base = 16;
    text.remove_prefix(2);
  }
  std::uint32_t number = 0;
  const char* end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, number, base);
  if (text.empty() || result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

const Spelling* findSpelling(std::string_view name) {
  for (const Spelling& spelling : kSpellings) {
    if (spelling.name == name) return &spelling;
  }
  return nullptr;
}

// Each of the two readers fills in its part of the fault and returns what is wrong, or nothing.
std::string readStep(const Spelling& spelling, const FaultText& parts, HpFault& fault) {
  if (!parts.step) {
    if (spelling.stepPart != StepPart::kNeeded) return {};
    return "it needs a step (" + stepList() + ")";
  }
  if (spelling.stepPart == StepPart::kNone) return "it takes no step";
  const auto* found = std::find_if(std::begin(kStepNames), std::end(kStepNames),
                                   [&](const StepName& name) { return name.name == *parts.step; });
  if (found == std::end(kStepNames)) {
    return "there is no step '" + std::string(*parts.step) + "' (there are " + stepList() + ")";
  }
  fault.step = found->step;
  const bool setsStatus = fault.kind == Kind::kBusy || fault.kind == Kind::kStatus;
  if (setsStatus && fault.step == HpStep::kReadImage) {
    return "image data carries no status; use the step read";
  }
  if (fault.kind == Kind::kMessage && !isMessageStep(fault.step)) {
    return "only reserve, window and position carry a message";
  }
  return {};
}

std::string readNumber(const Spelling& spelling, const FaultText& parts, HpFault& fault) {
  if (!parts.number) {
    return spelling.numberPart == NumberPart::kNeeded ? "it needs a number" : "";
  }
  if (spelling.numberPart == NumberPart::kNone) return "it takes no number";
  const std::optional<std::uint32_t> number = parseNumber(*parts.number);
  if (!number || *number < spelling.least || *number > spelling.most) {
    return "'" + std::string(*parts.number) + "' is not a number from " +
           std::to_string(spelling.least) + " to " + std::to_string(spelling.most);
  }
  if (spelling.numberIs == NumberIs::kCount) fault.count = static_cast<int>(*number);
  if (spelling.numberIs == NumberIs::kPage) fault.page = static_cast<int>(*number);
  if (spelling.numberIs == NumberIs::kValue) fault.value = *number;
  return {};
}

}  // namespace

std::string addHpFault(HpScannerOptions& options, std::string_view text) {
  const std::string quoted = "'" + std::string(text) + "'";
  const FaultText parts = split(text);
  const Spelling* spelling = findSpelling(parts.name);
  if (spelling == nullptr) {
    return "unknown fault " + quoted + "; there are " + formList();
  }
  HpFault fault = spelling->fault;
  std::string wrong = readStep(*spelling, parts, fault);
  if (wrong.empty()) wrong = readNumber(*spelling, parts, fault);
  if (!wrong.empty()) {
    return "fault " + quoted + ": " + wrong + "; it is written " + std::string(spelling->form);
  }
  options.faults.push_back(fault);
  return {};
}

std::string hpFaultHelp() {
  std::size_t widest = 0;
  for (const Spelling& spelling : kSpellings)
    widest = std::max(widest, spelling.form.size());
  std::string help;
  for (const Spelling& spelling : kSpellings) {
    help += spelling.form;
    help.append(widest + 2 - spelling.form.size(), ' ');
    help += spelling.help;
    help += '\n';
  }
  help += "STEP is one of " + stepList() + ".\nNumbers are decimal, or hexadecimal with 0x.\n";
  return help;
}

}  // namespace tvrscn::virtual_device
