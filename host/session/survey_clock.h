#pragma once

#include <cstddef>
#include <cstdint>

namespace pelagrim_host {

/// The clock that the plug-in reads: the clock on the wall for a live receiver, else one that
/// follows the samples, so that a survey runs as fast as the machine can and comes out the same
/// every time. Not synchronised.
class SurveyClock {
 public:
  static SurveyClock onTheWall();

  /// Starts at start_unix_ms and moves by rate_hz samples to the second, rate_hz positive.
  static SurveyClock ofSamples(int64_t start_unix_ms, double rate_hz);

  /// Counts samples that are about to be delivered.
  void advance(size_t samples) { samples_ += samples; }

  /// Leaps over a gap in a recording to unix_ms. Never back, and the clock on the wall stays.
  void leapTo(int64_t unix_ms);

  /// Unix time in whole milliseconds, truncated; without drift, as it is computed from the count.
  /// Never 0, which to a plug-in means that there is no time.
  int64_t nowMs() const;

 private:
  double rate_hz_ = 0.0;  ///< 0: the clock on the wall
  int64_t start_unix_ms_ = 0;
  uint64_t samples_ = 0;
};

/// The time on the wall, Unix milliseconds.
int64_t wallClockMs();

}  // namespace pelagrim_host
