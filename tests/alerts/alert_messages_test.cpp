// The sentence for a device's alerts.
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tvrscn/tevrautil/error_code_dictionary.h"

namespace tvrscn {
namespace {

std::wstring messageFor(std::vector<AlertStatus> alerts, const char* family = "") {
  CErrorCodeDictionary dictionary;
  std::wstring message = L"old";
  dictionary.GetErrorString(alerts, family, message);
  return message;
}

std::wstring messageOf(const char* keyword, const char* family = "") {
  return messageFor({{keyword, "error", ""}}, family);
}

TEST(AlertMessages, NothingToSayGivesNoMessage) {
  EXPECT_EQ(messageFor({}), L"");
  EXPECT_EQ(messageFor({{"", "error", ""}}), L"");
  EXPECT_EQ(messageFor({{"none", "error", "x"}, {"none", "", ""}}), L"");
}

TEST(AlertMessages, KeywordGivesWhatIsWrongAndWhatToDo) {
  const struct {
    const char* keyword;
    const wchar_t* beginning;
  } kCases[] = {
      {"scan-media-path-jam", L"Paper is jammed in the document feeder. Open "},
      {"adf-jam", L"Paper is jammed in the document feeder. Open "},
      {"scan-media-path-input-feed-error", L"The document feeder cannot draw in "},
      {"scan-media-path-output-full", L"The output of the document feeder is full. "},
      {"scanner-cover-open", L"A cover of the scanner is open. Close "},
      {"scan-media-path-input-empty", L"There is no document in the document feeder. Load "},
      {"scanner-light-failure", L"The scanner's lamp has failed. Switch "},
      {"scanner-lamp", L"The scanner's lamp has failed. Switch "},
      {"lamp-near-eol", L"The scanner's lamp is near the end of its life. You can "},
      {"scanner-sensor-failure", L"The scanner has a fault. Switch "},
      {"scanner-busy", L"The scanner is busy with another job. Wait "},
      {"media-jam", L"Paper is jammed in the device. Follow the display of the device "},
      {"cover-open", L"A cover or door of the device is open. Close "},
      {"media-empty", L"A paper tray of the device is empty. Load "},
      {"input-tray-missing", L"A paper tray of the device is missing. Push "},
      {"toner-empty", L"The toner or ink of the device is used up. Replace "},
      {"output-area-full", L"The output tray of the device is full. Take "},
      {"stopped", L"The device is stopped. Follow "},
      {"media-low", L"Paper, toner or ink of the device is running low. You can "},
  };
  for (const auto& row : kCases) {
    const std::wstring message = messageOf(row.keyword);
    EXPECT_TRUE(message.starts_with(row.beginning)) << row.keyword;
    EXPECT_TRUE(message.ends_with(L".")) << row.keyword;
    EXPECT_EQ(message.find(L'{'), std::wstring::npos) << row.keyword;
  }
}

TEST(AlertMessages, FamiliesHaveTheirOwnWords) {
  const struct {
    const char* family;
    const wchar_t* feeder;
    const wchar_t* glass;
    const wchar_t* display;
  } kCases[] = {
      {"MERIDIAN", L"document feeder", L"document glass", L"touch screen"},
      {"LANTERN", L"automatic document feeder", L"document glass", L"control panel"},
      {"HARBOR", L"document handler", L"document glass", L"touch screen"},
      {"AMBER", L"automatic document feeder", L"scanner glass", L"touch screen"},
      {"LOWEND", L"automatic document feeder", L"scanner glass", L"display"},
      {"", L"document feeder", L"glass of the scanner", L"display of the device"},
      {"lowend", L"document feeder", L"glass of the scanner", L"display of the device"},
  };
  for (const auto& row : kCases) {
    EXPECT_EQ(messageOf("feeder-empty", row.family),
              std::wstring(L"There is no document in the ") + row.feeder +
                  L". Load your document, or lay it on the " + row.glass + L", then scan again.");
    EXPECT_EQ(messageOf("paused", row.family), std::wstring(L"The device is stopped. Follow the ") +
                                                   row.display +
                                                   L" to make it ready, then scan again.");
  }
}

TEST(AlertMessages, MostSevereAlertIsTold) {
  const std::wstring jam = messageOf("media-jam");
  EXPECT_EQ(messageFor({{"adf-jam", "report", ""},
                        {"adf-jam", "warning", ""},
                        {"media-jam", "error", ""},
                        {"none", "error", ""}}),
            jam);
  EXPECT_EQ(messageFor({{"adf-jam", "report", ""}, {"media-jam", "warning", ""}}), jam);
  // Without a severity it is an error.
  EXPECT_EQ(messageFor({{"adf-jam", "warning", ""}, {"media-jam", "", ""}}), jam);
}

TEST(AlertMessages, OfOneSeverityScannerAndFeederComeFirst) {
  const char* const kOrder[] = {"feeder-jam",   "adf-cover-open", "adf-empty", "lamp-failure",
                                "scanner-busy", "media-jam",      "unheard-of"};
  std::vector<AlertStatus> alerts;
  for (const char* keyword : kOrder)
    alerts.insert(alerts.begin(), {keyword, "error", ""});
  for (const char* keyword : kOrder) {
    EXPECT_EQ(messageFor(alerts), messageOf(keyword)) << keyword;
    alerts.pop_back();
  }
}

TEST(AlertMessages, OtherwiseTheFirstOneComesFirst) {
  EXPECT_EQ(messageFor({{"b", "error", ""}, {"a", "error", ""}}), messageOf("b"));
}

TEST(AlertMessages, UnknownKeywordGivesTheDevicesOwnWords) {
  EXPECT_EQ(messageFor({{"k", "error", "Tray 2 f\xC3\xA4hrt"}}, "LANTERN"),
            L"The device reports: Tray 2 f\u00E4hrt. Follow the control panel to clear this, then "
            L"scan again.");
  EXPECT_EQ(messageOf("fuser-over-temp", "LOWEND"),
            L"The device reports: fuser-over-temp. Follow the display to clear this, then scan "
            L"again.");
  EXPECT_EQ(messageFor({{"", "warning", "Call 555. "}}, "AMBER"),
            L"The device reports: Call 555. Follow the touch screen to clear this, then scan "
            L"again.");
}

TEST(AlertMessages, DeviceCannotFillInOurPlaceholders) {
  EXPECT_EQ(messageFor({{"k", "error", "{feeder} {alert} {display}"}}, "LOWEND"),
            L"The device reports: {feeder} {alert} {display}. Follow the display to clear this, "
            L"then scan again.");
}

TEST(AlertMessages, BrokenUtf8BecomesReplacementCharacters) {
  EXPECT_TRUE(messageFor({{"", "", "\xFF"}}).starts_with(L"The device reports: \uFFFD. "));
}

}  // namespace
}  // namespace tvrscn
