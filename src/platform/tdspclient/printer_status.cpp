#include "platform/tdspclient/printer_status.h"

namespace tvrscn {
namespace {

std::vector<std::string>* textsOf(PrinterStatus& status, std::string_view attribute) {
  if (attribute == kReasonsAttribute) return &status.reasons;
  if (attribute == kAlertAttribute) return &status.alerts;
  if (attribute == kDescriptionAttribute) return &status.descriptions;
  return nullptr;
}

}  // namespace

void keepText(PrinterStatus& status, std::string_view attribute, std::string_view text) {
  std::vector<std::string>* const texts = textsOf(status, attribute);
  if (texts != nullptr && texts->size() < kMaxStatusValues) texts->emplace_back(text);
}

}  // namespace tvrscn
