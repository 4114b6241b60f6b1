#include "host/simulation/irregular_times.h"

#include <algorithm>
#include <cmath>

#include "host/simulation/white_noise.h"

namespace pelagrim_host {

IrregularTimes::IrregularTimes(uint64_t seed, double mean_on_seconds, double mean_off_seconds)
    : seed_(seed),
      mean_on_seconds_(mean_on_seconds),
      mean_off_seconds_(mean_off_seconds),
      mean_gap_ms_(1000.0 / (1.0 / mean_on_seconds + 1.0 / mean_off_seconds)),
      cell_ms_(std::max<int64_t>(std::llround(mean_gap_ms_), 1)) {}

int64_t IrregularTimes::cellOf(int64_t ms) const {
  return ms / cell_ms_ - (ms % cell_ms_ < 0 ? 1 : 0);
}

/// In order of time. Of several draws in one millisecond the last one counts.
std::vector<IrregularTimes::Draw> IrregularTimes::drawsIn(int64_t cell) const {
  const uint64_t seed = hashedNumber(seed_, static_cast<uint64_t>(cell));
  uint64_t drawn = 0;
  const auto uniform = [&] {
    return static_cast<double>(hashedNumber(seed, drawn++) >> 11U) * 0x1p-53;
  };
  const double share = mean_on_seconds_ / (mean_on_seconds_ + mean_off_seconds_);
  std::vector<Draw> draws;
  double at_ms = 0.0;
  while (true) {
    at_ms -= mean_gap_ms_ * std::log1p(-uniform());
    if (at_ms >= static_cast<double>(cell_ms_)) return draws;
    const Draw draw{cell * cell_ms_ + static_cast<int64_t>(at_ms), uniform() < share};
    if (!draws.empty() && draws.back().ms == draw.ms) draws.pop_back();
    draws.push_back(draw);
  }
}

/// The last one at this time or before.
IrregularTimes::Draw IrregularTimes::lastDraw(int64_t ms) const {
  for (int64_t cell = cellOf(ms);; --cell) {
    const std::vector<Draw> draws = drawsIn(cell);
    const auto last = std::find_if(draws.rbegin(), draws.rend(),
                                   [ms](const Draw& draw) { return draw.ms <= ms; });
    if (last != draws.rend()) return *last;
  }
}

/// The first one after this time.
IrregularTimes::Draw IrregularTimes::nextDraw(int64_t ms) const {
  for (int64_t cell = cellOf(ms);; ++cell) {
    const std::vector<Draw> draws = drawsIn(cell);
    const auto next =
        std::find_if(draws.begin(), draws.end(), [ms](const Draw& draw) { return draw.ms > ms; });
    if (next != draws.end()) return *next;
  }
}

Stretch IrregularTimes::stretchAt(int64_t ms) const {
  Draw first = lastDraw(ms);
  Draw before = lastDraw(first.ms - 1);
  while (before.is_on == first.is_on) {
    first = before;
    before = lastDraw(first.ms - 1);
  }
  Draw after = nextDraw(ms);
  while (after.is_on == first.is_on) after = nextDraw(after.ms);
  return {first.ms, after.ms, first.is_on};
}

}  // namespace pelagrim_host
