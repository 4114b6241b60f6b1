#include "survey/percentile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace pelagrim {

namespace {

size_t nearestRank(size_t count, double p) {
  const double last = static_cast<double>(count - 1);
  const double rank = last * p + 0.5;
  if (!(rank > 0.0)) return 0;
  return rank >= last ? count - 1 : static_cast<size_t>(rank);
}

/// Ascending, not-a-number last: a strict weak order over every float.
bool ranksBefore(float a, float b) {
  return std::isnan(b) ? !std::isnan(a) : a < b;
}

}  // namespace

double percentileDb(const std::vector<float>& levels, double p) {
  if (levels.empty()) return 0.0;
  std::vector<float> ranked = levels;
  const auto chosen = ranked.begin() + static_cast<std::ptrdiff_t>(nearestRank(ranked.size(), p));
  std::nth_element(ranked.begin(), chosen, ranked.end(), ranksBefore);
  return static_cast<double>(*chosen);
}

}  // namespace pelagrim
