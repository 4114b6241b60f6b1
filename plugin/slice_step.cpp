#include "plugin/slice_step.h"

#include "plugin/attempt.h"
#include "plugin/host_services.h"

namespace pelagrim {

namespace {

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
    const int result = hostTune(state.plan.advance());
    tellNews(noteTuneResult(state.tuning, result), state.tuning, state.log);
  });
}

}  // namespace pelagrim
