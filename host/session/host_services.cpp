#include "host/session/host_services.h"

#include <exception>
#include <utility>

namespace pelagrim_host {

HostServices::HostServices(IqSource& source, const SurveyClock& clock, bool may_tune)
    : source_(source), clock_(clock), may_tune_(may_tune), table_{} {
  table_.ctx = this;
  table_.tune = [](void* ctx, double hz) { return static_cast<HostServices*>(ctx)->tune(hz); };
  table_.now_ms = [](void* ctx) { return static_cast<HostServices*>(ctx)->clock_.nowMs(); };
}

std::optional<TuneRequest> HostServices::takeTuneRequest() {
  return std::exchange(request_, std::nullopt);
}

int HostServices::tune(double hz) noexcept {
  TuneRequest request{hz, kTuneNotPermitted, {}};
  if (may_tune_) {
    try {
      request.answer = source_.tune(hz);
    } catch (const std::exception& failure) {  // no exception may pass through the plug-in
      request.answer = kTuneRefused;
      request.why_refused = failure.what();
    } catch (...) {
      request.answer = kTuneRefused;
      request.why_refused = "the receiver failed without saying why";
    }
  }
  request_ = std::move(request);
  return request_->answer;
}

}  // namespace pelagrim_host
