#include "plugin/panel.h"

#include <iterator>
#include <mutex>
#include <string_view>

#include "plugin/attempt.h"
#include "plugin/panel_rows.h"
#include "plugin/state.h"

namespace pelagrim {

namespace {

/// Fills up to `max` rows, at least 1, the most important first; returns how many.
unsigned int fillRows(const State& state, WendlePanelRow* rows, unsigned int max) {
  const bool warned = state.tuning.tune_refused && !state.tuning.status.empty() && max >= 2;
  const unsigned int heads = warned ? 2 : 1;
  const std::vector<Channel> busiest = state.survey.busiest(max - heads);

  rows[0] = summaryRow({.sweep = state.settings.sweep,
                        .slices = state.plan.slices.size(),
                        .dwells = state.dwells,
                        .labels = state.labels.size()});
  if (warned) rows[1] = warningRow(state.tuning.status);
  WendlePanelRow* next = rows + heads;
  for (const Channel& channel : busiest) *next++ = channelRow(channel, state.labels);
  return static_cast<unsigned int>(next - rows);
}

}  // namespace

void* pn_create() noexcept {
  return &g_state;
}

int pn_columns(void* /*handle*/, char (*titles)[WENDLE_CELL_BYTES]) noexcept {
  constexpr std::string_view kTitles[] = {"Frequency",  "Width", "Guess", "Peak dB",
                                          "Over floor", "Seen",  "Band"};
  for (const std::string_view title : kTitles) {
    (*titles)[title.copy(*titles, WENDLE_CELL_BYTES - 1)] = '\0';
    ++titles;
  }
  return std::size(kTitles);
}

unsigned int pn_poll_rows(void* handle, WendlePanelRow* rows, unsigned int max) noexcept {
  if (handle == nullptr || rows == nullptr || max == 0) return 0;
  unsigned int filled = 0;
  attempt([&] {
    const std::lock_guard lock(g_state.mutex);
    filled = fillRows(g_state, rows, max);
  });
  return filled;
}

void pn_destroy(void* /*handle*/) noexcept {}

}  // namespace pelagrim
