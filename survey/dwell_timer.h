#pragma once

#include <cstdint>

namespace pelagrim {

constexpr double kDefaultDwellSeconds = 20.0;

/// A dwell length in whole milliseconds, truncated toward zero. Beyond the 64-bit range it
/// saturates, so a huge dwell never times out and a hugely negative one is always over; a length
/// that is not a number counts as the default.
int64_t dwellLengthMs(double dwell_seconds);

/// Whether a dwell that began at `start_ms` is over at `now_ms`. A reading of 0 for either means
/// that the time is not known, and then the dwell is not over. The difference wraps at 64 bits.
bool dwellIsOver(int64_t start_ms, int64_t now_ms, double dwell_seconds);

}  // namespace pelagrim
