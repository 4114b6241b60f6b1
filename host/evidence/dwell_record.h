#pragma once

#include <cstdint>
#include <vector>

#include "survey/channel.h"
#include "survey/slice.h"

namespace pelagrim_host {

/// What was heard at one place of the band in one dwell: when its power rose above the noise around
/// it, as it was, with every short gap.
struct WatchedPlace {
  double low_hz = 0.0;  ///< the interval of frequency whose power was watched
  double high_hz = 0.0;
  double threshold = 0.0;  ///< times the noise power there, above which a row counts as on the air
  /// Milliseconds after the dwell's first sample at which it went on, off, on, ... It is off at
  /// first; an odd number of entries means that it was on at the end.
  std::vector<uint32_t> edges_ms;
};

/// All that was observed in one dwell that the plug-in evaluated. Written once and never changed.
/// Levels are in dB, relative as the plug-in's are, one for each of 1024 bins, lowest frequency
/// first.
struct DwellRecord {
  pelagrim::Slice slice;
  int64_t end_unix_ms = 0;    ///< the clock as the plug-in read it when it evaluated the dwell
  int64_t first_unix_ms = 0;  ///< when the first sample was received
  uint64_t first_sample = 0;  ///< its number, counted from the start of the run
  uint64_t samples = 0;       ///< that the dwell lasted
  uint32_t frames = 0;        ///< of 1024 samples, summed up
  uint64_t lost_samples = 0;  ///< dropped within the dwell
  uint64_t full_scale_samples = 0;
  double threshold_db = 0.0;  ///< in force
  bool floor_is_sure = true;  ///< false: too few quiet bins to tell noise from signals

  std::vector<float> mean_db;                   ///< the very levels that the plug-in judged
  std::vector<float> max_db;                    ///< highest of all rows
  std::vector<float> low_db;                    ///< a tenth of the rows are lower
  std::vector<pelagrim::Detection> detections;  ///< before the band's limits

  uint32_t row_frames = 0;  ///< frames in a row, the unit of time that was looked at
  std::vector<WatchedPlace> places;
};

}  // namespace pelagrim_host
