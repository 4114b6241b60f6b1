#include "host/view/frame_table.h"

#include <algorithm>

namespace pelagrim_host {
namespace {

constexpr size_t kPartGap = 4;         // between two parts side by side
constexpr size_t kMinTextColumns = 6;  // of a cell of text that is cut
constexpr size_t kMinSaidColumns = 44;

}  // namespace

FrameTable::FrameTable(const Panel& panel, size_t frame_columns)
    : panel_(panel), frame_columns_(frame_columns), columns_(tableColumns(panel)) {
  for (const PanelRow& row : panel.rows) {
    if (isTableRow(row)) rows_.push_back(&row);
  }
  fitColumns();
  max_parts_ = std::max<size_t>(1, (frame_columns + kPartGap) / partWidth());
}

void FrameTable::fitColumns() {
  if (width() > frame_columns_) gap_ = 1;
  for (size_t i = columns_.size(); i-- > 0;) {
    TableColumn& column = columns_[i];
    const size_t full = width();
    if (full <= frame_columns_ || column.numeric) continue;
    const size_t cut = std::min(full - frame_columns_, column.width);
    column.width = std::max(column.width - cut, std::min(column.width, kMinTextColumns));
  }
  while (columns_.size() > 1 && width() > frame_columns_) columns_.pop_back();
}

/// Of one part.
size_t FrameTable::width() const {
  size_t sum = columns_.empty() ? 0 : gap_ * (columns_.size() - 1);
  for (const TableColumn& column : columns_) sum += column.width;
  return sum;
}

size_t FrameTable::partWidth() const {
  return width() + kPartGap;
}

bool FrameTable::hasRoomBeside(size_t lines) const {
  return channels() < lines && frame_columns_ >= partWidth() + kMinSaidColumns;
}

void FrameTable::addTo(Frame& frame, size_t lines, std::span<const SaidLine> beside) const {
  const size_t body = lines - 1;
  const size_t parts = std::clamp<size_t>((channels() + body - 1) / body, 1, max_parts_);
  const size_t shown = std::min(channels(), body * parts);
  const size_t height = (shown + parts - 1) / parts;

  FrameLine heading = frame.line();
  for (size_t part = 0; part < parts; ++part) {
    heading.padTo(part * partWidth());
    heading.add(alignedCells(panel_.columns, columns_, gap_), Ink::kHeading);
  }
  if (!beside.empty()) heading.padTo(partWidth()).add("Messages");
  frame.add(heading);
  for (size_t i = 0; i < std::max(height, std::min(beside.size(), body)); ++i) {
    FrameLine line = frame.line();
    for (size_t part = 0; part < parts; ++part) {
      const size_t index = part * height + i;
      if (i >= height || index >= shown) continue;
      line.padTo(part * partWidth()).add(alignedCells(rows_[index]->cells, columns_, gap_));
    }
    if (i < beside.size()) addSaid(line.padTo(partWidth()), beside[i]);
    frame.add(line);
  }
}

void addSaid(FrameLine& line, const SaidLine& said) {
  line.add(said.is_warning ? "! " : "")
      .add(said.text, said.is_warning ? Ink::kWarning : Ink::kFaint);
}

}  // namespace pelagrim_host
