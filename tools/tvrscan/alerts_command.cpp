// What a device on the network says about itself. Its texts are not to be trusted: control
// characters do not reach the terminal.
#include <algorithm>
#include <string>
#include <vector>

#include "tvrscn/tdspclient/scan_tdsp_client.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"

#include "commands.h"
#include "console.h"
#include "device_model.h"
#include "json_output.h"
#include "reporter.h"
#include "table.h"
#include "wide_text.h"
#include "words.h"

namespace tvrscn::cli {
namespace {

using Alerts = std::vector<AlertStatus>;

// The host in "scheme://host", or the whole text.
std::string hostOf(const std::string& address) {
  const std::size_t slashes = address.find("//");
  return slashes == std::string::npos ? address : address.substr(slashes + 2);
}

// What is neither of the lesser severities counts as an error.
bool isError(const AlertStatus& alert) {
  return alert.severity != "warning" && alert.severity != "report";
}
bool isWarning(const AlertStatus& alert) {
  return alert.severity == "warning";
}

std::string messageOf(Alerts& alerts, const std::string& family) {
  std::wstring message;
  CErrorCodeDictionary().GetErrorString(alerts, family, message);
  return printableText(utf8(message));
}

void printAlerts(Console& console, const Alerts& alerts, bool json) {
  std::vector<TableRow> rows;
  for (const AlertStatus& alert : alerts) {
    if (json) {
      console.data(alertLine(alert));
    } else {
      rows.push_back({printableText(alert.severity), printableText(alert.keyword),
                      printableText(alert.description)});
    }
  }
  printTable(console, rows);
}

Outcome notReached(const std::string& address) {
  return {ExitCode::kNoDevice,
          "no device answers at '" + printableText(address) + "'",
          "Check the address (HOST, HOST:PORT or SCHEME://HOST), and that the device is switched "
          "on and speaks IPP.",
          "",
          {}};
}

// A device that only warns or reports can scan.
Outcome outcomeOf(Alerts& alerts, const std::string& family) {
  if (alerts.empty()) return {ExitCode::kDone, "nothing is wrong with the device", "", "", {}};
  const std::string message = messageOf(alerts, family);
  if (std::any_of(alerts.begin(), alerts.end(), isError)) {
    return {ExitCode::kRefused, "the device reports an error", message, "", {}};
  }
  if (std::any_of(alerts.begin(), alerts.end(), isWarning)) {
    return {ExitCode::kAttention, "the device works, and warns of something", message, "", {}};
  }
  return {ExitCode::kDone, "the device works, and has something to report", message, "", {}};
}

}  // namespace

int runAlerts(const AlertsOptions& options) {
  // Before the device is asked: a model that does not exist need not wait for it.
  const std::string family =
      options.model ? namedModel("--model", *options.model).ControllerFamily : options.family;
  Console console(options.quiet);
  Reporter reporter(console, options.json);
  Alerts alerts;
  if (!CScanTDSPClient().GetDeviceStatus(widened(hostOf(options.address)).c_str(), alerts)) {
    return reporter.end(notReached(options.address));
  }
  printAlerts(console, alerts, options.json);
  const Outcome outcome = outcomeOf(alerts, family);
  if (outcome.code != ExitCode::kDone) return reporter.end(outcome);
  // Not by the reporter, which tells of pages where all went well.
  if (options.json) console.data(endLine(outcome, {}));
  console.note(outcome.what + (outcome.remedy.empty() ? "" : ": " + outcome.remedy));
  return static_cast<int>(outcome.code);
}

}  // namespace tvrscn::cli
