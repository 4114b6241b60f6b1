#include "plugin/dwell.h"

#include "files/results_file.h"
#include "plugin/attempt.h"
#include "plugin/host_services.h"
#include "plugin/slice_step.h"
#include "survey/detection.h"
#include "survey/dwell_timer.h"

namespace pelagrim {

namespace {

void evaluateDwell(State& state) {
  // First the steps that need memory but do not change the survey.
  const std::vector<float> levels = levelsDb(state.spectrum.power_sum, state.spectrum.frames);
  const std::vector<Detection> detections =
      findDetections(levels, state.slice, state.settings.threshold_db);

  state.survey.lookAt(state.slice.lowHz(), state.slice.highHz());
  const int64_t now_ms = hostNowMs();
  for (const Detection& detection : detections) state.survey.add(detection, now_ms);
  ++state.dwells;
  // The survey is saved even if there is no memory for the message.
  attempt([&] {
    state.log.logLine(messageText(
        160, "survey: %.3f MHz, %d here, %d known after %u dwell%s",
        state.slice.centre_hz / 1000000.0, static_cast<int>(detections.size()),
        static_cast<int>(state.survey.size()), state.dwells, pluralEnding(state.dwells)));
  });
  saveSurvey(state.dir, state.survey);
}

}  // namespace

void finishDwell(State& state) noexcept {
  if (state.spectrum.frames == 0) return;
  attempt([&] { evaluateDwell(state); });
  state.spectrum.clearSum();
}

void endDwellWhenDue(State& state) {
  const int64_t now_ms = hostNowMs();
  if (!dwellIsOver(state.dwell_start_ms, now_ms, state.settings.dwell_seconds)) return;
  finishDwell(state);
  stepSlice(state);
  state.dwell_start_ms = now_ms;
}

}  // namespace pelagrim
