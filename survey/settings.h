#pragma once

#include "survey/dwell_timer.h"

namespace pelagrim {

/// What the user asks of the survey. Stored as read: the code that uses a setting copes with odd
/// values.
struct Settings {
  double start_hz = 144000000.0;  ///< lower edge of the band
  double stop_hz = 146000000.0;   ///< upper edge of the band
  double threshold_db = 12.0;     ///< how far above the noise floor a signal must be
  double dwell_seconds = kDefaultDwellSeconds;
  double raster_hz = 5000.0;  ///< detections closer together than this are one channel
  bool sweep = true;          ///< move across the band, or stay where the user has tuned
};

}  // namespace pelagrim
