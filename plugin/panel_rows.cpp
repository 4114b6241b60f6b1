#include "plugin/panel_rows.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "files/c_locale.h"
#include "survey/signal_kind.h"

namespace pelagrim {

namespace {

WendlePanelRow emptyRow(WendleRowKind kind) {
  WendlePanelRow row{};
  row.kind = kind;
  return row;
}

void copyText(char (&cell)[WENDLE_CELL_BYTES], std::string_view text) {
  text.copy(cell, WENDLE_CELL_BYTES - 1);
}

template <typename... Numbers>
void formatNumbers(char (&cell)[WENDLE_CELL_BYTES], const char* format, Numbers... numbers) {
  std::snprintf(cell, sizeof cell, format, numbers...);
}

}  // namespace

WendlePanelRow summaryRow(const SurveySummary& summary) {
  WendlePanelRow row = emptyRow(kRowSummary);
  copyText(row.cells[0], "Survey");
  copyText(row.cells[1], summary.sweep ? "sweeping" : "fixed");
  formatNumbers(row.cells[2], "%d", static_cast<int>(summary.slices));
  copyText(row.cells[3], "slices");
  formatNumbers(row.cells[4], "%u", summary.dwells);
  copyText(row.cells[5], "dwells done");
  formatNumbers(row.cells[6], "%d labels", static_cast<int>(summary.labels));
  return row;
}

WendlePanelRow warningRow(const std::string& reason) {
  WendlePanelRow row = emptyRow(kRowWarning);
  copyText(row.cells[0], "Cannot sweep");
  copyText(row.cells[1], reason);
  return row;
}

WendlePanelRow channelRow(const Channel& channel, const std::vector<BandLabel>& labels) {
  const CLocale c_locale;
  WendlePanelRow row = emptyRow(kRowPlain);
  formatNumbers(row.cells[0], "%.4f MHz", channel.centre_hz / 1000000.0);
  formatNumbers(row.cells[1], "%.1f kHz", channel.width_hz / 1000.0);
  copyText(row.cells[2], guessKind(channel.width_hz));
  formatNumbers(row.cells[3], "%.0f", channel.peak_db);
  formatNumbers(row.cells[4], "%.0f dB", channel.peak_db - channel.floor_db);
  formatNumbers(row.cells[5], "%u/%u", channel.hits, channel.looks);
  if (const BandLabel* label = lookupLabel(labels, channel.centre_hz)) {
    copyText(row.cells[6], label->name);
  }
  return row;
}

}  // namespace pelagrim
