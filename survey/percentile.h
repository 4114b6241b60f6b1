#pragma once

#include <vector>

namespace pelagrim {

/// The level of rank (n - 1) * p, rounded half up, among n levels in dB in ascending order: a
/// nearest-rank quantile, never interpolated. Levels that are not numbers rank last. A p below 0 or
/// not a number gives the smallest level, one above 1 the largest. 0.0 for an empty list. Takes
/// linear time and works on a copy.
double percentileDb(const std::vector<float>& levels, double p);

}  // namespace pelagrim
