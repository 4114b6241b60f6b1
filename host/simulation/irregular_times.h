#pragma once

#include <cstdint>
#include <vector>

namespace pelagrim_host {

/// A time in which a station is on, or off, the air throughout: from begin_ms until before end_ms,
/// milliseconds after the start of the simulation.
struct Stretch {
  int64_t begin_ms = 0;
  int64_t end_ms = 0;
  bool is_on = false;

  bool contains(int64_t ms) const { return begin_ms <= ms && ms < end_ms; }
};

/// On and off times that are exponential, in whole milliseconds: a Markov process of two states. A
/// function of the seed and the time alone, before the start of the simulation, too, so a late time
/// is found as fast as an early one. Immutable, so any thread may use it.
///
/// The state is drawn anew, on with the long-run share as its chance, at the points of a Poisson
/// process of rate 1/on + 1/off. That switches it as often as it should, and makes it independent
/// of all before the last point (uniformisation; Jensen: "Markoff chains as an aid in the study of
/// Markoff processes", 1953). The points are made cell by cell, each with a seed of its own.
class IrregularTimes {
 public:
  /// The means are seconds, positive.
  IrregularTimes(uint64_t seed, double mean_on_seconds, double mean_off_seconds);

  /// The stretch that this time is part of.
  Stretch stretchAt(int64_t ms) const;

  double meanOnSeconds() const { return mean_on_seconds_; }
  double meanOffSeconds() const { return mean_off_seconds_; }

 private:
  /// A state from this time until the next draw.
  struct Draw {
    int64_t ms;
    bool is_on;
  };
  int64_t cellOf(int64_t ms) const;
  std::vector<Draw> drawsIn(int64_t cell) const;
  Draw lastDraw(int64_t ms) const;
  Draw nextDraw(int64_t ms) const;

  uint64_t seed_;
  double mean_on_seconds_;
  double mean_off_seconds_;
  double mean_gap_ms_;  ///< between two draws
  int64_t cell_ms_;
};

}  // namespace pelagrim_host
