#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "host/session/panel_reader.h"
#include "host/view/frame.h"
#include "host/view/live_state.h"
#include "host/view/panel_text.h"

namespace pelagrim_host {

/// The panel's table, fitted into a frame. In a narrow frame the columns move closer together, then
/// text is cut, then columns are left out from the end; in a wide one the table is split into parts
/// side by side.
class FrameTable {
 public:
  /// `panel` outlives the table. `frame_columns`: the width of the frame.
  FrameTable(const Panel& panel, size_t frame_columns);

  size_t channels() const { return rows_.size(); }

  /// How many channels can be shown in `lines` lines, the heading included; at least 1 line.
  size_t capacity(size_t lines) const { return (lines - 1) * max_parts_; }

  /// Whether the messages fit to the right of all channels in `lines` lines.
  bool hasRoomBeside(size_t lines) const;

  /// Adds the table in at most `lines` lines, at least 2, with `beside` to its right if there is
  /// room.
  void addTo(Frame& frame, size_t lines, std::span<const SaidLine> beside) const;

 private:
  size_t width() const;
  size_t partWidth() const;
  void fitColumns();

  const Panel& panel_;
  size_t frame_columns_;
  std::vector<const PanelRow*> rows_;
  std::vector<TableColumn> columns_;
  size_t gap_ = 2;
  size_t max_parts_;
};

/// Adds a message to the line.
void addSaid(FrameLine& line, const SaidLine& said);

}  // namespace pelagrim_host
