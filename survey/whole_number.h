#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace pelagrim {

/// 2^63 as a double: the first value beyond the signed 64-bit range.
constexpr double kTwoTo63 = 9223372036854775808.0;

/// The nearest integer, halves away from zero. A value that has none (not a number, infinite, or of
/// a magnitude from 2^63) gives the smallest integer, which is what llround gives on x86-64.
inline int64_t roundToInteger(double value) {
  const bool representable = value >= -kTwoTo63 && value < kTwoTo63;
  return representable ? std::llround(value) : std::numeric_limits<int64_t>::min();
}

}  // namespace pelagrim
