#pragma once

#include <vector>

namespace pelagrim {

/// The level of rank (n - 1) * p, rounded half up, among n levels in dB in ascending order: a
/// nearest-rank quantile, never interpolated. Not-a-number levels rank last; a p below 0 or not a
/// number asks for the smallest level, one above 1 for the largest. 0.0 for an empty list.
/// Linear time, works on a copy.
double percentileDb(const std::vector<float>& levels, double p);

}  // namespace pelagrim
