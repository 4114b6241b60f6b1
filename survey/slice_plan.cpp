#include "survey/slice_plan.h"

namespace pelagrim {

std::vector<double> planSlices(double start_hz, double stop_hz, double sample_rate_hz) {
  constexpr size_t kMaxSlices = 100'001;
  std::vector<double> slices;
  if (!(start_hz < stop_hz) || sample_rate_hz <= 0.0) return slices;

  const double half_width_hz = 0.5 * sample_rate_hz;
  const double step_hz = 0.9 * sample_rate_hz;
  double centre_hz = start_hz + half_width_hz;
  while (slices.size() < kMaxSlices && centre_hz - half_width_hz < stop_hz) {
    slices.push_back(centre_hz);
    centre_hz += step_hz;
  }
  // Rounding, or a rate that is not finite, can put even the first slice beyond the band's end.
  if (slices.empty()) slices.push_back((start_hz + stop_hz) / 2);
  return slices;
}

}  // namespace pelagrim
