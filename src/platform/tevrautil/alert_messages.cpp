// Texts, keywords and words of the families stand in alert_messages.def.
#include "platform/tevrautil/alert_messages.h"

#include <cstddef>
#include <limits>

#include "platform/identity_text.h"

namespace tvrscn {
namespace {

enum AlertText : unsigned {
#define ALERT_TEXT(resource, name, text) name = (resource),
#include "platform/tevrautil/alert_messages.def"
};

struct TextRow {
  AlertText name;
  const wchar_t* text;
};
constexpr TextRow kTexts[] = {
#define ALERT_TEXT(resource, name, text) {name, L##text},
#include "platform/tevrautil/alert_messages.def"
};

struct KeywordRow {
  std::string_view keyword;
  AlertText name;
};
constexpr KeywordRow kKeywords[] = {
#define ALERT_KEYWORD(keyword, name) {keyword, name},
#include "platform/tevrautil/alert_messages.def"
};
constexpr std::size_t kKeywordCount = std::size(kKeywords);

struct FamilyRow {
  std::string_view family;
  const wchar_t* feeder;
  const wchar_t* glass;
  const wchar_t* display;
};
constexpr FamilyRow kFamilies[] = {
#define ALERT_FAMILY(family, feeder, glass, display) {family, L##feeder, L##glass, L##display},
#include "platform/tevrautil/alert_messages.def"
};

// Device texts are UTF-8.
std::wstring widened(const std::string& text) {
  if (text.empty() || text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    return {};
  }
  const int length = static_cast<int>(text.size());
  const int needed = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
  if (needed <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(needed), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), needed);
  return wide;
}

// The smaller, the more severe; an alert that tells no severity is an error.
int severityRank(std::string_view severity) {
  if (severity == "report") return 2;
  return severity == "warning" ? 1 : 0;
}

// Where a keyword stands in the table; behind all of them when it does not.
std::size_t keywordRank(std::string_view keyword) {
  std::size_t rank = 0;
  while (rank < kKeywordCount && kKeywords[rank].keyword != keyword)
    ++rank;
  return rank;
}

bool saysSomething(const AlertStatus& alert) {
  if (alert.keyword == "none") return false;
  return !alert.keyword.empty() || !alert.description.empty();
}

bool isMoreUrgent(const AlertStatus& alert, const AlertStatus& other) {
  const int severity = severityRank(alert.severity);
  const int otherSeverity = severityRank(other.severity);
  if (severity != otherSeverity) return severity < otherSeverity;
  return keywordRank(alert.keyword) < keywordRank(other.keyword);
}

// The first of the most urgent; null when none says anything.
const AlertStatus* mostUrgent(const std::vector<AlertStatus>& alerts) {
  const AlertStatus* chosen = nullptr;
  for (const AlertStatus& alert : alerts) {
    if (!saysSomething(alert)) continue;
    if (chosen == nullptr || isMoreUrgent(alert, *chosen)) chosen = &alert;
  }
  return chosen;
}

const FamilyRow& wordsOf(std::string_view family) {
  const FamilyRow* row = kFamilies;
  while (row->family != family && !row->family.empty())
    ++row;
  return *row;
}

std::wstring textOf(std::string_view keyword) {
  const std::size_t rank = keywordRank(keyword);
  const AlertText name = rank < kKeywordCount ? kKeywords[rank].name : kUnknown;
  for (const TextRow& row : kTexts) {
    if (row.name == name) return row.text;
  }
  return {};
}

void replaceAll(std::wstring& text, std::wstring_view placeholder, std::wstring_view words) {
  for (std::size_t at = text.find(placeholder); at != std::wstring::npos;
       at = text.find(placeholder, at + words.size())) {
    text.replace(at, placeholder.size(), words);
  }
}

// The device's own words for an alert, without the stop that our sentence has.
std::wstring ownWords(const AlertStatus& alert) {
  std::wstring words = widened(alert.description.empty() ? alert.keyword : alert.description);
  while (!words.empty() && (words.back() == L'.' || words.back() == L' '))
    words.pop_back();
  return words;
}

}  // namespace

std::wstring alertMessage(const std::vector<AlertStatus>& alerts, std::string_view family) {
  const AlertStatus* const alert = mostUrgent(alerts);
  if (alert == nullptr) return {};
  const FamilyRow& words = wordsOf(family);
  std::wstring message = textOf(alert->keyword);
  replaceAll(message, L"{feeder}", words.feeder);
  replaceAll(message, L"{glass}", words.glass);
  replaceAll(message, L"{display}", words.display);
  // Last, since a device may write what it likes.
  replaceAll(message, L"{alert}", ownWords(*alert));
  return message;
}

}  // namespace tvrscn
