#include "job_report.h"

namespace tvrscn::cli {

void JobReport::onScanThrew(const std::string& what) {
  cause_ = Outcome{ExitCode::kFailed, what, {}, {}, {}};
}

void JobReport::onPageLost(const std::string& problem, const std::string& remedy) {
  loseTo({ExitCode::kOutput, problem, remedy, {}, {}});
}

void JobReport::onFileUnusable(const std::string& problem, bool /*hadRoom*/) {
  onPageLost(problem, kRoomRemedy);
}

void JobReport::loseAsDelivered(const std::string& problem, bool hadRoom) {
  if (!hadRoom) {
    onPageLost(problem, kRoomRemedy);
    return;
  }
  loseTo({ExitCode::kDeviceFailed,
          problem,
          "The device sent no picture, or not all of one: scan that page again.",
          "data that are no whole picture",
          {}});
}

void JobReport::loseTo(const Outcome& outcome) {
  if (!lost_) lost_ = outcome;
}

std::optional<Outcome> JobReport::whatWentWrong(
    std::initializer_list<const std::optional<Outcome>*> further) const {
  std::vector<const std::optional<Outcome>*> all = {&cause_, &lost_};
  all.insert(all.end(), further.begin(), further.end());
  std::optional<Outcome> worst;
  for (const std::optional<Outcome>* found : all) {
    if (!*found) continue;
    if (worst) {
      worst->notes.push_back((*found)->what);
    } else {
      worst = *found;
    }
  }
  return worst;
}

std::string plainText(const wchar_t* line) {
  std::string text;
  for (; *line != L'\0'; ++line) {
    const bool ascii = *line > 0 && *line < 0x80;
    text += ascii ? static_cast<char>(*line) : '?';
  }
  return text;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

}  // namespace tvrscn::cli
