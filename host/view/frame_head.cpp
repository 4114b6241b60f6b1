#include "host/view/frame_head.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

#include "host/text/counted_text.h"
#include "host/text/quantity_text.h"
#include "host/text/text_width.h"
#include "host/view/panel_text.h"
#include "host/view/run_pace.h"

namespace pelagrim_host {
namespace {

constexpr size_t kLabelColumns = 7;

std::string repeated(std::string_view text, size_t times) {
  std::string all;
  for (size_t i = 0; i < times; ++i) all += text;
  return all;
}

void addTitle(Frame& frame, const LiveState& state) {
  const std::string where = fmt::format(" {}  {} ", formatSampleRate(state.run.progress.rate_hz),
                                        formatFrequency(state.run.progress.centre_hz));
  const size_t room = frame.columns() - std::min(frame.columns(), textWidth(where));
  FrameLine line = frame.line();
  line.add(fitText(" " + state.source.name, room).text, Ink::kTitle);
  line.padTo(room, Ink::kTitle).add(where, Ink::kTitle);
  frame.add(line);
}

/// "Dwell ━━━━━━────── 3.1 of 5 s".
void addBar(Frame& frame, const std::string& label, double part, const std::string& text) {
  constexpr size_t kTextColumns = 30;
  const size_t spare = frame.columns() - std::min(frame.columns(), kLabelColumns + kTextColumns);
  const size_t width = std::clamp<size_t>(spare, 8, 48);
  const auto filled = static_cast<size_t>(std::lround(part * static_cast<double>(width)));
  FrameLine line = frame.line();
  line.add(label).padTo(kLabelColumns);
  line.add(repeated(frame.unicode() ? "━" : "#", filled), Ink::kBar);
  line.add(repeated(frame.unicode() ? "─" : ".", width - filled), Ink::kFaint);
  frame.add(line.add("  ").add(text));
}

/// How much of the current dwell is done, 0 to 1; 0 if its length is not known.
double dwellPart(const LiveState& state) {
  if (state.dwell_length_seconds.value_or(0.0) <= 0.0) return 0.0;
  const double part = state.run.progress.dwell_elapsed_seconds / *state.dwell_length_seconds;
  return std::clamp(part, 0.0, 1.0);
}

void addDwell(Frame& frame, const LiveState& state) {
  const double elapsed_seconds = state.run.progress.dwell_elapsed_seconds;
  if (state.dwell_length_seconds) {
    addBar(frame, "Dwell", dwellPart(state),
           fmt::format("{:.1f} of {:g} s", elapsed_seconds, *state.dwell_length_seconds));
  } else {
    frame.add(frame.line()
                  .add("Dwell")
                  .padTo(kLabelColumns)
                  .add(fmt::format("{:.1f} s", elapsed_seconds)));
  }
}

/// Which of the band's slices the receiver is on, counted from 0. Dwells tell that as well, but not
/// after a rescan, which starts on whatever slice was in progress.
uint32_t sliceNow(const LiveState& state, uint32_t by_dwells) {
  const auto& centres_hz = state.slice_centres_hz;
  const auto distance_hz = [&state](double centre_hz) {
    return std::abs(centre_hz - state.run.progress.centre_hz);
  };
  const auto nearest = std::min_element(
      centres_hz.begin(), centres_hz.end(),
      [&](double one, double other) { return distance_hz(one) < distance_hz(other); });
  if (nearest == centres_hz.end()) return by_dwells;
  return static_cast<uint32_t>(nearest - centres_hz.begin());
}

void addPass(Frame& frame, const LiveState& state) {
  const SurveyProgress& progress = state.run.progress;
  if (!progress.dwells) return;
  const uint32_t per_pass = progress.dwells->dwellsPerPass();
  const uint32_t passes_done = progress.dwells->dwells_done / per_pass;
  const uint32_t here = progress.dwells->dwells_done % per_pass;
  std::string text =
      fmt::format("slice {} of {}, pass {}", sliceNow(state, here) + 1, per_pass, passes_done + 1);
  if (progress.wanted_passes) text += fmt::format(" of {}", *progress.wanted_passes);
  addBar(frame, "Pass", (here + dwellPart(state)) / per_pass, text);
}

std::string heardText(const LiveState& state) {
  const SurveyProgress& progress = state.run.progress;
  if (const auto pace = paceOf(progress, state.wall_seconds)) {
    return paceText(*pace, progress.samples, progress.rate_hz);
  }
  const double seconds = static_cast<double>(progress.samples) / progress.rate_hz;
  std::string text = fmt::format("{:.1f}", seconds);
  if (progress.wanted_seconds) text += fmt::format(" of {:g}", *progress.wanted_seconds);
  text += " s";
  if (state.wall_seconds > 0.0) text += fmt::format(", {:.3g}x", seconds / state.wall_seconds);
  return text;
}

void addSamples(Frame& frame, const LiveState& state) {
  constexpr double kLongStall = 1.0;  // seconds
  const SurveyProgress& progress = state.run.progress;
  FrameLine line = frame.line();
  line.add("Heard").padTo(kLabelColumns).add(heardText(state)).add("   ");
  if (progress.stalled_seconds >= kLongStall) {
    line.add(fmt::format("no samples for {:.0f} s", std::floor(progress.stalled_seconds)),
             Ink::kWarning);
    line.add("   ");
  }
  if (progress.dropped_samples > 0) {
    line.add(countedText(progress.dropped_samples, "sample") + " dropped", Ink::kWarning);
    line.add("   ");
  }
  line.add(countedText(progress.overflows, "overflow"),
           progress.overflows > 0 ? Ink::kWarning : Ink::kPlain);
  frame.add(line);
}

void addPanelHeads(Frame& frame, const Panel& panel) {
  for (const PanelRow& row : panel.rows) {
    if (row.kind == kRowSummary) frame.add(frame.line().add(joinCells(row), Ink::kStrong));
    if (row.kind == kRowWarning) frame.add(frame.line().add("! " + joinCells(row), Ink::kWarning));
  }
}

}  // namespace

void addHead(Frame& frame, const LiveState& state) {
  addTitle(frame, state);
  addDwell(frame, state);
  addPass(frame, state);
  addSamples(frame, state);
  if (frame.roomy() && !state.in_force.empty()) {
    frame.add(frame.line().add("Survey").padTo(kLabelColumns).add(state.in_force));
  }
  if (frame.roomy()) frame.add(frame.line());
  addPanelHeads(frame, state.run.panel);
  if (frame.roomy()) frame.add(frame.line());
}

}  // namespace pelagrim_host
