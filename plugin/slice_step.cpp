#include "plugin/slice_step.h"

#include "plugin/attempt.h"
#include "plugin/host_services.h"
#include "wendle_plugin.h"

namespace pelagrim {

namespace {

// The model has its own names for the answers that cross the boundary.
static_assert(static_cast<int>(TuneAnswer::kAccepted) == kTuneAccepted);
static_assert(static_cast<int>(TuneAnswer::kNotPermitted) == kTuneNotPermitted);
static_assert(static_cast<int>(TuneAnswer::kOutOfRange) == kTuneOutOfRange);
static_assert(static_cast<int>(TuneAnswer::kNoRadio) == kTuneNoRadio);

void tellNews(TuneNews news, const Tuning& tuning, MessageLog& log) {
  switch (news) {
    case TuneNews::kNone:
      break;
    case TuneNews::kRefused:
      log.logLine("survey: " + tuning.status + " - surveying only the tuned slice");
      break;
    case TuneNews::kRecovered:
      log.logLine("survey: tuning allowed - sweeping the band");
      break;
  }
}

}  // namespace

void stepSlice(State& state) noexcept {
  if (!state.settings.sweep || state.plan.slices.size() < 2 || !hostTunes()) return;
  attempt([&] {
    const auto answer = static_cast<TuneAnswer>(hostTune(state.plan.advance()));
    tellNews(noteTuneAnswer(state.tuning, answer), state.tuning, state.log);
  });
}

}  // namespace pelagrim
