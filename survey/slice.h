#pragma once

namespace pelagrim {

/// The stretch of spectrum that the receiver sees at one tuning.
struct Slice {
  double sample_rate_hz = 0.0;
  double centre_hz = 0.0;

  double lowHz() const { return centre_hz - 0.5 * sample_rate_hz; }
  double highHz() const { return centre_hz + 0.5 * sample_rate_hz; }
};

}  // namespace pelagrim
