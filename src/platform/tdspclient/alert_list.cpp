#include "platform/tdspclient/alert_list.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace tvrscn {
namespace {

constexpr const char* kError = "error";
constexpr const char* kWarning = "warning";
constexpr const char* kReport = "report";

// Longest texts of keywords and descriptions; a device that says more is cut.
constexpr std::size_t kMaxTextLength = 1023;

// Alert codes whose keyword is not the code itself in other letters.
constexpr struct {
  std::string_view code;
  std::string_view keyword;
} kCodeKeywords[] = {
    {"jam", "media-jam"},
    {"inputMediaSupplyEmpty", "media-empty"},
    {"inputMediaSupplyLow", "media-low"},
    {"inputMediaTrayMissing", "input-tray-missing"},
    {"markerTonerEmpty", "toner-empty"},
    {"markerTonerAlmostEmpty", "toner-low"},
    {"outputMediaTrayFull", "output-area-full"},
};

// One line without control characters, no longer than the bound and not cut within a character.
std::string plainText(std::string_view text) {
  constexpr unsigned kSpace = 0x20;
  constexpr unsigned kDelete = 0x7F;
  constexpr unsigned kContinuationMask = 0xC0;
  constexpr unsigned kContinuation = 0x80;
  const auto byteAt = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  if (text.size() > kMaxTextLength) {
    std::size_t end = kMaxTextLength;
    while (end > 0 && (byteAt(end) & kContinuationMask) == kContinuation)
      --end;
    text = text.substr(0, end);
  }
  std::string plain(text);
  std::replace_if(
      plain.begin(), plain.end(),
      [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte < kSpace || byte == kDelete;
      },
      ' ');
  return plain;
}

AlertStatus alertOfReason(std::string_view reason) {
  for (const char* severity : {kError, kWarning, kReport}) {
    const std::string ending = std::string("-") + severity;
    if (reason.size() > ending.size() && reason.ends_with(ending)) {
      reason.remove_suffix(ending.size());
      return {plainText(reason), severity, ""};
    }
  }
  return {plainText(reason), kError, ""};
}

// The value of one "name=value" of an alert; empty when it has none.
std::string_view partOf(std::string_view alert, std::string_view name) {
  while (!alert.empty()) {
    const std::size_t end = std::min(alert.find(';'), alert.size());
    const std::string_view part = alert.substr(0, end);
    if (part.size() > name.size() && part.starts_with(name) && part[name.size()] == '=') {
      return part.substr(name.size() + 1);
    }
    alert.remove_prefix(std::min(end + 1, alert.size()));
  }
  return {};
}

// "coverOpen" is the reason "cover-open".
std::string keywordOfCode(std::string_view code) {
  for (const auto& row : kCodeKeywords) {
    if (row.code == code) return std::string(row.keyword);
  }
  std::string keyword;
  for (const char character : plainText(code)) {
    const bool capital = character >= 'A' && character <= 'Z';
    if (capital && !keyword.empty()) keyword += '-';
    keyword += capital ? static_cast<char>(character - 'A' + 'a') : character;
  }
  return keyword.empty() ? "other" : keyword;
}

// What is neither critical nor a warning tells of changes, not of something wrong.
const char* severityOfAlert(std::string_view alert) {
  const std::string_view severity = partOf(alert, "severity");
  if (severity == "critical") return kError;
  return severity == "warning" ? kWarning : kReport;
}

using Alerts = std::vector<AlertStatus>;

// The first of so many alerts that has no description and for which a test holds.
template <typename Test>
AlertStatus* undescribed(Alerts& alerts, std::size_t count, Test test) {
  for (std::size_t number = 0; number < count; ++number) {
    AlertStatus& alert = alerts[number];
    if (alert.description.empty() && test(alert)) return &alert;
  }
  return nullptr;
}

// Describes one of the alerts that the reasons gave, or is an alert of its own.
void addPrinterAlert(Alerts& alerts, std::size_t reasons, std::string_view text,
                     const std::string& description) {
  const std::string keyword = keywordOfCode(partOf(text, "code"));
  const auto sameKeyword = [&](const AlertStatus& alert) { return alert.keyword == keyword; };
  if (AlertStatus* alert = undescribed(alerts, reasons, sameKeyword)) {
    alert->description = description;
    return;
  }
  const std::string severity = severityOfAlert(text);
  if (severity != kReport) alerts.push_back({keyword, severity, description});
}

}  // namespace

std::vector<AlertStatus> alertsOf(const PrinterStatus& status) {
  Alerts alerts;
  for (const std::string& reason : status.reasons) {
    if (!reason.empty() && reason != "none") alerts.push_back(alertOfReason(reason));
  }
  const std::size_t reasons = alerts.size();
  const std::vector<std::string>& descriptions = status.descriptions;
  for (std::size_t number = 0; number < status.alerts.size(); ++number) {
    const bool described = number < descriptions.size();
    addPrinterAlert(alerts, reasons, status.alerts[number],
                    described ? plainText(descriptions[number]) : std::string());
  }
  // Some devices describe and name no code: their texts go to the reasons in turn.
  for (std::size_t number = status.alerts.size(); number < descriptions.size(); ++number) {
    AlertStatus* const alert =
        undescribed(alerts, reasons, [](const AlertStatus&) { return true; });
    if (alert != nullptr) alert->description = plainText(descriptions[number]);
  }
  if (alerts.empty() && status.state == kPrinterStopped) alerts.push_back({"stopped", kError, ""});
  return alerts;
}

}  // namespace tvrscn
