#include "host/session/host_services.h"

#include <utility>

namespace pelagrim_host {

HostServices::HostServices(SampleFeed& feed, const SurveyClock& clock, bool may_tune)
    : feed_(feed), clock_(clock), may_tune_(may_tune), table_{} {
  table_.ctx = this;
  table_.tune = [](void* ctx, double hz) { return static_cast<HostServices*>(ctx)->tune(hz); };
  table_.now_ms = [](void* ctx) { return static_cast<HostServices*>(ctx)->clock_.nowMs(); };
}

std::optional<HostServices::Tuned> HostServices::takeTuneRequest() {
  return std::exchange(tuned_, std::nullopt);
}

int HostServices::tune(double hz) noexcept {
  Tuned tuned{{hz, kTuneNotPermitted, {}}, {}};
  if (may_tune_) {
    tuned.outcome = feed_.tune(hz);
    tuned.request.answer = tuned.outcome.answer;
    tuned.request.why_refused = std::move(tuned.outcome.why_refused);
  }
  tuned_ = std::move(tuned);
  return tuned_->request.answer;
}

}  // namespace pelagrim_host
