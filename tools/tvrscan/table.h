// Rows of texts in columns, on standard output.
#ifndef TVRSCN_TOOLS_TVRSCAN_TABLE_H
#define TVRSCN_TOOLS_TVRSCAN_TABLE_H

#include <string>
#include <vector>

#include "console.h"

namespace tvrscn::cli {

using TableRow = std::vector<std::string>;

// Columns are as wide as their longest text, two blanks apart; no line ends in blanks.
void printTable(Console& console, const std::vector<TableRow>& rows);

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_TABLE_H
