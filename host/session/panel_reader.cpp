#include "host/session/panel_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <span>
#include <string_view>

#include "host/text/display_text.h"

namespace pelagrim_host {
namespace {

constexpr size_t kFirstRoom = 256;      // rows polled at once at first
constexpr size_t kMaxRows = 1'000'000;  // 264 MB

std::string cellText(const char (&cell)[WENDLE_CELL_BYTES]) {
  return displayText(std::string_view(cell, strnlen(cell, WENDLE_CELL_BYTES)));
}

std::optional<uint32_t> wholeNumber(const char (&cell)[WENDLE_CELL_BYTES]) {
  const char* const end = cell + strnlen(cell, WENDLE_CELL_BYTES);
  uint32_t value = 0;
  const auto [stop, error] = std::from_chars(cell, end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
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

Panel PanelReader::read(size_t max_rows) {
  Panel panel;
  if (api_ == nullptr) return panel;
  panel.title = displayText(api_->title == nullptr ? "" : api_->title);
  panel.columns = columns_;
  // The panel does not say how many rows it has, only that it has filled all the room.
  max_rows = std::min(max_rows, kMaxRows);
  size_t room = std::min(max_rows, kFirstRoom);
  size_t count = poll(room);
  while (count == room && room < max_rows) {
    room = std::min(max_rows, 4 * room);
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

/// Polls up to `max_rows` rows into rows_ and returns how many came.
size_t PanelReader::poll(size_t max_rows) {
  rows_.resize(std::max(rows_.size(), max_rows));
  const auto count = api_->poll_rows(handle_, rows_.data(), static_cast<unsigned int>(max_rows));
  return std::min<size_t>(count, max_rows);
}

}  // namespace pelagrim_host
