#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace pelagrim_host {

/// The wall clock, Unix milliseconds.
int64_t wallClockMs();

/// Milliseconds since the machine was started, sleep included; nobody sets this clock.
int64_t steadyClockMs();

/// The clocks of the system, or those of a test.
struct SystemClocks {
  int64_t (*wall_ms)() = wallClockMs;
  int64_t (*steady_ms)() = steadyClockMs;
};

/// A survey's time: the system's for a live receiver, else a clock that follows the samples, so
/// that a survey runs as fast as the machine allows and comes out the same every time.
class ClockPolicy {
 public:
  static ClockPolicy systemClock(SystemClocks clocks = {}) { return {{}, clocks}; }

  /// `start_unix_ms`: when the first sample was received.
  static ClockPolicy sampleClock(int64_t start_unix_ms) { return {start_unix_ms, {}}; }

  std::optional<int64_t> startUnixMs() const { return start_unix_ms_; }
  SystemClocks clocks() const { return clocks_; }

 private:
  ClockPolicy(std::optional<int64_t> start_unix_ms, SystemClocks clocks)
      : start_unix_ms_(start_unix_ms), clocks_(clocks) {}

  std::optional<int64_t> start_unix_ms_;
  SystemClocks clocks_;
};

/// The clock that the plug-in reads: the time of the samples that it is given, not of the moment,
/// so that a backlog neither stretches nor shortens a dwell. A live one starts at the wall clock's
/// time and then runs evenly, for dwells would otherwise stop or end early where the wall clock is
/// set. Not synchronised.
class SurveyClock {
 public:
  /// `rate_hz`: of the samples, positive.
  SurveyClock(ClockPolicy policy, double rate_hz);

  bool followsSamples() const { return follows_samples_; }

  /// Counts samples that are about to be delivered to the plug-in.
  void advance(size_t samples) { samples_ += samples; }

  /// Sets a live clock to a time by the steady clock, at which samples were received.
  void receivedAt(int64_t steady_ms) { received_steady_ms_ = steady_ms; }

  /// Jumps forward to unix_ms, over a gap in a recording. Never goes back; ignored for a live
  /// clock.
  void leapTo(int64_t unix_ms);

  /// How many more samples it takes until the clock reads `unix_ms` or later, at most 2^62. Only of
  /// a clock that follows the samples.
  uint64_t samplesUntil(int64_t unix_ms) const;

  /// How far the wall clock has gone ahead of the steady one since a live clock was set to it,
  /// milliseconds: somebody set it. Else 0.
  int64_t wallLeadMs() const;

  /// Lets a live clock go by the wall clock as it is set now.
  void followWall();

  /// Unix time in whole milliseconds, truncated. It does not drift, because it is computed from the
  /// count. Never 0, which would mean to the plug-in that the time is unknown.
  int64_t nowMs() const;

 private:
  SystemClocks clocks_;
  bool follows_samples_;
  int64_t start_unix_ms_ = 0;    ///< where samples_ or the steady clock count from
  int64_t start_steady_ms_ = 0;  ///< the steady clock at start_unix_ms_
  int64_t received_steady_ms_ = 0;
  double rate_hz_;
  uint64_t samples_ = 0;
};

}  // namespace pelagrim_host
