#pragma once

#include <cstddef>
#include <vector>

namespace pelagrim {

/// The centres, in ascending order, of the slices that cover start_hz to stop_hz. Each is as wide
/// as the sample rate and overlaps the next by a tenth of it; the first begins at start_hz. The
/// last may reach beyond stop_hz. Empty unless start_hz < stop_hz and the rate is positive; never
/// more than 100 001 centres, however wide the band.
std::vector<double> planSlices(double start_hz, double stop_hz, double sample_rate_hz);

/// The slices of a band and the one last asked for.
struct SlicePlan {
  std::vector<double> slices;  ///< centres, Hz
  size_t slice_index = 0;      ///< 0 or a valid index into slices

  /// Moves on to the next slice, after the last to the first, and returns its centre. The plan must
  /// not be empty.
  double advance() {
    slice_index = (slice_index + 1) % slices.size();
    return slices[slice_index];
  }
};

}  // namespace pelagrim
