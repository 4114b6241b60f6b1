#include "plugin/survey_start.h"

#include <algorithm>
#include <utility>

#include "files/labels_file.h"
#include "files/results_file.h"
#include "files/settings_file.h"
#include "files/survey_dir.h"
#include "plugin/attempt.h"
#include "plugin/host_services.h"

namespace pelagrim {

namespace {

void readLabels(State& state) {
  state.labels.clear();
  std::optional<LabelsFile> file = loadLabels(state.dir);
  if (!file) return;
  state.labels = std::move(file->labels);
  const int labels = static_cast<int>(state.labels.size());
  const int unreadable = file->unreadable_lines;
  state.log.logLine(
      unreadable == 0
          ? messageText(160, "survey: %d band labels loaded", labels)
          : messageText(160,
                        "survey: %d band labels loaded, %d line%s in survey-labels.txt could not "
                        "be read",
                        labels, unreadable, pluralEnding(static_cast<size_t>(unreadable))));
}

void prepareSurvey(Survey& survey, const Settings& settings) {
  survey.raster_hz = settings.raster_hz > 0.0 ? settings.raster_hz : 1.0;
  if (settings.sweep) {
    survey.band_lo_hz = settings.start_hz;
    survey.band_hi_hz = settings.stop_hz;
  }
  survey.clear();
}

void resumeSurvey(State& state) {
  ResultsFile file = loadSurvey(state.dir, state.slice.sample_rate_hz);
  // In order of their slots, the channels are inserted quickly and lie in memory in the order in
  // which they are read later, which makes panel polls of a large survey several times faster. Rows
  // of the same slot keep their order, because the last one counts.
  std::stable_sort(file.channels.begin(), file.channels.end(),
                   [&](const Channel& a, const Channel& b) {
                     return state.survey.slotOf(a.centre_hz) < state.survey.slotOf(b.centre_hz);
                   });
  for (const Channel& channel : file.channels) state.survey.restore(channel);
  const size_t rows = file.channels.size();
  if (rows == 0) return;
  state.log.logLine(messageText(
      160, "survey: resumed %d channel%s from survey.csv%s", static_cast<int>(rows),
      pluralEnding(rows), file.older ? " (an older file: centres moved down half a bin)" : ""));
}

void announcePlan(State& state) {
  const size_t slices = state.plan.slices.size();
  state.log.logLine(messageText(200, "survey: %.3f-%.3f MHz in %d slice%s of %.2f MHz, %.0f s each",
                                state.settings.start_hz / 1000000.0,
                                state.settings.stop_hz / 1000000.0, static_cast<int>(slices),
                                pluralEnding(slices), state.slice.sample_rate_hz / 1000000.0,
                                state.settings.dwell_seconds));
}

void startSteps(State& state, const Slice& slice) {
  state.dir = resolveSurveyDir();
  // If there is no memory to read settings or labels, the survey goes on without them.
  attempt([&] { loadSettings(state.dir, state.settings); });
  attempt([&] { readLabels(state); });
  state.slice = slice;
  prepareSurvey(state.survey, state.settings);
  resumeSurvey(state);
  state.spectrum.prepare();
  state.plan = {planSlices(state.settings.start_hz, state.settings.stop_hz, slice.sample_rate_hz)};
  state.dwell_start_ms = hostNowMs();
  state.dwells = 0;
  announcePlan(state);
}

}  // namespace

void startSurvey(State& state, const Slice& slice) noexcept {
  if (attempt([&] { startSteps(state, slice); })) return;
  state.spectrum.release();
  state.plan = {};
  state.dwell_start_ms = 0;
}

}  // namespace pelagrim
