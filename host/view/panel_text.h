#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/session/panel_reader.h"

namespace pelagrim_host {

/// How a column of the panel's table is shown.
struct TableColumn {
  size_t width = 0;     ///< characters
  bool numeric = true;  ///< aligned to the right; false if any cell is text
};

/// Whether a row belongs in the table's columns; summary and warning rows are text.
bool isTableRow(const PanelRow& row);

/// The columns of the panel's table, wide enough for their titles and cells.
std::vector<TableColumn> tableColumns(const Panel& panel);

/// Cells or titles in aligned columns, `gap` blanks between them. A cell wider than its column is
/// cut. The result is exactly as wide as the columns.
std::string alignedCells(const std::vector<std::string>& cells,
                         const std::vector<TableColumn>& columns, size_t gap);

/// The cells of a summary or warning row as one text, with two blanks between them and one after a
/// number: "Survey  sweeping  3 slices  12 dwells done".
std::string joinCells(const PanelRow& row);

/// The panel as text: the summary row, warning rows marked "!", then the column titles and the
/// other rows in aligned columns, numbers to the right. Every line ends in a line feed.
std::string formatPanel(const Panel& panel);

}  // namespace pelagrim_host
