// The answer of a device to the status question, down to the sentence that a user is shown.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/tdspclient/alert_list.h"
#include "platform/tdspclient/ipp/ipp_message.h"
#include "platform/tdspclient/printer_status.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"

namespace {

using tvrscn::kMaxStatusValues;
using tvrscn::PrinterStatus;
using tvrscn::Reply;

void require(bool holds) {
  if (!holds) std::abort();
}

bool isUntouched(const PrinterStatus& status) {
  return status.state == -1 && status.reasons.empty() && status.alerts.empty() &&
         status.descriptions.empty();
}

void checkAlert(const AlertStatus& alert) {
  constexpr std::size_t kLongest = 1023;
  // The letters of a code may each get a hyphen in front.
  require(!alert.keyword.empty() && alert.keyword.size() <= 2 * kLongest);
  require(alert.severity == "error" || alert.severity == "warning" || alert.severity == "report");
  require(alert.description.size() <= kLongest);
  for (const char character : alert.keyword + alert.description)
    require(static_cast<unsigned char>(character) >= 0x20U);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);
  PrinterStatus status;
  status.state = -1;
  const Reply reply = tvrscn::decodeStatusAnswer(bytes, status);
  require(reply == Reply::kStatus || isUntouched(status));
  require(status.reasons.size() <= kMaxStatusValues && status.alerts.size() <= kMaxStatusValues &&
          status.descriptions.size() <= kMaxStatusValues);

  std::vector<AlertStatus> alerts = tvrscn::alertsOf(status);
  require(alerts.size() <= 2 * kMaxStatusValues);
  for (const AlertStatus& alert : alerts)
    checkAlert(alert);
  CErrorCodeDictionary dictionary;
  std::wstring message;
  dictionary.GetErrorString(alerts, "LOWEND", message);
  require(message.empty() || message.back() == L'.');
  return 0;
}
