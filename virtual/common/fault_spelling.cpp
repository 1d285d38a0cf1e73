#include "virtual/common/fault_spelling.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace tvrscn::virtual_device {
namespace {

// The text cut at its '@' and '='.
struct FaultText {
  std::string_view name;
  std::optional<std::string_view> step;
  std::optional<std::string_view> argument;
};

FaultText split(std::string_view text) {
  FaultText parts;
  const std::size_t equals = text.find('=');
  if (equals != std::string_view::npos) parts.argument = text.substr(equals + 1);
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

std::string quoted(std::string_view text) {
  std::string quotedText = "'";
  quotedText += text;
  quotedText += '\'';
  return quotedText;
}

void addToList(std::string& list, std::string_view item) {
  if (!list.empty()) list += ", ";
  list += item;
}

std::string listOf(std::span<const std::string_view> steps) {
  std::string list;
  for (const std::string_view step : steps)
    addToList(list, step);
  return list;
}

std::string listOf(std::span<const FaultForm> forms) {
  std::string list;
  for (const FaultForm& form : forms)
    addToList(list, form.form);
  return list;
}

// Each of the two readers fills in its part of the reading and returns what is wrong, or nothing.
std::string readStep(const FaultForm& form, const FaultText& parts,
                     std::span<const std::string_view> steps, FaultReading& reading) {
  if (!parts.step) {
    if (form.stepPart != FaultPart::kNeeded) return {};
    return "it needs a step (" + listOf(steps) + ")";
  }
  if (form.stepPart == FaultPart::kNone) return "it takes no step";
  const auto found = std::find(steps.begin(), steps.end(), *parts.step);
  if (found == steps.end()) {
    return "there is no step " + quoted(*parts.step) + " (there are " + listOf(steps) + ")";
  }
  reading.step = static_cast<std::size_t>(found - steps.begin());
  return {};
}

std::string readArgument(const FaultForm& form, const FaultText& parts, FaultReading& reading) {
  const std::string what = form.takesWords ? "words" : "a number";
  if (!parts.argument) {
    return form.argumentPart == FaultPart::kNeeded ? "it needs " + what : "";
  }
  if (form.argumentPart == FaultPart::kNone) return "it takes no number";
  if (form.takesWords) {
    if (parts.argument->empty()) return "it needs " + what;
    reading.words = parts.argument;
    return {};
  }
  reading.number = parseNumber(*parts.argument);
  if (!reading.number || *reading.number < form.least || *reading.number > form.most) {
    return quoted(*parts.argument) + " is not a number from " + std::to_string(form.least) +
           " to " + std::to_string(form.most);
  }
  return {};
}

}  // namespace

FaultReading readFault(std::span<const FaultForm> forms, std::span<const std::string_view> steps,
                       std::string_view text) {
  FaultReading reading;
  const FaultText parts = split(text);
  const auto form = std::find_if(forms.begin(), forms.end(),
                                 [&](const FaultForm& row) { return row.name == parts.name; });
  if (form == forms.end()) {
    reading.error = "unknown fault " + quoted(text) + "; there are " + listOf(forms);
    return reading;
  }
  reading.row = static_cast<std::size_t>(form - forms.begin());
  std::string wrong = readStep(*form, parts, steps, reading);
  if (wrong.empty()) wrong = readArgument(*form, parts, reading);
  if (!wrong.empty()) reading.error = faultError(*form, text, wrong);
  return reading;
}

std::string faultError(const FaultForm& form, std::string_view text, std::string_view wrong) {
  std::string error = "fault " + quoted(text) + ": ";
  error += wrong;
  error += "; it is written ";
  error += form.form;
  return error;
}

std::string faultHelp(std::span<const FaultForm> forms, std::span<const std::string_view> steps) {
  std::size_t widest = 0;
  for (const FaultForm& form : forms)
    widest = std::max(widest, form.form.size());
  std::string help;
  for (const FaultForm& form : forms) {
    help += form.form;
    help.append(widest + 2 - form.form.size(), ' ');
    help += form.help;
    help += '\n';
  }
  help += "STEP is one of " + listOf(steps) + ".\n";
  help += "Numbers are decimal, or hexadecimal with 0x.\n";
  return help;
}

}  // namespace tvrscn::virtual_device
