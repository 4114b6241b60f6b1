#pragma once

#include <cstdint>

namespace pelagrim {

/// One run of bins found above the noise in one dwell.
struct Detection {
  double centre_hz;
  double width_hz;
  double peak_db;   ///< highest bin of the run
  double floor_db;  ///< noise floor of the dwell
};

/// One surveyed signal: what all detections in one slot of the raster have added up to.
struct Channel {
  double centre_hz;       ///< mean over the detections
  double width_hz;        ///< mean over the detections
  double peak_db;         ///< highest of the detections
  double floor_db;        ///< of the latest detection
  int64_t first_unix_ms;  ///< host clock; 0 where the host has none
  int64_t last_unix_ms;
  uint32_t hits;   ///< detections merged; two in one dwell both count
  uint32_t looks;  ///< dwells whose slice covered centre_hz
  double min_width_hz;
  double max_width_hz;
};

}  // namespace pelagrim
