#include "host/view/live_frame.h"

#include <algorithm>
#include <span>

#include "host/view/frame_head.h"
#include "host/view/frame_table.h"

namespace pelagrim_host {
namespace {

constexpr size_t kMinTableColumns = 40;  // of one part of a table that is split
constexpr size_t kMinTableRows = 4;      // heading and three channels matter more than messages
constexpr size_t kMaxSaidRows = 5;       // below the table
constexpr size_t kMinKeyColumns = 47;    // of a line that names every key

/// The last messages, at most `max_lines`.
std::span<const SaidLine> lastSaid(const LiveState& state, size_t max_lines) {
  return std::span(state.said).last(std::min(max_lines, state.said.size()));
}

/// How many rows the messages get below the table, when both share `room` rows: a third of what the
/// table does not need first, less `gap_rows` between the two.
size_t saidRoom(size_t room, size_t gap_rows) {
  const size_t first = kMinTableRows + gap_rows;
  return room > first ? std::min((room - first + 2) / 3, kMaxSaidRows) : 0;
}

/// The bottom line of the frame.
void addFooter(Frame& frame, const LiveState& state, bool all_shown) {
  FrameLine line = frame.line();
  line.add(state.offers_keys ? "r rescan   q end" : "Ctrl-C end", Ink::kFaint);
  if (frame.columns() >= kMinKeyColumns) line.add("   Ctrl-C twice: leave at once", Ink::kFaint);
  if (!all_shown) line.addRight("  more in survey.csv", Ink::kFaint);
  frame.padTo(1);
  frame.add(line);
}

}  // namespace

size_t channelRoom(WindowSize window) {
  return window.rows * std::max<size_t>(1, window.columns / kMinTableColumns) + 1;
}

std::vector<std::string> composeFrame(const LiveState& state, WindowSize window, FrameStyle style) {
  Frame frame(window, style);
  addHead(frame, state);

  const FrameTable table(state.run.panel, window.columns);
  const size_t footer_rows = frame.left() > kMinTableRows ? 1 : 0;
  const size_t room = frame.left() - footer_rows;
  if (room >= 2 && table.hasRoomBeside(room)) {
    table.addTo(frame, room, lastSaid(state, room - 1));
    addFooter(frame, state, true);
    return frame.finish();
  }
  const size_t gap_rows = frame.roomy() ? 1 : 0;
  const auto said = lastSaid(state, saidRoom(room, gap_rows));
  const size_t table_room = room - (said.empty() ? 0 : said.size() + gap_rows);
  bool all_shown = true;
  if (table_room >= 2) {
    table.addTo(frame, table_room, {});
    all_shown = table.channels() <= table.capacity(table_room);
  }
  // Messages are at the bottom, so that they stay in place while the table grows.
  frame.padTo(said.size() + footer_rows);
  for (const SaidLine& line : said) {
    FrameLine text = frame.line();
    addSaid(text, line);
    frame.add(text);
  }
  if (footer_rows > 0) addFooter(frame, state, all_shown);
  return frame.finish();
}

}  // namespace pelagrim_host
