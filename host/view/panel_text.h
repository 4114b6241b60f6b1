#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/session/panel_reader.h"

namespace pelagrim_host {

/// How a column of the panel's table is shown.
struct TableColumn {
  size_t width = 0;     ///< characters
  bool numeric = true;  ///< to the right, as no cell says otherwise
};

/// Whether a row belongs into the table's columns; summary and warning rows are text.
bool isTableRow(const PanelRow& row);

/// The columns of the panel's table, wide enough for their titles and cells.
std::vector<TableColumn> tableColumns(const Panel& panel);

/// Cells or titles in aligned columns, `gap` blanks between them; what is wider than its column is
/// cut. Exactly as wide as the columns are.
std::string alignedCells(const std::vector<std::string>& cells,
                         const std::vector<TableColumn>& columns, size_t gap);

/// The cells of a summary or warning row as one text, two blanks between them and one behind a
/// number: "Survey  sweeping  3 slices  12 dwells done".
std::string joinCells(const PanelRow& row);

/// The panel as text: the summary row, warning rows marked "!", then the column titles and the
/// other rows in aligned columns, those of numbers to the right. Every line is ended by a line end.
std::string formatPanel(const Panel& panel);

}  // namespace pelagrim_host
