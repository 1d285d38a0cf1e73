#include "table.h"

#include <algorithm>
#include <cstddef>

namespace tvrscn::cli {

void printTable(Console& console, const std::vector<TableRow>& rows) {
  constexpr std::size_t kGap = 2;
  std::vector<std::size_t> widths;
  for (const TableRow& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t column = 0; column < row.size(); ++column)
      widths[column] = std::max(widths[column], row[column].size());
  }
  for (const TableRow& row : rows) {
    std::string line;
    std::size_t end = 0;
    for (std::size_t column = 0; column < row.size(); ++column) {
      line.resize(end, ' ');
      line += row[column];
      end += widths[column] + kGap;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    console.data(line);
  }
}

}  // namespace tvrscn::cli
