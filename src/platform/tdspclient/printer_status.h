// What a device says about its state, as it stands in its answer.
#ifndef TVRSCN_PLATFORM_TDSPCLIENT_PRINTER_STATUS_H
#define TVRSCN_PLATFORM_TDSPCLIENT_PRINTER_STATUS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tvrscn {

constexpr std::int32_t kPrinterStopped = 5;  // of printer-state

// Bounds on what an answer may hold: bytes in all, values of one attribute.
constexpr std::size_t kMaxAnswerSize = 256U * 1024U;
constexpr std::size_t kMaxStatusValues = 64;

struct PrinterStatus {
  std::int32_t state = 0;                 // printer-state; 0 when it was not told
  std::vector<std::string> reasons;       // printer-state-reasons, "media-jam-error"
  std::vector<std::string> alerts;        // printer-alert, "code=jam;severity=critical"
  std::vector<std::string> descriptions;  // printer-alert-description, one for each alert
};

// The attributes that are asked for.
constexpr const char* kStateAttribute = "printer-state";
constexpr const char* kReasonsAttribute = "printer-state-reasons";
constexpr const char* kAlertAttribute = "printer-alert";
constexpr const char* kDescriptionAttribute = "printer-alert-description";
constexpr const char* kStatusAttributes[] = {kStateAttribute, kReasonsAttribute, kAlertAttribute,
                                             kDescriptionAttribute};

// Puts a text of an attribute where it belongs. Attributes that nobody asked for, and values beyond
// the bound, are left out.
void keepText(PrinterStatus& status, std::string_view attribute, std::string_view text);

}  // namespace tvrscn

#endif  // TVRSCN_PLATFORM_TDSPCLIENT_PRINTER_STATUS_H
