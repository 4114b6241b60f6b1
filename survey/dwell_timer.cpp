#include "survey/dwell_timer.h"

#include <cmath>
#include <limits>

#include "survey/whole_number.h"

namespace pelagrim {

int64_t dwellLengthMs(double dwell_seconds) {
  const double length_ms =
      (std::isnan(dwell_seconds) ? kDefaultDwellSeconds : dwell_seconds) * 1000.0;
  if (length_ms >= kTwoTo63) return std::numeric_limits<int64_t>::max();
  if (length_ms < -kTwoTo63) return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(length_ms);
}

bool dwellIsOver(int64_t start_ms, int64_t now_ms, double dwell_seconds) {
  if (start_ms == 0 || now_ms == 0) return false;
  // Unsigned arithmetic wraps where signed arithmetic would be undefined.
  const auto elapsed_ms =
      static_cast<int64_t>(static_cast<uint64_t>(now_ms) - static_cast<uint64_t>(start_ms));
  return elapsed_ms >= dwellLengthMs(dwell_seconds);
}

}  // namespace pelagrim
