#include "host/panel_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <span>
#include <string_view>

namespace pelagrim_host {
namespace {

constexpr size_t kFirstRoom = 256;       // rows polled at once at first
constexpr size_t kMostRows = 1'000'000;  // 264 MB

std::string cellText(const char (&cell)[WENDLE_CELL_BYTES]) {
  return withoutControls(std::string(cell, strnlen(cell, WENDLE_CELL_BYTES)));
}

/// Characters of UTF-8 text: its bytes but for those that continue a character.
size_t displayWidth(std::string_view text) {
  const auto continues = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
  };
  return text.size() - static_cast<size_t>(std::count_if(text.begin(), text.end(), continues));
}

bool looksNumeric(std::string_view text) {
  return !text.empty() && ((text[0] >= '0' && text[0] <= '9') || text[0] == '-' || text[0] == '+');
}

std::optional<uint32_t> wholeNumber(const char (&cell)[WENDLE_CELL_BYTES]) {
  const char* const end = cell + strnlen(cell, WENDLE_CELL_BYTES);
  uint32_t value = 0;
  const auto [stop, error] = std::from_chars(cell, end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

std::string joinCells(const PanelRow& row) {
  std::string line;
  for (const std::string& cell : row.cells) {
    if (cell.empty()) continue;
    if (!line.empty()) line += "  ";
    line += cell;
  }
  return line;
}

struct Column {
  size_t width = 0;
  bool numeric = true;  // as long as no cell says otherwise
};

std::string alignedLine(const std::vector<std::string>& cells, const std::vector<Column>& columns) {
  std::string line;
  for (size_t i = 0; i < std::min(cells.size(), columns.size()); ++i) {
    const std::string padding(columns[i].width - displayWidth(cells[i]), ' ');
    if (i > 0) line += "  ";
    line += columns[i].numeric ? padding + cells[i] : cells[i] + padding;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line + "\n";
}

}  // namespace

PanelReader::PanelReader(const WendlePanelApi* api) : api_(api) {
  if (api_ == nullptr) return;
  handle_ = api_->create();
  std::array<char[WENDLE_CELL_BYTES], WENDLE_PANEL_CELLS> titles = {};
  const int count = api_->columns(handle_, titles.data());
  for (int i = 0; i < std::clamp(count, 0, WENDLE_PANEL_CELLS); ++i) {
    columns_.push_back(cellText(titles[static_cast<size_t>(i)]));
  }
}

PanelReader::~PanelReader() {
  if (api_ != nullptr) api_->destroy(handle_);
}

Panel PanelReader::read(size_t most) {
  Panel panel;
  if (api_ == nullptr) return panel;
  panel.title = withoutControls(api_->title == nullptr ? "" : api_->title);
  panel.columns = columns_;
  // The panel does not say how many rows it has, only that it filled all the room there was.
  most = std::min(most, kMostRows);
  size_t room = std::min(most, kFirstRoom);
  size_t count = poll(room);
  while (count == room && room < most) {
    room = std::min(most, 4 * room);
    count = poll(room);
  }
  for (const WendlePanelRow& polled : std::span(rows_).first(count)) {
    PanelRow& row = panel.rows.emplace_back();
    row.kind = polled.kind;
    for (size_t i = 0; i < columns_.size(); ++i) row.cells.push_back(cellText(polled.cells[i]));
  }
  return panel;
}

std::optional<DwellCount> PanelReader::countDwells() {
  if (api_ == nullptr || poll(1) != 1 || rows_[0].kind != kRowSummary) return std::nullopt;
  const auto slices = wholeNumber(rows_[0].cells[2]);
  const auto dwells_done = wholeNumber(rows_[0].cells[4]);
  if (!slices || !dwells_done) return std::nullopt;
  return DwellCount{*dwells_done, *slices, cellText(rows_[0].cells[1]) != "fixed"};
}

/// Polls into rows_, which gets room for `most` rows, and returns how many came.
size_t PanelReader::poll(size_t most) {
  rows_.resize(std::max(rows_.size(), most));
  const auto count = api_->poll_rows(handle_, rows_.data(), static_cast<unsigned int>(most));
  return std::min<size_t>(count, most);
}

std::string formatPanel(const Panel& panel) {
  std::string text;
  std::vector<Column> columns(panel.columns.size());
  for (size_t i = 0; i < columns.size(); ++i) columns[i].width = displayWidth(panel.columns[i]);
  for (const PanelRow& row : panel.rows) {
    if (row.kind == kRowSummary) text += joinCells(row) + "\n";
    if (row.kind == kRowWarning) text += "! " + joinCells(row) + "\n";
    if (row.kind == kRowSummary || row.kind == kRowWarning) continue;
    for (size_t i = 0; i < std::min(columns.size(), row.cells.size()); ++i) {
      columns[i].width = std::max(columns[i].width, displayWidth(row.cells[i]));
      columns[i].numeric =
          columns[i].numeric && (row.cells[i].empty() || looksNumeric(row.cells[i]));
    }
  }
  text += "\n" + alignedLine(panel.columns, columns);
  for (const PanelRow& row : panel.rows) {
    if (row.kind != kRowSummary && row.kind != kRowWarning) text += alignedLine(row.cells, columns);
  }
  return text;
}

std::string withoutControls(std::string text) {
  for (char& byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x20 || code == 0x7F) byte = '?';
  }
  return text;
}

}  // namespace pelagrim_host
