#include "host/view/live_frame.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <span>

#include "host/text/quantity_text.h"
#include "host/text/text_width.h"
#include "host/view/frame_line.h"
#include "host/view/panel_text.h"

namespace pelagrim_host {
namespace {

constexpr size_t kLeastTableColumns = 40;  // of one part of a table that stands in several
constexpr size_t kLeastSaidColumns = 44;   // of what was said, beside the table
constexpr size_t kPartGap = 4;             // between two parts side by side
constexpr size_t kLeastTextColumns = 6;    // of a cell of words that is cut
constexpr size_t kLeastTableRows = 4;      // heading and three channels come before what was said
constexpr size_t kMostSaidRows = 5;        // below the table
constexpr size_t kLeastKeyColumns = 47;    // of a line with every key in it
constexpr size_t kRoomyRows = 16;          // with that many there are empty lines between parts

/// The lines of the frame as they are filled from the top.
class Frame {
 public:
  Frame(WindowSize window, FrameStyle style) : window_(window), style_(style) {}

  FrameLine line() const { return {window_.columns, style_.colours}; }
  void add(FrameLine line) {
    if (left() > 0) lines_.push_back(line.text());
  }
  size_t left() const { return window_.rows - lines_.size(); }
  size_t columns() const { return window_.columns; }
  bool roomy() const { return window_.rows >= kRoomyRows; }
  bool unicode() const { return style_.unicode; }

  std::vector<std::string> finish() {
    while (left() > 0) add(line());
    return std::move(lines_);
  }

 private:
  WindowSize window_;
  FrameStyle style_;
  std::vector<std::string> lines_;
};

std::string repeated(std::string_view text, size_t times) {
  std::string all;
  for (size_t i = 0; i < times; ++i) all += text;
  return all;
}

void addTitle(Frame& frame, const ViewState& state) {
  const std::string where = fmt::format(" {}  {} ", formatSampleRate(state.progress.rate_hz),
                                        formatFrequency(state.progress.centre_hz));
  const size_t room = frame.columns() - std::min(frame.columns(), textWidth(where));
  FrameLine line = frame.line();
  line.add(fitText(" " + state.source.name, room).text, Ink::kTitle);
  line.padTo(room, Ink::kTitle).add(where, Ink::kTitle);
  frame.add(line);
}

/// "Dwell ━━━━━━────── 3.1 of 5 s".
void addBar(Frame& frame, const std::string& label, double part, const std::string& text) {
  constexpr size_t kLabelColumns = 7;
  constexpr size_t kTextColumns = 30;
  const size_t spare = frame.columns() - std::min(frame.columns(), kLabelColumns + kTextColumns);
  const size_t width = std::clamp<size_t>(spare, 8, 48);
  const auto filled =
      static_cast<size_t>(std::lround(std::clamp(part, 0.0, 1.0) * static_cast<double>(width)));
  FrameLine line = frame.line();
  line.add(label).padTo(kLabelColumns);
  line.add(repeated(frame.unicode() ? "━" : "#", filled), Ink::kBar);
  line.add(repeated(frame.unicode() ? "─" : ".", width - filled), Ink::kFaint);
  frame.add(line.add("  ").add(text));
}

void addDwell(Frame& frame, const SurveyProgress& progress) {
  if (progress.dwell_length_seconds) {
    addBar(frame, "Dwell", progress.dwell_elapsed_seconds / *progress.dwell_length_seconds,
           fmt::format("{:.1f} of {:g} s", progress.dwell_elapsed_seconds,
                       *progress.dwell_length_seconds));
  } else {
    frame.add(frame.line().add("Dwell").padTo(7).add(
        fmt::format("{:.1f} s", progress.dwell_elapsed_seconds)));
  }
}

/// The part of the dwell in progress that is done; none where nobody knows its length.
double dwellPart(const SurveyProgress& progress) {
  if (!progress.dwell_length_seconds) return 0.0;
  return std::clamp(progress.dwell_elapsed_seconds / *progress.dwell_length_seconds, 0.0, 1.0);
}

void addPass(Frame& frame, const SurveyProgress& progress) {
  if (!progress.dwells) return;
  const uint32_t per_pass = progress.dwells->dwellsPerPass();
  const uint32_t passes_done = progress.dwells->dwells_done / per_pass;
  const uint32_t here = progress.dwells->dwells_done % per_pass;
  std::string text = fmt::format("slice {} of {}, pass {}", here + 1, per_pass, passes_done + 1);
  if (progress.wanted_passes) text += fmt::format(" of {}", *progress.wanted_passes);
  addBar(frame, "Pass", (here + dwellPart(progress)) / per_pass, text);
}

void addSamples(Frame& frame, const ViewState& state) {
  const SurveyProgress& progress = state.progress;
  const double seconds = static_cast<double>(progress.samples) / progress.rate_hz;
  std::string text = fmt::format("{:.1f}", seconds);
  if (progress.wanted_seconds) text += fmt::format(" of {:g}", *progress.wanted_seconds);
  text += " s";
  if (state.wall_seconds > 0.0) text += fmt::format(", {:.3g}x", seconds / state.wall_seconds);
  FrameLine line = frame.line();
  line.add("Heard").padTo(7).add(text).add("   ");
  const auto ink = progress.overflows > 0 ? Ink::kWarning : Ink::kPlain;
  frame.add(line.add(
      fmt::format("{} overflow{}", progress.overflows, progress.overflows == 1 ? "" : "s"), ink));
}

void addHeads(Frame& frame, const Panel& panel) {
  for (const PanelRow& row : panel.rows) {
    if (row.kind == kRowSummary) frame.add(frame.line().add(joinCells(row), Ink::kStrong));
    if (row.kind == kRowWarning) frame.add(frame.line().add("! " + joinCells(row), Ink::kWarning));
  }
}

/// The table's columns and the gap between them.
struct TableLayout {
  std::vector<TableColumn> columns;
  size_t gap = 2;

  size_t width() const {
    size_t sum = columns.empty() ? 0 : gap * (columns.size() - 1);
    for (const TableColumn& column : columns) sum += column.width;
    return sum;
  }
};

/// Columns that fit into `room`: closer together, then words cut, then fewer of them.
TableLayout fittedTable(const Panel& panel, size_t room) {
  TableLayout layout{tableColumns(panel)};
  if (layout.width() > room) layout.gap = 1;
  for (auto column = layout.columns.rbegin(); column != layout.columns.rend(); ++column) {
    const size_t width = layout.width();
    if (width <= room || column->numeric) continue;
    const size_t cut = width - room;
    column->width = std::max(column->width - std::min(cut, column->width),
                             std::min(column->width, kLeastTextColumns));
  }
  while (layout.columns.size() > 1 && layout.width() > room) layout.columns.pop_back();
  return layout;
}

std::vector<const PanelRow*> tableRows(const Panel& panel) {
  std::vector<const PanelRow*> rows;
  for (const PanelRow& row : panel.rows) {
    if (isTableRow(row)) rows.push_back(&row);
  }
  return rows;
}

void addSaid(FrameLine& line, const SaidLine& said) {
  line.add(said.is_warning ? "! " : "")
      .add(said.text, said.is_warning ? Ink::kWarning : Ink::kFaint);
}

/// The last `most` lines that were said.
std::span<const SaidLine> lastSaid(const ViewState& state, size_t most) {
  return std::span(state.said).last(std::min(most, state.said.size()));
}

/// The table in `room` lines, heading included, in parts side by side where that shows more of it;
/// `beside`: what was said, to its right.
void addTable(Frame& frame, const Panel& panel, size_t room, std::span<const SaidLine> beside) {
  const TableLayout layout = fittedTable(panel, frame.columns());
  const auto rows = tableRows(panel);
  const size_t body = room - 1;
  const size_t part_width = layout.width() + kPartGap;
  size_t parts = 1;
  if (beside.empty()) {
    const size_t fit = std::max<size_t>(1, (frame.columns() + kPartGap) / part_width);
    parts = std::clamp<size_t>((rows.size() + body - 1) / body, 1, fit);
  }
  const size_t shown = std::min(rows.size(), body * parts);
  const size_t height = std::min(body, (shown + parts - 1) / parts);

  FrameLine heading = frame.line();
  for (size_t part = 0; part < parts; ++part) {
    heading.padTo(part * part_width);
    heading.add(alignedCells(panel.columns, layout.columns, layout.gap), Ink::kHeading);
  }
  if (!beside.empty()) {
    heading.padTo(part_width).add("Messages").padTo(frame.columns());
  }
  frame.add(heading);
  for (size_t i = 0; i < std::max(height, std::min(beside.size(), body)); ++i) {
    FrameLine line = frame.line();
    for (size_t part = 0; part < parts; ++part) {
      const size_t index = part * height + i;
      if (i >= height || index >= shown) continue;
      line.padTo(part * part_width);
      line.add(alignedCells(rows[index]->cells, layout.columns, layout.gap));
    }
    if (i < beside.size()) addSaid(line.padTo(part_width), beside[i]);
    frame.add(line);
  }
}

void addFooter(Frame& frame, const ViewState& state, bool all_shown) {
  FrameLine line = frame.line();
  line.add(state.offers_keys ? "r rescan   q end" : "Ctrl-C end", Ink::kFaint);
  if (frame.columns() >= kLeastKeyColumns) line.add("   Ctrl-C twice: leave at once", Ink::kFaint);
  if (!all_shown) line.addRight("  more in survey.csv", Ink::kFaint);
  while (frame.left() > 1) frame.add(frame.line());
  frame.add(line);
}

}  // namespace

size_t channelRoom(WindowSize window) {
  return window.rows * std::max<size_t>(1, window.columns / kLeastTableColumns) + 1;
}

std::vector<std::string> composeFrame(const ViewState& state, WindowSize window, FrameStyle style) {
  Frame frame(window, style);
  addTitle(frame, state);
  addDwell(frame, state.progress);
  addPass(frame, state.progress);
  addSamples(frame, state);
  if (frame.roomy()) frame.add(frame.line());
  addHeads(frame, state.panel);
  if (frame.roomy()) frame.add(frame.line());

  const size_t footer_rows = frame.left() > kLeastTableRows ? 1 : 0;
  const size_t room = frame.left() - std::min(frame.left(), footer_rows);
  const size_t channels = tableRows(state.panel).size();
  const size_t table_columns = fittedTable(state.panel, frame.columns()).width();
  const bool has_side = frame.columns() >= table_columns + kPartGap + kLeastSaidColumns;
  if (room >= 2 && has_side && channels < room) {
    addTable(frame, state.panel, room, lastSaid(state, room - 1));
    addFooter(frame, state, true);
    return frame.finish();
  }
  const size_t gap_rows = frame.roomy() ? 1 : 0;
  const size_t said_room =
      room > kLeastTableRows + gap_rows ? (room - kLeastTableRows - gap_rows + 2) / 3 : 0;
  const auto said = lastSaid(state, std::min(said_room, kMostSaidRows));
  const size_t table_room = room - (said.empty() ? 0 : said.size() + gap_rows);
  bool all_shown = true;
  if (table_room >= 2) {
    addTable(frame, state.panel, table_room, {});
    const size_t part_width = table_columns + kPartGap;
    const size_t parts = std::max<size_t>(1, (frame.columns() + kPartGap) / part_width);
    all_shown = channels <= (table_room - 1) * parts;
  }
  // What was said stands at the bottom, so that it stays in place while the table grows.
  while (frame.left() > said.size() + footer_rows) frame.add(frame.line());
  for (const SaidLine& line : said) {
    FrameLine text = frame.line();
    addSaid(text, line);
    frame.add(text);
  }
  if (footer_rows > 0) addFooter(frame, state, all_shown);
  return frame.finish();
}

}  // namespace pelagrim_host
