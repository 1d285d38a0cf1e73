// One JSON object a line, for programs that read what tvrscan does.
#ifndef TVRSCN_TOOLS_TVRSCAN_JSON_OUTPUT_H
#define TVRSCN_TOOLS_TVRSCAN_JSON_OUTPUT_H

#include <string>
#include <vector>

#include "tvrscn/product_data.h"
#include "tvrscn/tevrautil/error_code_dictionary.h"
#include "tvrscn/usb_controller.h"

#include "device_list.h"
#include "job_report.h"
#include "page_store.h"

namespace tvrscn::cli {

std::string deviceLine(const Device& device, const std::string& family);
// Everything that the catalogue has of a model.
std::string modelLine(const ProductData& product);
std::string alertLine(const AlertStatus& alert);
std::string pageLine(const StoredPage& page);
// larger is what a larger value makes the page.
std::string rangeLine(const std::string& name, const std::string& larger,
                      const IPPMinMaxNormalStepData& range);
std::string endLine(const Outcome& outcome, const std::vector<StoredPage>& pages);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_JSON_OUTPUT_H
