// A plain value. Its special members stand here so that they are exported.
#include "tvrscn/tevrautil/scan_ui_data.h"

TevraScanUIData::TevraScanUIData() : pageWidth(0), pageHeight(0) {}
TevraScanUIData::TevraScanUIData(const TevraScanUIData& other) = default;
TevraScanUIData& TevraScanUIData::operator=(const TevraScanUIData& other) = default;
TevraScanUIData::~TevraScanUIData() = default;
