#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace pelagrim_host {

/// A survey's time: the wall clock for a live receiver, else a clock that follows the samples, so
/// that a survey runs as fast as the machine allows and comes out the same every time.
class ClockPolicy {
 public:
  static ClockPolicy wallClock() { return ClockPolicy({}); }

  /// `start_unix_ms`: when the first sample was received.
  static ClockPolicy sampleClock(int64_t start_unix_ms) { return ClockPolicy(start_unix_ms); }

  std::optional<int64_t> startUnixMs() const { return start_unix_ms_; }

 private:
  explicit ClockPolicy(std::optional<int64_t> start_unix_ms) : start_unix_ms_(start_unix_ms) {}

  std::optional<int64_t> start_unix_ms_;
};

/// The clock that the plug-in reads. Not synchronised.
class SurveyClock {
 public:
  /// `rate_hz`: of the samples, positive.
  SurveyClock(ClockPolicy policy, double rate_hz);

  /// Counts samples that are about to be delivered to the plug-in.
  void advance(size_t samples) { samples_ += samples; }

  /// Jumps forward to unix_ms, over a gap in a recording. Never goes back; ignored for the wall
  /// clock.
  void leapTo(int64_t unix_ms);

  /// Unix time in whole milliseconds, truncated. It does not drift, because it is computed from the
  /// count. Never 0, which would mean to the plug-in that the time is unknown.
  int64_t nowMs() const;

 private:
  std::optional<int64_t>
      start_unix_ms_;  ///< where samples_ counts from; nothing for the wall clock
  double rate_hz_;
  uint64_t samples_ = 0;
};

/// The wall clock, Unix milliseconds.
int64_t wallClockMs();

}  // namespace pelagrim_host
