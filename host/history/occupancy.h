#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/evidence/dwell_record.h"
#include "host/evidence/on_air.h"
#include "host/history/share_interval.h"

namespace pelagrim_host {

/// From one moment to another, seconds.
struct OnAirStretch {
  double from_s;
  double to_s;
};

/// What one dwell says of an interval of frequency.
struct Watch {
  int64_t run = 0;
  uint64_t first_sample = 0;  ///< of the run
  uint64_t end_sample = 0;    ///< the first one after the dwell
  int64_t first_unix_ms = 0;
  double seconds = 0.0;              ///< how long the dwell lasted
  std::vector<OnAirStretch> on_air;  ///< from its start, in order, apart from each other
};

/// What a dwell says of an interval: the places that were watched and overlap it, taken together.
/// Where none was, it was off if its slice covers the interval and the highest levels stayed within
/// 6 dB of the noise. Else nothing.
std::optional<Watch> watchOf(const DwellRecord& dwell, int64_t run, FrequencyInterval interval);

/// One transmission. Its true length is at least `seconds` if one was not there at its start or
/// end.
struct Transmission {
  int64_t start_unix_ms = 0;
  double seconds = 0.0;
  bool is_cut = false;
};

/// Occupancy as ITU-R SM.1880 and SM.2256 mean it.
struct Occupancy {
  double observed_s = 0.0;
  double on_air_s = 0.0;
  size_t visits = 0;   ///< dwells that follow each other without a gap are one
  size_t changes = 0;  ///< from off to on or back, also from one dwell to the next
  std::vector<Transmission> transmissions;
  std::optional<ShareInterval> interval;  ///< for the long-run share; nothing where too few changes

  double share() const { return observed_s > 0.0 ? on_air_s / observed_s : 0.0; }
};

/// Needed for an interval.
inline constexpr size_t kMinChanges = 10;

/// `watches`: in order of time. Gaps of up to `bridged_s` between two stretches count as on the
/// air, also across dwells that follow each other without a gap: syllables and keying.
Occupancy occupancyOf(std::span<const Watch> watches, double bridged_s = 1.0);

}  // namespace pelagrim_host
