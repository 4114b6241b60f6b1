#include "host/session/survey_clock.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>

namespace pelagrim_host {

SurveyClock::SurveyClock(ClockPolicy policy, double rate_hz)
    : clocks_(policy.clocks()),
      follows_samples_(policy.startUnixMs().has_value()),
      start_unix_ms_(policy.startUnixMs().value_or(0)),
      rate_hz_(rate_hz) {
  followWall();
  received_steady_ms_ = start_steady_ms_;
}

void SurveyClock::leapTo(int64_t unix_ms) {
  constexpr int64_t kRoundingMs = 1;  // not a gap: both times are truncated to whole milliseconds
  if (!follows_samples_ || unix_ms <= nowMs() + kRoundingMs) return;
  start_unix_ms_ = unix_ms;
  samples_ = 0;
}

uint64_t SurveyClock::samplesUntil(int64_t unix_ms) const {
  constexpr long double kMaxSamples = 0x1p62L;
  const auto elapsed_ms = static_cast<long double>(unix_ms) - start_unix_ms_;
  const auto samples = std::ceil(elapsed_ms * static_cast<long double>(rate_hz_) / 1000.0L);
  return static_cast<uint64_t>(std::clamp(samples - samples_, 0.0L, kMaxSamples));
}

int64_t SurveyClock::wallLeadMs() const {
  if (follows_samples_) return 0;
  return clocks_.wall_ms() - start_unix_ms_ - (clocks_.steady_ms() - start_steady_ms_);
}

void SurveyClock::followWall() {
  if (follows_samples_) return;
  start_unix_ms_ = clocks_.wall_ms();
  start_steady_ms_ = clocks_.steady_ms();
}

int64_t SurveyClock::nowMs() const {
  int64_t now_ms = start_unix_ms_;
  if (follows_samples_) {
    // The 64-bit mantissa of a long double holds samples * 1000 exactly for thousands of years, and
    // so the quotient truncates as whole numbers would; a rate with a fraction works, too.
    now_ms += static_cast<int64_t>(static_cast<long double>(samples_) * 1000.0L /
                                   static_cast<long double>(rate_hz_));
  } else {
    now_ms += received_steady_ms_ - start_steady_ms_;
  }
  return now_ms == 0 ? 1 : now_ms;
}

int64_t wallClockMs() {
  const auto since_epoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(since_epoch).count();
}

int64_t steadyClockMs() {
  timespec now = {};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

}  // namespace pelagrim_host
