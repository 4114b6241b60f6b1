#include "survey/detection.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

#include "survey/percentile.h"

namespace pelagrim {

namespace {

constexpr double kFloorFraction = 0.1;
constexpr size_t kMinBins = 4;
constexpr size_t kMinQuietBins = 8;
constexpr size_t kMinRunBins = 2;  // one bin alone is more often a glitch than a signal

}  // namespace

std::vector<float> levelsDb(const std::vector<double>& power_sum, uint32_t frames) {
  constexpr double kEmptyBin = 1e-20;  // keeps the logarithm finite
  std::vector<float> levels(power_sum.size());
  std::transform(power_sum.begin(), power_sum.end(), levels.begin(), [frames](double power) {
    return static_cast<float>(10.0 * std::log10(power / frames + kEmptyBin));
  });
  return levels;
}

double noiseFloorDb(const std::vector<float>& levels, double threshold_db) {
  const double first_floor = percentileDb(levels, kFloorFraction);
  const double quiet_limit = first_floor + threshold_db;
  std::vector<float> quiet;
  quiet.reserve(levels.size());
  std::copy_if(levels.begin(), levels.end(), std::back_inserter(quiet),
               [quiet_limit](float level) { return static_cast<double>(level) <= quiet_limit; });
  const bool enough = quiet.size() >= levels.size() / 8 && quiet.size() >= kMinQuietBins;
  return enough ? percentileDb(quiet, 0.5) : first_floor;
}

std::vector<Detection> findDetections(const std::vector<float>& levels, const Slice& slice,
                                      double threshold_db) {
  std::vector<Detection> found;
  if (levels.size() < kMinBins || !(slice.sample_rate_hz > 0.0)) return found;

  const double floor_db = noiseFloorDb(levels, threshold_db);
  const double detection_db = floor_db + threshold_db;
  const double bin_hz = slice.sample_rate_hz / static_cast<double>(levels.size());
  const auto stands_out = [detection_db](float level) {
    return static_cast<double>(level) > detection_db;
  };

  auto run = std::find_if(levels.begin(), levels.end(), stands_out);
  while (run != levels.end()) {
    const auto run_end = std::find_if_not(run, levels.end(), stands_out);
    const auto bins = static_cast<size_t>(run_end - run);
    if (bins >= kMinRunBins) {
      const auto first_bin = static_cast<double>(run - levels.begin());
      const auto width_bins = static_cast<double>(bins);
      const double middle_bin = first_bin + (width_bins - 1.0) * 0.5;
      found.push_back({.centre_hz = slice.lowHz() + middle_bin * bin_hz,
                       .width_hz = width_bins * bin_hz,
                       .peak_db = static_cast<double>(*std::max_element(run, run_end)),
                       .floor_db = floor_db});
    }
    run = std::find_if(run_end, levels.end(), stands_out);
  }
  return found;
}

}  // namespace pelagrim
