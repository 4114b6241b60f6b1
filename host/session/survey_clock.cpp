#include "host/session/survey_clock.h"

#include <chrono>

namespace pelagrim_host {

SurveyClock::SurveyClock(ClockPolicy policy, double rate_hz)
    : start_unix_ms_(policy.startUnixMs()), rate_hz_(rate_hz) {}

void SurveyClock::leapTo(int64_t unix_ms) {
  constexpr int64_t kRoundingMs = 1;  // not a gap: both times are truncated to whole milliseconds
  if (!start_unix_ms_ || unix_ms <= nowMs() + kRoundingMs) return;
  start_unix_ms_ = unix_ms;
  samples_ = 0;
}

int64_t SurveyClock::nowMs() const {
  if (!start_unix_ms_) return wallClockMs();
  // The 64-bit mantissa of a long double holds samples * 1000 exactly for thousands of years, and
  // so the quotient truncates as whole numbers would; a rate with a fraction works, too.
  const long double elapsed_ms =
      static_cast<long double>(samples_) * 1000.0L / static_cast<long double>(rate_hz_);
  const int64_t now_ms = *start_unix_ms_ + static_cast<int64_t>(elapsed_ms);
  return now_ms == 0 ? 1 : now_ms;
}

int64_t wallClockMs() {
  const auto since_epoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(since_epoch).count();
}

}  // namespace pelagrim_host
