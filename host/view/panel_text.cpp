#include "host/view/panel_text.h"

#include <algorithm>
#include <string_view>

#include "host/text/text_width.h"

namespace pelagrim_host {
namespace {

bool looksNumeric(std::string_view text) {
  return !text.empty() && ((text[0] >= '0' && text[0] <= '9') || text[0] == '-' || text[0] == '+');
}

}  // namespace

bool isTableRow(const PanelRow& row) {
  return row.kind != kRowSummary && row.kind != kRowWarning;
}

std::vector<TableColumn> tableColumns(const Panel& panel) {
  std::vector<TableColumn> columns;
  for (const std::string& title : panel.columns) columns.push_back({textWidth(title)});
  for (const PanelRow& row : panel.rows) {
    if (!isTableRow(row)) continue;
    for (size_t i = 0; i < std::min(columns.size(), row.cells.size()); ++i) {
      columns[i].width = std::max(columns[i].width, textWidth(row.cells[i]));
      columns[i].numeric =
          columns[i].numeric && (row.cells[i].empty() || looksNumeric(row.cells[i]));
    }
  }
  return columns;
}

std::string alignedCells(const std::vector<std::string>& cells,
                         const std::vector<TableColumn>& columns, size_t gap) {
  std::string line;
  for (size_t i = 0; i < columns.size(); ++i) {
    const auto cell = fitText(i < cells.size() ? cells[i] : "", columns[i].width);
    const std::string padding(columns[i].width - cell.columns, ' ');
    if (i > 0) line += std::string(gap, ' ');
    line += columns[i].numeric ? padding + cell.text : cell.text + padding;
  }
  return line;
}

std::string joinCells(const PanelRow& row) {
  const auto isDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
  std::string line;
  bool after_number = false;
  for (const std::string& cell : row.cells) {
    if (cell.empty()) continue;
    if (!line.empty()) line += after_number ? " " : "  ";
    line += cell;
    after_number = std::all_of(cell.begin(), cell.end(), isDigit);
  }
  return line;
}

std::string formatPanel(const Panel& panel) {
  constexpr size_t kGap = 2;
  std::string text;
  for (const PanelRow& row : panel.rows) {
    if (row.kind == kRowSummary) text += joinCells(row) + "\n";
    if (row.kind == kRowWarning) text += "! " + joinCells(row) + "\n";
  }
  const auto columns = tableColumns(panel);
  const auto add = [&](const std::vector<std::string>& cells) {
    std::string line = alignedCells(cells, columns, kGap);
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  };
  text += "\n";
  add(panel.columns);
  for (const PanelRow& row : panel.rows) {
    if (isTableRow(row)) add(row.cells);
  }
  return text;
}

}  // namespace pelagrim_host
