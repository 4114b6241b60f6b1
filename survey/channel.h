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

/// One surveyed signal: all detections in one slot of the raster, merged.
struct Channel {
  double centre_hz = 0.0;     ///< mean over the detections
  double width_hz = 0.0;      ///< mean over the detections
  double peak_db = 0.0;       ///< highest of the detections
  double floor_db = 0.0;      ///< of the latest detection
  int64_t first_unix_ms = 0;  ///< host clock; 0 if the host has none
  int64_t last_unix_ms = 0;
  uint32_t hits = 0;   ///< detections merged; two in one dwell both count
  uint32_t looks = 0;  ///< dwells whose slice covered centre_hz
  double min_width_hz = 0.0;
  double max_width_hz = 0.0;
};

}  // namespace pelagrim
