// The spelling of the faults for people.
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "virtual/common/fault_spelling.h"
#include "virtual/qz/qz_protocol.h"
#include "virtual/virtual_qz_scanner.h"

namespace tvrscn::virtual_device {
namespace {

// In the order of QzStep.
constexpr std::string_view kStepNames[] = {"wake-up", "reserve",      "ready",       "initialize",
                                           "inquiry", "mode-sense",   "mode-select", "window",
                                           "scan",    "block-header", "read",        "release"};

// Which member of the fault the argument is. The last two may have counts behind them.
enum class ArgumentIs { kNothing, kCount, kPage, kValue, kCountedValue, kCountedSense };

using Kind = QzFault::Kind;
using Step = QzStep;

struct Spelling {
  FaultForm form;
  ArgumentIs argumentIs;
  // What stands when the text does not say otherwise.
  QzFault fault;
};

constexpr int kEveryTime = 0;
// Within the header, in front of the length.
constexpr std::uint32_t kShortBytes = 4;
// A command that there is none of.
constexpr std::uint32_t kOtherCommand = 0x20;
constexpr std::size_t kSenseDigits = 6;

constexpr FaultPart kNone = FaultPart::kNone;
constexpr FaultPart kMay = FaultPart::kOptional;
constexpr FaultPart kMust = FaultPart::kNeeded;

// clang-format off
constexpr Spelling kSpellings[] = {
    {{"busy", kMust, kMay, 1, kMostFaultCounts,
      "busy@STEP[=N]", "the first N requests at STEP find the device busy (N is 1 unless given)"},
     ArgumentIs::kCount, {Kind::kRefuse, Step::kRead, 1, 1, kQzBusy}},
    {{"reserved", kNone, kMay, 1, kMostFaultCounts,
      "reserved[=N]", "another client has the device at the first N reservations (all unless given)"},
     ArgumentIs::kCount, {Kind::kRefuse, Step::kReserve, 1, kEveryTime, kQzReservationConflict}},
    {{"sense", kMust, kMust, 0, 0xFFFFFF,
      "sense@STEP=XXXXXX[*N][+K]", "check condition with that sense code at STEP", true},
     ArgumentIs::kCountedSense, {Kind::kSense, Step::kRead, 1, kEveryTime}},
    {{"status", kMust, kMust, 0, 0xFF,
      "status@STEP=BYTE[*N][+K]", "replies at STEP have that status, whatever else is in them", true},
     ArgumentIs::kCountedValue, {Kind::kStatus, Step::kRead, 1, kEveryTime}},
    {{"state", kMay, kMust, 0, kQzStateBits,
      "state[@STEP]=VALUE[*N][+K]", "replies at STEP (read unless given) have that scanner state", true},
     ArgumentIs::kCountedValue, {Kind::kState, Step::kRead, 1, kEveryTime}},
    {{"flags", kMust, kMust, 0, 0xFF,
      "flags@STEP=BYTE[*N][+K]", "the upper four bits of the scanner status at STEP are those of BYTE", true},
     ArgumentIs::kCountedValue, {Kind::kFlags, Step::kRead, 1, kEveryTime}},
    {{"cancelled", kNone, kMust, 1, kMostFaultPages,
      "cancelled=PAGE", "someone presses the device's stop button in the middle of page PAGE"},
     ArgumentIs::kPage, {Kind::kCancelled, Step::kRead, 1, kEveryTime, kQzCancelled}},
    {{"paper-jam", kNone, kMust, 1, kMostFaultPages,
      "paper-jam=PAGE", "the paper jams in the middle of page PAGE, once"},
     ArgumentIs::kPage, {Kind::kPaperJam, Step::kRead, 1, 1, kQzPaperJam}},
    {{"cover-open", kNone, kNone, 0, 0,
      "cover-open", "the feeder's cover is open when a page is to be scanned"},
     ArgumentIs::kNothing, {Kind::kSense, Step::kScan, 1, kEveryTime, kQzCoverOpen}},
    {{"no-paper", kNone, kMay, 1, kMostFaultPages,
      "no-paper[=PAGE]", "the feeder is emptied before page PAGE (1 unless given)"},
     ArgumentIs::kPage, {Kind::kNoPaper, Step::kModeSelect, 1, kEveryTime}},
    {{"block-end", kNone, kMust, 1, kMostFaultPages,
      "block-end=PAGE", "page PAGE comes in two blocks, half of it each"},
     ArgumentIs::kPage, {Kind::kBlockEnd, Step::kRead, 1, kEveryTime}},
    {{"fewer", kMust, kMust, 0, kMostFaultBytes,
      "fewer@STEP=BYTES", "replies at STEP announce and bring BYTES bytes of data at most"},
     ArgumentIs::kValue, {Kind::kFewer, Step::kRead, 1, kEveryTime}},
    {{"short", kMust, kMay, 0, kMostFaultBytes,
      "short@STEP[=BYTES]", "the first reply at STEP ends after BYTES bytes (4 unless given)"},
     ArgumentIs::kValue, {Kind::kShortAnswer, Step::kRead, 1, 1, kShortBytes}},
    {{"huge-length", kMust, kNone, 0, 0,
      "huge-length@STEP", "the first reply at STEP announces 4294967295 bytes"},
     ArgumentIs::kNothing, {Kind::kHugeLength}},
    {{"wrong-command", kMust, kMay, 0, 0xFF,
      "wrong-command@STEP[=BYTE]", "the first reply at STEP is one to command BYTE (0x20 unless given)"},
     ArgumentIs::kValue, {Kind::kWrongCommand, Step::kRead, 1, 1, kOtherCommand}},
    {{"stall", kMust, kNone, 0, 0,
      "stall@STEP", "no reply at STEP, ever"},
     ArgumentIs::kNothing, {Kind::kStall, Step::kRead, 1, kEveryTime}},
    {{"failed-read", kMust, kNone, 0, 0,
      "failed-read@STEP", "the first transfer that should bring the reply at STEP fails"},
     ArgumentIs::kNothing, {Kind::kFailedRead}},
    {{"drop", kNone, kMust, 1, kMostFaultPages,
      "drop=PAGE", "the device is unplugged in the middle of page PAGE, within a reply"},
     ArgumentIs::kPage, {Kind::kDrop, Step::kRead, 1, kEveryTime}},
    {{"slow", kNone, kMust, 0, kMostFaultMilliseconds,
      "slow=MS", "every reply comes MS milliseconds late"},
     ArgumentIs::kValue, {Kind::kSlow}},
};
// clang-format on

std::string isNoNumber(std::string_view text, std::uint32_t least, std::uint32_t most) {
  std::string error = "'";
  error += text;
  return error + "' is not a number from " + std::to_string(least) + " to " + std::to_string(most);
}

std::optional<std::uint32_t> allDigits(std::string_view text, int base) {
  std::uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

// Takes "*N" or "+K" off the end of the text.
std::string takeCount(std::string_view& text, char sign, std::uint32_t least, int& count) {
  const std::size_t at = text.find(sign);
  if (at == std::string_view::npos) return {};
  const std::string_view digits = text.substr(at + 1);
  const std::optional<std::uint32_t> number = allDigits(digits, 10);
  if (!number || *number < least || *number > kMostFaultCounts) {
    return isNoNumber(digits, least, kMostFaultCounts);
  }
  count = static_cast<int>(*number);
  text = text.substr(0, at);
  return {};
}

// "VALUE[*N][+K]": N replies with the value, after K others.
std::string setCounted(QzFault& fault, const Spelling& spelling, std::string_view text) {
  std::string wrong = takeCount(text, '+', 0, fault.after);
  if (wrong.empty()) wrong = takeCount(text, '*', 1, fault.count);
  if (!wrong.empty()) return wrong;
  std::optional<std::uint32_t> value;
  if (spelling.argumentIs == ArgumentIs::kCountedSense) {
    if (text.size() == kSenseDigits) value = allDigits(text, 16);
    if (!value) return "a sense code has six hexadecimal digits";
  } else {
    const bool isHex = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
    value = isHex ? allDigits(text.substr(2), 16) : allDigits(text, 10);
    if (!value || *value > spelling.form.most) return isNoNumber(text, 0, spelling.form.most);
  }
  fault.value = *value;
  return {};
}

void setNumber(QzFault& fault, ArgumentIs member, std::uint32_t number) {
  if (member == ArgumentIs::kCount) fault.count = static_cast<int>(number);
  if (member == ArgumentIs::kPage) fault.page = static_cast<int>(number);
  if (member == ArgumentIs::kValue) fault.value = number;
}

}  // namespace

std::string addQzFault(QzScannerOptions& options, std::string_view text) {
  const FaultReading reading = readFault(faultForms(kSpellings), kStepNames, text);
  if (!reading.error.empty()) return reading.error;
  const Spelling& spelling = kSpellings[reading.row];
  QzFault fault = spelling.fault;
  if (reading.step) fault.step = static_cast<QzStep>(*reading.step);
  if (reading.number) setNumber(fault, spelling.argumentIs, *reading.number);
  if (reading.words) {
    const std::string wrong = setCounted(fault, spelling, *reading.words);
    if (!wrong.empty()) return faultError(spelling.form, text, wrong);
  }
  options.faults.push_back(fault);
  return {};
}

std::string qzFaultHelp() {
  return faultHelp(faultForms(kSpellings), kStepNames) +
         "N is the number of such replies (all unless given), K of those before the first.\n";
}

}  // namespace tvrscn::virtual_device
