#pragma once

#include <cstdint>
#include <vector>

#include "survey/channel.h"
#include "survey/slice.h"

namespace pelagrim {

/// Mean power per bin in dB, relative: the sums are not normalised. An empty bin reads -200 dB.
/// `frames` spectra, at least 1, have been summed into `power_sum`.
std::vector<float> levelsDb(const std::vector<double>& power_sum, uint32_t frames);

/// The noise floor of a spectrum: the median of its quiet bins, which are those at most
/// `threshold_db` above its tenth percentile. If fewer than one bin in eight is quiet, that
/// percentile itself. An order statistic, so that strong signals do not raise it.
double noiseFloorDb(const std::vector<float>& levels, double threshold_db);

/// The signals of a slice, in order of frequency: every run of two or more bins above noise floor
/// plus threshold. A level that is not a number ends a run. Empty if the spectrum has fewer than 4
/// bins or the sample rate is not positive.
std::vector<Detection> findDetections(const std::vector<float>& levels, const Slice& slice,
                                      double threshold_db);

}  // namespace pelagrim
