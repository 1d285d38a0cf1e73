// From the attributes of a device to the alerts that a caller gets.
#include "platform/tdspclient/alert_list.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tvrscn {
namespace {

using Lines = std::vector<std::string>;

Lines alertLines(const PrinterStatus& status) {
  Lines lines;
  for (const AlertStatus& alert : alertsOf(status))
    lines.push_back(alert.keyword + "|" + alert.severity + "|" + alert.description);
  return lines;
}

PrinterStatus withReasons(const Lines& reasons) {
  PrinterStatus status;
  status.reasons = reasons;
  return status;
}

TEST(AlertList, DeviceThatIsWellHasNone) {
  EXPECT_EQ(alertLines({}), Lines{});
  EXPECT_EQ(alertLines(withReasons({"none"})), Lines{});
  EXPECT_EQ(alertLines({3, {"none", ""}, {}, {}}), Lines{});
  EXPECT_EQ(alertLines({4, {"none"}, {}, {}}), Lines{});
}

TEST(AlertList, EndingOfAReasonIsItsSeverity) {
  EXPECT_EQ(alertLines(withReasons({"media-jam-error", "cover-open-warning", "toner-low-report",
                                    "input-tray-missing", "-error", "error"})),
            (Lines{"media-jam|error|", "cover-open|warning|", "toner-low|report|",
                   "input-tray-missing|error|", "-error|error|", "error|error|"}));
}

TEST(AlertList, DeviceThatStandsStillWithoutACauseIsStopped) {
  EXPECT_EQ(alertLines({kPrinterStopped, {"none"}, {}, {}}), Lines{"stopped|error|"});
  EXPECT_EQ(alertLines({kPrinterStopped, {"media-jam"}, {}, {}}), Lines{"media-jam|error|"});
}

TEST(AlertList, AlertOfTheSameMeaningDescribesItsReason) {
  PrinterStatus status =
      withReasons({"cover-open-warning", "media-jam-error", "media-empty", "media-low-report",
                   "toner-empty", "output-area-full", "toner-low", "input-tray-missing"});
  status.alerts = {"code=jam;severity=critical",
                   "index=3;code=coverOpen;severity=critical",
                   "severity=critical;group=input;code=inputMediaSupplyEmpty",
                   "code=inputMediaSupplyLow",
                   "code=markerTonerEmpty",
                   "code=outputMediaTrayFull",
                   "code=markerTonerAlmostEmpty",
                   "code=inputMediaTrayMissing"};
  status.descriptions = {"jam", "cover", "empty", "low", "toner", "full", "tonerlow", "tray"};
  EXPECT_EQ(alertLines(status),
            (Lines{"cover-open|warning|cover", "media-jam|error|jam", "media-empty|error|empty",
                   "media-low|report|low", "toner-empty|error|toner", "output-area-full|error|full",
                   "toner-low|error|tonerlow", "input-tray-missing|error|tray"}));
}

TEST(AlertList, AlertsThatNoReasonTellsFollowWhenTheyMatter) {
  PrinterStatus status = withReasons({"media-jam"});
  status.alerts = {"code=scanMediaPathJam;severity=critical",
                   "code=subunitMissing;severity=warning",
                   "code=coverClosed;severity=binaryChangeEvent",
                   "code=x;severity=other",
                   "code=y",
                   "severity=critical",
                   "",
                   "xcode=jam;severity=warning"};
  status.descriptions = {"feeder", "unit"};
  EXPECT_EQ(alertLines(status),
            (Lines{"media-jam|error|", "scan-media-path-jam|error|feeder",
                   "subunit-missing|warning|unit", "other|error|", "other|warning|"}));
}

TEST(AlertList, SecondAlertOfAKeywordIsOneMore) {
  PrinterStatus status = withReasons({"media-jam-warning"});
  status.alerts = {"code=jam;severity=warning", "code=jam;severity=critical"};
  status.descriptions = {"tray 1", "tray 2"};
  EXPECT_EQ(alertLines(status), (Lines{"media-jam|warning|tray 1", "media-jam|error|tray 2"}));
}

TEST(AlertList, DescriptionsWithoutAlertsGoToTheReasonsInTurn) {
  PrinterStatus status = withReasons({"other", "media-jam"});
  status.descriptions = {"first", "second", "third"};
  EXPECT_EQ(alertLines(status), (Lines{"other|error|first", "media-jam|error|second"}));
}

TEST(AlertList, TextsAreOneShortLine) {
  PrinterStatus status = withReasons({"media\njam"});
  status.descriptions = {
      "a\r\nb\tc\x7F"
      "d"};
  EXPECT_EQ(alertLines(status), Lines{"media jam|error|a  b c d"});
  // 1022 bytes and one character of two bytes do not fit into 1023.
  status.descriptions = {std::string(1022, 'x') +
                         "\xC3\xA4"
                         "z"};
  EXPECT_EQ(alertsOf(status)[0].description, std::string(1022, 'x'));
  status.descriptions = {std::string(1021, 'x') +
                         "\xC3\xA4"
                         "z"};
  EXPECT_EQ(alertsOf(status)[0].description, std::string(1021, 'x') + "\xC3\xA4");
  // Bytes that are no text at all.
  status.descriptions = {std::string(2000, '\x80')};
  EXPECT_EQ(alertsOf(status)[0].description, "");
}

TEST(PrinterStatus, KeepsWhatWasAskedForUpToABound) {
  PrinterStatus status;
  keepText(status, "printer-name", "x");
  for (int number = 0; number < 100; ++number) {
    keepText(status, "printer-state-reasons", std::to_string(number));
    keepText(status, "printer-alert", "a");
  }
  keepText(status, "printer-alert-description", "d");
  ASSERT_EQ(status.reasons.size(), 64U);
  EXPECT_EQ(status.reasons[63], "63");
  EXPECT_EQ(status.alerts.size(), 64U);
  EXPECT_EQ(status.descriptions, Lines{"d"});
}

}  // namespace
}  // namespace tvrscn
