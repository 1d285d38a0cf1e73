// How people write faults: a name, then "@" and a step, then "=" and a number or words. What may
// stand behind which name is a table of each device.
#ifndef TVRSCN_VIRTUAL_COMMON_FAULT_SPELLING_H
#define TVRSCN_VIRTUAL_COMMON_FAULT_SPELLING_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tvrscn::virtual_device {

// The largest numbers that make sense behind the faults of any device.
inline constexpr std::uint32_t kMostFaultPages = 9999;
inline constexpr std::uint32_t kMostFaultCounts = 1000000;
inline constexpr std::uint32_t kMostFaultMilliseconds = 600000;
inline constexpr std::uint32_t kMostFaultBytes = std::numeric_limits<std::uint32_t>::max();

enum class FaultPart { kNone, kOptional, kNeeded };

struct FaultForm {
  std::string_view name;
  FaultPart stepPart = FaultPart::kNone;
  FaultPart argumentPart = FaultPart::kNone;
  std::uint32_t least = 0;  // of a number
  std::uint32_t most = 0;
  std::string_view form;  // "busy@STEP[=N]"
  std::string_view help;
  bool takesWords = false;  // the argument is words, not a number
};

// What a text says. With an error, which tells what is wrong and what could stand there, the rest
// says nothing.
struct FaultReading {
  std::string error;
  std::size_t row = 0;  // in the table
  std::optional<std::size_t> step;
  std::optional<std::uint32_t> number;
  std::optional<std::string_view> words;
};

FaultReading readFault(std::span<const FaultForm> forms, std::span<const std::string_view> steps,
                       std::string_view text);

// The error for a text whose form is right and whose content is not.
std::string faultError(const FaultForm& form, std::string_view text, std::string_view wrong);

// A help page of all forms.
std::string faultHelp(std::span<const FaultForm> forms, std::span<const std::string_view> steps);

// The forms of a table whose rows have a member `form`.
template <typename Rows>
std::vector<FaultForm> faultForms(const Rows& rows) {
  std::vector<FaultForm> forms;
  for (const auto& row : rows)
    forms.push_back(row.form);
  return forms;
}

}  // namespace tvrscn::virtual_device

#endif  // TVRSCN_VIRTUAL_COMMON_FAULT_SPELLING_H
